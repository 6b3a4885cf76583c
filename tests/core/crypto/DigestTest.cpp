// Built together with the digests' own source, since the library shows only the one it uses.
#include <crypto/Crypto.h>
#include <crypto/Digest_p.h>

#include "Noise.h"

#include <ChildProcess.h>

#include <QTemporaryFile>
#include <RunTest.h>

#ifdef SOFTPHONECORE_HAS_OPENSSL
#include <openssl/evp.h>
#endif

Q_DECLARE_METATYPE(DigestAlgorithm)

class DigestTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bothComputeTheKnownDigests_data();
    void bothComputeTheKnownDigests();
#ifdef SOFTPHONECORE_HAS_OPENSSL
    void anAlgorithmThatIsForbiddenGivesNothing();
#endif
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

#ifdef SOFTPHONECORE_HAS_OPENSSL
void DigestTest::anAlgorithmThatIsForbiddenGivesNothing()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    int const failedStep = inChildProcess([&] {
        // As where the configuration demands a certified provider and there is none.
        if (EVP_set_default_properties(nullptr, "fips=yes") != 1) {
            return 1;
        }
        if (!digestInPieces<OpenSslDigest>(DigestAlgorithm::Sha1, "abc").isEmpty()) {
            return 2;
        }
        if (!Crypto::encrypt("abc", 1, Crypto::ProtectionMode::Hash).isEmpty()) {
            return 3;
        }
        return Crypto::computeSHA256(file.fileName()).isEmpty() ? 0 : 4;
    });
    QCOMPARE(failedStep, 0);
}
#endif

int main(int argc, char** argv)
{
    return runTest<DigestTest>(argc, argv);
}

#include "DigestTest.moc"
