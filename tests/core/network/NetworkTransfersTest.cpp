#include "CurlSeam.h"

#include <network/NetworkUtils.h>

#include <LocalNginx.h>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHttpMultiPart>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QUrl>
#include <RunTest.h>
#include <ScriptedServer.h>
#include <TestFiles.h>
#include <atomic>
#include <cstdio>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr qsizetype kibi = 1024;
constexpr qsizetype mebi = 1024 * kibi;

/// How much a transfer that is to be cut off has done before that.
constexpr long long underWay = 64 * kibi;

QByteArray randomBytes(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator generator(1);
    for (char& byte : bytes) {
        byte = static_cast<char>(generator.generate());
    }
    return bytes;
}

/// What \a action writes to standard output.
template <typename Action>
QByteArray standardOutputOf(QString const& scratch, Action action)
{
    QFile file(scratch);
    if (!file.open(QIODevice::ReadWrite | QIODevice::Truncate)) {
        return QByteArrayLiteral("(no scratch file)");
    }
    std::fflush(stdout);
    int const saved = dup(STDOUT_FILENO);
    dup2(file.handle(), STDOUT_FILENO);
    action();
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
    return TestFiles::read(scratch);
}

/// An operator that notes what it is told and can end the transfer once \a limit bytes are through.
struct Watch
{
    explicit Watch(bool isDownload, long long limit = -1)
    {
        op.isDownload = isDownload;
        op.progress = [this](long long done, long long all) {
            isSteady = isSteady && done >= now;
            now = done;
            total = all;
        };
        op.isCancelled = [this, limit] { return limit >= 0 && now >= limit; };
    }

    NetworkUtils::Operator op;
    long long now = 0;
    long long total = 0;
    bool isSteady = true;
};

} // namespace

/// Transfers with real peers on loopback: an nginx, and scripted servers for what it would not do.
class NetworkTransfersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void downloads_data();
    void downloads();
    void replacesAFile();
    void downloadsErrorPages_data();
    void downloadsErrorPages();
    void failedDownloadsLeaveNoFile_data();
    void failedDownloadsLeaveNoFile();
    void tellsAFailureAfterStatus78Apart();
    void cancelledDownloadsLeaveNoFile_data();
    void cancelledDownloadsLeaveNoFile();
    void cancelledDownloadsThroughALink();
    void throwingHooksCancelADownload();
    void growsMemoryWithTheBytesThatCome_data();
    void growsMemoryWithTheBytesThatCome();
    void downloadsInAHookOfADownload();
    void makesNoConnectionWithoutAFile();

    void asksForTheSize();
    void asksForTheSizeOfScriptedAnswers_data();
    void asksForTheSizeOfScriptedAnswers();

    void uploads_data();
    void uploads();
    void uploadsWithoutASize();
    void failedUploads_data();
    void failedUploads();
    void dropsTheAnswerToAnUpload();
    void keepsToTheAnnouncedSize();
    void failsForAFileThatIsTooShort();
    void asksForNoAnswerToHalfAFile();
    void failsForAFileThatCannotBeRead_data();
    void failsForAFileThatCannotBeRead();
    void cancelsAnUpload();

    void posts();
    void postsWithoutLookingAtTheStatus();
    void dropsTheAnswerToAPost();
    void postsToNobody();

    void refusesAnUntrustedCertificate();
    void transfersOverHttp2();
    void transfersOverFtp();
    void transfersOnSeveralThreads();

    void sendsFormParts();

private:
    [[nodiscard]] QString path(QString const& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
    std::unique_ptr<LocalNginx> m_nginx;
    QByteArray const m_large = randomBytes(8 * mebi + 3);
};

void NetworkTransfersTest::initTestCase()
{
    NetworkUtils::start();
    m_nginx = std::make_unique<LocalNginx>();
    QVERIFY2(m_nginx->isRunning(), qPrintable(m_nginx->problem()));
    QVERIFY(m_nginx->addFile(QStringLiteral("empty"), QByteArray()));
    QVERIFY(m_nginx->addFile(QStringLiteral("small"), QByteArray("a\0b\r\n", 5)));
    QVERIFY(m_nginx->addFile(QStringLiteral("large"), m_large));
}

void NetworkTransfersTest::init()
{
    CurlSeam::reset();
}

void NetworkTransfersTest::cleanup()
{
    QCOMPARE(CurlSeam::instance().handles, 0);
    QCOMPARE(CurlSeam::instance().lists, 0);
}

void NetworkTransfersTest::cleanupTestCase()
{
    m_nginx.reset();
    NetworkUtils::stop();
}

void NetworkTransfersTest::downloads_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QStringLiteral("empty") << QByteArray();
    QTest::newRow("small") << QStringLiteral("small") << QByteArray("a\0b\r\n", 5);
    QTest::newRow("large") << QStringLiteral("large") << m_large;
}

void NetworkTransfersTest::downloads()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QString const address = m_nginx->url(QLatin1Char('/') + name);
    QString const file = path(QStringLiteral("città ") + name);
    Watch watch(true);
    NetworkUtils::TransferResult const toFile = NetworkUtils::downloadFile(address, file, &watch.op);
    QVERIFY(toFile.ok);
    QVERIFY(!toFile.remoteError);
    QCOMPARE(TestFiles::read(file), content);
    QCOMPARE(watch.now, content.size());
    QCOMPARE(watch.total, content.size());
    QVERIFY(watch.isSteady);

    std::vector<char> memory = {'x', 'y'};
    QVERIFY(NetworkUtils::downloadToMemory(address, memory, nullptr).ok);
    QCOMPARE(QByteArray(memory.data(), static_cast<qsizetype>(memory.size())), "xy" + content);
}

void NetworkTransfersTest::replacesAFile()
{
    QString const file = path(QStringLiteral("replaced"));
    QVERIFY(TestFiles::write(file, QByteArray(100, 'x')));
    QVERIFY(NetworkUtils::downloadFile(m_nginx->url(QStringLiteral("/small")), file, nullptr).ok);
    QCOMPARE(TestFiles::read(file), QByteArray("a\0b\r\n", 5));
}

void NetworkTransfersTest::downloadsErrorPages_data()
{
    QTest::addColumn<QString>("status");
    for (char const* status : {"206", "403", "404", "500", "503"}) {
        QTest::newRow(status) << QString::fromLatin1(status);
    }
}

void NetworkTransfersTest::downloadsErrorPages()
{
    QFETCH(QString, status);
    std::vector<char> memory;
    NetworkUtils::TransferResult const result =
        NetworkUtils::downloadToMemory(m_nginx->url(QStringLiteral("/status/") + status), memory, nullptr);
    QVERIFY(result.ok);
    QVERIFY(!result.remoteError);
    QCOMPARE(QByteArray(memory.data(), static_cast<qsizetype>(memory.size())), "status " + status.toLatin1());
}

void NetworkTransfersTest::failedDownloadsLeaveNoFile_data()
{
    QTest::addColumn<QByteArray>("answer");
    auto const row = [](char const* tag, char const* answer) { QTest::newRow(tag) << QByteArray(answer); };
    row("no answer", "");
    row("closed in the body", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf");
    row("closed in a chunk", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nab");
    row("chunk of no size", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n");
    row("length that is no number", "HTTP/1.1 200 OK\r\nContent-Length: many\r\n\r\nbody");
    row("negative length", "HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\nbody");
    row("not HTTP", "SSH-2.0-peer\r\n");
}

void NetworkTransfersTest::failedDownloadsLeaveNoFile()
{
    QFETCH(QByteArray, answer);
    ScriptedServer const server(ScriptedServer::answer(answer));
    QString const file = path(QStringLiteral("failed"));
    QVERIFY(TestFiles::write(file, "what was there"));
    NetworkUtils::TransferResult const toFile = NetworkUtils::downloadFile(server.url(), file, nullptr);
    QVERIFY(!toFile.ok);
    QVERIFY(!toFile.remoteError);
    QVERIFY(!QFile::exists(file));
    QVERIFY(server.connections() > 0);

    std::vector<char> memory;
    NetworkUtils::TransferResult const toMemory =
        NetworkUtils::downloadToMemory(server.url(), memory, nullptr);
    QVERIFY(!toMemory.ok);
    QVERIFY(!toMemory.remoteError);
}

void NetworkTransfersTest::tellsAFailureAfterStatus78Apart()
{
    // No version of libcurl takes 78 for a status; only newer ones remember that it was sent.
    ScriptedServer const server(
        ScriptedServer::answer("HTTP/1.1 078 Gone\r\nContent-Length: 10\r\n\r\nhalf"));
    QString const file = path(QStringLiteral("gone"));
    NetworkUtils::TransferResult const result = NetworkUtils::downloadFile(server.url(), file, nullptr);
    bool const remembered = CurlSeam::instance().seenResponseCode == 78;
    QVERIFY(!result.ok);
    QCOMPARE(result.remoteError, remembered);
    QVERIFY(!QFile::exists(file));
    QCOMPARE(NetworkUtils::getFileSize(server.url()), remembered ? 0 : -1);
}

void NetworkTransfersTest::cancelledDownloadsLeaveNoFile_data()
{
    QTest::addColumn<int>("peer");
    QTest::addColumn<long long>("limit");
    QTest::newRow("before the first byte") << 0 << 0LL;
    QTest::newRow("in the middle") << 0 << underWay;
    QTest::newRow("body that never ends") << 1 << underWay;
    QTest::newRow("one byte a second") << 2 << 2LL;
    QTest::newRow("server that says nothing") << 3 << 0LL;
}

void NetworkTransfersTest::cancelledDownloadsLeaveNoFile()
{
    QFETCH(int, peer);
    QFETCH(long long, limit);
    ScriptedServer const server([peer](ScriptedServer::Connection& connection) {
        connection.readRequest();
        if (peer == 3) {
            connection.pause(60s);
            return;
        }
        bool open = connection.send("HTTP/1.1 200 OK\r\n\r\n");
        QByteArray const bytes(peer == 1 ? 16 * kibi : 1, 'x');
        while (open) {
            open = connection.send(bytes) && (peer == 1 || connection.pause(1s));
        }
    });
    QString const address = peer == 0 ? m_nginx->url(QStringLiteral("/slow/large")) : server.url();
    QString const file = path(QStringLiteral("cancelled"));
    Watch watch(true, limit);
    NetworkUtils::TransferResult const result = NetworkUtils::downloadFile(address, file, &watch.op);
    QVERIFY(!result.ok);
    QVERIFY(!result.remoteError);
    QVERIFY(!QFile::exists(file));
    QVERIFY(watch.now >= limit);
    QVERIFY(watch.now < m_large.size());
}

void NetworkTransfersTest::cancelledDownloadsThroughALink()
{
    QString const target = path(QStringLiteral("linked"));
    QString const link = path(QStringLiteral("link"));
    QVERIFY(TestFiles::link(target, link));
    Watch watch(true, underWay);
    QVERIFY(!NetworkUtils::downloadFile(m_nginx->url(QStringLiteral("/slow/large")), link, &watch.op).ok);
    QVERIFY(!TestFiles::isThere(link));
    // The path that was given is removed; what it led to is the caller's.
    QVERIFY(m_large.startsWith(TestFiles::read(target)));
    QVERIFY(TestFiles::isThere(target));
}

void NetworkTransfersTest::throwingHooksCancelADownload()
{
    QString const file = path(QStringLiteral("thrown"));
    NetworkUtils::Operator op;
    op.progress = [](long long now, long long) {
        if (now > 0) {
            throw std::runtime_error("the window has gone");
        }
    };
    NetworkUtils::TransferResult const result =
        NetworkUtils::downloadFile(m_nginx->url(QStringLiteral("/slow/large")), file, &op);
    QVERIFY(!result.ok);
    QVERIFY(!result.remoteError);
    QVERIFY(!QFile::exists(file));
}

void NetworkTransfersTest::growsMemoryWithTheBytesThatCome_data()
{
    QTest::addColumn<QByteArray>("announced");
    QTest::addColumn<qsizetype>("sent");
    QTest::addColumn<bool>("ok");
    QTest::newRow("as announced") << QByteArray::number(8 * mebi) << 8 * mebi << true;
    QTest::newRow("cut off") << QByteArray::number(8 * mebi) << mebi << false;
    QTest::newRow("a petabyte announced") << QByteArray::number(1LL << 50) << mebi << false;
    QTest::newRow("the most that can be announced") << QByteArray("9223372036854775807") << mebi << false;
}

void NetworkTransfersTest::growsMemoryWithTheBytesThatCome()
{
    QFETCH(QByteArray, announced);
    QFETCH(qsizetype, sent);
    QFETCH(bool, ok);
    ScriptedServer const server(ScriptedServer::answer("HTTP/1.1 200 OK\r\nContent-Length: " + announced +
                                                       "\r\n\r\n" + QByteArray(sent, 'x')));
    std::vector<char> memory = {'a', 'b'};
    QCOMPARE(NetworkUtils::downloadToMemory(server.url(), memory, nullptr).ok, ok);
    QCOMPARE(memory.size(), static_cast<std::size_t>(sent + 2));
    QVERIFY(memory.capacity() <= 2 * memory.size());
}

void NetworkTransfersTest::downloadsInAHookOfADownload()
{
    std::vector<char> inner;
    std::vector<char> outer;
    NetworkUtils::Operator op;
    op.progress = [&](long long now, long long) {
        if (now > 0 && inner.empty()) {
            NetworkUtils::downloadToMemory(m_nginx->url(QStringLiteral("/large")), inner, nullptr);
        }
    };
    QVERIFY(NetworkUtils::downloadToMemory(m_nginx->url(QStringLiteral("/large")), outer, &op).ok);
    QCOMPARE(QByteArray(inner.data(), static_cast<qsizetype>(inner.size())), m_large);
    QVERIFY(outer == inner);
}

void NetworkTransfersTest::makesNoConnectionWithoutAFile()
{
    ScriptedServer const server(ScriptedServer::answer("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"));
    QString const missing = path(QStringLiteral("no/such/file"));
    QVERIFY(!NetworkUtils::downloadFile(server.url(), missing, nullptr).ok);
    QVERIFY(!NetworkUtils::putFile(server.url(), missing, 5, nullptr).ok);
    QVERIFY(!QFile::exists(path(QStringLiteral("no"))));
    QCOMPARE(CurlSeam::instance().performed, 0);
    QCOMPARE(server.connections(), 0);
    // The server would have noticed.
    QVERIFY(NetworkUtils::downloadFile(server.url(), path(QStringLiteral("file")), nullptr).ok);
    QCOMPARE(server.connections(), 1);
}

void NetworkTransfersTest::asksForTheSize()
{
    QCOMPARE(NetworkUtils::getFileSize(m_nginx->url(QStringLiteral("/large"))), m_large.size());
    QCOMPARE(NetworkUtils::getFileSize(m_nginx->url(QStringLiteral("/empty"))), 0);
    QCOMPARE(NetworkUtils::getFileSize(QStringLiteral("http://127.0.0.1:1/refused")), -1);
    QCOMPARE(NetworkUtils::getFileSize(QString()), -1);
    QCOMPARE(NetworkUtils::getFileSize(QStringLiteral("no address at all")), -1);
}

void NetworkTransfersTest::asksForTheSizeOfScriptedAnswers_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<long long>("size");
    auto const row = [](char const* tag, char const* answer, long long size) {
        QTest::newRow(tag) << QByteArray(answer) << size;
    };
    row("plain", "HTTP/1.1 200 OK\r\nContent-Length: 42\r\n\r\n", 42);
    row("error page", "HTTP/1.1 404 No\r\nContent-Length: 42\r\n\r\n", 42);
    row("lower case", "HTTP/1.1 200 OK\r\ncontent-length: 42\r\n\r\n", 0);
    row("no length", "HTTP/1.1 200 OK\r\nServer: x\r\n\r\n", 0);
    row("twice the same", "HTTP/1.1 200 OK\r\nContent-Length: 42\r\nContent-Length: 42\r\n\r\n", 42);
    row("lower case first", "HTTP/1.1 200 OK\r\ncontent-length: 42\r\nContent-Length: 42\r\n\r\n", 42);
    row("garbage", "HTTP/1.1 200 OK\r\nContent-Length: many\r\n\r\n", -1);
    row("negative", "HTTP/1.1 200 OK\r\nContent-Length: -42\r\n\r\n", -1);
    row("larger than a disk", "HTTP/1.1 200 OK\r\nContent-Length: 1125899906842624\r\n\r\n", 1LL << 50);
    row("body that should not be there", "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nbody", 4);
    row("no answer", "", -1);
}

void NetworkTransfersTest::asksForTheSizeOfScriptedAnswers()
{
    QFETCH(QByteArray, answer);
    QByteArray request;
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        request = connection.readRequest();
        connection.send(answer);
    });
    long long size = -2;
    QByteArray const printed = standardOutputOf(path(QStringLiteral("stdout")),
                                                [&] { size = NetworkUtils::getFileSize(server.url()); });
    QTEST(size, "size");
    QCOMPARE(printed, QByteArray());
    QVERIFY(request.startsWith("HEAD /file HTTP/1.1\r\n"));
}

void NetworkTransfersTest::uploads_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("small") << QByteArray("a\0b\r\n", 5);
    QTest::newRow("large") << m_large;
}

void NetworkTransfersTest::uploads()
{
    QFETCH(QByteArray, content);
    QString const file = path(QStringLiteral("up è"));
    QString const stored = QStringLiteral("/upload/new/%1").arg(content.size());
    QVERIFY(TestFiles::write(file, content));
    Watch watch(false);
    NetworkUtils::TransferResult const result =
        NetworkUtils::putFile(m_nginx->url(stored), file, content.size(), &watch.op);
    QVERIFY(result.ok);
    QVERIFY(!result.remoteError);
    QCOMPARE(TestFiles::read(m_nginx->folder() + stored), content);
    QCOMPARE(watch.now, content.size());
    QCOMPARE(watch.total, content.size());
    QVERIFY(watch.isSteady);
}

void NetworkTransfersTest::uploadsWithoutASize()
{
    QString const file = path(QStringLiteral("chunked"));
    QVERIFY(TestFiles::write(file, m_large));
    QVERIFY(NetworkUtils::putFile(m_nginx->url(QStringLiteral("/upload/chunked")), file, -1, nullptr).ok);
    QCOMPARE(TestFiles::read(m_nginx->folder() + QStringLiteral("/upload/chunked")), m_large);
}

void NetworkTransfersTest::failedUploads_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("remoteError");
    for (char const* status : {"403", "404", "500", "503"}) {
        QTest::newRow(status) << m_nginx->url(QStringLiteral("/status/") + QLatin1String(status)) << true;
    }
    QTest::newRow("no uploads here") << m_nginx->url(QStringLiteral("/small")) << true;
    QTest::newRow("nobody there") << QStringLiteral("http://127.0.0.1:1/") << false;
    QTest::newRow("no address") << QString() << false;
}

void NetworkTransfersTest::failedUploads()
{
    QFETCH(QString, address);
    QString const file = path(QStringLiteral("kept"));
    QVERIFY(TestFiles::write(file, "content"));
    NetworkUtils::TransferResult const result = NetworkUtils::putFile(address, file, 7, nullptr);
    QVERIFY(!result.ok);
    QTEST(result.remoteError, "remoteError");
    QCOMPARE(TestFiles::read(file), QByteArray("content"));
}

void NetworkTransfersTest::dropsTheAnswerToAnUpload()
{
    ScriptedServer const server(ScriptedServer::answer("HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nstored"));
    QString const file = path(QStringLiteral("answered"));
    QVERIFY(TestFiles::write(file, "content"));
    bool ok = false;
    QByteArray const printed = standardOutputOf(path(QStringLiteral("stdout")), [&] {
        ok = NetworkUtils::putFile(server.url(), file, 7, nullptr).ok;
    });
    QVERIFY(ok);
    QCOMPARE(printed, QByteArray());
}

void NetworkTransfersTest::keepsToTheAnnouncedSize()
{
    QByteArray received;
    {
        ScriptedServer const server([&](ScriptedServer::Connection& connection) {
            received = connection.readRequest();
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
            received += connection.readSome();
        });
        QString const file = path(QStringLiteral("growing"));
        QVERIFY(TestFiles::write(file, QByteArray(200 * kibi, 'x')));
        QVERIFY(NetworkUtils::putFile(server.url(), file, 5, nullptr).ok);
    }
    QVERIFY(received.startsWith("PUT /file HTTP/1.1\r\n"));
    QVERIFY(received.endsWith("\r\n\r\nxxxxx"));
}

void NetworkTransfersTest::failsForAFileThatIsTooShort()
{
    QString const file = path(QStringLiteral("short"));
    QVERIFY(TestFiles::write(file, "content"));
    NetworkUtils::TransferResult const result =
        NetworkUtils::putFile(m_nginx->url(QStringLiteral("/upload/short")), file, 8, nullptr);
    QVERIFY(!result.ok);
    QVERIFY(!result.remoteError);
    QVERIFY(!QFile::exists(m_nginx->folder() + QStringLiteral("/upload/short")));
}

/// This server answers when it has been patient enough.
void NetworkTransfersTest::asksForNoAnswerToHalfAFile()
{
    QString const file = path(QStringLiteral("half"));
    QVERIFY(TestFiles::write(file, "half"));
    ScriptedServer const server([](ScriptedServer::Connection& connection) {
        connection.readHead();
        while (connection.pause(2s)) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
        }
    });
    QVERIFY(!NetworkUtils::putFile(server.url(), file, 8, nullptr).ok);
}

void NetworkTransfersTest::failsForAFileThatCannotBeRead_data()
{
    QTest::addColumn<long long>("size");
    QTest::newRow("with a size") << 8LL;
    QTest::newRow("without a size") << -1LL;
}

void NetworkTransfersTest::failsForAFileThatCannotBeRead()
{
    QFETCH(long long, size);
    // It passes for a file and is opened, and every read at its beginning fails.
    NetworkUtils::TransferResult const result = NetworkUtils::putFile(
        m_nginx->url(QStringLiteral("/upload/unreadable")), QStringLiteral("/proc/self/mem"), size, nullptr);
    QVERIFY(!result.ok);
    QVERIFY(!result.remoteError);
    QVERIFY(!QFile::exists(m_nginx->folder() + QStringLiteral("/upload/unreadable")));
}

void NetworkTransfersTest::cancelsAnUpload()
{
    ScriptedServer const server([](ScriptedServer::Connection& connection) {
        connection.readHead();
        connection.pause(60s);
    });
    QString const file = path(QStringLiteral("large"));
    QVERIFY(TestFiles::write(file, m_large));
    Watch watch(false, underWay);
    NetworkUtils::TransferResult const result =
        NetworkUtils::putFile(server.url(), file, m_large.size(), &watch.op);
    QVERIFY(!result.ok);
    QVERIFY(!result.remoteError);
    QVERIFY(watch.now < m_large.size());
}

void NetworkTransfersTest::posts()
{
    QByteArray request;
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        request = connection.readRequest();
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    });
    QString const body = QStringLiteral("{\"name\":\"Zoë €\"}");
    QVERIFY(NetworkUtils::post(server.url(QStringLiteral("/api?x=1")),
                               {NetworkUtils::getJSONContentTypeSpec(), QStringLiteral("X-One: 1"),
                                QStringLiteral("X-One: 2"), QStringLiteral("X-Two: è")},
                               body));
    QVERIFY(request.startsWith("POST /api?x=1 HTTP/1.1\r\n"));
    QVERIFY(request.contains("\r\nContent-Type: application/json\r\nX-One: 1\r\nX-One: 2\r\nX-Two: è\r\n"));
    QVERIFY(request.contains("\r\nContent-Length: " + QByteArray::number(body.toUtf8().size()) + "\r\n"));
    QVERIFY(request.endsWith("\r\n\r\n" + body.toUtf8()));
}

void NetworkTransfersTest::postsWithoutLookingAtTheStatus()
{
    QVERIFY(NetworkUtils::post(m_nginx->url(QStringLiteral("/status/500")), {}, QStringLiteral("body")));
    QVERIFY(NetworkUtils::post(m_nginx->url(QStringLiteral("/status/404")), {}, QString()));
}

void NetworkTransfersTest::dropsTheAnswerToAPost()
{
    bool ok = false;
    QByteArray const printed = standardOutputOf(path(QStringLiteral("stdout")), [&] {
        ok = NetworkUtils::post(m_nginx->url(QStringLiteral("/status/403")), {}, QStringLiteral("body"));
    });
    QVERIFY(ok);
    QCOMPARE(printed, QByteArray());
}

void NetworkTransfersTest::postsToNobody()
{
    QVERIFY(!NetworkUtils::post(QStringLiteral("http://127.0.0.1:1/"), {}, QStringLiteral("body")));
    QVERIFY(!NetworkUtils::post(QString(), {QStringLiteral("A: b")}, QStringLiteral("body")));
    ScriptedServer const server(ScriptedServer::answer(QByteArray()));
    QVERIFY(!NetworkUtils::post(server.url(), {QStringLiteral("A: b")}, QStringLiteral("body")));
}

void NetworkTransfersTest::refusesAnUntrustedCertificate()
{
    QString const file = path(QStringLiteral("secret"));
    std::vector<char> memory;
    NetworkUtils::TransferResult const results[] = {
        NetworkUtils::downloadFile(m_nginx->secureUrl(QStringLiteral("/small")), file, nullptr),
        NetworkUtils::downloadToMemory(m_nginx->secureUrl(QStringLiteral("/small")), memory, nullptr),
        NetworkUtils::putFile(m_nginx->secureUrl(QStringLiteral("/upload/secret")),
                              QCoreApplication::applicationFilePath(), 10, nullptr),
    };
    for (NetworkUtils::TransferResult const& result : results) {
        QVERIFY(!result.ok);
        QVERIFY(!result.remoteError);
    }
    QVERIFY(!QFile::exists(file));
    QVERIFY(memory.empty());
    QVERIFY(!QFile::exists(m_nginx->folder() + QStringLiteral("/upload/secret")));
    QCOMPARE(NetworkUtils::getFileSize(m_nginx->secureUrl(QStringLiteral("/small"))), -1);
    QVERIFY(!NetworkUtils::post(m_nginx->secureUrl(QStringLiteral("/small")), {}, QStringLiteral("body")));
}

void NetworkTransfersTest::transfersOverHttp2()
{
    CurlSeam::instance().trusted = QFile::encodeName(m_nginx->certificate());
    std::vector<char> memory;
    QVERIFY(
        NetworkUtils::downloadToMemory(m_nginx->secureUrl(QStringLiteral("/protocol")), memory, nullptr).ok);
    QCOMPARE(QByteArray(memory.data(), static_cast<qsizetype>(memory.size())), QByteArray("HTTP/2.0"));

    QString const file = path(QStringLiteral("over HTTP2"));
    QVERIFY(NetworkUtils::downloadFile(m_nginx->secureUrl(QStringLiteral("/large")), file, nullptr).ok);
    QCOMPARE(TestFiles::read(file), m_large);
    QVERIFY(
        NetworkUtils::putFile(m_nginx->secureUrl(QStringLiteral("/upload/h2")), file, m_large.size(), nullptr)
            .ok);
    QCOMPARE(TestFiles::read(m_nginx->folder() + QStringLiteral("/upload/h2")), m_large);
    QVERIFY(NetworkUtils::putFile(m_nginx->secureUrl(QStringLiteral("/status/403")), file, 5, nullptr)
                .remoteError);
    // Its header names are in lower case.
    QCOMPARE(NetworkUtils::getFileSize(m_nginx->secureUrl(QStringLiteral("/large"))), 0);
    QVERIFY(NetworkUtils::post(m_nginx->secureUrl(QStringLiteral("/status/404")),
                               {NetworkUtils::getJSONContentTypeSpec()}, QStringLiteral("{}")));
}

void NetworkTransfersTest::transfersOverFtp()
{
    ScriptedServer const data([](ScriptedServer::Connection& connection) { connection.send("content"); });
    QByteArray const dataPort = QByteArray::number(QUrl(data.url()).port());
    ScriptedServer const control([&](ScriptedServer::Connection& connection) {
        connection.send("220 here\r\n");
        for (QByteArray command; !(command = connection.readSome()).isEmpty();) {
            if (command.startsWith("EPSV")) {
                connection.send("229 there (|||" + dataPort + "|)\r\n");
            } else if (command.startsWith("PWD")) {
                connection.send("257 \"/\"\r\n");
            } else if (command.startsWith("SIZE")) {
                connection.send("213 7\r\n");
            } else if (command.startsWith("RETR")) {
                connection.send("150 coming\r\n226 done\r\n");
            } else {
                connection.send("230 fine\r\n");
            }
        }
    });
    QString const url = control.url().replace(QStringLiteral("http:"), QStringLiteral("ftp:"));
    std::vector<char> memory;
    QVERIFY(NetworkUtils::downloadToMemory(url, memory, nullptr).ok);
    QCOMPARE(QByteArray(memory.data(), static_cast<qsizetype>(memory.size())), QByteArray("content"));
    long long size = -1;
    QByteArray const printed =
        standardOutputOf(path(QStringLiteral("stdout")), [&] { size = NetworkUtils::getFileSize(url); });
    QCOMPARE(size, 7);
    QCOMPARE(printed, QByteArray());
}

void NetworkTransfersTest::transfersOnSeveralThreads()
{
    constexpr int threadCount = 8;
    constexpr int rounds = 10;
    std::atomic<int> failures = 0;
    auto const check = [&](bool good) { failures += good ? 0 : 1; };
    auto const transfer = [&](int number) {
        QString const file = path(QStringLiteral("thread %1").arg(number));
        QString const stored = QStringLiteral("/upload/thread-%1").arg(number);
        for (int round = 0; round < rounds; ++round) {
            Watch down(true);
            check(NetworkUtils::downloadFile(m_nginx->url(QStringLiteral("/large")), file, &down.op).ok);
            check(down.now == m_large.size() && TestFiles::read(file) == m_large);
            Watch up(false);
            check(NetworkUtils::putFile(m_nginx->url(stored), file, m_large.size(), &up.op).ok);
            check(TestFiles::read(m_nginx->folder() + stored) == m_large);
            std::vector<char> memory;
            check(NetworkUtils::downloadToMemory(m_nginx->url(QStringLiteral("/small")), memory, nullptr).ok);
            check(memory.size() == 5);
            check(NetworkUtils::getFileSize(m_nginx->url(QStringLiteral("/small"))) == 5);
            check(NetworkUtils::post(m_nginx->url(QStringLiteral("/status/404")), {QStringLiteral("A: b")},
                                     QStringLiteral("body")));
            Watch cancelled(true, 0);
            check(
                !NetworkUtils::downloadFile(m_nginx->url(QStringLiteral("/large")), file, &cancelled.op).ok);
            check(!QFile::exists(file));
        }
    };
    std::vector<std::thread> threads;
    for (int number = 0; number < threadCount; ++number) {
        threads.emplace_back(transfer, number);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(failures.load(), 0);
}

void NetworkTransfersTest::sendsFormParts()
{
    std::mutex mutex;
    QByteArray request;
    ScriptedServer const server([&](ScriptedServer::Connection& connection) {
        QByteArray const received = connection.readRequest();
        {
            std::lock_guard const lock(mutex);
            request = received;
        }
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    });
    QString const name = path(QStringLiteral("form"));
    QVERIFY(TestFiles::write(name, "the file"));
    QFile file(name);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QHttpMultiPart form(QHttpMultiPart::FormDataType);
    form.append(NetworkUtils::getHttpTextPart(QStringLiteral("a\"\r\nX: injected"), "the text"));
    form.append(NetworkUtils::getHttpFilePart(QStringLiteral("file"), QStringLiteral("è\".wav"),
                                              QStringLiteral("audio/wav"), file));
    QNetworkAccessManager manager;
    std::unique_ptr<QNetworkReply> const reply(manager.post(QNetworkRequest(QUrl(server.url())), &form));
    QTRY_VERIFY_WITH_TIMEOUT(reply->isFinished(), 30'000);
    QCOMPARE(reply->error(), QNetworkReply::NoError);
    std::lock_guard const lock(mutex);
    // Newer versions of Qt write the names of headers in lower case.
    QByteArray const sent = request.toLower();
    QVERIFY2(sent.contains("\r\ncontent-disposition: form-data; name=\"a%22%0d%0ax: injected\"\r\n"), sent);
    QVERIFY2(sent.contains("\r\ncontent-type: audio/wav\r\n"), sent);
    QVERIFY2(sent.contains("\r\ncontent-disposition: form-data; name=\"file\"; filename=\"è%22.wav\"\r\n"),
             sent);
    QVERIFY2(sent.contains("\r\n\r\nthe text\r\n") && sent.contains("\r\n\r\nthe file\r\n"), sent);
    QVERIFY2(!sent.contains("\r\nx: injected"), sent);
}

int main(int argc, char** argv)
{
    return runTest<NetworkTransfersTest>(argc, argv);
}

#include "NetworkTransfersTest.moc"
