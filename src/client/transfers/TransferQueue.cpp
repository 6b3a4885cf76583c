#include "TransferQueue_p.h"

#include "TransferRun_p.h"

#include <algorithm>

namespace Softphone {

namespace {

constexpr int mostPerServer = 6;

} // namespace

void TransferQueue::setParallel(int count)
{
    m_parallel = std::max(count, 1);
    giveTurnsLater();
}

void TransferQueue::enter(TransferRun* run, Place place)
{
    if (place == Place::Front) {
        m_waiting.prepend(run);
    } else {
        m_waiting.append(run);
    }
    giveTurnsLater();
}

void TransferQueue::leave(TransferRun* run)
{
    m_waiting.removeOne(run);
    auto const found = m_running.constFind(run);
    if (found == m_running.cend()) {
        return;
    }
    auto const requests = m_requests.find(*found);
    if (--*requests == 0) {
        m_requests.erase(requests);
    }
    m_running.erase(found);
    giveTurnsLater();
}

void TransferQueue::giveTurnsLater()
{
    if (!m_isDue) {
        m_isDue = true;
        QMetaObject::invokeMethod(this, &TransferQueue::giveTurns, Qt::QueuedConnection);
    }
}

void TransferQueue::giveTurns()
{
    m_isDue = false;
    while (m_running.size() < m_parallel) {
        auto const next =
            std::ranges::find_if(m_waiting, [this](TransferRun const* run) { return mayRun(run->origin()); });
        if (next == m_waiting.end()) {
            return;
        }
        TransferRun* const run = *next;
        m_waiting.erase(next);
        QByteArray const origin = run->origin();
        m_running.insert(run, origin);
        ++m_requests[origin];
        run->proceed();
    }
}

bool TransferQueue::mayRun(QByteArray const& origin) const
{
    return m_requests.value(origin) < mostPerServer;
}

} // namespace Softphone
