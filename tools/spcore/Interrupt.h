#pragma once

#include <csignal>

/// Turns Ctrl-C and a polite request to end (SIGTERM) into a question that a command asks now and then, so
/// that it can clean up. One at a time.
class Interrupt
{
public:
    Interrupt();
    ~Interrupt();
    Interrupt(Interrupt const&) = delete;
    Interrupt& operator=(Interrupt const&) = delete;

    /// Whether the user has asked for the end since this object was made.
    [[nodiscard]] bool wasRequested() const;

private:
    struct sigaction m_onInterrupt = {};
    struct sigaction m_onTerminate = {};
};
