#pragma once

#include <QString>
#include <optional>

/// The file system that holds a folder.
struct Disk
{
    QString root;         ///< where it is mounted
    qint64 total = 0;     ///< bytes
    qint64 available = 0; ///< bytes that this user may still fill
    bool isReadOnly = false;

    /// Nothing when \a folder is not there, or on what has no bytes at all, such as /proc.
    [[nodiscard]] static std::optional<Disk> of(QString const& folder);
};
