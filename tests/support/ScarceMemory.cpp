#include "ScarceMemory.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <limits>
#include <new>

namespace {

constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();
constexpr int never = -1;

std::atomic<std::size_t> largestBlock = unlimited;

/// How many calls succeed before the one that fails.
thread_local int callsLeft = never;
thread_local bool hasFailed = false;

constexpr std::size_t alignment = alignof(std::max_align_t);
constexpr std::size_t laneSize = std::size_t(1024) * 1024;

/// One stretch of memory for each size of block.
struct Lanes
{
    std::array<std::size_t, 1024 / alignment + 1> used{};
    std::array<char*, 1024 / alignment + 1> begin{};
};

thread_local Lanes lanes;
thread_local bool isPacking = false;

/// A block of \a size bytes behind the last one of that size; null where no lane has room for it.
void* packed(std::size_t size)
{
    std::size_t const lane = (size + alignment - 1) / alignment;
    if (!isPacking || lane >= lanes.begin.size() || lanes.begin[lane] == nullptr ||
        laneSize - lanes.used[lane] < lane * alignment) {
        return nullptr;
    }
    lanes.used[lane] += lane * alignment;
    return lanes.begin[lane] + lanes.used[lane] - lane * alignment;
}

bool isPacked(void const* block)
{
    return std::any_of(lanes.begin.begin(), lanes.begin.end(), [block](char const* lane) {
        return lane != nullptr && !std::less<>()(block, lane) && std::less<>()(block, lane + laneSize);
    });
}

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

PackedMemory::PackedMemory()
{
    for (char*& lane : lanes.begin) {
        lane = lane != nullptr ? lane : static_cast<char*>(std::malloc(laneSize));
    }
    isPacking = true;
}

PackedMemory::~PackedMemory()
{
    // What a failing test leaves behind may still be used.
    isPacking = false;
}

// Not inlined, since compilers take free() for a mistake where they see it behind a plain new.
[[gnu::noinline]] void* operator new(std::size_t size)
{
    if (void* const block = packed(size)) {
        return block;
    }
    void* const block = size <= largestBlock && !failsNow() ? std::malloc(size) : nullptr;
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

[[gnu::noinline]] void operator delete(void* block) noexcept
{
    if (!isPacked(block)) {
        std::free(block);
    }
}

[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept
{
    operator delete(block);
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
