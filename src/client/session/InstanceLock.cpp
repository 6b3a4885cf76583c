#include "InstanceLock_p.h"

#include <QFile>
#include <QRandomGenerator>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace Softphone::Impl {

namespace {

bool isStillAt(QByteArray const& path, int file)
{
    struct stat opened = {};
    struct stat named = {};
    return fstat(file, &opened) == 0 && lstat(path.constData(), &named) == 0 &&
           opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

bool writeHolder(int file)
{
    QByteArray const name = QByteArray::number(QRandomGenerator::system()->generate(), 16)
                                .rightJustified(InstanceLock::holderSize, '0');
    return ftruncate(file, 0) == 0 &&
           pwrite(file, name.constData(), static_cast<std::size_t>(name.size()), 0) == name.size();
}

} // namespace

InstanceLock::~InstanceLock()
{
    release();
}

bool InstanceLock::take(QString const& path)
{
    QByteArray const name = QFile::encodeName(path);
    for (;;) {
        int const file = open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
        if (file < 0) {
            return false;
        }
        bool const locked = flock(file, LOCK_EX | LOCK_NB) == 0;
        // Between opening and locking somebody may have put another file here, whose lock is the one that
        // counts.
        if (locked && !isStillAt(name, file)) {
            close(file);
            continue;
        }
        if (!locked || !writeHolder(file)) {
            close(file);
            return false;
        }
        release();
        m_file = file;
        return true;
    }
}

void InstanceLock::release()
{
    if (isTaken()) {
        close(std::exchange(m_file, -1));
    }
}

QByteArray InstanceLock::holder(QString const& path)
{
    QFile file(path);
    QByteArray const name = file.open(QIODevice::ReadOnly) ? file.read(holderSize) : QByteArray();
    return name.size() == holderSize ? name : QByteArray();
}

} // namespace Softphone::Impl
