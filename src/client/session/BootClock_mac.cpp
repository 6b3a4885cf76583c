#include "BootClock_p.h"

namespace Softphone::Impl {

std::chrono::nanoseconds bootClock()
{
    return timeOf(CLOCK_MONOTONIC);
}

std::chrono::nanoseconds sleptSoFar()
{
    return timeOf(CLOCK_MONOTONIC) - timeOf(CLOCK_UPTIME_RAW);
}

} // namespace Softphone::Impl
