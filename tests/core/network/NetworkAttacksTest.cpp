#include <network/NetworkUtils.h>

#include <HostileAnswers.h>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <RunTest.h>
#include <ScriptedServer.h>
#include <TestFiles.h>
#include <atomic>
#include <chrono>
#include <dlfcn.h>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <netdb.h>
#include <semaphore>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr qint64 kibi = 1024;
constexpr qint64 mebi = 1024 * kibi;

/// A look-up of "hangs.invalid" that goes on until it is let go, or for so long that whoever waits for it
/// shows.
struct HangingLookUp
{
    static constexpr auto patience = 20s;

    std::binary_semaphore release{0};
    std::atomic<bool> begun = false;
    std::atomic<bool> ended = false;

    void run()
    {
        begun = true;
        static_cast<void>(release.try_acquire_for(patience));
        ended = true;
    }
};

/// Handed on to the thread that looks a name up, which may outlive the test.
std::shared_ptr<HangingLookUp>& hangingLookUp()
{
    static std::shared_ptr<HangingLookUp> lookUp;
    return lookUp;
}

QByteArray randomBytes(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator generator(1);
    for (char& byte : bytes) {
        byte = static_cast<char>(generator.generate());
    }
    return bytes;
}

enum class Operation {
    DownloadFile,
    DownloadToMemory,
    GetFileSize,
    PutFile,
    Post,
};

struct NamedOperation
{
    char const* name;
    Operation operation;
};

/// Whether this libcurl unpacks what nobody asked to have packed. Newer ones refuse it, so that nothing is
/// left to be bounded.
bool unpacksUnasked()
{
    static bool const unpacks = [] {
        ScriptedServer const server(HostileAnswers::expanding("a", 0, 1));
        std::vector<char> memory;
        return NetworkUtils::downloadToMemory(server.url(), memory, nullptr).ok;
    }();
    return unpacks;
}

/// Whether this libcurl takes a trailer that is continued over lines. Newer ones refuse the shortest.
bool takesFoldedTrailers()
{
    static bool const takes = [] {
        ScriptedServer const server(HostileAnswers::foldedTrailer(kibi));
        std::vector<char> memory;
        return NetworkUtils::downloadToMemory(server.url(), memory, nullptr).ok;
    }();
    return takes;
}

constexpr NamedOperation operations[] = {
    {"download to a file", Operation::DownloadFile},
    {"download to memory", Operation::DownloadToMemory},
    {"size query", Operation::GetFileSize},
    {"upload", Operation::PutFile},
    {"post", Operation::Post},
};

} // namespace

// libcurl finds this one before the system's.
extern "C" int getaddrinfo(char const* node, char const* service, addrinfo const* hints, addrinfo** result)
{
    if (node != nullptr && qstrcmp(node, "hangs.invalid") == 0) {
        std::shared_ptr<HangingLookUp> const lookUp = hangingLookUp();
        lookUp->run();
        return EAI_NONAME;
    }
    using Function = int(char const*, char const*, addrinfo const*, addrinfo**);
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, "getaddrinfo"))(node, service, hints, result);
}

/// What a server, or whoever chose the address, the path or a header line, might try.
class NetworkAttacksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void boundsWhatAnAnswerExpandsTo_data();
    void boundsWhatAnAnswerExpandsTo();
    void boundsDroppedAnswers_data();
    void boundsDroppedAnswers();
    void refusesWhatExpandsToNothing();
    void cancelsWhileAnAnswerExpands();
    void cancelsWhileADroppedAnswerExpands();
    void boundsHeaderLines_data();
    void boundsHeaderLines();
    void bearsALongChunkExtension();
    void takesAPackedBodyInChunks();

    void dialsNoOtherScheme_data();
    void dialsNoOtherScheme();
    void dialsAllowedSchemes_data();
    void dialsAllowedSchemes();
    void readsALocalFile();

    void cancelsALookUpThatHangs_data();
    void cancelsALookUpThatHangs();
    void cancelsAServerThatSaysNothing_data();
    void cancelsAServerThatSaysNothing();

    void opensNothingButFiles_data();
    void opensNothingButFiles();

    void refusesAddressesThatWouldBeCut_data();
    void refusesAddressesThatWouldBeCut();
    void refusesHeadersOfSeveralLines_data();
    void refusesHeadersOfSeveralLines();

private:
    [[nodiscard]] QString path(QString const& name) const { return m_folder.filePath(name); }

    bool run(Operation operation, QString const& url, NetworkUtils::Operator* op);
    void addOperations();

    QTemporaryDir m_folder;
};

void NetworkAttacksTest::initTestCase()
{
    NetworkUtils::start();
    QVERIFY(TestFiles::write(path(QStringLiteral("source")), "content"));
}

void NetworkAttacksTest::cleanupTestCase()
{
    NetworkUtils::stop();
}

bool NetworkAttacksTest::run(Operation operation, QString const& url, NetworkUtils::Operator* op)
{
    std::vector<char> memory;
    switch (operation) {
    case Operation::DownloadFile:
        return NetworkUtils::downloadFile(url, path(QStringLiteral("target")), op).ok;
    case Operation::DownloadToMemory:
        return NetworkUtils::downloadToMemory(url, memory, op).ok;
    case Operation::GetFileSize:
        return NetworkUtils::getFileSize(url, op) >= 0;
    case Operation::PutFile:
        return NetworkUtils::putFile(url, path(QStringLiteral("source")), 7, op).ok;
    case Operation::Post:
        return NetworkUtils::post(url, {QStringLiteral("A: b")}, QStringLiteral("body"), op);
    }
    return false;
}

void NetworkAttacksTest::addOperations()
{
    QTest::addColumn<Operation>("operation");
    for (NamedOperation const& row : operations) {
        QTest::newRow(row.name) << row.operation;
    }
}

void NetworkAttacksTest::boundsWhatAnAnswerExpandsTo_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<qint64>("zeros");
    QTest::addColumn<int>("layers");
    QTest::addColumn<bool>("ok");
    QTest::newRow("a thousand times, but small") << QByteArray() << 12 * mebi << 1 << true;
    QTest::newRow("sixty times, and large") << randomBytes(512 * kibi) << 30 * mebi << 1 << true;
    QTest::newRow("a thousand times, and large") << QByteArray() << 64 * mebi << 1 << false;
    QTest::newRow("two layers") << QByteArray() << 256 * mebi << 2 << false;
    QTest::newRow("five layers") << QByteArray() << 64 * mebi << 5 << false;
}

void NetworkAttacksTest::boundsWhatAnAnswerExpandsTo()
{
    QFETCH(QByteArray, start);
    QFETCH(qint64, zeros);
    QFETCH(int, layers);
    QFETCH(bool, ok);
    ScriptedServer const server(HostileAnswers::expanding(start, zeros, layers));
    std::vector<char> memory;
    NetworkUtils::TransferResult const toMemory =
        NetworkUtils::downloadToMemory(server.url(), memory, nullptr);
    ok = ok && unpacksUnasked();
    QCOMPARE(toMemory.ok, ok);
    QVERIFY(!toMemory.remoteError);
    QByteArray const got = QByteArray::fromRawData(memory.data(), static_cast<qsizetype>(memory.size()));

    QString const file = path(QStringLiteral("expanded"));
    QCOMPARE(NetworkUtils::downloadFile(server.url(), file, nullptr).ok, ok);
    QCOMPARE(QFile::exists(file), ok);
    if (ok) {
        QVERIFY(got == start + QByteArray(static_cast<qsizetype>(zeros), '\0'));
        QVERIFY(TestFiles::read(file) == got);
    } else {
        QVERIFY(got.size() < 32 * mebi);
    }
}

void NetworkAttacksTest::boundsDroppedAnswers_data()
{
    addOperations();
}

void NetworkAttacksTest::boundsDroppedAnswers()
{
    QFETCH(Operation, operation);
    if (operation == Operation::GetFileSize) {
        ScriptedServer const server(HostileAnswers::expanding(QByteArray(), 64 * mebi, 1));
        // A body after a HEAD is not looked at.
        QVERIFY(run(operation, server.url(), nullptr));
        return;
    }
    ScriptedServer const small(HostileAnswers::expanding(QByteArray(), mebi, 1));
    QCOMPARE(run(operation, small.url(), nullptr), unpacksUnasked());
    ScriptedServer const large(HostileAnswers::expanding(QByteArray(), 64 * mebi, 1));
    QVERIFY(!run(operation, large.url(), nullptr));
}

void NetworkAttacksTest::refusesWhatExpandsToNothing()
{
    ScriptedServer const server(HostileAnswers::expandingToNothing(20'000'000));
    std::vector<char> memory;
    QVERIFY(!NetworkUtils::downloadToMemory(server.url(), memory, nullptr).ok);
    QVERIFY(memory.empty());
}

void NetworkAttacksTest::cancelsWhileAnAnswerExpands()
{
    // All of it is received at once, long before it has been expanded.
    ScriptedServer const server(HostileAnswers::expanding(QByteArray(), 12 * mebi, 1));
    std::vector<char> memory;
    NetworkUtils::Operator op;
    op.isCancelled = [&] { return memory.size() > std::size_t(mebi); };
    NetworkUtils::TransferResult const result = NetworkUtils::downloadToMemory(server.url(), memory, &op);
    QVERIFY(!result.ok);
    QVERIFY(!result.remoteError);
    QVERIFY(memory.size() < std::size_t(2 * mebi));

    memory.clear();
    op.isCancelled = [&] {
        return memory.size() > std::size_t(mebi) ? throw std::bad_function_call() : false;
    };
    QVERIFY(!NetworkUtils::downloadToMemory(server.url(), memory, &op).ok);
    QVERIFY(memory.size() < std::size_t(2 * mebi));
}

void NetworkAttacksTest::cancelsWhileADroppedAnswerExpands()
{
    ScriptedServer const server(HostileAnswers::expanding(QByteArray(), 12 * mebi, 1));
    for (Operation const operation : {Operation::PutFile, Operation::Post}) {
        int asked = 0;
        NetworkUtils::Operator op;
        op.isCancelled = [&] { return ++asked > 100; };
        QVERIFY(!run(operation, server.url(), &op));
        QVERIFY(asked < 110);
    }
}

void NetworkAttacksTest::boundsHeaderLines_data()
{
    QTest::addColumn<HostileAnswers::Script>("script");
    QTest::addColumn<bool>("ok");
    QTest::newRow("headers") << HostileAnswers::manyHeaders(200 * kibi) << true;
    QTest::newRow("too many headers") << HostileAnswers::manyHeaders(2 * mebi) << false;
    QTest::newRow("trailers") << HostileAnswers::manyTrailers(200 * kibi) << true;
    QTest::newRow("too many trailers") << HostileAnswers::manyTrailers(64 * mebi) << false;
    QTest::newRow("a folded trailer") << HostileAnswers::foldedTrailer(16 * kibi) << takesFoldedTrailers();
    QTest::newRow("a trailer folded too often") << HostileAnswers::foldedTrailer(80 * kibi) << false;
    QTest::newRow("one trailer too long") << HostileAnswers::foldedTrailer(16 * mebi) << false;
    QTest::newRow("interim answers") << HostileAnswers::manyInterimAnswers(100 * kibi) << true;
    QTest::newRow("too many interim answers") << HostileAnswers::manyInterimAnswers(16 * mebi) << false;
}

void NetworkAttacksTest::boundsHeaderLines()
{
    QFETCH(HostileAnswers::Script, script);
    QFETCH(bool, ok);
    ScriptedServer const server(script);
    std::vector<char> memory;
    NetworkUtils::TransferResult const result = NetworkUtils::downloadToMemory(server.url(), memory, nullptr);
    QCOMPARE(result.ok, ok);
    QVERIFY(!result.remoteError);
    QCOMPARE(run(Operation::Post, server.url(), nullptr), ok);
}

void NetworkAttacksTest::bearsALongChunkExtension()
{
    ScriptedServer const server(HostileAnswers::longChunkExtension(8 * mebi));
    std::vector<char> memory;
    QVERIFY(NetworkUtils::downloadToMemory(server.url(), memory, nullptr).ok);
    QCOMPARE(memory, (std::vector<char>{'b', 'o', 'd', 'y'}));
}

void NetworkAttacksTest::takesAPackedBodyInChunks()
{
    constexpr char packed[] = "\x1f\x8b\x08\0\0\0\0\0\x02\x03\x4b\xca\x4f\xa9\x04\0\xb2\x0b\xa8\xdb\x04\0\0";
    ScriptedServer const server(ScriptedServer::answer(
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: gzip, chunked\r\nConnection: close\r\n\r\n18\r\n" +
        QByteArray(packed, sizeof packed) + "\r\n0\r\n\r\n"));
    std::vector<char> memory;
    QCOMPARE(NetworkUtils::downloadToMemory(server.url(), memory, nullptr).ok, unpacksUnasked());
    QCOMPARE(memory, unpacksUnasked() ? (std::vector<char>{'b', 'o', 'd', 'y'}) : std::vector<char>());
}

void NetworkAttacksTest::dialsNoOtherScheme_data()
{
    QTest::addColumn<QString>("scheme");
    for (char const* scheme : {"dict", "gopher", "gophers", "imap", "imaps", "ldap", "ldaps",  "mqtt",
                               "pop3", "pop3s",  "rtmp",    "rtsp", "scp",   "sftp", "smb",    "smbs",
                               "smtp", "smtps",  "telnet",  "tftp", "ws",    "wss",  "unknown"}) {
        QTest::newRow(scheme) << QString::fromLatin1(scheme);
    }
}

void NetworkAttacksTest::dialsNoOtherScheme()
{
    QFETCH(QString, scheme);
    ScriptedServer const server(ScriptedServer::answer("answer\r\n"));
    QString const url = server.url().replace(QStringLiteral("http:"), scheme + QLatin1Char(':'));
    for (NamedOperation const& row : operations) {
        QVERIFY2(!run(row.operation, url, nullptr), row.name);
    }
    QCOMPARE(server.connections(), 0);
}

void NetworkAttacksTest::dialsAllowedSchemes_data()
{
    QTest::addColumn<QString>("scheme");
    for (char const* scheme : {"http", "HTTP", "https", "ftp", "ftps"}) {
        QTest::newRow(scheme) << QString::fromLatin1(scheme);
    }
}

void NetworkAttacksTest::dialsAllowedSchemes()
{
    QFETCH(QString, scheme);
    // Nobody is let in; what counts is the knock.
    ScriptedServer const server([](ScriptedServer::Connection&) {});
    QString const url = server.url().replace(QStringLiteral("http:"), scheme + QLatin1Char(':'));
    int knocks = 0;
    for (NamedOperation const& row : operations) {
        QVERIFY2(!run(row.operation, url, nullptr), row.name);
        QVERIFY2(server.connections() > std::exchange(knocks, server.connections()), row.name);
    }
}

void NetworkAttacksTest::readsALocalFile()
{
    QString const url = QStringLiteral("file://") + path(QStringLiteral("source"));
    std::vector<char> memory;
    QVERIFY(NetworkUtils::downloadToMemory(url, memory, nullptr).ok);
    QCOMPARE(QByteArray(memory.data(), static_cast<qsizetype>(memory.size())), QByteArray("content"));
    QCOMPARE(NetworkUtils::getFileSize(url), 7);
}

void NetworkAttacksTest::cancelsALookUpThatHangs_data()
{
    addOperations();
}

void NetworkAttacksTest::cancelsALookUpThatHangs()
{
    QFETCH(Operation, operation);
    auto const lookUp = std::make_shared<HangingLookUp>();
    hangingLookUp() = lookUp;
    NetworkUtils::Operator op;
    op.isCancelled = [&] { return lookUp->begun.load(); };
    QVERIFY(!run(operation, QStringLiteral("http://hangs.invalid/"), &op));
    QVERIFY(lookUp->begun);
    QVERIFY(!lookUp->ended);
    lookUp->release.release();
    QTRY_VERIFY_WITH_TIMEOUT(lookUp->ended, 30'000);
}

void NetworkAttacksTest::cancelsAServerThatSaysNothing_data()
{
    addOperations();
}

void NetworkAttacksTest::cancelsAServerThatSaysNothing()
{
    QFETCH(Operation, operation);
    ScriptedServer const server(HostileAnswers::silence());
    NetworkUtils::Operator op;
    op.isCancelled = [&] { return server.connections() > 0; };
    QVERIFY(!run(operation, server.url(), &op));
    QCOMPARE(server.connections(), 1);
}

void NetworkAttacksTest::opensNothingButFiles_data()
{
    QTest::addColumn<QString>("file");
    QString const pipe = path(QStringLiteral("pipe"));
    ::mkfifo(QFile::encodeName(pipe).constData(), 0600);
    TestFiles::link(pipe, path(QStringLiteral("link to a pipe")));
    TestFiles::link(QStringLiteral("/dev/null"), path(QStringLiteral("link to a device")));
    QTest::newRow("pipe") << pipe;
    QTest::newRow("link to a pipe") << path(QStringLiteral("link to a pipe"));
    QTest::newRow("device") << QStringLiteral("/dev/null");
    QTest::newRow("link to a device") << path(QStringLiteral("link to a device"));
    QTest::newRow("folder") << m_folder.path();
}

void NetworkAttacksTest::opensNothingButFiles()
{
    QFETCH(QString, file);
    ScriptedServer const server(ScriptedServer::answer("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nbody"));
    // With both ends of the pipe here, opening it waits for nobody.
    int const ends = ::open(QFile::encodeName(path(QStringLiteral("pipe"))).constData(), O_RDWR | O_NONBLOCK);
    QVERIFY(ends >= 0);
    NetworkUtils::TransferResult const down = NetworkUtils::downloadFile(server.url(), file, nullptr);
    NetworkUtils::TransferResult const up = NetworkUtils::putFile(server.url(), file, 0, nullptr);
    ::close(ends);
    for (NetworkUtils::TransferResult const& result : {down, up}) {
        QVERIFY(!result.ok);
        QVERIFY(!result.remoteError);
    }
    QCOMPARE(server.connections(), 0);
    QVERIFY(TestFiles::isThere(file));
}

void NetworkAttacksTest::refusesAddressesThatWouldBeCut_data()
{
    addOperations();
}

void NetworkAttacksTest::refusesAddressesThatWouldBeCut()
{
    QFETCH(Operation, operation);
    ScriptedServer const server(ScriptedServer::answer("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nbody"));
    QString const target = path(QStringLiteral("target"));
    QVERIFY(TestFiles::write(target, "before"));
    QVERIFY(!run(operation, server.url() + QChar(QChar::Null) + QStringLiteral("off"), nullptr));
    QCOMPARE(TestFiles::read(target), QByteArray("before"));
    QVERIFY(!run(operation, server.url(QStringLiteral("/a\r\nX: y")), nullptr));
    QCOMPARE(server.connections(), 0);
}

void NetworkAttacksTest::refusesHeadersOfSeveralLines_data()
{
    QTest::addColumn<QString>("header");
    QTest::newRow("NUL") << QStringLiteral("X: a") + QChar(QChar::Null) + QStringLiteral("b");
    QTest::newRow("line feed") << QStringLiteral("X: a\nY: b");
    QTest::newRow("carriage return") << QStringLiteral("X: a\rY: b");
    QTest::newRow("a whole second request") << QStringLiteral("X: a\r\n\r\nGET /other HTTP/1.1\r\nHost: b");
    QTest::newRow("line break at the end") << QStringLiteral("X: a\r\n");
}

void NetworkAttacksTest::refusesHeadersOfSeveralLines()
{
    QFETCH(QString, header);
    ScriptedServer const server(ScriptedServer::answer("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"));
    QVERIFY(!NetworkUtils::post(server.url(), {QStringLiteral("A: b"), header}, QStringLiteral("body")));
    QCOMPARE(server.connections(), 0);
}

int main(int argc, char** argv)
{
    return runTest<NetworkAttacksTest>(argc, argv);
}

#include "NetworkAttacksTest.moc"
