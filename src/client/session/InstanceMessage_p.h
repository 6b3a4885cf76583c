#pragma once

#include <QByteArray>
#include <QStringList>
#include <optional>

namespace Softphone::Impl {

/// What one copy of a program hands to another, and its form on the way.
///
/// A header of eight bytes, the four letters "SPI1" and the length of the rest, then the token and each
/// argument, each as a length and the bytes. Numbers have four bytes, the highest first. Text travels in
/// UTF-16, so that half a surrogate pair in a file name arrives as it was.
struct InstanceMessage
{
    static constexpr qsizetype headerSize = 8;
    /// The most that arguments and token may have together, counted in UTF-8.
    static constexpr qsizetype sizeLimit = 64 * 1024;
    static constexpr qsizetype countLimit = 1024;
    /// What these limits allow on the way: twice the bytes in UTF-16, and a length for each part.
    static constexpr qsizetype wireLimit = 2 * sizeLimit + 4 * (countLimit + 1);

    QStringList arguments;
    QByteArray activationToken;

    /// The message as bytes, header included; nothing when it is larger than the limits allow.
    [[nodiscard]] std::optional<QByteArray> encoded() const;

    /// How many bytes come after \a header; nothing when it is none, or announces more than a message may
    /// have.
    [[nodiscard]] static std::optional<qsizetype> lengthAfter(QByteArrayView header);

    /// The message whose bytes after the header are \a body; nothing when they are none.
    [[nodiscard]] static std::optional<InstanceMessage> decoded(QByteArrayView body);
};

} // namespace Softphone::Impl
