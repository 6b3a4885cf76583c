#pragma once

#include <QString>

namespace FilePathsDetail {

/// Whether any file can have the name \a path. Qt's file classes remark on the others on the console, so
/// they are sorted out before.
[[nodiscard]] inline bool isPossibleName(QString const& path)
{
    return !path.isEmpty() && !path.contains(QChar(QChar::Null));
}

/// The path of the running executable, asked from the system; empty when it does not tell.
[[nodiscard]] QString executableFilePath();

} // namespace FilePathsDetail
