#pragma once

#include <QtGlobal>
#include <ctime>
#include <sys/stat.h>

/// How old a file is, as pruning counts it.
namespace FileAge {

/// The time of last modification, under the name that the system's headers give it.
template <typename Status>
timespec lastModified(Status const& status)
{
    if constexpr (requires { status.st_mtimespec; }) {
        return status.st_mtimespec;
    } else {
        return status.st_mtim;
    }
}

inline timespec now()
{
    timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    return time;
}

/// Whether \a status, one that does not follow links, is of a file or a link last modified at least \a days
/// times 24 whole hours before \a now. What is dated after \a now never is.
inline bool isOld(struct stat const& status, timespec const& now, int days)
{
    timespec const modified = lastModified(status);
    qint64 const seconds = qint64(now.tv_sec) - modified.tv_sec - (now.tv_nsec < modified.tv_nsec ? 1 : 0);
    bool const isFile = S_ISREG(status.st_mode) || S_ISLNK(status.st_mode);
    return isFile && seconds >= 0 && seconds / 3600 >= qint64(days) * 24;
}

} // namespace FileAge
