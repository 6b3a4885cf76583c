#include <network/NetworkUtils.h>

#include <ChildProcess.h>
#include <RunTest.h>
#include <ScriptedServer.h>

/// A server decides how much a download into memory asks for: more than there is fails the transfer and
/// nothing else.
class NetworkShortOfMemoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void downloadThatNeverEnds();
};

void NetworkShortOfMemoryTest::downloadThatNeverEnds()
{
    ScriptedServer const server([](ScriptedServer::Connection& connection) {
        connection.readRequest();
        bool open = connection.send("HTTP/1.1 200 OK\r\n\r\n");
        QByteArray const bytes(1024 * 1024, 'x');
        while (open) {
            open = connection.send(bytes);
        }
    });
    constexpr rlim_t limit = 1ULL << 30U;
    QCOMPARE(inChildProcess([&] {
                 if (!limitResource(RLIMIT_AS, limit)) {
                     return 1;
                 }
                 std::vector<char> memory;
                 NetworkUtils::TransferResult const result =
                     NetworkUtils::downloadToMemory(server.url(), memory, nullptr);
                 if (result.ok || result.remoteError) {
                     return 2;
                 }
                 return memory.size() > 1024 * 1024 && memory.size() < limit && memory.back() == 'x' ? 0 : 3;
             }),
             0);
}

int main(int argc, char** argv)
{
    return runTest<NetworkShortOfMemoryTest>(argc, argv);
}

#include "NetworkShortOfMemoryTest.moc"
