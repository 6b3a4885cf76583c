#pragma once

/// While it lives, one call of malloc(), calloc() or realloc() on this thread fails: the \a nth from now, 0
/// the next. One at a time.
///
/// Qt's containers and operator new take their memory from there, so that every place can be met where memory
/// runs out. Only for programs that have FailingMalloc.cpp among their own sources, with glibc and without
/// sanitizers.
class FailingMalloc
{
public:
    explicit FailingMalloc(int nth);
    ~FailingMalloc();
    FailingMalloc(FailingMalloc const&) = delete;
    FailingMalloc& operator=(FailingMalloc const&) = delete;

    /// Whether there were as many calls, so that one has failed.
    [[nodiscard]] bool happened() const;
};
