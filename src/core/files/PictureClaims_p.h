#pragma once

#include <QByteArray>
#include <QIODevice>
#include <algorithm>
#include <optional>
#include <vector>

/// What the bytes of a picture ask of a decoder, worked out before a decoder sees them.
///
/// Decoders do what a file tells them: get memory for the size in its header, inflate each of its texts, pass
/// over all its pixels once for every scan. A file of a few kilobytes can ask for gigabytes and minutes that
/// way. The walks here follow a format's own structure in time linear in the bytes and in a fixed amount of
/// memory; what asks for more than the bytes explain is refused or left out.
namespace PictureClaims {

/// Some bytes of a device.
struct Stretch
{
    qint64 offset;
    qint64 size;
};

/// A picture that a decoder may be given.
struct Decodable
{
    QByteArray format;              ///< Qt's name for it
    std::vector<Stretch> stretches; ///< put together, what the decoder is to see
};

/// The picture in \a device, which is random-access; nothing when it is of no known format or its claims are
/// not to be believed. Whether it can be decoded is left to the decoder.
[[nodiscard]] std::optional<Decodable> examined(QIODevice& device);

/// Whether \a name, in any case, is a name that callers use for the format \a format.
[[nodiscard]] bool isNameOf(QByteArray const& name, QByteArray const& format);

// The formats that take a walk. Each is given a picture that opens with the format's signature.

[[nodiscard]] std::optional<Decodable> examinedPng(QIODevice& device, Stretch whole);
[[nodiscard]] std::optional<Decodable> examinedJpeg(QIODevice& device, Stretch whole);
[[nodiscard]] std::optional<Decodable> examinedGif(QIODevice& device, Stretch whole);

// What the walks share.

inline constexpr char pngSignature[] = "\x89PNG\r\n\x1a\n";

/// Up to \a size bytes at \a offset; fewer where the device ends.
[[nodiscard]] QByteArray bytesAt(QIODevice& device, qint64 offset, qint64 size);

/// A picture of so many pixels is decoded whatever its data has room for: of a file that was cut short there
/// is something to see.
inline constexpr qint64 pixelsForNothing = 4 * 1024 * 1024;

/// Whether to believe in \a pixels where the data has room for \a room of them.
[[nodiscard]] constexpr bool isPlausible(qint64 pixels, qint64 room)
{
    return pixels <= std::max(room, pixelsForNothing);
}

} // namespace PictureClaims
