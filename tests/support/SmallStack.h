#pragma once

#include <functional>

/// Runs \a body on a thread with the smallest stack that a caller's thread has, 512 KiB, and waits for it.
void runOnSmallStack(std::function<void()> const& body);
