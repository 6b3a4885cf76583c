#pragma once

#include "ContactDirectory.h"

#include <QByteArrayView>
#include <vector>

namespace Softphone {

/// The entries of a directory's JSON, and where it is wrong.
struct DirectoryEntries
{
    std::vector<ContactCard> cards;
    QList<ContactDirectory::LoadError> errors;
};

/// Reads \a json as ContactDirectory::load() does. Linear; the stack is bounded.
///
/// An entry that is wrong is left out, and reading goes on after its closing bracket, or at an entry that
/// begins a line as deep as it did. A text without an end ends with its line.
[[nodiscard]] DirectoryEntries readDirectory(QByteArrayView json);

} // namespace Softphone
