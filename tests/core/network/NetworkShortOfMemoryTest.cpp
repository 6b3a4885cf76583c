#include <network/NetworkUtils.h>

#include <QFile>
#include <RunTest.h>
#include <ScarceMemory.h>

/// In a test of its own, because Qt's parts lose what they held when memory runs out on the way, which leak
/// checkers would report.
class NetworkShortOfMemoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void partsForAFormComeBackEmpty_data();
    void partsForAFormComeBackEmpty();
};

void NetworkShortOfMemoryTest::partsForAFormComeBackEmpty_data()
{
    QTest::addColumn<bool>("ofAFile");
    QTest::newRow("text") << false;
    QTest::newRow("file") << true;
}

void NetworkShortOfMemoryTest::partsForAFormComeBackEmpty()
{
    QFETCH(bool, ofAFile);
    QFile file;
    QString const quoted = QStringLiteral("\"quoted\"");
    auto const make = [&] {
        return ofAFile ? NetworkUtils::getHttpFilePart(quoted, quoted, QStringLiteral("audio/wav"), file)
                       : NetworkUtils::getHttpTextPart(quoted, "body");
    };
    QHttpPart const whole = make();
    QHttpPart const empty;
    int const allocations = allocationsThatMayFail([&] {
        QHttpPart const part = make();
        return part == whole || part != empty;
    });
    QVERIFY(allocations > 0);
}

int main(int argc, char** argv)
{
    return runTest<NetworkShortOfMemoryTest>(argc, argv);
}

#include "NetworkShortOfMemoryTest.moc"
