#include "Transfer.h"

#include "TransferRun_p.h"

#include <QPointer>
#include <cmath>
#include <limits>

namespace Softphone {

Transfer::Transfer(QObject* parent)
    : QObject(parent)
{
}

Transfer::~Transfer() = default;

void Transfer::run(std::unique_ptr<TransferRun> run)
{
    m_run = std::move(run);
    connect(m_run.get(), &TransferRun::moved, this, [this] { Q_EMIT progress(done(), total()); });
    connect(m_run.get(), &TransferRun::ended, this, &Transfer::finish);
}

/// A bar that follows progress() gets to its end before anyone hears of the end.
void Transfer::finish()
{
    QPointer<Transfer> const self(this);
    if (done() > 0) {
        Q_EMIT progress(done(), total());
    }
    if (self) {
        Q_EMIT finished();
    }
}

bool Transfer::isFinished() const
{
    return m_run->hasEnded();
}

TransferError Transfer::error() const
{
    return m_run->result().failure.error;
}

QString Transfer::errorText() const
{
    return m_run->result().failure.text;
}

int Transfer::status() const
{
    return m_run->result().status;
}

qint64 Transfer::done() const
{
    return m_run->result().done;
}

qint64 Transfer::total() const
{
    return m_run->result().total;
}

QByteArray Transfer::body() const
{
    return m_run->result().body;
}

QString Transfer::path() const
{
    return m_run->result().path;
}

QByteArray Transfer::header(QByteArray const& name) const
{
    return m_run->field(name);
}

double Transfer::bytesPerSecond() const
{
    return isFinished() ? 0 : m_run->bytesPerSecond();
}

int Transfer::remaining() const
{
    double const pace = bytesPerSecond();
    if (pace <= 0 || total() < 0) {
        return -1;
    }
    double const seconds = std::ceil(static_cast<double>(total() - done()) / pace);
    return seconds < std::numeric_limits<int>::max() ? static_cast<int>(seconds) : -1;
}

void Transfer::cancel()
{
    m_run->cancel();
}

} // namespace Softphone
