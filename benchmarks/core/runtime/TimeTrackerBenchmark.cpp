#include <runtime/TimeTracker.h>

#include <QElapsedTimer>
#include <benchmark/benchmark.h>

namespace {

void TimeTracker_getDuration(benchmark::State& state)
{
    TimeTracker const tracker(10);
    int now = 10;
    for (auto _ : state) {
        benchmark::DoNotOptimize(tracker.getDuration(++now));
    }
}
BENCHMARK(TimeTracker_getDuration)->Name("`TimeTracker::getDuration`|ours");

/// What a caller has without a tracker: a clock read each time.
void ElapsedTimer_elapsed(benchmark::State& state)
{
    QElapsedTimer timer;
    timer.start();
    for (auto _ : state) {
        benchmark::DoNotOptimize(timer.elapsed());
    }
}
BENCHMARK(ElapsedTimer_elapsed)->Name("`TimeTracker::getDuration`|`QElapsedTimer::elapsed`");

void TimeTracker_pauseAndResume(benchmark::State& state)
{
    TimeTracker tracker(10);
    int now = 10;
    for (auto _ : state) {
        tracker.pause(++now);
        tracker.resume(++now);
    }
    benchmark::DoNotOptimize(tracker.getDuration(now));
}
BENCHMARK(TimeTracker_pauseAndResume)->Name("`TimeTracker::pause` and `resume`|ours");

} // namespace
