#pragma once

#include <QByteArray>
#include <QtEndian>
#include <algorithm>
#include <vector>
#include <zlib.h>

/// Pictures put together piece by piece, honest ones and others.
namespace Pictures {

template <typename Integer>
QByteArray bigEndian(Integer value)
{
    QByteArray bytes(sizeof(Integer), Qt::Uninitialized);
    qToBigEndian(value, bytes.data());
    return bytes;
}

template <typename Integer>
QByteArray littleEndian(Integer value)
{
    QByteArray bytes(sizeof(Integer), Qt::Uninitialized);
    qToLittleEndian(value, bytes.data());
    return bytes;
}

inline QByteArray deflated(QByteArray const& data)
{
    return qCompress(data, 9).mid(4);
}

/// A zlib stream of \a size bytes of which each stands for 1032 zeros, without making those. Its checksum is
/// wrong.
inline QByteArray bomb(qsizetype size)
{
    static QByteArray const shortest = deflated(QByteArray(4'000'000, '\0'));
    QByteArray stream = shortest;
    // From its middle on the stream repeats one byte.
    qsizetype const middle = stream.size() / 2;
    return stream.insert(middle, QByteArray(std::max<qsizetype>(0, size - stream.size()), stream[middle]));
}

// PNG

inline QByteArray chunk(char const* type, QByteArray const& data)
{
    QByteArray const covered = type + data;
    auto const checksum =
        crc32(0, reinterpret_cast<Bytef const*>(covered.data()), static_cast<uInt>(covered.size()));
    return bigEndian(static_cast<quint32>(data.size())) + covered + bigEndian(static_cast<quint32>(checksum));
}

inline QByteArray repeated(QByteArray const& piece, int times)
{
    QByteArray all;
    for (int i = 0; i < times; ++i) {
        all += piece;
    }
    return all;
}

/// A grey PNG of eight bits a pixel with \a extra chunks, \a data its encoded lines.
inline QByteArray png(quint32 width, quint32 height, QByteArray const& extra, QByteArray const& data)
{
    return "\x89PNG\r\n\x1a\n" +
           chunk("IHDR", bigEndian(width) + bigEndian(height) + QByteArray("\x08\0\0\0\0", 5)) + extra +
           chunk("IDAT", data) + chunk("IEND", {});
}

inline QByteArray smallPng(QByteArray const& extra)
{
    return png(8, 8, extra, deflated(repeated(QByteArray("\0abcdefgh", 9), 8)));
}

// JPEG

inline QByteArray segment(quint8 marker, QByteArray const& data)
{
    return "\xFF" + QByteArray(1, static_cast<char>(marker)) +
           bigEndian(static_cast<quint16>(data.size() + 2)) + data;
}

/// A scan of the one component; what follows is its data.
inline QByteArray scan(quint8 first, quint8 last)
{
    return segment(0xDA, QByteArray("\1\1\0", 3) + static_cast<char>(first) + static_cast<char>(last) + '\0');
}

constexpr quint8 baseline = 0xC0;
constexpr quint8 progressive = 0xC2;

/// A grey JPEG with \a extra segments in front and \a scans. A bit of 0 is a whole block of its data.
inline QByteArray jpeg(quint8 kind, quint16 width, quint16 height, QByteArray const& extra,
                       QByteArray const& scans)
{
    QByteArray const oneCode = '\1' + QByteArray(16, '\0');
    return "\xFF\xD8" + extra + segment(0xDB, '\0' + QByteArray(64, '\1')) +
           segment(kind, '\x08' + bigEndian(height) + bigEndian(width) + QByteArray("\1\1\x11\0", 4)) +
           segment(0xC4, '\0' + oneCode) + segment(0xC4, '\x10' + oneCode) + scans + "\xFF\xD9";
}

// GIF

/// Packs codes, lowest bit first.
class CodeWriter
{
public:
    void put(int code, int width)
    {
        m_bits |= static_cast<quint32>(code) << m_count;
        for (m_count += width; m_count >= 8; m_count -= 8) {
            m_bytes += static_cast<char>(m_bits);
            m_bits >>= 8;
        }
    }

    [[nodiscard]] QByteArray bytes() const { return m_bytes + static_cast<char>(m_bits); }
    [[nodiscard]] qsizetype size() const { return m_bytes.size(); }

private:
    QByteArray m_bytes;
    quint32 m_bits = 0;
    int m_count = 0;
};

constexpr int clearCode = 256;
constexpr int endCode = 257;

/// The codes of \a pixels, one for each: the table of runs is emptied before codes become longer.
inline QByteArray plainCodes(QByteArray const& pixels)
{
    CodeWriter codes;
    for (qsizetype i = 0; i < pixels.size(); ++i) {
        if (i % 250 == 0) {
            codes.put(clearCode, 9);
        }
        codes.put(static_cast<quint8>(pixels[i]), 9);
    }
    codes.put(endCode, 9);
    return codes.bytes();
}

/// Codes in \a size bytes for as many pixels as they can stand for: each is the longest run so far.
inline QByteArray longestRuns(qsizetype size)
{
    CodeWriter codes;
    codes.put(clearCode, 9);
    codes.put(0, 9);
    int width = 9;
    for (int next = endCode + 1; codes.size() < size; next = std::min(next + 1, 4095)) {
        codes.put(next, width);
        width += next + 1 == 1 << width && width < 12 ? 1 : 0;
    }
    return codes.bytes();
}

struct GifFrame
{
    quint16 width;
    quint16 height;
    char flags = '\0';
};

inline QByteArray gif(quint16 width, quint16 height, GifFrame const& frame, QByteArray const& codes,
                      char bits = 8)
{
    QByteArray data = "GIF89a" + littleEndian(width) + littleEndian(height) + QByteArray("\xF7\0\0", 3);
    for (int i = 0; i < 256; ++i) {
        data += QByteArray(3, static_cast<char>(i));
    }
    data += QByteArray("!\xFE\5hello\0", 9) + QByteArray("!\xF9\4\0\0\0\0\0", 8);
    data += QByteArray(",\0\0\0\0", 5) + littleEndian(frame.width) + littleEndian(frame.height) +
            frame.flags + bits;
    for (qsizetype at = 0; at < codes.size(); at += 255) {
        QByteArray const piece = codes.mid(at, 255);
        data += static_cast<char>(piece.size()) + piece;
    }
    return data + QByteArray("\0;", 2);
}

// Others

/// An icon of one entry whose directory says that it is \a width by \a height and \a size bytes long.
inline QByteArray icon(quint8 width, quint8 height, quint32 size, QByteArray const& picture)
{
    return QByteArray("\0\0\1\0\1\0", 6) + static_cast<char>(width) + static_cast<char>(height) +
           QByteArray("\0\0\1\0\x20\0", 6) + littleEndian(size) + littleEndian(quint32(22)) + picture;
}

/// The header of a bitmap, as icons have it without the file's own.
inline QByteArray bitmapHeader(qint32 width, qint32 height, quint16 bitsPerPixel, quint32 compression)
{
    return littleEndian(quint32(40)) + littleEndian(width) + littleEndian(height) + littleEndian(quint16(1)) +
           littleEndian(bitsPerPixel) + littleEndian(compression) + QByteArray(20, '\0');
}

inline QByteArray bmp(qint32 width, qint32 height, quint16 bitsPerPixel, quint32 compression,
                      QByteArray const& data)
{
    QByteArray const palette(bitsPerPixel <= 8 ? 4 << bitsPerPixel : 0, '\0');
    return "BM" + QByteArray(8, '\0') + littleEndian(static_cast<quint32>(54 + palette.size())) +
           bitmapHeader(width, height, bitsPerPixel, compression) + palette + data;
}

/// 2,048 lines of 4,096 black or white pixels after the header that bitmaps had at first. What stands where
/// the later ones tell the bits of a pixel belongs to a colour here.
inline QByteArray oldBmp()
{
    return "BM" + QByteArray(8, '\0') + littleEndian(quint32(32)) + littleEndian(quint32(12)) +
           littleEndian(quint16(4096)) + littleEndian(quint16(2048)) + littleEndian(quint16(1)) +
           littleEndian(quint16(1)) + QByteArray("\0\0\xFF\xFF\xFF\xFF", 6) +
           repeated("\xAA\x55\xF0\x0F", 4096 / 8 * 2048 / 4);
}

} // namespace Pictures
