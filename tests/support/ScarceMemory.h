#pragma once

#include <cstddef>

/// Memory that runs out when a test says so, in a program that has ScarceMemory.cpp among its own sources: it
/// replaces operator new, for the library as well.

/// While it lives, operator new gives no block larger than \a bytes, on any thread. One at a time.
class BlockLimit
{
public:
    explicit BlockLimit(std::size_t bytes);
    ~BlockLimit();
    BlockLimit(BlockLimit const&) = delete;
    BlockLimit& operator=(BlockLimit const&) = delete;
};

/// While it lives, one call of operator new on this thread fails: the \a nth from now, 0 the next. One at a
/// time.
class FailingAllocation
{
public:
    explicit FailingAllocation(int nth);
    ~FailingAllocation();
    FailingAllocation(FailingAllocation const&) = delete;
    FailingAllocation& operator=(FailingAllocation const&) = delete;

    /// Whether there were as many calls, so that one has failed.
    [[nodiscard]] bool happened() const;
};

/// While it lives, blocks of up to 1 KiB and of one size that operator new gives on this thread lie one right
/// behind the other, as some allocators have it and others never. One at a time.
class PackedMemory
{
public:
    PackedMemory();
    ~PackedMemory();
    PackedMemory(PackedMemory const&) = delete;
    PackedMemory& operator=(PackedMemory const&) = delete;
};

/// Runs \a operation, which tells whether it succeeded, first with its first allocation failing, then with
/// its second, and so on until none is left to fail.
///
/// \return the number of its allocations; -1 when it succeeded although one failed, or did not succeed at
/// last
template <typename Operation>
int allocationsThatMayFail(Operation operation)
{
    for (int nth = 0;; ++nth) {
        FailingAllocation const failure(nth);
        bool const succeeded = operation();
        if (succeeded == failure.happened()) {
            return -1;
        }
        if (succeeded) {
            return nth;
        }
    }
}
