#include "../../Least.h"

#include <network/NetworkUtils.h>

#include <LocalNginx.h>
#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <vector>

// Transfers of 1 GiB between an nginx on loopback and a file or memory, and the same by the curl command.
// TMPDIR says where the files are.

namespace {

constexpr qint64 size = 1LL << 30;

LocalNginx* server = nullptr;
QTemporaryDir const* folder = nullptr;

QString target()
{
    return folder->filePath(QStringLiteral("file"));
}

QString source()
{
    return server->folder() + QStringLiteral("/large");
}

QString downloadUrl()
{
    return server->url(QStringLiteral("/large"));
}

QString uploadUrl()
{
    return server->url(QStringLiteral("/upload/large"));
}

/// What was downloaded to memory; like a file, it is given up outside the time that is measured.
std::vector<char>& received()
{
    static std::vector<char> bytes;
    return bytes;
}

/// The processor time in milliseconds of this process, or of those it has started that have ended.
double processorTime(int who)
{
    rusage usage = {};
    getrusage(who, &usage);
    auto const milliseconds = [](timeval time) {
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
    };
    return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
}

/// Runs \a transfer once an iteration; it gives whether it succeeded. The counter "processor" is the time
/// that the client's side took of a processor, which a busy machine changes less than the time that went by.
template <typename Transfer>
void measure(benchmark::State& state, int who, Transfer transfer)
{
    double processor = 0;
    for (auto _ : state) {
        double const before = processorTime(who);
        bool const done = transfer();
        processor += processorTime(who) - before;
        if (!done) {
            state.SkipWithError("the transfer failed");
            break;
        }
        state.PauseTiming();
        std::vector<char>().swap(received());
        QFile::remove(target());
        QFile::remove(server->folder() + QStringLiteral("/upload/large"));
        state.ResumeTiming();
    }
    state.counters["processor"] = benchmark::Counter(processor, benchmark::Counter::kAvgIterations);
}

bool runCurl(QStringList const& arguments)
{
    return QProcess::execute(QStringLiteral("curl"), QStringList(QStringLiteral("-s")) + arguments) == 0;
}

void downloadToFile(benchmark::State& state)
{
    measure(state, RUSAGE_SELF,
            [] { return NetworkUtils::downloadFile(downloadUrl(), target(), nullptr).ok; });
}

void downloadToFileByCurl(benchmark::State& state)
{
    measure(state, RUSAGE_CHILDREN, [] { return runCurl({QStringLiteral("-o"), target(), downloadUrl()}); });
}

void downloadToMemory(benchmark::State& state)
{
    measure(state, RUSAGE_SELF,
            [] { return NetworkUtils::downloadToMemory(downloadUrl(), received(), nullptr).ok; });
}

void upload(benchmark::State& state)
{
    measure(state, RUSAGE_SELF,
            [] { return NetworkUtils::putFile(uploadUrl(), source(), size, nullptr).ok; });
}

void uploadByCurl(benchmark::State& state)
{
    measure(state, RUSAGE_CHILDREN, [] { return runCurl({QStringLiteral("-T"), source(), uploadUrl()}); });
}

BENCHMARK(downloadToFile)->Name("download of 1 GiB to a file|ours")->Apply(least);
BENCHMARK(downloadToFileByCurl)->Name("download of 1 GiB to a file|`curl`|at most 1.1")->Apply(least);
BENCHMARK(downloadToMemory)->Name("download of 1 GiB to memory|ours")->Apply(least);
BENCHMARK(downloadToFileByCurl)->Name("download of 1 GiB to memory|`curl` to a file")->Apply(least);
BENCHMARK(upload)->Name("upload of 1 GiB|ours")->Apply(least);
BENCHMARK(uploadByCurl)->Name("upload of 1 GiB|`curl`|at most 1.1")->Apply(least);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    benchmark::Initialize(&argc, argv);
    QTemporaryDir const ownFolder;
    LocalNginx nginx;
    if (!nginx.isRunning()) {
        qCritical("%s", qPrintable(nginx.problem()));
        return 1;
    }
    server = &nginx;
    folder = &ownFolder;
    QFile large(source());
    if (!large.open(QIODevice::WriteOnly) || !large.resize(size)) {
        return 1;
    }
    large.close();
    NetworkUtils::start();
    benchmark::RunSpecifiedBenchmarks();
    NetworkUtils::stop();
    return 0;
}
