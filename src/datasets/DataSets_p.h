#pragma once

#include "DataSets.h"

#include <optional>
#include <utility>

namespace DataSets::Impl {

/// The index that \a text gives by QString's rules for 32-bit integers, empty when it is none.
std::optional<int> parseIndex(QStringView text);

/// \a key as callers see it.
QString keyText(Key const& key);

/// Stores a value in place, quickest where \a key comes after all others.
template <typename T>
void append(DataSetImpl& record, Key key, T const& value)
{
    record.entries.insert_or_assign(record.entries.end(), std::move(key), value);
}

} // namespace DataSets::Impl
