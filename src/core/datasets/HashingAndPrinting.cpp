// How values and records are hashed and printed. Values and records hold each other, so both stand here.

#include "DataSets_p.h"
#include "MultiTypeKinds_p.h"

#include <QDebug>
#include <QHashFunctions>

using DataSets::Impl::DataSetImpl;

namespace {

constexpr int deepestShown = 8;

/// Hashes a datum without what is nested in it. A null record equals an empty one of either kind, so that of
/// a record only the number of entries can count.
struct ShallowHash
{
    std::size_t seed;

    std::size_t operator()(std::monostate) const noexcept { return seed; }

    std::size_t operator()(std::shared_ptr<DataSetImpl> const& record) const noexcept
    {
        return qHash(DataSets::Impl::getDataCount(record.get()), seed);
    }

    template <typename Datum>
    std::size_t operator()(Datum const& datum) const noexcept
    {
        return qHash(datum, seed);
    }
};

std::size_t shallowHash(MultiType const& value, std::size_t seed) noexcept
{
    return MultiTypeKinds::visit(value, ShallowHash{qHash(value.getType(), seed)});
}

std::size_t hashOf(DataSets::Impl::Key const& key, std::size_t seed) noexcept
{
    return std::visit([seed](auto const& name) { return qHash(name, seed); }, key);
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

char const* nameOf(int tag)
{
    char const* name = "None";
    auto const look = [&](auto const& kind) { name = kind.tag == tag ? kind.name : name; };
    std::apply([&](auto const&... kind) { (look(kind), ...); }, MultiTypeKinds::table);
    return name;
}

/// Prints a datum with the name of its kind; records show by their brackets what they are.
struct Printer
{
    QDebug& debug;
    char const* kind;
    int depth;

    void operator()(std::monostate) const { debug << kind; }

    void operator()(std::shared_ptr<DataSetImpl> const& record) const { print(debug, record.get(), depth); }

    template <typename Datum>
    void operator()(Datum const& datum) const
    {
        debug << kind << '(' << datum << ')';
    }
};

void print(QDebug& debug, MultiType const& value, int depth)
{
    MultiTypeKinds::visit(value, Printer{debug, nameOf(value.getType()), depth});
}

void printEntries(QDebug& debug, DataSetImpl const& record, int depth)
{
    char const* separator = "";
    for (auto const& [key, value] : record.entries) {
        debug << std::exchange(separator, ", ");
        std::visit([&debug](auto const& name) { debug << name << ": "; }, key);
        print(debug, value, depth + 1);
    }
}

void print(QDebug& debug, DataSetImpl const* record, int depth)
{
    bool const isArray = record != nullptr && record->isArray;
    debug << (isArray ? '[' : '{');
    if (depth == deepestShown) {
        debug << "...";
    } else if (record != nullptr) {
        printEntries(debug, *record, depth);
    }
    debug << (isArray ? ']' : '}');
}

template <typename T>
char* shown(T const& value)
{
    return qstrdup(QDebug::toString(value).toUtf8().constData());
}

} // namespace

std::size_t qHash(MultiType const& value, std::size_t seed) noexcept
{
    std::size_t const hash = shallowHash(value, seed);
    auto const* const record = MultiTypeKinds::find<std::shared_ptr<DataSetImpl>>(value);
    return record != nullptr ? hashOf(record->get(), hash) : hash;
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
