#include <runtime/UniqueId.h>

#include <QRandomGenerator64>
#include <QUuid>
#include <benchmark/benchmark.h>

namespace {

void UniqueId_createUUID(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(UniqueId::createUUID());
    }
}
BENCHMARK(UniqueId_createUUID);

void Uuid_createAndFormat(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(QUuid::createUuid().toString());
    }
}
BENCHMARK(Uuid_createAndFormat);

void UniqueId_generateNumber(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(UniqueId::generateNumber());
    }
}
BENCHMARK(UniqueId_generateNumber);

void RandomGenerator_generate(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(QRandomGenerator64::global()->generate());
    }
}
BENCHMARK(RandomGenerator_generate);

} // namespace
