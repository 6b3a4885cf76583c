#pragma once

#include "DataSets.h"

#include <optional>

namespace DataSets::Impl {

/// The key under which \a record stores what callers call \a name; empty when it is an array and the name is
/// no 32-bit integer.
std::optional<Key> keyFor(DataSetImpl const& record, QString const& name);

/// \a key as callers see it.
QString keyText(Key const& key);

} // namespace DataSets::Impl
