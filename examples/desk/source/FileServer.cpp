#include "FileServer.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <algorithm>
#include <array>

namespace {

constexpr int beat = 50; // ms
constexpr qint64 mebibyte = 1024 * 1024;

/// A file as the server gives it.
struct Served
{
    QByteArrayView name;
    qint64 length;
    qint64 atOnce; ///< how much of it a connection carries
    qint64 bytesPerSecond;
    bool closes; ///< whether the connection ends then, or stays silent
};

constexpr std::array files = {
    Served{"handbook.pdf", 16 * mebibyte, 16 * mebibyte, 2 * mebibyte, true},
    Served{"ringtone.wav", 2 * mebibyte, 2 * mebibyte, 8 * mebibyte, true},
    Served{"silent.bin", 8 * mebibyte, mebibyte, 4 * mebibyte, false},
    Served{"cut.bin", 4 * mebibyte, mebibyte, 4 * mebibyte, true},
    Served{"changed.zip", mebibyte, mebibyte, 4 * mebibyte, true},
    Served{"large.iso", 700 * mebibyte, 700 * mebibyte, 4 * mebibyte, true},
};

/// Gives one file to one client, at the pace of the file.
class Answer : public QObject
{
public:
    explicit Answer(QTcpSocket* socket)
        : QObject(socket)
        , m_socket(socket)
    {
        m_pace.setInterval(beat);
        connect(&m_pace, &QTimer::timeout, this, &Answer::send);
        connect(socket, &QTcpSocket::readyRead, this, &Answer::read);
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }

private:
    void read()
    {
        m_request += m_socket->readAll();
        if (m_file == nullptr && m_request.contains("\r\n\r\n")) {
            answer();
        }
    }

    void answer()
    {
        QByteArray const name = m_request.mid(m_request.indexOf('/') + 1).split(' ').constFirst();
        auto const found = std::ranges::find(files, QByteArrayView(name), &Served::name);
        if (found == files.end()) {
            m_socket->write("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
            m_socket->disconnectFromHost();
            return;
        }
        m_file = &*found;
        qint64 const from = wantedFrom();
        m_left = std::min(m_file->atOnce, m_file->length - from);
        m_socket->write((from == 0
                             ? "HTTP/1.1 200 OK"
                             : "HTTP/1.1 206 Partial Content\r\nContent-Range: bytes " +
                                   QByteArray::number(from) + '-' + QByteArray::number(m_file->length - 1) +
                                   '/' + QByteArray::number(m_file->length)) +
                        "\r\nETag: \"1\"\r\nConnection: close\r\nContent-Length: " +
                        QByteArray::number(m_file->length - from) + "\r\n\r\n");
        m_pace.start();
    }

    /// Where in the file the client wants to go on; 0 when it wants all of it.
    [[nodiscard]] qint64 wantedFrom() const
    {
        QByteArray const field = "\r\nrange: bytes=";
        qsizetype const start = m_request.toLower().indexOf(field);
        qint64 const from =
            start < 0 ? 0 : m_request.mid(start + field.size()).split('-').constFirst().toLongLong();
        return std::clamp<qint64>(from, 0, m_file->length - 1);
    }

    void send()
    {
        if (m_socket->bytesToWrite() > mebibyte) {
            return;
        }
        qint64 const length = std::min(m_file->bytesPerSecond * beat / 1000, m_left);
        m_socket->write(QByteArray(length, '.'));
        m_left -= length;
        if (m_left == 0) {
            m_pace.stop();
            if (m_file->closes) {
                m_socket->disconnectFromHost();
            }
        }
    }

    QTcpSocket* m_socket;
    QTimer m_pace;
    QByteArray m_request;
    Served const* m_file = nullptr;
    qint64 m_left = 0;
};

} // namespace

FileServer::FileServer(QObject* parent)
    : QObject(parent)
{
    auto* const server = new QTcpServer;
    connect(server, &QTcpServer::newConnection, server, [server] {
        while (QTcpSocket* const socket = server->nextPendingConnection()) {
            new Answer(socket); // the socket's child
        }
    });
    if (server->listen(QHostAddress::LocalHost)) {
        m_url = QStringLiteral("http://127.0.0.1:%1/").arg(server->serverPort());
    }
    server->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, server, &QObject::deleteLater);
    m_thread.start();
}

FileServer::~FileServer()
{
    m_thread.quit();
    m_thread.wait();
}
