#include "WavLayout.h"

#include <audio/Riff_p.h>

#include <QFile>
#include <QFileInfo>
#include <QtEndian>
#include <algorithm>
#include <array>
#include <fstream>

namespace {

constexpr quint32 longestFormat = 0x1000;
constexpr std::size_t shortestFormat = 16;
constexpr int mostChunks = 1000; // no honest file comes near

/// Whether the file, which has \a length bytes, ends with the current chunk of \a walk or with whole chunks
/// after it.
bool isSoundFrom(riff::ChunkWalk& walk, quint64 length)
{
    // A recorder may leave out the pad byte that would be the file's last.
    if (walk.chunk().offset + walk.chunk().size() == length) {
        return true;
    }
    for (int i = 0; i < mostChunks && walk.end() < length; ++i) {
        if (!walk.next().isWhole) {
            return false;
        }
    }
    return walk.end() == length;
}

bool isRiffWave(std::istream& stream, quint32& riffSize)
{
    riff::Field const id = riff::readField(stream);
    riffSize = qFromLittleEndian<quint32>(riff::readField(stream).data());
    riff::Field const formType = riff::readField(stream);
    return qFromBigEndian<quint32>(id.data()) == riff::riffId &&
           qFromBigEndian<quint32>(formType.data()) == riff::waveType;
}

/// A name as it can be shown on a terminal, whatever the file has there.
QString shownName(riff::Field const& id)
{
    QByteArray name(reinterpret_cast<char const*>(id.data()), static_cast<qsizetype>(id.size()));
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
    WavLayout layout;
    std::ifstream file;
    // Opening a pipe would wait for its other end.
    if (QFileInfo(path).isFile()) {
        file.open(nativePath(path), std::ios::binary);
    }
    if (!file.is_open() || !isRiffWave(file, layout.riffSize)) {
        return std::nullopt;
    }
    layout.fileLength = static_cast<quint64>(QFileInfo(path).size());
    riff::ChunkWalk walk(file, riff::PadByte::Expected);
    for (int i = 0; i < mostChunks && walk.next().isWhole; ++i) {
        layout.chunks << shownName(walk.chunk().idField);
        switch (walk.chunk().id()) {
        case riff::formatId:
            layout.format = walk.body(longestFormat);
            break;
        case riff::dataId:
            layout.dataOffset = walk.chunk().offset;
            layout.dataSize = walk.chunk().size();
            layout.tailIsSound = isSoundFrom(walk, layout.fileLength);
            return layout;
        }
    }
    return std::nullopt;
}

std::optional<WavFormat> WavFormat::of(std::span<unsigned char const> body)
{
    if (body.size() < shortestFormat) {
        return std::nullopt;
    }
    unsigned char const* const bytes = body.data();
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
