#include "SpcoreProcess.h"
#include "Terminal.h"

#include <LocalNginx.h>
#include <QFileInfo>
#include <QTemporaryDir>
#include <RunTest.h>
#include <ScriptedServer.h>
#include <TestFiles.h>
#include <csignal>
#include <memory>
#include <sys/types.h>

/// The commands that transfer files, run as a user runs them.
class NetCommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void getsAFile();
    void printsASize();
    void putsAFile();
    void postsStandardInput();
    void postsWithHeaders();
    void failsWithOneLine_data();
    void failsWithOneLine();
    void refusesABodyThatIsNoText_data();
    void refusesABodyThatIsNoText();
    void cleansUpWhenInterrupted_data();
    void cleansUpWhenInterrupted();
    void drawsProgressOnATerminal();

private:
    [[nodiscard]] QString path(QString const& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
    std::unique_ptr<LocalNginx> m_nginx;
};

void NetCommandsTest::initTestCase()
{
    m_nginx = std::make_unique<LocalNginx>();
    QVERIFY2(m_nginx->isRunning(), qPrintable(m_nginx->problem()));
    QVERIFY(m_nginx->addFile(QStringLiteral("small"), "content"));
    QVERIFY(m_nginx->addFile(QStringLiteral("large"), QByteArray(32 * 1024 * 1024, 'x')));
}

void NetCommandsTest::getsAFile()
{
    QString const file = path(QStringLiteral("città"));
    SpcoreResult const result = runSpcore(
        {QStringLiteral("net"), QStringLiteral("get"), m_nginx->url(QStringLiteral("/small")), file});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(result.err, QByteArray());
    QCOMPARE(TestFiles::read(file), QByteArray("content"));
}

void NetCommandsTest::printsASize()
{
    SpcoreResult const result =
        runSpcore({QStringLiteral("net"), QStringLiteral("size"), m_nginx->url(QStringLiteral("/large"))});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, QByteArray("33554432\n"));
    QCOMPARE(result.err, QByteArray());
}

void NetCommandsTest::putsAFile()
{
    QString const file = path(QStringLiteral("up"));
    QVERIFY(TestFiles::write(file, "to the server"));
    SpcoreResult const result = runSpcore({QStringLiteral("net"), QStringLiteral("put"), file,
                                           m_nginx->url(QStringLiteral("/upload/from-spcore"))});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(result.err, QByteArray());
    QCOMPARE(TestFiles::read(m_nginx->folder() + QStringLiteral("/upload/from-spcore")),
             QByteArray("to the server"));
}

void NetCommandsTest::postsStandardInput()
{
    QByteArray request;
    SpcoreResult result;
    {
        ScriptedServer const server([&](ScriptedServer::Connection& connection) {
            request = connection.readRequest();
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nthanks");
        });
        result = runSpcore({QStringLiteral("net"), QStringLiteral("post"), server.url()}, "{\"a\":\"è\"}");
    }
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, QByteArray());
    QVERIFY(request.startsWith("POST /file HTTP/1.1\r\n"));
    QVERIFY(request.contains("\r\nContent-Type: application/json\r\n"));
    QVERIFY(request.endsWith("\r\n\r\n{\"a\":\"è\"}"));
}

void NetCommandsTest::postsWithHeaders()
{
    QByteArray request;
    SpcoreResult result;
    {
        ScriptedServer const server([&](ScriptedServer::Connection& connection) {
            request = connection.readRequest();
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
        });
        result = runSpcore({QStringLiteral("net"), QStringLiteral("post"), QStringLiteral("--header"),
                            QStringLiteral("Content-Type: text/plain"), QStringLiteral("--header"),
                            QStringLiteral("X-A: b"), server.url()},
                           "hello");
    }
    QCOMPARE(result.exitCode, 0);
    QVERIFY(request.contains("\r\nContent-Type: text/plain\r\nX-A: b\r\n"));
    QVERIFY(!request.contains("application/json"));
}

void NetCommandsTest::failsWithOneLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("message");
    QString const nobody = QStringLiteral("http://127.0.0.1:1/");
    QString const file = path(QStringLiteral("failed"));
    QString const missing = path(QStringLiteral("no/such/file"));
    QString const forbidden = m_nginx->url(QStringLiteral("/status/403"));
    QString const readable = m_nginx->folder() + QStringLiteral("/small");
    QTest::newRow("get from nobody") << QStringList{QStringLiteral("get"), nobody, file} << 1
                                     << QStringLiteral("cannot download");
    QTest::newRow("get into a missing folder")
        << QStringList{QStringLiteral("get"), m_nginx->url(QStringLiteral("/small")), missing} << 1
        << QStringLiteral("no/such/file");
    QTest::newRow("get without a file")
        << QStringList{QStringLiteral("get"), nobody} << 2 << QStringLiteral("wrong number of arguments");
    QTest::newRow("size of nobody's")
        << QStringList{QStringLiteral("size"), nobody} << 1 << QStringLiteral("cannot ask for the size");
    QTest::newRow("size of nothing") << QStringList{QStringLiteral("size")} << 2
                                     << QStringLiteral("wrong number of arguments");
    QTest::newRow("put of a missing file")
        << QStringList{QStringLiteral("put"), missing, nobody} << 1 << QStringLiteral("cannot read");
    QTest::newRow("put of a folder") << QStringList{QStringLiteral("put"), m_folder.path(), nobody} << 1
                                     << QStringLiteral("cannot read");
    QTest::newRow("put to nobody") << QStringList{QStringLiteral("put"), readable, nobody} << 1
                                   << QStringLiteral("cannot upload");
    QTest::newRow("put where it is forbidden") << QStringList{QStringLiteral("put"), readable, forbidden} << 1
                                               << QStringLiteral("the server refused");
    QTest::newRow("post to nobody") << QStringList{QStringLiteral("post"), nobody} << 1
                                    << QStringLiteral("cannot post");
    QTest::newRow("message with a line break and a place marker")
        << QStringList{QStringLiteral("size"), QStringLiteral("http://127.0.0.1:1/%1\nb")} << 1
        << QStringLiteral("http://127.0.0.1:1/%1 b");
}

void NetCommandsTest::failsWithOneLine()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, message);
    SpcoreResult const result = runSpcore(QStringList(QStringLiteral("net")) + arguments);
    QVERIFY2(result.failedWithOneLine(exitCode), result.err.constData());
    QVERIFY2(QString::fromUtf8(result.err).contains(message), result.err.constData());
    QVERIFY(!QFile::exists(path(QStringLiteral("failed"))));
}

void NetCommandsTest::refusesABodyThatIsNoText_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("not UTF-8") << QByteArray("caf\xe9");
    QTest::newRow("U+0000") << QByteArray("a\0b", 3);
}

void NetCommandsTest::refusesABodyThatIsNoText()
{
    QFETCH(QByteArray, body);
    ScriptedServer const server(ScriptedServer::answer("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"));
    SpcoreResult const result =
        runSpcore({QStringLiteral("net"), QStringLiteral("post"), server.url()}, body);
    QVERIFY2(result.failedWithOneLine(1), result.err.constData());
    QCOMPARE(server.connections(), 0);
}

void NetCommandsTest::cleansUpWhenInterrupted_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("Ctrl-C") << SIGINT;
    QTest::newRow("asked to end") << SIGTERM;
}

void NetCommandsTest::cleansUpWhenInterrupted()
{
    QFETCH(int, signal);
    QString const file = path(QStringLiteral("interrupted"));
    QProcess process;
    process.start(QStringLiteral(SPCORE_PROGRAM), {QStringLiteral("net"), QStringLiteral("get"),
                                                   m_nginx->url(QStringLiteral("/slow/large")), file});
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(file).size() > 0, 30'000);
    QCOMPARE(kill(static_cast<pid_t>(process.processId()), signal), 0);
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 1);
    QCOMPARE(process.readAllStandardError(), QByteArray("spcore: cancelled\n"));
    QVERIFY(!QFile::exists(file));
}

void NetCommandsTest::drawsProgressOnATerminal()
{
    Terminal const terminal;
    QVERIFY(terminal.isOpen());
    QProcess process;
    process.setStandardErrorFile(terminal.name());
    process.start(QStringLiteral(SPCORE_PROGRAM),
                  {QStringLiteral("net"), QStringLiteral("get"), m_nginx->url(QStringLiteral("/small")),
                   path(QStringLiteral("shown"))});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(process.readAllStandardOutput(), QByteArray());
    QByteArray const drawn = terminal.read();
    QVERIFY2(drawn.contains("get [########################################] 100%"), drawn.constData());
    QVERIFY(drawn.endsWith("\r\n"));
}

int main(int argc, char** argv)
{
    return runTest<NetCommandsTest>(argc, argv);
}

#include "NetCommandsTest.moc"
