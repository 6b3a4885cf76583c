#pragma once

#include <QByteArray>
#include <QString>

namespace Softphone::Impl {

/// The lock that says which copy of a program is the first.
///
/// The system lets go of it when its holder ends, however that comes, so that a lock is never stale. The file
/// stays; it holds a name for the holder, by which others can refer to just this one.
class InstanceLock
{
public:
    InstanceLock() = default;
    ~InstanceLock();
    InstanceLock(InstanceLock const&) = delete;
    InstanceLock& operator=(InstanceLock const&) = delete;

    /// Takes the lock in the file \a path. Where it gives false, errno tells why: EWOULDBLOCK when somebody
    /// else has it.
    bool take(QString const& path);

    /// Lets go of it.
    void release();

    [[nodiscard]] bool isTaken() const { return m_file >= 0; }

    /// The length of a holder's name; no two holders have the same name.
    static constexpr qsizetype holderSize = 8;

    /// The name of who has, or last had, the lock in the file \a path; empty when nobody ever had it.
    [[nodiscard]] static QByteArray holder(QString const& path);

private:
    int m_file = -1;
};

} // namespace Softphone::Impl
