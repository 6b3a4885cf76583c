#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QDateTime>
#include <chrono>
#include <optional>

/// The header fields of HTTP that a transfer decides by. They come from whoever answers, so each is read in
/// full or not at all.
namespace Softphone::HttpFields {

/// Which bytes of a file an answer carries; both ends are included.
struct ContentRange
{
    qint64 first;
    qint64 last;
    qint64 total;
};

/// \a text as a number without sign, blanks or anything else around its digits; nothing beyond 2^63 - 1.
[[nodiscard]] std::optional<qint64> number(QByteArrayView text);

/// "bytes 10-99/100" (RFC 9110, 14.4); nothing unless all three numbers are there and fit together.
[[nodiscard]] std::optional<ContentRange> contentRange(QByteArrayView text);

/// How long Retry-After (RFC 9110, 10.2.3) asks to wait, in seconds or as a date in GMT; 0 for a date that
/// has passed, nothing when \a text is neither.
[[nodiscard]] std::optional<std::chrono::seconds> retryAfter(QByteArrayView text, QDateTime const& now);

/// Whether \a tag is an entity tag that promises the same bytes (RFC 9110, 8.8.3): quoted, and not marked
/// weak.
[[nodiscard]] bool isStrongTag(QByteArrayView tag);

/// Whether \a name is a token (RFC 9110, 5.6.2), so that it ends where it seems to.
[[nodiscard]] bool isFieldName(QByteArrayView name);

/// Whether \a value has no CR, LF or NUL, which would end it and begin something that nobody asked for.
[[nodiscard]] bool isFieldValue(QByteArrayView value);

} // namespace Softphone::HttpFields
