#include "BootClock_p.h"

namespace Softphone::Impl {

std::chrono::nanoseconds bootClock()
{
    return timeOf(CLOCK_BOOTTIME);
}

std::chrono::nanoseconds sleptSoFar()
{
    return timeOf(CLOCK_BOOTTIME) - timeOf(CLOCK_MONOTONIC);
}

} // namespace Softphone::Impl
