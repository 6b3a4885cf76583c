#include "ScriptedServer.h"

#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr auto longestWait = 60s;

} // namespace

ScriptedServer::Connection::Connection(int socket, int stop)
    : m_socket(socket)
    , m_stop(stop)
{
}

ScriptedServer::Connection::~Connection()
{
    close(m_socket);
}

bool ScriptedServer::Connection::waitFor(short events, std::chrono::milliseconds limit)
{
    pollfd sockets[] = {{m_socket, events, 0}, {m_stop, POLLIN, 0}};
    int ready = 0;
    do {
        ready = poll(sockets, 2, static_cast<int>(limit.count()));
    } while (ready < 0 && errno == EINTR);
    return ready > 0 && sockets[0].revents != 0 && sockets[1].revents == 0;
}

QByteArray ScriptedServer::Connection::readSome()
{
    if (!m_ahead.isEmpty()) {
        return std::exchange(m_ahead, QByteArray());
    }
    if (!waitFor(POLLIN, longestWait)) {
        return QByteArray();
    }
    QByteArray buffer(64 * 1024, Qt::Uninitialized);
    auto const got = recv(m_socket, buffer.data(), static_cast<std::size_t>(buffer.size()), 0);
    buffer.truncate(std::max<qsizetype>(got, 0));
    return buffer;
}

QByteArray ScriptedServer::Connection::readHead()
{
    QByteArray head;
    qsizetype end = -1;
    while ((end = head.indexOf("\r\n\r\n")) < 0) {
        QByteArray const more = readSome();
        if (more.isEmpty()) {
            return head;
        }
        head += more;
    }
    m_ahead = head.mid(end + 4);
    head.truncate(end + 4);
    return head;
}

QByteArray ScriptedServer::Connection::readRequest()
{
    QByteArray request = readHead();
    qsizetype const whole = request.size() + field(request, "Content-Length").toLongLong();
    if (request.contains("Expect: 100-continue")) {
        send("HTTP/1.1 100 Continue\r\n\r\n");
    }
    while (request.size() < whole) {
        QByteArray const more = readSome();
        if (more.isEmpty()) {
            break;
        }
        request += more;
    }
    return request;
}

bool ScriptedServer::Connection::send(QByteArray const& bytes)
{
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        if (!waitFor(POLLOUT, longestWait)) {
            return false;
        }
        auto const count = ::send(m_socket, bytes.constData() + sent,
                                  static_cast<std::size_t>(bytes.size() - sent), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno != EAGAIN && errno != EINTR) {
            return false;
        }
        sent += std::max<qsizetype>(count, 0);
    }
    return true;
}

bool ScriptedServer::Connection::pause(std::chrono::milliseconds duration)
{
    pollfd sockets[] = {{m_socket, POLLRDHUP, 0}, {m_stop, POLLIN, 0}};
    return poll(sockets, 2, static_cast<int>(duration.count())) == 0;
}

void ScriptedServer::Connection::tunnelTo(quint16 port)
{
    Connection there(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), m_stop);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    if (connect(there.m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        return;
    }
    bool isOpen = true;
    while (isOpen) {
        pollfd ends[] = {{m_socket, POLLIN, 0}, {there.m_socket, POLLIN, 0}, {m_stop, POLLIN, 0}};
        isOpen = poll(ends, 3, static_cast<int>(std::chrono::milliseconds(longestWait).count())) > 0 &&
                 ends[2].revents == 0 && (ends[0].revents == 0 || handOn(there)) &&
                 (ends[1].revents == 0 || there.handOn(*this));
    }
}

bool ScriptedServer::Connection::handOn(Connection& to)
{
    QByteArray const bytes = readSome();
    return !bytes.isEmpty() && to.send(bytes);
}

void ScriptedServer::Connection::reset()
{
    linger const atOnce = {1, 0};
    setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

ScriptedServer::ScriptedServer(Script script)
    : m_script(std::move(script))
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    socklen_t length = sizeof address;
    m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (m_listener < 0 || bind(m_listener, generic, length) != 0 || listen(m_listener, SOMAXCONN) != 0 ||
        getsockname(m_listener, generic, &length) != 0 || pipe2(m_stopPipe, O_CLOEXEC) != 0) {
        qFatal("No server on loopback");
    }
    m_port = ntohs(address.sin_port);
    m_acceptor = std::thread([this] { acceptConnections(); });
}

ScriptedServer::~ScriptedServer()
{
    // Nobody reads the pipe, so the one byte wakes every waiting thread.
    static_cast<void>(!write(m_stopPipe[1], "", 1));
    m_acceptor.join();
    for (std::thread& thread : m_threads) {
        thread.join();
    }
    close(m_listener);
    close(m_stopPipe[0]);
    close(m_stopPipe[1]);
}

void ScriptedServer::acceptConnections()
{
    for (;;) {
        pollfd sockets[] = {{m_listener, POLLIN, 0}, {m_stopPipe[0], POLLIN, 0}};
        poll(sockets, 2, -1);
        if (sockets[1].revents != 0) {
            return;
        }
        int const socket = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket >= 0) {
            ++m_connections;
            m_threads.emplace_back([this, socket] {
                Connection connection(socket, m_stopPipe[0]);
                m_script(connection);
            });
        }
    }
}

QByteArray ScriptedServer::field(QByteArray const& request, QByteArray const& name)
{
    QByteArray const head = request.first(std::max<qsizetype>(request.indexOf("\r\n\r\n"), 0)) + "\r\n";
    QByteArray const line = "\r\n" + name.toLower() + ':';
    qsizetype const found = head.toLower().indexOf(line);
    if (found < 0) {
        return QByteArray();
    }
    qsizetype const begin = found + line.size();
    return head.mid(begin, head.indexOf('\r', begin) - begin).trimmed();
}

ScriptedServer::Script ScriptedServer::answer(QByteArray const& answer)
{
    return [answer](Connection& connection) {
        connection.readRequest();
        connection.send(answer);
    };
}

QString ScriptedServer::url(QString const& path) const
{
    return QStringLiteral("http://127.0.0.1:%1%2").arg(QString::number(m_port), path);
}
