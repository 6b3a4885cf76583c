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

int main(int argc, char** argv)
{
    return runTest<InstanceMessageTest>(argc, argv);
}

#include "InstanceMessageTest.moc"
