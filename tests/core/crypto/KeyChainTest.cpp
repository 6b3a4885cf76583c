// Built together with the scrambling's own source, which the library does not show.
#include <crypto/KeyChain_p.h>

#include "Noise.h"

#include <RunTest.h>

class KeyChainTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithThePlainVersionHoweverCut();
    void writesNothingBesideItsOutput();
};

namespace {

constexpr std::array<unsigned char, 8> key = {0xA5, 1, 0, 0x80, 0xFF, 7, 0, 0x3C};

unsigned char* bytesOf(QByteArray& array)
{
    return reinterpret_cast<unsigned char*>(array.data());
}

QByteArray plainlyScrambled(QByteArray bytes)
{
    int last = 0;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        last = (static_cast<unsigned char>(bytes[i]) ^ last ^ key[static_cast<std::size_t>(i) % 8]) & 0xFF;
        bytes[i] = static_cast<char>(last);
    }
    return bytes;
}

} // namespace

void KeyChainTest::agreesWithThePlainVersionHoweverCut()
{
    QByteArray const plain = noise(64);
    QByteArray const scrambled = plainlyScrambled(plain);
    for (std::size_t first = 0; first <= 40; ++first) {
        for (std::size_t second = first; second <= 64; ++second) {
            QByteArray bytes = plain;
            KeyChain forth(key);
            KeyChain back(key);
            for (auto const& [from, to] : {std::pair(std::size_t(0), first), std::pair(first, second),
                                           std::pair(second, std::size_t(64))}) {
                forth.scramble(bytesOf(bytes) + from, bytesOf(bytes) + from, to - from);
            }
            QCOMPARE(bytes, scrambled);
            for (auto const& [from, to] : {std::pair(std::size_t(0), first), std::pair(first, second),
                                           std::pair(second, std::size_t(64))}) {
                back.unscramble(bytesOf(bytes) + from, bytesOf(bytes) + from, to - from);
            }
            QCOMPARE(bytes, plain);
        }
    }
}

void KeyChainTest::writesNothingBesideItsOutput()
{
    QByteArray plain = noise(64);
    for (std::size_t size = 0; size <= 48; ++size) {
        QByteArray guardedOutput(64, 'g');
        KeyChain(key).scramble(bytesOf(plain), bytesOf(guardedOutput) + 8, size);
        QCOMPARE(guardedOutput.left(8), QByteArray(8, 'g'));
        qsizetype const end = 8 + static_cast<qsizetype>(size);
        QCOMPARE(guardedOutput.mid(8, end - 8), plainlyScrambled(plain.left(end - 8)));
        QCOMPARE(guardedOutput.mid(end), QByteArray(64 - end, 'g'));
    }
}

int main(int argc, char** argv)
{
    return runTest<KeyChainTest>(argc, argv);
}

#include "KeyChainTest.moc"
