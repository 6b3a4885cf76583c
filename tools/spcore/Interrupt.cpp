#include "Interrupt.h"

#include <chrono>
#include <csignal>

namespace {

using namespace std::chrono_literals;

constexpr auto betweenChecks = 100ms;

/// The signal that came; 0 before one.
std::sig_atomic_t volatile requested = 0;

void request(int signal)
{
    requested = signal;
}

} // namespace

Interrupt::Interrupt()
{
    requested = 0;
    struct sigaction action = {};
    action.sa_handler = request;
    // What is being written to a terminal goes on after the signal.
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, &m_onInterrupt);
    sigaction(SIGTERM, &action, &m_onTerminate);
}

Interrupt::~Interrupt()
{
    sigaction(SIGINT, &m_onInterrupt, nullptr);
    sigaction(SIGTERM, &m_onTerminate, nullptr);
}

bool Interrupt::wasRequested() const
{
    return requested != 0;
}

void Interrupt::whenRequested(std::function<void()> const& action)
{
    QObject::connect(&m_check, &QTimer::timeout, &m_check, [this, action] {
        if (wasRequested()) {
            m_check.stop();
            action();
        }
    });
    m_check.start(betweenChecks);
}

ExitCode Interrupt::exitCode() const
{
    return requested == SIGTERM ? ExitCode::Terminated : ExitCode::Interrupted;
}
