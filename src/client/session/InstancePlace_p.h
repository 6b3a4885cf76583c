#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace Softphone::Impl {

/// Where the copies of a program meet: files in a folder that nobody but their user may write to.
struct InstancePlace
{
    QString lock; ///< locked by the first copy as long as it lives; names it
    QString deaf; ///< left by a copy that got no answer; names the first copy that gave none

    /// The path of the socket on which the first copy called \a holder listens. Each has one of its own, so
    /// that one that was deaf and ends takes no other's with it.
    [[nodiscard]] QString socket(QByteArray const& holder) const;

    /// Removes the sockets left by first copies that were killed.
    void removeOldSockets() const;

    /// The place of the program \a application; nothing where this user has no private folder.
    ///
    /// That is the user's runtime folder ($XDG_RUNTIME_DIR, or the one that the system makes at log-in), or
    /// else a folder below the user's cache. The name is hashed, since a socket's path may have about a
    /// hundred bytes; a folder that is too long by itself is passed over.
    [[nodiscard]] static std::optional<InstancePlace> of(QString const& application);

private:
    explicit InstancePlace(QString const& path);

    QString m_path;
};

} // namespace Softphone::Impl
