#pragma once

#include <QString>

/// Whether any file can have the name \a path. Qt's file classes remark on the others (nothing, or an
/// embedded NUL) on the console, and the system would take such a name for the shorter one before the NUL.
[[nodiscard]] inline bool isPossibleName(QString const& path)
{
    return !path.isEmpty() && !path.contains(QChar(QChar::Null));
}
