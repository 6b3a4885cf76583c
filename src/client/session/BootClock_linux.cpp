#include "BootClock_p.h"

#include <ctime>

namespace Softphone::Impl {

namespace {

std::chrono::nanoseconds read(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

} // namespace

std::chrono::nanoseconds bootClock()
{
    return read(CLOCK_BOOTTIME);
}

std::chrono::nanoseconds sleptSoFar()
{
    return read(CLOCK_BOOTTIME) - read(CLOCK_MONOTONIC);
}

} // namespace Softphone::Impl
