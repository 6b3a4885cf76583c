#include "UploadFile_p.h"

#include <QFileInfo>

namespace Softphone {

UploadFile::UploadFile(QString const& path, QObject* parent)
    : QFile(path, parent)
{
}

bool UploadFile::openRegular()
{
    // A pipe that nobody writes to would not let the call return.
    if (!QFileInfo(fileName()).isFile() || !open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return false;
    }
    m_size = QFile::size();
    return true;
}

qint64 UploadFile::readData(char* data, qint64 most)
{
    qint64 const got = QFile::readData(data, most);
    m_hasFailed = m_hasFailed || got < 0 || (got == 0 && most > 0 && pos() < m_size);
    return got;
}

} // namespace Softphone
