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
    qint64 length; ///< what is promised
    qint64 sent;   ///< where it ends
    qint64 bytesPerSecond;
    bool closes; ///< whether the connection ends then, or stays silent
};

constexpr std::array files = {
    Served{"handbook.pdf", 16 * mebibyte, 16 * mebibyte, 4 * mebibyte, true},
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
        m_socket->write("HTTP/1.1 200 OK\r\nETag: \"1\"\r\nConnection: close\r\nContent-Length: " +
                        QByteArray::number(m_file->length) + "\r\n\r\n");
        m_pace.start();
    }

    void send()
    {
        if (m_socket->bytesToWrite() > mebibyte) {
            return;
        }
        qint64 const length = std::min(m_file->bytesPerSecond * beat / 1000, m_file->sent - m_sent);
        m_socket->write(QByteArray(length, '.'));
        m_sent += length;
        if (m_sent == m_file->sent) {
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
    qint64 m_sent = 0;
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
