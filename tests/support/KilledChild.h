#pragma once

#include <algorithm>
#include <csignal>
#include <functional>
#include <initializer_list>
#include <optional>
#include <sys/ptrace.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

/// Runs \a body in a forked child, and \a action here when the child is about to make the \a nth of its calls
/// that are among the system calls \a numbers (SYS_write ...), before that call has any effect. \a action is
/// given the child's process id; a child that it leaves alive goes on.
///
/// \return the child's status, as waitpid() gives it, at its end; nothing when there was no such call
inline std::optional<int> interveneBeforeCall(std::initializer_list<long> numbers, int nth,
                                              std::function<void(pid_t)> const& action,
                                              std::function<int()> const& body)
{
    pid_t const child = fork();
    if (child == 0) {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        _exit(body());
    }
    int status = 0;
    waitpid(child, &status, 0);
    ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    while (nth > 0) {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) {
            return std::nullopt;
        }
        __ptrace_syscall_info info = {};
        ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof(info), &info);
        bool const counts =
            info.op == PTRACE_SYSCALL_INFO_ENTRY &&
            std::find(numbers.begin(), numbers.end(), static_cast<long>(info.entry.nr)) != numbers.end();
        nth -= counts ? 1 : 0;
    }
    action(child);
    ptrace(PTRACE_DETACH, child, nullptr, nullptr);
    waitpid(child, &status, 0);
    return status;
}

/// Runs \a body in a forked child and kills it when it is about to make the \a nth of its calls that are
/// among the system calls \a numbers, before that call has any effect.
///
/// \return whether it came so far; false when it ended by itself
inline bool killBeforeCall(std::initializer_list<long> numbers, int nth, std::function<void()> const& body)
{
    auto const status = interveneBeforeCall(
        numbers, nth, [](pid_t child) { kill(child, SIGKILL); },
        [&body] {
            body();
            return 0;
        });
    return status && WIFSIGNALED(*status);
}
