#include "Reason.h"

#include "Disk.h"
#include "FileName.h"

#include <QFileInfo>
#include <QLocale>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

std::optional<struct stat> statusOf(QByteArray const& name)
{
    struct stat status = {};
    return ::stat(name.constData(), &status) == 0 ? std::optional(status) : std::nullopt;
}

bool mayUse(QByteArray const& name, int how)
{
    return ::faccessat(AT_FDCWD, name.constData(), how, AT_EACCESS) == 0;
}

/// What makes the entry with \a status no file to read from or to replace; empty for a file.
QString notAFile(struct stat const& status)
{
    return S_ISDIR(status.st_mode) ? QStringLiteral("it is a folder") : QString();
}

QString notUsable(QString const& path, int how)
{
    QByteArray const name = FileName::toNative(path);
    std::optional<struct stat> const status = statusOf(name);
    if (!status) {
        return Reason::ofError(errno);
    }
    if (QString reason = notAFile(*status); !reason.isEmpty()) {
        return reason;
    }
    return mayUse(name, how) ? QString() : Reason::ofError(errno);
}

} // namespace

namespace Reason {

QString ofError(int error)
{
    QString text = QString::fromStdString(std::generic_category().message(error));
    // "Permission denied" in the middle of a sentence, but not "I/O error".
    if (text.size() > 1 && text[1].isLower()) {
        text[0] = text[0].toLower();
    }
    return text;
}

QString notReadable(QString const& path)
{
    return notUsable(path, R_OK);
}

QString notChangeable(QString const& path)
{
    return notUsable(path, W_OK);
}

QString notWritable(QString const& path, qint64 size)
{
    QByteArray const name = FileName::toNative(path);
    std::optional<struct stat> const status = statusOf(name);
    if (status && !S_ISREG(status->st_mode)) {
        QString const folder = notAFile(*status);
        return folder.isEmpty() ? QStringLiteral("it is no regular file") : folder;
    }
    if (!status && errno != ENOENT) {
        return ofError(errno);
    }
    QString const folder = QFileInfo(path).path();
    QByteArray const folderName = FileName::toNative(folder);
    if (!statusOf(folderName)) {
        return QStringLiteral("the folder %1: ").arg(folder) + ofError(errno);
    }
    if (!mayUse(folderName, W_OK | X_OK)) {
        return QStringLiteral("the folder %1: ").arg(folder) + ofError(errno);
    }
    return noRoom(folder, size);
}

QString noRoom(QString const& folder, qint64 size)
{
    std::optional<Disk> const disk = Disk::of(folder);
    if (!disk || disk->available >= size) {
        return QString();
    }
    if (disk->available == 0) {
        return QStringLiteral("no space left on ") + disk->root;
    }
    QLocale const plain = QLocale::c();
    return QStringLiteral("no space left on %1: %2 are needed and %3 free")
        .arg(disk->root, plain.formattedDataSize(size), plain.formattedDataSize(disk->available));
}

} // namespace Reason
