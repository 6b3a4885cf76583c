#include "ImageUtils.h"

#include "../FileName_p.h"
#include "CopyWithoutReplacing_p.h"
#include "FilePaths.h"
#include "PictureClaims_p.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QStringList>
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <unistd.h>
#include <vector>

using PictureClaims::Stretch;

namespace {

/// What a decoder is given: stretches of another device, put together.
class Selection : public QIODevice
{
public:
    Selection(QIODevice& source, std::vector<Stretch> stretches)
        : m_source(source)
        , m_stretches(std::move(stretches))
    {
        qint64 end = 0;
        for (Stretch const& stretch : m_stretches) {
            end += stretch.size;
            m_ends.push_back(end);
        }
    }

    [[nodiscard]] qint64 size() const override { return m_ends.empty() ? 0 : m_ends.back(); }

protected:
    qint64 readData(char* data, qint64 most) override
    {
        qint64 position = pos();
        qint64 const start = position;
        auto end = std::ranges::upper_bound(m_ends, position);
        for (; end != m_ends.end() && position - start < most; ++end) {
            Stretch const& stretch = m_stretches[static_cast<std::size_t>(end - m_ends.begin())];
            qint64 const wanted = std::min(*end - position, most - (position - start));
            m_source.seek(stretch.offset + stretch.size - (*end - position));
            qint64 const got = m_source.read(data + (position - start), wanted);
            position += std::max<qint64>(got, 0);
            if (got < wanted) {
                break; // the file has become shorter
            }
        }
        return position - start;
    }

    qint64 writeData(char const*, qint64) override { return -1; }

private:
    QIODevice& m_source;
    std::vector<Stretch> m_stretches;
    std::vector<qint64> m_ends; ///< for each stretch, where it ends in what is put together
};

/// Whether a picture of \a format is what \a hint says; a hint that is no format's name says nothing.
bool isOfHintedFormat(QByteArray const& hint, QByteArray const& format)
{
    return PictureClaims::isNameOf(hint, format) ||
           !QImageReader::supportedImageFormats().contains(hint.toLower());
}

QImage decoded(QIODevice& device, QByteArray const& hint = QByteArray())
try {
    auto const picture = PictureClaims::examined(device);
    if (!picture || !isOfHintedFormat(hint, picture->format)) {
        return {};
    }
    Selection selection(device, picture->stretches);
    // Decoders have buffers of their own.
    selection.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    return QImageReader(&selection, picture->format).read();
} catch (std::bad_alloc const&) {
    return {}; // how much a picture takes is up to whoever made it
}

QByteArray encoded(QImage const& image, QString const& format)
try {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    bool const written = image.save(&buffer, format.toLatin1().constData());
    return written ? buffer.data() : QByteArray();
} catch (std::bad_alloc const&) {
    return {}; // nor is it known how much its encoded form takes
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
        return copyWithoutReplacing(src, dst) && QFile::remove(src);
    default: // folders, and file systems where a file has one name only
        return QFile::rename(src, dst);
    }
}

} // namespace

QImage ImageUtils::convertByteArray2Image(QByteArray const& data, QString const& format)
{
    QByteArray bytes = data;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return decoded(buffer, format.toLatin1());
}

QByteArray ImageUtils::convertImage2ByteArray(QImage const& image, QString const& format)
{
    return encoded(image, format);
}

std::pair<QByteArray, QString> ImageUtils::getByteArrayFromPath(QString const& path)
{
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
}

QString ImageUtils::getFileFormat(QString const& path)
{
    return FilePaths::fileExists(path) ? FilePaths::getFileExtension(path) : QString();
}

bool ImageUtils::saveImageFromByteArray(QByteArray const& data, QString const& format, QString const& path)
{
    QByteArray const bytes = encoded(convertByteArray2Image(data, format), FilePaths::getFileExtension(path));
    return !bytes.isEmpty() && !FilePaths::createBinaryDataFile(path, bytes).isEmpty();
}

bool ImageUtils::removeFile(QString const& path)
{
    return FilePaths::removeFile(path);
}

bool ImageUtils::renameFile(QString const& src, QString const& dst)
{
    return FilePaths::fileExists(src) && isPossibleName(dst) && moveWithoutReplacing(src, dst);
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
    format = mimeType.split(QLatin1Char('/')).value(1, QStringLiteral("png"));
    if (!isFormatValid(format)) {
        return false;
    }
    QString const name = QStringLiteral("%1.%2").arg(baseName, format);
    QString const backupName = QStringLiteral("%1_bk.%2").arg(baseName, format);
    // Both are worked out before either is stored: callers may pass one text as folder and path.
    QString picture = FilePaths::buildAbsoluteFilePath(folder, name, false);
    backupPath = FilePaths::buildAbsoluteFilePath(folder, backupName, false);
    path = std::move(picture);
    return true;
}
