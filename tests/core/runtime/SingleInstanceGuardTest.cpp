#include "GuardProcess.h"

#include <runtime/SingleInstanceGuard.h>

#include <QDateTime>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTimer>
#include <RunTest.h>
#include <SecondUser.h>
#include <TestFiles.h>
#include <algorithm>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {

/// A guard of the client \a name in this process, which counts its kicks.
struct CountingGuard
{
    explicit CountingGuard(QString const& name)
    {
        guard.setup(name, QStringLiteral("user"), QStringLiteral("x"));
        guard.setNewInstanceKicking([this] { ++kicks; });
    }

    int kicks = 0;
    SingleInstanceGuard guard;
};

/// What a lock file says, one field a line.
struct LockContents
{
    QByteArray pid;
    QByteArray program;
    QByteArray host;
    QByteArray machine;
    QByteArray boot;

    static LockContents read(QString const& path)
    {
        QList<QByteArray> const lines = TestFiles::read(path).split('\n');
        return {lines.value(0), lines.value(1), lines.value(2), lines.value(3), lines.value(4)};
    }

    [[nodiscard]] QByteArray text() const
    {
        return pid + '\n' + program + '\n' + host + '\n' + machine + '\n' + boot + '\n';
    }
};

/// What a lock file of this very process holds.
LockContents ownLockContents()
{
    QString const path = QDir::tempPath() + QStringLiteral("/own.lock");
    QLockFile lock(path);
    lock.lock();
    return LockContents::read(path);
}

/// Leaves this process without a descriptor to open, as long as it lives.
class DescriptorShortage
{
public:
    DescriptorShortage()
    {
        ::getrlimit(RLIMIT_NOFILE, &m_usual);
        rlimit const tight{256, m_usual.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &tight);
        for (int taken = ::dup(STDIN_FILENO); taken >= 0; taken = ::dup(STDIN_FILENO)) {
            m_taken.push_back(taken);
        }
    }

    ~DescriptorShortage()
    {
        std::ranges::for_each(m_taken, ::close);
        ::setrlimit(RLIMIT_NOFILE, &m_usual);
    }

    Q_DISABLE_COPY_MOVE(DescriptorShortage)

private:
    rlimit m_usual{};
    std::vector<int> m_taken;
};

/// The rule of the name step by step, with one path object for each step outwards.
QString plainServerName(QString const& path, QString const& second, QString const& third)
{
    std::filesystem::path current(path.toUtf8().toStdString());
    QString name = QString::fromStdString(current.filename().string()) + QLatin1Char('_');
    for (current = current.parent_path(); current.parent_path() != current; current = current.parent_path()) {
        name += QString::fromStdString(current.filename().string()) + QLatin1Char('_');
    }
    name += second + QLatin1Char('_') + third;
    return name.replace(QLatin1Char(' '), QLatin1Char('_')).trimmed();
}

} // namespace

class SingleInstanceGuardTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { GuardPaths::nameApplication(); }

    void namesTheServer_data();
    void namesTheServer();
    void namesTheServerOfAnyPath();
    void namesTheServerOfADeepPath();

    void doesNothingBeforeSetup();
    void freeNameIsFreeAtOnce();
    void servesAndIsKicked();
    void firstCopyIsFoundByAnotherProcess();
    void killedCopyIsFollowedByTheNext();
    void stopsAndStartsAgain();
    void launchesTwiceInARow();
    void waitingCopyTakesOver();
    void destructionReleasesTheName();
    void setupUnderAnotherNameReleasesTheLock();

    void judgesALockFileThatWasLeft_data();
    void judgesALockFileThatWasLeft();
    void lockOfALivingProcessDoesNotAge();
    void lockThatIsHeldCountsWithoutAServer();
    void lockThatMayNotBeTakenCounts();
    void unusableFolderFails();

    void probeMeetsACopyThatListensWithoutItsLock_data();
    void probeMeetsACopyThatListensWithoutItsLock();
    void probeMeetsACopyThatWaitsForItsLock();
    void nameTooLongForASocketIsGuardedByTheLock();
    void nameTooLongForALockFails();

    void everyoneMayConnect();
    void connectionWithoutACallableFailsLoudly();
    void noConnectionNeedsNoCallable();
    void kickingMayThrow();
    void kickingMayChangeTheGuard();
    void kicksLeaveNothingOpen();
    void closesAConnectionAfterItsKick();
    void closesAConnectionWhoseKickDoesNotEnd();
    void openConnectionsAreFew();
    void listensAgainAfterRunningOutOfDescriptors();
    void listensAgainWhenItsSocketIsRemoved();

    void eachUserHasAGuard();
    void anotherUsersFolderKeepsNobodyFromStarting();
    void anotherUsersServerIsNoCopy_data();
    void anotherUsersServerIsNoCopy();
    void takesTheNameOnceAnotherUserLeavesIt();
    void anotherUsersConnectionsTakeNothing();
};

void SingleInstanceGuardTest::namesTheServer_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("second");
    QTest::addColumn<QString>("third");
    QTest::addColumn<QString>("name");
    auto row = [](char const* tag, char const* path, char const* second, char const* third,
                  char const* name) {
        QTest::newRow(tag) << QString::fromUtf8(path) << QString::fromUtf8(second) << QString::fromUtf8(third)
                           << QString::fromUtf8(name);
    };
    row("bundle with spaces", "/Applications/My App.app/Contents/MacOS/My App", "alice", "x",
        "My_App_MacOS_Contents_My_App.app_Applications_alice_x");
    row("relative file", "app", "alice", "x", "app_alice_x");
    row("relative file in folders", "opt/phone/app", "alice", "x", "app_phone_opt_alice_x");
    row("file below the root", "/app", "alice", "x", "app_alice_x");
    row("root", "/", "alice", "x", "_alice_x");
    row("no path", "", "alice", "x", "_alice_x");
    row("folder with a slash at the end", "/opt/phone/", "alice", "x", "_phone_opt_alice_x");
    row("doubled slashes", "//opt//phone//app", "alice", "x", "app_phone_opt_alice_x");
    row("dots are components", "./../app", "alice", "x", "app_.._._alice_x");
    row("nothing after the path", "app", "", "", "app__");
    row("spaces in all three", " a/b c ", " d e ", " f g ", "b_c___a__d_e___f_g_");
    row("white space at the ends", "\ta", "b", "c\n\t", "a_b_c");
    row("white space within", "a\tb", "c\nd", "e", "a\tb_c\nd_e");
    row("more than ASCII", "/Büro/телефон", "αλίκη", "日本", "телефон_Büro_αλίκη_日本");
    row("format placeholders", "/%1/%2", "%3", "%1", "%2_%1_%3_%1");
}

void SingleInstanceGuardTest::namesTheServer()
{
    QFETCH(QString, path);
    QFETCH(QString, second);
    QFETCH(QString, third);
    QTEST(SingleInstanceGuard::getServerName(path, second, third), "name");
}

void SingleInstanceGuardTest::namesTheServerOfAnyPath()
{
    QString const letters = QStringLiteral("//// ..ab\tü");
    QRandomGenerator random(1);
    for (int round = 0; round < 20000; ++round) {
        QString path;
        for (int length = random.bounded(12); length > 0; --length) {
            path += letters.at(random.bounded(static_cast<int>(letters.size())));
        }
        QCOMPARE(SingleInstanceGuard::getServerName(path, QStringLiteral("s"), QStringLiteral("t")),
                 plainServerName(path, QStringLiteral("s"), QStringLiteral("t")));
    }
}

void SingleInstanceGuardTest::namesTheServerOfADeepPath()
{
    constexpr int depth = 200'000;
    QString const name = SingleInstanceGuard::getServerName(QStringLiteral("/a").repeated(depth), {}, {});
    QCOMPARE(name, QStringLiteral("a_").repeated(depth) + QLatin1Char('_'));
}

void SingleInstanceGuardTest::doesNothingBeforeSetup()
{
    SingleInstanceGuard guard;
    QVERIFY(!guard.isAnotherRunning());
    QVERIFY(!guard.launchServer());
    guard.onNewConnection();
    guard.stopServer();
}

void SingleInstanceGuardTest::freeNameIsFreeAtOnce()
{
    QString const name = QStringLiteral("free");
    // A server alone would be told of a connection: with no lock file none is made.
    QLocalServer server;
    QVERIFY(server.listen(GuardPaths(name).server));
    CountingGuard second(name);
    QVERIFY(!second.guard.isAnotherRunning());
    QVERIFY(!server.waitForNewConnection(100));
    QVERIFY(!QFile::exists(GuardPaths(name).lock));
}

void SingleInstanceGuardTest::servesAndIsKicked()
{
    QString const name = QStringLiteral("kicked");
    CountingGuard first(name);
    QVERIFY(!first.guard.isAnotherRunning());
    QVERIFY(first.guard.launchServer());
    QVERIFY(QFile::exists(GuardPaths(name).lock));
    QVERIFY(QFile::exists(GuardPaths(name).socket));

    CountingGuard second(name);
    QVERIFY(second.guard.isAnotherRunning());
    QTRY_COMPARE(first.kicks, 1);
    QVERIFY(second.guard.isAnotherRunning());
    QTRY_COMPARE(first.kicks, 2);

    int replaced = 0;
    first.guard.setNewInstanceKicking([&] { ++replaced; });
    QVERIFY(second.guard.isAnotherRunning());
    QTRY_COMPARE(replaced, 1);
    QCOMPARE(first.kicks, 2);
}

void SingleInstanceGuardTest::firstCopyIsFoundByAnotherProcess()
{
    QString const name = QStringLiteral("processes");
    QCOMPARE(probeFromOutside(name), "free");

    GuardProcess first({QStringLiteral("client"), name});
    QCOMPARE(first.next(), "launching");
    QCOMPARE(first.next(), "serving");
    GuardProcess second({QStringLiteral("client"), name});
    QCOMPARE(second.next(), "running");
    QCOMPARE(first.next(), "kick");

    QVERIFY(first.end());
    QVERIFY(!QFile::exists(GuardPaths(name).lock));
    QVERIFY(!QFile::exists(GuardPaths(name).socket));
    QCOMPARE(probeFromOutside(name), "free");
}

void SingleInstanceGuardTest::killedCopyIsFollowedByTheNext()
{
    QString const name = QStringLiteral("killed");
    GuardPaths const paths(name);
    GuardProcess first({QStringLiteral("client"), name});
    QCOMPARE(first.next(), "launching");
    QCOMPARE(first.next(), "serving");
    first.kill();
    QVERIFY(QFile::exists(paths.lock));
    QVERIFY(QFile::exists(paths.socket));

    GuardProcess next({QStringLiteral("client"), name});
    QCOMPARE(next.next(), "launching");
    QCOMPARE(next.next(), "serving");
    QCOMPARE(probeFromOutside(name), "running");
    QCOMPARE(next.next(), "kick");

    // Without a probe in between, the launch itself finds what was left.
    next.kill();
    GuardProcess last({QStringLiteral("serve"), name});
    QCOMPARE(last.next(), "launching");
    QCOMPARE(last.next(), "serving");
    QCOMPARE(probeFromOutside(name), "running");
    QCOMPARE(last.next(), "kick");
}

void SingleInstanceGuardTest::stopsAndStartsAgain()
{
    QString const name = QStringLiteral("stopped");
    CountingGuard first(name);
    for (int round = 1; round <= 3; ++round) {
        QVERIFY(first.guard.launchServer());
        QCOMPARE(probeFromOutside(name), "running");
        QTRY_COMPARE(first.kicks, round);
        first.guard.stopServer();
        first.guard.stopServer();
        QVERIFY(!QFile::exists(GuardPaths(name).lock));
        QVERIFY(!QFile::exists(GuardPaths(name).socket));
        QCOMPARE(probeFromOutside(name), "free");
    }
}

void SingleInstanceGuardTest::launchesTwiceInARow()
{
    QString const name = QStringLiteral("twice");
    CountingGuard first(name);
    QVERIFY(first.guard.launchServer());
    QVERIFY(first.guard.launchServer());
    QCOMPARE(probeFromOutside(name), "running");
    QTRY_COMPARE(first.kicks, 1);
    first.guard.stopServer();
    QCOMPARE(probeFromOutside(name), "free");
}

void SingleInstanceGuardTest::waitingCopyTakesOver()
{
    QString const name = QStringLiteral("waiting");
    GuardProcess first({QStringLiteral("serve"), name});
    QCOMPARE(first.next(), "launching");
    QCOMPARE(first.next(), "serving");
    GuardProcess second({QStringLiteral("serve"), name});
    QCOMPARE(second.next(), "launching");
    QCOMPARE(second.next(300), QByteArray());

    first.tell("stop");
    QCOMPARE(first.next(), "stopped");
    QCOMPARE(second.next(), "serving");
    QCOMPARE(probeFromOutside(name), "running");
    QCOMPARE(second.next(), "kick");
}

void SingleInstanceGuardTest::destructionReleasesTheName()
{
    QString const name = QStringLiteral("destroyed");
    {
        CountingGuard first(name);
        QVERIFY(first.guard.launchServer());
    }
    QVERIFY(!QFile::exists(GuardPaths(name).lock));
    QVERIFY(!QFile::exists(GuardPaths(name).socket));
    CountingGuard next(name);
    QVERIFY(!next.guard.isAnotherRunning());
    QVERIFY(next.guard.launchServer());
}

void SingleInstanceGuardTest::setupUnderAnotherNameReleasesTheLock()
{
    CountingGuard first(QStringLiteral("before"));
    QVERIFY(first.guard.launchServer());
    first.guard.setup(QStringLiteral("after"), QStringLiteral("user"), QStringLiteral("x"));
    QVERIFY(!QFile::exists(GuardPaths(QStringLiteral("before")).lock));
    QVERIFY(first.guard.launchServer());
    QCOMPARE(probeFromOutside(QStringLiteral("before")), "free");
    QCOMPARE(probeFromOutside(QStringLiteral("after")), "running");
    QTRY_COMPARE(first.kicks, 1);
}

void SingleInstanceGuardTest::judgesALockFileThatWasLeft_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("age");
    QTest::addColumn<bool>("running");

    LockContents const own = ownLockContents();
    LockContents gone = own;
    gone.pid = "2147483646";
    LockContents reused = own;
    reused.program = "some-other-program";
    LockContents otherBoot = own;
    otherBoot.boot = "00000000-0000-0000-0000-000000000000";
    LockContents otherHost = own;
    otherHost.host = "some-other-host";
    otherHost.machine = "0123456789abcdef0123456789abcdef";

    QTest::newRow("its process is gone") << gone.text() << 0 << false;
    QTest::newRow("its process id was given to another program") << reused.text() << 0 << false;
    QTest::newRow("from before the machine was started") << otherBoot.text() << 0 << false;
    QTest::newRow("its process runs, but holds it no more, for long") << own.text() << 3600 << false;
    QTest::newRow("from another machine, long ago") << otherHost.text() << 3600 << false;
    QTest::newRow("from another machine, just now") << otherHost.text() << 0 << true;
    QTest::newRow("empty, long ago") << QByteArray() << 3600 << false;
    QTest::newRow("empty, just now: its owner may be about to write") << QByteArray() << 0 << true;
    QTest::newRow("no lock file at all, long ago") << QByteArray("\xFF\x00\n\n\n-7\n", 8) << 11 << false;
    QTest::newRow("large, long ago") << QByteArray(1'000'000, 'x') << 11 << false;
}

void SingleInstanceGuardTest::judgesALockFileThatWasLeft()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, age);
    QFETCH(bool, running);
    QString const name = QStringLiteral("left");
    QString const lock = GuardPaths(name).lock;
    QVERIFY(QDir().mkpath(QFileInfo(lock).path()));
    QVERIFY(TestFiles::write(lock, bytes));
    QVERIFY(TestFiles::setAge(lock, age));

    CountingGuard second(name);
    QCOMPARE(second.guard.isAnotherRunning(), running);
    QCOMPARE(QFile::exists(lock), running);
    if (!running) {
        QVERIFY(second.guard.launchServer());
        QCOMPARE(probeFromOutside(name), "running");
        second.guard.stopServer();
    }
    QFile::remove(lock);
}

void SingleInstanceGuardTest::lockOfALivingProcessDoesNotAge()
{
    QString const name = QStringLiteral("old");
    CountingGuard first(name);
    QVERIFY(first.guard.launchServer());
    QVERIFY(TestFiles::setAge(GuardPaths(name).lock, 3600));
    QCOMPARE(probeFromOutside(name), "running");
    QVERIFY(QFile::exists(GuardPaths(name).lock));
    QTRY_COMPARE(first.kicks, 1);
}

void SingleInstanceGuardTest::lockThatIsHeldCountsWithoutAServer()
{
    QString const name = QStringLiteral("silent");
    QDir().mkpath(GuardPaths(name).folder);
    QLockFile lock(GuardPaths(name).lock);
    QVERIFY(lock.lock());
    QCOMPARE(probeFromOutside(name), "running");
    lock.unlock();
    QCOMPARE(probeFromOutside(name), "free");
}

void SingleInstanceGuardTest::lockThatMayNotBeTakenCounts()
{
    QString const name = QStringLiteral("untouchable");
    QString const lock = GuardPaths(name).lock;
    // A folder in a file's place is what root cannot take either.
    QVERIFY(QDir().mkpath(lock));
    CountingGuard second(name);
    QVERIFY(second.guard.isAnotherRunning());
    QVERIFY(QDir().rmdir(lock));
    QVERIFY(!second.guard.isAnotherRunning());
}

void SingleInstanceGuardTest::unusableFolderFails()
{
    QTemporaryDir const elsewhere;
    QByteArray const before = qgetenv("TMPDIR");
    QVERIFY(
        TestFiles::write(elsewhere.filePath(QStringLiteral("softphone")), "a file in the folder's place"));
    qputenv("TMPDIR", QFile::encodeName(elsewhere.path()));
    QString const current = QDir::currentPath();
    QDir::setCurrent(QStringLiteral("/proc"));
    CountingGuard guard(QStringLiteral("unusable"));
    bool const another = guard.guard.isAnotherRunning();
    bool const launched = guard.guard.launchServer();
    QDir::setCurrent(current);
    qputenv("TMPDIR", before);
    QVERIFY(!another);
    QVERIFY(!launched);
}

void SingleInstanceGuardTest::probeMeetsACopyThatListensWithoutItsLock_data()
{
    QTest::addColumn<bool>("leftOver");
    QTest::addColumn<bool>("running");
    QTest::newRow("with no lock file") << false << false;
    QTest::newRow("with a lock file that was left over") << true << true;
}

void SingleInstanceGuardTest::probeMeetsACopyThatListensWithoutItsLock()
{
    QFETCH(bool, leftOver);
    QFETCH(bool, running);
    QString const name = QStringLiteral("between");
    GuardPaths const paths(name);
    QLocalServer listening;
    QVERIFY(listening.listen(paths.server));
    if (leftOver) {
        QVERIFY(TestFiles::write(paths.lock, QByteArray()) && TestFiles::setAge(paths.lock, 11));
    }

    CountingGuard second(name);
    QCOMPARE(second.guard.isAnotherRunning(), running);
    QCOMPARE(listening.waitForNewConnection(running ? 5000 : 0), running);
    // The lock is free for the copy that was about to take it.
    QLockFile lock(paths.lock);
    QVERIFY(lock.tryLock(0));
}

void SingleInstanceGuardTest::probeMeetsACopyThatWaitsForItsLock()
{
    QString const name = QStringLiteral("midway");
    GuardPaths const paths(name);
    QDir().mkpath(paths.folder);
    QLockFile lock(paths.lock);
    QVERIFY(lock.lock());
    GuardProcess first({QStringLiteral("serve"), name});
    QCOMPARE(first.next(), "launching");
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(paths.socket), GuardProcess::patience);

    QCOMPARE(probeFromOutside(name), "running");
    lock.unlock();
    QCOMPARE(first.next(), "serving");
    QCOMPARE(first.next(), "kick");
}

void SingleInstanceGuardTest::nameTooLongForASocketIsGuardedByTheLock()
{
    QString const name = QString(200, QLatin1Char('n'));
    CountingGuard first(name);
    QVERIFY(first.guard.launchServer());
    QVERIFY(!QFile::exists(GuardPaths(name).socket));
    QCOMPARE(probeFromOutside(name), "running");
    QVERIFY(first.guard.launchServer());
    first.guard.stopServer();
    QCOMPARE(probeFromOutside(name), "free");
    QCOMPARE(first.kicks, 0);
}

void SingleInstanceGuardTest::nameTooLongForALockFails()
{
    for (int length : {250, 300, 100'000}) {
        CountingGuard first(QString(length, QLatin1Char('n')));
        QVERIFY(!first.guard.isAnotherRunning());
        QVERIFY(!first.guard.launchServer());
        first.guard.stopServer();
    }
}

void SingleInstanceGuardTest::everyoneMayConnect()
{
    QString const name = QStringLiteral("world");
    CountingGuard first(name);
    QVERIFY(first.guard.launchServer());
    QFileDevice::Permissions const all = QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                         QFileDevice::ReadGroup | QFileDevice::WriteGroup |
                                         QFileDevice::ReadOther | QFileDevice::WriteOther;
    QCOMPARE(QFileInfo(GuardPaths(name).socket).permissions() & all, all);
}

void SingleInstanceGuardTest::connectionWithoutACallableFailsLoudly()
{
    QString const name = QStringLiteral("mute");
    GuardProcess first({QStringLiteral("serve-mute"), name});
    QCOMPARE(first.next(), "launching");
    QCOMPARE(first.next(), "serving");
    QCOMPARE(probeFromOutside(name), "running");
    QVERIFY(first.crashes());
    QCOMPARE(probeFromOutside(name), "free");
}

void SingleInstanceGuardTest::noConnectionNeedsNoCallable()
{
    SingleInstanceGuard first;
    first.setup(QStringLiteral("lonely"), QStringLiteral("user"), QStringLiteral("x"));
    QVERIFY(first.launchServer());
    first.onNewConnection();
}

void SingleInstanceGuardTest::kickingMayThrow()
{
    QString const name = QStringLiteral("throwing");
    CountingGuard first(name);
    int kicks = 0;
    first.guard.setNewInstanceKicking([&] {
        ++kicks;
        throw std::runtime_error("the client's own failure");
    });
    QVERIFY(first.guard.launchServer());
    CountingGuard second(name);
    QVERIFY(second.guard.isAnotherRunning());
    QTRY_COMPARE(kicks, 1);
    QVERIFY(second.guard.isAnotherRunning());
    QTRY_COMPARE(kicks, 2);
}

void SingleInstanceGuardTest::kickingMayChangeTheGuard()
{
    QString const name = QStringLiteral("changing");
    CountingGuard first(name);
    int replaced = 0;
    first.guard.setNewInstanceKicking([&] {
        first.guard.setNewInstanceKicking([&] { ++replaced; });
        first.guard.stopServer();
        first.guard.launchServer();
        ++first.kicks;
    });
    QVERIFY(first.guard.launchServer());
    CountingGuard second(name);
    QVERIFY(second.guard.isAnotherRunning());
    QTRY_COMPARE(first.kicks, 1);
    QVERIFY(second.guard.isAnotherRunning());
    QTRY_COMPARE(replaced, 1);
}

void SingleInstanceGuardTest::kicksLeaveNothingOpen()
{
    QString const name = QStringLiteral("many");
    CountingGuard first(name);
    CountingGuard second(name);
    QVERIFY(first.guard.launchServer());
    QVERIFY(second.guard.isAnotherRunning());
    QTRY_COMPARE(first.kicks, 1);
    QCoreApplication::processEvents();
    qsizetype const before = TestFiles::openDescriptors();
    for (int kick = 2; kick <= 1000; ++kick) {
        QVERIFY(second.guard.isAnotherRunning());
        QTRY_COMPARE(first.kicks, kick);
    }
    QTRY_VERIFY(TestFiles::openDescriptors() <= before);
}

void SingleInstanceGuardTest::closesAConnectionAfterItsKick()
{
    CountingGuard first(QStringLiteral("closing"));
    QVERIFY(first.guard.launchServer());
    QLocalSocket socket;
    socket.connectToServer(GuardPaths(QStringLiteral("closing")).server);
    QVERIFY(socket.waitForConnected(GuardProcess::patience));
    socket.write(QByteArray(1 << 20, 'x'));
    QTRY_COMPARE(socket.state(), QLocalSocket::UnconnectedState);
    QCOMPARE(first.kicks, 1);
}

void SingleInstanceGuardTest::closesAConnectionWhoseKickDoesNotEnd()
{
    QString const name = QStringLiteral("lengthy");
    CountingGuard first(name);
    QVERIFY(first.guard.launchServer());
    GuardProcess other({QStringLiteral("connect"), name, QStringLiteral("1")});
    QCOMPARE(other.next(), "connected");
    qsizetype const before = TestFiles::openDescriptors();
    bool wasOpen = false;
    bool wasClosed = false;
    first.guard.setNewInstanceKicking([&] {
        wasOpen = TestFiles::openDescriptors() > before;
        wasClosed = QTest::qWaitFor([&] { return TestFiles::openDescriptors() <= before; });
    });
    QTRY_VERIFY(wasClosed);
    QVERIFY(wasOpen);
}

/// Kicks that wait inside one another, each with a connection that stays.
void SingleInstanceGuardTest::openConnectionsAreFew()
{
    QString const name = QStringLiteral("stacked");
    CountingGuard first(name);
    qsizetype most = 0;
    first.guard.setNewInstanceKicking([&] {
        ++first.kicks;
        most = std::max(most, TestFiles::openDescriptors());
        QTest::qWait(500);
    });
    QVERIFY(first.guard.launchServer());
    GuardProcess other({QStringLiteral("connect"), name, QStringLiteral("100")});
    qsizetype const before = TestFiles::openDescriptors();
    QTRY_VERIFY(first.kicks > 0);
    QVERIFY2(most <= before + 16, qPrintable(QString::number(most - before)));
    QCOMPARE(other.next(), "connected");
    QVERIFY(other.end());
    int const kicksBefore = first.kicks;
    QCOMPARE(probeFromOutside(name), "running");
    QTRY_VERIFY(first.kicks > kicksBefore);
}

void SingleInstanceGuardTest::listensAgainAfterRunningOutOfDescriptors()
{
    QString const name = QStringLiteral("exhausted");
    GuardPaths const paths(name);
    CountingGuard first(name);
    QVERIFY(first.guard.launchServer());
    GuardProcess other({QStringLiteral("connect"), name, QStringLiteral("1")});
    QCOMPARE(other.next(), "connected");
    QDateTime const made = QFileInfo(paths.socket).lastModified();
    {
        DescriptorShortage const shortage;
        // Closing the socket leaves one descriptor, so that on a slow machine there may be another at once.
        QTRY_VERIFY(QFileInfo(paths.socket).lastModified() != made);
    }
    QTRY_VERIFY(TestFiles::isThere(paths.socket));
    QCOMPARE(first.kicks, 0);
    QCOMPARE(probeFromOutside(name), "running");
    QTRY_COMPARE(first.kicks, 1);
}

void SingleInstanceGuardTest::listensAgainWhenItsSocketIsRemoved()
{
    QString const name = QStringLiteral("swept");
    GuardPaths const paths(name);
    CountingGuard first(name);
    QVERIFY(first.guard.launchServer());
    QVERIFY(QFile::remove(paths.socket));
    QTRY_VERIFY(TestFiles::isThere(paths.socket));
    QCOMPARE(probeFromOutside(name), "running");
    QTRY_COMPARE(first.kicks, 1);
    first.guard.stopServer();
    QTest::qWait(1500);
    QVERIFY(!TestFiles::isThere(paths.socket));
}

void SingleInstanceGuardTest::eachUserHasAGuard()
{
    if (!SecondUser::isPossible()) {
        QSKIP("only root can act as a second user");
    }
    SecondUser const other;
    QVERIFY(other.isReady());
    CountingGuard first(QStringLiteral("mine"));
    QVERIFY(!first.guard.isAnotherRunning());
    QVERIFY(first.guard.launchServer());

    // The names of the copies tell the users apart, or their sockets would have one name.
    QStringList const theirs{QStringLiteral("client"), QStringLiteral("theirs")};
    GuardProcess second(theirs, other.environment());
    QCOMPARE(second.next(), "launching");
    QCOMPARE(second.next(), "serving");
    QCOMPARE(GuardProcess(theirs, other.environment()).next(), "running");
    QCOMPARE(second.next(), "kick");
    QCOMPARE(GuardProcess({QStringLiteral("probe"), QStringLiteral("mine")}, other.environment()).next(),
             "free");
    QCOMPARE(first.kicks, 0);
    QCOMPARE(probeFromOutside(QStringLiteral("mine")), "running");
    QTRY_COMPARE(first.kicks, 1);
}

void SingleInstanceGuardTest::anotherUsersFolderKeepsNobodyFromStarting()
{
    if (!SecondUser::isPossible()) {
        QSKIP("only root can act as a second user");
    }
    SecondUser const other;
    QVERIFY(other.isReady());
    QString const name = QStringLiteral("squatted");
    GuardProcess squatter({QStringLiteral("serve"), QStringLiteral("squatter")}, other.environment());
    QCOMPARE(squatter.next(), "launching");
    QCOMPARE(squatter.next(), "serving");
    QString const theirLock = GuardPaths(QStringLiteral("squatter")).lock;
    QString const myLock = GuardPaths(name).lock;
    // Theirs runs, so that a copy of it counts as the lock of a living process.
    QVERIFY(TestFiles::write(myLock, TestFiles::read(theirLock)) && SecondUser::give(myLock));
    QByteArray const before = TestFiles::read(myLock);

    CountingGuard first(name);
    QVERIFY(!first.guard.isAnotherRunning());
    QVERIFY(first.guard.launchServer());
    QCOMPARE(probeFromOutside(name), "running");
    QTRY_COMPARE(first.kicks, 1);
    first.guard.stopServer();
    QCOMPARE(TestFiles::read(myLock), before);
}

void SingleInstanceGuardTest::anotherUsersServerIsNoCopy_data()
{
    QTest::addColumn<bool>("leftOver");
    QTest::newRow("with a lock file that was left over") << true;
    QTest::newRow("with a lock that is held") << false;
}

/// The socket has to lie where every user may put one.
void SingleInstanceGuardTest::anotherUsersServerIsNoCopy()
{
    if (!SecondUser::isPossible()) {
        QSKIP("only root can act as a second user");
    }
    QFETCH(bool, leftOver);
    SecondUser const other;
    QVERIFY(other.isReady());
    QString const name = QStringLiteral("posed");
    GuardProcess poser({QStringLiteral("pose"), name}, other.environment());
    QCOMPARE(poser.next(), "posing");

    CountingGuard second(name);
    QVERIFY(!second.guard.isAnotherRunning());
    QLockFile lock(GuardPaths(name).lock);
    if (leftOver) {
        QVERIFY(TestFiles::write(lock.fileName(), QByteArray()) && TestFiles::setAge(lock.fileName(), 11));
    } else {
        QVERIFY(lock.lock());
    }
    QCOMPARE(second.guard.isAnotherRunning(), !leftOver);
}

/// Here the copy is the second user's: root could take the name by force.
void SingleInstanceGuardTest::takesTheNameOnceAnotherUserLeavesIt()
{
    if (!SecondUser::isPossible()) {
        QSKIP("only root can act as a second user");
    }
    SecondUser const other;
    QVERIFY(other.isReady());
    QString const name = QStringLiteral("contested");
    QString const socket = GuardPaths(name).socket;
    GuardProcess poser({QStringLiteral("pose"), name});
    QCOMPARE(poser.next(), "posing");
    GuardProcess first({QStringLiteral("client"), name}, other.environment());
    QCOMPARE(first.next(), "launching");
    QCOMPARE(first.next(), "serving");
    QCOMPARE(QFileInfo(socket).ownerId(), uint(::geteuid()));

    QVERIFY(poser.end());
    QTRY_COMPARE(QFileInfo(socket).ownerId(), uint(SecondUser::id));
    QCOMPARE(GuardProcess({QStringLiteral("probe"), name}, other.environment()).next(), "running");
    QCOMPARE(first.next(), "kick");
}

void SingleInstanceGuardTest::anotherUsersConnectionsTakeNothing()
{
    if (!SecondUser::isPossible()) {
        QSKIP("only root can act as a second user");
    }
    SecondUser const other;
    QVERIFY(other.isReady());
    QString const name = QStringLiteral("flooded");
    CountingGuard first(name);
    qsizetype most = 0;
    first.guard.setNewInstanceKicking([&] {
        ++first.kicks;
        most = std::max(most, TestFiles::openDescriptors());
    });
    QVERIFY(first.guard.launchServer());
    GuardProcess flood({QStringLiteral("connect"), name, QStringLiteral("1020")}, other.environment());
    qsizetype const before = TestFiles::openDescriptors();
    QTRY_COMPARE_WITH_TIMEOUT(first.kicks, 1020, GuardProcess::patience);
    QVERIFY2(most <= before + 16, qPrintable(QString::number(most - before)));
    QCOMPARE(flood.next(), "connected");
    QCOMPARE(probeFromOutside(name), "running");
    QTRY_COMPARE(first.kicks, 1021);
}

int main(int argc, char** argv)
{
    return runTest<SingleInstanceGuardTest>(argc, argv);
}

#include "SingleInstanceGuardTest.moc"
