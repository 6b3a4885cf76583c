#include "PictureClaims_p.h"

#include <QtEndian>
#include <algorithm>
#include <array>

using PictureClaims::Decodable;

namespace {

constexpr int mostBits = 12;
constexpr int mostCodes = 1 << mostBits;

/// Counts the pixels that the codes of a frame stand for without making them: all that takes is how long the
/// run of each code is. A file of a megabyte can hold 2,800 million of them.
class PixelCounter
{
public:
    explicit PixelCounter(int bits)
        : m_clear(1 << bits)
        , m_firstWidth(bits + 1)
    {
        m_lengths.fill(1);
        clear();
    }

    /// To be called until isAtEnd().
    void add(quint8 byte)
    {
        m_bits |= quint32(byte) << m_bitCount;
        for (m_bitCount += 8; m_bitCount >= m_width && !m_atEnd; m_bitCount -= m_taken) {
            int const code = static_cast<int>(m_bits & ((1U << m_width) - 1));
            m_taken = m_width;
            m_bits >>= m_taken;
            take(code);
        }
    }

    [[nodiscard]] qint64 pixels() const { return m_pixels; }

    /// Whether nothing that follows can be part of the frame.
    [[nodiscard]] bool isAtEnd() const { return m_atEnd; }

private:
    void clear()
    {
        m_width = m_firstWidth;
        m_next = m_clear + 2;
        m_previous = -1;
    }

    void take(int code)
    {
        if (code == m_clear) {
            clear();
            return;
        }
        bool const isNext = code == m_next && m_previous >= 0;
        m_atEnd = code == m_clear + 1 || (code >= m_next && !isNext);
        if (m_atEnd) {
            return;
        }
        if (m_previous >= 0 && m_next < mostCodes) {
            lengthOf(m_next++) = lengthOf(m_previous) + 1;
            m_width += m_next == 1 << m_width && m_width < mostBits ? 1 : 0;
        }
        m_pixels += lengthOf(code);
        m_previous = code;
    }

    int& lengthOf(int code) { return m_lengths[static_cast<std::size_t>(code)]; }

    int m_clear;
    int m_firstWidth;
    int m_width = 0;
    int m_next = 0;
    int m_previous = -1;
    quint32 m_bits = 0;
    int m_bitCount = 0;
    int m_taken = 0;
    qint64 m_pixels = 0;
    bool m_atEnd = false;
    std::array<int, mostCodes> m_lengths;
};

struct Size
{
    [[nodiscard]] qint64 pixels() const { return width * height; }

    qint64 width;
    qint64 height;
};

Size sizeAt(QByteArray const& bytes, qsizetype at)
{
    return {qFromLittleEndian<quint16>(bytes.data() + at), qFromLittleEndian<quint16>(bytes.data() + at + 2)};
}

/// The size of the colour table that \a flags announce.
qint64 tableSize(char flags)
{
    return (flags & 0x80) != 0 ? 3 * (2 << (flags & 7)) : 0;
}

/// The next of the pieces that data comes in, after its own length; empty at the end.
QByteArray pieceAt(QIODevice& device, qint64 offset)
{
    QByteArray const bytes = PictureClaims::bytesAt(device, offset, 256);
    return bytes.isEmpty() ? QByteArray() : bytes.mid(1, static_cast<quint8>(bytes[0]));
}

qint64 afterPieces(QIODevice& device, qint64 offset)
{
    for (QByteArray piece = pieceAt(device, offset); !piece.isEmpty(); piece = pieceAt(device, offset)) {
        offset += 1 + piece.size();
    }
    return offset + 1;
}

/// The descriptor of the first frame in \a device, ten bytes, and what follows it; nothing where there is
/// none.
struct Frame
{
    QByteArray descriptor;
    qint64 end;
};

std::optional<Frame> firstFrame(QIODevice& device, qint64 offset)
{
    constexpr char extension = '!';
    constexpr char descriptor = ',';
    QByteArray bytes = PictureClaims::bytesAt(device, offset, 10);
    while (bytes.startsWith(extension)) {
        offset = afterPieces(device, offset + 2);
        bytes = PictureClaims::bytesAt(device, offset, 10);
    }
    return bytes.startsWith(descriptor) && bytes.size() == 10
               ? std::optional(Frame{bytes, offset + 10 + tableSize(bytes[9])})
               : std::nullopt;
}

/// Whether the frame's data, at \a offset, holds at most \a limit pixels.
bool holdsAtMost(QIODevice& device, qint64 offset, qint64 limit)
{
    QByteArray const bits = PictureClaims::bytesAt(device, offset++, 1);
    if (bits.isEmpty() || bits[0] < 1 || bits[0] >= mostBits) {
        return true; // no decoder takes it
    }
    PixelCounter counter(bits[0]);
    for (QByteArray piece = pieceAt(device, offset); !piece.isEmpty() && !counter.isAtEnd();
         piece = pieceAt(device, offset)) {
        for (auto byte = piece.begin(); byte != piece.end() && !counter.isAtEnd(); ++byte) {
            counter.add(static_cast<quint8>(*byte));
        }
        if (counter.pixels() > limit) {
            return false;
        }
        offset += 1 + piece.size();
    }
    return true;
}

} // namespace

std::optional<Decodable> PictureClaims::examinedGif(QIODevice& device, Stretch whole)
{
    Decodable const picture{"gif", {whole}};
    QByteArray const header = bytesAt(device, whole.offset, 13);
    if (header.size() < 13) {
        return std::nullopt;
    }
    auto const frame = firstFrame(device, whole.offset + 13 + tableSize(header[10]));
    if (!frame) {
        return picture; // there is nothing to decode
    }
    Size const canvas = sizeAt(header, 6);
    Size const corner = sizeAt(frame->descriptor, 1);
    Size const size = sizeAt(frame->descriptor, 5);
    // Qt gets memory for the canvas, or for the frame where it finds the canvas odd.
    qint64 const claim = std::max(canvas.width, corner.width + size.width) *
                         std::max(canvas.height, corner.height + size.height);
    // The longest run, of as many pixels as there are codes, takes one code.
    qint64 const room = whole.size * 8 / mostBits * mostCodes;
    // Decoders go through what lies outside the canvas or follows the last pixel, too. There is a little of
    // that in some files.
    qint64 const shown = std::min(size.pixels(), std::max(canvas.pixels(), pixelsForNothing));
    bool const isCredible = isPlausible(claim, room) && holdsAtMost(device, frame->end, 2 * shown + 0x10000);
    return isCredible ? std::optional(picture) : std::nullopt;
}
