#pragma once

#include <QByteArray>
#include <QString>

/// File names as the user gives them: bytes, which need not be UTF-8.
///
/// In the commands a name is text. A byte that belongs to no UTF-8 character stands there as half of a
/// character (U+DC00 and the byte), which no UTF-8 text can hold, so that the name can be told and written
/// again.
namespace FileName {

/// The text for the name \a bytes.
[[nodiscard]] QString fromNative(QByteArray const& bytes);

/// The bytes of the name \a text, as the system takes them.
[[nodiscard]] QByteArray toNative(QString const& text);

/// Whether \a text is a name in UTF-8, as the library takes them.
[[nodiscard]] bool isUtf8(QString const& text);

} // namespace FileName
