#include "ImageUtils.h"

#include "../Boundary_p.h"
#include "../FileName_p.h"
#include "FilePaths.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QStringList>
#include <QtEndian>
#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// The most pixels that a byte of the encoded picture in \a device can stand for.
qint64 densestEncoding(QIODevice& device)
{
    QByteArray const header = device.peek(26);
    if (header.size() == 26 && header.startsWith("\x89PNG")) {
        // Deflate makes 1032 bytes out of one; a pixel takes the bits of its depth in one channel at least.
        int const depth = std::max(1, static_cast<int>(header.at(24)));
        bool const hasColour = header.at(25) == 2 || header.at(25) == 6;
        return 1032 * 8 / (depth * (hasColour ? 3 : 1));
    }
    // GIF is the densest of the others: the longest run, 4095 pixels, takes 12 bits.
    return 4095 * 8 / 12;
}

/// Whether a picture of the \a size that its header claims can be in \a device.
bool isPlausible(QSize const& size, QIODevice& device)
{
    constexpr qint64 alwaysFine = 4 * 1024 * 1024;
    qint64 const pixels = qint64(size.width()) * size.height();
    return pixels <= std::max(alwaysFine, device.size() * densestEncoding(device));
}

/// The size of the picture that the header in \a device claims. Of a GIF that is the canvas, which is what
/// gets its memory; Qt speaks of the first frame.
QSize claimedSize(QIODevice& device, QByteArray const& format)
{
    std::array<char, 10> header;
    if (device.peek(header.data(), header.size()) == qint64(header.size()) &&
        QByteArrayView(header).startsWith("GIF8")) {
        return {qFromLittleEndian<quint16>(header.data() + 6), qFromLittleEndian<quint16>(header.data() + 8)};
    }
    QSize const size = QImageReader(&device, format).size();
    device.seek(0);
    return size;
}

QImage decoded(QIODevice& device, QByteArray const& format = QByteArray())
{
    if (device.size() == 0) {
        return {};
    }
    return isPlausible(claimedSize(device, format), device) ? QImageReader(&device, format).read() : QImage();
}

QByteArray encoded(QImage const& image, QString const& format)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    bool const written = image.save(&buffer, format.toLatin1().constData());
    return written ? buffer.data() : QByteArray();
}

bool moveWithoutReplacing(QString const& src, QString const& dst)
{
    QByteArray const from = QFile::encodeName(src);
    // A second name for the file is refused by the system itself when the name is taken, also when that
    // happens this very moment.
    if (::linkat(AT_FDCWD, from.constData(), AT_FDCWD, QFile::encodeName(dst).constData(), 0) == 0) {
        return ::unlink(from.constData()) == 0;
    }
    switch (errno) {
    case EEXIST:
        return false;
    case EXDEV:
        return QFile::copy(src, dst) && QFile::remove(src);
    default: // folders, and file systems where a file has one name only
        return QFile::rename(src, dst);
    }
}

} // namespace

QImage ImageUtils::convertByteArray2Image(QByteArray const& data, QString const& format)
{
    return guarded([&] {
        QByteArray bytes = data;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        return decoded(buffer, format.toLatin1());
    });
}

QByteArray ImageUtils::convertImage2ByteArray(QImage const& image, QString const& format)
{
    return guarded([&] { return encoded(image, format); });
}

std::pair<QByteArray, QString> ImageUtils::getByteArrayFromPath(QString const& path)
{
    return guarded([&]() -> std::pair<QByteArray, QString> {
        QString const format = getFileFormat(path);
        QFile file(path);
        // A pipe or device in place of the file would keep the caller waiting.
        if (format.isEmpty() || !QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
            return {};
        }
        QImage const image = decoded(file);
        if (image.isNull()) {
            return {};
        }
        return {encoded(image, format), format};
    });
}

QString ImageUtils::getFileFormat(QString const& path)
{
    return guarded(
        [&] { return FilePaths::fileExists(path) ? FilePaths::getFileExtension(path) : QString(); });
}

bool ImageUtils::saveImageFromByteArray(QByteArray const& data, QString const& format, QString const& path)
{
    return guarded([&] {
        QByteArray const bytes =
            encoded(convertByteArray2Image(data, format), FilePaths::getFileExtension(path));
        return !bytes.isEmpty() && !FilePaths::createBinaryDataFile(path, bytes).isEmpty();
    });
}

bool ImageUtils::removeFile(QString const& path)
{
    return FilePaths::removeFile(path);
}

bool ImageUtils::renameFile(QString const& src, QString const& dst)
{
    return guarded(
        [&] { return FilePaths::fileExists(src) && isPossibleName(dst) && moveWithoutReplacing(src, dst); });
}

bool ImageUtils::isFormatValid(QString const& format)
{
    static constexpr QLatin1String accepted[] = {QLatin1String("png"), QLatin1String("jpg"),
                                                 QLatin1String("jpeg"), QLatin1String("gif")};
    return std::ranges::any_of(accepted, [&](QLatin1String name) { return format == name; });
}

bool ImageUtils::buildFilePaths(QString const& baseName, QString const& mimeType, QString const& folder,
                                QString& path, QString& backupPath, QString& format)
{
    return guarded([&] {
        format = mimeType.split(QLatin1Char('/')).value(1, QStringLiteral("png"));
        if (!isFormatValid(format)) {
            return false;
        }
        QString const name = QStringLiteral("%1.%2").arg(baseName, format);
        QString const backupName = QStringLiteral("%1_bk.%2").arg(baseName, format);
        QString picture = FilePaths::buildAbsoluteFilePath(folder, name, false);
        QString backup = FilePaths::buildAbsoluteFilePath(folder, backupName, false);
        if (picture.isEmpty() || backup.isEmpty()) {
            return false; // for want of memory
        }
        path = std::move(picture);
        backupPath = std::move(backup);
        return true;
    });
}
