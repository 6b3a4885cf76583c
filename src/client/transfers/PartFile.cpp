#include "PartFile_p.h"

#include <QFile>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Softphone {

namespace {

constexpr int mostParts = 1000;
constexpr qsizetype blockSize = 256 * 1024;

struct stat statusOf(int descriptor)
{
    struct stat status = {};
    fstat(descriptor, &status);
    return status;
}

/// Whether \a descriptor is a file that nobody else can have prepared or will keep: a stranger's file would
/// let its owner choose what the download begins with.
bool isOwnPlainFile(struct stat const& status)
{
    return S_ISREG(status.st_mode) && status.st_uid == geteuid() && status.st_nlink == 1;
}

/// Whether \a path still names the file \a status: the download that held it may have renamed it meanwhile.
bool isNamed(QByteArray const& path, struct stat const& status)
{
    struct stat named = {};
    return lstat(path.constData(), &named) == 0 && named.st_ino == status.st_ino &&
           named.st_dev == status.st_dev;
}

bool lock(int descriptor)
{
    // A file system without locks has nobody else who holds one.
    return flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno == ENOLCK || errno == EOPNOTSUPP;
}

bool hasNoLinks(int error)
{
    return error == EPERM || error == EOPNOTSUPP || error == ENOSYS || error == EMLINK;
}

} // namespace

PartFile::~PartFile()
{
    close();
}

bool PartFile::open(QString const& folder, QString const& key)
{
    for (int number = 0; number < mostParts; ++number) {
        QString const mark = number == 0 ? QString() : QStringLiteral("-%1").arg(number);
        if (tryToOpen(folder + QStringLiteral("/transfer-") + key + mark + QStringLiteral(".part"))) {
            return true;
        }
        if (errno != EEXIST) {
            return false;
        }
    }
    return false;
}

/// False with EEXIST when \a path is taken.
bool PartFile::tryToOpen(QString const& path)
{
    QByteArray const name = QFile::encodeName(path);
    m_descriptor =
        ::open(name.constData(), O_RDWR | O_CREAT | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666);
    if (m_descriptor < 0) {
        errno = errno == ELOOP || errno == EISDIR || errno == ENXIO ? EEXIST : errno;
        return false;
    }
    struct stat const status = statusOf(m_descriptor);
    if (!lock(m_descriptor) || !isOwnPlainFile(status) || !isNamed(name, status)) {
        close();
        errno = EEXIST;
        return false;
    }
    m_path = path;
    return true;
}

void PartFile::close()
{
    if (isOpen()) {
        ::close(m_descriptor);
        m_descriptor = -1;
    }
}

qint64 PartFile::size() const
{
    return statusOf(m_descriptor).st_size;
}

bool PartFile::read(std::function<void(QByteArrayView)> const& take) const
{
    QByteArray block(blockSize, Qt::Uninitialized);
    qint64 position = 0;
    for (;;) {
        ssize_t const got = pread(m_descriptor, block.data(), static_cast<size_t>(block.size()), position);
        if (got <= 0) {
            return got == 0;
        }
        take(QByteArrayView(block).first(got));
        position += got;
    }
}

QByteArray PartFile::record(qsizetype most) const
{
    // A pipe that nobody writes to would not let the call return.
    int const file =
        ::open(QFile::encodeName(recordPath()).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) {
        return {};
    }
    QByteArray bytes(most, Qt::Uninitialized);
    ssize_t const got =
        isOwnPlainFile(statusOf(file)) ? ::read(file, bytes.data(), static_cast<size_t>(bytes.size())) : 0;
    ::close(file);
    bytes.truncate(std::max<ssize_t>(got, 0));
    return bytes;
}

bool PartFile::append(QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        ssize_t const written = ::write(m_descriptor, bytes.data(), static_cast<size_t>(bytes.size()));
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes = bytes.sliced(std::max<ssize_t>(written, 0));
    }
    return true;
}

bool PartFile::clear()
{
    return ftruncate(m_descriptor, 0) == 0;
}

void PartFile::takePermissionsOf(QString const& path) const
{
    struct stat status = {};
    if (stat(QFile::encodeName(path).constData(), &status) == 0) {
        static_cast<void>(!fchmod(m_descriptor, status.st_mode & 0777U));
    }
}

bool PartFile::replace(QString const& path)
{
    return rename(QFile::encodeName(m_path).constData(), QFile::encodeName(path).constData()) == 0;
}

bool PartFile::claim(QString const& path)
{
    QByteArray const name = QFile::encodeName(path);
    if (link(QFile::encodeName(m_path).constData(), name.constData()) == 0) {
        remove();
        return true;
    }
    if (!hasNoLinks(errno)) {
        return false;
    }
    // An empty file of our own holds the name until the part takes its place.
    int const holder = ::open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (holder < 0) {
        return false;
    }
    ::close(holder);
    return replace(path);
}

void PartFile::remove()
{
    unlink(QFile::encodeName(m_path).constData());
}

} // namespace Softphone
