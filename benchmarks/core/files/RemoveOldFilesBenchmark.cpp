// Pruning a folder of old files, beside the command that an administrator would use for it.

#include <files/FilePaths.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int ageInDays = 10;

/// Fills \a folder with \a count empty files, each \a ageInDays old.
void fill(QString const& folder, std::int64_t count)
{
    int const parent = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY);
    timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    time.tv_sec -= ageInDays * 24 * 3600;
    timespec const both[] = {time, time};
    for (std::int64_t i = 0; i < count; ++i) {
        std::string const name = "recording-" + std::to_string(i) + ".wav";
        int const file = ::openat(parent, name.c_str(), O_CREAT | O_WRONLY, 0600);
        ::futimens(file, both);
        ::close(file);
    }
    ::close(parent);
}

template <typename Prune>
void measure(benchmark::State& state, Prune prune)
{
    QTemporaryDir const folder;
    for (auto _ : state) {
        state.PauseTiming();
        fill(folder.path(), state.range(0));
        state.ResumeTiming();
        prune(folder.path());
        state.PauseTiming();
        if (!QDir(folder.path()).isEmpty()) {
            state.SkipWithError("files are left");
        }
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void ours(benchmark::State& state)
{
    measure(state, [](QString const& folder) { FilePaths::removeOldFiles(folder, 1, true); });
}

void findDelete(benchmark::State& state)
{
    measure(state, [](QString const& folder) {
        QByteArray const command = "find '" + QFile::encodeName(folder) + "' -type f -mmin +1439 -delete";
        if (std::system(command.constData()) != 0) {
            std::abort();
        }
    });
}

void sizes(benchmark::internal::Benchmark* benchmark)
{
    // Filling the folder takes much longer than emptying it, so the number of runs is set by hand.
    benchmark->Arg(10'000)->Arg(100'000)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
}

} // namespace

BENCHMARK(ours)->Name("`removeOldFiles`, {} files|ours")->Apply(sizes);
BENCHMARK(findDelete)->Name("`removeOldFiles`, {} files|`find -delete`|at most 1.5")->Apply(sizes);
