#include "Reconnector.h"

#include "BootClock_p.h"

#include <QNetworkInformation>
#include <QPointer>
#include <utility>

namespace Softphone {

using namespace std::chrono_literals;
using std::chrono::ceil;
using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

std::unique_ptr<LimitedFibonacciGenerator> defaultWaits()
{
    using Jitter = SequenceGenerator::RandomSequenceModifier;
    return std::make_unique<LimitedFibonacciGenerator>(55, std::pair(1U, 1U), std::make_unique<Jitter>(0, 3));
}

} // namespace

Reconnector::Reconnector(QObject* parent)
    : Reconnector(nullptr, parent)
{
}

Reconnector::Reconnector(std::unique_ptr<LimitedFibonacciGenerator> waits, QObject* parent)
    : QObject(parent)
    , m_waits(waits ? std::move(waits) : defaultWaits())
{
    for (QTimer* timer : {&m_wait, &m_countdown}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
    }
    connect(&m_wait, &QTimer::timeout, this, &Reconnector::askForAttempt);
    connect(&m_countdown, &QTimer::timeout, this, &Reconnector::countDown);
    watchNetwork();
}

Reconnector::~Reconnector() = default;

Reconnector::State Reconnector::state() const
{
    return m_state;
}

int Reconnector::remaining() const
{
    return m_remaining;
}

void Reconnector::reportLost()
{
    if (m_state == State::Waiting) {
        return;
    }
    if (m_state == State::Connected && Impl::bootClock() - m_connectedSince >= held) {
        m_waits->reset();
    }
    m_sleptBefore = Impl::sleptSoFar();
    m_wait.start(seconds(m_waits->getNext()));
    enter(State::Waiting);
}

void Reconnector::reportConnected()
{
    m_connectedSince = Impl::bootClock();
    endWait();
    enter(State::Connected);
}

void Reconnector::tryNow()
{
    if (m_state == State::Waiting) {
        askForAttempt();
    }
}

void Reconnector::stop()
{
    endWait();
    m_waits->reset();
    enter(State::Idle);
}

/// Enters \a state and announces it; any slot may delete the reconnector.
void Reconnector::enter(State state)
{
    QPointer<Reconnector> const self(this);
    bool const changed = state != std::exchange(m_state, state);
    countDown();
    if (changed && self) {
        Q_EMIT stateChanged();
    }
}

void Reconnector::endWait()
{
    m_wait.stop();
    m_countdown.stop();
}

void Reconnector::askForAttempt()
{
    QPointer<Reconnector> const self(this);
    endWait();
    enter(State::Trying);
    if (self && m_state == State::Trying) {
        Q_EMIT attempt();
    }
}

void Reconnector::watchNetwork()
{
    if (!QNetworkInformation::loadBackendByFeatures(QNetworkInformation::Feature::Reachability)) {
        return;
    }
    connect(QNetworkInformation::instance(), &QNetworkInformation::reachabilityChanged, this,
            [this](QNetworkInformation::Reachability reachability) {
                if (reachability == QNetworkInformation::Reachability::Online) {
                    tryNow();
                }
            });
}

/// Shows what is left of the wait, and runs again when another second of it is over.
void Reconnector::countDown()
{
    if (m_wait.isActive() && Impl::sleptSoFar() - m_sleptBefore > 1s) {
        askForAttempt();
        return;
    }
    milliseconds const left = m_wait.isActive() ? m_wait.remainingTimeAsDuration() : 0ms;
    if (left > 0ms) {
        m_countdown.start(left % 1s > 0ms ? left % 1s : 1s);
    }
    int const shown = static_cast<int>(ceil<seconds>(left).count());
    if (shown != std::exchange(m_remaining, shown)) {
        Q_EMIT remainingChanged();
    }
}

} // namespace Softphone
