// How values and records hash and print, which takes both of them at once.

#include "../Boundary_p.h"
#include "DataSets_p.h"
#include "MultiType_p.h"

#include <QDebug>
#include <QHashFunctions>

using DataSets::Impl::DataSetImpl;

namespace {

constexpr int deepestShown = 8;

/// The hash of a value without what is nested in it. A null record equals an empty one.
std::size_t shallowHash(MultiType const& value, std::size_t seed) noexcept
{
    unsigned int uintValue = 0;
    int intValue = 0;
    long long int64Value = 0;
    bool boolValue = false;
    value.get(uintValue);
    value.get(intValue);
    value.get(int64Value);
    value.get(boolValue);
    int const count = DataSets::Impl::getDataCount(
        value.getType() == MultiType::DataSet ? MultiTypeSlots::record(value).get() : nullptr);
    std::size_t const numbers =
        qHashMulti(seed, value.getType(), uintValue, intValue, int64Value, boolValue, count);
    switch (value.getType()) {
    case MultiType::String:
        return qHash(MultiTypeSlots::string(value), numbers);
    case MultiType::ByteArray:
        return qHash(MultiTypeSlots::bytes(value), numbers);
    default:
        return numbers;
    }
}

std::size_t hashOf(DataSets::Impl::Key const& key, std::size_t seed) noexcept
{
    QString const* const text = std::get_if<QString>(&key);
    return text != nullptr ? qHash(*text, seed) : qHash(std::get<int>(key), seed);
}

std::size_t hashOf(DataSetImpl const* record, std::size_t seed) noexcept
{
    if (record != nullptr) {
        for (auto const& [key, value] : record->entries) {
            seed = shallowHash(value, hashOf(key, seed));
        }
    }
    return seed;
}

void print(QDebug& debug, DataSetImpl const* record, int depth);

void print(QDebug& debug, MultiType const& value, int depth)
{
    auto const printed = [&](char const* kind, auto datum) {
        value.get(datum);
        debug << kind << '(' << datum << ')';
    };
    switch (value.getType()) {
    case MultiType::DataSet:
        print(debug, MultiTypeSlots::record(value).get(), depth);
        break;
    case MultiType::UInt:
        printed("UInt", 0U);
        break;
    case MultiType::Int:
        printed("Int", 0);
        break;
    case MultiType::Bool:
        printed("Bool", false);
        break;
    case MultiType::String:
        printed("String", QString());
        break;
    case MultiType::ByteArray:
        printed("ByteArray", QByteArray());
        break;
    case MultiType::Int64:
        printed("Int64", 0LL);
        break;
    default:
        debug << "None";
    }
}

void print(QDebug& debug, DataSetImpl const* record, int depth)
{
    bool const isArray = record != nullptr && record->isArray;
    debug << (isArray ? '[' : '{');
    if (depth == deepestShown) {
        debug << "...";
    } else if (record != nullptr) {
        bool first = true;
        for (auto const& [key, value] : record->entries) {
            debug << (std::exchange(first, false) ? "" : ", ");
            if (QString const* const text = std::get_if<QString>(&key)) {
                debug << *text << ": ";
            } else {
                debug << std::get<int>(key) << ": ";
            }
            print(debug, value, depth + 1);
        }
    }
    debug << (isArray ? ']' : '}');
}

template <typename T>
char* shown(T const& value)
{
    return guarded([&] { return qstrdup(QDebug::toString(value).toUtf8().constData()); });
}

} // namespace

std::size_t qHash(MultiType const& value, std::size_t seed) noexcept
{
    std::size_t const hash = shallowHash(value, seed);
    bool const isRecord = value.getType() == MultiType::DataSet;
    return isRecord ? hashOf(MultiTypeSlots::record(value).get(), hash) : hash;
}

QDebug operator<<(QDebug debug, MultiType const& value)
{
    QDebugStateSaver const saver(debug);
    debug.nospace() << "MultiType(";
    print(debug, value, 0);
    debug << ')';
    return debug;
}

char* toString(MultiType const& value)
{
    return shown(value);
}

namespace DataSets {

std::size_t qHash(DataSet const& dataSet, std::size_t seed) noexcept
{
    return hashOf(dataSet.data.get(), seed);
}

QDebug operator<<(QDebug debug, DataSet const& dataSet)
{
    QDebugStateSaver const saver(debug);
    debug.nospace() << "DataSet(";
    print(debug, dataSet.data.get(), 0);
    debug << ')';
    return debug;
}

char* toString(DataSet const& dataSet)
{
    return shown(dataSet);
}

} // namespace DataSets
