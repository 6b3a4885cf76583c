#pragma once

#include <chrono>

namespace Softphone::Impl {

/// The time since the machine was started. It never goes back and counts on while the machine sleeps.
[[nodiscard]] std::chrono::nanoseconds bootClock();

/// How much of that time the machine has slept, or a value that differs from it by a constant.
[[nodiscard]] std::chrono::nanoseconds sleptSoFar();

} // namespace Softphone::Impl
