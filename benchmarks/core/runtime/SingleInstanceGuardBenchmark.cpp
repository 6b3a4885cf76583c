#include <files/FilePaths.h>
#include <runtime/SingleInstanceGuard.h>

#include <QFile>
#include <QLocalServer>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

/// A guard that is set up in a temporary folder of its own.
struct Place
{
    Place()
    {
        qputenv("TMPDIR", QFile::encodeName(folder.path()));
        guard.setup(QStringLiteral("bench"), QStringLiteral("user"), QStringLiteral("x"));
        lockPath = FilePaths::buildAbsoluteFilePath(FilePaths::buildTempPath(),
                                                    QStringLiteral("bench_user_x.qlf"), false);
    }

    /// Puts the lock file of a process that is gone: a probe takes it away.
    void leaveLockFile() const
    {
        QFile file(lockPath);
        if (file.open(QIODevice::WriteOnly)) {
            file.write("2147483646\nbench_runtime\n\n\n\n");
        }
    }

    QTemporaryDir folder;
    SingleInstanceGuard guard;
    QString lockPath;
};

void Guard_probeFreeName(benchmark::State& state)
{
    Place place;
    for (auto _ : state) {
        if (place.guard.isAnotherRunning()) {
            state.SkipWithError("the name is not free");
        }
    }
}
BENCHMARK(Guard_probeFreeName)->Name("`isAnotherRunning`, free name|ours|at most 1 ms")->UseRealTime();

/// What a probe of a free name cannot do without.
void File_exists(benchmark::State& state)
{
    Place const place;
    for (auto _ : state) {
        benchmark::DoNotOptimize(QFile::exists(place.lockPath));
    }
}
BENCHMARK(File_exists)->Name("`isAnotherRunning`, free name|`QFile::exists`")->UseRealTime();

void Guard_probeLeftOverFile(benchmark::State& state)
{
    Place place;
    for (auto _ : state) {
        state.PauseTiming();
        place.leaveLockFile();
        state.ResumeTiming();
        if (place.guard.isAnotherRunning()) {
            state.SkipWithError("nobody should be running");
        }
    }
}
BENCHMARK(Guard_probeLeftOverFile)
    ->Name("`isAnotherRunning`, left-over lock file|ours|at most 35 ms")
    ->UseRealTime();

/// The same where the killed process has also left its socket's name.
void Guard_probeLeftOverFileAndSocket(benchmark::State& state)
{
    Place place;
    QString const socket = place.folder.filePath(QStringLiteral("bench_user_x"));
    QString const kept = place.folder.filePath(QStringLiteral("kept"));
    {
        QLocalServer server;
        server.listen(kept);
        QFile::rename(kept, socket);
    }
    for (auto _ : state) {
        state.PauseTiming();
        place.leaveLockFile();
        state.ResumeTiming();
        if (!QFile::exists(socket) || place.guard.isAnotherRunning()) {
            state.SkipWithError("a socket should be left that nobody listens on");
        }
    }
}
BENCHMARK(Guard_probeLeftOverFileAndSocket)
    ->Name("`isAnotherRunning`, left-over lock file and socket|ours|at most 35 ms")
    ->UseRealTime();

void Guard_probeHeldLock(benchmark::State& state)
{
    Place place;
    SingleInstanceGuard other;
    other.setup(QStringLiteral("bench"), QStringLiteral("user"), QStringLiteral("x"));
    other.launchServer();
    QLocalServer::removeServer(QStringLiteral("bench_user_x"));
    for (auto _ : state) {
        if (!place.guard.isAnotherRunning()) {
            state.SkipWithError("the other one should be found");
        }
    }
}
BENCHMARK(Guard_probeHeldLock)->Name("`isAnotherRunning`, lock held|ours")->UseRealTime();

} // namespace
