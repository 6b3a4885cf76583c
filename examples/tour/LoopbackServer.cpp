#include "LoopbackServer.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <chrono>
#include <memory>

namespace {

constexpr int pollInterval = 20; // ms
constexpr int patience = 5'000;  // ms

/// Reads a request up to the empty line after its header and answers with \a document; a HEAD request gets
/// the header alone.
void answer(QTcpSocket& socket, QByteArray const& document)
{
    QByteArray request;
    while (!request.contains("\r\n\r\n")) {
        if (!socket.waitForReadyRead(patience)) {
            return;
        }
        request += socket.readAll();
    }
    socket.write("HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\nContent-Length: " +
                 QByteArray::number(document.size()) + "\r\nConnection: close\r\n\r\n");
    if (!request.startsWith("HEAD ")) {
        socket.write(document);
    }
    socket.disconnectFromHost();
    if (socket.state() != QAbstractSocket::UnconnectedState) {
        socket.waitForDisconnected(patience);
    }
}

} // namespace

LoopbackServer::LoopbackServer(QByteArray document)
    : m_document(std::move(document))
{
}

LoopbackServer::~LoopbackServer()
{
    stop();
}

bool LoopbackServer::start()
{
    m_stopping = false;
    m_thread = std::thread([this] { serve(); });
    for (int waited = 0; !m_running && waited < patience; waited += pollInterval) {
        std::this_thread::sleep_for(std::chrono::milliseconds(pollInterval));
    }
    return m_running;
}

void LoopbackServer::stop()
{
    m_stopping = true;
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

QString LoopbackServer::url() const
{
    return QStringLiteral("http://127.0.0.1:%1/greeting.wav").arg(m_port.load());
}

void LoopbackServer::serve()
{
    QTcpServer server;
    if (!server.listen(QHostAddress::LocalHost, m_port)) {
        return;
    }
    m_port = server.serverPort();
    m_running = true;
    while (!m_stopping) {
        if (server.waitForNewConnection(pollInterval)) {
            std::unique_ptr<QTcpSocket> const socket(server.nextPendingConnection());
            answer(*socket, m_document);
        }
    }
    m_running = false;
}
