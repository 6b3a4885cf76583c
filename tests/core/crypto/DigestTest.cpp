// Built together with the digests' own source, since the library shows only the one it uses.
#include <crypto/Digest_p.h>

#include "Noise.h"

#include <RunTest.h>

Q_DECLARE_METATYPE(DigestAlgorithm)

class DigestTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bothComputeTheKnownDigests_data();
    void bothComputeTheKnownDigests();
};

void DigestTest::bothComputeTheKnownDigests_data()
{
    QTest::addColumn<DigestAlgorithm>("algorithm");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("digest");
    QTest::newRow("SHA-1 of nothing")
        << DigestAlgorithm::Sha1 << QByteArray() << QByteArray("da39a3ee5e6b4b0d3255bfef95601890afd80709");
    QTest::newRow("SHA-1 of abc") << DigestAlgorithm::Sha1 << QByteArray("abc")
                                  << QByteArray("a9993e364706816aba3e25717850c26c9cd0d89d");
    QTest::newRow("SHA-256 of nothing")
        << DigestAlgorithm::Sha256 << QByteArray()
        << QByteArray("e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    QTest::newRow("SHA-256 of abc")
        << DigestAlgorithm::Sha256 << QByteArray("abc")
        << QByteArray("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

template <typename Implementation>
QByteArray digestInPieces(DigestAlgorithm algorithm, QByteArray const& bytes)
{
    Implementation digest(algorithm);
    for (char const byte : bytes) {
        digest.update(QByteArrayView(&byte, 1));
    }
    digest.update(QByteArrayView());
    return digest.finish().toHex();
}

void DigestTest::bothComputeTheKnownDigests()
{
    QFETCH(DigestAlgorithm, algorithm);
    QFETCH(QByteArray, bytes);
    QTEST(digestInPieces<QtDigest>(algorithm, bytes), "digest");
    QTEST(digestInPieces<Digest>(algorithm, bytes), "digest");
    QByteArray const longer = noise(1000);
    QCOMPARE(digestInPieces<Digest>(algorithm, longer), digestInPieces<QtDigest>(algorithm, longer));
}

int main(int argc, char** argv)
{
    return runTest<DigestTest>(argc, argv);
}

#include "DigestTest.moc"
