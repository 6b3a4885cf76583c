#include "SystemCalls.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <dlfcn.h>
#include <mutex>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace {

using SystemCalls::Call;

std::mutex lock;
std::function<void()> nextAct;

std::atomic<int>& errorOf(Call call)
{
    static std::array<std::atomic<int>, 2> errors = {};
    return errors.at(static_cast<std::size_t>(call));
}

bool fails(Call call)
{
    int const error = errorOf(call);
    errno = error == 0 ? errno : error;
    return error != 0;
}

void act()
{
    std::function<void()> now;
    {
        std::lock_guard const guard(lock);
        now = std::exchange(nextAct, {});
    }
    if (now) {
        now();
    }
}

template <typename Function>
Function* system(char const* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

namespace SystemCalls {

Failing::Failing(Call call, int error)
    : m_call(call)
{
    errorOf(call) = error;
}

Failing::~Failing()
{
    errorOf(m_call) = 0;
}

void beforeNextLock(std::function<void()> act)
{
    std::lock_guard const guard(lock);
    nextAct = std::move(act);
}

} // namespace SystemCalls

// The libraries find these before the system's.

extern "C" int flock(int file, int operation) noexcept
{
    act();
    return fails(Call::Lock) ? -1 : system<int(int, int)>("flock")(file, operation);
}

extern "C" int link(char const* from, char const* to) noexcept
{
    return fails(Call::Link) ? -1 : system<int(char const*, char const*)>("link")(from, to);
}
