#pragma once

#include <cstdio>
#include <functional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

/// Faults that would outlive a test are provoked in a child process of its own.

/// Runs \a body in a forked child and gives its exit code, or minus the number of the signal that ended it.
///
/// What fails in the child cannot reach the test's own checks; \a body reports by its result.
inline int inChildProcess(std::function<int()> const& body)
{
    std::fflush(nullptr);
    pid_t const child = fork();
    if (child == 0) {
        _exit(body());
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
