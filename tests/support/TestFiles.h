#pragma once

#include <QDir>
#include <QFile>
#include <QSet>
#include <QString>
#include <fcntl.h>
#include <sys/stat.h>

/// Writing, reading, ageing and counting files for tests, without the library's own file operations.
namespace TestFiles {

inline bool write(QString const& path, QByteArray const& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

/// All of the file \a path; null when there is none.
inline QByteArray read(QString const& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Sets the time of last modification of \a path itself, a link as well, to \a time.
inline bool setModified(QString const& path, timespec time)
{
    timespec const both[] = {time, time};
    return ::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), both, AT_SYMLINK_NOFOLLOW) == 0;
}

/// The same, \a seconds before now.
inline bool setAge(QString const& path, qint64 seconds)
{
    timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    time.tv_sec -= static_cast<time_t>(seconds);
    return setModified(path, time);
}

inline bool link(QString const& target, QString const& path)
{
    return QFile::link(target, path);
}

/// Whether anything is named \a path, a link that leads nowhere as well.
inline bool isThere(QString const& path)
{
    struct stat status
    {
    };
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0;
}

/// The names of all that \a folder holds.
inline QSet<QString> names(QString const& folder)
{
    QStringList const entries =
        QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    return {entries.begin(), entries.end()};
}

/// How many descriptors this process has open, always counting the one that looks.
inline qsizetype openDescriptors()
{
    return names(QStringLiteral("/dev/fd")).size();
}

} // namespace TestFiles
