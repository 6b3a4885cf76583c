#pragma once

#include "Entries.h"

#include <memory>
#include <utility>

namespace DataSets::Impl {

/// Changes the entries of a record. What adds throws std::bad_alloc when memory is short, with every entry as
/// it was; the rest throws nothing.
struct EntriesEditor
{
    /// Stores \a value under \a key, in place of what was there; tells where it is, and whether it is new.
    static std::pair<Entries::iterator, bool> insertOrAssign(Entries& entries, Key key,
                                                             MultiType const& value)
    {
        return entries.insertOrAssign(std::move(key), value);
    }

    /// Stores \a value under \a key unless there is an entry; tells where that is, and whether it is new.
    static std::pair<Entries::iterator, bool> tryEmplace(Entries& entries, Key key, MultiType const& value)
    {
        return entries.tryEmplace(std::move(key), value);
    }

    /// Takes the entry that \a position stands on out.
    static std::unique_ptr<Entries::value_type> extract(Entries& entries, Entries::const_iterator position)
    {
        return entries.extract(position);
    }

    /// Removes every entry.
    static void clear(Entries& entries) { entries.clear(); }
};

} // namespace DataSets::Impl
