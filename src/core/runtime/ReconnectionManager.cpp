#include "ReconnectionManager.h"

#include "ThreadUtils.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr unsigned int attemptLimit = 55;
constexpr unsigned int longestWait = std::numeric_limits<int>::max();

std::unique_ptr<LimitedFibonacciGenerator> defaultGenerator()
{
    return std::make_unique<LimitedFibonacciGenerator>(
        attemptLimit, std::pair(1U, 1U), std::make_unique<SequenceGenerator::NoOpSequenceModifier>());
}

} // namespace

ReconnectionManager::ReconnectionManager()
    : ReconnectionManager(defaultGenerator())
{
}

ReconnectionManager::ReconnectionManager(std::unique_ptr<LimitedFibonacciGenerator> generator)
    : m_generator(generator ? std::move(generator) : defaultGenerator())
{
    initializeManager();
}

ReconnectionManager::~ReconnectionManager() = default;

void ReconnectionManager::initializeManager()
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &ReconnectionManager::onTimeoutReached, Qt::DirectConnection);
}

bool ReconnectionManager::isActive() const
{
    return m_timer.isActive();
}

std::chrono::milliseconds ReconnectionManager::remainingTime() const
{
    return m_timer.isActive() ? m_timer.remainingTimeAsDuration() : std::chrono::milliseconds(0);
}

void ReconnectionManager::enable(bool on)
{
    if (on) {
        m_enabled.exchange(true);
    } else if (ThreadUtils::isObjectThread(this)) {
        halt();
        m_enabled.exchange(false);
    } else {
        // A timer can be stopped in its own thread only.
        m_enabled.exchange(false);
        m_haltAsked.exchange(true);
        ThreadUtils::moveExecutionToObjectThread(
            this, [this] { haltIfAsked(); }, Qt::QueuedConnection);
    }
}

void ReconnectionManager::onResetTimer()
{
    if (m_timer.isActive()) {
        m_timer.stop();
    }
    m_generator->reset();
}

void ReconnectionManager::onStartTimer()
{
    haltIfAsked();
    if (!m_enabled) {
        return;
    }
    try {
        unsigned int const milliseconds = std::min(m_generator->getNext() * 1000U, longestWait);
        m_timer.start(static_cast<int>(milliseconds));
        Q_EMIT waitStarted(std::chrono::milliseconds(milliseconds));
    } catch (...) {
        // The generator and the receivers are the caller's. Their slot may have been called by an event loop,
        // which lets no exception through.
        return;
    }
}

void ReconnectionManager::onTimeoutReached()
{
    m_timer.stop();
    if (haltIfAsked() || !m_enabled) {
        return;
    }
    try {
        if (m_generator->isLimitReached()) {
            Q_EMIT connectionAttemptsExhausted();
        } else {
            Q_EMIT tryConnectionAgain();
        }
    } catch (...) {
        // The timer's event loop lets no exception of a receiver through.
        return;
    }
}

void ReconnectionManager::halt()
{
    m_haltAsked.exchange(false);
    m_timer.stop();
    m_generator->reset();
}

/// Catches up with enable(false) from another thread; answers whether there was anything to catch up with.
bool ReconnectionManager::haltIfAsked()
{
    if (!m_haltAsked.exchange(false)) {
        return false;
    }
    halt();
    return true;
}
