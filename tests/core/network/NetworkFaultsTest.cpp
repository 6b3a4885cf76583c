#include <network/NetworkUtils.h>

#include <LocalNginx.h>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <RunTest.h>
#include <ScriptedServer.h>
#include <TestFiles.h>
#include <csignal>
#include <memory>
#include <sys/resource.h>

using namespace std::chrono_literals;

namespace {

constexpr qsizetype mebi = 1024 * 1024;

/// Lets no file of this process grow beyond \a bytes.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        m_signal = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_saved);
        rlimit const limit = {bytes, m_saved.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }

    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_saved);
        std::signal(SIGXFSZ, m_signal);
    }

    FileSizeLimit(FileSizeLimit const&) = delete;
    FileSizeLimit& operator=(FileSizeLimit const&) = delete;

private:
    rlimit m_saved = {};
    void (*m_signal)(int) = nullptr;
};

} // namespace

/// What is left behind when the peer or the disk fails in the middle of a transfer.
class NetworkFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void serverKilledWhileDownloading();
    void serverKilledWhileUploading();
    void connectionResetWhileDownloading();
    void connectionClosedWhileUploading();
    void diskFullWhileDownloading_data();
    void diskFullWhileDownloading();
    void fileCutWhileUploading();
    void fileRemovedWhileDownloading_data();
    void fileRemovedWhileDownloading();
    void thousandCancelledTransfers_data();
    void thousandCancelledTransfers();

private:
    [[nodiscard]] QString path(QString const& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
    std::unique_ptr<LocalNginx> m_nginx;
};

void NetworkFaultsTest::initTestCase()
{
    // A write to a connection that has gone must not be answered with the signal that ends the process.
    std::signal(SIGPIPE, SIG_DFL);
    NetworkUtils::start();
    m_nginx = std::make_unique<LocalNginx>();
    QVERIFY2(m_nginx->isRunning(), qPrintable(m_nginx->problem()));
    QVERIFY(m_nginx->addFile(QStringLiteral("small"), QByteArray(500, 's')));
    QVERIFY(m_nginx->addFile(QStringLiteral("large"), QByteArray(8 * mebi, 'l')));
}

void NetworkFaultsTest::cleanupTestCase()
{
    m_nginx.reset();
    NetworkUtils::stop();
}

void NetworkFaultsTest::serverKilledWhileDownloading()
{
    LocalNginx nginx;
    QVERIFY2(nginx.isRunning(), qPrintable(nginx.problem()));
    QVERIFY(nginx.addFile(QStringLiteral("large"), QByteArray(8 * mebi, 'l')));
    NetworkUtils::Operator op;
    op.progress = [&](long long now, long long) {
        if (now > 0 && nginx.isRunning()) {
            nginx.kill();
        }
    };
    QString const file = path(QStringLiteral("down"));
    NetworkUtils::TransferResult const result =
        NetworkUtils::downloadFile(nginx.url(QStringLiteral("/slow/large")), file, &op);
    QVERIFY(!nginx.isRunning());
    QVERIFY(!result.ok);
    QVERIFY(!result.remoteError);
    QVERIFY(!QFile::exists(file));
}

void NetworkFaultsTest::serverKilledWhileUploading()
{
    LocalNginx nginx;
    QVERIFY2(nginx.isRunning(), qPrintable(nginx.problem()));
    QString const file = path(QStringLiteral("up"));
    QVERIFY(QFile(file).open(QIODevice::WriteOnly) && QFile::resize(file, 256 * mebi));
    NetworkUtils::Operator op;
    op.isDownload = false;
    op.progress = [&](long long now, long long) {
        if (now > mebi && nginx.isRunning()) {
            nginx.kill();
        }
    };
    NetworkUtils::TransferResult const result =
        NetworkUtils::putFile(nginx.url(QStringLiteral("/upload/up")), file, 256 * mebi, &op);
    QVERIFY(!nginx.isRunning());
    QVERIFY(!result.ok);
    QVERIFY(!result.remoteError);
    QVERIFY(!QFile::exists(nginx.folder() + QStringLiteral("/upload/up")));
    QCOMPARE(QFile(file).size(), 256 * mebi);
    QFile::remove(file);
}

void NetworkFaultsTest::connectionResetWhileDownloading()
{
    ScriptedServer const server([](ScriptedServer::Connection& connection) {
        connection.readRequest();
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n" + QByteArray(50'000, 'x'));
        connection.reset();
    });
    QString const file = path(QStringLiteral("reset"));
    NetworkUtils::TransferResult const result = NetworkUtils::downloadFile(server.url(), file, nullptr);
    QVERIFY(!result.ok);
    QVERIFY(!result.remoteError);
    QVERIFY(!QFile::exists(file));
}

void NetworkFaultsTest::connectionClosedWhileUploading()
{
    QString const file = path(QStringLiteral("broken"));
    QVERIFY(TestFiles::write(file, QByteArray(8 * mebi, 'b')));
    for (bool const abruptly : {false, true}) {
        ScriptedServer const server([abruptly](ScriptedServer::Connection& connection) {
            connection.readHead();
            connection.send("HTTP/1.1 100 Continue\r\n\r\n");
            connection.readSome();
            if (abruptly) {
                connection.reset();
            }
        });
        NetworkUtils::TransferResult const result =
            NetworkUtils::putFile(server.url(), file, 8 * mebi, nullptr);
        QVERIFY(!result.ok);
        QVERIFY(!result.remoteError);
    }
    QCOMPARE(QFile(file).size(), 8 * mebi);
}

void NetworkFaultsTest::diskFullWhileDownloading_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("room");
    QTest::newRow("in the middle") << QStringLiteral("large") << 1'000'000;
    QTest::newRow("from the first byte") << QStringLiteral("large") << 0;
    QTest::newRow("noticed when the file is closed") << QStringLiteral("small") << 100;
}

void NetworkFaultsTest::diskFullWhileDownloading()
{
    QFETCH(QString, name);
    QFETCH(int, room);
    QString const address = m_nginx->url(QLatin1Char('/') + name);
    QString const file = path(QStringLiteral("full"));
    NetworkUtils::TransferResult result;
    {
        FileSizeLimit const limit(static_cast<rlim_t>(room));
        result = NetworkUtils::downloadFile(address, file, nullptr);
    }
    QVERIFY(!result.ok);
    QVERIFY(!result.remoteError);
    QVERIFY(!QFile::exists(file));
    QVERIFY(NetworkUtils::downloadFile(address, file, nullptr).ok);
}

void NetworkFaultsTest::fileCutWhileUploading()
{
    QString const file = path(QStringLiteral("cut"));
    QVERIFY(TestFiles::write(file, QByteArray(64 * mebi, 'c')));
    NetworkUtils::Operator op;
    op.isDownload = false;
    op.progress = [&](long long now, long long) {
        if (now > mebi) {
            QFile::resize(file, 10);
        }
    };
    NetworkUtils::TransferResult const result =
        NetworkUtils::putFile(m_nginx->url(QStringLiteral("/upload/cut")), file, 64 * mebi, &op);
    QVERIFY(!result.ok);
    QVERIFY(!result.remoteError);
    QVERIFY(!QFile::exists(m_nginx->folder() + QStringLiteral("/upload/cut")));
}

void NetworkFaultsTest::fileRemovedWhileDownloading_data()
{
    QTest::addColumn<bool>("cancelled");
    // The transfer itself completes, as it does for every program whose file is unlinked.
    QTest::newRow("to its end") << false;
    QTest::newRow("and cancelled") << true;
}

void NetworkFaultsTest::fileRemovedWhileDownloading()
{
    QFETCH(bool, cancelled);
    QString const file = path(QStringLiteral("removed"));
    bool removed = false;
    NetworkUtils::Operator op;
    op.progress = [&](long long now, long long) { removed = removed || (now > 0 && QFile::remove(file)); };
    op.isCancelled = [&] { return cancelled && removed; };
    NetworkUtils::TransferResult const result =
        NetworkUtils::downloadFile(m_nginx->url(QStringLiteral("/large")), file, &op);
    QVERIFY(removed);
    QCOMPARE(result.ok, !cancelled);
    QVERIFY(!result.remoteError);
    QVERIFY(!QFile::exists(file));
}

void NetworkFaultsTest::thousandCancelledTransfers_data()
{
    QTest::addColumn<bool>("atOnce");
    QTest::newRow("at once") << true;
    QTest::newRow("with bytes under way") << false;
}

void NetworkFaultsTest::thousandCancelledTransfers()
{
    QFETCH(bool, atOnce);
    QString const source = m_nginx->folder() + QStringLiteral("/large");
    QString const file = path(QStringLiteral("cancelled"));
    std::vector<char> memory;
    auto const cancelledOnes = [&](int count) {
        for (int transfer = 0; transfer < count; ++transfer) {
            bool cancelled = atOnce;
            NetworkUtils::Operator op;
            op.isDownload = transfer % 3 != 2;
            op.progress = [&](long long now, long long) { cancelled = now > 0; };
            op.isCancelled = [&] { return cancelled; };
            NetworkUtils::TransferResult result;
            switch (transfer % 3) {
            case 0:
                result = NetworkUtils::downloadFile(m_nginx->url(QStringLiteral("/slow/large")), file, &op);
                break;
            case 1:
                result =
                    NetworkUtils::downloadToMemory(m_nginx->url(QStringLiteral("/slow/large")), memory, &op);
                break;
            default:
                result = NetworkUtils::putFile(m_nginx->url(QStringLiteral("/upload/never")), source,
                                               8 * mebi, &op);
            }
            if (result.ok || result.remoteError || QFile::exists(file)) {
                return false;
            }
            memory.clear();
        }
        return true;
    };
    QVERIFY(cancelledOnes(3));
    qsizetype const before = TestFiles::openDescriptors();
    QVERIFY(before > 0);
    QVERIFY(cancelledOnes(1000));
    QCOMPARE(TestFiles::openDescriptors(), before);
}

int main(int argc, char** argv)
{
    return runTest<NetworkFaultsTest>(argc, argv);
}

#include "NetworkFaultsTest.moc"
