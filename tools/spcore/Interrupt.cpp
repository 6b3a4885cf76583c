#include "Interrupt.h"

#include <csignal>

namespace {

std::sig_atomic_t volatile requested = 0;

void request(int)
{
    requested = 1;
}

} // namespace

Interrupt::Interrupt()
{
    requested = 0;
    struct sigaction action = {};
    action.sa_handler = request;
    // What is being written to a terminal goes on behind the signal.
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
