#pragma once

#include <QProcess>
#include <csignal>

/// Sends \a signal to \a process and tells whether it was running. The id of one that has ended is 0, which
/// means everybody in this test's group, its runner too.
inline bool sendSignal(QProcess const& process, int signal)
{
    qint64 const id = process.processId();
    return id > 0 && ::kill(static_cast<pid_t>(id), signal) == 0;
}
