#pragma once

#include <QString>

namespace FilePathsDetail {

/// The path of the running executable, asked from the system; empty when it does not tell.
[[nodiscard]] QString executableFilePath();

} // namespace FilePathsDetail
