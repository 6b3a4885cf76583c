#include <crypto/Crypto.h>

#include "Noise.h"
#include "PlainMessage.h"

#include <ChildProcess.h>
#include <QtEndian>
#include <RunTest.h>
#include <fstream>

#ifdef __SANITIZE_ADDRESS__
// Memory runs out here, and the sanitizer's allocator is to say so as the real one does.
extern "C" char const* __asan_default_options();
extern "C" char const* __asan_default_options()
{
    return "allocator_may_return_null=1";
}
#endif

namespace {

constexpr unsigned long long key = 0x11223344556677A5;

/// A message with \a payload, a size and a zlib stream, as the compressed one.
QByteArray compressedMessage(QByteArray const& payload, int tag)
{
    return PlainMessage::sealed(payload, PlainMessage::compressed | tag, key, 'S');
}

/// Lets this process take \a extra bytes more than it has now.
bool limitMemory(rlim_t extra)
{
    unsigned long long pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return limitResource(RLIMIT_AS, pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + extra);
}

} // namespace

/// Messages that take more memory than there is, or claim to. In a test of its own, because a limit on memory
/// is also one on the tool that watches a test.
class CryptoShortOfMemoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aClaimCostsNoMemory();
    void runningOutOfMemoryGivesNothing();
};

void CryptoShortOfMemoryTest::aClaimCostsNoMemory()
{
    QByteArray payload = qCompress(QByteArray("tiny"), 9);
    qToBigEndian(0xFFFFFFFFU, payload.data());
    QByteArray const message = compressedMessage(payload, 0);
    int const exitCode = inChildProcess([&] {
        if (!limitMemory(100'000'000)) {
            return 1;
        }
        return Crypto::decrypt(message, key) == "tiny" ? 0 : 2;
    });
    QCOMPARE(exitCode, 0);
}

void CryptoShortOfMemoryTest::runningOutOfMemoryGivesNothing()
{
    QByteArray const bomb =
        compressedMessage(qCompress(QByteArray(100'000'000, '\0'), 9), PlainMessage::hash);
    QByteArray const large = noise(40'000'000);
    // More than the heap keeps of what was freed before.
    QByteArray const stored = QByteArray(120'000'000, '\0');
    int const exitCode = inChildProcess([&] {
        if (!limitMemory(20'000'000)) {
            return 1;
        }
        int const notEmpty = (Crypto::decrypt(bomb, key).isEmpty() ? 0 : 2) +
                             (Crypto::decrypt(stored, key).isEmpty() ? 0 : 4) +
                             (Crypto::encrypt(large, key, Crypto::ProtectionMode::Hash).isEmpty() ? 0 : 8);
        return notEmpty;
    });
    QCOMPARE(exitCode, 0);
}

int main(int argc, char** argv)
{
    return runTest<CryptoShortOfMemoryTest>(argc, argv);
}

#include "CryptoShortOfMemoryTest.moc"
