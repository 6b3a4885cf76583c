#include <crypto/Crypto.h>

#include "PlainMessage.h"

#include <ChildProcess.h>
#include <QtEndian>
#include <RunTest.h>

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

} // namespace

/// Messages whose content takes more memory than there is, or claims to. In a test of its own, because a
/// limit on memory is also one on the tool that watches a test.
class CryptoMemoryLimitTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aClaimCostsNoMemory();
    void aBombGivesNothing();
};

void CryptoMemoryLimitTest::aClaimCostsNoMemory()
{
    QByteArray payload = qCompress(QByteArray("tiny"), 9);
    qToBigEndian(0xFFFFFFFFU, payload.data());
    QByteArray const message = compressedMessage(payload, 0);
    int const exitCode = inChildProcess([&] {
        if (!limitFurtherMemory(100'000'000)) {
            return 1;
        }
        return Crypto::decrypt(message, key) == "tiny" ? 0 : 2;
    });
    QCOMPARE(exitCode, 0);
}

void CryptoMemoryLimitTest::aBombGivesNothing()
{
    QByteArray const bomb =
        compressedMessage(qCompress(QByteArray(100'000'000, '\0'), 9), PlainMessage::hash);
    int const exitCode = inChildProcess([&] {
        if (!limitFurtherMemory(20'000'000)) {
            return 1;
        }
        return Crypto::decrypt(bomb, key).isEmpty() ? 0 : 2;
    });
    QCOMPARE(exitCode, 0);
}

int main(int argc, char** argv)
{
    return runTest<CryptoMemoryLimitTest>(argc, argv);
}

#include "CryptoMemoryLimitTest.moc"
