#include "SpcoreProcess.h"

#include <QDirIterator>
#include <RunTest.h>
#include <SendSignal.h>
#include <csignal>

namespace {

constexpr int patience = 60'000;

/// The command as it runs in the first terminal.
class RunningGuard
{
public:
    explicit RunningGuard(QString const& name, QStringList const& options = {})
    {
        m_process.start(QStringLiteral(SPCORE_PROGRAM),
                        QStringList(QStringLiteral("guard")) + options + QStringList(name));
    }

    ~RunningGuard()
    {
        m_process.kill();
        m_process.waitForFinished(patience);
    }

    QByteArray nextLine()
    {
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(patience)) {
                return {};
            }
        }
        return m_process.readLine().trimmed();
    }

    /// Sends \a signal and answers the exit code, or -1 when the process did not end by itself.
    int endWith(int signal)
    {
        bool const ended = sendSignal(m_process, signal) && m_process.waitForFinished(patience) &&
                           m_process.exitStatus() == QProcess::NormalExit;
        return ended ? m_process.exitCode() : -1;
    }

    QByteArray errors() { return m_process.readAllStandardError(); }

private:
    QProcess m_process;
};

QStringList lockFiles(QString const& name)
{
    QStringList found;
    QDirIterator files(QDir::tempPath(), {name + QStringLiteral("_*.qlf")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        found << files.next();
    }
    return found;
}

} // namespace

class GuardCommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void secondCopyKicksTheFirst();
    void endsOnASignal_data();
    void endsOnASignal();
    void followsAKilledCopy();
    void handsArgumentsToTheFirst();
    void tellsThatNobodyTakesThem();
    void tellsAsJson();
    void failsWithOneLine_data();
    void failsWithOneLine();
};

void GuardCommandsTest::secondCopyKicksTheFirst()
{
    RunningGuard first(QStringLiteral("phone"));
    QCOMPARE(first.nextLine(), "no other copy of phone is running; serving until Ctrl-C");
    for (char const* kick : {"kick 1", "kick 2"}) {
        SpcoreResult const second = runSpcore({QStringLiteral("guard"), QStringLiteral("phone")});
        QCOMPARE(second.exitCode, 0);
        QCOMPARE(second.out, "another copy of phone is running\n");
        QCOMPARE(second.err, "");
        QCOMPARE(first.nextLine(), kick);
    }
    RunningGuard other(QStringLiteral("another phone"));
    QCOMPARE(other.nextLine(), "no other copy of another phone is running; serving until Ctrl-C");
}

void GuardCommandsTest::endsOnASignal_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("Ctrl-C") << SIGINT << 130;
    QTest::newRow("polite request") << SIGTERM << 143;
}

void GuardCommandsTest::endsOnASignal()
{
    QFETCH(int, signal);
    QFETCH(int, exitCode);
    RunningGuard first(QStringLiteral("ended"));
    QVERIFY(first.nextLine().startsWith("no other copy"));
    QCOMPARE(lockFiles(QStringLiteral("ended")).size(), 1);
    QCOMPARE(first.endWith(signal), exitCode);
    QCOMPARE(first.nextLine(), "stopped");
    QCOMPARE(first.errors(), "");
    QCOMPARE(lockFiles(QStringLiteral("ended")), QStringList());
}

void GuardCommandsTest::followsAKilledCopy()
{
    RunningGuard first(QStringLiteral("killed"));
    QVERIFY(first.nextLine().startsWith("no other copy"));
    QCOMPARE(first.endWith(SIGKILL), -1);
    RunningGuard next(QStringLiteral("killed"));
    QVERIFY(next.nextLine().startsWith("no other copy"));
    QVERIFY(runSpcore({QStringLiteral("guard"), QStringLiteral("killed")}).out.startsWith("another copy"));
    QCOMPARE(next.nextLine(), "kick 1");
    QCOMPARE(next.endWith(SIGTERM), 143);
}

void GuardCommandsTest::handsArgumentsToTheFirst()
{
    RunningGuard first(QStringLiteral("desk"));
    QVERIFY(first.nextLine().startsWith("no other copy"));
    SpcoreResult const sent = runSpcore(
        {QStringLiteral("guard"), QStringLiteral("--send"), QStringLiteral("desk"), QStringLiteral("--"),
         QStringLiteral("tel:+39 02"), QString(), QStringLiteral("--dial"), QStringLiteral("è\n\x1b")});
    QCOMPARE(sent.exitCode, 0);
    QCOMPARE(sent.out, "delivered\n");
    QCOMPARE(sent.err, "");
    QCOMPARE(first.nextLine(), QByteArray(R"(received ["tel:+39 02","","--dial","è\n\u001b"])"));
    QCOMPARE(first.endWith(SIGTERM), 143);
}

void GuardCommandsTest::tellsThatNobodyTakesThem()
{
    SpcoreResult const sent = runSpcore({QStringLiteral("guard"), QStringLiteral("--send"),
                                         QStringLiteral("nobody"), QStringLiteral("tel:+39 02")});
    QVERIFY2(sent.failedWithOneLine(1), sent.err.constData());
    QCOMPARE(sent.err, "spcore: not delivered to nobody: No other copy is listening\n");
}

void GuardCommandsTest::tellsAsJson()
{
    RunningGuard first(QStringLiteral("told"), {QStringLiteral("--json")});
    QCOMPARE(first.nextLine(), R"({"event":"serving","name":"told"})");
    auto const spcore = [](QStringList const& arguments) {
        return runSpcore(QStringList{QStringLiteral("guard"), QStringLiteral("--json")} + arguments).out;
    };
    QCOMPARE(spcore({QStringLiteral("told")}), "{\"event\":\"running\",\"name\":\"told\"}\n");
    QCOMPARE(first.nextLine(), R"({"count":1,"event":"kick"})");
    QCOMPARE(spcore({QStringLiteral("--send"), QStringLiteral("told"), QStringLiteral("tel:1")}),
             "{\"event\":\"delivered\"}\n");
    QCOMPARE(first.nextLine(), R"({"arguments":["tel:1"],"event":"received"})");
    QCOMPARE(first.endWith(SIGINT), 130);
    QCOMPARE(first.nextLine(), R"({"event":"stopped"})");
}

void GuardCommandsTest::failsWithOneLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("no name") << QStringList{} << 2;
    QTest::newRow("two names") << QStringList{QStringLiteral("a"), QStringLiteral("b")} << 2;
    QTest::newRow("nobody to send to") << QStringList{QStringLiteral("--send")} << 2;
    QTest::newRow("more than can be sent")
        << QStringList(QStringList{QStringLiteral("--send"), QStringLiteral("a")} +
                       QStringList(2000, QStringLiteral("x")))
        << 1;
    QTest::newRow("unknown option") << QStringList{QStringLiteral("--fast"), QStringLiteral("a")} << 2;
    QTest::newRow("name too long for a file") << QStringList{QString(300, QLatin1Char('n'))} << 1;
}

void GuardCommandsTest::failsWithOneLine()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QVERIFY(runSpcore(QStringList(QStringLiteral("guard")) + arguments).failedWithOneLine(exitCode));
}

int main(int argc, char** argv)
{
    return runTest<GuardCommandsTest>(argc, argv);
}

#include "GuardCommandsTest.moc"
