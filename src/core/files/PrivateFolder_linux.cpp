#include "PrivateFolder_p.h"

#include "../FileName_p.h"
#include "FilePaths.h"

#include <QFile>
#include <QStandardPaths>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr mode_t ownerOnly = 0700;
constexpr mode_t accessOfOthers = 0077;
constexpr mode_t writableByOthers = 0022;

enum class Attempt {
    Succeeded,
    Failed,    ///< as making a folder fails anywhere
    Disturbed, ///< other users have a hand in it
};

/// Whether nobody but its owner can take away or rename what a user has in \a folder. Otherwise a level could
/// be looked at and be another one when it is used.
bool protectsEntries(QString const& folder)
{
    struct stat status
    {
    };
    return ::stat(QFile::encodeName(folder).constData(), &status) == 0 &&
           ((status.st_mode & writableByOthers) == 0 || (status.st_mode & S_ISVTX) != 0);
}

/// Makes the folder \a path or finds it fit for use. Its parent protects it, so that it stays what it is.
Attempt makeLevel(QString const& path)
{
    QByteArray const name = QFile::encodeName(path);
    if (::mkdir(name.constData(), ownerOnly) != 0 && errno != EEXIST) {
        return Attempt::Failed;
    }
    struct stat status
    {
    };
    if (::lstat(name.constData(), &status) != 0) {
        return Attempt::Failed;
    }
    bool const isOpen = S_ISLNK(status.st_mode) || (status.st_mode & writableByOthers) != 0;
    if (status.st_uid != ::geteuid() || isOpen) {
        return Attempt::Disturbed;
    }
    if (!S_ISDIR(status.st_mode)) {
        return Attempt::Failed;
    }
    // One that was made with the usual mode can be read by everyone.
    bool const isPrivate = (status.st_mode & accessOfOthers) == 0;
    return isPrivate || ::chmod(name.constData(), status.st_mode & ownerOnly) == 0 ? Attempt::Succeeded
                                                                                   : Attempt::Failed;
}

/// Makes \a levels below \a path, which becomes the path of the last.
Attempt makeLevels(QString& path, QStringList const& levels)
{
    if (!FilePaths::dirExists(path) && !FilePaths::createFoldersIteratively(path)) {
        return Attempt::Failed;
    }
    if (!protectsEntries(path)) {
        return Attempt::Disturbed;
    }
    for (QString const& level : levels) {
        path += QLatin1Char('/') + level;
        // A level above the place would not be one below it, and its mode is not ours to change.
        if (!isPossibleName(path) || level == QLatin1String("..")) {
            return Attempt::Failed;
        }
        Attempt const attempt = makeLevel(path);
        if (attempt != Attempt::Succeeded) {
            return attempt;
        }
    }
    return Attempt::Succeeded;
}

/// The places that belong to this user alone. Qt's answer for the runtime folder is not asked for: it writes
/// to the console when the variable is not set.
QStringList ownPlaces()
{
    QStringList places{QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation)};
    QString const runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (runtime.startsWith(QLatin1Char('/')) && FilePaths::dirExists(runtime)) {
        places.prepend(runtime);
    }
    return places;
}

} // namespace

QString PrivateFolder::forTemporaryFiles(QString const& location, QStringList const& levels)
{
    QString path = location;
    switch (makeLevels(path, levels)) {
    case Attempt::Succeeded:
        return path;
    case Attempt::Failed:
        return QString();
    case Attempt::Disturbed:
        break;
    }
    for (QString place : ownPlaces()) {
        if (makeLevels(place, levels) == Attempt::Succeeded) {
            return place;
        }
    }
    return QString();
}
