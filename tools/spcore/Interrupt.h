#pragma once

#include "Command.h"

#include <QTimer>
#include <csignal>
#include <functional>

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

    /// Asks for a command that runs an event loop: calls \a action from the loop, once, when the user has
    /// asked for the end.
    void whenRequested(std::function<void()> const& action);

    /// How a command ends that the user has ended, as shells have it: 128 and the number of the signal.
    [[nodiscard]] ExitCode exitCode() const;

private:
    QTimer m_check;
    struct sigaction m_onInterrupt = {};
    struct sigaction m_onTerminate = {};
};
