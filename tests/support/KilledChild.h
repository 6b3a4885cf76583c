#pragma once

#include <algorithm>
#include <csignal>
#include <functional>
#include <initializer_list>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

/// Runs \a body in a forked child and kills it when it is about to make the \a nth of its calls that are
/// among the system calls \a numbers (SYS_write ...), before that call has any effect.
///
/// \return whether it came so far; false when it ended by itself
inline bool killBeforeCall(std::initializer_list<long> numbers, int nth, std::function<void()> const& body)
{
    pid_t const child = fork();
    if (child == 0) {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        body();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    for (;;) {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) {
            return false;
        }
        __ptrace_syscall_info info = {};
        ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof(info), &info);
        bool const counts =
            info.op == PTRACE_SYSCALL_INFO_ENTRY &&
            std::find(numbers.begin(), numbers.end(), static_cast<long>(info.entry.nr)) != numbers.end();
        if (counts && --nth == 0) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            return true;
        }
    }
}
