#pragma once

#include <algorithm>
#include <benchmark/benchmark.h>
#include <vector>

/// Runs what moves much memory several times by turns with its peers and takes the quickest as the statistic
/// "least": whatever else the machine does only adds to the time.
inline void least(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1)->Repetitions(9);
    benchmark->ComputeStatistics("least", [](std::vector<double> const& times) {
        return *std::min_element(times.begin(), times.end());
    });
}
