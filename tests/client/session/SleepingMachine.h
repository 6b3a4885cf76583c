#pragma once

#include <chrono>
#include <ctime>
#ifdef Q_OS_LINUX
#include <sys/syscall.h>
#include <unistd.h>
#endif

/// Lets the machine seem to have slept, for the one source file of a test that includes this.
namespace SleepingMachine {

inline std::chrono::milliseconds slept{0};

/// Whether this works here.
inline constexpr bool isPossible =
#ifdef Q_OS_LINUX
    true;
#else
    false;
#endif

/// The clock that counts on in a sleep has gone on by \a time, the others have not.
inline void sleepFor(std::chrono::milliseconds time)
{
    slept += time;
}

} // namespace SleepingMachine

#ifdef Q_OS_LINUX
// The library finds this one before the system's.
extern "C" int clock_gettime(clockid_t clock, timespec* now)
{
    if (syscall(SYS_clock_gettime, clock, now) != 0) {
        return -1;
    }
    if (clock == CLOCK_BOOTTIME) {
        auto const whole = std::chrono::nanoseconds(now->tv_nsec) + SleepingMachine::slept;
        auto const seconds = std::chrono::floor<std::chrono::seconds>(whole);
        now->tv_sec += seconds.count();
        now->tv_nsec = (whole - seconds).count();
    }
    return 0;
}
#endif
