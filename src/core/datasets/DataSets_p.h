#pragma once

#include "DataSets.h"
#include "Entries_p.h"

#include <optional>
#include <utility>

namespace DataSets::Impl {

/// The index that \a text gives by QString's rules for 32-bit integers, empty when it is none.
std::optional<int> parseIndex(QStringView text);

/// \a key as callers see it.
QString keyText(Key const& key);

/// Stores \a value under \a key, in place of what was there; throws std::bad_alloc when memory is short.
inline void storeEntry(DataSetImpl& record, Key key, MultiType const& value)
{
    EntriesEditor::insertOrAssign(record.entries, std::move(key), value);
}

} // namespace DataSets::Impl
