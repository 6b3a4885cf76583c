#include "WavLayout.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>
#include <algorithm>
#include <array>

namespace {

constexpr qint64 chunkHeaderLength = 8;
constexpr quint64 firstChunk = 12;
constexpr qsizetype longestFormat = 0x1000;
constexpr qsizetype shortestFormat = 16;
constexpr int mostChunks = 1000; // no honest file comes near

struct Chunk
{
    QByteArray name;
    quint32 size = 0;

    [[nodiscard]] quint64 end(quint64 bodyOffset) const { return bodyOffset + size + size % 2; }
};

std::optional<QByteArray> bytesAt(QFile& file, quint64 offset, qint64 size)
{
    QByteArray bytes = file.seek(static_cast<qint64>(offset)) ? file.read(size) : QByteArray();
    return bytes.size() == size ? std::optional(bytes) : std::nullopt;
}

std::optional<Chunk> chunkAt(QFile& file, quint64 offset)
{
    std::optional<QByteArray> const header = bytesAt(file, offset, chunkHeaderLength);
    return header ? std::optional(Chunk{header->left(4), qFromLittleEndian<quint32>(header->data() + 4)})
                  : std::nullopt;
}

/// Whether nothing but whole chunks lies between \a offset and the end of \a file.
bool isSoundFrom(QFile& file, quint64 offset)
{
    auto const length = static_cast<quint64>(file.size());
    for (int i = 0; i < mostChunks && offset < length; ++i) {
        std::optional<Chunk> const chunk = chunkAt(file, offset);
        if (!chunk) {
            return false;
        }
        offset = chunk->end(offset + chunkHeaderLength);
    }
    return offset == length;
}

/// A recorder may leave out the pad byte that would be the file's last.
bool isSoundBehind(QFile& file, Chunk const& data, quint64 bodyOffset)
{
    return bodyOffset + data.size == static_cast<quint64>(file.size()) ||
           isSoundFrom(file, data.end(bodyOffset));
}

/// A name as it can be shown on a terminal, whatever the file has there.
QString shownName(QByteArray name)
{
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return QString::fromLatin1(name).trimmed();
}

struct NamedTag
{
    quint16 tag;
    char const* name;
};

constexpr std::array namedTags = {
    NamedTag{1, "PCM"},    NamedTag{2, "MS ADPCM"},   NamedTag{3, "float"}, NamedTag{6, "A-law"},
    NamedTag{7, "mu-law"}, NamedTag{17, "IMA ADPCM"}, NamedTag{49, "GSM"},  NamedTag{0xFFFE, "extensible"}};

QString tagName(quint16 tag)
{
    auto const found = std::find_if(namedTags.begin(), namedTags.end(),
                                    [tag](NamedTag const& named) { return named.tag == tag; });
    return found == namedTags.end() ? QStringLiteral("format %1").arg(tag) : QLatin1String(found->name);
}

} // namespace

std::optional<WavLayout> WavLayout::read(QString const& path)
{
    QFile file(path);
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    std::optional<QByteArray> const riff = bytesAt(file, 0, firstChunk);
    if (!riff || !riff->startsWith("RIFF") || !riff->endsWith("WAVE")) {
        return std::nullopt;
    }
    WavLayout layout;
    layout.fileLength = static_cast<quint64>(file.size());
    layout.riffSize = qFromLittleEndian<quint32>(riff->data() + 4);
    quint64 offset = firstChunk;
    for (int i = 0; i < mostChunks; ++i) {
        std::optional<Chunk> const chunk = chunkAt(file, offset);
        if (!chunk) {
            return std::nullopt;
        }
        quint64 const body = offset + chunkHeaderLength;
        layout.chunks << shownName(chunk->name);
        if (chunk->name == "data") {
            layout.dataOffset = body;
            layout.dataSize = chunk->size;
            layout.tailIsSound = isSoundBehind(file, *chunk, body);
            return layout;
        }
        if (chunk->name == "fmt ") {
            layout.format = file.read(std::min<qint64>(chunk->size, longestFormat));
        }
        offset = chunk->end(body);
    }
    return std::nullopt;
}

std::optional<WavFormat> WavFormat::of(QByteArrayView body)
{
    if (body.size() < shortestFormat) {
        return std::nullopt;
    }
    char const* const bytes = body.data();
    return WavFormat{qFromLittleEndian<quint16>(bytes),      qFromLittleEndian<quint16>(bytes + 2),
                     qFromLittleEndian<quint32>(bytes + 4),  qFromLittleEndian<quint32>(bytes + 8),
                     qFromLittleEndian<quint16>(bytes + 12), qFromLittleEndian<quint16>(bytes + 14)};
}

QString WavFormat::text() const
{
    return QStringLiteral("%1, %2 %3, %4 Hz, %5 bits")
        .arg(tagName(tag), QString::number(channels),
             channels == 1 ? QStringLiteral("channel") : QStringLiteral("channels"), QString::number(rate),
             QString::number(bits));
}

std::filesystem::path nativePath(QString const& path)
{
    return std::filesystem::path(QFile::encodeName(path).toStdString());
}
