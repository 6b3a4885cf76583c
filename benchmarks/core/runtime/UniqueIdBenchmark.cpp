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
BENCHMARK(UniqueId_createUUID)->Name("`UniqueId::createUUID`|ours");

void Uuid_createAndFormat(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(QUuid::createUuid().toString());
    }
}
BENCHMARK(Uuid_createAndFormat)->Name("`UniqueId::createUUID`|`QUuid` to text");

void UniqueId_generateNumber(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(UniqueId::generateNumber());
    }
}
BENCHMARK(UniqueId_generateNumber)->Name("`UniqueId::generateNumber`|ours");

void RandomGenerator_generate(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(QRandomGenerator64::global()->generate());
    }
}
BENCHMARK(RandomGenerator_generate)->Name("`UniqueId::generateNumber`|`QRandomGenerator64`");

} // namespace
