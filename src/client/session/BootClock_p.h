#pragma once

#include <chrono>
#include <ctime>

namespace Softphone::Impl {

[[nodiscard]] inline std::chrono::nanoseconds timeOf(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

/// The time since the machine was started. It never goes back and counts on while the machine sleeps.
[[nodiscard]] std::chrono::nanoseconds bootClock();

/// How much of that time the machine has slept, or a value that differs from it by a constant.
[[nodiscard]] std::chrono::nanoseconds sleptSoFar();

} // namespace Softphone::Impl
