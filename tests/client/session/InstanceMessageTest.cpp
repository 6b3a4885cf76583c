#include "RunTest.h"

#include "../../../src/client/session/InstanceMessage_p.h"

using Softphone::Impl::InstanceMessage;

/// The bytes that two copies exchange stay as they are, since an update may leave copies of two versions
/// running.
class InstanceMessageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theBytesAreThese();
    void everyShortBodyIsReadOrRefused();
    void headersAreReadOrRefused_data();
    void headersAreReadOrRefused();
};

void InstanceMessageTest::theBytesAreThese()
{
    InstanceMessage const message{.arguments = {QStringLiteral("é"), QString()}, .activationToken = "t"};
    QCOMPARE(*message.encoded(), QByteArray("SPI1\0\0\0\x0f\0\0\0\1t\0\0\0\2\0\xe9\0\0\0\0", 23));
}

void InstanceMessageTest::everyShortBodyIsReadOrRefused()
{
    // Bodies over the bytes 0, 1 and 2, up to nine of them: what is read has these very bytes again.
    constexpr int longest = 9;
    int read = 0;
    QByteArray body;
    auto const tryAll = [&read](auto const& self, QByteArray& bytes) -> void {
        if (auto const message = InstanceMessage::decoded(bytes)) {
            QCOMPARE(message->encoded()->sliced(InstanceMessage::headerSize), bytes);
            ++read;
        }
        for (char byte = 0; byte < 3 && bytes.size() < longest; ++byte) {
            bytes.append(byte);
            self(self, bytes);
            bytes.chop(1);
        }
    };
    tryAll(tryAll, body);
    QVERIFY(read > 10);
}

void InstanceMessageTest::headersAreReadOrRefused_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<qsizetype>("length"); // -1: none
    QTest::newRow("nothing follows") << QByteArray("SPI1\0\0\0\0", 8) << qsizetype(0);
    QTest::newRow("as much as may follow") << QByteArray("SPI1\0\2\x10\4", 8) << InstanceMessage::wireLimit;
    QTest::newRow("a byte more") << QByteArray("SPI1\0\2\x10\5", 8) << qsizetype(-1);
    QTest::newRow("another version") << QByteArray("SPI2\0\0\0\0", 8) << qsizetype(-1);
    QTest::newRow("cut in the length") << QByteArray("SPI1\0\0\0", 7) << qsizetype(-1);
    QTest::newRow("nothing") << QByteArray() << qsizetype(-1);
}

void InstanceMessageTest::headersAreReadOrRefused()
{
    QFETCH(QByteArray, header);
    QFETCH(qsizetype, length);
    QCOMPARE(InstanceMessage::lengthAfter(header).value_or(-1), length);
}

int main(int argc, char** argv)
{
    return runTest<InstanceMessageTest>(argc, argv);
}

#include "InstanceMessageTest.moc"
