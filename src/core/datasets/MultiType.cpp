#include "MultiType.h"

#include "DataSets.h"
#include "MultiTypeKinds_p.h"

#include <magic_enum/magic_enum.hpp>

using DataSets::Impl::DataSetImpl;

static_assert(magic_enum::enum_count<MultiType::Type>() == MultiTypeKinds::count + 1,
              "every tag but None has its row in the table");

namespace {

/// Whether a datum equals that of another value, which has the same tag.
struct EqualTo
{
    MultiType const& other;

    bool operator()(std::monostate) const { return true; }

    bool operator()(std::shared_ptr<DataSetImpl> const& record) const
    {
        return DataSets::Impl::compare(record.get(), datum<std::shared_ptr<DataSetImpl>>().get());
    }

    template <typename Datum>
    bool operator()(Datum const& own) const
    {
        return own == datum<Datum>();
    }

private:
    template <typename Datum>
    Datum const& datum() const
    {
        return *MultiTypeKinds::find<Datum>(other);
    }
};

template <typename Datum>
void copyDatum(MultiType const& value, Datum& target)
{
    if (Datum const* const datum = MultiTypeKinds::find<Datum>(value)) {
        target = *datum;
    }
}

} // namespace

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
    : stringValue(QString::fromUtf8(text))
    , type(String)
{
}

MultiType::MultiType(std::shared_ptr<DataSetImpl> const& record)
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
    clone(MultiType());
}

int MultiType::clone(MultiType const& other)
{
    // What was held is released at the very end: the other value, and this one too, may lie inside it.
    MultiType former(other);
    MultiTypeKinds::swap(*this, former);
    return type;
}

bool MultiType::operator==(MultiType const& other) const
{
    return type == other.type && MultiTypeKinds::visit(*this, EqualTo{other});
}

int MultiType::getType() const
{
    return type;
}

void MultiType::get(unsigned int& value) const
{
    copyDatum(*this, value);
}

void MultiType::get(int& value) const
{
    copyDatum(*this, value);
}

void MultiType::get(long long& value) const
{
    copyDatum(*this, value);
}

void MultiType::get(bool& value) const
{
    copyDatum(*this, value);
}

void MultiType::get(QString& value) const
{
    copyDatum(*this, value);
}

void MultiType::get(QByteArray& value) const
{
    copyDatum(*this, value);
}

void MultiType::get(std::shared_ptr<DataSetImpl>& value) const
{
    copyDatum(*this, value);
}

void MultiType::move(unsigned int& value)
{
    MultiTypeKinds::move(*this, value);
}

void MultiType::move(int& value)
{
    MultiTypeKinds::move(*this, value);
}

void MultiType::move(long long& value)
{
    MultiTypeKinds::move(*this, value);
}

void MultiType::move(bool& value)
{
    MultiTypeKinds::move(*this, value);
}

void MultiType::move(QString& value)
{
    MultiTypeKinds::move(*this, value);
}

void MultiType::move(QByteArray& value)
{
    MultiTypeKinds::move(*this, value);
}

void MultiType::move(std::shared_ptr<DataSetImpl>& value)
{
    MultiTypeKinds::move(*this, value);
}
