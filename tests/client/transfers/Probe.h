#pragma once

#include <client/Transfers.h>

#include <QMetaEnum>
#include <QSignalSpy>
#include <QTest>

namespace QTest {

template <>
inline char* toString(Softphone::TransferError const& error)
{
    return qstrdup(QMetaEnum::fromType<Softphone::TransferError>().valueToKey(static_cast<int>(error)));
}

} // namespace QTest

/// Waits until \a transfer has ended and been told to have; false when it never does.
inline bool ends(Softphone::Transfer* transfer)
{
    constexpr int patience = 60'000;
    QSignalSpy finished(transfer, &Softphone::Transfer::finished);
    return transfer->isFinished() || finished.wait(patience);
}

/// The request for \a url, into memory unless \a path names a file.
inline Softphone::TransferRequest requestFor(QString const& url, QString const& path = QString())
{
    Softphone::TransferRequest request;
    request.url = QUrl(url);
    request.path = path;
    return request;
}

/// The server of \a url as sentences name it, such as "127.0.0.1:8080".
inline QString serverOf(QString const& url)
{
    return QUrl(url).authority().section(QLatin1Char('@'), -1);
}

/// \a size bytes that differ from place to place, so that a part in the wrong place shows.
inline QByteArray pattern(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = 1;
    for (char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24U);
    }
    return bytes;
}

/// An answer of status 200 with \a body and \a fields.
inline QByteArray answerWith(QByteArray const& body, QByteArray const& fields = QByteArray())
{
    return "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n" + fields +
           "Connection: close\r\n\r\n" + body;
}
