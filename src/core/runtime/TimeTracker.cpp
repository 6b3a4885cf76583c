#include "TimeTracker.h"

namespace {

constexpr std::uint32_t noStartTime = 0xFFFFFFFF;

/// A clock of milliseconds passes the largest int after 25 days; unsigned differences stay right beyond that.
constexpr std::uint32_t ticks(int now)
{
    return static_cast<std::uint32_t>(now);
}

} // namespace

// Each change writes the state where a reader on another thread never meets a state whose times are not yet
// there: after them when it starts or freezes something, before them when it stops.

TimeTracker::TimeTracker()
    : m_state(Stopped)
    , m_startTime(noStartTime)
    , m_elapsed(0)
{
}

TimeTracker::TimeTracker(int now)
    : m_state(Running)
    , m_startTime(ticks(now))
    , m_elapsed(0)
{
}

TimeTracker::TimeTracker(TimeTracker const& other)
    : m_state(other.m_state.load())
    , m_startTime(other.m_startTime.load())
    , m_elapsed(other.m_elapsed.load())
{
}

TimeTracker& TimeTracker::operator=(TimeTracker const& other)
{
    std::uint32_t const state = other.m_state;
    m_startTime.exchange(other.m_startTime);
    m_elapsed.exchange(other.m_elapsed);
    m_state.exchange(state);
    return *this;
}

int TimeTracker::getStartTime() const
{
    return static_cast<int>(m_startTime.load());
}

void TimeTracker::start(int now)
{
    if (m_state == Running) {
        return;
    }
    m_startTime.exchange(ticks(now));
    m_state.exchange(Running);
}

void TimeTracker::stop()
{
    m_state.exchange(Stopped);
    m_startTime.exchange(noStartTime);
}

void TimeTracker::pause(int now)
{
    if (m_state == Paused) {
        return;
    }
    m_elapsed.exchange(ticks(now) - m_startTime);
    m_state.exchange(Paused);
}

void TimeTracker::resume(int now)
{
    if (m_state == Running) {
        return;
    }
    m_startTime.exchange(ticks(now) - m_elapsed);
    m_elapsed.exchange(ticks(now) - m_startTime);
    m_state.exchange(Running);
}

int TimeTracker::getDuration(int now) const
{
    switch (m_state) {
    case Running:
        return static_cast<int>(ticks(now) - m_startTime);
    case Paused:
        return static_cast<int>(m_elapsed.load());
    default:
        return 0;
    }
}
