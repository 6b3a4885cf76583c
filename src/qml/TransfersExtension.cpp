#include "TransfersExtension.h"

#include "FormFromScript.h"
#include "RequestFromScript.h"

#include <client/Transfers.h>

#include <QJSEngine>
#include <QQmlEngine>

using Softphone::Transfer;
using Softphone::TransferRequest;
using Softphone::Transfers;

namespace SoftphoneQml {

TransfersExtension::TransfersExtension(QObject* extended)
    : QObject(extended)
    , m_transfers(qobject_cast<Transfers*>(extended))
{
}

TransfersExtension* TransfersExtension::qmlAttachedProperties(QObject* object)
{
    return qobject_cast<Transfers*>(object) == nullptr ? nullptr : new TransfersExtension(object);
}

Transfer* TransfersExtension::download(QVariantMap const& request)
{
    return start(request, [this](TransferRequest const& made) { return m_transfers->download(made); });
}

Transfer* TransfersExtension::size(QVariantMap const& request)
{
    return start(request, [this](TransferRequest const& made) { return m_transfers->size(made); });
}

Transfer* TransfersExtension::upload(QVariantMap const& request)
{
    return start(request, [this](TransferRequest const& made) { return m_transfers->upload(made); });
}

Transfer* TransfersExtension::post(QVariantMap const& request, QByteArray const& body)
{
    return start(request,
                 [this, &body](TransferRequest const& made) { return m_transfers->post(made, body); });
}

Transfer* TransfersExtension::postForm(QVariantMap const& request, QVariantMap const& form)
{
    FormFromScript made(form);
    if (!made.problem().isEmpty()) {
        complain(made.isUnreadable() ? QJSValue::GenericError : QJSValue::TypeError, made.problem());
        return nullptr;
    }
    return start(request, [this, &made](TransferRequest const& sent) {
        return m_transfers->postForm(sent, made.release());
    });
}

QString TransfersExtension::text(Transfer* transfer) const
{
    return transfer == nullptr ? QString() : QString::fromUtf8(transfer->body());
}

QString TransfersExtension::header(Transfer* transfer, QString const& name) const
{
    return transfer == nullptr ? QString() : QString::fromUtf8(transfer->header(name.toUtf8()));
}

void TransfersExtension::setParallel(int count)
{
    m_transfers->setParallel(count);
}

void TransfersExtension::discard(Transfer* transfer)
{
    if (transfer != nullptr) {
        transfer->deleteLater();
    }
}

void TransfersExtension::complain(QJSValue::ErrorType type, QString const& problem) const
{
    if (QJSEngine* const engine = qjsEngine(m_transfers)) {
        engine->throwError(type, problem);
    }
}

template <typename Start>
Transfer* TransfersExtension::start(QVariantMap const& request, Start const& start)
{
    RequestFromScript const made(request);
    if (!made.problem().isEmpty()) {
        complain(QJSValue::TypeError, made.problem());
        return nullptr;
    }
    Transfer* const transfer = start(made.request());
    // Said outright: a transfer that the garbage collector may take ends in the middle.
    QQmlEngine::setObjectOwnership(transfer, QQmlEngine::CppOwnership);
    return transfer;
}

} // namespace SoftphoneQml
