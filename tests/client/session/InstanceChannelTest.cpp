#include "ChildProcess.h"
#include "Faults.h"
#include "RunTest.h"
#include "SecondUser.h"
#include "SendSignal.h"
#include "SystemCalls.h"
#include "TestFiles.h"
#include "Valgrind.h"

#include <client/InstanceChannel.h>

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>
#include <QProcess>
#include <QSet>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <algorithm>
#include <csignal>
#include <memory>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <vector>

using Softphone::InstanceChannel;

namespace {

constexpr int patience = 60'000;

/// How many copies flood the first one at once. Under memcheck each takes seconds of a processor to start.
int floodingCopies()
{
    return underValgrind() ? 5 : 50;
}

/// One process of ChannelHelper, and what it says.
class Copy
{
public:
    explicit Copy(QStringList const& arguments)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(CHANNEL_HELPER), arguments);
    }

    ~Copy()
    {
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(patience)) {
            m_process.kill();
            m_process.waitForFinished(patience);
        }
    }

    /// The next word; nothing when the process ends, or says none in time.
    QByteArray next(int timeout = patience)
    {
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(timeout)) {
                return {};
            }
        }
        return m_process.readLine().trimmed();
    }

    /// All further words, once the process has ended.
    QByteArrayList rest()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished(patience);
        QByteArrayList words = m_process.readAll().split('\n');
        words.removeAll(QByteArray());
        return words;
    }

    void signal(int number) { sendSignal(m_process, number); }

    void kill()
    {
        m_process.kill();
        m_process.waitForFinished(patience);
    }

private:
    QProcess m_process;
};

/// Becomes another user for good and sends a message to the socket \a path; 0 when nothing was answered to
/// it.
int sendAsStranger(QString const& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    QFileInfo const info(path);
    qstrncpy(address.sun_path, qPrintable(info.fileName()), sizeof(address.sun_path));
    int const first = ::socket(AF_UNIX, SOCK_STREAM, 0);
    // From inside, since the folders above are closed to the other user.
    if (chdir(qPrintable(info.path())) != 0 || !becomeOrdinaryUser() ||
        ::connect(first, reinterpret_cast<sockaddr const*>(&address), sizeof(address)) != 0) {
        return 1;
    }
    QByteArray const message("SPI1\0\0\0\x0a\0\0\0\0\0\0\0\2\0x", 18);
    if (::write(first, message.constData(), 18) != 18) {
        return 2;
    }
    char answer = 0;
    return ::read(first, &answer, 1) > 0 ? 3 : 0;
}

/// Listens on the socket \a path as another user, for good, and greets as a first copy does; 0 when whoever
/// comes says nothing.
int listenAsStranger(QString const& path, int ready)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    QFileInfo const info(path);
    qstrncpy(address.sun_path, qPrintable(info.fileName()), sizeof(address.sun_path));
    int const listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    unlink(qPrintable(path));
    // The name is given by the folder's owner; who listens is what counts.
    if (chdir(qPrintable(info.path())) != 0 ||
        ::bind(listener, reinterpret_cast<sockaddr const*>(&address), sizeof(address)) != 0 ||
        !becomeOrdinaryUser() || ::listen(listener, 5) != 0 || ::write(ready, "!", 1) != 1) {
        return 1;
    }
    int const sender = ::accept(listener, nullptr, nullptr);
    char byte = 'H';
    if (::send(sender, &byte, 1, MSG_NOSIGNAL) < 0 && errno != EPIPE) {
        return 2;
    }
    return ::read(sender, &byte, 1) > 0 ? 3 : 0;
}

/// What ChannelHelper says of a message: its arguments in hex, or a digest where a pipe would not hold that.
QByteArray said(QStringList const& arguments)
{
    QByteArrayList parts;
    for (QString const& argument : arguments) {
        parts << QByteArray(reinterpret_cast<char const*>(argument.utf16()), argument.size() * 2).toHex();
    }
    QByteArray const all = parts.join(',');
    return all.size() < 1000 ? all : QCryptographicHash::hash(all, QCryptographicHash::Sha256).toHex();
}

} // namespace

class InstanceChannelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theFirstCopyOpensAndTheSecondDoesNot();
    void argumentsArriveAsTheyAre_data();
    void argumentsArriveAsTheyAre();
    void theActivationTokenTravelsAlong();
    void messagesAreBounded_data();
    void messagesAreBounded();
    void nobodyListens();
    void aCopyThatIsNotListeningYetIsWaitedFor();
    void aSlotMayRunAnEventLoop();
    void aHangingFirstCopyGivesFalseInTime();
    void aStoppedFirstCopyGivesFalseAndLosesItsPlace();
    void aStoppedFirstCopyDoesNotSeeLaterWhatItMissed();
    void aBusyFirstCopyKeepsItsPlaceOnceItAnswers();
    void aKilledFirstCopyLeavesItsPlace();
    void leftOversDoNotKeepFromOpening();
    void aWipedFolderDoesNotKeepFromOpening();
    void onlyANoteOfTheFirstCopyCostsItItsPlace_data();
    void onlyANoteOfTheFirstCopyCostsItItsPlace();
    void aLockThatIsReplacedMeanwhileDoesNotCount_data();
    void aLockThatIsReplacedMeanwhileDoesNotCount();
    void aLockThatLeadsElsewhereIsNotTaken();
    void tellsThatThereIsNoRoom();
    void tellsThatItMayNotWrite_data();
    void tellsThatItMayNotWrite();
    void aNoteThatCannotBeWrittenCostsNobodyTheirPlace();
    void longNamesAreToldApart();
    void worksWhereTheRuntimeFolder_data();
    void worksWhereTheRuntimeFolder();
    void worksInTheCacheWithoutARuntimeFolder();
    void tellsThatThereIsNoPrivateFolder_data();
    void tellsThatThereIsNoPrivateFolder();
    void theSocketIsTheUsersOwn();
    void nothingIsSaidToAStranger();
    void garbageIsDropped_data();
    void garbageIsDropped();
    void aMessageInPiecesIsHeardOnce();
    void aSenderThatHasHungUpIsNotHeard();
    void silentSendersAreDropped();
    void theChannelMayBeDeletedInItsSlot();
    void oneOfAHundredIsTheFirst();
    void nothingIsLostInAFlood();
    void nothingIsHandedOverTwiceWhenTheFirstCopy_data();
    void nothingIsHandedOverTwiceWhenTheFirstCopy();

private:
    [[nodiscard]] QString socket() const;
    [[nodiscard]] QString lock() const;

    QByteArray m_home = qgetenv("HOME");
    std::unique_ptr<QTemporaryDir> m_runtime;
    QString m_name;
};

void InstanceChannelTest::init()
{
    m_runtime = std::make_unique<QTemporaryDir>();
    QVERIFY(m_runtime->isValid());
    qputenv("XDG_RUNTIME_DIR", m_runtime->path().toUtf8());
    m_name = QStringLiteral("channel-test");
}

void InstanceChannelTest::cleanup()
{
    qunsetenv("XDG_ACTIVATION_TOKEN");
    qputenv("HOME", m_home);
    m_runtime.reset();
}

QString InstanceChannelTest::socket() const
{
    QStringList const sockets =
        QDir(m_runtime->path()).entryList({QStringLiteral("softphone-*-*")}, QDir::System);
    return sockets.size() == 1 ? m_runtime->filePath(sockets.first()) : QString();
}

/// The file that was locked there; empty when there is none.
QString InstanceChannelTest::lock() const
{
    QStringList const locks = QDir(m_runtime->path()).entryList({QStringLiteral("softphone-*.lock")});
    return locks.size() == 1 ? m_runtime->filePath(locks.first()) : QString();
}

void InstanceChannelTest::theFirstCopyOpensAndTheSecondDoesNot()
{
    InstanceChannel first(m_name);
    QVERIFY(!first.isOpen());
    QVERIFY2(first.open(), qPrintable(first.errorText()));
    QVERIFY(first.isOpen());
    QVERIFY2(first.open(), qPrintable(first.errorText()));
    QCOMPARE(first.errorText(), QString());

    InstanceChannel second(m_name);
    QVERIFY(!second.open());
    QVERIFY(!second.isOpen());
    QVERIFY(!second.errorText().isEmpty());
    QVERIFY(InstanceChannel(m_name + u'2').open());
    QCOMPARE(Copy({QStringLiteral("first"), m_name}).next(), QByteArray("other"));
}

void InstanceChannelTest::argumentsArriveAsTheyAre_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("none") << QStringList();
    QTest::newRow("an address") << QStringList{QStringLiteral("tel:+390612345678")};
    QTest::newRow("empty ones") << QStringList{QString(), QStringLiteral("x"), QString()};
    QTest::newRow("blanks, quotes, line ends") << QStringList{QStringLiteral(" a \"b\" 'c'\n\r\t")};
    QTest::newRow("scripts") << QStringList{QStringLiteral("Größe"), QStringLiteral("שלום"),
                                            QStringLiteral("電話"), QStringLiteral("📞")};
    QTest::newRow("half a surrogate pair") << QStringList{QString(QChar(0xD83D)), QString(QChar(0xDCDE))};
    QTest::newRow("a NUL inside") << QStringList{QString::fromUtf16(u"a\0b", 3)};
    QTest::newRow("as many as there may be") << QStringList(1024, QStringLiteral("x"));
    QTest::newRow("as much as there may be") << QStringList{QString(64 * 1024, u'x')};
    QTest::newRow("as much in three bytes each") << QStringList{QString(64 * 1024 / 3, QChar(0x96FB))};
}

void InstanceChannelTest::argumentsArriveAsTheyAre()
{
    QFETCH(QStringList, arguments);
    Copy first({QStringLiteral("first"), m_name});
    QCOMPARE(first.next(), QByteArray("first"));
    InstanceChannel channel(m_name);
    QVERIFY2(channel.sendAndWait(arguments), qPrintable(channel.errorText()));
    QCOMPARE(channel.errorText(), QString());
    // Answered only after the slots have run: the word is there already.
    QCOMPARE(first.next(0), said(arguments) + '/');
}

void InstanceChannelTest::theActivationTokenTravelsAlong()
{
    Copy first({QStringLiteral("first"), m_name});
    QCOMPARE(first.next(), QByteArray("first"));
    qputenv("XDG_ACTIVATION_TOKEN", "launcher-17_TIME42");
    QVERIFY(InstanceChannel(m_name).sendAndWait({}));
    QCOMPARE(first.next(), QByteArray("/launcher-17_TIME42"));
}

void InstanceChannelTest::messagesAreBounded_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("one byte too long") << QStringList{QString(64 * 1024 + 1, u'x')};
    QTest::newRow("too long together") << QStringList(3, QString(22 * 1024, u'x'));
    QTest::newRow("too long in UTF-8") << QStringList{QString(64 * 1024 / 3 + 1, QChar(0x96FB))};
    QTest::newRow("too many") << QStringList(1025, QStringLiteral("x"));
}

void InstanceChannelTest::messagesAreBounded()
{
    QFETCH(QStringList, arguments);
    Copy first({QStringLiteral("first"), m_name});
    QCOMPARE(first.next(), QByteArray("first"));
    InstanceChannel channel(m_name);
    QVERIFY(!channel.sendAndWait(arguments));
    QVERIFY(!channel.errorText().isEmpty());
    QCOMPARE(first.rest(), QByteArrayList());
}

void InstanceChannelTest::nobodyListens()
{
    InstanceChannel channel(m_name);
    QVERIFY(!channel.hasListener());
    QVERIFY(!channel.sendAndWait({QStringLiteral("x")}, std::chrono::milliseconds(100)));
    QVERIFY(!channel.errorText().isEmpty());
    QVERIFY(channel.open());
    QVERIFY(channel.hasListener());
    QVERIFY(InstanceChannel(m_name).hasListener());
    QVERIFY(!InstanceChannel(m_name + u'2').hasListener());
}

void InstanceChannelTest::aCopyThatIsNotListeningYetIsWaitedFor()
{
    Copy sender({QStringLiteral("send"), m_name, QStringLiteral("60000"), QStringLiteral("early")});
    QCOMPARE(sender.next(300), QByteArray());
    Copy first({QStringLiteral("first"), m_name});
    QCOMPARE(first.next(), QByteArray("first"));
    QCOMPARE(sender.next(), QByteArray("delivered"));
    QCOMPARE(first.next(), said({QStringLiteral("early")}) + '/');
}

void InstanceChannelTest::aSlotMayRunAnEventLoop()
{
    Copy first({QStringLiteral("nested"), m_name});
    QCOMPARE(first.next(), QByteArray("first"));
    std::vector<std::unique_ptr<Copy>> senders;
    senders.reserve(5);
    for (int i = 0; i < 5; ++i) {
        senders.push_back(std::make_unique<Copy>(
            QStringList{QStringLiteral("send"), m_name, QStringLiteral("60000"), QString::number(i)}));
    }
    for (auto const& sender : senders) {
        QCOMPARE(sender->next(), QByteArray("delivered"));
    }
    QCOMPARE(first.rest().size(), 5);
}

void InstanceChannelTest::aHangingFirstCopyGivesFalseInTime()
{
    Copy first({QStringLiteral("hanging"), m_name});
    QCOMPARE(first.next(), QByteArray("first"));
    InstanceChannel channel(m_name);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!channel.sendAndWait({QStringLiteral("x")}, std::chrono::milliseconds(300)));
    QVERIFY(clock.elapsed() >= 300);
    QVERIFY(!channel.errorText().isEmpty());
    QVERIFY(channel.open());
    first.kill();
}

void InstanceChannelTest::aStoppedFirstCopyGivesFalseAndLosesItsPlace()
{
    Copy first({QStringLiteral("first"), m_name});
    QCOMPARE(first.next(), QByteArray("first"));
    first.signal(SIGSTOP);
    InstanceChannel second(m_name);
    QVERIFY(!second.open());
    QVERIFY(second.hasListener());
    QVERIFY(!second.sendAndWait({QStringLiteral("x")}, std::chrono::milliseconds(300)));

    Copy third({QStringLiteral("first"), m_name});
    QCOMPARE(third.next(), QByteArray("first"));
    QVERIFY(!second.open());
    QVERIFY(second.sendAndWait({QStringLiteral("y")}));
    QCOMPARE(third.next(), said({QStringLiteral("y")}) + '/');
    first.signal(SIGCONT);
    QCOMPARE(first.rest(), QByteArrayList());
    QVERIFY(second.sendAndWait({QStringLiteral("z")}));
}

void InstanceChannelTest::aStoppedFirstCopyDoesNotSeeLaterWhatItMissed()
{
    Copy first({QStringLiteral("first"), m_name});
    QCOMPARE(first.next(), QByteArray("first"));
    first.signal(SIGSTOP);
    InstanceChannel second(m_name);
    QVERIFY(!second.sendAndWait({QStringLiteral("missed")}, std::chrono::milliseconds(300)));
    first.signal(SIGCONT);
    QVERIFY(second.sendAndWait({QStringLiteral("seen")}));
    QCOMPARE(first.next(), said({QStringLiteral("seen")}) + '/');
}

void InstanceChannelTest::aBusyFirstCopyKeepsItsPlaceOnceItAnswers()
{
    Copy first({QStringLiteral("nested"), m_name});
    QCOMPARE(first.next(), QByteArray("first"));
    InstanceChannel second(m_name);
    QVERIFY(!second.sendAndWait({QStringLiteral("slow")}, std::chrono::milliseconds(100)));
    QVERIFY(!second.open());
    QVERIFY(second.sendAndWait({QStringLiteral("again")}));
}

void InstanceChannelTest::aKilledFirstCopyLeavesItsPlace()
{
    Copy first({QStringLiteral("first"), m_name});
    QCOMPARE(first.next(), QByteArray("first"));
    first.kill();
    InstanceChannel second(m_name);
    QVERIFY(!second.hasListener());
    QVERIFY(!second.sendAndWait({QStringLiteral("x")}, std::chrono::milliseconds(100)));
    QVERIFY2(second.open(), qPrintable(second.errorText()));
}

void InstanceChannelTest::leftOversDoNotKeepFromOpening()
{
    {
        InstanceChannel first(m_name);
        QVERIFY2(first.open(), qPrintable(first.errorText()));
    }
    for (QString const& name : QDir(m_runtime->path()).entryList(QDir::Files | QDir::System)) {
        QFile::remove(m_runtime->filePath(name));
        QFile leftOver(m_runtime->filePath(name));
        QVERIFY(leftOver.open(QIODevice::WriteOnly));
        leftOver.write("stale");
    }
    InstanceChannel second(m_name);
    QVERIFY2(second.open(), qPrintable(second.errorText()));
}

void InstanceChannelTest::aWipedFolderDoesNotKeepFromOpening()
{
    InstanceChannel first(m_name);
    QVERIFY2(first.open(), qPrintable(first.errorText()));
    for (QString const& name : QDir(m_runtime->path()).entryList(QDir::Files | QDir::System)) {
        QFile::remove(m_runtime->filePath(name));
    }
    InstanceChannel second(m_name);
    QVERIFY2(second.open(), qPrintable(second.errorText()));
}

void InstanceChannelTest::onlyANoteOfTheFirstCopyCostsItItsPlace_data()
{
    QTest::addColumn<std::function<QByteArray(QByteArray)>>("note"); // by the name of the first copy
    QTest::addColumn<bool>("isReplaced");
    using Note = std::function<QByteArray(QByteArray)>;
    QTest::newRow("of an earlier copy")
        << Note([](QByteArray name) { return name.replace(0, 1, "x"); }) << false;
    QTest::newRow("cut") << Note([](QByteArray const& name) { return name.chopped(1); }) << false;
    QTest::newRow("empty") << Note([](QByteArray const&) { return QByteArray(); }) << false;
    QTest::newRow("of the first copy") << Note([](QByteArray const& name) { return name; }) << true;
}

/// The first copy cannot be reached, so that a note is all that there is to go by.
void InstanceChannelTest::onlyANoteOfTheFirstCopyCostsItItsPlace()
{
    QFETCH(std::function<QByteArray(QByteArray)>, note);
    QFETCH(bool, isReplaced);
    InstanceChannel first(m_name);
    QVERIFY2(first.open(), qPrintable(first.errorText()));
    QByteArray const name = TestFiles::read(lock());
    QVERIFY(!name.isEmpty());
    QString deaf = lock();
    deaf.replace(QStringLiteral(".lock"), QStringLiteral(".deaf"));
    QVERIFY(TestFiles::write(deaf, note(name)));
    QVERIFY(QFile::remove(socket()));
    InstanceChannel second(m_name);
    QCOMPARE(second.open(), isReplaced);
    QCOMPARE(second.errorText(), isReplaced ? QString() : QStringLiteral("Another copy is running already."));
    QCOMPARE(TestFiles::read(lock()) == name, !isReplaced);
}

void InstanceChannelTest::aLockThatIsReplacedMeanwhileDoesNotCount_data()
{
    QTest::addColumn<bool>("isTakenByAnother");
    QTest::newRow("removed") << false;
    QTest::newRow("removed, and taken by another copy") << true;
}

/// Between opening the file and locking it, as when several copies take over from one that is deaf.
void InstanceChannelTest::aLockThatIsReplacedMeanwhileDoesNotCount()
{
    QFETCH(bool, isTakenByAnother);
    InstanceChannel other(m_name);
    InstanceChannel channel(m_name);
    SystemCalls::beforeNextLock([&] {
        QVERIFY(QFile::remove(lock()));
        QCOMPARE(isTakenByAnother && other.open(), isTakenByAnother);
    });
    QCOMPARE(channel.open(), !isTakenByAnother);
    QVERIFY(!InstanceChannel(m_name).open());
}

void InstanceChannelTest::aLockThatLeadsElsewhereIsNotTaken()
{
    {
        InstanceChannel earlier(m_name);
        QVERIFY2(earlier.open(), qPrintable(earlier.errorText()));
    }
    QString const path = lock();
    QString const precious = m_runtime->filePath(QStringLiteral("precious"));
    QVERIFY(TestFiles::write(precious, "precious"));
    QVERIFY(QFile::remove(path));
    QVERIFY(QFile::link(precious, path));
    InstanceChannel channel(m_name);
    QVERIFY(!channel.open());
    QCOMPARE(channel.errorText(), QStringLiteral("This copy cannot listen: ") + qt_error_string(ELOOP));
    QCOMPARE(TestFiles::read(precious), QByteArray("precious"));
}

void InstanceChannelTest::tellsThatThereIsNoRoom()
{
    InstanceChannel channel(m_name);
    {
        FullDisk const disk(0);
        QVERIFY(!channel.open());
    }
    QCOMPARE(channel.errorText(), QStringLiteral("This copy cannot listen: ") + qt_error_string(EFBIG));
    QVERIFY2(channel.open(), qPrintable(channel.errorText()));
}

void InstanceChannelTest::tellsThatItMayNotWrite_data()
{
    QTest::addColumn<bool>("isLockThere");
    QTest::newRow("a lock") << false;
    QTest::newRow("a socket") << true;
}

/// As a user whom permissions bind.
void InstanceChannelTest::tellsThatItMayNotWrite()
{
    QFETCH(bool, isLockThere);
    if (!SecondUser::isPossible()) {
        QSKIP("only root can become another user");
    }
    SecondUser const second;
    SecondUsersTurn const turn;
    QVERIFY(second.isReady() && turn.isTaken());
    QByteArray const folder = QFile::encodeName(second.home());
    qputenv("XDG_RUNTIME_DIR", folder);
    InstanceChannel channel(m_name);
    QVERIFY(!isLockThere || InstanceChannel(m_name).open());
    QCOMPARE(chmod(folder.constData(), 0500), 0);
    QVERIFY(!channel.open());
    QVERIFY2(channel.errorText().startsWith(QStringLiteral("This copy cannot listen: ")),
             qPrintable(channel.errorText()));
    // Nothing is held any more: another copy can be the first.
    QCOMPARE(chmod(folder.constData(), 0700), 0);
    InstanceChannel another(m_name);
    QVERIFY2(another.open(), qPrintable(another.errorText()));
}

void InstanceChannelTest::aNoteThatCannotBeWrittenCostsNobodyTheirPlace()
{
    if (!SecondUser::isPossible()) {
        QSKIP("only root can become another user");
    }
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
    SecondUser const second;
    SecondUsersTurn const turn;
    QVERIFY(second.isReady() && turn.isTaken());
    QByteArray const folder = QFile::encodeName(second.home());
    qputenv("XDG_RUNTIME_DIR", folder);
    // Its event loop does not run while the other one waits for it.
    InstanceChannel first(m_name);
    QVERIFY2(first.open(), qPrintable(first.errorText()));
    InstanceChannel channel(m_name);
    QCOMPARE(chmod(folder.constData(), 0500), 0);
    QVERIFY(!channel.sendAndWait({QStringLiteral("x")}, std::chrono::milliseconds(50)));
    QCOMPARE(channel.errorText(), QStringLiteral("The other copy does not answer."));
    QCOMPARE(chmod(folder.constData(), 0700), 0);
    QVERIFY(!channel.open());
    QCOMPARE(channel.errorText(), QStringLiteral("Another copy is running already."));
}

void InstanceChannelTest::longNamesAreToldApart()
{
    QString const longName(10'000, u'n');
    InstanceChannel first(longName + u'1');
    InstanceChannel second(longName + u'2');
    QVERIFY2(first.open(), qPrintable(first.errorText()));
    QVERIFY2(second.open(), qPrintable(second.errorText()));
    QVERIFY(!InstanceChannel(longName + u'1').open());
}

void InstanceChannelTest::worksWhereTheRuntimeFolder_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("isUsed");
    QTest::newRow("is not set") << QString() << false;
    QTest::newRow("is missing") << QStringLiteral("missing") << false;
    QTest::newRow("is a file") << QStringLiteral("file") << false;
    QTest::newRow("is a link") << QStringLiteral("link") << false;
    QTest::newRow("is open to everybody") << QStringLiteral("open") << false;
    QTest::newRow("has a path too long for a socket") << QString(100, u'l') << false;
    if (SecondUser::isPossible()) {
        QTest::newRow("is another user's") << QStringLiteral("other's") << false;
    }
    QTest::newRow("is as it should be") << QStringLiteral("good") << true;
}

void InstanceChannelTest::worksWhereTheRuntimeFolder()
{
    QFETCH(QString, folder);
    QFETCH(bool, isUsed);
    QDir const base(m_runtime->path());
    for (QString const& name : {QStringLiteral("open"), QStringLiteral("good"), QStringLiteral("target"),
                                QStringLiteral("other's"), QString(100, u'l')}) {
        QVERIFY(base.mkdir(name));
    }
    QVERIFY(!SecondUser::isPossible() || SecondUser::give(base.filePath(QStringLiteral("other's"))));
    QVERIFY(QFile(base.filePath(QStringLiteral("file"))).open(QIODevice::WriteOnly));
    QVERIFY(QFile::link(base.filePath(QStringLiteral("target")), base.filePath(QStringLiteral("link"))));
    QCOMPARE(chmod(qPrintable(base.filePath(QStringLiteral("open"))), 0777), 0);
    qputenv("XDG_RUNTIME_DIR", folder.isEmpty() ? QByteArray() : base.filePath(folder).toUtf8());

    InstanceChannel first(m_name);
    QVERIFY2(first.open(), qPrintable(first.errorText()));
    QVERIFY(!InstanceChannel(m_name).open());
    QCOMPARE(!QDir(base.filePath(folder))
                     .entryList({QStringLiteral("softphone-*")}, QDir::Files | QDir::System)
                     .isEmpty() &&
                 !folder.isEmpty(),
             isUsed);
}

void InstanceChannelTest::worksInTheCacheWithoutARuntimeFolder()
{
    if (!SecondUser::isPossible()) {
        QSKIP("only root can become another user");
    }
    SecondUser const second;
    SecondUsersTurn const turn;
    QVERIFY(second.isReady() && turn.isTaken());
    qunsetenv("XDG_RUNTIME_DIR");
    qputenv("HOME", QFile::encodeName(second.home()));
    InstanceChannel first(m_name);
    QVERIFY2(first.open(), qPrintable(first.errorText()));
    QVERIFY(InstanceChannel(m_name).hasListener());
    QVERIFY(!InstanceChannel(m_name).open());
    QString const folder = second.home() + QStringLiteral("/.cache/softphone-instances");
    QVERIFY(!TestFiles::names(folder).isEmpty());
    struct stat status = {};
    QCOMPARE(stat(qPrintable(folder), &status), 0);
    QCOMPARE(status.st_mode & 0777U, 0700U);
}

void InstanceChannelTest::tellsThatThereIsNoPrivateFolder_data()
{
    QTest::addColumn<QString>("home"); // in the user's home
    QTest::newRow("the home cannot be written to") << QStringLiteral("closed");
    QTest::newRow("its path is too long for a socket") << QString(100, u'l');
}

void InstanceChannelTest::tellsThatThereIsNoPrivateFolder()
{
    QFETCH(QString, home);
    if (!SecondUser::isPossible()) {
        QSKIP("only root can become another user");
    }
    SecondUser const second;
    QVERIFY(second.isReady());
    // Root's.
    QVERIFY(QDir(second.home()).mkdir(QStringLiteral("closed")));
    SecondUsersTurn const turn;
    QVERIFY(turn.isTaken());
    qunsetenv("XDG_RUNTIME_DIR");
    qputenv("HOME", QFile::encodeName(second.home() + u'/' + home));
    QString const reason = QStringLiteral("There is no folder that only this user may write to.");
    InstanceChannel channel(m_name);
    QVERIFY(!channel.open());
    QCOMPARE(channel.errorText(), reason);
    QVERIFY(!channel.isOpen());
    QVERIFY(!channel.hasListener());
    InstanceChannel later(m_name);
    QVERIFY(!later.sendAndWait({QStringLiteral("x")}));
    QCOMPARE(later.errorText(), reason);
}

void InstanceChannelTest::theSocketIsTheUsersOwn()
{
    if (geteuid() != 0) {
        QSKIP("only root can become another user");
    }
    InstanceChannel first(m_name);
    QVERIFY2(first.open(), qPrintable(first.errorText()));
    // The folder keeps others out; should it not, each end looks at the other.
    QCOMPARE(chmod(qPrintable(m_runtime->path()), 0755), 0);
    QCOMPARE(chmod(qPrintable(socket()), 0777), 0);
    QSignalSpy received(&first, &InstanceChannel::received);
    pid_t const stranger = fork();
    if (stranger == 0) {
        _exit(sendAsStranger(socket()));
    }
    int status = -1;
    bool ended = false;
    QTRY_VERIFY_WITH_TIMEOUT((ended = ended || waitpid(stranger, &status, WNOHANG) == stranger), patience);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 0);
    QCOMPARE(received.count(), 0);
}

void InstanceChannelTest::nothingIsSaidToAStranger()
{
    if (geteuid() != 0) {
        QSKIP("only root can become another user");
    }
    QString path;
    {
        InstanceChannel first(m_name);
        QVERIFY2(first.open(), qPrintable(first.errorText()));
        path = socket();
    }
    int ready[2] = {};
    QCOMPARE(pipe(ready), 0);
    pid_t const stranger = fork();
    if (stranger == 0) {
        _exit(listenAsStranger(path, ready[1]));
    }
    char byte = 0;
    QCOMPARE(::read(ready[0], &byte, 1), 1);
    InstanceChannel second(m_name);
    QVERIFY(!second.sendAndWait({QStringLiteral("tel:+390612345678")}, std::chrono::milliseconds(300)));
    int status = -1;
    QCOMPARE(waitpid(stranger, &status, 0), stranger);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 0);
    close(ready[0]);
    close(ready[1]);
}

void InstanceChannelTest::garbageIsDropped_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("another protocol") << QByteArray("GET / HTTP/1.1\r\n\r\n");
    QTest::newRow("another version") << QByteArray("SPI2\0\0\0\4\0\0\0\0", 12);
    QTest::newRow("a length beyond the limit") << QByteArray("SPI1\xff\xff\xff\xff", 8);
    QTest::newRow("a part longer than the message") << QByteArray("SPI1\0\0\0\4\0\0\0\1", 12);
    QTest::newRow("no token") << QByteArray("SPI1\0\0\0\0", 8);
    QTest::newRow("half a letter") << QByteArray("SPI1\0\0\0\x09\0\0\0\0\0\0\0\1x", 17);
    QTest::newRow("an argument too many")
        << QByteArray("SPI1\0\0\x10\x08", 8) + QByteArray(4 + 1025 * 4, '\0');
    QTest::newRow("more than announced") << QByteArray("SPI1\0\0\0\4\0\0\0\0xyz", 15);
}

void InstanceChannelTest::garbageIsDropped()
{
    QFETCH(QByteArray, bytes);
    InstanceChannel first(m_name);
    QVERIFY2(first.open(), qPrintable(first.errorText()));
    QSignalSpy received(&first, &InstanceChannel::received);
    QLocalSocket peer;
    peer.connectToServer(socket());
    QVERIFY(peer.waitForConnected());
    peer.write(bytes);
    QTRY_COMPARE(peer.state(), QLocalSocket::UnconnectedState);
    QCOMPARE(received.count(), 0);
}

void InstanceChannelTest::aMessageInPiecesIsHeardOnce()
{
    InstanceChannel first(m_name);
    QVERIFY2(first.open(), qPrintable(first.errorText()));
    QSignalSpy const received(&first, &InstanceChannel::received);
    QLocalSocket peer;
    peer.connectToServer(socket());
    QTRY_COMPARE(peer.peek(1), QByteArray("H"));
    for (char const byte : QByteArray("SPI1\0\0\0\x0a\0\0\0\0\0\0\0\2\0x", 18)) {
        QCOMPARE(received.count(), 0);
        QCOMPARE(peer.write(&byte, 1), 1);
        QVERIFY(peer.flush());
        QCoreApplication::processEvents();
    }
    QTRY_COMPARE(received.count(), 1);
    QCOMPARE(received.constFirst().constFirst().toStringList(), QStringList{QStringLiteral("x")});
    QTRY_COMPARE(peer.peek(4), QByteArray("HTD"));
}

/// Its patience was over when the message had just been written, and it has told so.
void InstanceChannelTest::aSenderThatHasHungUpIsNotHeard()
{
    InstanceChannel first(m_name);
    QVERIFY2(first.open(), qPrintable(first.errorText()));
    QSignalSpy received(&first, &InstanceChannel::received);
    for (bool const hangsUp : {true, false}) {
        QLocalSocket peer;
        peer.connectToServer(socket());
        QTRY_COMPARE(peer.peek(1), QByteArray("H"));
        peer.write("SPI1\0\0\0\x0a\0\0\0\0\0\0\0\2\0x", 18);
        QVERIFY(peer.flush());
        if (hangsUp) {
            peer.abort();
        }
        QTest::qWait(300);
        QCOMPARE(received.count(), hangsUp ? 0 : 1);
    }
}

void InstanceChannelTest::silentSendersAreDropped()
{
    InstanceChannel first(m_name);
    QVERIFY2(first.open(), qPrintable(first.errorText()));
    std::vector<std::unique_ptr<QLocalSocket>> silent;
    for (int i = 0; i < 200; ++i) {
        silent.push_back(std::make_unique<QLocalSocket>());
        silent.back()->connectToServer(socket());
        QTest::qWait(0);
    }
    Copy sender({QStringLiteral("send"), m_name, QStringLiteral("60000"), QStringLiteral("x")});
    QSignalSpy received(&first, &InstanceChannel::received);
    QVERIFY(received.wait(patience));
    for (auto const& peer : silent) {
        QTRY_COMPARE_WITH_TIMEOUT(peer->state(), QLocalSocket::UnconnectedState, patience);
    }
}

void InstanceChannelTest::theChannelMayBeDeletedInItsSlot()
{
    auto* const first = new InstanceChannel(m_name);
    QVERIFY(first->open());
    bool deleted = false;
    connect(first, &InstanceChannel::received, first, [first, &deleted] {
        delete first;
        deleted = true;
    });
    Copy sender({QStringLiteral("send"), m_name, QStringLiteral("60000"), QStringLiteral("x")});
    QTRY_VERIFY_WITH_TIMEOUT(deleted, patience);
    QVERIFY(sender.next().contains("ended"));
}

void InstanceChannelTest::oneOfAHundredIsTheFirst()
{
    int const rounds = std::max(1, sizeForThisRun(20));
    for (int round = 0; round < rounds; ++round) {
        QCOMPARE(Copy({QStringLiteral("crowd"), m_name, QStringLiteral("100")}).next(), QByteArray("1"));
    }
}

void InstanceChannelTest::nothingIsLostInAFlood()
{
    int const copies = floodingCopies();
    constexpr int each = 150;
    Copy first({QStringLiteral("first"), m_name});
    QCOMPARE(first.next(), QByteArray("first"));
    std::vector<std::unique_ptr<Copy>> senders;
    senders.reserve(static_cast<std::size_t>(copies));
    for (int i = 0; i < copies; ++i) {
        senders.push_back(std::make_unique<Copy>(
            QStringList{QStringLiteral("flood"), m_name, QString::number(i * each), QString::number(each)}));
    }
    QSet<QByteArray> seen;
    for (int i = 0; i < copies * each; ++i) {
        QByteArray const word = first.next();
        QVERIFY(!word.isEmpty());
        seen << word;
    }
    QCOMPARE(seen.size(), copies * each);
    qsizetype delivered = 0;
    for (auto const& sender : senders) {
        delivered += sender->rest().size();
    }
    QCOMPARE(delivered, copies * each);
    QCOMPARE(first.rest(), QByteArrayList());
}

void InstanceChannelTest::nothingIsHandedOverTwiceWhenTheFirstCopy_data()
{
    QTest::addColumn<QString>("manner");
    QTest::addColumn<int>("copies");
    QTest::addColumn<int>("each");
    QTest::addColumn<int>("life"); // how many messages it takes before that
    QTest::newRow("quits after a few") << QStringLiteral("quit") << floodingCopies() * 2 / 5 << 20 << 7;
    QTest::newRow("is killed") << QStringLiteral("kill") << floodingCopies() << 150 << 10 * floodingCopies();
    QTest::newRow("is stopped for a while")
        << QStringLiteral("stop") << floodingCopies() << 150 << 10 * floodingCopies();
}

/// In the middle of a flood of messages; the next copy takes the place of one that ends.
void InstanceChannelTest::nothingIsHandedOverTwiceWhenTheFirstCopy()
{
    QFETCH(QString, manner);
    QFETCH(int, copies);
    QFETCH(int, each);
    QFETCH(int, life);
    int const total = copies * each;
    std::vector<std::unique_ptr<Copy>> senders;
    senders.reserve(static_cast<std::size_t>(copies));
    for (int i = 0; i < copies; ++i) {
        senders.push_back(std::make_unique<Copy>(
            QStringList{QStringLiteral("flood"), m_name, QString::number(i * each), QString::number(each)}));
    }
    QByteArrayList seen;
    int ended = 0;
    std::unique_ptr<Copy> first;
    // The last one stays until nobody sends any more.
    auto const isLast = [&] { return seen.size() + 2 * life >= total; };
    auto const startNext = [&] {
        int const messages = manner == u"quit" && !isLast() ? life : -1;
        first = std::make_unique<Copy>(
            QStringList{QStringLiteral("first-of"), m_name, QString::number(messages)});
        return first->next() == "first";
    };
    QVERIFY(startNext());
    while (!isLast()) {
        for (int i = 0; i < life; ++i) {
            seen << first->next();
            QVERIFY(!seen.last().isEmpty());
        }
        if (manner == u"stop") {
            first->signal(SIGSTOP);
            QTest::qWait(200);
            first->signal(SIGCONT);
            continue;
        }
        if (manner == u"kill") {
            first->kill();
        }
        seen << first->rest();
        ++ended;
        QVERIFY(startNext());
    }
    qsizetype delivered = 0;
    for (auto const& sender : senders) {
        delivered += sender->rest().size();
    }
    seen << first->rest();
    QCOMPARE(QSet<QByteArray>(seen.begin(), seen.end()).size(), seen.size());
    // Whoever took a message and ended before it had answered may have shown it or not; its sender was told
    // that it was not handed over. Nothing else is missing.
    QVERIFY2(delivered >= total - ended, QByteArray::number(delivered).constData());
    QVERIFY2(seen.size() >= std::max<qsizetype>(delivered, total - ended),
             QByteArray::number(seen.size()).constData());
}

int main(int argc, char** argv)
{
    return runTest<InstanceChannelTest>(argc, argv);
}

#include "InstanceChannelTest.moc"
