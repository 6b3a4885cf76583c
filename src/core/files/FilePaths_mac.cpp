#include "FilePaths_p.h"

#include <QDir>
#include <QFile>
#include <cstdint>
#include <mach-o/dyld.h>

QString FilePathsDetail::executableFilePath()
{
    std::uint32_t size = 0;
    _NSGetExecutablePath(nullptr, &size);
    QByteArray path(static_cast<qsizetype>(size), '\0');
    if (_NSGetExecutablePath(path.data(), &size) != 0) {
        return QString();
    }
    return QDir::cleanPath(QFile::decodeName(path.constData()));
}
