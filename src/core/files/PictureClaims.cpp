#include "PictureClaims_p.h"

#include <QImageReader>
#include <QtEndian>
#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <span>

using PictureClaims::Decodable;
using PictureClaims::Stretch;

namespace {

using Names = std::span<char const* const>;

struct Format
{
    Names names; ///< the first is the one that Qt is told
    bool (*opens)(QByteArray const& start);
    std::optional<Decodable> (*examined)(QIODevice& device, Stretch whole);
};

constexpr qint64 startSize = 4096;

template <typename Integer>
Integer number(QByteArrayView bytes, qsizetype at)
{
    return at + qsizetype(sizeof(Integer)) <= bytes.size() ? qFromLittleEndian<Integer>(bytes.data() + at)
                                                           : Integer(0);
}

/// The picture whole, if the size that its header claims is plausible. Qt reads no more than the header for
/// that.
std::optional<Decodable> wholeIfPlausible(QIODevice& device, Stretch whole, char const* format, qint64 room)
{
    device.seek(whole.offset);
    QSize const size = QImageReader(&device, format).size();
    if (!PictureClaims::isPlausible(qint64(size.width()) * size.height(), room)) {
        return std::nullopt;
    }
    return Decodable{format, {whole}};
}

std::optional<Decodable> examinedBmp(QIODevice& device, Stretch whole)
{
    QByteArray const header = PictureClaims::bytesAt(device, whole.offset, 34);
    bool const hasOldHeader = number<quint32>(header, 14) == 12;
    qint64 const bitsPerPixel = std::max<qint64>(1, number<quint16>(header, hasOldHeader ? 24 : 28));
    quint32 const compression = hasOldHeader ? 0 : number<quint32>(header, 30);
    bool const isRunLength = compression == 1 || compression == 2;
    // The longest run, 255 pixels, takes two bytes.
    return wholeIfPlausible(device, whole, "bmp",
                            isRunLength ? whole.size * 128 : whole.size * 8 / bitsPerPixel);
}

/// The first picture of an icon, which is the one that Qt reads.
std::optional<Decodable> examinedIcon(QIODevice& device, Stretch whole)
{
    QByteArray const entry = PictureClaims::bytesAt(device, whole.offset + 6, 16);
    qint64 const offset = number<quint32>(entry, 12);
    QByteArray const header = PictureClaims::bytesAt(device, offset, 16);
    if (header.startsWith(PictureClaims::pngSignature)) {
        qint64 const size = std::min<qint64>(number<quint32>(entry, 8), whole.size - offset);
        return PictureClaims::examinedPng(device, {offset, size});
    }
    // A side of 0 in the directory stands for that of the bitmap, whose height counts the mask as well.
    qint64 const width = number<quint8>(entry, 0);
    qint64 const height = number<quint8>(entry, 1);
    qint64 const pixels = (width != 0 ? width : std::abs(qint64(number<qint32>(header, 4)))) *
                          (height != 0 ? height : std::abs(qint64(number<qint32>(header, 8))) / 2);
    if (!PictureClaims::isPlausible(pixels, whole.size * 8)) {
        return std::nullopt;
    }
    return Decodable{"ico", {whole}};
}

std::optional<Decodable> examinedPpm(QIODevice& device, Stretch whole)
{
    bool const isPackedBits = PictureClaims::bytesAt(device, whole.offset, 2) == "P4";
    return wholeIfPlausible(device, whole, "ppm", isPackedBits ? whole.size * 8 : whole.size);
}

std::optional<Decodable> examinedXbm(QIODevice& device, Stretch whole)
{
    return wholeIfPlausible(device, whole, "xbm", whole.size * 2); // "0xFF," are eight pixels
}

std::optional<Decodable> examinedXpm(QIODevice& device, Stretch whole)
{
    return wholeIfPlausible(device, whole, "xpm", whole.size);
}

bool isPpm(QByteArray const& start)
{
    return start.size() > 2 && start[0] == 'P' && start[1] >= '1' && start[1] <= '6' &&
           std::isspace(static_cast<unsigned char>(start[2])) != 0;
}

bool isIcon(QByteArray const& start)
{
    using namespace std::string_view_literals;
    return start.startsWith(QByteArrayView("\0\0\1\0"sv)) || start.startsWith(QByteArrayView("\0\0\2\0"sv));
}

bool isXbm(QByteArray const& start)
{
    return start.startsWith("#define") || start.startsWith("/*");
}

constexpr std::array pngNames = {"png"};
constexpr std::array jpegNames = {"jpeg", "jpg", "jfif"};
constexpr std::array gifNames = {"gif"};
constexpr std::array bmpNames = {"bmp"};
constexpr std::array iconNames = {"ico", "cur"};
constexpr std::array ppmNames = {"ppm", "pgm", "pbm", "ppmraw", "pgmraw", "pbmraw"};
constexpr std::array xpmNames = {"xpm"};
constexpr std::array xbmNames = {"xbm"};

/// What is decoded. Of any other format that Qt has a plugin for, the claims are not known.
constexpr Format formats[] = {
    {pngNames, [](QByteArray const& start) { return start.startsWith(PictureClaims::pngSignature); },
     PictureClaims::examinedPng},
    {jpegNames, [](QByteArray const& start) { return start.startsWith("\xFF\xD8"); },
     PictureClaims::examinedJpeg},
    {gifNames, [](QByteArray const& start) { return start.startsWith("GIF8"); }, PictureClaims::examinedGif},
    {bmpNames, [](QByteArray const& start) { return start.startsWith("BM"); }, examinedBmp},
    {iconNames, isIcon, examinedIcon},
    {ppmNames, isPpm, examinedPpm},
    {xpmNames, [](QByteArray const& start) { return start.startsWith("/* XPM"); }, examinedXpm},
    {xbmNames, isXbm, examinedXbm},
};

} // namespace

std::optional<Decodable> PictureClaims::examined(QIODevice& device)
{
    QByteArray const start = bytesAt(device, 0, startSize);
    auto const format =
        std::ranges::find_if(formats, [&](Format const& candidate) { return candidate.opens(start); });
    return format == std::end(formats) ? std::nullopt : format->examined(device, {0, device.size()});
}

bool PictureClaims::isNameOf(QByteArray const& name, QByteArray const& format)
{
    return std::ranges::any_of(formats, [&](Format const& candidate) {
        return format == candidate.names.front() &&
               std::ranges::any_of(candidate.names,
                                   [&](char const* known) { return name.toLower() == known; });
    });
}

QByteArray PictureClaims::bytesAt(QIODevice& device, qint64 offset, qint64 size)
{
    // Qt remarks on a position after the end.
    return offset < device.size() && device.seek(offset) ? device.read(size) : QByteArray();
}
