#include "HttpFields_p.h"

#include <QLocale>
#include <QTimeZone>
#include <algorithm>
#include <charconv>
#include <string_view>

namespace Softphone::HttpFields {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isTokenCharacter(char c)
{
    constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
    return isDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           marks.find(c) != std::string_view::npos;
}

bool isTagCharacter(char c)
{
    return c > ' ' && c != '"' && c != '\x7f';
}

} // namespace

std::optional<qint64> number(QByteArrayView text)
{
    qint64 value = 0;
    auto const [end, error] = std::from_chars(text.begin(), text.end(), value);
    if (text.isEmpty() || !isDigit(text.front()) || error != std::errc() || end != text.end()) {
        return std::nullopt;
    }
    return value;
}

std::optional<ContentRange> contentRange(QByteArrayView text)
{
    constexpr QByteArrayView unit = "bytes ";
    qsizetype const dash = text.indexOf('-');
    qsizetype const slash = text.indexOf('/');
    if (!text.startsWith(unit) || dash < 0 || slash < dash) {
        return std::nullopt;
    }
    auto const first = number(text.sliced(unit.size(), dash - unit.size()));
    auto const last = number(text.sliced(dash + 1, slash - dash - 1));
    auto const total = number(text.sliced(slash + 1));
    if (!first || !last || !total || *first > *last || *last >= *total) {
        return std::nullopt;
    }
    return ContentRange{*first, *last, *total};
}

std::optional<std::chrono::seconds> retryAfter(QByteArrayView text, QDateTime const& now)
{
    if (auto const seconds = number(text)) {
        return std::chrono::seconds(*seconds);
    }
    QDateTime const date =
        QLocale::c().toDateTime(QString::fromLatin1(text), QStringLiteral("ddd, dd MMM yyyy hh:mm:ss 'GMT'"));
    if (!date.isValid()) {
        return std::nullopt;
    }
    QDateTime const due(date.date(), date.time(), QTimeZone::utc());
    return std::chrono::seconds(std::max<qint64>(now.secsTo(due), 0));
}

bool isStrongTag(QByteArrayView tag)
{
    return tag.size() >= 2 && tag.front() == '"' && tag.back() == '"' &&
           std::ranges::all_of(tag.sliced(1, tag.size() - 2), isTagCharacter);
}

bool isFieldName(QByteArrayView name)
{
    return !name.isEmpty() && std::ranges::all_of(name, isTokenCharacter);
}

bool isFieldValue(QByteArrayView value)
{
    constexpr std::string_view refused("\r\n\0", 3);
    return std::ranges::none_of(value, [&](char c) { return refused.find(c) != std::string_view::npos; });
}

} // namespace Softphone::HttpFields
