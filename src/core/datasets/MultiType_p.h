#pragma once

#include "MultiType.h"

/// The slots of a value read in place, where MultiType::get() would copy.
struct MultiTypeSlots
{
    static std::shared_ptr<DataSets::Impl::DataSetImpl> const& record(MultiType const& value)
    {
        return value.set;
    }

    static QString const& string(MultiType const& value) { return value.stringValue; }

    static QByteArray const& bytes(MultiType const& value) { return value.bytesValue; }
};
