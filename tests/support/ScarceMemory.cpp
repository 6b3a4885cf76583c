#include "ScarceMemory.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();
constexpr int never = -1;

std::atomic<std::size_t> largestBlock = unlimited;

/// How many calls succeed before the one that fails.
thread_local int callsLeft = never;
thread_local bool hasFailed = false;

bool failsNow()
{
    if (callsLeft == never) {
        return false;
    }
    hasFailed = hasFailed || callsLeft == 0;
    return callsLeft-- == 0;
}

} // namespace

BlockLimit::BlockLimit(std::size_t bytes)
{
    largestBlock = bytes;
}

BlockLimit::~BlockLimit()
{
    largestBlock = unlimited;
}

FailingAllocation::FailingAllocation(int nth)
{
    hasFailed = false;
    callsLeft = nth;
}

FailingAllocation::~FailingAllocation()
{
    callsLeft = never;
}

bool FailingAllocation::happened() const
{
    return hasFailed;
}

// Not inlined, since compilers take free() for a mistake where they see it behind a plain new.
[[gnu::noinline]] void* operator new(std::size_t size)
{
    void* const block = size <= largestBlock && !failsNow() ? std::malloc(size) : nullptr;
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

[[gnu::noinline]] void operator delete(void* block) noexcept
{
    std::free(block);
}

[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}

// The default ones for arrays do just this; those of a sanitizer do not.
void* operator new[](std::size_t size)
{
    return operator new(size);
}

void operator delete[](void* block) noexcept
{
    operator delete(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    operator delete(block);
}
