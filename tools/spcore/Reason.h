#pragma once

#include <QString>

/// Why something cannot be done with a file, for operations whose answer is no more than "false". Each names
/// the first obstacle that it finds, as the second half of a sentence, without a full stop.
namespace Reason {

/// The system's words for \a error, an errno: "no such file or directory".
[[nodiscard]] QString ofError(int error);

/// Why the file \a path cannot be read; empty when nothing is in the way.
[[nodiscard]] QString notReadable(QString const& path);

/// Why the file \a path cannot be changed where it lies; empty when nothing is in the way.
[[nodiscard]] QString notChangeable(QString const& path);

/// Why no file of \a size bytes can be made at \a path, or take the place of the one there; empty when
/// nothing is in the way.
[[nodiscard]] QString notWritable(QString const& path, qint64 size = 0);

/// Why \a size more bytes find no room on the disk that holds \a folder: "no space left on /mnt"; empty when
/// they do.
[[nodiscard]] QString noRoom(QString const& folder, qint64 size);

} // namespace Reason
