#include "Probe.h"

#include <LocalNginx.h>
#include <QElapsedTimer>
#include <QHttpMultiPart>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <RunTest.h>
#include <ScriptedServer.h>
#include <TestFiles.h>
#include <memory>
#include <mutex>
#include <network/NetworkUtils.h>

using namespace Softphone;
using namespace std::chrono_literals;

/// What transfers do when all goes well, between a window's thread and a real server.
class TransfersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void downloadsIntoMemory_data();
    void downloadsIntoMemory();
    void speaksHttp2WhereThereIsNoFile();
    void downloadsToFile_data();
    void downloadsToFile();
    void tellsSize_data();
    void tellsSize();
    void uploadsFile();
    void replacesNothingOnTheWay();
    void postsBody();
    void postsForm();
    void sendsHeaders();
    void leavesFramingToTheLibrary();
    void sendsFieldsOfABodyWithABody_data();
    void sendsFieldsOfABodyWithABody();
    void takesTheCallersLogin();
    void takesAnAnswerThatIsNotCoded();
    void logsIn_data();
    void logsIn();
    void followsRedirects_data();
    void followsRedirects();
    void followsRedirectsOverTls();
    void keepsSecretsFromOtherHosts_data();
    void keepsSecretsFromOtherHosts();
    void keepsSecretsOnTheWayBack();
    void goesThroughProxy_data();
    void goesThroughProxy();
    void goesThroughTunnel_data();
    void goesThroughTunnel();
    void namesThePort_data();
    void namesThePort();
    void tellsProgress();
    void tellsPaceAndTimeLeft();
    void tellsNoTimeThatNobodyKnows_data();
    void tellsNoTimeThatNobodyKnows();
    void showsItselfToWindows();

private:
    [[nodiscard]] QString path(QString const& name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<LocalNginx> m_nginx;
    QByteArray m_large = pattern(5'000'000);
    Transfers m_transfers;
};

void TransfersTest::initTestCase()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_nginx = std::make_unique<LocalNginx>();
    QVERIFY2(m_nginx->isRunning(), qPrintable(m_nginx->problem()));
    QVERIFY(m_nginx->addFile(QStringLiteral("small"), "content"));
    QVERIFY(m_nginx->addFile(QStringLiteral("empty"), QByteArray()));
    QVERIFY(m_nginx->addFile(QStringLiteral("large"), m_large));
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.addCaCertificates(m_nginx->certificate());
    QSslConfiguration::setDefaultConfiguration(tls);
}

void TransfersTest::downloadsIntoMemory_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("small") << m_nginx->url(QStringLiteral("/small")) << QByteArray("content");
    QTest::newRow("empty") << m_nginx->url(QStringLiteral("/empty")) << QByteArray();
    QTest::newRow("larger than any buffer") << m_nginx->url(QStringLiteral("/large")) << m_large;
    QTest::newRow("TLS") << m_nginx->secureUrl(QStringLiteral("/large")) << m_large;
}

void TransfersTest::downloadsIntoMemory()
{
    QFETCH(QString, url);
    QFETCH(QByteArray, body);
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(url)));
    QVERIFY(!transfer->isFinished());
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::None);
    QCOMPARE(transfer->errorText(), QString());
    QCOMPARE(transfer->status(), 200);
    QCOMPARE(transfer->body(), body);
    QCOMPARE(transfer->done(), body.size());
    QCOMPARE(transfer->total(), body.size());
    QCOMPARE(transfer->header("content-LENGTH"), QByteArray::number(body.size()));
    QCOMPARE(transfer->header("x-none"), QByteArray());
}

void TransfersTest::speaksHttp2WhereThereIsNoFile()
{
    std::unique_ptr<Transfer> const inMemory(
        m_transfers.download(requestFor(m_nginx->secureUrl(QStringLiteral("/protocol")))));
    QVERIFY(ends(inMemory.get()));
    QCOMPARE(inMemory->body(), QByteArray("HTTP/2.0"));
}

void TransfersTest::downloadsToFile_data()
{
    downloadsIntoMemory_data();
}

void TransfersTest::downloadsToFile()
{
    QFETCH(QString, url);
    QFETCH(QByteArray, body);
    QTemporaryDir const folder;
    QString const file = folder.filePath(QStringLiteral("città"));
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(url, file)));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::None);
    QCOMPARE(transfer->path(), file);
    QCOMPARE(transfer->done(), body.size());
    QCOMPARE(transfer->body(), QByteArray());
    QCOMPARE(TestFiles::read(file), body);
    QCOMPARE(TestFiles::names(folder.path()), QSet<QString>({QStringLiteral("città")}));
}

void TransfersTest::tellsSize_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<qint64>("size");
    QTest::newRow("small") << m_nginx->url(QStringLiteral("/small")) << 7LL;
    QTest::newRow("empty") << m_nginx->url(QStringLiteral("/empty")) << 0LL;
    QTest::newRow("over HTTP/2") << m_nginx->secureUrl(QStringLiteral("/large")) << 5'000'000LL;
}

void TransfersTest::tellsSize()
{
    QFETCH(QString, url);
    QFETCH(qint64, size);
    std::unique_ptr<Transfer> const transfer(m_transfers.size(requestFor(url)));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::None);
    QCOMPARE(transfer->total(), size);
    QCOMPARE(transfer->body(), QByteArray());
}

void TransfersTest::uploadsFile()
{
    QVERIFY(TestFiles::write(path(QStringLiteral("up")), m_large));
    for (QString const& url : {m_nginx->url(QStringLiteral("/upload/plain")),
                               m_nginx->secureUrl(QStringLiteral("/upload/secure"))}) {
        std::unique_ptr<Transfer> const transfer(
            m_transfers.upload(requestFor(url, path(QStringLiteral("up")))));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->error(), TransferError::None);
        QCOMPARE(transfer->status(), 201);
        QCOMPARE(transfer->done(), m_large.size());
        QCOMPARE(transfer->total(), m_large.size());
        QCOMPARE(TestFiles::read(m_nginx->folder() + QUrl(url).path()), m_large);
    }
}

void TransfersTest::replacesNothingOnTheWay()
{
    QString const file = path(QStringLiteral("old"));
    QVERIFY(TestFiles::write(file, "old"));
    std::unique_ptr<Transfer> const transfer(
        m_transfers.download(requestFor(m_nginx->url(QStringLiteral("/slow/large")), file)));
    QTRY_VERIFY(transfer->done() > 300'000);
    QCOMPARE(TestFiles::read(file), QByteArray("old"));
    transfer->cancel();
    QVERIFY(ends(transfer.get()));
    QCOMPARE(TestFiles::read(file), QByteArray("old"));
}

void TransfersTest::postsBody()
{
    QByteArray request;
    {
        ScriptedServer const server([&](ScriptedServer::Connection& connection) {
            request = connection.readRequest();
            connection.send(answerWith("{\"token\":7}"));
        });
        std::unique_ptr<Transfer> const transfer(m_transfers.post(requestFor(server.url()), "user=a"));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->error(), TransferError::None);
        QCOMPARE(transfer->body(), QByteArray("{\"token\":7}"));
    }
    QVERIFY(request.startsWith("POST /file HTTP/1.1\r\n"));
    QCOMPARE(ScriptedServer::field(request, "Content-Type"), QByteArray("application/octet-stream"));
    QVERIFY(request.endsWith("\r\n\r\nuser=a"));
}

void TransfersTest::postsForm()
{
    QByteArray request;
    {
        ScriptedServer const server([&](ScriptedServer::Connection& connection) {
            request = connection.readRequest();
            connection.send(answerWith("thanks"));
        });
        auto* const form = new QHttpMultiPart(QHttpMultiPart::FormDataType);
        QPointer<QHttpMultiPart> const watched(form);
        form->append(NetworkUtils::getHttpTextPart(QStringLiteral("name"), "value"));
        {
            std::unique_ptr<Transfer> const transfer(m_transfers.postForm(requestFor(server.url()), form));
            QVERIFY(ends(transfer.get()));
            QCOMPARE(transfer->error(), TransferError::None);
            QCOMPARE(transfer->body(), QByteArray("thanks"));
        }
        QVERIFY(watched.isNull());
    }
    QVERIFY(ScriptedServer::field(request, "Content-Type").startsWith("multipart/form-data; boundary="));
    QVERIFY2(request.contains("name=\"name\"\r\n\r\nvalue\r\n"), request.constData());
}

void TransfersTest::sendsHeaders()
{
    QByteArray head;
    {
        ScriptedServer const server([&](ScriptedServer::Connection& connection) {
            head = connection.readHead();
            connection.send(answerWith(""));
        });
        TransferRequest request = requestFor(server.url());
        request.headers = {{"X-One", "1"}, {"X-Two", "a"}, {"x-two", "b"}, {"Cookie", "c=d"}};
        std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->error(), TransferError::None);
    }
    QCOMPARE(ScriptedServer::field(head, "X-One"), QByteArray("1"));
    QCOMPARE(ScriptedServer::field(head, "X-Two"), QByteArray("a, b"));
    QCOMPARE(ScriptedServer::field(head, "Cookie"), QByteArray("c=d"));
}

void TransfersTest::leavesFramingToTheLibrary()
{
    QByteArray sent;
    {
        ScriptedServer const server([&](ScriptedServer::Connection& connection) {
            sent = connection.readRequest();
            connection.send(answerWith(""));
        });
        TransferRequest request = requestFor(server.url());
        request.headers = {{"Content-Length", "1"}, {"Transfer-Encoding", "chunked"}};
        std::unique_ptr<Transfer> const transfer(m_transfers.post(request, "a body"));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->error(), TransferError::None);
    }
    QCOMPARE(ScriptedServer::field(sent, "Content-Length"), QByteArray("6"));
    QVERIFY2(!sent.contains("chunked"), sent.constData());
    QVERIFY(sent.endsWith("a body"));
}

void TransfersTest::sendsFieldsOfABodyWithABody_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("isPosted");
    for (char const* const name : {"Content-Type", "content-type"}) {
        QTest::addRow("%s of a post", name) << QByteArray(name) << true;
        QTest::addRow("%s of a download", name) << QByteArray(name) << false;
    }
}

void TransfersTest::sendsFieldsOfABodyWithABody()
{
    QFETCH(QByteArray, name);
    QFETCH(bool, isPosted);
    QByteArray sent;
    {
        ScriptedServer const server([&](ScriptedServer::Connection& connection) {
            sent = connection.readRequest();
            connection.send(answerWith(""));
        });
        TransferRequest request = requestFor(server.url());
        request.headers = {{name, "application/json"}};
        std::unique_ptr<Transfer> const transfer(isPosted ? m_transfers.post(request, "{}")
                                                          : m_transfers.download(request));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->errorText(), QString());
    }
    QCOMPARE(ScriptedServer::field(sent, "Content-Type"),
             isPosted ? QByteArray("application/json") : QByteArray());
}

/// Over that of the address.
void TransfersTest::takesTheCallersLogin()
{
    QByteArray head;
    {
        ScriptedServer const server([&](ScriptedServer::Connection& connection) {
            head = connection.readHead();
            connection.send(answerWith(""));
        });
        QString url = server.url();
        url.insert(7, QStringLiteral("ann:password@"));
        TransferRequest request = requestFor(url);
        request.headers = {{"authorization", "Bearer token"}};
        std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->errorText(), QString());
    }
    QCOMPARE(ScriptedServer::field(head, "Authorization"), QByteArray("Bearer token"));
    QCOMPARE(head.toLower().count("authorization:"), 1);
}

void TransfersTest::takesAnAnswerThatIsNotCoded()
{
    ScriptedServer const server(ScriptedServer::answer(
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: identity\r\nConnection: close\r\n\r\nbody"));
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url())));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->errorText(), QString());
    QCOMPARE(transfer->body(), QByteArray("body"));
}

void TransfersTest::logsIn_data()
{
    QTest::addColumn<QString>("login");
    QTest::addColumn<int>("status");
    QTest::newRow("right") << QStringLiteral("ann:s%40cret@") << 200;
    QTest::newRow("wrong") << QStringLiteral("ann:wrong@") << 401;
    QTest::newRow("none") << QString() << 401;
}

void TransfersTest::logsIn()
{
    QFETCH(QString, login);
    QFETCH(int, status);
    QString url = m_nginx->url(QStringLiteral("/private/small"));
    url.insert(7, login);
    // One after the other with the same object: what one has logged in with must not open the door to the
    // next.
    for (int round = 0; round < 2; ++round) {
        std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(url)));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->status(), status);
        QCOMPARE(transfer->error(), status == 200 ? TransferError::None : TransferError::HttpStatus);
        QVERIFY2(!transfer->errorText().contains(QStringLiteral("wrong")), qPrintable(transfer->errorText()));
    }
}

void TransfersTest::followsRedirects_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("body");
    for (int const status : {301, 302, 303, 307, 308}) {
        bool const keepsPost = status >= 307;
        QTest::addRow("get %d", status)
            << QStringLiteral("get") << status << QByteArray("GET") << QByteArray();
        QTest::addRow("head %d", status)
            << QStringLiteral("head") << status << QByteArray("HEAD") << QByteArray();
        for (char const* post : {"post", "form"}) {
            QTest::addRow("%s %d", post, status)
                << QString::fromLatin1(post) << status << QByteArray(keepsPost ? "POST" : "GET")
                << QByteArray(keepsPost ? "the value" : "");
        }
        QTest::addRow("put %d", status)
            << QStringLiteral("put") << status << QByteArray(status == 303 ? "GET" : "PUT")
            << QByteArray(status == 303 ? "" : "the value");
    }
}

void TransfersTest::followsRedirects()
{
    QFETCH(QString, kind);
    QFETCH(int, status);
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, body);
    QByteArray second;
    {
        ScriptedServer const server([&](ScriptedServer::Connection& connection) {
            QByteArray const request = connection.readRequest();
            if (request.contains(" /file HTTP")) {
                connection.send("HTTP/1.1 " + QByteArray::number(status) +
                                " Moved\r\nLocation: ../other?a=b#c\r\nContent-Length: 5\r\n"
                                "Connection: close\r\n\r\nmoved");
                return;
            }
            second = request;
            connection.send(answerWith(request.startsWith("HEAD") ? "" : "arrived"));
        });
        QVERIFY(TestFiles::write(path(QStringLiteral("value")), "the value"));
        TransferRequest const request = requestFor(server.url(), path(QStringLiteral("value")));
        auto* const form = new QHttpMultiPart(QHttpMultiPart::FormDataType, this);
        form->append(NetworkUtils::getHttpTextPart(QStringLiteral("name"), "the value"));
        std::unique_ptr<Transfer> const transfer(
            kind == QLatin1String("get")    ? m_transfers.download(requestFor(server.url()))
            : kind == QLatin1String("head") ? m_transfers.size(request)
            : kind == QLatin1String("put")  ? m_transfers.upload(request)
            : kind == QLatin1String("post") ? m_transfers.post(requestFor(server.url()), "the value")
                                            : m_transfers.postForm(requestFor(server.url()), form));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->error(), TransferError::None);
        QCOMPARE(transfer->status(), 200);
        QCOMPARE(transfer->body(), kind == QLatin1String("head") ? QByteArray() : QByteArray("arrived"));
    }
    QVERIFY2(second.startsWith(method + " /other?a=b HTTP/1.1\r\n"), second.constData());
    QCOMPARE(second.contains("the value"), !body.isEmpty());
}

void TransfersTest::followsRedirectsOverTls()
{
    std::unique_ptr<Transfer> const transfer(
        m_transfers.download(requestFor(m_nginx->secureUrl(QStringLiteral("/moved")))));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->errorText(), QString());
    QCOMPARE(transfer->body(), QByteArray("content"));
}

void TransfersTest::keepsSecretsFromOtherHosts_data()
{
    QTest::addColumn<QString>("host");
    QTest::addColumn<bool>("isShown");
    QTest::newRow("same server") << QString() << true;
    QTest::newRow("other port") << QStringLiteral("127.0.0.1") << false;
    QTest::newRow("other host") << QStringLiteral("127.0.0.2") << false;
    QTest::newRow("login in the answer") << QStringLiteral("x:y@127.0.0.1") << false;
}

void TransfersTest::keepsSecretsFromOtherHosts()
{
    QFETCH(QString, host);
    QFETCH(bool, isShown);
    QByteArray head;
    ScriptedServer::Script const record = [&](ScriptedServer::Connection& connection) {
        head = connection.readHead();
        connection.send(answerWith("here"));
    };
    auto other = std::make_unique<ScriptedServer>(record);
    QString target = other->url(QStringLiteral("/other"));
    target.replace(QStringLiteral("127.0.0.1"), host);
    {
        ScriptedServer const server([&](ScriptedServer::Connection& connection) {
            QByteArray const request = connection.readHead();
            if (request.contains(" /other ")) {
                head = request;
                connection.send(answerWith("here"));
                return;
            }
            connection.send("HTTP/1.1 302 Found\r\nLocation: " +
                            (host.isEmpty() ? QByteArray("/other") : target.toUtf8()) +
                            "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        });
        QString url = server.url();
        url.insert(7, QStringLiteral("ann:password@"));
        TransferRequest request = requestFor(url);
        request.headers = {{"cookie", "session=1"}, {"X-Harmless", "1"}};
        std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
        QVERIFY(ends(transfer.get()));
        if (host == QLatin1String("127.0.0.2")) {
            // The server listens on one address only.
            QCOMPARE(transfer->error(), TransferError::Refused);
            QVERIFY(transfer->errorText().contains(host));
            return;
        }
        QCOMPARE(transfer->error(), TransferError::None);
    }
    other.reset();
    QCOMPARE(ScriptedServer::field(head, "X-Harmless"), QByteArray("1"));
    QCOMPARE(head.contains("session=1"), isShown);
    QCOMPARE(!ScriptedServer::field(head, "Authorization").isNull(), isShown);
}

/// Who sends a transfer to its first server again may have chosen what it is to do there.
void TransfersTest::keepsSecretsOnTheWayBack()
{
    QByteArray head;
    QString second;
    {
        auto const moved = [](QString const& to) {
            return "HTTP/1.1 302 Found\r\nLocation: " + to.toUtf8() +
                   "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
        };
        ScriptedServer const server([&](ScriptedServer::Connection& connection) {
            QByteArray const request = connection.readHead();
            if (request.contains(" /back ")) {
                head = request;
                connection.send(answerWith("here"));
            } else {
                connection.send(moved(second));
            }
        });
        QString const back = server.url(QStringLiteral("/back"));
        ScriptedServer const other([&](ScriptedServer::Connection& connection) {
            connection.readHead();
            connection.send(moved(back));
        });
        second = other.url();
        QString url = server.url();
        url.insert(7, QStringLiteral("ann:password@"));
        TransferRequest request = requestFor(url);
        request.headers = {{"Cookie", "session=1"}, {"X-Harmless", "1"}};
        std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
        QVERIFY(ends(transfer.get()));
        QCOMPARE(transfer->errorText(), QString());
    }
    QCOMPARE(ScriptedServer::field(head, "X-Harmless"), QByteArray("1"));
    QVERIFY2(ScriptedServer::field(head, "Cookie").isNull(), head.constData());
    QVERIFY2(ScriptedServer::field(head, "Authorization").isNull(), head.constData());
}

void TransfersTest::goesThroughProxy_data()
{
    QTest::addColumn<bool>("isOfApplication");
    QTest::newRow("the manager's") << false;
    QTest::newRow("the application's") << true;
}

/// A proxy that answers itself.
void TransfersTest::goesThroughProxy()
{
    QFETCH(bool, isOfApplication);
    auto const restore = qScopeGuard([] { QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy); });
    QByteArray head;
    {
        ScriptedServer const proxy([&](ScriptedServer::Connection& connection) {
            head = connection.readHead();
            connection.send(answerWith("from the proxy"));
        });
        Transfers transfers;
        QUrl const url(proxy.url());
        QNetworkProxy const way(QNetworkProxy::HttpProxy, url.host(), static_cast<quint16>(url.port()));
        if (isOfApplication) {
            QNetworkProxy::setApplicationProxy(way);
        } else {
            transfers.network()->setProxy(way);
        }
        Transfer* const transfer =
            transfers.download(requestFor(QStringLiteral("http://nowhere.invalid/page")));
        QVERIFY(ends(transfer));
        QCOMPARE(transfer->error(), TransferError::None);
        QCOMPARE(transfer->body(), QByteArray("from the proxy"));
    }
    QVERIFY2(head.startsWith("GET http://nowhere.invalid/page HTTP/1.1\r\n"), head.constData());
}

void TransfersTest::goesThroughTunnel_data()
{
    QTest::addColumn<bool>("wantsLogin");
    QTest::newRow("open to all") << false;
    QTest::newRow("with a login") << true;
}

/// A proxy hears where a secure connection goes and nothing of what it carries.
void TransfersTest::goesThroughTunnel()
{
    QFETCH(bool, wantsLogin);
    QUrl target(m_nginx->secureUrl(QStringLiteral("/private/large")));
    target.setUserInfo(QStringLiteral("ann:s%40cret"));
    QByteArrayList heads;
    std::mutex lock;
    {
        ScriptedServer const proxy([&](ScriptedServer::Connection& connection) {
            QByteArray head = connection.readHead();
            if (wantsLogin && ScriptedServer::field(head, "Proxy-Authorization").isNull()) {
                connection.send("HTTP/1.1 407 Login\r\nProxy-Authenticate: Basic realm=\"a\"\r\n"
                                "Content-Length: 0\r\n\r\n");
                head = connection.readHead();
            }
            {
                std::lock_guard const guard(lock);
                heads.append(head);
            }
            connection.send("HTTP/1.1 200 Connection established\r\n\r\n");
            connection.tunnelTo(static_cast<quint16>(target.port()));
        });
        Transfers transfers;
        QUrl const url(proxy.url());
        QNetworkProxy way(QNetworkProxy::HttpProxy, url.host(), static_cast<quint16>(url.port()));
        if (wantsLogin) {
            way.setUser(QStringLiteral("bob"));
            way.setPassword(QStringLiteral("key"));
        }
        transfers.network()->setProxy(way);
        Transfer* const inFile =
            transfers.download(requestFor(target.toString(), path(QStringLiteral("tunnelled"))));
        QVERIFY(ends(inFile));
        QCOMPARE(inFile->errorText(), QString());
        QCOMPARE(TestFiles::read(inFile->path()), m_large);
        Transfer* const inMemory = transfers.download(requestFor(target.toString()));
        QVERIFY(ends(inMemory));
        QCOMPARE(inMemory->errorText(), QString());
        QCOMPARE(inMemory->body(), m_large);
    }
    QVERIFY(!heads.isEmpty());
    for (QByteArray const& head : heads) {
        QVERIFY2(head.startsWith("CONNECT " + serverOf(target.toString()).toLatin1() + " HTTP/1.1\r\n"),
                 head.constData());
        QVERIFY2(!head.contains("large"), head.constData());
        QVERIFY(ScriptedServer::field(head, "Authorization").isNull());
        QCOMPARE(ScriptedServer::field(head, "Proxy-Authorization"),
                 wantsLogin ? "Basic " + QByteArray("bob:key").toBase64() : QByteArray());
    }
}

void TransfersTest::namesThePort_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("name");
    QTest::newRow("none") << QStringLiteral("ftp://a.example/b") << QStringLiteral("a.example:");
    QTest::newRow("the usual one") << QStringLiteral("http://a.example:80/b") << QStringLiteral("a.example:");
    QTest::newRow("the usual one with TLS")
        << QStringLiteral("https://a.example:443/b") << QStringLiteral("a.example:");
    QTest::newRow("that of plain HTTP with TLS")
        << QStringLiteral("https://a.example:80/b") << QStringLiteral("a.example:80:");
    QTest::newRow("another") << QStringLiteral("http://a.example:8080/b")
                             << QStringLiteral("a.example:8080:");
    QTest::newRow("IPv6") << QStringLiteral("http://[::1]/b") << QStringLiteral("::1:");
    QTest::newRow("IPv6 and a port") << QStringLiteral("http://[::1]:8080/b")
                                     << QStringLiteral("[::1]:8080:");
    QTest::newRow("a login") << QStringLiteral("http://ann:x@a.example:8080/b")
                             << QStringLiteral("a.example:8080:");
}

void TransfersTest::namesThePort()
{
    QFETCH(QString, url);
    QFETCH(QString, name);
    TransferRequest request = requestFor(url);
    request.limits.schemes.clear();
    std::unique_ptr<Transfer> const transfer(m_transfers.download(request));
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->error(), TransferError::SchemeRefused);
    QVERIFY2(transfer->errorText().startsWith(name + QLatin1Char(' ')), qPrintable(transfer->errorText()));
}

void TransfersTest::tellsProgress()
{
    ScriptedServer const server([](ScriptedServer::Connection& connection) {
        connection.readHead();
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 120000\r\n\r\n");
        for (int piece = 0; piece < 120 && connection.pause(10ms); ++piece) {
            connection.send(QByteArray(1000, 'x'));
        }
    });
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url())));
    QElapsedTimer clock;
    clock.start();
    QList<qint64> counts;
    qint64 last = 0;
    qint64 shortestGap = 1000;
    connect(transfer.get(), &Transfer::progress, this, [&](qint64 done, qint64 total) {
        QCOMPARE(total, 120'000);
        qint64 const now = clock.elapsed();
        shortestGap = done < total && !counts.isEmpty() ? std::min(shortestGap, now - last) : shortestGap;
        last = now;
        counts.append(done);
    });
    QVERIFY(ends(transfer.get()));
    QVERIFY2(counts.size() >= 3, qPrintable(QString::number(counts.size())));
    QVERIFY2(counts.size() <= 2 + clock.elapsed() / 100, qPrintable(QString::number(counts.size())));
    QVERIFY(std::is_sorted(counts.cbegin(), counts.cend()));
    QCOMPARE(counts.constLast(), 120'000);
}

void TransfersTest::tellsPaceAndTimeLeft()
{
    std::unique_ptr<Transfer> const transfer(
        m_transfers.download(requestFor(m_nginx->url(QStringLiteral("/slow/large")))));
    QCOMPARE(transfer->remaining(), -1);
    // 5 MB at 256 KiB a second.
    QTRY_VERIFY_WITH_TIMEOUT(transfer->remaining() > 5 && transfer->remaining() < 60, 20'000);
    QVERIFY(transfer->bytesPerSecond() > 0);
    transfer->cancel();
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->bytesPerSecond(), 0.0);
    QCOMPARE(transfer->remaining(), -1);
}

void TransfersTest::tellsNoTimeThatNobodyKnows_data()
{
    QTest::addColumn<QByteArray>("fields");
    QTest::newRow("no length") << QByteArray();
    QTest::newRow("longer than anybody lives") << QByteArray("Content-Length: 9000000000000000000\r\n");
}

void TransfersTest::tellsNoTimeThatNobodyKnows()
{
    QFETCH(QByteArray, fields);
    ScriptedServer const server([=](ScriptedServer::Connection& connection) {
        connection.readHead();
        connection.send("HTTP/1.1 200 OK\r\n" + fields + "\r\n");
        while (connection.send("x") && connection.pause(10ms)) {
        }
    });
    std::unique_ptr<Transfer> const transfer(m_transfers.download(requestFor(server.url())));
    QTRY_VERIFY(transfer->bytesPerSecond() > 0);
    QCOMPARE(transfer->total() < 0, fields.isEmpty());
    QCOMPARE(transfer->remaining(), -1);
}

/// By name, as a window's bindings read it.
void TransfersTest::showsItselfToWindows()
{
    std::unique_ptr<Transfer> const transfer(
        m_transfers.download(requestFor(m_nginx->url(QStringLiteral("/status/404")))));
    QCOMPARE(transfer->property("isFinished").toBool(), false);
    QVERIFY(ends(transfer.get()));
    QCOMPARE(transfer->property("isFinished").toBool(), true);
    QCOMPARE(transfer->property("error").value<TransferError>(), TransferError::HttpStatus);
    QCOMPARE(transfer->property("errorText").toString(),
             serverOf(m_nginx->url({})) + QStringLiteral(" answered 404 Not Found."));
    QCOMPARE(transfer->property("status").toInt(), 404);
    QCOMPARE(transfer->property("body").toByteArray(), QByteArray("status 404"));
    QMetaObject const* const meta = transfer->metaObject();
    for (int i = meta->propertyOffset(); i < meta->propertyCount(); ++i) {
        QVERIFY2(meta->property(i).hasNotifySignal(), meta->property(i).name());
    }
}

int main(int argc, char** argv)
{
    return runTest<TransfersTest>(argc, argv);
}

#include "TransfersTest.moc"
