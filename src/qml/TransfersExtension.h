#pragma once

#include <client/Transfer.h>
#include <client/TransferRequest.h>

#include <QByteArray>
#include <QJSValue>
#include <QObject>
#include <QString>
#include <QVariant>
#include <QtQml/qqml.h>

namespace Softphone {
class Transfers;
}

namespace SoftphoneQml {

/// What Transfers can do in QML beside its own functions.
///
/// A request is an object with the names of TransferRequest: `url` (the only one that has to be there),
/// `path` (a path or a `file:` URL), `headers` (an object of names and values), `retries`, `ifExists` (a
/// Softphone.IfExists), `sha256` (64 hexadecimal digits), `keepPart` and `limits`, an object with the names
/// of TransferLimits, its times in milliseconds. Another name, or a value of another kind, throws a
/// TypeError, and nothing is started.
///
/// The transfers belong to their Transfers: no script has to keep them, and none may destroy() them. One is
/// deleted by discard(), all others with their Transfers.
///
/// `TransfersFunctions`, attached to what was made in C++:
/// `fromProgram.TransfersFunctions.download(request)`.
class TransfersExtension : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(TransfersFunctions)
    QML_UNCREATABLE("It stands behind a Transfers.")
    QML_ATTACHED(SoftphoneQml::TransfersExtension)

public:
    /// The extension of the transfers \a extended, to which it belongs.
    explicit TransfersExtension(QObject* extended);
    /// For the engine: the functions of \a object; null when that is no Transfers.
    static TransfersExtension* qmlAttachedProperties(QObject* object);

    /// Starts the download that \a request describes, to its path or into the transfer's body.
    Q_INVOKABLE Softphone::Transfer* download(QVariantMap const& request);
    /// Asks how long the file of \a request is; the transfer's `total` tells it afterwards.
    Q_INVOKABLE Softphone::Transfer* size(QVariantMap const& request);
    /// Sends the file at the path of \a request by PUT.
    Q_INVOKABLE Softphone::Transfer* upload(QVariantMap const& request);
    /// Sends \a body, an ArrayBuffer or a text that is sent as UTF-8, by POST.
    Q_INVOKABLE Softphone::Transfer* post(QVariantMap const& request, QByteArray const& body);
    /// Sends \a form by POST: an object whose members are the form's fields. A member is a text, or anything
    /// that becomes one, or an object that names a file: `path` (a path or a `file:` URL), and where the
    /// server asks for them `name` (of the file; that of the path unless given) and `type` (its MIME type).
    ///
    /// A file that cannot be read throws an Error, a wrong member a TypeError, and nothing is started.
    Q_INVOKABLE Softphone::Transfer* postForm(QVariantMap const& request, QVariantMap const& form);

    /// What the server answered to \a transfer, read as UTF-8.
    [[nodiscard]] Q_INVOKABLE QString text(Softphone::Transfer* transfer) const;
    /// The field \a name of the last answer to \a transfer, in any case of letters; empty when there is none.
    [[nodiscard]] Q_INVOKABLE QString header(Softphone::Transfer* transfer, QString const& name) const;

    /// Lets \a count requests run at once, 1 at least.
    Q_INVOKABLE void setParallel(int count);

    /// Deletes \a transfer soon, which ends it silently if it still runs.
    Q_INVOKABLE void discard(Softphone::Transfer* transfer);

private:
    void complain(QJSValue::ErrorType type, QString const& problem) const;
    template <typename Start>
    Softphone::Transfer* start(QVariantMap const& request, Start const& start);

    Softphone::Transfers* m_transfers;
};

} // namespace SoftphoneQml
