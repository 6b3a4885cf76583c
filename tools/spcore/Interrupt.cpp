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
    m_onInterrupt = std::signal(SIGINT, request);
    m_onTerminate = std::signal(SIGTERM, request);
}

Interrupt::~Interrupt()
{
    std::signal(SIGINT, m_onInterrupt);
    std::signal(SIGTERM, m_onTerminate);
}

bool Interrupt::wasRequested() const
{
    return requested != 0;
}
