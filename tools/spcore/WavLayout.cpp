#include "WavLayout.h"

#include "FileName.h"
#include "Reason.h"

#include <QtEndian>
#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <system_error>

namespace {

constexpr quint64 fileHeaderLength = 12;
constexpr quint64 chunkHeaderLength = 8;
constexpr quint64 longestBody = 0x100000; // of a chunk that is kept
constexpr std::size_t shortestFormat = 16;
constexpr std::size_t extensibleFormat = 40;
constexpr std::size_t extensibleTagOffset = 24;
constexpr quint16 extensibleTag = 0xFFFE;
constexpr int mostChunks = 1000; // no honest file comes near
constexpr quint32 sizeIsElsewhere = 0xFFFFFFFF;

using Bytes = std::vector<unsigned char>;

/// Up to \a size bytes at \a offset, as many as there are.
Bytes bytesAt(std::istream& stream, quint64 offset, quint64 size)
{
    Bytes bytes(static_cast<std::size_t>(size));
    stream.clear();
    stream.seekg(static_cast<std::streamoff>(offset));
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    return bytes;
}

quint64 number64(Bytes const& bytes, std::size_t offset)
{
    return bytes.size() < offset + sizeof(quint64) ? 0 : qFromLittleEndian<quint64>(bytes.data() + offset);
}

struct Chunk
{
    QByteArray id;
    quint64 offset = 0; ///< of the body
    quint64 size = 0;

    [[nodiscard]] quint64 end() const { return offset + size; }
};

/// The chunk whose header is at \a offset; nothing when the file ends in it.
std::optional<Chunk> chunkAt(std::istream& stream, quint64 offset)
{
    Bytes const header = bytesAt(stream, offset, chunkHeaderLength);
    if (header.size() < chunkHeaderLength) {
        return std::nullopt;
    }
    return Chunk{QByteArray(reinterpret_cast<char const*>(header.data()), 4), offset + chunkHeaderLength,
                 qFromLittleEndian<quint32>(header.data() + 4)};
}

/// A name as it can be shown on a terminal, whatever the file has there.
QString shownName(QByteArray name)
{
    std::ranges::replace_if(
        name, [](char c) { return c < ' ' || c > '~'; }, '?');
    return QString::fromLatin1(name).trimmed();
}

/// Finds the chunks of one file.
class LayoutReader
{
public:
    LayoutReader(std::istream& stream, WavLayout& layout)
        : m_stream(stream)
        , m_layout(layout)
    {
    }

    /// Whether the file begins as a WAV file does.
    bool readFileHeader()
    {
        Bytes const header = bytesAt(m_stream, 0, fileHeaderLength);
        if (header.size() < fileHeaderLength) {
            return false;
        }
        QByteArray const text(reinterpret_cast<char const*>(header.data()), qsizetype(fileHeaderLength));
        m_layout.isRf64 = text.startsWith("RF64") || text.startsWith("BW64");
        m_layout.riffSize = qFromLittleEndian<quint32>(header.data() + 4);
        return (m_layout.isRf64 || text.startsWith("RIFF")) && text.endsWith("WAVE");
    }

    /// Reads up to the samples; whether there are any.
    bool readToSamples()
    {
        std::optional<Chunk> chunk = chunkAt(m_stream, fileHeaderLength);
        for (int i = 0; i < mostChunks && chunk; ++i) {
            m_layout.chunks << shownName(chunk->id);
            if (chunk->id == "data") {
                setSamples(*chunk);
                return true;
            }
            take(*chunk);
            chunk = chunkAt(m_stream, chunk->end() + chunk->size % 2);
        }
        return false;
    }

    /// Reads what follows the samples.
    void readTail()
    {
        if (m_layout.dataSize > m_layout.fileLength - m_layout.dataOffset) {
            return;
        }
        quint64 end = m_layout.dataOffset + m_layout.dataSize;
        Bytes const name = bytesAt(m_stream, end + m_layout.dataSize % 2, 4);
        if (name.size() == 4 && std::ranges::all_of(name, [](int c) { return c >= ' ' && c <= '~'; })) {
            m_layout.nameAfter =
                shownName(QByteArray(reinterpret_cast<char const*>(name.data()), qsizetype(name.size())));
        }
        quint64 pad = m_layout.dataSize % 2;
        // A recorder may leave out the pad byte that would be the file's last.
        for (int i = 0; i < mostChunks && end + pad < m_layout.fileLength; ++i) {
            std::optional<Chunk> const chunk = chunkAt(m_stream, end + pad);
            if (!chunk || chunk->end() > m_layout.fileLength) {
                m_layout.chunksAfter.clear();
                return;
            }
            m_layout.chunksAfter << shownName(chunk->id);
            end = chunk->end();
            pad = chunk->size % 2;
        }
        m_layout.tailIsSound = end == m_layout.fileLength || end + pad == m_layout.fileLength;
    }

private:
    void take(Chunk const& chunk)
    {
        if (chunk.id == "fmt ") {
            m_layout.format = body(chunk);
        } else if (chunk.id == "LIST") {
            m_layout.list = chunk.size <= longestBody ? body(chunk) : Bytes();
        } else if (chunk.id == "fact" && body(chunk).size() >= sizeof(quint32)) {
            m_layout.factSamples = qFromLittleEndian<quint32>(body(chunk).data());
        } else if (chunk.id == "ds64" && m_layout.isRf64) {
            m_sizes = body(chunk);
            m_layout.riffSize = number64(m_sizes, 0);
        }
    }

    Bytes body(Chunk const& chunk)
    {
        return bytesAt(m_stream, chunk.offset,
                       std::min({chunk.size, longestBody, m_layout.fileLength - chunk.offset}));
    }

    void setSamples(Chunk const& chunk)
    {
        bool const isElsewhere = m_layout.isRf64 && chunk.size == sizeIsElsewhere;
        m_layout.dataOffset = chunk.offset;
        m_layout.dataSize = isElsewhere ? number64(m_sizes, sizeof(quint64)) : chunk.size;
    }

    std::istream& m_stream;
    WavLayout& m_layout;
    Bytes m_sizes; ///< the body of "ds64"
};

struct NamedTag
{
    quint16 tag;
    char const* name;
    char const* codec; ///< empty where the number of bits tells
};

constexpr std::array namedTags = {
    NamedTag{1, "PCM", ""},
    NamedTag{2, "MS ADPCM", "adpcm_ms"},
    NamedTag{3, "float", ""},
    NamedTag{6, "A-law", "pcm_alaw"},
    NamedTag{7, "mu-law", "pcm_mulaw"},
    NamedTag{17, "IMA ADPCM", "adpcm_ima_wav"},
    NamedTag{49, "GSM", "gsm_ms"},
    NamedTag{extensibleTag, "extensible", "unknown"},
};

NamedTag const* find(quint16 tag)
{
    auto const found = std::ranges::find(namedTags, tag, &NamedTag::tag);
    return found == namedTags.end() ? nullptr : &*found;
}

} // namespace

WavLayout WavLayout::read(QString const& path)
{
    WavLayout layout;
    std::error_code error;
    std::ifstream file;
    if (std::filesystem::is_regular_file(nativePath(path), error)) {
        layout.fileLength = std::filesystem::file_size(nativePath(path), error);
        errno = 0;
        file.open(nativePath(path), std::ios::binary);
        error = std::error_code(errno, std::generic_category());
    } else if (!error) {
        // Opening a pipe would wait for its other end.
        layout.problem = QStringLiteral("it is no regular file");
        return layout;
    }
    if (!file.is_open()) {
        layout.problem = Reason::ofError(error.value());
        return layout;
    }
    LayoutReader reader(file, layout);
    if (!reader.readFileHeader()) {
        layout.problem = QStringLiteral("it does not begin as a WAV file does");
    } else if (!reader.readToSamples()) {
        layout.problem = QStringLiteral("this WAV file has no chunk \"data\"");
    } else {
        reader.readTail();
    }
    return layout;
}

std::optional<WavFormat> WavFormat::of(std::span<unsigned char const> body)
{
    if (body.size() < shortestFormat) {
        return std::nullopt;
    }
    auto const number = [body](std::size_t offset) {
        return qFromLittleEndian<quint16>(body.subspan(offset).data());
    };
    auto const longNumber = [body](std::size_t offset) {
        return qFromLittleEndian<quint32>(body.subspan(offset).data());
    };
    bool const isExtensible = number(0) == extensibleTag && body.size() >= extensibleFormat;
    return WavFormat{.tag = number(isExtensible ? extensibleTagOffset : 0),
                     .channels = number(2),
                     .rate = longNumber(4),
                     .bytesPerSecond = longNumber(8),
                     .frameSize = number(12),
                     .bits = number(14)};
}

QString WavFormat::text() const
{
    NamedTag const* const named = find(tag);
    return QStringLiteral("%1, %2 %3, %4 Hz, %5 bits")
        .arg(named != nullptr ? QLatin1String(named->name) : QStringLiteral("format %1").arg(tag),
             QString::number(channels),
             channels == 1 ? QStringLiteral("channel") : QStringLiteral("channels"), QString::number(rate),
             QString::number(bits));
}

QString WavFormat::codecName() const
{
    NamedTag const* const named = find(tag);
    if (named == nullptr || bits > 64) {
        return QStringLiteral("unknown");
    }
    if (QLatin1String const codec(named->codec); !codec.isEmpty()) {
        return codec;
    }
    if (tag == 3) {
        return QStringLiteral("pcm_f%1le").arg(bits);
    }
    return bits <= 8 ? QStringLiteral("pcm_u8") : QStringLiteral("pcm_s%1le").arg(bits);
}

bool WavFormat::isSampleBySample() const
{
    constexpr std::array tags = {quint16(1), quint16(3), quint16(6), quint16(7)};
    return std::ranges::find(tags, tag) != tags.end();
}

std::filesystem::path nativePath(QString const& path)
{
    return std::filesystem::path(FileName::toNative(path).toStdString());
}
