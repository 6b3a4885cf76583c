#include "InputFile.h"

#include "FileName.h"
#include "Reason.h"

#include <QDir>
#include <QTemporaryFile>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr qsizetype blockSize = 0x10000;

QString pathOf(int descriptor)
{
    return QStringLiteral("/dev/fd/%1").arg(descriptor);
}

} // namespace

InputFile::InputFile(QString const& named)
    : m_path(named)
{
    if (isStandardInput(named)) {
        copyStandardInput();
        return;
    }
    m_problem = Reason::notReadable(named);
    if (m_problem.isEmpty() && !FileName::isUtf8(named)) {
        openByDescriptor();
    }
}

InputFile::~InputFile()
{
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

bool InputFile::isStandardInput(QString const& named)
{
    return named == QStringLiteral("-");
}

QString InputFile::shown(QString const& named)
{
    return isStandardInput(named) ? QStringLiteral("standard input") : named;
}

void InputFile::copyStandardInput()
{
    QString const folder = QDir::tempPath();
    m_copy = std::make_unique<QTemporaryFile>(folder + QStringLiteral("/spcore-XXXXXX"));
    if (!m_copy->open()) {
        m_problem = QStringLiteral("no temporary file in %1: %2").arg(folder, m_copy->errorString());
        return;
    }
    QByteArray block(blockSize, '\0');
    while (std::size_t const length = std::fread(block.data(), 1, std::size_t(blockSize), stdin)) {
        if (m_copy->write(block.constData(), qint64(length)) != qint64(length)) {
            break;
        }
    }
    if (std::ferror(stdin) != 0) {
        m_problem = Reason::ofError(errno);
    } else if (!m_copy->flush() || m_copy->error() != QFileDevice::NoError) {
        m_problem = QStringLiteral("it does not fit into %1: %2").arg(folder, m_copy->errorString());
    }
    // Without a name nothing of it stays when the command is killed. Some systems read on from here.
    m_copy->seek(0);
    m_path = pathOf(m_copy->handle());
}

void InputFile::openByDescriptor()
{
    m_descriptor = ::open(FileName::toNative(m_path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (m_descriptor < 0) {
        m_problem = Reason::ofError(errno);
        return;
    }
    m_path = pathOf(m_descriptor);
}
