// The whole room, built once more as it is where libcrypto is not found.
#ifdef SOFTPHONECORE_HAS_OPENSSL
#error "This test is to be built without libcrypto"
#endif

#include <crypto/Crypto.h>

#include "PlainMessage.h"

#include <QFile>
#include <QTemporaryDir>
#include <RunTest.h>

class CryptoWithoutOpenSslTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hashesFiles();
    void sealsAndOpensHashedMessages();
};

void CryptoWithoutOpenSslTest::hashesFiles()
{
    QTemporaryDir const folder;
    QFile file(folder.filePath(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(1'000'000, 'a'));
    file.close();
    QCOMPARE(Crypto::computeSHA256(file.fileName()),
             QStringLiteral("cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"));
    QCOMPARE(Crypto::computeSHA256(folder.filePath(QStringLiteral("missing"))), QString());
}

void CryptoWithoutOpenSslTest::sealsAndOpensHashedMessages()
{
    QByteArray const data("Hello, softphone!");
    QByteArray message = Crypto::encrypt(data, 7, Crypto::ProtectionMode::Hash);
    QCOMPARE(PlainMessage::opened(message, 7), std::optional(data));
    QCOMPARE(Crypto::decrypt(PlainMessage::sealed(data, PlainMessage::hash, 7, 's'), 7), data);
    message.back() = static_cast<char>(message.back() ^ 1);
    QCOMPARE(Crypto::decrypt(message, 7), QByteArray());
}

int main(int argc, char** argv)
{
    return runTest<CryptoWithoutOpenSslTest>(argc, argv);
}

#include "CryptoWithoutOpenSslTest.moc"
