#include "../../Least.h"

#include <client/Transfers.h>

#include <LocalNginx.h>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <benchmark/benchmark.h>

// Downloads between an nginx on loopback and files, and the same by Qt's manager alone. TMPDIR says where the
// files are.

namespace {

using namespace Softphone;

constexpr qint64 size = 1LL << 30;
constexpr qint64 eighth = 256LL << 20;
constexpr int files = 8;

LocalNginx* server = nullptr;
QTemporaryDir const* folder = nullptr;

QString target(int number)
{
    return folder->filePath(QString::number(number));
}

void removeTargets()
{
    for (int number = 0; number < files; ++number) {
        QFile::remove(target(number));
    }
}

/// Measures how long the event loop of this thread leaves a timer of 1 ms waiting at most.
class LoopWatch : public QObject
{
public:
    LoopWatch()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        connect(&m_timer, &QTimer::timeout, this, [this] {
            m_longest = std::max(m_longest, m_clock.nsecsElapsed());
            m_clock.start();
        });
        m_clock.start();
        m_timer.start(1);
    }

    [[nodiscard]] double longestMilliseconds() const { return static_cast<double>(m_longest) / 1e6; }

private:
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_longest = 0;
};

bool downloadAll(QString const& name, int count)
{
    Transfers transfers;
    transfers.setParallel(count);
    QEventLoop loop;
    int left = count;
    bool isGood = true;
    for (int number = 0; number < count; ++number) {
        TransferRequest request;
        request.url = QUrl(server->url(name));
        request.path = target(number);
        Transfer* const transfer = transfers.download(request);
        QObject::connect(transfer, &Transfer::finished, &loop, [&, transfer] {
            isGood = isGood && transfer->error() == TransferError::None;
            if (--left == 0) {
                loop.quit();
            }
        });
    }
    loop.exec();
    return isGood;
}

bool downloadByQt()
{
    QNetworkAccessManager manager;
    QFile file(target(0));
    QEventLoop loop;
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    QNetworkReply* const reply = manager.get(QNetworkRequest(QUrl(server->url(QStringLiteral("/large")))));
    QObject::connect(reply, &QNetworkReply::readyRead, &file, [&] { file.write(reply->readAll()); });
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    file.write(reply->readAll());
    return reply->error() == QNetworkReply::NoError && file.size() == size;
}

template <typename Download>
void measure(benchmark::State& state, Download download)
{
    for (auto _ : state) {
        if (!download()) {
            state.SkipWithError("the download failed");
            break;
        }
        state.PauseTiming();
        removeTargets();
        state.ResumeTiming();
    }
}

void downloadToFile(benchmark::State& state)
{
    measure(state, [] { return downloadAll(QStringLiteral("/large"), 1); });
}

void downloadToFileByQt(benchmark::State& state)
{
    measure(state, [] { return downloadByQt(); });
}

/// The counter "wait" is the longest time in milliseconds that the event loop did not turn.
void eightFiles(benchmark::State& state)
{
    double wait = 0;
    measure(state, [&] {
        LoopWatch const watch;
        bool const isGood = downloadAll(QStringLiteral("/eighth"), files);
        wait = std::max(wait, watch.longestMilliseconds());
        return isGood;
    });
    state.counters["wait"] = wait;
}

BENCHMARK(downloadToFile)->Name("download of 1 GiB to a file|ours")->Apply(least);
BENCHMARK(downloadToFileByQt)
    ->Name("download of 1 GiB to a file|`QNetworkAccessManager` and `QFile`|at most 1.1")
    ->Apply(least);
BENCHMARK(eightFiles)->Name("download of 8 files of 256 MiB|ours")->Apply(least);

bool addLarge(QString const& name, qint64 bytes)
{
    QFile file(server->folder() + name);
    return file.open(QIODevice::WriteOnly) && file.resize(bytes);
}

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
    if (!addLarge(QStringLiteral("/large"), size) || !addLarge(QStringLiteral("/eighth"), eighth)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
