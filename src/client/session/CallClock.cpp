#include "CallClock.h"

#include "BootClock_p.h"

#include <QPointer>
#include <algorithm>
#include <utility>

namespace Softphone {

using namespace std::chrono_literals;
using std::chrono::floor;
using std::chrono::nanoseconds;
using std::chrono::seconds;

QString callLengthText(seconds length)
{
    seconds const whole = std::max(length, 0s);
    auto const twoDigits = [](auto number) {
        return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
    };
    auto const hours = whole / 1h;
    QString const minutesAndSeconds =
        twoDigits(whole % 1h / 1min) + QLatin1Char(':') + twoDigits(whole % 1min / 1s);
    return hours == 0 ? minutesAndSeconds : QString::number(hours) + QLatin1Char(':') + minutesAndSeconds;
}

CallClock::CallClock(QObject* parent)
    : CallClock(&Impl::bootClock, parent)
{
}

CallClock::CallClock(TimeSource now, QObject* parent)
    : QObject(parent)
    , m_now(std::move(now))
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &CallClock::tick);
}

CallClock::~CallClock() = default;

void CallClock::setStatus(LineStatus status)
{
    if (status == m_status) {
        return;
    }
    Shown const before = shown();
    m_status = status;
    if (status.isStrictlyActive()) {
        start();
    } else if (status.isFree() || status.isTerminated() || status.isError()) {
        stop();
    }
    announceChangesSince(before);
}

LineStatus CallClock::status() const
{
    return m_status;
}

void CallClock::setOnHold(bool on)
{
    Shown const before = shown();
    if (on && m_running && !m_onHold) {
        m_holdStarted = m_now();
        m_onHold = true;
    } else if (!on) {
        endHold();
    }
    announceChangesSince(before);
}

bool CallClock::isOnHold() const
{
    return m_onHold;
}

bool CallClock::isRunning() const
{
    return m_running;
}

seconds CallClock::elapsed() const
{
    return floor<seconds>(measured());
}

seconds CallClock::held() const
{
    return floor<seconds>(measuredHold());
}

QString CallClock::text() const
{
    return callLengthText(elapsed());
}

int CallClock::statusNumber() const
{
    return m_status.serialize();
}

void CallClock::setStatusNumber(int number)
{
    setStatus(LineStatus::deserialize(number));
}

qint64 CallClock::elapsedSeconds() const
{
    return elapsed().count();
}

qint64 CallClock::heldSeconds() const
{
    return held().count();
}

void CallClock::start()
{
    if (m_running) {
        return;
    }
    m_running = true;
    m_started = m_now();
    m_held = 0ns;
    waitForNextSecond();
}

void CallClock::stop()
{
    if (!m_running) {
        return;
    }
    m_timer.stop();
    endHold();
    m_length = measured();
    m_running = false;
}

void CallClock::endHold()
{
    m_held = measuredHold();
    m_onHold = false;
}

void CallClock::tick()
{
    // First, since a slot may delete the clock.
    waitForNextSecond();
    announceChangesSince(shown());
}

void CallClock::waitForNextSecond()
{
    nanoseconds const untilNext = 1s - measured() % 1s;
    // Rounded up: a timer that wakes before the second is full would find nothing to announce.
    m_timer.start(std::chrono::ceil<std::chrono::milliseconds>(untilNext));
}

CallClock::Shown CallClock::shown() const
{
    return {m_status, m_running, m_onHold};
}

void CallClock::announceChangesSince(Shown const& before)
{
    Shown const now = shown();
    auto const second = elapsed();
    bool const newSecond = second != std::exchange(m_announced, second);

    // Any slot may delete the clock.
    QPointer<CallClock> const self(this);
    auto const announce = [&self](bool changed, void (CallClock::*signal)()) {
        if (changed && self) {
            Q_EMIT(self->*signal)();
        }
    };
    announce(!(now.status == before.status), &CallClock::statusChanged);
    announce(now.running != before.running, &CallClock::runningChanged);
    announce(now.onHold != before.onHold, &CallClock::onHoldChanged);
    announce(newSecond, &CallClock::elapsedChanged);
    announce(newSecond, &CallClock::textChanged);
}

nanoseconds CallClock::measured() const
{
    return m_running ? m_now() - m_started : m_length;
}

nanoseconds CallClock::measuredHold() const
{
    return m_onHold ? m_held + (m_now() - m_holdStarted) : m_held;
}

} // namespace Softphone
