#include <crypto/Crypto.h>
#include <crypto/Message_p.h>

#include <Noise.h>
#include <PlainMessage.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <benchmark/benchmark.h>

namespace {

constexpr unsigned long long key = 0xA5;
constexpr char salt = 's';
constexpr qsizetype payloadSize = 16 << 20;
constexpr qint64 fileSize = qint64(1) << 30;

QByteArray const& payload()
{
    static QByteArray const bytes = noise(payloadSize);
    return bytes;
}

int flagsOf(Crypto::ProtectionMode mode)
{
    return static_cast<int>(mode) * 2;
}

void countBytes(benchmark::State& state, qint64 size)
{
    state.SetBytesProcessed(state.iterations() * size);
}

void decrypt(benchmark::State& state, Crypto::ProtectionMode mode)
{
    QByteArray const message = PlainMessage::sealed(payload(), flagsOf(mode), key, salt);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Crypto::decrypt(message, key));
    }
    countBytes(state, payloadSize);
}

void decryptPlainly(benchmark::State& state, Crypto::ProtectionMode mode)
{
    QByteArray const message = PlainMessage::sealed(payload(), flagsOf(mode), key, salt);
    for (auto _ : state) {
        benchmark::DoNotOptimize(PlainMessage::opened(message, key));
    }
    countBytes(state, payloadSize);
}

void seal(benchmark::State& state, Crypto::ProtectionMode mode)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(Message::sealed(payload(), Crypto::CryptoFlag::None, key, mode, salt));
    }
    countBytes(state, payloadSize);
}

void sealPlainly(benchmark::State& state, Crypto::ProtectionMode mode)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(PlainMessage::sealed(payload(), flagsOf(mode), key, salt));
    }
    countBytes(state, payloadSize);
}

/// A file of 1 GiB that is removed at the end; read once, so that it lies in
/// the page cache.
QString largeFile()
{
    struct File
    {
        File()
        {
            QFile file(path);
            file.open(QIODevice::WriteOnly);
            for (qint64 size = 0; size < fileSize; size += payloadSize) {
                file.write(payload());
            }
        }
        ~File() { QFile::remove(path); }
        QString path = QDir::tempPath() + QStringLiteral("/spcore-bench-sha256");
    };
    static File const file;
    return file.path;
}

void sha256(benchmark::State& state)
{
    QString const path = largeFile();
    for (auto _ : state) {
        benchmark::DoNotOptimize(Crypto::computeSHA256(path));
    }
    countBytes(state, fileSize);
}

void sha256OfOpenssl(benchmark::State& state)
{
    QString const path = largeFile();
    for (auto _ : state) {
        QProcess::execute(
            QStringLiteral("sh"),
            {QStringLiteral("-c"), QStringLiteral("openssl dgst -sha256 \"$0\" >/dev/null"), path});
    }
    countBytes(state, fileSize);
}

constexpr auto none = Crypto::ProtectionMode::None;
constexpr auto checksum = Crypto::ProtectionMode::Checksum;
constexpr auto hash = Crypto::ProtectionMode::Hash;

} // namespace

BENCHMARK_CAPTURE(decrypt, none, none)->Name("decrypt, no tag|ours");
BENCHMARK_CAPTURE(decryptPlainly, none, none)->Name("decrypt, no tag|byte by byte|at most 0.2");
BENCHMARK_CAPTURE(decrypt, checksum, checksum)->Name("decrypt, checksum|ours");
BENCHMARK_CAPTURE(decryptPlainly, checksum, checksum)->Name("decrypt, checksum|byte by byte|at most 0.2");
BENCHMARK_CAPTURE(decrypt, hash, hash)->Name("decrypt, hash|ours");
BENCHMARK_CAPTURE(decryptPlainly, hash, hash)->Name("decrypt, hash|byte by byte|at most 0.2");
BENCHMARK_CAPTURE(seal, none, none)->Name("seal, no tag|ours");
BENCHMARK_CAPTURE(sealPlainly, none, none)->Name("seal, no tag|byte by byte|at most 0.2");
BENCHMARK_CAPTURE(seal, checksum, checksum)->Name("seal, checksum|ours");
BENCHMARK_CAPTURE(sealPlainly, checksum, checksum)->Name("seal, checksum|byte by byte|at most 0.2");
BENCHMARK_CAPTURE(seal, hash, hash)->Name("seal, hash|ours");
BENCHMARK_CAPTURE(sealPlainly, hash, hash)->Name("seal, hash|byte by byte|at most 0.2");
BENCHMARK(sha256)->Name("SHA-256 of a file of 1 GiB|ours")->UseRealTime();
BENCHMARK(sha256OfOpenssl)
    ->Name("SHA-256 of a file of 1 GiB|`openssl dgst -sha256`|at most 1.1")
    ->UseRealTime();

BENCHMARK_MAIN();
