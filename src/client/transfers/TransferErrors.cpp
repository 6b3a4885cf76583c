#include "TransferErrors_p.h"

#include <QCoreApplication>
#include <algorithm>

namespace Softphone::TransferErrors {

namespace {

constexpr qsizetype longestReason = 80;

QString tr(char const* text)
{
    return QCoreApplication::translate("Softphone::Transfer", text);
}

/// What a server says of itself, in a form that a label can show.
QString shown(QString text)
{
    std::ranges::replace_if(
        text, [](QChar c) { return !c.isPrint(); }, QLatin1Char(' '));
    return text.simplified().left(longestReason);
}

TransferFailure broken(QString const& host, Stage stage)
{
    switch (stage) {
    case Stage::Asking:
        break;
    case Stage::Sending:
        return {TransferError::Truncated,
                tr("%1 ended the connection before it had taken everything.").arg(host)};
    case Stage::Answered:
        return {TransferError::Truncated,
                tr("%1 ended the connection in the middle of its answer.").arg(host)};
    }
    return {TransferError::Truncated, tr("%1 ended the connection without an answer.").arg(host)};
}

} // namespace

QString hostOf(QUrl const& url)
{
    if (url.host().isEmpty()) {
        return tr("The address");
    }
    return url.port() < 0 ? shown(url.host()) : shown(url.authority(QUrl::PrettyDecoded));
}

QString duration(std::chrono::milliseconds time)
{
    auto const count = time.count();
    return count % 1000 == 0 ? tr("%1 s").arg(count / 1000) : tr("%1 ms").arg(count);
}

TransferFailure ofNetwork(QNetworkReply::NetworkError error, QString const& host, QString const& detail,
                          Stage stage)
{
    switch (error) {
    case QNetworkReply::ConnectionRefusedError:
        return {TransferError::Refused, tr("%1 refused the connection.").arg(host)};
    case QNetworkReply::HostNotFoundError:
        return {TransferError::HostNotFound, tr("%1 was not found.").arg(host)};
    case QNetworkReply::TimeoutError:
    case QNetworkReply::OperationCanceledError: // by Qt, at the limit of its manager
        return {TransferError::TimedOut, tr("%1 did not answer in time.").arg(host)};
    case QNetworkReply::SslHandshakeFailedError:
        return {TransferError::Tls, tr("No secure connection to %1: %2").arg(host, shown(detail))};
    case QNetworkReply::ProxyConnectionRefusedError:
        return {TransferError::Refused, tr("The proxy before %1 refused the connection.").arg(host)};
    case QNetworkReply::ProxyNotFoundError:
        return {TransferError::HostNotFound, tr("The proxy before %1 was not found.").arg(host)};
    case QNetworkReply::ProxyTimeoutError:
        return {TransferError::TimedOut, tr("The proxy before %1 did not answer in time.").arg(host)};
    case QNetworkReply::ProxyAuthenticationRequiredError:
        return {TransferError::Refused, tr("The proxy before %1 wants a login.").arg(host)};
    case QNetworkReply::ProxyConnectionClosedError:
        return {TransferError::Refused, tr("The proxy before %1 ended the connection.").arg(host)};
    case QNetworkReply::ProtocolFailure:
    case QNetworkReply::ProtocolUnknownError:
    case QNetworkReply::ProtocolInvalidOperationError:
    case QNetworkReply::UnknownContentError:
        return {TransferError::Protocol, tr("%1 gave an answer that makes no sense.").arg(host)};
    case QNetworkReply::RemoteHostClosedError:
    case QNetworkReply::ContentReSendError:
        return broken(host, stage);
    default:
        return stage == Stage::Asking
                   ? TransferFailure{TransferError::Refused, tr("%1 cannot be reached.").arg(host)}
                   : broken(host, stage);
    }
}

TransferFailure ofStatus(int status, QString const& reason, QString const& host)
{
    QString const word = shown(reason);
    return {TransferError::HttpStatus,
            word.isEmpty() ? tr("%1 answered %2.").arg(host, QString::number(status))
                           : tr("%1 answered %2 %3.").arg(host, QString::number(status), word)};
}

} // namespace Softphone::TransferErrors
