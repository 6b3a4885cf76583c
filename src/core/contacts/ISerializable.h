#pragma once

#include <datasets/DataSets.h>

#include <softphonecore_export.h>

/// A record that converts to and from a DataSets::DataSet, in which form it is stored.
class SOFTPHONECORE_EXPORT ISerializable
{
public:
    virtual ~ISerializable();

    /// This record as a new DataSet; an empty one when there is nothing to store.
    [[nodiscard]] virtual DataSets::DataSet serialize() const = 0;

    /// Fills this record from \a dataSet. What it does not hold is left as the record decides.
    virtual void deserialize(DataSets::DataSet const& dataSet) = 0;

protected:
    ISerializable() = default;
    /// Copied as part of a record only.
    ISerializable(ISerializable const&) = default;
    /// Assigned as part of a record only.
    ISerializable& operator=(ISerializable const&) = default;
};
