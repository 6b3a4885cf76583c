#include "Transfers.h"

#include "TransferNetwork_p.h"
#include "TransferQueue_p.h"
#include "TransferRun_p.h"

#include <QThread>
#include <utility>

namespace Softphone {

struct Transfers::Private
{
    QThread disk;
    TransferNetwork network;
    TransferQueue queue;
};

Transfers::Transfers(QObject* parent)
    : QObject(parent)
    , m_private(std::make_unique<Private>())
{
}

Transfers::~Transfers()
{
    qDeleteAll(findChildren<Transfer*>(Qt::FindDirectChildrenOnly));
    // What the transfers have left to delete is deleted before the thread ends.
    m_private->disk.quit();
    m_private->disk.wait();
}

Transfer* Transfers::start(TransferTask task)
{
    auto* const transfer = new Transfer(this);
    transfer->run(std::make_unique<TransferRun>(
        std::move(task), TransferServices{&m_private->network, &m_private->queue, &m_private->disk}));
    return transfer;
}

Transfer* Transfers::download(TransferRequest const& request)
{
    return start({TransferTask::Kind::Download, request, {}, nullptr});
}

Transfer* Transfers::size(TransferRequest const& request)
{
    return start({TransferTask::Kind::Size, request, {}, nullptr});
}

Transfer* Transfers::upload(TransferRequest const& request)
{
    return start({TransferTask::Kind::Upload, request, {}, nullptr});
}

Transfer* Transfers::post(TransferRequest const& request, QByteArray const& body)
{
    return start({TransferTask::Kind::Post, request, body, nullptr});
}

Transfer* Transfers::postForm(TransferRequest const& request, QHttpMultiPart* form)
{
    return start({TransferTask::Kind::Post, request, {}, form});
}

void Transfers::setParallel(int count)
{
    m_private->queue.setParallel(count);
}

void Transfers::cancelAll()
{
    for (Transfer* const transfer : findChildren<Transfer*>(Qt::FindDirectChildrenOnly)) {
        transfer->cancel();
    }
}

QNetworkAccessManager* Transfers::network() const
{
    return &m_private->network;
}

} // namespace Softphone
