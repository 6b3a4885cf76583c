// Built together with the checksum's own source, which the library does not show.
#include <crypto/Crc16_p.h>

#include "Noise.h"

#include <RunTest.h>

class Crc16Test : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasTheCheckValueOfItsStandard();
    void agreesWithQtAtEveryLengthAndAlignment();
    void takesItsInputInPieces();
};

namespace {

unsigned char const* bytesOf(QByteArrayView view)
{
    return reinterpret_cast<unsigned char const*>(view.data());
}

quint16 checksumOf(QByteArrayView view)
{
    Crc16 checksum;
    checksum.update(bytesOf(view), static_cast<std::size_t>(view.size()));
    return checksum.value();
}

} // namespace

void Crc16Test::hasTheCheckValueOfItsStandard()
{
    QCOMPARE(checksumOf("123456789"), quint16(0x906E));
    QCOMPARE(checksumOf(QByteArrayView()), quint16(0));
}

void Crc16Test::agreesWithQtAtEveryLengthAndAlignment()
{
    QByteArray const bytes = noise(200);
    for (qsizetype start = 0; start < 16; ++start) {
        for (qsizetype size = 0; start + size <= bytes.size(); ++size) {
            QByteArrayView const part = QByteArrayView(bytes).sliced(start, size);
            QCOMPARE(checksumOf(part), qChecksum(part, Qt::ChecksumIso3309));
        }
    }
}

void Crc16Test::takesItsInputInPieces()
{
    QByteArray const bytes = noise(100);
    for (qsizetype cut = 0; cut <= bytes.size(); ++cut) {
        Crc16 checksum;
        checksum.update(bytesOf(bytes), static_cast<std::size_t>(cut));
        checksum.update(bytesOf(bytes) + cut, static_cast<std::size_t>(bytes.size() - cut));
        QCOMPARE(checksum.value(), qChecksum(bytes, Qt::ChecksumIso3309));
    }
}

int main(int argc, char** argv)
{
    return runTest<Crc16Test>(argc, argv);
}

#include "Crc16Test.moc"
