#include "PictureClaims_p.h"

#include <QtEndian>
#include <algorithm>
#include <array>
#include <set>
#include <zlib.h>

using PictureClaims::Decodable;
using PictureClaims::Stretch;

namespace {

constexpr qint64 lengthAndType = 8;
constexpr qint64 checksumSize = 4;
constexpr qint64 greatestSide = 0x7FFFFFFF;
/// Printers' profiles, the largest there are, take some two megabytes.
constexpr qint64 largestProfile = 4 * 1024 * 1024;
/// What a picture's data may hold beyond its pixels; files with a few bytes too many are about.
constexpr qint64 surplus = 64 * 1024;
/// Deflate makes this many bytes out of one at most.
constexpr qint64 largestExpansion = 1032;

struct Chunk
{
    QByteArray type;
    Stretch whole;
    Stretch data;
};

/// The chunk at \a offset, cut short where \a end comes first.
std::optional<Chunk> chunkAt(QIODevice& device, qint64 offset, qint64 end)
{
    QByteArray const head = PictureClaims::bytesAt(device, offset, std::min(lengthAndType, end - offset));
    if (head.size() < lengthAndType) {
        return std::nullopt;
    }
    qint64 const room = end - offset - lengthAndType;
    qint64 const size = std::min<qint64>(qFromBigEndian<quint32>(head.data()), room);
    qint64 const checksum = std::min(checksumSize, room - size);
    return Chunk{head.mid(4), {offset, lengthAndType + size + checksum}, {offset + lengthAndType, size}};
}

/// Whether no decoder may pass over the chunk.
bool isCritical(QByteArray const& type)
{
    return (type[0] & 0x20) == 0;
}

/// Whether the chunk is one that Qt's decoder makes something of. Texts are not worth the memory that they
/// can ask for.
bool isOfUse(QByteArray const& type)
{
    static constexpr std::array ancillary = {"tRNS", "gAMA", "cHRM", "sRGB", "iCCP", "pHYs", "oFFs", "sBIT"};
    return isCritical(type) || std::ranges::any_of(ancillary, [&](char const* kept) { return type == kept; });
}

class Inflating
{
public:
    Inflating() { inflateInit(&m_stream); }
    ~Inflating() { inflateEnd(&m_stream); }
    Inflating(Inflating const&) = delete;
    Inflating& operator=(Inflating const&) = delete;

    /// How many further bytes \a input gives, but not many more than \a limit.
    qint64 sizeOf(QByteArray input, qint64 limit)
    {
        m_stream.next_in = reinterpret_cast<Bytef*>(input.data());
        m_stream.avail_in = static_cast<uInt>(input.size());
        qint64 size = 0;
        do {
            m_stream.next_out = m_output.data();
            m_stream.avail_out = static_cast<uInt>(m_output.size());
            m_result = inflate(&m_stream, Z_NO_FLUSH);
            size += qint64(m_output.size()) - m_stream.avail_out;
        } while (m_result == Z_OK && m_stream.avail_out == 0 && size <= limit);
        return size;
    }

    /// Whether the stream is neither damaged nor at its end.
    [[nodiscard]] bool goesOn() const { return m_result == Z_OK || m_result == Z_BUF_ERROR; }

private:
    z_stream m_stream = {};
    int m_result = Z_OK;
    std::array<Bytef, 0x8000> m_output;
};

/// Whether the zlib stream that \a stretches make up holds at most \a limit bytes.
bool inflatesWithin(QIODevice& device, std::vector<Stretch> const& stretches, qint64 limit)
{
    constexpr qint64 blockSize = 0x10000;
    Inflating stream;
    for (Stretch stretch : stretches) {
        while (stretch.size > 0 && stream.goesOn() && limit >= 0) {
            QByteArray const block =
                PictureClaims::bytesAt(device, stretch.offset, std::min(stretch.size, blockSize));
            if (block.isEmpty()) {
                return false;
            }
            limit -= stream.sizeOf(block, limit);
            stretch = {stretch.offset + block.size(), stretch.size - block.size()};
        }
    }
    return limit >= 0;
}

/// Whether the colour profile of \a chunk, which follows its name and a byte, is of a usual size.
bool isUsualProfile(QIODevice& device, Chunk const& chunk)
{
    constexpr qint64 longestName = 79;
    QByteArray const start =
        PictureClaims::bytesAt(device, chunk.data.offset, std::min(longestName + 1, chunk.data.size));
    qint64 const nameSize = start.indexOf('\0') + 2;
    Stretch const profile = {chunk.data.offset + nameSize, chunk.data.size - nameSize};
    return profile.size > 0 && inflatesWithin(device, {profile}, largestProfile);
}

struct Header
{
    explicit Header(QByteArray const& data)
        : width(qFromBigEndian<quint32>(data.data()))
        , height(qFromBigEndian<quint32>(data.data() + 4))
    {
        constexpr std::array channels = {1, 0, 3, 1, 2, 0, 4}; // by the type of colour
        auto const colour = static_cast<std::size_t>(static_cast<quint8>(data[9]));
        bitsPerPixel = static_cast<quint8>(data[8]) * (colour < channels.size() ? channels[colour] : 0);
    }

    /// The most bytes that its lines take: each opens with a byte of its own, and an interlaced picture has
    /// up to twice as many lines, each of which may end in an unfinished byte.
    [[nodiscard]] qint64 dataSize() const { return height * ((width * bitsPerPixel + 7) / 8 + 5) + surplus; }

    qint64 width;
    qint64 height;
    qint64 bitsPerPixel;
};

/// Collects what the decoder is to see, neighbours as one.
void append(std::vector<Stretch>& stretches, Stretch next)
{
    if (next.size == 0) {
        return;
    }
    if (!stretches.empty() && stretches.back().offset + stretches.back().size == next.offset) {
        stretches.back().size += next.size;
    } else {
        stretches.push_back(next);
    }
}

} // namespace

std::optional<Decodable> PictureClaims::examinedPng(QIODevice& device, Stretch whole)
{
    qint64 const end = whole.offset + whole.size;
    qint64 offset = whole.offset + qint64(sizeof(pngSignature)) - 1;
    std::optional<Chunk> const first = chunkAt(device, offset, end);
    if (!first || first->type != "IHDR" || first->data.size != 13) {
        return std::nullopt;
    }
    Header const header(bytesAt(device, first->data.offset, 13));

    Decodable picture{"png", {{whole.offset, offset - whole.offset}}};
    std::vector<Stretch> data;
    qint64 encodedSize = 0;
    std::set<QByteArray> seen;
    auto chunk = first;
    while (chunk && chunk->type != "IEND") {
        bool const isFirst = isCritical(chunk->type) || seen.insert(chunk->type).second;
        bool const isWanted = isFirst && isOfUse(chunk->type);
        if (isWanted && (chunk->type != "iCCP" || isUsualProfile(device, *chunk))) {
            append(picture.stretches, chunk->whole);
        }
        if (chunk->type == "IDAT") {
            data.push_back(chunk->data);
            encodedSize += chunk->data.size;
        }
        offset = chunk->whole.offset + chunk->whole.size;
        chunk = chunkAt(device, offset, end);
    }
    append(picture.stretches, chunk ? chunk->whole : Stretch{offset, end - offset});

    if (std::max(header.width, header.height) > greatestSide || header.bitsPerPixel == 0 ||
        !isPlausible(header.width * header.height,
                     encodedSize * largestExpansion * 8 / header.bitsPerPixel) ||
        !inflatesWithin(device, data, header.dataSize())) {
        return std::nullopt;
    }
    return picture;
}
