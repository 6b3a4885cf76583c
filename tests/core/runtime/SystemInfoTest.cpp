#include <runtime/SystemInfo.h>

#include <QSysInfo>
#include <RunTest.h>

class SystemInfoTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answersAsOnMacOS();
    void readsTheMachine();
    void namesTheGlyphOfAButton_data();
    void namesTheGlyphOfAButton();
};

void SystemInfoTest::answersAsOnMacOS()
{
    QCOMPARE(SystemInfo::getOS(), QStringLiteral("MacOS"));
    QCOMPARE(SystemInfo::isWindows10OrNewer(), false);
    QCOMPARE(SystemInfo::isOSFullyCompatible(), true);
    QCOMPARE(SystemInfo::getSystemButtonFont(), QStringLiteral("Segoe UI"));
    QCOMPARE(SystemInfo::areNotificationsSupported(), false);
}

void SystemInfoTest::readsTheMachine()
{
    QCOMPARE(SystemInfo::getMachineUniqueId().toUtf8(), QSysInfo::machineUniqueId());
    QCOMPARE(SystemInfo::getOSVersion(), QSysInfo::productVersion());
    QVERIFY(!SystemInfo::getOSVersion().isEmpty());
}

void SystemInfoTest::namesTheGlyphOfAButton_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("glyph");
    QTest::newRow("below the first") << -1 << QString();
    QTest::newRow("none") << 0 << QString();
    QTest::newRow("menu") << 1 << QString();
    QTest::newRow("help") << 2 << QString();
    QTest::newRow("minimize") << 3 << QString(QChar(0xE921));
    QTest::newRow("maximize") << 4 << QString(QChar(0xE922));
    QTest::newRow("restore") << 5 << QString(QChar(0xE923));
    QTest::newRow("close") << 6 << QString(QChar(0xE8BB));
    QTest::newRow("beyond the last") << 7 << QString();
}

void SystemInfoTest::namesTheGlyphOfAButton()
{
    QFETCH(int, type);
    QTEST(SystemInfo::getSystemButtonGlyph(static_cast<SystemInfo::SystemButtonType>(type)), "glyph");
}

int main(int argc, char** argv)
{
    return runTest<SystemInfoTest>(argc, argv);
}

#include "SystemInfoTest.moc"
