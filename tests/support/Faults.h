#pragma once

#include <QString>
#include <QTemporaryDir>
#include <functional>
#include <sys/resource.h>

/// Makes \a folder an empty file system of \a size bytes, for a child process (see ChildProcess.h): no other
/// process sees it, and it goes with the child.
///
/// \return whether this system lets a test do so
bool becomeSmallDisk(QString const& folder, qint64 size);

/// Whether becomeSmallDisk() works here.
bool canBecomeSmallDisk();

/// Shows everything that there is inside \a folder, which is no file system itself, and makes it the root of
/// a child process (see ChildProcess.h), as a plain chroot does. No other process sees it.
///
/// \return whether this system lets a test do so
bool becomePlainRoot(QString const& folder);

/// Starts \a body, which need not end, in a process of its own and kills it \a microseconds after it began.
///
/// \return whether it ran, and was killed
bool killDuring(std::function<void()> const& body, unsigned int microseconds);

/// Makes file permissions bind this process and those that it starts, for good, whoever they run as.
///
/// Unlike becomeOrdinaryUser(), it leaves the user as it is, so that programs in folders of that user
/// still start.
bool obeyPermissions();

/// No file of this process may grow beyond a size while this object lives, as on a disk that is full.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes);
    ~FullDisk();
    FullDisk(FullDisk const&) = delete;
    FullDisk& operator=(FullDisk const&) = delete;

private:
    rlimit m_before = {};
    void (*m_handler)(int) = nullptr;
};

/// A temporary folder that the user whom becomeOrdinaryUser() makes can reach and owns.
class OrdinaryUserFolder
{
public:
    OrdinaryUserFolder();

    [[nodiscard]] QString path() const { return m_dir.path(); }
    [[nodiscard]] QString filePath(QString const& name) const { return m_dir.filePath(name); }

    /// Gives \a name inside to that user.
    void give(QString const& name) const;

private:
    QTemporaryDir m_dir;
};
