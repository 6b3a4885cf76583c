#include "Probe.h"

#include <HostileAnswers.h>
#include <LocalNginx.h>
#include <QElapsedTimer>
#include <QHttpMultiPart>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QTemporaryDir>
#include <RunTest.h>
#include <ScriptedServer.h>
#include <SecondUser.h>
#include <TestFiles.h>
#include <atomic>
#include <dlfcn.h>
#include <memory>
#include <mutex>
#include <netdb.h>
#include <network/NetworkUtils.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

using namespace Softphone;
using namespace std::chrono_literals;

namespace {

using Connection = ScriptedServer::Connection;

QByteArray gzipped(QByteArray const& bytes)
{
    constexpr int gzipWindow = MAX_WBITS + 16;
    z_stream stream = {};
    if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, gzipWindow, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
        qFatal("zlib gives no stream");
    }
    QByteArray packed(static_cast<qsizetype>(deflateBound(&stream, static_cast<uLong>(bytes.size()))),
                      Qt::Uninitialized);
    QByteArray input = bytes;
    stream.next_in = reinterpret_cast<Bytef*>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.truncate(static_cast<qsizetype>(stream.total_out));
    deflateEnd(&stream);
    return packed;
}

/// Answers each connection by the next of \a scripts, and by the last when they are used up.
ScriptedServer::Script inTurn(QList<ScriptedServer::Script> scripts)
{
    auto const round = std::make_shared<std::atomic<int>>(0);
    return [=](Connection& connection) {
        scripts.at(std::min<qsizetype>((*round)++, scripts.size() - 1))(connection);
    };
}

/// Qt asks again by itself where an answer and the end of its connection come at one moment, so that comes
/// later.
ScriptedServer::Script answer(QByteArray const& bytes)
{
    return [=](Connection& connection) {
        connection.readRequest();
        connection.send(bytes);
        connection.pause(200ms);
    };
}

enum class Disk { Sound, Slow, Full, Interrupted, Unreadable };

std::atomic<Disk> disk = Disk::Sound;

/// What the disk does to files while this object lives.
class DiskFault
{
public:
    explicit DiskFault(Disk fault) { disk = fault; }
    ~DiskFault() { disk = Disk::Sound; }
    Q_DISABLE_COPY_MOVE(DiskFault)
};

bool isOfFile(int file)
{
    struct stat status = {};
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

bool isOfDiskThread(int file)
{
    return isOfFile(file) && QThread::currentThread() != QCoreApplication::instance()->thread();
}

template <typename Function>
Function* system(char const* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// The error that a call ends with now; 0: none.
int errorOfWrite(int file)
{
    while (disk == Disk::Slow && isOfDiskThread(file)) {
        QThread::msleep(1);
    }
    if (disk == Disk::Full && isOfDiskThread(file)) {
        return ENOSPC;
    }
    // Once: whoever writes again gets on.
    return disk == Disk::Interrupted && isOfDiskThread(file) ? (disk = Disk::Sound, EINTR) : 0;
}

/// What Qt alone makes of the answer from \a url.
std::unique_ptr<QNetworkReply> answeredByQt(QNetworkAccessManager& network, QString const& url)
{
    std::unique_ptr<QNetworkReply> reply(network.get(QNetworkRequest(QUrl(url))));
    QSignalSpy(reply.get(), &QNetworkReply::finished).wait();
    return reply;
}

} // namespace

// The libraries find these before the system's.

extern "C" ssize_t write(int file, void const* bytes, std::size_t size)
{
    if (int const error = errorOfWrite(file)) {
        errno = error;
        return -1;
    }
    static auto* const systems = system<ssize_t(int, void const*, std::size_t)>("write");
    return systems(file, bytes, size);
}

extern "C" ssize_t read(int file, void* bytes, std::size_t size)
{
    if (disk == Disk::Unreadable && isOfFile(file)) {
        errno = EIO;
        return -1;
    }
    static auto* const systems = system<ssize_t(int, void*, std::size_t)>("read");
    return systems(file, bytes, size);
}

/// No name that ends so is ever given (RFC 6761); nobody outside is asked for it.
extern "C" int getaddrinfo(char const* node, char const* service, addrinfo const* hints, addrinfo** result)
{
    if (node != nullptr && QByteArrayView(node).endsWith(".invalid")) {
        return EAI_NONAME;
    }
    using Function = int(char const*, char const*, addrinfo const*, addrinfo**);
    return system<Function>("getaddrinfo")(node, service, hints, result);
}

/// As long as this lives the certificate of a server is good.
class TrustedServer
{
public:
    explicit TrustedServer(LocalNginx const& nginx)
    {
        QSslConfiguration tls = m_before;
        tls.addCaCertificates(nginx.certificate());
        QSslConfiguration::setDefaultConfiguration(tls);
    }
    ~TrustedServer() { QSslConfiguration::setDefaultConfiguration(m_before); }
    Q_DISABLE_COPY_MOVE(TrustedServer)

private:
    QSslConfiguration m_before = QSslConfiguration::defaultConfiguration();
};

/// Servers, networks and callers that do what they should not.
class TransferFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void refusesRequests_data();
    void refusesRequests();
    void tellsTheReason_data();
    void tellsTheReason();
    void tellsNoWordThatSteersATerminal();
    void noticesThatChunksStop_data();
    void noticesThatChunksStop();
    void noticesThatAnswersToPostsAreShort();
    void takesAnswersWithoutBody_data();
    void takesAnswersWithoutBody();
    void keepsErrorBody();
    void namesNoPassword_data();
    void namesNoPassword();
    void keepsTheConnectLimit();
    void keepsTheStallLimit_data();
    void keepsTheStallLimit();
    void keepsTheManagersLimit_data();
    void keepsTheManagersLimit();
    void waitsForASlowDisk();
    void writesOnAfterASignal();
    void tellsOfADiskThatFillsUp_data();
    void tellsOfADiskThatFillsUp();
    void staysCancelledWhateverTheDiskSays();
    void keepsTheTotalLimit();
    void doesNotTakeItsOwnSleepForSilence();
    void startsTheClockWithTheRequest();
    void keepsTheByteLimit_data();
    void keepsTheByteLimit();
    void findsABombWithoutALimit();
    void limitsRedirects_data();
    void limitsRedirects();
    void triesAgainWhereThatHelps_data();
    void triesAgainWhereThatHelps();
    void looksAgainForWhomItCouldNotReach();
    void sendsAnUploadAgain();
    void sendsAPostOnce_data();
    void sendsAPostOnce();
    void triesAPostAgainThatNobodyGot();
    void obeysRetryAfter_data();
    void obeysRetryAfter();
    void refusesUntrustedServers();
    void refusesADowngrade();
    void noticesWhatIsAddedToASecureConnection();
    void hearsOfRefusalsHalfWay_data();
    void hearsOfRefusalsHalfWay();
    void tellsThatAnUploadCannotBeRead_data();
    void tellsThatAnUploadCannotBeRead();
    void noticesAnUploadThatMayNotBeRead();
    void noticesAnUploadThatShrinks();
    void noticesAnUploadThatTheDiskLost();
    void survivesAProxyThatIsNotThere_data();
    void survivesAProxyThatIsNotThere();
    void tellsOfAProxyThatCannotBeReached_data();
    void tellsOfAProxyThatCannotBeReached();
    void blamesNoProxyThatIsPassedBy();
    void survivesHostileAnswers_data();
    void survivesHostileAnswers();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    Transfers m_transfers;
};

void TransferFaultsTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void TransferFaultsTest::refusesRequests_data()
{
    QTest::addColumn<QUrl>("url");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<TransferError>("error");
    QUrl const good(QStringLiteral("http://127.0.0.1:1/"));
    QUrl const withBreak(QStringLiteral("http://127.0.0.1:1/a\r\nX-Evil: 1"));
    QUrl const withNul(QStringLiteral("http://127.0.0.1:1/a%00b"));
    QByteArray const none;
    QTest::newRow("no address") << QUrl() << none << none << TransferError::BadAddress;
    QTest::newRow("no scheme") << QUrl(QStringLiteral("a/b")) << none << none << TransferError::BadAddress;
    QTest::newRow("no host") << QUrl(QStringLiteral("http:///a")) << none << none
                             << TransferError::BadAddress;
    QTest::newRow("not valid") << QUrl(QStringLiteral("http://a:99999/")) << none << none
                               << TransferError::BadAddress;
    QTest::newRow("line break in the path") << withBreak << none << none << TransferError::BadAddress;
    QTest::newRow("NUL in the path") << withNul << none << none << TransferError::BadAddress;
    QTest::newRow("line break in the zone")
        << QUrl(QStringLiteral("http://[fe80::1%25a%0D%0Ab]/")) << none << none << TransferError::BadAddress;
    QTest::newRow("file") << QUrl(QStringLiteral("file:///etc/passwd")) << none << none
                          << TransferError::SchemeRefused;
    QTest::newRow("ftp") << QUrl(QStringLiteral("ftp://127.0.0.1/a")) << none << none
                         << TransferError::SchemeRefused;
    QTest::newRow("data") << QUrl(QStringLiteral("data:,hello")) << none << none
                          << TransferError::SchemeRefused;
    QTest::newRow("line break in a value")
        << good << QByteArray("X-A") << QByteArray("a\r\nX-Evil: 1") << TransferError::BadAddress;
    QTest::newRow("CR in a value") << good << QByteArray("X-A") << QByteArray("a\rb")
                                   << TransferError::BadAddress;
    QTest::newRow("LF in a value") << good << QByteArray("X-A") << QByteArray("a\nb")
                                   << TransferError::BadAddress;
    QTest::newRow("NUL in a value") << good << QByteArray("X-A") << QByteArray("a\0b", 3)
                                    << TransferError::BadAddress;
    QTest::newRow("line break in a name")
        << good << QByteArray("X-A\r\nX-B") << QByteArray("a") << TransferError::BadAddress;
    QTest::newRow("colon in a name") << good << QByteArray("X-A: b") << QByteArray("a")
                                     << TransferError::BadAddress;
    QTest::newRow("bracket in a name")
        << good << QByteArray("X-{A}") << QByteArray("a") << TransferError::BadAddress;
    QTest::newRow("letter beyond ASCII in a name")
        << good << QByteArray("X-\xc3\xa9") << QByteArray("a") << TransferError::BadAddress;
    QTest::newRow("name of nothing") << good << QByteArray("") << QByteArray("a")
                                     << TransferError::BadAddress;
}

void TransferFaultsTest::refusesRequests()
{
    QFETCH(QUrl, url);
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, value);
    QFETCH(TransferError, error);
    TransferRequest request;
    request.url = url;
    if (!name.isNull()) {
        request.headers = {{name, value}};
    }
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QVERIFY(!transfer->isFinished());
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), error);
    QVERIFY(!transfer->errorText().isEmpty());
    QCOMPARE(transfer->status(), 0);
}

void TransferFaultsTest::tellsTheReason_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<TransferError>("error");
    QTest::addColumn<QString>("text");
    auto const row = [](char const* name, QByteArray const& reply, TransferError error, char const* text) {
        QTest::newRow(name) << reply << error << QString::fromLatin1(text);
    };
    row("no answer", QByteArray(), TransferError::Truncated, "%1 ended the connection without an answer.");
    row("cut in the status line", "HTTP/1.1 2", TransferError::Truncated,
        "%1 ended the connection without an answer.");
    row("cut in the head", "HTTP/1.1 200 OK\r\nContent-Le", TransferError::Truncated,
        "%1 ended the connection without an answer.");
    row("cut in the body", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc", TransferError::Truncated,
        "%1 ended the connection in the middle of its answer.");
    row("status 404", "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n", TransferError::HttpStatus,
        "%1 answered 404 Not Found.");
    row("status 599 without a word", "HTTP/1.1 599\r\nContent-Length: 0\r\n\r\n", TransferError::HttpStatus,
        "%1 answered 599.");
    row("a word without an end",
        "HTTP/1.1 400 [2J%2" + QByteArray(1000, 'x') + "\r\nContent-Length: 0\r\n\r\n",
        TransferError::HttpStatus, ("%1 answered 400 [2J%2" + QByteArray(75, 'x') + ".").constData());
}

void TransferFaultsTest::tellsTheReason()
{
    QFETCH(QByteArray, reply);
    QFETCH(TransferError, error);
    QFETCH(QString, text);
    ScriptedServer const server(answer(reply));
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url())));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), error);
    QCOMPARE(transfer->errorText(), text.replace(QLatin1String("%1"), serverOf(server.url())));
}

/// Newer versions of Qt take such an answer for none.
void TransferFaultsTest::tellsNoWordThatSteersATerminal()
{
    ScriptedServer const server(answer("HTTP/1.1 400 \x1b[2Jno\r\nContent-Length: 0\r\n\r\n"));
    QNetworkAccessManager network;
    bool const isAnswer =
        answeredByQt(network, server.url())->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url())));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), isAnswer ? TransferError::HttpStatus : TransferError::Truncated);
    QCOMPARE(transfer->errorText(),
             serverOf(server.url()) + (isAnswer ? QLatin1String(" answered 400 [2Jno.")
                                                : QLatin1String(" ended the connection without an answer.")));
}

void TransferFaultsTest::noticesThatChunksStop_data()
{
    QTest::addColumn<QByteArray>("chunks");
    QTest::addColumn<bool>("atOnce");
    QTest::newRow("in a chunk, at once") << QByteArray("5\r\nab") << true;
    QTest::newRow("in a chunk, later") << QByteArray("5\r\nab") << false;
    QTest::newRow("before the last chunk, at once") << QByteArray("2\r\nab\r\n") << true;
    QTest::newRow("before the last chunk, later") << QByteArray("2\r\nab\r\n") << false;
}

/// Often, because it is chance which of its reads Qt finds the end of the connection in.
void TransferFaultsTest::noticesThatChunksStop()
{
    QFETCH(QByteArray, chunks);
    QFETCH(bool, atOnce);
    constexpr int rounds = 50;
    std::atomic<bool> isEnded = atOnce;
    ScriptedServer const server([&](Connection& connection) {
        connection.readRequest();
        connection.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" + chunks);
        while (!isEnded && connection.pause(1ms)) {
        }
    });
    for (int round = 0; round < rounds; ++round) {
        isEnded = atOnce;
        std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url())));
        QTRY_VERIFY(atOnce || transfer->done() > 0);
        isEnded = true;
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->error(), TransferError::Truncated);
        QVERIFY(transfer->errorText().startsWith(serverOf(server.url()) +
                                                 QLatin1String(" ended the connection ")));
    }
}

/// So often because the bytes and the end of the connection have to be read at once.
void TransferFaultsTest::noticesThatAnswersToPostsAreShort()
{
    constexpr int rounds = 300;
    ScriptedServer const server([](Connection& connection) {
        connection.readRequest();
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nab");
    });
    for (int round = 0; round < rounds; ++round) {
        std::unique_ptr<Transfer> const transfer(m_transfers.post(requestFor(server.url()), "body"));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->error(), TransferError::Truncated);
    }
}

void TransferFaultsTest::takesAnswersWithoutBody_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("no content") << 204;
    QTest::newRow("not modified") << 304;
}

/// Such an answer ends with its head, whatever length the server gives: of the body that it does not send.
void TransferFaultsTest::takesAnswersWithoutBody()
{
    QFETCH(int, status);
    ScriptedServer const server(answer("HTTP/1.1 " + QByteArray::number(status) +
                                       " Nothing\r\nETag: \"v1\"\r\nContent-Length: 1234\r\n\r\n"));
    TransferRequest request = requestFor(server.url());
    request.headers = {{"If-None-Match", "\"v1\""}};
    request.limits.bytes = 1000;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->errorText(), QString());
    QCOMPARE(transfer->status(), status);
    QCOMPARE(transfer->body(), QByteArray());
    QCOMPARE(transfer->total(), 0);
}

void TransferFaultsTest::keepsErrorBody()
{
    QByteArray const page = pattern(200'000);
    ScriptedServer const server(
        answer("HTTP/1.1 500 Internal Server Error\r\nX-Trace: 7\r\nContent-Length: 200000\r\n\r\n" + page));
    QString const file = m_folder->filePath(QStringLiteral("file"));
    for (QString const& path : {QString(), file}) {
        std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url(), path)));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->error(), TransferError::HttpStatus);
        QCOMPARE(transfer->status(), 500);
        QVERIFY(transfer->body() == page.first(64 * 1024));
        QCOMPARE(transfer->header("x-trace"), QByteArray("7"));
        QVERIFY(!TestFiles::isThere(file));
    }
}

void TransferFaultsTest::namesNoPassword_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("no answer") << QByteArray();
    QTest::newRow("status") << QByteArray("HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\n\r\n");
    QTest::newRow("challenge") << QByteArray("HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic "
                                             "realm=\"a\"\r\nContent-Length: 0\r\n\r\n");
    QTest::newRow("redirect") << QByteArray("HTTP/1.1 302 Found\r\nLocation: ftp://ann:hunter2@a/\r\n"
                                            "Content-Length: 0\r\n\r\n");
    QTest::newRow("redirect to nothing")
        << QByteArray("HTTP/1.1 302 Found\r\nLocation: http://ann:hunter2@/\r\nContent-Length: 0\r\n\r\n");
}

void TransferFaultsTest::namesNoPassword()
{
    QFETCH(QByteArray, reply);
    ScriptedServer const server(answer(reply));
    QString url = server.url(QStringLiteral("/file?token=hunter2"));
    url.insert(7, QStringLiteral("ann:hunter2@"));
    QString const missing = m_folder->filePath(QStringLiteral("no/folder"));
    for (QString const& path : {QString(), missing}) {
        std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(url, path)));
        QVERIFY(ends(transfer.get()));
        QVERIFY(transfer->error() != TransferError::None);
        QVERIFY2(!transfer->errorText().contains(QStringLiteral("hunter2")),
                 qPrintable(transfer->errorText()));
        QVERIFY2(transfer->errorText().contains(QStringLiteral("127.0.0.1")),
                 qPrintable(transfer->errorText()));
    }
}

/// A listener whose queue of new connections is full lets a newcomer wait.
void TransferFaultsTest::keepsTheConnectLimit()
{
    // TLS with a server that says nothing: connected, but no request can go out.
    ScriptedServer const server([](Connection& connection) { connection.pause(60s); });
    QString url = server.url();
    url.replace(QStringLiteral("http:"), QStringLiteral("https:"));
    TransferRequest request = requestFor(url);
    request.limits.connect = 300ms;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::TimedOut);
    QCOMPARE(transfer->errorText(),
             serverOf(server.url()) + QStringLiteral(" could not be reached within 300 ms."));
}

void TransferFaultsTest::keepsTheStallLimit_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("half a head") << QByteArray("HTTP/1.1 200 OK\r\nCont");
    QTest::newRow("a head") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n");
    QTest::newRow("half a body") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc");
    QTest::newRow("interim answers") << QByteArray("HTTP/1.1 100 Continue\r\n\r\n");
}

void TransferFaultsTest::keepsTheStallLimit()
{
    QFETCH(QByteArray, start);
    ScriptedServer const server([=](Connection& connection) {
        connection.readRequest();
        connection.send(start);
        connection.pause(60s);
    });
    TransferRequest request = requestFor(server.url());
    request.limits.stalled = 300ms;
    std::unique_ptr<Transfer> const download(m_transfers.download(request));
    std::unique_ptr<Transfer> const post(m_transfers.post(request, "body"));
    for (Transfer* const transfer : {download.get(), post.get()}) {
        QVERIFY(ends(transfer));
        QCOMPARE(transfer->error(), TransferError::Stalled);
        QCOMPARE(transfer->errorText(), serverOf(server.url()) + QStringLiteral(" was silent for 300 ms."));
    }
}

void TransferFaultsTest::keepsTheManagersLimit_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::newRow("without an answer") << QByteArray();
    QTest::newRow("in the middle of the answer")
        << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc");
}

/// A limit of Qt's own, which a caller can set as well.
void TransferFaultsTest::keepsTheManagersLimit()
{
    QFETCH(QByteArray, start);
    ScriptedServer const server([=](Connection& connection) {
        connection.readRequest();
        connection.send(start);
        connection.pause(60s);
    });
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
    Transfers transfers;
    transfers.network()->setTransferTimeout(200);
    Transfer* const transfer = transfers.download(requestFor(server.url()));
    QVERIFY(ends(transfer));
    QCOMPARE(transfer->error(), TransferError::TimedOut);
    QCOMPARE(transfer->errorText(), serverOf(server.url()) + QStringLiteral(" did not answer in time."));
}

/// While the disk holds them back no bytes can come, and the server is not to blame.
void TransferFaultsTest::waitsForASlowDisk()
{
    QByteArray const content = pattern(4'000'000);
    ScriptedServer const server(ScriptedServer::answer(answerWith(content)));
    TransferRequest request = requestFor(server.url(), m_folder->filePath(QStringLiteral("file")));
    request.limits.stalled = 300ms;
    std::unique_ptr<Transfer> transfer;
    {
        DiskFault const slow(Disk::Slow);
        transfer.reset(m_transfers.download(request));
        QTRY_VERIFY(transfer->done() > 0);
        QTest::qWait(1500);
        QVERIFY2(!transfer->isFinished(), qPrintable(transfer->errorText()));
    }
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->errorText(), QString());
    QVERIFY(TestFiles::read(transfer->path()) == content);
}

void TransferFaultsTest::writesOnAfterASignal()
{
    QByteArray const content = pattern(1'000'000);
    ScriptedServer const server(ScriptedServer::answer(answerWith(content)));
    QString const file = m_folder->filePath(QStringLiteral("file"));
    DiskFault const interrupted(Disk::Interrupted);
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url(), file)));
    QVERIFY(ends(transfer.get()));
    QVERIFY(disk == Disk::Sound);
    QCOMPARE(transfer->errorText(), QString());
    QVERIFY(TestFiles::read(file) == content);
}

void TransferFaultsTest::tellsOfADiskThatFillsUp_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("with the last block") << 4;
    QTest::newRow("with a block between") << 3'000'000;
}

/// It is slow at first, so that more is asked of it before it tells.
void TransferFaultsTest::tellsOfADiskThatFillsUp()
{
    QFETCH(int, size);
    ScriptedServer const server(ScriptedServer::answer(answerWith(pattern(size))));
    QString const file = m_folder->filePath(QStringLiteral("file"));
    QVERIFY(TestFiles::write(file, "old"));
    DiskFault const slow(Disk::Slow);
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url(), file)));
    QSignalSpy const finished(transfer.get(), &Transfer::finished);
    QTRY_VERIFY(transfer->done() >= std::min(size, 1'000'000));
    disk = Disk::Full;
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::CannotWrite);
    QVERIFY2(transfer->errorText().contains(qt_error_string(ENOSPC)), qPrintable(transfer->errorText()));
    QCOMPARE(finished.size(), 1);
    QCOMPARE(TestFiles::read(file), QByteArray("old"));
    QCOMPARE(TestFiles::names(m_folder->path()).size(), 1);
}

/// It tells that it is full when the transfer has been told to end.
void TransferFaultsTest::staysCancelledWhateverTheDiskSays()
{
    ScriptedServer const server(ScriptedServer::answer(answerWith(pattern(3'000'000))));
    DiskFault const slow(Disk::Slow);
    std::unique_ptr<Transfer> const transfer(
        m_transfers.download(requestFor(server.url(), m_folder->filePath(QStringLiteral("file")))));
    QSignalSpy const finished(transfer.get(), &Transfer::finished);
    QTRY_VERIFY(transfer->done() > 0);
    transfer->cancel();
    disk = Disk::Full;
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::Cancelled);
    QCOMPARE(finished.size(), 1);
    QCOMPARE(TestFiles::names(m_folder->path()).size(), 0);
}

/// Bytes that trickle keep no transfer alive beyond its time.
void TransferFaultsTest::keepsTheTotalLimit()
{
    ScriptedServer const server([](Connection& connection) {
        connection.readRequest();
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 10000\r\n\r\n");
        while (connection.send("x") && connection.pause(50ms)) {
        }
    });
    TransferRequest request = requestFor(server.url());
    request.limits.stalled = 400ms;
    request.limits.total = 1s;
    request.retries = 3;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::TimedOut);
    QCOMPARE(transfer->errorText(),
             QStringLiteral("The transfer with %1 took longer than 1 s.").arg(serverOf(server.url())));
    QCOMPARE(server.connections(), 1);
}

/// A window that was busy for longer than the limit finds the answer waiting.
void TransferFaultsTest::doesNotTakeItsOwnSleepForSilence()
{
    ScriptedServer const server([](Connection& connection) {
        connection.readRequest();
        connection.pause(300ms);
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n");
        connection.pause(700ms);
        connection.send("body");
    });
    TransferRequest request = requestFor(server.url());
    request.limits.stalled = 500ms;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QTRY_COMPARE(transfer->status(), 200);
    QThread::sleep(2);
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->errorText(), QString());
    QCOMPARE(transfer->body(), QByteArray("body"));
}

/// Twenty requests to one server, each of which takes most of what the limits allow.
void TransferFaultsTest::startsTheClockWithTheRequest()
{
    ScriptedServer const server([](Connection& connection) {
        connection.readRequest();
        connection.pause(500ms);
        connection.send(answerWith("body"));
    });
    m_transfers.setParallel(20);
    TransferRequest request = requestFor(server.url());
    request.limits = {.connect = 900ms, .stalled = 900ms, .total = 1300ms};
    QList<Transfer*> all;
    for (int i = 0; i < 20; ++i) {
        all.append(m_transfers.download(request));
    }
    for (Transfer* const transfer : all) {
        QVERIFY(ends(transfer));
        QCOMPARE(transfer->errorText(), QString());
    }
    qDeleteAll(all);
    m_transfers.setParallel(6);
}

void TransferFaultsTest::keepsTheByteLimit_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<TransferError>("error");
    QByteArray const head = "HTTP/1.1 200 OK\r\nConnection: close\r\n";
    QByteArray const packed = gzipped(QByteArray(50'000'000, '\0'));
    QTest::newRow("exactly") << answerWith(QByteArray(1000, 'x')) << TransferError::None;
    QTest::newRow("announced") << answerWith(QByteArray(1001, 'x')) << TransferError::TooLarge;
    QTest::newRow("announced and never sent")
        << head + "Content-Length: 99999999999\r\n\r\nabc" << TransferError::TooLarge;
    QTest::newRow("not announced") << head + "\r\n" + QByteArray(1001, 'x') << TransferError::TooLarge;
    QTest::newRow("in chunks") << head + "Transfer-Encoding: chunked\r\n\r\n3e9\r\n" + QByteArray(1001, 'x') +
                                      "\r\n0\r\n\r\n"
                               << TransferError::TooLarge;
    QTest::newRow("packed") << answerWith(gzipped(QByteArray(1000, 'x')), "Content-Encoding: gzip\r\n")
                            << TransferError::None;
    QTest::newRow("bomb") << answerWith(packed, "Content-Encoding: gzip\r\n") << TransferError::TooLarge;
}

void TransferFaultsTest::keepsTheByteLimit()
{
    QFETCH(QByteArray, reply);
    QFETCH(TransferError, error);
    ScriptedServer const server(answer(reply));
    QString const file = m_folder->filePath(QStringLiteral("file"));
    for (QString const& path : {QString(), file}) {
        TransferRequest request = requestFor(server.url(), path);
        request.limits.bytes = 1000;
        std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->error(), error);
        QVERIFY(transfer->body().size() <= 1000);
        QVERIFY(QFileInfo(file).size() <= 1000);
        QCOMPARE(TestFiles::names(m_folder->path()).size(),
                 error == TransferError::None && !path.isEmpty() ? 1 : 0);
    }
}

void TransferFaultsTest::findsABombWithoutALimit()
{
    ScriptedServer const server(
        answer(answerWith(gzipped(QByteArray(100'000'000, '\0')), "Content-Encoding: gzip\r\n")));
    for (QString const& path : {QString(), m_folder->filePath(QStringLiteral("file"))}) {
        std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url(), path)));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->error(), TransferError::TooLarge);
        QCOMPARE(TestFiles::names(m_folder->path()).size(), 0);
    }
}

void TransferFaultsTest::limitsRedirects_data()
{
    QTest::addColumn<QByteArray>("location");
    QTest::addColumn<int>("redirects");
    QTest::addColumn<TransferError>("error");
    QTest::addColumn<int>("connections");
    QTest::newRow("circle") << QByteArray("/file") << 5 << TransferError::TooManyRedirects << 6;
    QTest::newRow("none allowed") << QByteArray("/file") << 0 << TransferError::TooManyRedirects << 1;
    QTest::newRow("to a file") << QByteArray("file:///etc/passwd") << 5 << TransferError::SchemeRefused << 1;
    QTest::newRow("to ftp") << QByteArray("ftp://127.0.0.1/") << 5 << TransferError::SchemeRefused << 1;
    QTest::newRow("to a line break") << QByteArray("/a%0D%0Ab") << 5 << TransferError::BadAddress << 1;
    QTest::newRow("to https") << QByteArray("https://127.0.0.1/") << 5 << TransferError::SchemeRefused << 1;
    QTest::newRow("to no address") << QByteArray("http://127.0.0.1:99999/") << 5 << TransferError::BadAddress
                                   << 1;
    QTest::newRow("to no host") << QByteArray("http:///a") << 5 << TransferError::BadAddress << 1;
}

void TransferFaultsTest::limitsRedirects()
{
    QFETCH(QByteArray, location);
    QFETCH(int, redirects);
    QFETCH(TransferError, error);
    QFETCH(int, connections);
    ScriptedServer const server(answer("HTTP/1.1 302 Found\r\nLocation: " + location +
                                       "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"));
    TransferRequest request = requestFor(server.url());
    request.limits.redirects = redirects;
    request.limits.schemes = QStringList{QStringLiteral("HTTP")};
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), error);
    QCOMPARE(server.connections(), connections);
}

void TransferFaultsTest::triesAgainWhereThatHelps_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("connections");
    for (int const status : {408, 429, 500, 502, 503, 504}) {
        QTest::addRow("status %d", status) << "HTTP/1.1 " + QByteArray::number(status) +
                                                  " No\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"
                                           << 3;
    }
    for (int const status : {400, 401, 403, 404, 410}) {
        QTest::addRow("status %d", status) << "HTTP/1.1 " + QByteArray::number(status) +
                                                  " No\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"
                                           << 1;
    }
    QTest::newRow("cut") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nabc") << 3;
    QTest::newRow("senseless") << QByteArray("HTTP/1.1 206 Part\r\nContent-Length: 1\r\n\r\na") << 1;
}

void TransferFaultsTest::triesAgainWhereThatHelps()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, connections);
    ScriptedServer const server(inTurn({answer(reply), answer(reply), answer(answerWith("body"))}));
    TransferRequest request = requestFor(server.url());
    request.retries = 2;
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error() == TransferError::None, connections == 3);
    QCOMPARE(transfer->body(), connections == 3 ? QByteArray("body") : transfer->body());
    QCOMPARE(server.connections(), connections);
}

/// A name that was not found or a server that did not take the connection may be there in a moment.
void TransferFaultsTest::looksAgainForWhomItCouldNotReach()
{
    ScriptedServer const silent([](Connection& connection) { connection.pause(60s); });
    QString url = silent.url();
    url.replace(QStringLiteral("http:"), QStringLiteral("https:"));
    TransferRequest unanswered = requestFor(url);
    unanswered.limits.connect = 300ms;
    unanswered.retries = 1;
    TransferRequest unknown = requestFor(QStringLiteral("http://nowhere.invalid/"));
    unknown.retries = 1;
    QElapsedTimer clock;
    clock.start();
    std::unique_ptr<Transfer> const first(m_transfers.download(unanswered));
    std::unique_ptr<Transfer> const second(m_transfers.download(unknown));
    QVERIFY(ends(second.get()));
    QCOMPARE(second->error(), TransferError::HostNotFound);
    QCOMPARE(second->errorText(), QStringLiteral("nowhere.invalid was not found."));
    // The first wait is half a second at least.
    QVERIFY(clock.elapsed() >= 500);
    QVERIFY(ends(first.get()));
    QCOMPARE(first->error(), TransferError::TimedOut);
    // Both attempts took what they were given.
    QVERIFY(clock.elapsed() >= 300 + 500 + 300);
}

void TransferFaultsTest::sendsAnUploadAgain()
{
    QByteArrayList requests;
    QString const file = m_folder->filePath(QStringLiteral("file"));
    QVERIFY(TestFiles::write(file, "the value"));
    {
        ScriptedServer const server([&](Connection& connection) {
            requests.append(connection.readRequest());
            connection.send(requests.size() == 1
                                ? "HTTP/1.1 503 Busy\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"
                                : answerWith("stored"));
            connection.pause(200ms);
        });
        TransferRequest request = requestFor(server.url(), file);
        request.retries = 1;
        std::unique_ptr<Transfer> const transfer(m_transfers.upload(request));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->errorText(), QString());
        QCOMPARE(transfer->body(), QByteArray("stored"));
    }
    QCOMPARE(requests.size(), 2);
    QVERIFY2(requests.last().endsWith("\r\n\r\nthe value"), requests.last().constData());
}

void TransferFaultsTest::sendsAPostOnce_data()
{
    QTest::addColumn<bool>("isForm");
    QTest::addColumn<bool>("isAnswered");
    for (bool const isForm : {false, true}) {
        QTest::addRow("%s, no answer", isForm ? "form" : "body") << isForm << false;
        QTest::addRow("%s, answered 503", isForm ? "form" : "body") << isForm << true;
    }
}

/// Whoever pays twice because a connection broke blames the program.
void TransferFaultsTest::sendsAPostOnce()
{
    QFETCH(bool, isForm);
    QFETCH(bool, isAnswered);
    std::atomic<int> posts = 0;
    ScriptedServer const server([&](Connection& connection) {
        posts += connection.readRequest().startsWith("POST") ? 1 : 0;
        if (isAnswered) {
            connection.send("HTTP/1.1 503 Busy\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        }
    });
    TransferRequest request = requestFor(server.url());
    request.retries = 3;
    auto* const form = new QHttpMultiPart(QHttpMultiPart::FormDataType, this);
    form->append(NetworkUtils::getHttpTextPart(QStringLiteral("pay"), "100"));
    std::unique_ptr<Transfer> const transfer(isForm ? m_transfers.postForm(request, form)
                                                    : m_transfers.post(request, "pay=100"));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), isAnswered ? TransferError::HttpStatus : TransferError::Truncated);
    QCOMPARE(posts.load(), 1);
}

void TransferFaultsTest::triesAPostAgainThatNobodyGot()
{
    QUrl url;
    {
        ScriptedServer const closed(answer(QByteArray()));
        url = QUrl(closed.url());
    }
    TransferRequest request = requestFor(url.toString());
    request.retries = 2;
    QElapsedTimer clock;
    clock.start();
    std::unique_ptr<Transfer> const transfer(m_transfers.post(request, "body"));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::Refused);
    QCOMPARE(transfer->errorText(), serverOf(url.toString()) + QStringLiteral(" refused the connection."));
    // Two waits, the first of half a second at least.
    QVERIFY(clock.elapsed() >= 1500);
}

void TransferFaultsTest::obeysRetryAfter_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<qint64>("least"); // milliseconds; -1: no second attempt
    QTest::newRow("seconds") << QByteArray("2") << 2000LL;
    QTest::newRow("a date long gone") << QByteArray("Sun, 06 Nov 1994 08:49:37 GMT") << 500LL;
    QTest::newRow("a day") << QByteArray("86400") << -1LL;
    QTest::newRow("a date far away") << QByteArray("Fri, 06 Nov 2099 08:49:37 GMT") << -1LL;
    QTest::newRow("overflow") << QByteArray("99999999999999999999999") << 500LL;
    QTest::newRow("almost overflow") << QByteArray("9223372036854775807") << -1LL;
    QTest::newRow("negative") << QByteArray("-5") << 500LL;
    QTest::newRow("nonsense") << QByteArray("soon") << 500LL;
}

void TransferFaultsTest::obeysRetryAfter()
{
    QFETCH(QByteArray, value);
    QFETCH(qint64, least);
    ScriptedServer const server(inTurn({answer("HTTP/1.1 503 Busy\r\nRetry-After: " + value +
                                               "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"),
                                        answer(answerWith("body"))}));
    TransferRequest request = requestFor(server.url());
    request.retries = 1;
    QElapsedTimer clock;
    clock.start();
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), least < 0 ? TransferError::HttpStatus : TransferError::None);
    QVERIFY(clock.elapsed() >= least);
    QCOMPARE(server.connections(), least < 0 ? 1 : 2);
}

void TransferFaultsTest::refusesUntrustedServers()
{
    LocalNginx const nginx;
    QVERIFY2(nginx.isRunning(), qPrintable(nginx.problem()));
    std::unique_ptr<Transfer> const transfer(
        m_transfers.download(requestFor(nginx.secureUrl(QStringLiteral("/status/404")))));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::Tls);
    QVERIFY2(transfer->errorText().startsWith(QStringLiteral("No secure connection to 127.0.0.1:")),
             qPrintable(transfer->errorText()));
    QVERIFY2(transfer->errorText().contains(QStringLiteral("self-signed")),
             qPrintable(transfer->errorText()));
}

void TransferFaultsTest::refusesADowngrade()
{
    LocalNginx const nginx;
    QVERIFY2(nginx.isRunning(), qPrintable(nginx.problem()));
    TrustedServer const trust(nginx);
    std::unique_ptr<Transfer> const transfer(
        m_transfers.download(requestFor(nginx.secureUrl(QStringLiteral("/downgrade")))));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::SchemeRefused);
}

/// By somebody between, when the server has gone.
void TransferFaultsTest::noticesWhatIsAddedToASecureConnection()
{
    LocalNginx nginx;
    QVERIFY2(nginx.isRunning(), qPrintable(nginx.problem()));
    QVERIFY(nginx.addFile(QStringLiteral("large"), pattern(3'000'000)));
    TrustedServer const trust(nginx);
    QString const url = nginx.secureUrl(QStringLiteral("/slow/large"));
    ScriptedServer const between([&url](Connection& connection) {
        connection.readHead();
        connection.send("HTTP/1.1 200 OK\r\n\r\n");
        connection.tunnelTo(static_cast<quint16>(QUrl(url).port()));
        connection.send(QByteArray(100'000, 'x'));
        connection.pause(60s);
    });
    Transfers transfers;
    transfers.network()->setProxy(QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"),
                                                static_cast<quint16>(QUrl(between.url()).port())));
    QString const file = m_folder->filePath(QStringLiteral("file"));
    Transfer* const transfer = transfers.download(requestFor(url, file));
    QTRY_VERIFY(transfer->done() > 0);
    nginx.kill();
    QVERIFY(ends(transfer));
    QCOMPARE(transfer->error(), TransferError::Truncated);
    QCOMPARE(transfer->errorText(),
             serverOf(url) + QStringLiteral(" ended the connection in the middle of its answer."));
    QVERIFY(!TestFiles::isThere(file));
}

void TransferFaultsTest::hearsOfRefusalsHalfWay_data()
{
    QTest::addColumn<bool>("isRead");
    QTest::newRow("the server reads on") << true;
    QTest::newRow("the server reads no more") << false;
}

void TransferFaultsTest::hearsOfRefusalsHalfWay()
{
    QFETCH(bool, isRead);
    std::atomic<int> requests = 0;
    ScriptedServer const server([&requests, isRead](Connection& connection) {
        requests += connection.readHead().isEmpty() ? 0 : 1;
        connection.send("HTTP/1.1 413 Too Large\r\nContent-Length: 4\r\nConnection: close\r\n\r\npage");
        while (isRead && !connection.readSome().isEmpty()) {
        }
        connection.pause(1s);
    });
    QString const file = m_folder->filePath(QStringLiteral("file"));
    QVERIFY(TestFiles::write(file, QByteArray(30'000'000, 'x')));
    TransferRequest request = requestFor(server.url(), file);
    request.limits.stalled = 3s;
    std::unique_ptr<Transfer> const transfer(m_transfers.upload(request));
    QVERIFY(ends(transfer.get()));
    // Before Qt 6.11 the answer is looked for once all is sent, so that of a server that reads no more is
    // lost.
    if (isRead || transfer->error() == TransferError::HttpStatus) {
        QCOMPARE(transfer->error(), TransferError::HttpStatus);
        QCOMPARE(transfer->status(), 413);
    } else {
        QCOMPARE(transfer->error(), TransferError::Truncated);
        QCOMPARE(transfer->errorText(),
                 serverOf(server.url()) +
                     QStringLiteral(" ended the connection before it had taken everything."));
    }
    QCOMPARE(requests.load(), 1); // some versions of Qt connect a second time, and say nothing
}

void TransferFaultsTest::tellsThatAnUploadCannotBeRead_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("missing") << QStringLiteral("/no/such/file");
    QTest::newRow("folder") << QStringLiteral("/");
    QTest::newRow("device") << QStringLiteral("/dev/zero");
    QTest::newRow("no name") << QString();
    QTest::newRow("NUL") << QStringLiteral("/etc/passwd") + QChar(0);
}

void TransferFaultsTest::tellsThatAnUploadCannotBeRead()
{
    QFETCH(QString, path);
    ScriptedServer const server(answer(answerWith("")));
    std::unique_ptr<Transfer> const transfer(m_transfers.upload(requestFor(server.url(), path)));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::CannotRead);
    QVERIFY(transfer->errorText().contains(QStringLiteral("127.0.0.1")));
    QCOMPARE(server.connections(), 0);
}

void TransferFaultsTest::noticesAnUploadThatMayNotBeRead()
{
    if (!SecondUser::isPossible()) {
        QSKIP("only root can become another user");
    }
    SecondUser const second;
    SecondUsersTurn const turn;
    QVERIFY(second.isReady() && turn.isTaken());
    QString const file = second.home() + QStringLiteral("/file");
    QVERIFY(TestFiles::write(file, "secret") && QFile::setPermissions(file, QFile::WriteOwner));
    ScriptedServer const server(answer(answerWith("")));
    std::unique_ptr<Transfer> const transfer(m_transfers.upload(requestFor(server.url(), file)));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::CannotRead);
    QCOMPARE(transfer->errorText(),
             QStringLiteral("%1 cannot be read to send it to %2.").arg(file, serverOf(server.url())));
    QCOMPARE(server.connections(), 0);
}

void TransferFaultsTest::noticesAnUploadThatTheDiskLost()
{
    QString const file = m_folder->filePath(QStringLiteral("file"));
    QVERIFY(TestFiles::write(file, QByteArray(1'000'000, 'x')));
    ScriptedServer const server([](Connection& connection) {
        connection.readHead();
        while (!connection.readSome().isEmpty()) {
        }
    });
    DiskFault const unreadable(Disk::Unreadable);
    std::unique_ptr<Transfer> const transfer(m_transfers.upload(requestFor(server.url(), file)));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::CannotRead);
    QCOMPARE(transfer->errorText(), QStringLiteral("%1 could not be read to its end to send it to %2.")
                                        .arg(file, serverOf(server.url())));
}

void TransferFaultsTest::noticesAnUploadThatShrinks()
{
    QString const file = m_folder->filePath(QStringLiteral("file"));
    QVERIFY(TestFiles::write(file, QByteArray(30'000'000, 'x')));
    std::atomic<bool> isCut = false;
    ScriptedServer const server([&](Connection& connection) {
        connection.readHead();
        while (!isCut && connection.pause(10ms)) {
        }
        while (!connection.readSome().isEmpty()) {
        }
    });
    TransferRequest request = requestFor(server.url(), file);
    request.limits.stalled = 5s;
    std::unique_ptr<Transfer> const transfer(m_transfers.upload(request));
    QTRY_VERIFY(transfer->done() > 0);
    QVERIFY(QFile::resize(file, 1000));
    isCut = true;
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::CannotRead);
}

void TransferFaultsTest::survivesAProxyThatIsNotThere_data()
{
    QTest::addColumn<QString>("scheme");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<TransferError>("error");
    QString const http = QStringLiteral("http");
    QString const https = QStringLiteral("https");
    QTest::newRow("says nothing") << http << QByteArray() << TransferError::Truncated;
    QTest::newRow("wants a login") << http
                                   << QByteArray(
                                          "HTTP/1.1 407 Login\r\nProxy-Authenticate: Basic "
                                          "realm=\"a\"\r\nContent-Length: 0\r\nConnection: close\r\n\r\n")
                                   << TransferError::HttpStatus;
    QTest::newRow("finds no server") << http
                                     << QByteArray("HTTP/1.1 502 Bad Gateway\r\nContent-Length: 0\r\n\r\n")
                                     << TransferError::HttpStatus;
    QTest::newRow("tunnel: says nothing") << https << QByteArray() << TransferError::Refused;
    QTest::newRow("tunnel: wants a login")
        << https
        << QByteArray("HTTP/1.1 407 Login\r\nProxy-Authenticate: Basic realm=\"a\"\r\n"
                      "Content-Length: 0\r\nConnection: close\r\n\r\n")
        << TransferError::Refused;
    QTest::newRow("tunnel: refuses") << https << QByteArray("HTTP/1.1 403 No\r\nContent-Length: 0\r\n\r\n")
                                     << TransferError::Refused;
    QTest::newRow("tunnel: finds no server")
        << https << QByteArray("HTTP/1.1 502 Bad Gateway\r\nContent-Length: 0\r\n\r\n")
        << TransferError::Refused;
    QTest::newRow("tunnel: no HTTP") << https << QByteArray("220 ready\r\n\r\n") << TransferError::Refused;
    QTest::newRow("tunnel: opens and breaks")
        << https << QByteArray("HTTP/1.1 200 OK\r\n\r\n") << TransferError::Truncated;
    QTest::newRow("tunnel: answers itself")
        << https << QByteArray("HTTP/1.1 200 OK\r\n\r\nHTTP/1.1 200 OK\r\n\r\n") << TransferError::Tls;
}

void TransferFaultsTest::survivesAProxyThatIsNotThere()
{
    QFETCH(QString, scheme);
    QFETCH(QByteArray, reply);
    QFETCH(TransferError, error);
    ScriptedServer const proxy(answer(reply));
    QUrl const url(proxy.url());
    Transfers transfers;
    transfers.network()->setProxy(
        QNetworkProxy(QNetworkProxy::HttpProxy, url.host(), static_cast<quint16>(url.port())));
    Transfer* const transfer =
        transfers.download(requestFor(scheme + QStringLiteral("://nowhere.invalid/page")));
    QVERIFY(ends(transfer));
    QVERIFY2(transfer->error() == error, qPrintable(transfer->errorText()));
    QVERIFY2(transfer->errorText().contains(QStringLiteral("nowhere.invalid")),
             qPrintable(transfer->errorText()));
}

void TransferFaultsTest::tellsOfAProxyThatCannotBeReached_data()
{
    QTest::addColumn<QString>("scheme");
    QTest::addColumn<QString>("proxy");
    QTest::addColumn<bool>("isOfApplication");
    QTest::addColumn<TransferError>("error");
    QTest::addColumn<QString>("text");
    QString const http = QStringLiteral("http");
    QString const https = QStringLiteral("https");
    QString const silent = QStringLiteral("127.0.0.1");
    QString const unknown = QStringLiteral("proxy.invalid");
    QString const refused = QStringLiteral("The proxy before a.example refused the connection.");
    QString const notFound = QStringLiteral("The proxy before a.example was not found.");
    QTest::newRow("nobody listens") << http << silent << false << TransferError::Refused << refused;
    QTest::newRow("nobody listens, the application's")
        << http << silent << true << TransferError::Refused << refused;
    QTest::newRow("unknown") << http << unknown << false << TransferError::HostNotFound << notFound;
    QTest::newRow("unknown, the application's")
        << http << unknown << true << TransferError::HostNotFound << notFound;
    QTest::newRow("tunnel: unknown") << https << unknown << false << TransferError::HostNotFound << notFound;
    // Qt does not tell who refused.
    QTest::newRow("tunnel: nobody listens")
        << https << silent << false << TransferError::Refused << QStringLiteral("a.example");
}

void TransferFaultsTest::tellsOfAProxyThatCannotBeReached()
{
    QFETCH(QString, scheme);
    QFETCH(QString, proxy);
    QFETCH(bool, isOfApplication);
    QFETCH(TransferError, error);
    QFETCH(QString, text);
    QUrl closed;
    {
        ScriptedServer const server(answer(QByteArray()));
        closed = QUrl(server.url());
    }
    auto const restore = qScopeGuard([] { QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy); });
    QNetworkProxy const way(QNetworkProxy::HttpProxy, proxy, static_cast<quint16>(closed.port()));
    Transfers transfers;
    if (isOfApplication) {
        QNetworkProxy::setApplicationProxy(way);
    } else {
        transfers.network()->setProxy(way);
    }
    Transfer* const transfer = transfers.download(requestFor(scheme + QStringLiteral("://a.example/page")));
    QVERIFY(ends(transfer));
    QCOMPARE(transfer->error(), error);
    QVERIFY2(transfer->errorText().contains(text), qPrintable(transfer->errorText()));
}

/// The last way leads straight to the server, and there it ends.
void TransferFaultsTest::blamesNoProxyThatIsPassedBy()
{
    class ProxyOrNone : public QNetworkProxyFactory
    {
    public:
        explicit ProxyOrNone(quint16 port)
            : m_port(port)
        {
        }
        QList<QNetworkProxy> queryProxy(QNetworkProxyQuery const&) override
        {
            return {QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), m_port),
                    QNetworkProxy(QNetworkProxy::NoProxy)};
        }

    private:
        quint16 m_port;
    };
    QString closed;
    {
        ScriptedServer const server(answer(QByteArray()));
        closed = server.url();
    }
    Transfers transfers;
    transfers.network()->setProxyFactory(new ProxyOrNone(static_cast<quint16>(QUrl(closed).port())));
    Transfer* const transfer = transfers.download(requestFor(closed));
    QVERIFY(ends(transfer));
    QCOMPARE(transfer->error(), TransferError::Refused);
    // Newer versions of Qt go no further than the proxy.
    QNetworkAccessManager network;
    network.setProxyFactory(new ProxyOrNone(static_cast<quint16>(QUrl(closed).port())));
    bool const isProxys =
        answeredByQt(network, closed)->error() == QNetworkReply::ProxyConnectionRefusedError;
    QVERIFY2(transfer->errorText().startsWith(serverOf(closed)) != isProxys,
             qPrintable(transfer->errorText()));
}

void TransferFaultsTest::survivesHostileAnswers_data()
{
    constexpr qint64 mebi = 1024 * 1024;
    QTest::addColumn<ScriptedServer::Script>("script");
    QTest::newRow("packed twice") << HostileAnswers::expanding("start", 64 * mebi, 2);
    QTest::newRow("packed to nothing") << HostileAnswers::expandingToNothing(100'000);
    QTest::newRow("many header lines") << HostileAnswers::manyHeaders(4 * mebi);
    QTest::newRow("many trailers") << HostileAnswers::manyTrailers(4 * mebi);
    QTest::newRow("a long trailer") << HostileAnswers::foldedTrailer(4 * mebi);
    QTest::newRow("many interim answers") << HostileAnswers::manyInterimAnswers(4 * mebi);
    QTest::newRow("a long chunk extension") << HostileAnswers::longChunkExtension(4 * mebi);
    QTest::newRow("silence") << HostileAnswers::silence();
}

/// Whatever is said of them, they end, and cost no more than what is asked for.
void TransferFaultsTest::survivesHostileAnswers()
{
    QFETCH(ScriptedServer::Script, script);
    ScriptedServer const server(script);
    QString const file = m_folder->filePath(QStringLiteral("file"));
    for (QString const& path : {QString(), file}) {
        TransferRequest request = requestFor(server.url(), path);
        request.limits.stalled = 1s;
        request.limits.bytes = 1'000'000;
        std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
        QVERIFY(ends(transfer.get()));
        bool const isGood = transfer->error() == TransferError::None;
        QVERIFY2(transfer->body().size() <= 1'000'000, qPrintable(transfer->errorText()));
        QVERIFY(!isGood || (path.isEmpty() ? transfer->body() : TestFiles::read(file)) == "body");
        QCOMPARE(TestFiles::isThere(file), isGood && !path.isEmpty());
    }
}

int main(int argc, char** argv)
{
    return runTest<TransferFaultsTest>(argc, argv);
}

#include "TransferFaultsTest.moc"
