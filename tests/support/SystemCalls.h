#pragma once

#include <functional>

/// Calls of the system that fail, or that somebody else gets in before, for what no file system here does by
/// itself. A test that includes this replaces them for its whole process, the libraries under test included.
namespace SystemCalls {

enum class Call {
    Lock, ///< flock()
    Link, ///< link()
};

/// All calls of one kind fail with an error while this object lives.
class Failing
{
public:
    Failing(Call call, int error);
    ~Failing();
    Failing(Failing const&) = delete;
    Failing& operator=(Failing const&) = delete;

private:
    Call m_call;
};

/// Runs \a act just before a file is locked the next time, in the thread that locks it.
void beforeNextLock(std::function<void()> act);

} // namespace SystemCalls
