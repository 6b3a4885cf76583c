#include "InstancePlace_p.h"

#include "InstanceLock_p.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QStringList>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace Softphone::Impl {

namespace {

bool isPrivateFolder(QString const& path)
{
    struct stat status = {};
    return lstat(QFile::encodeName(path).constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid() && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool fitsSocket(QString const& path)
{
    return QFile::encodeName(path).size() < qsizetype(sizeof(sockaddr_un::sun_path));
}

/// A folder of its own in the user's cache, which nobody but the user may enter.
QString cacheFolder()
{
    QString path = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                   QStringLiteral("/softphone-instances");
    QDir().mkpath(path);
    chmod(QFile::encodeName(path).constData(), S_IRWXU);
    return path;
}

std::optional<QString> usableFolder(QString const& longestName)
{
    QStringList const runtimeFolders{qEnvironmentVariable("XDG_RUNTIME_DIR"),
                                     QStringLiteral("/run/user/%1").arg(geteuid())};
    for (QString const& folder : runtimeFolders) {
        if (QDir::isAbsolutePath(folder) && isPrivateFolder(folder) && fitsSocket(folder + longestName)) {
            return folder;
        }
    }
    QString folder = cacheFolder();
    if (isPrivateFolder(folder) && fitsSocket(folder + longestName)) {
        return folder;
    }
    return std::nullopt;
}

} // namespace

InstancePlace::InstancePlace(QString const& path)
    : lock(path + QStringLiteral(".lock"))
    , deaf(path + QStringLiteral(".deaf"))
    , m_path(path)
{
}

QString InstancePlace::socket(QByteArray const& holder) const
{
    return m_path + QLatin1Char('-') + QString::fromLatin1(holder);
}

void InstancePlace::removeOldSockets() const
{
    QFileInfo const place(m_path);
    for (QFileInfo const& socket :
         place.dir().entryInfoList({place.fileName() + QStringLiteral("-*")}, QDir::System)) {
        QFile::remove(socket.filePath());
    }
}

std::optional<InstancePlace> InstancePlace::of(QString const& application)
{
    QByteArray const hash =
        QCryptographicHash::hash(application.toUtf8(), QCryptographicHash::Sha256).first(8).toHex();
    QString const name = QStringLiteral("/softphone-") + QString::fromLatin1(hash);
    std::optional<QString> const folder =
        usableFolder(InstancePlace(name).socket(QByteArray(InstanceLock::holderSize, 'x')));
    return folder ? std::optional(InstancePlace(*folder + name)) : std::nullopt;
}

} // namespace Softphone::Impl
