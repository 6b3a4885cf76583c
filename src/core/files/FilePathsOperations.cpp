#include "FilePaths.h"

#include "../FileName_p.h"
#include "CopyWithoutReplacing_p.h"
#include "FileAge_p.h"
#include "FileReveal_p.h"
#include "FolderWalk_p.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QMimeType>
#include <QSaveFile>
#include <QStandardPaths>
#include <QTextStream>
#include <QUrl>
#include <QUuid>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <limits>
#include <new>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

std::optional<struct stat> statusOf(QString const& path)
{
    struct stat status
    {
    };
    bool const found = isPossibleName(path) && ::stat(QFile::encodeName(path).constData(), &status) == 0;
    return found ? std::optional(status) : std::nullopt;
}

bool isLink(QString const& path)
{
    return QFileInfo(path).isSymLink();
}

/// Whether the name \a path is taken, by a link that leads nowhere as well.
bool isTaken(QString const& path)
{
    return isPossibleName(path) && (QFileInfo::exists(path) || isLink(path));
}

/// Whether \a path is a file that can be read without waiting; those among the application's resources are.
bool isRegularFile(QString const& path)
{
    return isPossibleName(path) && QFileInfo(path).isFile();
}

/// Whether opening \a path for writing would wait for someone to read from it.
bool isPipe(QString const& path)
{
    std::optional<struct stat> const status = statusOf(path);
    return status && S_ISFIFO(status->st_mode);
}

/// Opens \a path for writing, emptied.
bool openForWriting(QFile& file, QString const& path)
{
    if (!isPossibleName(path) || isPipe(path)) {
        return false;
    }
    file.setFileName(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate);
}

bool isSameFile(QString const& a, QString const& b)
{
    std::optional<struct stat> const first = statusOf(a);
    std::optional<struct stat> const second = statusOf(b);
    return first && second && first->st_dev == second->st_dev && first->st_ino == second->st_ino;
}

bool rename(QString const& src, QString const& dst)
{
    return std::rename(QFile::encodeName(src).constData(), QFile::encodeName(dst).constData()) == 0;
}

/// Renames the file \a src to \a dst on another file system: the copy is complete before it takes the name,
/// and \a src goes last.
bool renameAcrossFileSystems(QString const& src, QString const& dst)
{
    // A short name, because that of dst may be as long as names can be.
    QString const copy =
        QFileInfo(dst).path() + QStringLiteral("/.") + QUuid::createUuid().toString(QUuid::Id128);
    if (!isRegularFile(src) || !copyWithoutReplacing(src, copy)) {
        return false;
    }
    if (!rename(copy, dst)) {
        QFile::remove(copy);
        return false;
    }
    return QFile::remove(src);
}

/// The name \a path without what would make the system follow a link: a '/' or "/." at its end.
QByteArray ownName(QString const& path)
{
    QByteArray name = QFile::encodeName(path);
    while (name.size() > 1 && (name.endsWith('/') || name.endsWith("/."))) {
        name.chop(1);
    }
    return name;
}

void removeEntry(int folder, char const* name)
{
    ::unlinkat(folder, name, 0);
}

void removeEmptyFolder(int parent, char const* name)
{
    ::unlinkat(parent, name, AT_REMOVEDIR);
}

/// The files of \a folder, hidden ones included, whose name \a isWanted.
template <typename Predicate>
QFileInfoList filesOf(QString const& folder, Predicate isWanted)
{
    if (!isPossibleName(folder)) {
        return {};
    }
    QFileInfoList files = QDir(folder).entryInfoList(QDir::Files | QDir::Hidden, QDir::Unsorted);
    files.removeIf([&](QFileInfo const& file) { return !isWanted(file); });
    return files;
}

/// Whether \a a comes before \a b from the oldest to the newest, those equally new by name backwards.
bool isOlder(QFileInfo const& a, QFileInfo const& b)
{
    auto const time = [](QFileInfo const& file) {
        std::optional<struct stat> const status = statusOf(file.filePath());
        timespec const modified = status ? FileAge::lastModified(*status) : timespec{};
        return std::pair(modified.tv_sec, modified.tv_nsec);
    };
    auto const first = time(a);
    auto const second = time(b);
    return first != second ? first < second : a.fileName() > b.fileName();
}

template <typename Predicate>
void removeFilesOf(QString const& folder, Predicate isWanted)
{
    for (QFileInfo const& file : filesOf(folder, isWanted)) {
        FilePaths::removeFile(file.filePath());
    }
}

bool isOfType(QString const& path, QString const& mimeType)
{
    return QMimeDatabase().mimeTypeForFile(path).inherits(mimeType);
}

/// Whether \a name, a level or several, stays inside whatever folder it is put into.
bool staysInside(QString const& name)
{
    return isPossibleName(name) && QDir::isRelativePath(name) &&
           !name.split(QLatin1Char('/')).contains(QLatin1String(".."));
}

QString readText(QString const& path, qint64 maxSize)
try {
    QFile file(path);
    if (file.size() > maxSize || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return {};
    }
    // No text has more UTF-16 units than it has bytes, so this is all of it, and a file that another process
    // makes longer meanwhile is not followed.
    QTextStream stream(&file);
    QString text = stream.read(std::min<qint64>(maxSize, std::numeric_limits<int>::max()));
    bool const whole = file.error() == QFileDevice::NoError && file.size() <= maxSize;
    return whole ? text : QString();
} catch (std::bad_alloc const&) {
    return {}; // how long the file is was up to whoever wrote it
}

} // namespace

bool FilePaths::removeFile(QString const& path)
{
    return !isTaken(path) || QFile::remove(path) || !isTaken(path);
}

bool FilePaths::createFile(QString const& path)
{
    QFile file;
    return openForWriting(file, path);
}

QString FilePaths::createBinaryDataFile(QString const& path, QByteArray const& data)
{
    std::optional<struct stat> const existing = statusOf(path);
    // The successor would take the place of a device, a pipe or a link that leads round in a circle.
    if (!isPossibleName(path) || (existing ? !S_ISREG(existing->st_mode) : errno != ENOENT)) {
        return QString();
    }
    QSaveFile file(path);
    bool const written = file.open(QIODevice::WriteOnly) && file.write(data) == data.size() &&
                         (!existing || ::fchmod(file.handle(), existing->st_mode & 07777) == 0);
    return written && file.commit() ? path : QString();
}

bool FilePaths::copyFile(QString const& src, QString& dst)
{
    // A copy of the source, because callers may pass one text as both.
    QString const source = src; // NOLINT(performance-unnecessary-copy-initialization)
    QFileInfo const requested(dst);
    QString const baseName = requested.baseName();
    QString const suffix = requested.suffix();
    for (int n = 1;; ++n) {
        bool const free = !isTaken(dst);
        if (free && (!isRegularFile(source) || !isPossibleName(dst))) {
            return false;
        }
        if (free && copyWithoutReplacing(source, dst)) {
            setFileBirthTimeToNow(dst);
            return true;
        }
        // Unless another caller was quicker to take the name, the copy itself has failed.
        if (free && !isTaken(dst)) {
            return false;
        }
        QString const name = QStringLiteral("%1(%2).%3").arg(baseName, QString::number(n), suffix);
        dst = buildAbsoluteFilePath(QFileInfo(dst).path(), name, false);
    }
}

bool FilePaths::moveFile(QString const& src, QString& dst)
{
    // A copy of the source, because callers may pass one text as both.
    QString const source = src; // NOLINT(performance-unnecessary-copy-initialization)
    return copyFile(source, dst) && removeFile(source);
}

bool FilePaths::createFileCopyInSameFolder(QString const& src, QString const& suffix)
{
    QString dst = appendSuffix(src, suffix);
    return copyFile(src, dst);
}

bool FilePaths::renameFile(QString const& src, QString const& dst)
{
    if (!isTaken(src) || !isPossibleName(dst)) {
        return false;
    }
    // A link that took the name of the very file it leads to would lead to itself.
    if ((isLink(src) || isLink(dst)) && isSameFile(src, dst)) {
        return true;
    }
    // The system would let one folder take the place of another that is empty.
    if (isDirectory(dst) && !isLink(dst) && !isSameFile(src, dst)) {
        return false;
    }
    return rename(src, dst) || (errno == EXDEV && renameAcrossFileSystems(src, dst));
}

bool FilePaths::moveFolder(QString const& src, QString const& destDir, QString const& name)
{
    if (!isDirectory(src) || !isPossibleName(destDir) || !staysInside(name)) {
        return false;
    }
    QString const dst = QDir(destDir).filePath(name);
    return !isTaken(dst) && rename(src, dst);
}

bool FilePaths::removeFolder(QString const& path)
{
    if (!isDirectory(path)) {
        return true;
    }
    QByteArray const name = ownName(path);
    if (QFileInfo(QFile::decodeName(name)).isSymLink()) {
        return ::unlink(name.constData()) == 0;
    }
    FolderWalk::walk(name, FolderWalk::Depth::WholeTree, {removeEntry, removeEmptyFolder});
    return ::rmdir(name.constData()) == 0 || errno == ENOENT;
}

bool FilePaths::cleanFolder(QString const& path)
{
    std::optional<struct stat> const before = statusOf(path);
    if (!before || !S_ISDIR(before->st_mode) || !removeFolder(path)) {
        return false;
    }
    QByteArray const name = ownName(path);
    // Nobody may look in before the mode is right, which the process's mask keeps mkdir() from setting.
    return ::mkdir(name.constData(), S_IRWXU) == 0 &&
           ::chmod(name.constData(), before->st_mode & ALLPERMS) == 0;
}

void FilePaths::removeOldFiles(QString const& folder, int days, bool recursive)
{
    if (!isPossibleName(folder)) {
        return;
    }
    auto const removeIfOld = [days, now = FileAge::now()](int parent, char const* name) {
        struct stat status
        {
        };
        if (::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && FileAge::isOld(status, now, days)) {
            removeEntry(parent, name);
        }
    };
    FolderWalk::walk(ownName(folder), recursive ? FolderWalk::Depth::WholeTree : FolderWalk::Depth::OneFolder,
                     {removeIfOld, {}});
}

QString FilePaths::getExtensionFromFileName(QString const& name)
{
    return getFileExtension(name);
}

QString FilePaths::getFileByBaseName(QString const& folder, QString const& baseName)
{
    QFileInfoList const files =
        filesOf(folder, [&](QFileInfo const& file) { return file.completeBaseName() == baseName; });
    auto const newest = std::ranges::max_element(files, isOlder);
    return newest == files.end() ? QString() : newest->absoluteFilePath();
}

void FilePaths::removeAllFilesByBaseName(QString const& folder, QString const& baseName)
{
    removeFilesOf(folder, [&](QFileInfo const& file) { return file.completeBaseName() == baseName; });
}

void FilePaths::removeOtherFilesByBaseName(QString const& folder, QString const& keepFile)
{
    QFileInfo const kept(keepFile);
    removeFilesOf(folder, [&](QFileInfo const& file) {
        return file.completeBaseName() == kept.completeBaseName() && file.suffix() != kept.suffix();
    });
}

void FilePaths::removeExtensionFilesFromFolder(QString const& folder, QString const& extension)
{
    removeFilesOf(folder, [&](QFileInfo const& file) { return file.completeSuffix() == extension; });
}

QString FilePaths::buildDownloadFilePath(QString const& fileName)
{
    return buildAbsoluteFilePath(QStandardPaths::writableLocation(QStandardPaths::DownloadLocation), fileName,
                                 true);
}

bool FilePaths::writeFileContent(QString const& path, QString const& content)
{
    QFile file;
    if (!openForWriting(file, path)) {
        return false;
    }
    QTextStream(&file) << content;
    return true;
}

QString FilePaths::readFileContent(QString const& path, QString const& mimeType,
                                   std::vector<QString> const& suffixes, unsigned int maxSize,
                                   QString& suffix)
{
    QString const found = getFileExtension(path).toLower();
    if (!fileExists(path) || std::ranges::find(suffixes, found) == suffixes.end()) {
        return QString();
    }
    suffix = found;
    if (!isRegularFile(path) || !isOfType(path, mimeType)) {
        return QString();
    }
    return readText(path, maxSize);
}

QString FilePaths::appendToFileName(QString const& path, QString const& text, QString const& extension)
{
    QFileInfo const file(path);
    QString const name = file.baseName() + QLatin1Char('_') + text + QLatin1Char('.') + file.completeSuffix();
    bool const complete = extension.isEmpty() || extension == file.suffix();
    return complete ? name : name + QLatin1Char('.') + extension;
}

QString FilePaths::changeFileExtension(QString const& path, QString const& extension)
{
    if (path.isEmpty() || isDirectory(path)) {
        return path;
    }
    QFileInfo const file(path);
    QString const suffix = extension.startsWith(QLatin1Char('.')) ? extension.mid(1) : extension;
    return QDir(file.path()).filePath(QStringLiteral("%1.%2").arg(file.completeBaseName(), suffix));
}

QString FilePaths::handleFileScheme(QString const& text)
{
    QString const path = QUrl::fromUserInput(text).toLocalFile();
    if (!fileExists(path)) {
        return text;
    }
    QLatin1String const slashes(text.startsWith(QLatin1String("//")) ? "" : "///");
    return QStringLiteral("file:") + slashes + path;
}

QString FilePaths::getFileMimeType(QString const& path)
{
    QMimeDatabase const types;
    return isPossibleName(path) ? types.mimeTypeForFile(path).name()
                                : QStringLiteral("application/octet-stream");
}

bool FilePaths::areSameFilePath(QString const& a, QString const& b)
{
    auto const absolute = [](QString const& path) {
        return isPossibleName(path) ? QDir::cleanPath(QFileInfo(path).absoluteFilePath()) : path;
    };
    return absolute(a) == absolute(b);
}

void FilePaths::showFileInFolder(QString const& path)
{
    if (isPossibleName(path)) {
        FileReveal::start(FileReveal::program(path));
    }
}
