/// \file
/// What a transfer is asked to do, and within which limits.

#pragma once

#include <client/Softphone.h>
#include <client/softphoneclient_export.h>

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <chrono>
#include <utility>

namespace Softphone {

/// What a transfer may cost; 0 for a time means no limit. The clocks start with the request, not while it
/// waits for its turn.
struct TransferLimits
{
    std::chrono::milliseconds connect{15'000}; ///< until the request is on its way
    std::chrono::milliseconds stalled{30'000}; ///< without a byte in either direction, while the disk has
                                               ///< none to write
    std::chrono::milliseconds total{0};        ///< redirects, retries and the waits between them included
    qint64 bytes = -1;                         ///< of the answer, unpacked; negative: no limit
    int redirects = 5;                         ///< how many are followed; 0 follows none
    QStringList schemes{QStringLiteral("https"), QStringLiteral("http")}; ///< which of these two are allowed
};

/// One transfer, as Transfers takes it. Every member has a value, so that callers name those that they set:
/// `{.url = address, .path = file}`.
struct TransferRequest
{
    /// HTTP or HTTPS. A user name and password in it are sent as basic authentication, to this host only, and
    /// appear in no text and no file.
    QUrl url{};

    /// The file to write or to send. Of a download, empty: the answer is kept in Transfer::body().
    QString path{};

    /// Further header fields, each a name and a value. "Authorization" and "Cookie" are left out once a
    /// redirect leads to another scheme, host or port. "Content-Length" and "Transfer-Encoding" are the
    /// library's own.
    QList<std::pair<QByteArray, QByteArray>> headers{};

    TransferLimits limits{}; ///< what the transfer may cost

    /// How often a failed transfer is tried again, where that may help: the network failed, or the server
    /// answered 408, 429 or 5xx. A post is tried again only if nothing of it has been sent.
    int retries = 0;

    IfExists ifExists = IfExists::Replace; ///< what becomes of a file that is there already

    /// The SHA-256 that a download has to have, as 32 bytes or 64 hexadecimal digits; empty: any.
    QByteArray sha256{};

    /// Whether a download to a file that ends early leaves what has come, so that the next download of the
    /// address into the folder goes on from there. It does when the transfer is cancelled or deleted, or
    /// failed in a way that retries might have helped, and the server gave the file a strong entity tag. The
    /// part is the caller's then, who may have to delete it some day.
    bool keepPart = false;
};

} // namespace Softphone
