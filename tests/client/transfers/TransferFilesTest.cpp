#include "Probe.h"

#include <Faults.h>
#include <LocalNginx.h>
#include <QCryptographicHash>
#include <QDirIterator>
#include <QPointer>
#include <QProcess>
#include <QTemporaryDir>
#include <RunTest.h>
#include <ScriptedServer.h>
#include <SecondUser.h>
#include <SendSignal.h>
#include <SystemCalls.h>
#include <TestFiles.h>
#include <algorithm>
#include <csignal>
#include <functional>
#include <memory>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

using namespace Softphone;
using namespace std::chrono_literals;

namespace {

/// Downloads argv[2] to argv[3]; for a parent that kills it.
constexpr auto downloadArgument = "--download";

QByteArray sha256(QByteArray const& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

int download(QString const& url, QString const& path)
{
    Transfers transfers;
    Transfer* const transfer = transfers.download(requestFor(url, path));
    QObject::connect(transfer, &Transfer::finished, transfer, &QCoreApplication::quit);
    return QCoreApplication::exec();
}

/// Answers with the first half of \a content under the tag "v1", and with the other after \a silence.
void sendInHalves(ScriptedServer::Connection& connection, QByteArray const& content,
                  std::chrono::seconds silence)
{
    qsizetype const half = content.size() / 2;
    connection.send("HTTP/1.1 200 OK\r\nETag: \"v1\"\r\nContent-Length: " +
                    QByteArray::number(content.size()) + "\r\n\r\n" + content.first(half));
    connection.pause(silence);
    connection.send(content.mid(half));
}

} // namespace

/// What a download leaves on the disk, whatever becomes of it.
class TransferFilesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void treatsAnOldFileAsAsked_data();
    void treatsAnOldFileAsAsked();
    void findsFreeNames_data();
    void findsFreeNames();
    void findsFreeNamesForManyAtOnce();
    void replacesByTheLastOfMany();
    void keepsPermissions();
    void followsLinks();
    void replacesALinkToNothing_data();
    void replacesALinkToNothing();
    void doesWithoutLinks_data();
    void doesWithoutLinks();
    void doesWithoutLocks_data();
    void doesWithoutLocks();
    void takesNoNameThatIsGivenMeanwhile();
    void refusesTargets_data();
    void refusesTargets();
    void keepsAProtectedFile();
    void tellsThatTheDiskIsFull();
    void checksTheDigest_data();
    void checksTheDigest();
    void goesOnAfterACrash_data();
    void goesOnAfterACrash();
    void goesOnWithARealServer();
    void startsOverInDoubt_data();
    void startsOverInDoubt();
    void startsOverWhenTheRestIsNone_data();
    void startsOverWhenTheRestIsNone();
    void startsOverWhenTheRecordWasSpoilt_data();
    void startsOverWhenTheRecordWasSpoilt();
    void refusesARestOfAnotherLength_data();
    void refusesARestOfAnotherLength();
    void startsOverAfterARestThatWasTooLong();
    void leavesRangesToTheCaller_data();
    void leavesRangesToTheCaller();
    void startsOverWhenThePartWasSpoilt_data();
    void startsOverWhenThePartWasSpoilt();
    void leavesStrangersPartsAlone();
    void passesOverWhatIsInTheWay_data();
    void passesOverWhatIsInTheWay();
    void givesUpWhereEveryNameIsTaken();
    void doesWithoutARecord();
    void goesOnWithAPartThatWasKept_data();
    void goesOnWithAPartThatWasKept();
    void keepsNoPartWithoutUse_data();
    void keepsNoPartWithoutUse();
    void goesOnBetweenRetries();
    void losesNothingByABusyAnswer();
    void asksForPlainBytes();
    void unpacksWhatComesPackedAllTheSame();
    void takesPlainBytesThatAreCalledSo();
    void leavesNothingOnFailure_data();
    void leavesNothingOnFailure();
    void survivesALostFolder_data();
    void survivesALostFolder();

private:
    [[nodiscard]] QString path(QString const& name) const { return m_folder->filePath(name); }
    [[nodiscard]] QString inFolder() const;
    [[nodiscard]] QString part() const;
    [[nodiscard]] ScriptedServer::Script inTwoParts(QByteArray& second, std::chrono::seconds silence) const;
    bool downloadAndKill(QString const& url, QString const& path, qint64 size = 1'000'000) const;
    bool leavePart(QString const& url, QString const& path, qint64 size);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<LocalNginx> m_nginx;
    QByteArray m_large = pattern(3'000'000);
    Transfers m_transfers;
};

void TransferFilesTest::initTestCase()
{
    m_nginx = std::make_unique<LocalNginx>();
    QVERIFY2(m_nginx->isRunning(), qPrintable(m_nginx->problem()));
    QVERIFY(m_nginx->addFile(QStringLiteral("small"), "content"));
    QVERIFY(m_nginx->addFile(QStringLiteral("large"), m_large));
}

void TransferFilesTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

/// The names of all files there, sorted and joined.
QString TransferFilesTest::inFolder() const
{
    QStringList names = TestFiles::names(m_folder->path()).values();
    names.sort();
    return names.join(QLatin1Char('|'));
}

/// The part file there; empty when there is none.
QString TransferFilesTest::part() const
{
    QSet<QString> const names = TestFiles::names(m_folder->path());
    auto const found = std::ranges::find_if(
        names, [](QString const& name) { return name.endsWith(QLatin1String(".part")); });
    return found == names.end() ? QString() : path(*found);
}

void TransferFilesTest::treatsAnOldFileAsAsked_data()
{
    QTest::addColumn<IfExists>("ifExists");
    QTest::addColumn<TransferError>("error");
    QTest::addColumn<QByteArray>("old");
    QTest::addColumn<QString>("names");
    QTest::newRow("replace") << IfExists::Replace << TransferError::None << QByteArray("content")
                             << QStringLiteral("report.pdf");
    QTest::newRow("keep both") << IfExists::KeepBoth << TransferError::None << QByteArray("old")
                               << QStringLiteral("report (1).pdf|report.pdf");
    QTest::newRow("fail") << IfExists::Fail << TransferError::CannotWrite << QByteArray("old")
                          << QStringLiteral("report.pdf");
}

void TransferFilesTest::treatsAnOldFileAsAsked()
{
    QFETCH(IfExists, ifExists);
    QFETCH(TransferError, error);
    QFETCH(QByteArray, old);
    QFETCH(QString, names);
    QString const file = path(QStringLiteral("report.pdf"));
    QVERIFY(TestFiles::write(file, "old"));
    TransferRequest request = requestFor(m_nginx->url(QStringLiteral("/small")), file);
    request.ifExists = ifExists;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), error);
    QCOMPARE(TestFiles::read(file), old);
    QCOMPARE(inFolder(), names);
    if (error == TransferError::None) {
        QCOMPARE(TestFiles::read(transfer->path()), QByteArray("content"));
    }
}

void TransferFilesTest::findsFreeNames_data()
{
    QTest::addColumn<QString>("asked");
    QTest::addColumn<QStringList>("taken");
    QTest::addColumn<QString>("got");
    QString const l = QString(251, QLatin1Char('l'));
    QTest::newRow("free") << QStringLiteral("a.pdf") << QStringList() << QStringLiteral("a.pdf");
    QTest::newRow("second copy") << QStringLiteral("a.pdf")
                                 << QStringList{QStringLiteral("a.pdf"), QStringLiteral("a (1).pdf")}
                                 << QStringLiteral("a (2).pdf");
    QTest::newRow("gap") << QStringLiteral("a.pdf")
                         << QStringList{QStringLiteral("a.pdf"), QStringLiteral("a (2).pdf")}
                         << QStringLiteral("a (1).pdf");
    QTest::newRow("no suffix") << QStringLiteral("a") << QStringList{QStringLiteral("a")}
                               << QStringLiteral("a (1)");
    QTest::newRow("hidden") << QStringLiteral(".a") << QStringList{QStringLiteral(".a")}
                            << QStringLiteral(".a (1)");
    QTest::newRow("two dots") << QStringLiteral("a.b.gz") << QStringList{QStringLiteral("a.b.gz")}
                              << QStringLiteral("a.b (1).gz");
    QTest::newRow("as long as a name can be")
        << l + QStringLiteral(".pdf") << QStringList{l + QStringLiteral(".pdf")}
        << l.left(247) + QStringLiteral(" (1).pdf");
    QString const phone = QString::fromUcs4(U"\U0001F4DE");
    QTest::newRow("as long as a name can be, in surrogate pairs")
        << phone.repeated(62) + QStringLiteral(".pdf")
        << QStringList{phone.repeated(62) + QStringLiteral(".pdf")}
        << phone.repeated(61) + QStringLiteral(" (1).pdf");
    QTest::newRow("as long as a name can be, in two-byte letters")
        << QString(125, QChar(0xe8)) + QStringLiteral(".pdf")
        << QStringList{QString(125, QChar(0xe8)) + QStringLiteral(".pdf")}
        << QString(123, QChar(0xe8)) + QStringLiteral(" (1).pdf");
}

void TransferFilesTest::findsFreeNames()
{
    QFETCH(QString, asked);
    QFETCH(QStringList, taken);
    QFETCH(QString, got);
    for (QString const& name : taken) {
        QVERIFY(TestFiles::write(path(name), "old"));
    }
    TransferRequest request = requestFor(m_nginx->url(QStringLiteral("/small")), path(asked));
    request.ifExists = IfExists::KeepBoth;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::None);
    QCOMPARE(transfer->path(), path(got));
    QCOMPARE(TestFiles::read(path(got)), QByteArray("content"));
    for (QString const& name : taken) {
        QCOMPARE(TestFiles::read(path(name)), QByteArray("old"));
    }
}

/// Two owners, whose disk threads compete for the names.
void TransferFilesTest::findsFreeNamesForManyAtOnce()
{
    constexpr int count = 40;
    Transfers others;
    TransferRequest request =
        requestFor(m_nginx->url(QStringLiteral("/small")), path(QStringLiteral("report.pdf")));
    request.ifExists = IfExists::KeepBoth;
    QList<Transfer*> all;
    for (int i = 0; i < count; ++i) {
        all.append((i % 2 == 0 ? m_transfers : others).download(request));
    }
    QSet<QString> paths;
    for (Transfer* const transfer : all) {
        QVERIFY(ends(transfer));
        QCOMPARE(transfer->error(), TransferError::None);
        QCOMPARE(TestFiles::read(transfer->path()), QByteArray("content"));
        paths.insert(transfer->path());
    }
    QCOMPARE(paths.size(), count);
    QCOMPARE(TestFiles::names(m_folder->path()).size(), count);
    QVERIFY(TestFiles::isThere(path(QStringLiteral("report (39).pdf"))));
    qDeleteAll(all);
}

void TransferFilesTest::replacesByTheLastOfMany()
{
    QList<Transfer*> all;
    for (int i = 0; i < 12; ++i) {
        all.append(m_transfers.download(
            requestFor(m_nginx->url(QStringLiteral("/large")), path(QStringLiteral("report.pdf")))));
    }
    for (Transfer* const transfer : all) {
        QVERIFY(ends(transfer));
        QCOMPARE(transfer->error(), TransferError::None);
    }
    QCOMPARE(inFolder(), QStringLiteral("report.pdf"));
    QCOMPARE(TestFiles::read(path(QStringLiteral("report.pdf"))), m_large);
    qDeleteAll(all);
}

void TransferFilesTest::keepsPermissions()
{
    QString const file = path(QStringLiteral("private"));
    QVERIFY(TestFiles::write(file, "old"));
    QVERIFY(QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner));
    std::unique_ptr<Transfer> const transfer(
        m_transfers.download(requestFor(m_nginx->url(QStringLiteral("/small")), file)));
    QVERIFY(ends(transfer.get()));
    struct stat status = {};
    QCOMPARE(stat(QFile::encodeName(file).constData(), &status), 0);
    QCOMPARE(status.st_mode & 0777U, 0600U);
}

void TransferFilesTest::followsLinks()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("there")));
    QString const target = path(QStringLiteral("there/file"));
    QVERIFY(TestFiles::write(target, "old"));
    QVERIFY(TestFiles::link(target, path(QStringLiteral("link"))));
    std::unique_ptr<Transfer> const transfer(m_transfers.download(
        requestFor(m_nginx->url(QStringLiteral("/small")), path(QStringLiteral("link")))));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::None);
    QVERIFY(QFileInfo(path(QStringLiteral("link"))).isSymLink());
    QCOMPARE(TestFiles::read(target), QByteArray("content"));
}

void TransferFilesTest::replacesALinkToNothing_data()
{
    QTest::addColumn<IfExists>("ifExists");
    QTest::addColumn<QString>("got"); // the file's name; empty: none
    QTest::newRow("replace") << IfExists::Replace << QStringLiteral("link");
    QTest::newRow("keep both") << IfExists::KeepBoth << QStringLiteral("link (1)");
    QTest::newRow("fail") << IfExists::Fail << QString();
}

/// Whoever laid the link does not choose what is written where it leads.
void TransferFilesTest::replacesALinkToNothing()
{
    QFETCH(IfExists, ifExists);
    QFETCH(QString, got);
    QVERIFY(TestFiles::link(path(QStringLiteral("nothing")), path(QStringLiteral("link"))));
    TransferRequest request =
        requestFor(m_nginx->url(QStringLiteral("/small")), path(QStringLiteral("link")));
    request.ifExists = ifExists;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), got.isEmpty() ? TransferError::CannotWrite : TransferError::None);
    QVERIFY(!TestFiles::isThere(path(QStringLiteral("nothing"))));
    QCOMPARE(QFileInfo(path(QStringLiteral("link"))).isSymLink(), ifExists != IfExists::Replace);
    QCOMPARE(TestFiles::read(path(got)), got.isEmpty() ? QByteArray() : QByteArray("content"));
    QCOMPARE(TestFiles::names(m_folder->path()).size(), ifExists == IfExists::KeepBoth ? 2 : 1);
}

void TransferFilesTest::doesWithoutLinks_data()
{
    QTest::addColumn<int>("error");
    QTest::newRow("EPERM, as on Linux") << EPERM;
    QTest::newRow("EOPNOTSUPP, as on macOS") << EOPNOTSUPP;
    QTest::newRow("ENOSYS, as with FUSE") << ENOSYS;
    QTest::newRow("EMLINK") << EMLINK;
}

/// On a memory stick a file cannot have two names, not even for a moment.
void TransferFilesTest::doesWithoutLinks()
{
    QFETCH(int, error);
    SystemCalls::Failing const links(SystemCalls::Call::Link, error);
    QVERIFY(TestFiles::write(path(QStringLiteral("a.pdf")), "old"));
    TransferRequest request =
        requestFor(m_nginx->url(QStringLiteral("/small")), path(QStringLiteral("a.pdf")));
    request.ifExists = IfExists::KeepBoth;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->errorText(), QString());
    QCOMPARE(TestFiles::read(path(QStringLiteral("a.pdf"))), QByteArray("old"));
    QCOMPARE(TestFiles::read(path(QStringLiteral("a (1).pdf"))), QByteArray("content"));
    QCOMPARE(inFolder(), QStringLiteral("a (1).pdf|a.pdf"));
}

void TransferFilesTest::doesWithoutLocks_data()
{
    QTest::addColumn<int>("error");
    QTest::newRow("ENOLCK, as on a network drive") << ENOLCK;
    QTest::newRow("EOPNOTSUPP") << EOPNOTSUPP;
}

void TransferFilesTest::doesWithoutLocks()
{
    QFETCH(int, error);
    SystemCalls::Failing const locks(SystemCalls::Call::Lock, error);
    QString const file = path(QStringLiteral("file"));
    std::unique_ptr<Transfer> const transfer(
        m_transfers.download(requestFor(m_nginx->url(QStringLiteral("/small")), file)));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->errorText(), QString());
    QCOMPARE(TestFiles::read(file), QByteArray("content"));
}

void TransferFilesTest::takesNoNameThatIsGivenMeanwhile()
{
    std::atomic<bool> isTaken = false;
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        connection.readHead();
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n");
        while (!isTaken && connection.pause(1ms)) {
        }
        connection.send("page");
    });
    QString const file = path(QStringLiteral("file"));
    TransferRequest request = requestFor(server.url(), file);
    request.ifExists = IfExists::Fail;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QTRY_COMPARE(transfer->status(), 200);
    QVERIFY(TestFiles::write(file, "another's"));
    isTaken = true;
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::CannotWrite);
    QVERIFY2(transfer->errorText().contains(qt_error_string(EEXIST)), qPrintable(transfer->errorText()));
    QCOMPARE(TestFiles::read(file), QByteArray("another's"));
    QCOMPARE(inFolder(), QStringLiteral("file"));
}

void TransferFilesTest::refusesTargets_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("reason");
    QTest::newRow("missing folder") << QStringLiteral("no/such/file") << QStringLiteral("does not exist");
    QTest::newRow("a folder") << QStringLiteral(".") << QStringLiteral("folder or a device");
    QTest::newRow("a folder's name") << QStringLiteral("name/") << QStringLiteral("not the name of a file");
    QTest::newRow("NUL") << QStringLiteral("a") + QChar(0) + QStringLiteral("b")
                         << QStringLiteral("not the name of a file");
    QTest::newRow("too long") << QString(300, QLatin1Char('l')) << QStringLiteral("too long");
    QTest::newRow("device") << QStringLiteral("/dev/full") << QStringLiteral("folder or a device");
    QTest::newRow("another device") << QStringLiteral("/dev/null") << QStringLiteral("folder or a device");
    QTest::newRow("pipe") << QStringLiteral("pipe") << QStringLiteral("folder or a device");
    QTest::newRow("file as a folder") << QStringLiteral("file/name") << QStringLiteral("does not exist");
    QTest::newRow("no place for files")
        << QStringLiteral("/proc/self/file") << QStringLiteral("No such file");
}

void TransferFilesTest::refusesTargets()
{
    QFETCH(QString, target);
    QFETCH(QString, reason);
    QVERIFY(TestFiles::write(path(QStringLiteral("file")), "old"));
    QCOMPARE(mkfifo(QFile::encodeName(path(QStringLiteral("pipe"))).constData(), 0600), 0);
    QString const file =
        target.startsWith(QLatin1Char('/')) ? target : m_folder->path() + QLatin1Char('/') + target;
    std::unique_ptr<Transfer> const transfer(
        m_transfers.download(requestFor(m_nginx->url(QStringLiteral("/small")), file)));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::CannotWrite);
    QVERIFY2(transfer->errorText().contains(reason), qPrintable(transfer->errorText()));
    QVERIFY2(transfer->errorText().contains(QStringLiteral("127.0.0.1")), qPrintable(transfer->errorText()));
    QCOMPARE(inFolder(), QStringLiteral("file|pipe"));
    QVERIFY(TestFiles::isThere(QStringLiteral("/dev/null")));
}

/// Although the folder is the user's, who could replace it.
void TransferFilesTest::keepsAProtectedFile()
{
    if (!SecondUser::isPossible()) {
        QSKIP("only root can become another user");
    }
    SecondUser const second;
    SecondUsersTurn const turn;
    QVERIFY(second.isReady() && turn.isTaken());
    QString const file = second.home() + QStringLiteral("/file");
    QVERIFY(TestFiles::write(file, "old"));
    QVERIFY(QFile::setPermissions(file, QFile::ReadOwner));
    // Of its own, so that its thread begins as that user.
    Transfers transfers;
    Transfer* const transfer = transfers.download(requestFor(m_nginx->url(QStringLiteral("/small")), file));
    QVERIFY(ends(transfer));
    QCOMPARE(transfer->error(), TransferError::CannotWrite);
    QVERIFY2(transfer->errorText().contains(QStringLiteral("the file of this name is write-protected")),
             qPrintable(transfer->errorText()));
    QCOMPARE(TestFiles::read(file), QByteArray("old"));
    QCOMPARE(TestFiles::names(second.home()).size(), 1);
}

void TransferFilesTest::tellsThatTheDiskIsFull()
{
    QString const file = path(QStringLiteral("file"));
    QVERIFY(TestFiles::write(file, "old"));
    FullDisk const disk(1'000'000);
    std::unique_ptr<Transfer> const transfer(
        m_transfers.download(requestFor(m_nginx->url(QStringLiteral("/large")), file)));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::CannotWrite);
    QVERIFY2(transfer->errorText().contains(QStringLiteral("too large")), qPrintable(transfer->errorText()));
    QCOMPARE(inFolder(), QStringLiteral("file"));
    QCOMPARE(TestFiles::read(file), QByteArray("old"));
}

void TransferFilesTest::checksTheDigest_data()
{
    QTest::addColumn<bool>("isFile");
    QTest::addColumn<QByteArray>("digest");
    QTest::addColumn<TransferError>("error");
    QByteArray const right = sha256("content");
    for (bool const isFile : {true, false}) {
        char const* const kind = isFile ? "file" : "memory";
        QTest::addRow("%s, bytes", kind) << isFile << right << TransferError::None;
        QTest::addRow("%s, digits", kind) << isFile << right.toHex() << TransferError::None;
        QTest::addRow("%s, capitals", kind) << isFile << right.toHex().toUpper() << TransferError::None;
        QTest::addRow("%s, another's", kind) << isFile << sha256("x") << TransferError::WrongDigest;
        QTest::addRow("%s, letters that are no digits", kind)
            << isFile << QByteArray(64, 'x') << TransferError::WrongDigest;
        QTest::addRow("%s, none at all", kind) << isFile << QByteArray("abc") << TransferError::WrongDigest;
    }
}

void TransferFilesTest::checksTheDigest()
{
    QFETCH(bool, isFile);
    QFETCH(QByteArray, digest);
    QFETCH(TransferError, error);
    QString const file = path(QStringLiteral("file"));
    QVERIFY(TestFiles::write(file, "old"));
    TransferRequest request =
        requestFor(m_nginx->url(QStringLiteral("/packed/small")), isFile ? file : QString());
    request.sha256 = digest;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), error);
    QCOMPARE(TestFiles::read(file), QByteArray(isFile && error == TransferError::None ? "content" : "old"));
    QCOMPARE(inFolder(), QStringLiteral("file"));
}

/// Whether a process that downloads \a url to \a path was killed when \a size bytes of it were on the disk.
bool TransferFilesTest::downloadAndKill(QString const& url, QString const& path, qint64 size) const
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), {QLatin1String(downloadArgument), url, path});
    bool const isGoing = QTest::qWaitFor([this, size] { return QFileInfo(part()).size() >= size; }, 60'000);
    return isGoing && sendSignal(process, SIGKILL) && process.waitForFinished() &&
           process.exitStatus() == QProcess::CrashExit;
}

/// Whether a download of \a url to \a path was cancelled when the server had sent \a size bytes, and has left
/// them.
bool TransferFilesTest::leavePart(QString const& url, QString const& path, qint64 size)
{
    TransferRequest request = requestFor(url, path);
    request.keepPart = true;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    auto const isThere = [this, size] { return QFileInfo(part()).size() == size; };
    bool const hasCome = QTest::qWaitFor(isThere, 60'000);
    transfer->cancel();
    return hasCome && ends(transfer.get()) && isThere();
}

void TransferFilesTest::goesOnAfterACrash_data()
{
    QTest::addColumn<bool>("isChecked");
    QTest::newRow("any content") << false;
    QTest::newRow("with a digest") << true;
}

/// Sends the first third of a file and nothing for \a silence; asked again, as \a second tells, the rest.
ScriptedServer::Script TransferFilesTest::inTwoParts(QByteArray& second, std::chrono::seconds silence) const
{
    auto const round = std::make_shared<std::atomic<int>>(0);
    return [this, &second, silence, round](ScriptedServer::Connection& connection) {
        QByteArray const head = connection.readHead();
        if ((*round)++ == 0) {
            connection.send("HTTP/1.1 200 OK\r\nETag: \"v1\"\r\nContent-Length: 3000000\r\n\r\n" +
                            m_large.first(1'000'000));
            connection.pause(silence);
            return;
        }
        second = head;
        connection.send("HTTP/1.1 206 Partial Content\r\nETag: \"v1\"\r\nContent-Range: bytes "
                        "1000000-2999999/3000000\r\nContent-Length: 2000000\r\n\r\n" +
                        m_large.mid(1'000'000));
    };
}

void TransferFilesTest::goesOnAfterACrash()
{
    QFETCH(bool, isChecked);
    QByteArray second;
    {
        ScriptedServer const server(inTwoParts(second, 60s));
        QString const file = path(QStringLiteral("file"));
        QVERIFY(TestFiles::write(file, "old"));
        QVERIFY(downloadAndKill(server.url(), file));
        QCOMPARE(TestFiles::read(file), QByteArray("old"));
        QCOMPARE(TestFiles::names(m_folder->path()).size(), 3);
        TransferRequest request = requestFor(server.url(), file);
        request.sha256 = isChecked ? sha256(m_large) : QByteArray();
        std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->error(), TransferError::None);
        QCOMPARE(transfer->done(), m_large.size());
        QCOMPARE(transfer->total(), m_large.size());
        QCOMPARE(TestFiles::read(file), m_large);
        QCOMPARE(inFolder(), QStringLiteral("file"));
    }
    QCOMPARE(ScriptedServer::field(second, "Range"), QByteArray("bytes=1000000-"));
    QCOMPARE(ScriptedServer::field(second, "If-Range"), QByteArray("\"v1\""));
    QCOMPARE(ScriptedServer::field(second, "Accept-Encoding"), QByteArray("identity"));
}

void TransferFilesTest::goesOnWithARealServer()
{
    QByteArray const content = pattern(700'000);
    QVERIFY(m_nginx->addFile(QStringLiteral("medium"), content));
    QString const url = m_nginx->url(QStringLiteral("/slow/medium"));
    QString const file = path(QStringLiteral("file"));
    QVERIFY(downloadAndKill(url, file, 1));
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(url, file)));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->errorText(), QString());
    QCOMPARE(transfer->status(), 206);
    QCOMPARE(transfer->total(), content.size());
    QVERIFY(TestFiles::read(file) == content);
    QCOMPARE(inFolder(), QStringLiteral("file"));
}

void TransferFilesTest::startsOverInDoubt_data()
{
    QTest::addColumn<QByteArray>("first");  // fields of the answer that the crash cuts
    QTest::addColumn<QByteArray>("second"); // the answer to the request for the rest; empty: none is expected
    QByteArray const strong = "ETag: \"v1\"\r\n";
    QByteArray const partial = "HTTP/1.1 206 Partial Content\r\nContent-Length: 2000000\r\n";
    QByteArray const rest = "\r\n" + QByteArray(2'000'000, 'x'); // shows if it gets into the file
    QTest::newRow("no tag") << QByteArray() << QByteArray();
    QTest::newRow("weak tag") << QByteArray("ETag: W/\"v1\"\r\n") << QByteArray();
    QTest::newRow("tag without quotes") << QByteArray("ETag: v1\r\n") << QByteArray();
    QTest::newRow("tag with half its quotes") << QByteArray("ETag: v1\"\r\n") << QByteArray();
    QTest::newRow("200 after Range: the file has changed")
        << strong
        << QByteArray("HTTP/1.1 200 OK\r\nETag: \"v2\"\r\nContent-Length: 3000000\r\n\r\n") + m_large;
    QTest::newRow("shifted") << strong
                             << partial + "ETag: \"v1\"\r\nContent-Range: bytes 999999-2999998/3000000\r\n" +
                                    rest;
    QTest::newRow("shifted and to the end")
        << strong << partial + "ETag: \"v1\"\r\nContent-Range: bytes 999999-2999999/3000000\r\n" + rest;
    QTest::newRow("from the start") << strong
                                    << partial + "Content-Range: bytes 0-1999999/3000000\r\n" + rest;
    QTest::newRow("not to the end") << strong
                                    << partial + "Content-Range: bytes 1000000-2999998/3000000\r\n" + rest;
    QTest::newRow("changed length") << strong
                                    << partial + "Content-Range: bytes 1000000-2999999/3000001\r\n" + rest;
    QTest::newRow("shorter body") << strong
                                  << QByteArray("HTTP/1.1 206 Partial Content\r\nContent-Length: 1\r\n"
                                                "Content-Range: bytes 1000000-2999999/3000000\r\n\r\nx");
    QTest::newRow("unknown length") << strong
                                    << partial + "Content-Range: bytes 1000000-2999999/*\r\n" + rest;
    QTest::newRow("no range") << strong << partial + rest;
    QTest::newRow("overflow") << strong
                              << partial + "Content-Range: bytes 1000000-2999999/99999999999999999999\r\n" +
                                     rest;
    QTest::newRow("other tag") << strong
                               << partial +
                                      "ETag: \"v2\"\r\nContent-Range: bytes 1000000-2999999/3000000\r\n" +
                                      rest;
    QTest::newRow("several parts")
        << strong
        << QByteArray("HTTP/1.1 206 Partial Content\r\nContent-Type: multipart/byteranges; boundary=b\r\n"
                      "Content-Length: 5\r\n\r\n--b--");
    QTest::newRow("not satisfiable")
        << strong << QByteArray("HTTP/1.1 416 Range Not Satisfiable\r\nContent-Length: 0\r\n\r\n");
    QTest::newRow("packed")
        << strong
        << partial + "Content-Encoding: gzip\r\nContent-Range: bytes 1000000-2999999/3000000\r\n" + rest;
}

void TransferFilesTest::startsOverInDoubt()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, second);
    std::atomic<int> ranged = 0;
    std::atomic<int> round = 0;
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        QByteArray const head = connection.readHead();
        if (round++ == 0) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 3000000\r\n" + first + "\r\n" +
                            m_large.first(1'000'000));
            connection.pause(60s);
        } else if (!ScriptedServer::field(head, "Range").isNull()) {
            ++ranged;
            connection.send(second);
        } else {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 3000000\r\n\r\n" + m_large);
        }
    });
    QString const file = path(QStringLiteral("file"));
    QVERIFY(downloadAndKill(server.url(), file));
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url(), file)));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->errorText(), QString());
    QVERIFY(TestFiles::read(file) == m_large);
    QCOMPARE(inFolder(), QStringLiteral("file"));
    QCOMPARE(ranged.load(), second.isEmpty() ? 0 : 1);
}

void TransferFilesTest::startsOverWhenTheRestIsNone_data()
{
    QTest::addColumn<QByteArray>("range");
    QTest::newRow("to the end, changed length") << QByteArray("bytes 300000-600000/600001");
    QTest::newRow("beyond the end") << QByteArray("bytes 300000-600000/600000");
    QTest::newRow("the last before the first") << QByteArray("bytes 300000-299999/600000");
    QTest::newRow("no first") << QByteArray("bytes -599999/600000");
    QTest::newRow("no last") << QByteArray("bytes 300000-/600000");
    QTest::newRow("a dash behind the length") << QByteArray("bytes 300000/600000-599999");
    QTest::newRow("of nothing") << QByteArray("bytes */600000");
    QTest::newRow("another unit") << QByteArray("lines 300000-599999/600000");
}

/// The first 300,000 bytes are there, and what comes after them is sent with a range that does not fit.
void TransferFilesTest::startsOverWhenTheRestIsNone()
{
    QFETCH(QByteArray, range);
    QByteArray const content = m_large.first(600'000);
    std::atomic<int> ranged = 0;
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        if (!ScriptedServer::field(connection.readHead(), "Range").isNull()) {
            ++ranged;
            connection.send("HTTP/1.1 206 Partial Content\r\nContent-Range: " + range +
                            "\r\nContent-Length: 300000\r\nConnection: close\r\n\r\n" +
                            QByteArray(300'000, 'x'));
            return;
        }
        sendInHalves(connection, content, ranged == 0 ? 60s : 0s);
    });
    QString const file = path(QStringLiteral("file"));
    QVERIFY(leavePart(server.url(), file, 300'000));
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url(), file)));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->errorText(), QString());
    QVERIFY(TestFiles::read(file) == content);
    QCOMPARE(ranged.load(), 1);
    QCOMPARE(inFolder(), QStringLiteral("file"));
}

void TransferFilesTest::startsOverWhenTheRecordWasSpoilt_data()
{
    QTest::addColumn<QByteArray>("record");
    QTest::newRow("cut after the first line") << QByteArray("600000\n");
    QTest::newRow("cut in the second line") << QByteArray("600000\n\"v1");
    QTest::newRow("cut at its end") << QByteArray("600000\n\"v1\"");
    QTest::newRow("no length") << QByteArray("many\n\"v1\"\n");
    QTest::newRow("a tag that adds a field") << QByteArray("600000\n\"v1\r\nX-Evil: 1\"\n");
}

void TransferFilesTest::startsOverWhenTheRecordWasSpoilt()
{
    QFETCH(QByteArray, record);
    QByteArray const content = m_large.first(600'000);
    std::atomic<bool> isSpoilt = false;
    QByteArrayList heads;
    std::mutex lock;
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        QByteArray const head = connection.readHead();
        {
            std::lock_guard const guard(lock);
            heads.append(head);
        }
        sendInHalves(connection, content, isSpoilt ? 0s : 60s);
    });
    QString const file = path(QStringLiteral("file"));
    QVERIFY(leavePart(server.url(), file, 300'000));
    QCOMPARE(TestFiles::read(part() + QStringLiteral(".tag")), QByteArray("600000\n\"v1\"\n"));
    QVERIFY(TestFiles::write(part() + QStringLiteral(".tag"), record));
    isSpoilt = true;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url(), file)));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->errorText(), QString());
    QVERIFY(TestFiles::read(file) == content);
    std::lock_guard const guard(lock);
    QCOMPARE(heads.size(), 2);
    QVERIFY2(ScriptedServer::field(heads.last(), "Range").isNull(), heads.last().constData());
    QVERIFY2(!heads.last().contains("Evil"), heads.last().constData());
}

void TransferFilesTest::refusesARestOfAnotherLength_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<TransferError>("error");
    QTest::newRow("as long as its range") << 300'000 << TransferError::None;
    QTest::newRow("shorter") << 299'999 << TransferError::Truncated;
    QTest::newRow("longer") << 300'001 << TransferError::Protocol;
}

/// In chunks, whose end says nothing of how long they were meant to be.
void TransferFilesTest::refusesARestOfAnotherLength()
{
    QFETCH(int, size);
    QFETCH(TransferError, error);
    QByteArray const content = m_large.first(600'000);
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        if (ScriptedServer::field(connection.readHead(), "Range").isNull()) {
            sendInHalves(connection, content, 60s);
            return;
        }
        connection.send("HTTP/1.1 206 Partial Content\r\nETag: \"v1\"\r\n"
                        "Content-Range: bytes 300000-599999/600000\r\nTransfer-Encoding: chunked\r\n"
                        "Connection: close\r\n\r\n" +
                        QByteArray::number(size, 16) + "\r\n" + m_large.mid(300'000, size) + "\r\n0\r\n\r\n");
    });
    QString const file = path(QStringLiteral("file"));
    QVERIFY(TestFiles::write(file, "old"));
    QVERIFY(leavePart(server.url(), file, 300'000));
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url(), file)));
    QVERIFY(ends(transfer.get()));
    QVERIFY2(transfer->error() == error, qPrintable(transfer->errorText()));
    QVERIFY(TestFiles::read(file) == (error == TransferError::None ? content : QByteArray("old")));
    QCOMPARE(inFolder(), QStringLiteral("file"));
}

/// It breaks off after that, and a retry cannot go on from there.
void TransferFilesTest::startsOverAfterARestThatWasTooLong()
{
    QByteArray const content = m_large.first(600'000);
    std::atomic<int> ranged = 0;
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        if (!ScriptedServer::field(connection.readHead(), "Range").isNull()) {
            ++ranged;
            connection.send(
                "HTTP/1.1 206 Partial Content\r\nETag: \"v1\"\r\n"
                "Content-Range: bytes 300000-599999/600000\r\nTransfer-Encoding: chunked\r\n\r\n" +
                QByteArray::number(400'000, 16) + "\r\n" + QByteArray(400'000, 'x'));
            connection.pause(100ms);
            return;
        }
        sendInHalves(connection, content, ranged == 0 ? 60s : 0s);
    });
    QString const file = path(QStringLiteral("file"));
    QVERIFY(leavePart(server.url(), file, 300'000));
    TransferRequest request = requestFor(server.url(), file);
    request.retries = 1;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->errorText(), QString());
    QVERIFY(TestFiles::read(file) == content);
    QCOMPARE(ranged.load(), 1);
}

void TransferFilesTest::leavesRangesToTheCaller_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<TransferError>("error");
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("the range") << QByteArray(
                                      "HTTP/1.1 206 Partial Content\r\nETag: \"v1\"\r\nContent-Length: 4\r\n"
                                      "Content-Range: bytes 2-5/600000\r\nConnection: close\r\n\r\npage")
                               << TransferError::None << QByteArray("page");
    QTest::newRow("not satisfiable")
        << QByteArray("HTTP/1.1 416 Range Not Satisfiable\r\nContent-Length: 0\r\nConnection: close\r\n\r\n")
        << TransferError::HttpStatus << QByteArray("old");
    QTest::newRow("the file, and not all of it")
        << QByteArray("HTTP/1.1 200 OK\r\nETag: \"v1\"\r\nContent-Length: 9\r\n\r\npage")
        << TransferError::Truncated << QByteArray("old");
}

/// Who asks for a range gets that and nothing else: no part is continued, and none is left.
void TransferFilesTest::leavesRangesToTheCaller()
{
    QFETCH(QByteArray, answer);
    QFETCH(TransferError, error);
    QFETCH(QByteArray, content);
    QByteArray range;
    {
        ScriptedServer const server([&](ScriptedServer::Connection& connection) {
            QByteArray const asked = ScriptedServer::field(connection.readHead(), "Range");
            if (asked.isNull()) {
                connection.send("HTTP/1.1 200 OK\r\nETag: \"v1\"\r\nContent-Length: 600000\r\n\r\n" +
                                m_large.first(300'000));
                connection.pause(60s);
                return;
            }
            range = asked;
            connection.send(answer);
            connection.pause(100ms);
        });
        QString const file = path(QStringLiteral("file"));
        QVERIFY(TestFiles::write(file, "old"));
        QVERIFY(leavePart(server.url(), file, 300'000));
        TransferRequest request = requestFor(server.url(), file);
        request.headers = {{"range", "bytes=2-5"}};
        request.keepPart = true;
        std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
        QVERIFY(ends(transfer.get()));
        QVERIFY2(transfer->error() == error, qPrintable(transfer->errorText()));
        QCOMPARE(TestFiles::read(file), content);
    }
    QCOMPARE(range, QByteArray("bytes=2-5"));
    if (error == TransferError::Truncated) {
        QCOMPARE(inFolder(), QStringLiteral("file"));
    }
}

void TransferFilesTest::startsOverWhenThePartWasSpoilt_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("isTagShared"); // has a second name, under which somebody else may write it
    QTest::addColumn<bool>("isTried");     // the rest is asked for, and the digest tells
    QTest::newRow("other bytes") << 1'000'000 << false << true;
    QTest::newRow("as long as the file") << 3'000'000 << false << false;
    QTest::newRow("longer") << 3'000'001 << false << false;
    QTest::newRow("a tag of two names") << 1'000'000 << true << false;
}

void TransferFilesTest::startsOverWhenThePartWasSpoilt()
{
    QFETCH(int, size);
    QFETCH(bool, isTagShared);
    QFETCH(bool, isTried);
    std::atomic<int> round = 0;
    std::atomic<int> ranged = 0;
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        QByteArray const head = connection.readHead();
        ranged += ScriptedServer::field(head, "Range").isNull() ? 0 : 1;
        if (round++ == 0) {
            connection.send("HTTP/1.1 200 OK\r\nETag: \"v1\"\r\nContent-Length: 3000000\r\n\r\n" +
                            m_large.first(1'000'000));
            connection.pause(60s);
        } else if (ScriptedServer::field(head, "Range") == "bytes=1000000-") {
            connection.send("HTTP/1.1 206 Partial Content\r\nContent-Range: bytes "
                            "1000000-2999999/3000000\r\nContent-Length: 2000000\r\n\r\n" +
                            m_large.mid(1'000'000));
        } else {
            connection.send("HTTP/1.1 200 OK\r\nETag: \"v1\"\r\nContent-Length: 3000000\r\n\r\n" + m_large);
        }
    });
    QString const file = path(QStringLiteral("file"));
    QVERIFY(downloadAndKill(server.url(), file));
    QString const part = this->part();
    QVERIFY(TestFiles::write(part, QByteArray(size, '\0')));
    QTemporaryDir const elsewhere;
    QVERIFY(!isTagShared ||
            ::link(QFile::encodeName(part + QStringLiteral(".tag")).constData(),
                   QFile::encodeName(elsewhere.filePath(QStringLiteral("tag"))).constData()) == 0);
    TransferRequest request = requestFor(server.url(), file);
    request.sha256 = sha256(m_large);
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::None);
    QVERIFY(TestFiles::read(file) == m_large);
    QCOMPARE(ranged.load(), isTried ? 1 : 0);
    QCOMPARE(inFolder(), QStringLiteral("file"));
}

/// What lies under the part's name and is not a plain file of one name is not written to.
void TransferFilesTest::leavesStrangersPartsAlone()
{
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        connection.readHead();
        connection.send("HTTP/1.1 200 OK\r\nETag: \"v1\"\r\nContent-Length: 3000000\r\n\r\n" +
                        m_large.first(1'000'000));
        connection.pause(60s);
    });
    QString const file = path(QStringLiteral("file"));
    QVERIFY(downloadAndKill(server.url(), file));
    QString const part = this->part();
    QString const precious = path(QStringLiteral("precious"));
    QVERIFY(TestFiles::write(precious, "precious"));
    QVERIFY(QFile::remove(part));
    QVERIFY(TestFiles::link(precious, part));
    std::unique_ptr<Transfer> linked(m_transfers.download(requestFor(server.url(), file)));
    QTRY_VERIFY(linked->done() > 0);
    linked.reset();
    QVERIFY(QFile::remove(part));
    QCOMPARE(::link(QFile::encodeName(precious).constData(), QFile::encodeName(part).constData()), 0);
    std::unique_ptr<Transfer> shared(m_transfers.download(requestFor(server.url(), file)));
    QTRY_VERIFY(shared->done() > 0);
    shared.reset();
    QCOMPARE(TestFiles::read(precious), QByteArray("precious"));
    // A pipe where the tag is remembered would make a reader wait for ever.
    QVERIFY(QFile::remove(part));
    QVERIFY(QFile::remove(part + QStringLiteral(".tag")));
    QCOMPARE(mkfifo(QFile::encodeName(part + QStringLiteral(".tag")).constData(), 0600), 0);
    std::unique_ptr<Transfer> piped(m_transfers.download(requestFor(server.url(), file)));
    QTRY_VERIFY(piped->done() > 0);
}

void TransferFilesTest::passesOverWhatIsInTheWay_data()
{
    using Obstacle = std::function<bool(QString const&)>;
    QTest::addColumn<Obstacle>("place");
    QTest::addColumn<bool>("isLate"); // placed after the part was opened and before it is locked
    auto const name = [](QString const& path) { return QFile::encodeName(path); };
    auto const precious = [](QString const& path) { return TestFiles::write(path, "precious"); };
    QTest::newRow("a folder") << Obstacle([](QString const& path) { return QDir().mkdir(path); }) << false;
    QTest::newRow("a pipe") << Obstacle([name](QString const& path) { return mkfifo(name(path), 0600) == 0; })
                            << false;
    QTest::newRow("a socket") << Obstacle([name](QString const& path) {
        return mknod(name(path), S_IFSOCK | 0600, 0) == 0;
    }) << false;
    if (SecondUser::isPossible()) {
        QTest::newRow("another user's file")
            << Obstacle([=](QString const& path) { return precious(path) && SecondUser::give(path); })
            << false;
    }
    QTest::newRow("a file in place of the part")
        << Obstacle([=](QString const& path) { return QFile::remove(path) && precious(path); }) << true;
    QTest::newRow("nothing: the part is gone")
        << Obstacle([](QString const& path) { return QFile::remove(path); }) << true;
}

/// Under the part's name; it stays as it was.
void TransferFilesTest::passesOverWhatIsInTheWay()
{
    QFETCH(std::function<bool(QString const&)>, place);
    QFETCH(bool, isLate);
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        connection.readHead();
        connection.send("HTTP/1.1 200 OK\r\nETag: \"v1\"\r\nContent-Length: 3000000\r\n\r\n" +
                        m_large.first(300'000));
        connection.pause(60s);
    });
    QString const file = path(QStringLiteral("file"));
    QVERIFY(leavePart(server.url(), file, 300'000));
    QString const name = part();
    QVERIFY(QFile::remove(name) && QFile::remove(name + QStringLiteral(".tag")));
    struct stat before = {};
    auto const look = [&name](struct stat& status) {
        status = {};
        lstat(QFile::encodeName(name).constData(), &status);
    };
    bool isPlaced = false;
    auto const put = [&] {
        isPlaced = place(name);
        look(before);
    };
    if (isLate) {
        SystemCalls::beforeNextLock(put);
    } else {
        put();
    }
    TransferRequest request = requestFor(server.url(), file);
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QTRY_VERIFY(transfer->done() > 0);
    QVERIFY(isPlaced);
    struct stat after = {};
    look(after);
    bool const isGone = before.st_nlink == 0;
    QVERIFY(isGone || after.st_ino == before.st_ino);
    QVERIFY(isGone || (after.st_mode == before.st_mode && after.st_size == before.st_size));
    QTRY_COMPARE(TestFiles::names(m_folder->path()).size(), isGone ? 2 : 3);
}

void TransferFilesTest::givesUpWhereEveryNameIsTaken()
{
    constexpr int most = 1000;
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        connection.readHead();
        connection.send("HTTP/1.1 200 OK\r\nETag: \"v1\"\r\nContent-Length: 3000000\r\n\r\n" +
                        m_large.first(300'000));
        connection.pause(60s);
    });
    QString const file = path(QStringLiteral("file"));
    QVERIFY(leavePart(server.url(), file, 300'000));
    QString const stem = part().chopped(QStringLiteral(".part").size());
    QVERIFY(QFile::remove(part() + QStringLiteral(".tag")) && QFile::remove(part()));
    for (int number = 0; number < most; ++number) {
        QString const mark = number == 0 ? QString() : QStringLiteral("-%1").arg(number);
        QVERIFY(TestFiles::link(QStringLiteral("nowhere"), stem + mark + QStringLiteral(".part")));
    }
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url(), file)));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::CannotWrite);
    QVERIFY2(transfer->errorText().contains(qt_error_string(EEXIST)), qPrintable(transfer->errorText()));
    QCOMPARE(TestFiles::names(m_folder->path()).size(), most);
}

/// What helps after a crash is not worth a failure.
void TransferFilesTest::doesWithoutARecord()
{
    QByteArray const content = m_large.first(600'000);
    std::atomic<bool> isSilent = true;
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        connection.readHead();
        sendInHalves(connection, content, isSilent ? 60s : 0s);
    });
    QString const file = path(QStringLiteral("file"));
    QVERIFY(leavePart(server.url(), file, 300'000));
    QString const record = part() + QStringLiteral(".tag");
    QVERIFY(QFile::remove(record) && QFile::remove(part()));
    QVERIFY(QDir().mkpath(record + QStringLiteral("/inside")));
    isSilent = false;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url(), file)));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->errorText(), QString());
    QVERIFY(TestFiles::read(file) == content);
    QVERIFY(TestFiles::isThere(record + QStringLiteral("/inside")));
}

void TransferFilesTest::goesOnWithAPartThatWasKept_data()
{
    QTest::addColumn<std::chrono::milliseconds>("patience");
    QTest::addColumn<bool>("isCut"); // the server ends the first connection
    QTest::addColumn<std::function<void(Transfer*)>>("end");
    using End = std::function<void(Transfer*)>;
    End const cancel = [](Transfer* transfer) {
        transfer->cancel();
        QVERIFY(ends(transfer));
        QCOMPARE(transfer->error(), TransferError::Cancelled);
    };
    QTest::newRow("cancelled") << 30'000ms << false << cancel;
    QTest::newRow("cancelled, and asked again before it has ended")
        << 30'000ms << false << End([](Transfer* transfer) { transfer->cancel(); });
    QTest::newRow("deleted") << 30'000ms << false << End([](Transfer* transfer) { delete transfer; });
    QTest::newRow("the connection ends") << 30'000ms << true << End([](Transfer* transfer) {
        QVERIFY(ends(transfer));
        QCOMPARE(transfer->error(), TransferError::Truncated);
    });
    QTest::newRow("silence") << 2'000ms << false << End([](Transfer* transfer) {
        QVERIFY(ends(transfer));
        QCOMPARE(transfer->error(), TransferError::Stalled);
    });
    QTest::newRow("deleted with its owner")
        << 30'000ms << false << End([](Transfer* transfer) { delete transfer->parent(); });
}

void TransferFilesTest::goesOnWithAPartThatWasKept()
{
    QFETCH(std::chrono::milliseconds, patience);
    QFETCH(bool, isCut);
    QFETCH(std::function<void(Transfer*)>, end);
    QByteArray second;
    {
        ScriptedServer const server(inTwoParts(second, isCut ? 0s : 60s));
        QString const file = path(QStringLiteral("file"));
        TransferRequest request = requestFor(server.url(), file);
        request.limits.stalled = patience;
        request.keepPart = true;
        QPointer<Transfers> const owner = new Transfers(&m_transfers);
        Transfer* const first = owner->download(request);
        QTRY_COMPARE(first->done(), 1'000'000);
        QTRY_COMPARE(QFileInfo(part()).size(), 1'000'000); // the disk is behind
        end(first);
        request.limits.stalled = 30s;
        std::unique_ptr<Transfer> const transfer((owner.isNull() ? m_transfers : *owner).download(request));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->errorText(), QString());
        QCOMPARE(transfer->done(), m_large.size());
        QCOMPARE(TestFiles::read(file), m_large);
        QCOMPARE(inFolder(), QStringLiteral("file"));
    }
    QCOMPARE(ScriptedServer::field(second, "Range"), QByteArray("bytes=1000000-"));
}

void TransferFilesTest::keepsNoPartWithoutUse_data()
{
    QTest::addColumn<bool>("isAsked");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QByteArray>("digest");
    QTest::addColumn<TransferError>("error"); // Cancelled: by the caller, once something has come
    QByteArray const unended = "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n";
    QByteArray const tag = "ETag: \"v1\"\r\n";
    QTest::newRow("nobody asked") << false << unended + tag + "\r\npage" << QByteArray()
                                  << TransferError::Cancelled;
    QTest::newRow("no tag") << true << unended + "\r\npage" << QByteArray() << TransferError::Cancelled;
    QTest::newRow("weak tag") << true << unended + "ETag: W/\"v1\"\r\n\r\npage" << QByteArray()
                              << TransferError::Cancelled;
    for (QByteArray const text : {"\"v1", "\"v 1\"", "\"v\x7f\"", "\"v\"1\"", "\""}) {
        QTest::addRow("a tag of no form: %s", text.toPercentEncoding().constData())
            << true << unended + "ETag: " + text + "\r\n\r\npage" << QByteArray() << TransferError::Cancelled;
    }
    QTest::newRow("another file") << true << answerWith("page", tag) << sha256("other")
                                  << TransferError::WrongDigest;
    QTest::newRow("too large") << true << answerWith(QByteArray(100, 'x'), tag) << QByteArray()
                               << TransferError::TooLarge;
    QTest::newRow("nothing there") << true
                                   << QByteArray("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n")
                                   << QByteArray() << TransferError::HttpStatus;
    QTest::newRow("nothing has come") << true << unended + tag + "\r\n"
                                      << QByteArray() << TransferError::Stalled;
}

void TransferFilesTest::keepsNoPartWithoutUse()
{
    QFETCH(bool, isAsked);
    QFETCH(QByteArray, answer);
    QFETCH(QByteArray, digest);
    QFETCH(TransferError, error);
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        connection.readHead();
        connection.send(answer);
        connection.pause(60s);
    });
    TransferRequest request = requestFor(server.url(), path(QStringLiteral("file")));
    request.keepPart = isAsked;
    request.sha256 = digest;
    request.limits.bytes = 50;
    request.limits.stalled = error == TransferError::Stalled ? 500ms : 30'000ms;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    if (error == TransferError::Cancelled) {
        QTRY_COMPARE(transfer->done(), 4);
        transfer->cancel();
    }
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), error);
    QCOMPARE(inFolder(), QString());
}

/// Within one transfer, too, what has arrived is not asked for again.
void TransferFilesTest::goesOnBetweenRetries()
{
    QList<QByteArray> ranges;
    std::mutex lock;
    {
        ScriptedServer const server([&](ScriptedServer::Connection& connection) {
            QByteArray const range = ScriptedServer::field(connection.readHead(), "Range");
            qint64 const from =
                range.mid(int(qstrlen("bytes="))).chopped(range.isNull() ? 0 : 1).toLongLong();
            {
                // Qt asks a second time by itself where it sees the end of the connection before the answer.
                std::lock_guard const guard(lock);
                if (ranges.isEmpty() || ranges.constLast() != range) {
                    ranges.append(range);
                }
            }
            QByteArray const end =
                "\r\nETag: \"v1\"\r\nContent-Length: " + QByteArray::number(3'000'000 - from) +
                "\r\nContent-Range: bytes " + QByteArray::number(from) +
                "-2999999/3000000\r\nConnection: close\r\n\r\n";
            connection.send((from > 0 ? "HTTP/1.1 206 Partial Content" : "HTTP/1.1 200 OK") + end);
            connection.send(m_large.mid(from, 1'000'000));
            connection.pause(300ms);
        });
        TransferRequest request = requestFor(server.url(), path(QStringLiteral("file")));
        request.retries = 2;
        request.sha256 = sha256(m_large);
        std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->errorText(), QString());
    }
    QCOMPARE(ranges, QList<QByteArray>({QByteArray(), "bytes=1000000-", "bytes=2000000-"}));
    QVERIFY(TestFiles::read(path(QStringLiteral("file"))) == m_large);
}

void TransferFilesTest::losesNothingByABusyAnswer()
{
    QByteArrayList ranges;
    std::mutex lock;
    {
        ScriptedServer const server([&](ScriptedServer::Connection& connection) {
            QByteArray const range = ScriptedServer::field(connection.readHead(), "Range");
            qsizetype round = 0;
            {
                std::lock_guard const guard(lock);
                ranges.append(range);
                round = ranges.size();
            }
            if (round == 2) {
                connection.send("HTTP/1.1 503 Busy\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
                connection.pause(100ms);
                return;
            }
            connection.send(round == 1 ? "HTTP/1.1 200 OK\r\nETag: \"v1\"\r\nContent-Length: 600000\r\n\r\n" +
                                             m_large.first(300'000)
                                       : "HTTP/1.1 206 Partial Content\r\nETag: \"v1\"\r\n"
                                         "Content-Length: 300000\r\n"
                                         "Content-Range: bytes 300000-599999/600000\r\n\r\n" +
                                             m_large.mid(300'000, 300'000));
            connection.pause(100ms);
        });
        TransferRequest request = requestFor(server.url(), path(QStringLiteral("file")));
        request.retries = 2;
        std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->errorText(), QString());
    }
    QCOMPARE(ranges, QByteArrayList({QByteArray(), "bytes=300000-", "bytes=300000-"}));
    QVERIFY(TestFiles::read(path(QStringLiteral("file"))) == m_large.first(600'000));
}

/// A server that would pack the file hears that the file itself is meant; one that may pack does in memory.
void TransferFilesTest::asksForPlainBytes()
{
    QString const url = m_nginx->url(QStringLiteral("/packed/large"));
    std::unique_ptr<Transfer> const inFile(
        m_transfers.download(requestFor(url, path(QStringLiteral("file")))));
    QVERIFY(ends(inFile.get()));
    QCOMPARE(inFile->header("Content-Encoding"), QByteArray());
    QCOMPARE(inFile->total(), m_large.size());
    QVERIFY(TestFiles::read(path(QStringLiteral("file"))) == m_large);
    std::unique_ptr<Transfer> const inMemory(m_transfers.download(requestFor(url)));
    QVERIFY(ends(inMemory.get()));
    QVERIFY(inMemory->body() == m_large);
    std::unique_ptr<Transfer> const size(m_transfers.size(requestFor(url)));
    QVERIFY(ends(size.get()));
    QCOMPARE(size->total(), m_large.size());
}

void TransferFilesTest::unpacksWhatComesPackedAllTheSame()
{
    // The plain text as gzip packs it.
    QByteArray const packed = QByteArray::fromHex("1f8b08000000000002034bcecf2b49cd2be10200efd8239d08000000");
    QByteArray const plain = "content\n";
    ScriptedServer const server(ScriptedServer::answer(answerWith(packed, "Content-Encoding: gzip\r\n")));
    TransferRequest request = requestFor(server.url(), path(QStringLiteral("file")));
    request.sha256 = sha256(plain);
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->errorText(), QString());
    QCOMPARE(TestFiles::read(path(QStringLiteral("file"))), plain);
}

void TransferFilesTest::takesPlainBytesThatAreCalledSo()
{
    ScriptedServer const server(
        ScriptedServer::answer(answerWith("content", "Content-Encoding: identity\r\n")));
    std::unique_ptr<Transfer> const transfer(
        m_transfers.download(requestFor(server.url(), path(QStringLiteral("file")))));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->errorText(), QString());
    QCOMPARE(transfer->total(), 7);
    QCOMPARE(TestFiles::read(path(QStringLiteral("file"))), QByteArray("content"));
    QCOMPARE(server.connections(), 1);
}

void TransferFilesTest::leavesNothingOnFailure_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<TransferError>("error");
    QTest::newRow("error page") << QByteArray("HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\npage")
                                << TransferError::HttpStatus;
    QTest::newRow("short body") << QByteArray(
                                       "HTTP/1.1 200 OK\r\nETag: \"a\"\r\nContent-Length: 9\r\n\r\npage")
                                << TransferError::Truncated;
    QTest::newRow("not modified") << QByteArray("HTTP/1.1 304 Not Modified\r\nContent-Length: 0\r\n\r\n")
                                  << TransferError::Protocol;
    QTest::newRow("redirect to nowhere")
        << QByteArray("HTTP/1.1 302 Found\r\nContent-Length: 4\r\n\r\npage") << TransferError::Protocol;
    QTest::newRow("a part, unasked")
        << QByteArray(
               "HTTP/1.1 206 Partial Content\r\nContent-Range: bytes 0-3/9\r\nContent-Length: 4\r\n\r\npage")
        << TransferError::Protocol;
    QTest::newRow("no HTTP") << QByteArray("220 ready\r\n") << TransferError::Truncated;
}

void TransferFilesTest::leavesNothingOnFailure()
{
    QFETCH(QByteArray, answer);
    QFETCH(TransferError, error);
    ScriptedServer const server(ScriptedServer::answer(answer));
    QString const file = path(QStringLiteral("report.pdf"));
    QVERIFY(TestFiles::write(file, "old"));
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url(), file)));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), error);
    QVERIFY2(transfer->errorText().contains(QStringLiteral("127.0.0.1")), qPrintable(transfer->errorText()));
    QCOMPARE(TestFiles::read(file), QByteArray("old"));
    QCOMPARE(inFolder(), QStringLiteral("report.pdf"));
}

void TransferFilesTest::survivesALostFolder_data()
{
    QTest::addColumn<IfExists>("ifExists");
    QTest::newRow("replace") << IfExists::Replace;
    QTest::newRow("keep both") << IfExists::KeepBoth;
    QTest::newRow("fail") << IfExists::Fail;
}

void TransferFilesTest::survivesALostFolder()
{
    QFETCH(IfExists, ifExists);
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("sub")));
    std::atomic<bool> isLost = false;
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        connection.readHead();
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 600000\r\n\r\n" + m_large.first(300'000));
        while (!isLost && connection.pause(1ms)) {
        }
        connection.send(m_large.mid(300'000, 300'000));
    });
    TransferRequest request = requestFor(server.url(), path(QStringLiteral("sub/file")));
    request.ifExists = ifExists;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QTRY_VERIFY(transfer->done() > 0);
    QVERIFY(QDir(path(QStringLiteral("sub"))).removeRecursively());
    isLost = true;
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::CannotWrite);
    QVERIFY2(transfer->errorText().contains(qt_error_string(ENOENT)), qPrintable(transfer->errorText()));
    QCOMPARE(inFolder(), QString());
}

int main(int argc, char** argv)
{
    if (argc == 4 && qstrcmp(argv[1], downloadArgument) == 0) {
        QCoreApplication const application(argc, argv);
        return download(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]));
    }
    return runTest<TransferFilesTest>(argc, argv);
}

#include "TransferFilesTest.moc"
