#pragma once

#include <client/Softphone.h>

#include <QNetworkReply>
#include <QString>
#include <QUrl>
#include <chrono>

namespace Softphone {

/// Why a transfer failed, for the program and for its user.
struct TransferFailure
{
    TransferError error = TransferError::None;
    QString text;
};

/// The sentences of transfers. Each names the host, or the proxy in front of it, and the cause; none
/// takes a word from an address, which may hold a password, apart from the host.
namespace TransferErrors {

/// The host of \a url, and the port where the address names one, as a sentence names them.
[[nodiscard]] QString hostOf(QUrl const& url);

/// "15 s" or "300 ms".
[[nodiscard]] QString duration(std::chrono::milliseconds time);

/// How far a request had come when something went wrong.
enum class Stage {
    Asking,
    Sending, ///< the body, of which a part is still to go
    Answered,
};

/// What went wrong below HTTP. \a detail is added where the kind alone does not tell, for instance what is
/// wrong with a certificate.
[[nodiscard]] TransferFailure ofNetwork(QNetworkReply::NetworkError error, QString const& host,
                                        QString const& detail, Stage stage);

/// An answer with \a status; \a reason is the server's word for it.
[[nodiscard]] TransferFailure ofStatus(int status, QString const& reason, QString const& host);

} // namespace TransferErrors

} // namespace Softphone
