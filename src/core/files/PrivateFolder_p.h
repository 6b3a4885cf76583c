#pragma once

#include <QString>
#include <QStringList>

/// Folders that other users of the machine have no part in.
namespace PrivateFolder {

/// The folder of \a levels, one inside the other, below \a location, where every user of the machine may have
/// folders. Each level is made where it is missing, for its user alone (0700).
///
/// Whoever makes a level before this user, or may write to it, decides what the files in it are. So when one
/// of them is another user's, a link, or open to others, the levels are made below the user's runtime folder
/// instead, or else below the user's cache folder.
///
/// \return the path; empty when a level cannot be made, and when no place is the user's own
[[nodiscard]] QString forTemporaryFiles(QString const& location, QStringList const& levels);

} // namespace PrivateFolder
