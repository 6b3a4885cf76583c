// Records beside the maps that a caller would otherwise take: each holds the same texts as keys and the same
// numbers as values.

#include <datasets/DataSets.h>

#include <QString>
#include <QVariantMap>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <vector>

namespace {

using OrderedMap = nlohmann::ordered_map<QString, QVariant>;
using StandardMap = std::map<QString, QVariant>;

std::vector<QString> shuffledKeys(std::int64_t count)
{
    std::vector<QString> keys;
    for (std::int64_t i = 0; i < count; ++i) {
        keys.push_back(QStringLiteral("contact-") + QString::number(i));
    }
    std::shuffle(keys.begin(), keys.end(), std::mt19937(4711));
    return keys;
}

void insert(DataSets::DataSet& set, QString const& key, int value)
{
    set.setValue(key, value);
}

void insert(QVariantMap& map, QString const& key, int value)
{
    map.insert(key, value);
}

void insert(OrderedMap& map, QString const& key, int value)
{
    map.emplace(key, value);
}

void insert(StandardMap& map, QString const& key, int value)
{
    map.insert_or_assign(key, value);
}

int lookup(DataSets::DataSet const& set, QString const& key)
{
    int value = 0;
    set.getValue(key, value);
    return value;
}

template <typename Map>
int lookup(Map const& map, QString const& key)
{
    return map.find(key)->second.toInt();
}

int lookup(QVariantMap const& map, QString const& key)
{
    return map.constFind(key)->toInt();
}

/// Hands out every key, as a text of its own, and every value.
qsizetype walk(DataSets::DataSet const& set)
{
    qsizetype sum = 0;
    for (DataSets::DataObject const& entry : set) {
        int value = 0;
        entry.value()->get(value);
        sum += value + entry.key.size();
    }
    return sum;
}

qsizetype walk(QVariantMap const& map)
{
    qsizetype sum = 0;
    for (auto entry = map.begin(); entry != map.end(); ++entry) {
        QString const key = entry.key();
        sum += entry.value().toInt() + key.size();
    }
    return sum;
}

template <typename Map>
qsizetype walk(Map const& map)
{
    qsizetype sum = 0;
    for (auto const& entry : map) {
        QString const key = entry.first;
        sum += entry.second.toInt() + key.size();
    }
    return sum;
}

/// Reads every key and value where it lies.
qsizetype walkInPlace(DataSets::DataSet const& set)
{
    qsizetype sum = 0;
    for (auto const& [key, value] : set.data->entries) {
        int number = 0;
        value.get(number);
        sum += number + std::get<QString>(key).size();
    }
    return sum;
}

qsizetype walkInPlace(QVariantMap const& map)
{
    qsizetype sum = 0;
    for (auto entry = map.begin(); entry != map.end(); ++entry) {
        sum += entry.value().toInt() + entry.key().size();
    }
    return sum;
}

template <typename Map>
qsizetype walkInPlace(Map const& map)
{
    qsizetype sum = 0;
    for (auto const& [key, value] : map) {
        sum += value.toInt() + key.size();
    }
    return sum;
}

template <typename Container>
Container makeEmpty()
{
    return {};
}

template <>
DataSets::DataSet makeEmpty()
{
    return DataSets::DataSet::createObject();
}

template <typename Container>
Container fill(std::vector<QString> const& keys)
{
    Container container = makeEmpty<Container>();
    int value = 0;
    for (QString const& key : keys) {
        insert(container, key, ++value);
    }
    return container;
}

template <typename Container>
void Lookup(benchmark::State& state)
{
    std::vector<QString> const keys = shuffledKeys(state.range(0));
    Container const container = fill<Container>(keys);
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(lookup(container, keys[next]));
        next = next + 1 == keys.size() ? 0 : next + 1;
    }
}

template <typename Container>
void Insert(benchmark::State& state)
{
    std::vector<QString> const keys = shuffledKeys(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(fill<Container>(keys));
    }
}

template <typename Container>
void Iterate(benchmark::State& state)
{
    Container const container = fill<Container>(shuffledKeys(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(walk(container));
    }
}

template <typename Container>
void IterateInPlace(benchmark::State& state)
{
    Container const container = fill<Container>(shuffledKeys(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(walkInPlace(container));
    }
}

void sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->RangeMultiplier(10)->Range(10, 100'000);
}

BENCHMARK(Lookup<DataSets::DataSet>)->Name("lookup, {} entries|ours")->Apply(sizes);
BENCHMARK(Lookup<QVariantMap>)->Name("lookup, {} entries|`QVariantMap`")->Apply(sizes);
BENCHMARK(Lookup<StandardMap>)->Name("lookup, {} entries|`std::map`")->Arg(1'000);
BENCHMARK(Lookup<OrderedMap>)->Name("lookup, {} entries|`nlohmann::ordered_map`")->Arg(1'000);

BENCHMARK(Insert<DataSets::DataSet>)->Name("insert, {} entries in random order|ours")->Apply(sizes);
BENCHMARK(Insert<QVariantMap>)->Name("insert, {} entries in random order|`QVariantMap`")->Apply(sizes);
BENCHMARK(Insert<StandardMap>)->Name("insert, {} entries in random order|`std::map`")->Arg(1'000);
BENCHMARK(Insert<OrderedMap>)->Name("insert, {} entries in random order|`nlohmann::ordered_map`")->Arg(1'000);

BENCHMARK(Iterate<DataSets::DataSet>)->Name("iteration, {} entries, keys handed out|ours")->Apply(sizes);
BENCHMARK(Iterate<QVariantMap>)->Name("iteration, {} entries, keys handed out|`QVariantMap`")->Apply(sizes);
BENCHMARK(Iterate<StandardMap>)->Name("iteration, {} entries, keys handed out|`std::map`")->Arg(1'000);

BENCHMARK(IterateInPlace<DataSets::DataSet>)->Name("iteration, {} entries in place|ours")->Apply(sizes);
BENCHMARK(IterateInPlace<QVariantMap>)->Name("iteration, {} entries in place|`QVariantMap`")->Apply(sizes);
BENCHMARK(IterateInPlace<StandardMap>)->Name("iteration, {} entries in place|`std::map`")->Arg(1'000);

} // namespace
