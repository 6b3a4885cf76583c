#pragma once

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

/// Faults that would outlive a test are provoked in a child process of its own.

/// Runs \a body in a forked child and gives its exit code, or minus the number of the signal that ended it.
///
/// What fails in the child cannot reach the test's own checks; \a body reports by its result. What it throws
/// ends it by SIGABRT.
inline int inChildProcess(std::function<int()> const& body)
{
    std::fflush(nullptr);
    pid_t const child = fork();
    if (child == 0) {
        // The test's own handlers would start a debugger.
        for (int const fatal : {SIGABRT, SIGSEGV, SIGBUS}) {
            std::signal(fatal, SIG_DFL);
        }
        _exit([&body]() noexcept { return body(); }());
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) {
        return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

/// Lowers a limit of this process, for good.
inline bool limitResource(decltype(RLIMIT_FSIZE) resource, rlim_t limit)
{
    rlimit const limits = {limit, limit};
    return setrlimit(resource, &limits) == 0;
}

/// Lets this process have \a extra bytes of addresses more than it has now, for good. A sanitizer needs more
/// than can be allowed.
inline bool limitFurtherMemory(rlim_t extra)
{
    unsigned long long pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages != 0 && limitResource(RLIMIT_AS, pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + extra);
}

/// Takes what memory is left, for good: every later allocation of this process fails.
inline bool takeAllMemory()
{
    if (!limitResource(RLIMIT_AS, 0)) {
        return false;
    }
    // Large blocks first, and then every size of which the allocator keeps some in store.
    for (std::size_t size = 1U << 20U; size >= 16; size = size > 2048 ? size / 2 : size - 16) {
        void* volatile block = nullptr;
        do {
            block = std::malloc(size);
        } while (block != nullptr);
    }
    return true;
}

/// Makes this process one that file permissions bind, for good. The folder that it works in stays reachable
/// by relative paths, whatever the folders above it allow.
inline bool becomeOrdinaryUser()
{
    constexpr unsigned nobody = 65534;
    return geteuid() != 0 || (setgid(nobody) == 0 && setuid(nobody) == 0);
}

/// The most memory that this process has had so far, in KiB.
inline long peakMemory()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}
