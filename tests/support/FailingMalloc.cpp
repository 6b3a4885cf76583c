#include "FailingMalloc.h"

#include <cstddef>
#include <cstdlib>

// What glibc offers to those who replace malloc().
extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t count, std::size_t size);
extern "C" void* __libc_realloc(void* block, std::size_t size);

namespace {

constexpr int never = -1;

/// How many calls succeed before the one that fails.
thread_local int callsLeft = never;

bool failsNow()
{
    return callsLeft != never && callsLeft-- == 0;
}

} // namespace

FailingMalloc::FailingMalloc(int nth)
{
    callsLeft = nth;
}

FailingMalloc::~FailingMalloc()
{
    callsLeft = never;
}

bool FailingMalloc::happened() const
{
    return callsLeft == never;
}

extern "C" void* malloc(std::size_t size) noexcept
{
    return failsNow() ? nullptr : __libc_malloc(size);
}

extern "C" void* calloc(std::size_t count, std::size_t size) noexcept
{
    return failsNow() ? nullptr : __libc_calloc(count, size);
}

extern "C" void* realloc(void* block, std::size_t size) noexcept
{
    return failsNow() ? nullptr : __libc_realloc(block, size);
}
