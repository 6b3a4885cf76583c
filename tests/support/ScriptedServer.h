#pragma once

#include <QByteArray>
#include <QString>
#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

/// A server on a loopback port of its own that does exactly what a test tells it, for what no real server
/// would do. Every connection runs the script on a thread of its own; every wait of a script ends when the
/// peer has gone, when the server is destroyed, or after a minute.
///
/// \code
/// ScriptedServer const server(ScriptedServer::answer("HTTP/1.1 200 OK\r\ncontent-length: 3\r\n\r\nabc"));
/// QCOMPARE(NetworkUtils::getFileSize(server.url()), 0);
/// \endcode
class ScriptedServer
{
public:
    /// One connection, as its script sees it. It is closed when the script returns.
    class Connection
    {
    public:
        Connection(int socket, int stop);
        ~Connection();
        Connection(Connection const&) = delete;
        Connection& operator=(Connection const&) = delete;

        /// Reads one request: the header lines and as much of a body as they announce, asking for the body
        /// where the peer waits to be asked. Shorter when the peer ends the connection.
        QByteArray readRequest();

        /// Reads up to and with the empty line that ends the header lines.
        QByteArray readHead();

        /// Reads what is there, waiting for the first byte; empty at the end of the connection.
        QByteArray readSome();

        /// Whether the peer could be given all of \a bytes.
        bool send(QByteArray const& bytes);

        /// Waits; false when the connection ended meanwhile.
        bool pause(std::chrono::milliseconds duration);

        /// Hands everything on between the peer and the loopback port \a port, until one of them ends.
        void tunnelTo(quint16 port);

        /// Ends the connection as a crashed peer does: what is not yet delivered is lost.
        void reset();

    private:
        bool waitFor(short events, std::chrono::milliseconds limit);
        bool handOn(Connection& to);

        int m_socket;
        int m_stop;
        QByteArray m_ahead;
    };

    using Script = std::function<void(Connection&)>;

    /// The value of the field \a name in the head \a request begins with, as it was sent; null when there is
    /// none. Newer versions of Qt send all names in lower case.
    static QByteArray field(QByteArray const& request, QByteArray const& name);

    explicit ScriptedServer(Script script);
    ~ScriptedServer();
    ScriptedServer(ScriptedServer const&) = delete;
    ScriptedServer& operator=(ScriptedServer const&) = delete;

    /// A script that reads one request, gives \a answer, and closes.
    static Script answer(QByteArray const& answer);

    /// The address of \a path, which begins with a slash, on this server.
    [[nodiscard]] QString url(QString const& path = QStringLiteral("/file")) const;

    /// How many connections were made so far.
    [[nodiscard]] int connections() const { return m_connections; }

private:
    void acceptConnections();

    Script m_script;
    int m_listener = -1;
    int m_stopPipe[2] = {-1, -1};
    quint16 m_port = 0;
    std::atomic<int> m_connections = 0;
    std::vector<std::thread> m_threads;
    std::thread m_acceptor;
};
