#pragma once

#include <QHostAddress>
#include <QObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>
#include <QtQml/qqml.h>

/// Answers each request on a free port of this machine: what is posted with the same text, anything else
/// with "caffè". What is asked for below "/moved" has moved, what is asked for below "/silent" has no answer.
class TinyServer : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QUrl url READ url CONSTANT)
    Q_PROPERTY(QUrl movedUrl READ movedUrl CONSTANT)
    Q_PROPERTY(QUrl silentUrl READ silentUrl CONSTANT)

public:
    explicit TinyServer(QObject* parent = nullptr)
        : QObject(parent)
    {
        connect(&m_server, &QTcpServer::newConnection, this, &TinyServer::serve);
        m_server.listen(QHostAddress::LocalHost);
    }

    [[nodiscard]] QUrl url() const { return address(QStringLiteral("menu")); }
    [[nodiscard]] QUrl movedUrl() const { return address(QStringLiteral("moved")); }
    [[nodiscard]] QUrl silentUrl() const { return address(QStringLiteral("silent")); }

private:
    [[nodiscard]] QUrl address(QString const& path) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1/%2").arg(m_server.serverPort()).arg(path));
    }

    void serve()
    {
        QTcpSocket* const client = m_server.nextPendingConnection();
        connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
        connect(client, &QTcpSocket::readyRead, client, [client] { answer(client); });
    }

    static void answer(QTcpSocket* client)
    {
        QByteArray const request = client->peek(client->bytesAvailable());
        qsizetype const head = request.indexOf("\r\n\r\n");
        QByteArray const wanted = "content-length: ";
        qsizetype const field = request.toLower().indexOf(wanted);
        qsizetype const end = request.indexOf("\r\n", field);
        qsizetype const length =
            field < 0 ? 0 : request.mid(field + wanted.size(), end - field - wanted.size()).toLongLong();
        if (head < 0 || request.size() < head + 4 + length) {
            return;
        }
        client->readAll();
        if (request.startsWith("GET /silent")) {
            return;
        }
        if (request.startsWith("GET /moved")) {
            client->write(
                "HTTP/1.1 302 Found\r\nConnection: close\r\nLocation: /menu\r\nContent-Length: 0\r\n\r\n");
            client->disconnectFromHost();
            return;
        }
        QByteArray const body = length > 0 ? request.mid(head + 4, length) : QByteArray("caff\xc3\xa8");
        client->write("HTTP/1.1 200 OK\r\nConnection: close\r\nX-Shelf: upper\r\nContent-Length: " +
                      QByteArray::number(body.size()) + "\r\n\r\n" +
                      (request.startsWith("HEAD") ? QByteArray() : body));
        client->disconnectFromHost();
    }

    QTcpServer m_server;
};
