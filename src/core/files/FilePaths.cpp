#include "FilePaths.h"

#include "../FileName_p.h"
#include "FilePaths_p.h"
#include "PrivateFolder_p.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QSet>
#include <QStandardPaths>
#include <QStringList>
#include <QUrl>
#include <ctime>
#include <mutex>
#include <sys/time.h>

namespace {

QString applicationFilePath()
{
    // Qt works the path out and stores it at the first call, without a lock of its own.
    static std::mutex mutex;
    std::lock_guard const lock(mutex);
    return QCoreApplication::instance() != nullptr ? QCoreApplication::applicationFilePath()
                                                   : FilePathsDetail::executableFilePath();
}

QDir resourceDir()
{
    QDir dir(FilePaths::getAppPath());
    dir.cdUp();
    dir.cd(QStringLiteral("Resources"));
    return dir;
}

QString folderOf(QString const& path)
{
    return QFileInfo(path).path();
}

QString madeFolder(QString const& path)
{
    return FilePaths::createFoldersIteratively(path) ? path : QString();
}

/// The same, where the folder itself is closed to other users when it is made here. One that is there stays
/// as its user has it.
QString madePrivateFolder(QString const& path)
{
    QString const parent = folderOf(path);
    bool const hasPlace = FilePaths::createFoldersIteratively(parent) || FilePaths::dirExists(parent);
    // Nothing is made directly below the root.
    if (hasPlace && isPossibleName(path) && !QDir(parent).isRoot()) {
        QDir().mkdir(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    return madeFolder(path);
}

QString pathInMadeFolder(QString const& dir, QString const& name)
{
    return dir.isEmpty() ? QString() : FilePaths::absoluteFilePath(dir, name);
}

QString nameOf(QString const& path)
{
    return QFileInfo(path).fileName();
}

/// One folder of a walk: its entries, the next one to look at, and its path free of links.
struct WalkedFolder
{
    QFileInfoList entries;
    qsizetype next;
    QString canonicalPath;
};

WalkedFolder openFolder(QString const& path, QString const& canonicalPath)
{
    return {QDir(path).entryInfoList(QDir::Dirs | QDir::Files | QDir::NoDotAndDotDot,
                                     QDir::DirsFirst | QDir::Name),
            0, canonicalPath};
}

/// Only a link has to be asked where it leads; any other folder lies where its parent does.
QString canonicalPathOf(QFileInfo const& folder, QString const& canonicalParent)
{
    return folder.isSymLink() ? folder.canonicalFilePath()
                              : QDir(canonicalParent).filePath(folder.fileName());
}

QString findFile(QDir const& start, QString const& name)
{
    QString const canonicalStart = start.canonicalPath();
    QSet<QString> visited{canonicalStart};
    QList<WalkedFolder> path{openFolder(start.absolutePath(), canonicalStart)};
    while (!path.isEmpty()) {
        WalkedFolder& folder = path.last();
        if (folder.next == folder.entries.size()) {
            path.removeLast();
            continue;
        }
        QFileInfo const entry = folder.entries.at(folder.next++);
        if (entry.isDir()) {
            QString const canonical = canonicalPathOf(entry, folder.canonicalPath);
            if (!visited.contains(canonical)) {
                visited.insert(canonical);
                path.append(openFolder(entry.absoluteFilePath(), canonical));
            }
        } else if (entry.fileName() == name) {
            return entry.absoluteFilePath();
        }
    }
    return QString();
}

} // namespace

QString FilePaths::getAppPath()
{
    QString const executable = applicationFilePath();
    return executable.isEmpty() ? QString() : folderOf(executable);
}

QString FilePaths::getAppFilename()
{
    return nameOf(applicationFilePath()).toLower();
}

QString FilePaths::getResourcePath()
{
    return resourceDir().path();
}

QString FilePaths::getAssetsPath()
{
    QDir dir = resourceDir();
    dir.cd(QStringLiteral("assets"));
    return dir.path() + QLatin1Char('/');
}

QString FilePaths::getAppIconPath()
{
    return buildAbsoluteFilePath(getResourcePath(), QStringLiteral("appIcon.png"), false);
}

QString FilePaths::buildDataDir()
{
    return madePrivateFolder(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
}

QString FilePaths::buildLocalDataDir()
{
    return madePrivateFolder(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation));
}

QString FilePaths::buildTempPath()
{
    QString const location = QStandardPaths::writableLocation(QStandardPaths::TempLocation);
    QString const names =
        QCoreApplication::organizationName() + QLatin1Char('/') + QCoreApplication::applicationName();
    QStringList const levels = names.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    return levels.isEmpty() ? madeFolder(location) : PrivateFolder::forTemporaryFiles(location, levels);
}

QString FilePaths::buildDataPath(QString const& name)
{
    return pathInMadeFolder(buildDataDir(), name);
}

QString FilePaths::buildLocalDataPath(QString const& name)
{
    return pathInMadeFolder(buildLocalDataDir(), name);
}

bool FilePaths::buildDir(QString const& path)
{
    return createFoldersIteratively(path);
}

bool FilePaths::createDirIfNeeded(QString const& path)
{
    return createFoldersIteratively(path);
}

bool FilePaths::createSubdir(QString const& path)
{
    return isPossibleName(path) && (dirExists(path) || QDir().mkpath(path));
}

bool FilePaths::createFoldersIteratively(QString const& path)
{
    if (!isPossibleName(path)) {
        return false;
    }
    QStringList const levels = QDir::toNativeSeparators(path).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    if (levels.size() < 2) {
        return false;
    }
    QString folder = QLatin1Char('/') + levels.first();
    for (qsizetype level = 1; level < levels.size(); ++level) {
        folder += QLatin1Char('/') + levels.at(level);
        // Another process may make the same folder between the question and the attempt.
        if (!dirExists(folder) && !QDir().mkdir(folder) && !dirExists(folder)) {
            return false;
        }
    }
    return true;
}

QString FilePaths::getFileName(QString const& path, bool unique)
{
    QFileInfo const file(nameOf(path));
    QString name = file.fileName();
    if (!unique) {
        return name;
    }
    for (int number = 1; fileExists(name); ++number) {
        name = QStringLiteral("%1(%2).%3").arg(file.baseName(), QString::number(number), file.suffix());
    }
    return name;
}

QString FilePaths::buildAbsoluteFilePath(QString const& dir, QString const& file, bool unique)
{
    return absoluteFilePath(dir, getFileName(file, unique));
}

QString FilePaths::buildAbsoluteFilePath(QString const& dir, QString const& subdir, QString const& file,
                                         bool unique)
{
    QString const folder = buildAbsoluteDirPath(dir, subdir);
    return folder.isEmpty() ? QString() : buildAbsoluteFilePath(folder, file, unique);
}

QString FilePaths::buildAbsoluteDirPath(QString const& dir, QString const& subdir)
{
    if (!createFoldersIteratively(dir)) {
        return QString();
    }
    QString const path = buildRelativeFilePath(dir, subdir);
    return createSubdir(path) ? path : QString();
}

QString FilePaths::absoluteFilePath(QString const& dir, QString const& file)
{
    // Qt remarks on a folder with an embedded NUL and takes the name as it stands, so it is not asked.
    bool const isFolderName = !dir.contains(QChar(QChar::Null));
    return isFolderName ? QDir(dir).absoluteFilePath(file) : QDir(QDir::cleanPath(dir)).filePath(file);
}

QString FilePaths::absoluteDirPath(QString const& dir, QString const& subdir)
{
    return absoluteFilePath(dir, subdir);
}

QString FilePaths::buildRelativeFilePath(QString const& dir, QString const& file)
{
    return QDir(dir).filePath(file);
}

QString FilePaths::getAbsoluteFilePath(QString const& path)
{
    return fileExists(path) ? QFileInfo(path).absoluteFilePath() : QDir(getAppPath()).filePath(path);
}

QString FilePaths::getAbsolutePath(QString const& pathOrUrl)
{
    if (!isPossibleName(pathOrUrl)) {
        return QString();
    }
    QUrl const url = QUrl::fromUserInput(pathOrUrl, QDir::currentPath(), QUrl::AssumeLocalFile);
    QString const file = url.toLocalFile();
    return isPossibleName(file) ? QFileInfo(file).absolutePath() : QString();
}

QString FilePaths::getFilePathInSubfolder(QString const& folder, QString const& file)
{
    return recursiveCheckFile(QDir(folder), file);
}

QString FilePaths::getFolderNameFromFolderPath(QString const& path)
{
    return QDir(path).dirName();
}

QString FilePaths::getFileNameFromUrl(QString const& url)
{
    return QUrl::fromUserInput(url).path(QUrl::FullyDecoded);
}

bool FilePaths::fileExists(QString const& path)
{
    return isPossibleName(path) && QFileInfo::exists(path);
}

bool FilePaths::dirExists(QString const& path)
{
    return isDirectory(path);
}

bool FilePaths::isDirectory(QString const& path)
{
    return isPossibleName(path) && QFileInfo(path).isDir();
}

qint64 FilePaths::getFileSize(QString const& path)
{
    return fileExists(path) ? QFileInfo(path).size() : -1;
}

QString FilePaths::getFileExtension(QString const& path)
{
    return QFileInfo(path).suffix();
}

bool FilePaths::isNetworkPath(QString const& path)
{
    static QString const prefix = QStringLiteral("//");
    return path.startsWith(prefix, Qt::CaseSensitive);
}

QString FilePaths::prependFileProtocolToPath(QString const& path)
{
    QString const protocol = QStringLiteral("file://");
    return path.startsWith(protocol) ? path : protocol + path;
}

QString FilePaths::prependStringToFilename(QString const& path, QString const& prefix)
{
    return folderOf(path) + QLatin1Char('/') + prefix + nameOf(path);
}

QString FilePaths::removePrefixFromFilename(QString const& path, QString const& prefix)
{
    QString const name = nameOf(path);
    return name.startsWith(prefix) ? folderOf(path) + QLatin1Char('/') + name.mid(prefix.size()) : path;
}

QString FilePaths::appendSuffix(QString const& path, QString const& suffix)
{
    QString const complete = QFileInfo(path).completeSuffix();
    if (complete.isEmpty()) {
        return QString();
    }
    return path.chopped(complete.size() + 1) + QLatin1Char('-') + suffix + QLatin1Char('.') + complete;
}

QString FilePaths::cleanFromSubFolder(QString path, QString const& subfolder)
{
    QString const level = QLatin1Char('/') + subfolder;
    qsizetype const position = path.lastIndexOf(level);
    return position < 0 ? path : path.remove(position, level.size());
}

QString FilePaths::recursiveCheckFile(QDir dir, QString const& name)
{
    return isPossibleName(dir.path()) ? findFile(dir, name) : QString();
}

bool FilePaths::setFileBirthTimeToNow(QString const& path)
{
    timeval now{};
    now.tv_sec = std::time(nullptr);
    timeval const both[] = {now, now};
    return isPossibleName(path) && utimes(QFile::encodeName(path).constData(), both) == 0;
}
