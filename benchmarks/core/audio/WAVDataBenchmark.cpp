#include "../../Least.h"

#include <audio/WAVData.h>

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <fstream>

// Two recordings of 512 MiB each are joined, and "cat" puts their payloads to
// the same place.

namespace {

constexpr qint64 total = qint64(1) << 30;

QString folder()
{
    // A file system in memory: a disk's own writing would drown the difference.
    static QTemporaryDir const temporary(
        (QDir(QStringLiteral("/dev/shm")).exists() ? QStringLiteral("/dev/shm") : QDir::tempPath()) +
        QStringLiteral("/spcore-bench-XXXXXX"));
    return temporary.path();
}

void run(QString const& script)
{
    QProcess shell;
    shell.setWorkingDirectory(folder());
    shell.start(QStringLiteral("sh"), {QStringLiteral("-c"), script, QStringLiteral(SPCORE_PROGRAM)});
    shell.waitForFinished(-1);
}

void makeRecordings()
{
    static bool made = false;
    if (!made) {
        run(QStringLiteral("head -c 536870912 /dev/urandom > a.raw; cp a.raw b.raw; for f in a b; "
                           "do"
                           " sox -t raw -r 8000 -c 1 -b 16 -e signed $f.raw $f.wav; done"));
        made = true;
    }
}

void prepare(benchmark::State& state)
{
    state.PauseTiming();
    run(QStringLiteral("rm -f out"));
    state.ResumeTiming();
}

void joinCommand(benchmark::State& state)
{
    makeRecordings();
    for (auto _ : state) {
        prepare(state);
        run(QStringLiteral("\"$0\" wav join out a.wav b.wav"));
    }
    state.SetBytesProcessed(state.iterations() * total);
}

void joinWithLibrary(benchmark::State& state)
{
    makeRecordings();
    std::string const base = folder().toStdString();
    for (auto _ : state) {
        prepare(state);
        WAVData header(base + "/a.wav");
        WAVData const other(base + "/b.wav");
        header.append(other);
        std::ofstream out(base + "/out", std::ios::binary);
        header.writeHeaderToFile(out);
        for (WAVData const* const part : {&std::as_const(header), &other}) {
            std::ifstream in(part->path(), std::ios::binary);
            in.seekg(std::streamoff(part->headerLength()) + 4);
            part->writeBuffer(in, out);
        }
    }
    state.SetBytesProcessed(state.iterations() * total);
}

void cat(benchmark::State& state)
{
    makeRecordings();
    for (auto _ : state) {
        prepare(state);
        run(QStringLiteral("cat a.raw b.raw > out"));
    }
    state.SetBytesProcessed(state.iterations() * total);
}

} // namespace

BENCHMARK(joinCommand)->Name("`spcore wav join` of 1 GiB|ours")->Apply(least);
BENCHMARK(cat)->Name("`spcore wav join` of 1 GiB|`cat` of the payloads|at most 1.1")->Apply(least);
BENCHMARK(joinWithLibrary)->Name("the same through `WAVData::writeBuffer`|ours")->Apply(least);
BENCHMARK(cat)
    ->Name("the same through `WAVData::writeBuffer`|`cat` of the payloads|at most 1.1")
    ->Apply(least);

BENCHMARK_MAIN();
