#include "MultiType.h"

#include "../Boundary_p.h"
#include "DataSets.h"

#include <utility>

MultiType::MultiType() = default;

MultiType::MultiType(unsigned int value)
    : uintValue(value)
    , type(UInt)
{
}

MultiType::MultiType(int value)
    : intValue(value)
    , type(Int)
{
}

MultiType::MultiType(long long value)
    : int64Value(value)
    , type(Int64)
{
}

MultiType::MultiType(bool value)
    : boolValue(value)
    , type(Bool)
{
}

MultiType::MultiType(QString const& value)
    : stringValue(value)
    , type(String)
{
}

MultiType::MultiType(QByteArray const& value)
    : bytesValue(value)
    , type(ByteArray)
{
}

MultiType::MultiType(char const* text)
    : stringValue(guarded([text] { return QString::fromUtf8(text); }))
    , type(String)
{
}

MultiType::MultiType(std::shared_ptr<DataSets::Impl::DataSetImpl> const& record)
    : set(record)
    , type(DataSet)
{
}

MultiType::MultiType(MultiType const& other) = default;

MultiType::~MultiType() = default;

MultiType& MultiType::operator=(MultiType const& other)
{
    if (this != &other) {
        clone(other);
    }
    return *this;
}

void MultiType::clean()
{
    uintValue = 0;
    intValue = 0;
    int64Value = 0;
    boolValue = false;
    if (!stringValue.isNull()) {
        stringValue = QString();
    }
    bytesValue.clear();
    type = None;
    // Last: this value may lie inside the record that it holds.
    set.reset();
}

int MultiType::clone(MultiType const& other)
{
    // Released at the very end: other, and this value too, may lie inside the record.
    std::shared_ptr<DataSets::Impl::DataSetImpl> released = other.set;
    Type const tag = other.type;
    uintValue = other.uintValue;
    intValue = other.intValue;
    int64Value = other.int64Value;
    boolValue = other.boolValue;
    stringValue = other.stringValue;
    bytesValue = other.bytesValue;
    type = tag;
    set.swap(released);
    return tag;
}

bool MultiType::operator==(MultiType const& other) const
{
    if (type != other.type) {
        return false;
    }
    switch (type) {
    case None:
        return true;
    case DataSet:
        return DataSets::Impl::compare(set.get(), other.set.get());
    case UInt:
        return uintValue == other.uintValue;
    case Int:
        return intValue == other.intValue;
    case Bool:
        return boolValue == other.boolValue;
    case String:
        return stringValue == other.stringValue;
    case ByteArray:
        return bytesValue == other.bytesValue;
    case Int64:
        return int64Value == other.int64Value;
    }
    return false;
}

int MultiType::getType() const
{
    return type;
}

void MultiType::get(unsigned int& value) const
{
    if (type == UInt) {
        value = uintValue;
    }
}

void MultiType::get(int& value) const
{
    if (type == Int) {
        value = intValue;
    }
}

void MultiType::get(long long& value) const
{
    if (type == Int64) {
        value = int64Value;
    }
}

void MultiType::get(bool& value) const
{
    if (type == Bool) {
        value = boolValue;
    }
}

void MultiType::get(QString& value) const
{
    if (type == String) {
        value = stringValue;
    }
}

void MultiType::get(QByteArray& value) const
{
    if (type == ByteArray) {
        value = bytesValue;
    }
}

void MultiType::get(std::shared_ptr<DataSets::Impl::DataSetImpl>& value) const
{
    if (type == DataSet) {
        value = set;
    }
}

void MultiType::move(unsigned int& value)
{
    if (type == UInt) {
        value = std::exchange(uintValue, 0U);
        type = None;
    }
}

void MultiType::move(int& value)
{
    if (type == Int) {
        value = std::exchange(intValue, 0);
        type = None;
    }
}

void MultiType::move(long long& value)
{
    if (type == Int64) {
        value = std::exchange(int64Value, 0LL);
        type = None;
    }
}

void MultiType::move(bool& value)
{
    if (type == Bool) {
        value = std::exchange(boolValue, false);
        type = None;
    }
}

void MultiType::move(QString& value)
{
    if (type == String) {
        stringValue.swap(value);
        type = None;
    }
}

void MultiType::move(QByteArray& value)
{
    if (type == ByteArray) {
        bytesValue.swap(value);
        type = None;
    }
}

void MultiType::move(std::shared_ptr<DataSets::Impl::DataSetImpl>& value)
{
    if (type == DataSet) {
        // The tag first: this value may lie inside the record that the argument gives up.
        type = None;
        value = std::move(set);
    }
}
