#include "SpcoreProcess.h"

#include <RunTest.h>

class CommandLineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsHelpAndVersion_data();
    void showsHelpAndVersion();
    void refusesWhatItDoesNotKnow_data();
    void refusesWhatItDoesNotKnow();
};

void CommandLineTest::showsHelpAndVersion_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("nothing said") << QStringList{} << QByteArray("Usage: spcore COMMAND") << 2;
    QTest::newRow("--help") << QStringList{QStringLiteral("--help")} << QByteArray("Usage: spcore COMMAND")
                            << 0;
    QTest::newRow("-h") << QStringList{QStringLiteral("-h")} << QByteArray("Usage: spcore COMMAND") << 0;
    QTest::newRow("--version") << QStringList{QStringLiteral("--version")} << QByteArray("spcore 1.") << 0;
    QTest::newRow("-v") << QStringList{QStringLiteral("-v")} << QByteArray("spcore 1.") << 0;
}

void CommandLineTest::showsHelpAndVersion()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, start);
    SpcoreResult const result = runSpcore(arguments);
    QTEST(result.exitCode, "exitCode");
    QVERIFY2(result.out.startsWith(start), result.out.constData());
    QCOMPARE(result.err, QByteArray());
}

void CommandLineTest::refusesWhatItDoesNotKnow_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("a command that does not exist") << QStringList{QStringLiteral("nonsense")};
    QTest::newRow("an option before the command") << QStringList{QStringLiteral("--nonsense")};
    QTest::newRow("a command with line breaks") << QStringList{QStringLiteral("a\nb\nc")};
}

void CommandLineTest::refusesWhatItDoesNotKnow()
{
    QFETCH(QStringList, arguments);
    SpcoreResult const result = runSpcore(arguments);
    QVERIFY2(result.failedWithOneLine(2), result.err.constData());
}

int main(int argc, char** argv)
{
    return runTest<CommandLineTest>(argc, argv);
}

#include "CommandLineTest.moc"
