#pragma once

#include <QHostAddress>
#include <QObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>
#include <QtQml/qqml.h>

/// Answers each request on a free port of this machine: what is posted with the same text, anything else
/// with "caffè".
class TinyServer : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QUrl url READ url CONSTANT)

public:
    explicit TinyServer(QObject* parent = nullptr)
        : QObject(parent)
    {
        connect(&m_server, &QTcpServer::newConnection, this, &TinyServer::serve);
        m_server.listen(QHostAddress::LocalHost);
    }

    [[nodiscard]] QUrl url() const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1/menu").arg(m_server.serverPort()));
    }

private:
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
        QByteArray const body = length > 0 ? request.mid(head + 4, length) : QByteArray("caff\xc3\xa8");
        client->write("HTTP/1.1 200 OK\r\nConnection: close\r\nX-Shelf: upper\r\nContent-Length: " +
                      QByteArray::number(body.size()) + "\r\n\r\n" +
                      (request.startsWith("HEAD") ? QByteArray() : body));
        client->disconnectFromHost();
    }

    QTcpServer m_server;
};
