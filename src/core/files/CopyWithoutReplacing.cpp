#include "CopyWithoutReplacing_p.h"

#include <QFileInfo>
#include <QTemporaryFile>

namespace {

constexpr qint64 blockSize = 256 * 1024;

bool appendAll(QFile& source, QFile& copy)
{
    for (;;) {
        QByteArray const block = source.read(blockSize);
        if (block.isEmpty()) {
            return source.error() == QFileDevice::NoError && copy.flush();
        }
        if (copy.write(block) != block.size()) {
            return false;
        }
    }
}

} // namespace

// QFile::copy() did the same up to Qt 6.8. In Qt 6.11 of several callers who copy to one name each is told
// that it has succeeded.
bool copyWithoutReplacing(QString const& src, QString const& dst)
{
    QFile source(src);
    // Where the file system can do so it has no name before its own, so that a crash leaves nothing.
    QTemporaryFile copy(QFileInfo(dst).path() + QStringLiteral("/.copy.XXXXXX"));
    if (!source.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || !copy.open() ||
        !appendAll(source, copy)) {
        return false;
    }
    copy.setPermissions(source.permissions());
    bool const isNamed = copy.rename(dst);
    copy.setAutoRemove(!isNamed);
    return isNamed;
}
