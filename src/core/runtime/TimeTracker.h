#pragma once

#include <softphonecore_export.h>

#include <atomic>
#include <cstdint>

/// Measures a duration that can be paused, on clock values that the caller supplies.
///
/// The tracker never reads a clock: every operation that needs the time takes it as \a now, in whatever unit
/// the caller uses throughout (seconds or milliseconds), and durations come out in that unit. The arithmetic
/// is unsigned with 32 bits, so that it goes on working when the clock wraps.
///
/// The fields are atomic: one thread may read the duration while another starts, pauses, resumes or stops. A
/// change as a whole is not atomic, so only one thread at a time makes changes.
///
/// Example:
/// \code
/// TimeTracker call(10);  // running since 10
/// call.pause(15);
/// call.resume(20);
/// call.getDuration(22);  // 7
/// \endcode
class SOFTPHONECORE_EXPORT TimeTracker
{
public:
    /// A stopped tracker.
    TimeTracker();

    /// A tracker that runs from \a now.
    TimeTracker(int now);

    /// Copies the state of \a other as it stands. When another thread is changing it at that moment, the copy
    /// may mix the values before and after that change.
    TimeTracker(TimeTracker const& other);

    /// Takes over the state of \a other, with the same reservation as the copy constructor.
    TimeTracker& operator=(TimeTracker const& other);

    ~TimeTracker() = default;

    /// The clock value from which the running period counts; -1 (all bits set) on a stopped tracker.
    [[nodiscard]] int getStartTime() const;

    /// Runs from \a now. Nothing happens on a running tracker; a paused one starts again from zero.
    void start(int now);

    /// Stops: the duration is 0 from here on. What the last pause froze is kept for a later resume().
    void stop();

    /// Freezes the duration reached at \a now. Nothing happens on a paused tracker.
    ///
    /// On a stopped tracker the duration frozen is \a now + 1: a stopped tracker counts from the clock's
    /// last value before 0, and callers know the result so.
    void pause(int now);

    /// Goes on from the frozen duration, at \a now. Nothing happens on a running tracker; a stopped one goes
    /// on from what its last pause froze.
    void resume(int now);

    /// The duration at \a now: the frozen one while paused, the time since the start while running, 0 when
    /// stopped.
    [[nodiscard]] int getDuration(int now) const;

private:
    enum State : std::uint32_t {
        Stopped = 0,
        Running = 1,
        Paused = 2,
    };

    std::atomic<std::uint32_t> m_state;
    std::atomic<std::uint32_t> m_startTime;
    std::atomic<std::uint32_t> m_elapsed;
};
