#include "PictureClaims_p.h"

#include <QtEndian>
#include <algorithm>

using PictureClaims::Decodable;

namespace {

/// A decoder passes over all blocks of a picture once for each scan, whether or not the scan says anything.
/// Photos have some ten scans; this allows sixty-four of one with 32 million pixels, and takes under a
/// second.
constexpr qint64 mostPixelsOverAllScans = qint64(1) << 31;

/// libjpeg searches its list of stored segments from the start for every further one.
constexpr int mostSegments = 4096;

/// Every block of 8 by 8 pixels takes a bit at least.
constexpr qint64 pixelsPerByte = 8 * 64;

enum Marker : quint8 {
    FirstFrame = 0xC0, ///< frames of all kinds go up to LastFrame, the three below left out
    DefineHuffmanTables = 0xC4,
    Reserved = 0xC8,
    DefineArithmeticConditioning = 0xCC,
    LastFrame = 0xCF,
    FirstRestart = 0xD0,
    LastRestart = 0xD7,
    EndOfImage = 0xD9,
    StartOfScan = 0xDA,
};

bool isFrame(quint8 marker)
{
    return marker >= FirstFrame && marker <= LastFrame && marker != DefineHuffmanTables &&
           marker != Reserved && marker != DefineArithmeticConditioning;
}

/// Whether \a byte after 0xFF opens a segment. 0 stands for 0xFF itself, 0xFF fills, 1 and restarts stand
/// alone within the data.
bool opensSegment(quint8 byte)
{
    return byte > 1 && byte != 0xFF && (byte < FirstRestart || byte > LastRestart);
}

struct Segment
{
    quint8 marker;
    qint64 offset; ///< of its length
};

/// The next segment at or after \a offset; what stands in between is the data of a scan.
std::optional<Segment> nextSegment(QIODevice& device, qint64 offset)
{
    constexpr qint64 blockSize = 0x4000;
    bool isAfterFF = false;
    for (QByteArray block = PictureClaims::bytesAt(device, offset, blockSize); !block.isEmpty();
         block = PictureClaims::bytesAt(device, offset, blockSize)) {
        for (char const character : block) {
            auto const byte = static_cast<quint8>(character);
            ++offset;
            if (isAfterFF && opensSegment(byte)) {
                return Segment{byte, offset};
            }
            isAfterFF = byte == 0xFF;
        }
    }
    return std::nullopt;
}

struct Claims
{
    qint64 pixels = 0;
    qint64 scans = 0;
    int segments = 0;
};

/// Width times height of the frame whose header follows at \a offset: length, bits of a sample, height,
/// width.
qint64 pixelsOfFrame(QByteArray const& header)
{
    return header.size() < 7 ? 0
                             : qint64(qFromBigEndian<quint16>(header.data() + 3)) *
                                   qFromBigEndian<quint16>(header.data() + 5);
}

Claims claimsOf(QIODevice& device, qint64 offset)
{
    Claims claims;
    for (auto segment = nextSegment(device, offset); segment && segment->marker != EndOfImage;
         segment = nextSegment(device, offset)) {
        QByteArray const header = PictureClaims::bytesAt(device, segment->offset, 7);
        qint64 const length = header.size() < 2 ? 0 : qFromBigEndian<quint16>(header.data());
        if (length < 2 || ++claims.segments > mostSegments) {
            break;
        }
        if (isFrame(segment->marker)) {
            claims.pixels = std::max(claims.pixels, pixelsOfFrame(header));
        }
        claims.scans += segment->marker == StartOfScan ? 1 : 0;
        offset = segment->offset + length;
    }
    return claims;
}

} // namespace

std::optional<Decodable> PictureClaims::examinedJpeg(QIODevice& device, Stretch whole)
{
    Claims const claims = claimsOf(device, whole.offset + 2);
    if (claims.segments > mostSegments || claims.scans * claims.pixels > mostPixelsOverAllScans ||
        !isPlausible(claims.pixels, whole.size * pixelsPerByte)) {
        return std::nullopt;
    }
    return Decodable{"jpeg", {whole}};
}
