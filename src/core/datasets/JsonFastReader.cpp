#include "JsonFastReader_p.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

using namespace DataSets::Impl;

namespace {

constexpr std::size_t maxDepth = 1000;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// The text that \a written stands for, empty unless it is plain UTF-8.
std::optional<QString> decode(QByteArrayView written)
{
    if (std::none_of(written.begin(), written.end(), [](char c) { return (c & 0x80) != 0; })) {
        return QString::fromLatin1(written);
    }
    // A byte order mark starts with this byte, and QString would drop it.
    constexpr char markStart = '\xef';
    QString text = QString::fromUtf8(written);
    bool const faithful = !written.contains(markStart) && !text.contains(QChar(QChar::ReplacementCharacter));
    return faithful ? std::optional<QString>(std::move(text)) : std::nullopt;
}

} // namespace

JsonFastReader::JsonFastReader(QByteArrayView json)
    : m_next(json.data())
    , m_end(json.data() + json.size())
{
}

bool JsonFastReader::read(DataSetImpl& target)
{
    skipSpace();
    if (!skip('{')) {
        return false;
    }
    skipSpace();
    if (!skip('}')) {
        m_open.push_back({&target});
    }
    while (!m_open.empty()) {
        if (!(m_open.back().record->isArray ? readElement() : readMember())) {
            return false;
        }
    }
    skipSpace();
    return m_next == m_end;
}

bool JsonFastReader::skip(char expected)
{
    bool const found = m_next != m_end && *m_next == expected;
    m_next += found ? 1 : 0;
    return found;
}

bool JsonFastReader::skipWord(QByteArrayView word)
{
    bool const found = QByteArrayView(m_next, m_end).startsWith(word);
    m_next += found ? word.size() : 0;
    return found;
}

void JsonFastReader::skipSpace()
{
    while (m_next != m_end && (*m_next == ' ' || *m_next == '\n' || *m_next == '\t' || *m_next == '\r')) {
        ++m_next;
    }
}

bool JsonFastReader::readMember()
{
    std::optional<QString> name = readName();
    skipSpace();
    return name && skip(':') && readValue(*std::move(name));
}

bool JsonFastReader::readElement()
{
    return readValue(m_open.back().nextIndex++);
}

bool JsonFastReader::readValue(Key key)
{
    skipSpace();
    if (m_next == m_end) {
        return false;
    }
    bool stored = false;
    switch (*m_next) {
    case '{':
        return open(std::move(key), false);
    case '[':
        return open(std::move(key), true);
    case '"':
        stored = store(std::move(key), readString());
        break;
    case 't':
        stored = skipWord("true") && store(std::move(key), std::optional(true));
        break;
    case 'f':
        stored = skipWord("false") && store(std::move(key), std::optional(false));
        break;
    case 'n':
        // Nothing is stored, but a repeated name is not for this reader.
        stored = skipWord("null") && !m_open.back().record->entries.contains(key);
        break;
    default:
        stored = store(std::move(key), readNumber());
    }
    return stored && closeFinished();
}

bool JsonFastReader::open(Key key, bool isArray)
{
    std::optional const record = std::make_shared<DataSetImpl>(isArray);
    if (m_open.size() == maxDepth || !store(std::move(key), record)) {
        return false;
    }
    ++m_next;
    m_open.push_back({record->get()});
    skipSpace();
    if (skip(isArray ? ']' : '}')) {
        m_open.pop_back();
        return closeFinished();
    }
    return true;
}

/// Goes to where the next value or name must stand: behind a comma, out of the records that end before.
bool JsonFastReader::closeFinished()
{
    while (!m_open.empty()) {
        skipSpace();
        if (skip(',')) {
            skipSpace();
            return true;
        }
        if (!skip(m_open.back().record->isArray ? ']' : '}')) {
            return false;
        }
        m_open.pop_back();
    }
    return true;
}

/// The inside of a string up to its end or its first escape.
std::optional<QByteArrayView> JsonFastReader::readPlain()
{
    auto const endsPlain = [](char c) {
        return c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20;
    };
    char const* const begin = m_next;
    m_next = std::find_if(begin, m_end, endsPlain);
    bool const ends = m_next != m_end && (*m_next == '"' || *m_next == '\\');
    return ends ? std::optional(QByteArrayView(begin, m_next)) : std::nullopt;
}

std::optional<QString> JsonFastReader::readName()
{
    if (!skip('"')) {
        return std::nullopt;
    }
    std::optional<QByteArrayView> const written = readPlain();
    if (!written) {
        return std::nullopt;
    }
    if (!skip('"')) {
        return readEscapedString(*written);
    }
    if (written->isEmpty()) {
        return QString();
    }
    auto const sum = static_cast<std::size_t>(written->size()) * 7 +
                     static_cast<unsigned char>(written->front()) * 3U +
                     static_cast<unsigned char>(written->back());
    KnownName& known = m_names[sum % m_names.size()];
    if (known.written != *written) {
        std::optional<QString> text = decode(*written);
        if (!text) {
            return std::nullopt;
        }
        known = {*written, *std::move(text)};
    }
    return known.text;
}

std::optional<QString> JsonFastReader::readString()
{
    skip('"');
    std::optional<QByteArrayView> const written = readPlain();
    if (!written) {
        return std::nullopt;
    }
    return skip('"') ? decode(*written) : readEscapedString(*written);
}

/// The rest of a string whose first escape stands behind \a start.
std::optional<QString> JsonFastReader::readEscapedString(QByteArrayView start)
{
    std::optional<QString> text = decode(start);
    while (text && skip('\\')) {
        std::optional<QChar> const escaped = readEscape();
        std::optional<QByteArrayView> const written = escaped ? readPlain() : std::nullopt;
        std::optional<QString> const piece = written ? decode(*written) : std::nullopt;
        if (!piece) {
            return std::nullopt;
        }
        *text += *escaped;
        *text += *piece;
    }
    return skip('"') ? text : std::nullopt;
}

std::optional<QChar> JsonFastReader::readEscape()
{
    if (m_next == m_end) {
        return std::nullopt;
    }
    switch (char const letter = *m_next++) {
    case '"':
    case '\\':
    case '/':
        return QLatin1Char(letter);
    case 'b':
        return QLatin1Char('\b');
    case 'f':
        return QLatin1Char('\f');
    case 'n':
        return QLatin1Char('\n');
    case 'r':
        return QLatin1Char('\r');
    case 't':
        return QLatin1Char('\t');
    case 'u':
        return readUnit();
    default:
        return std::nullopt;
    }
}

std::optional<QChar> JsonFastReader::readUnit()
{
    constexpr std::ptrdiff_t digits = 4;
    if (m_end - m_next < digits || !std::all_of(m_next, m_next + digits, [](char c) {
            return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
        })) {
        return std::nullopt;
    }
    unsigned int unit = 0;
    for (char const* const end = m_next + digits; m_next != end; ++m_next) {
        char const c = *m_next;
        unit = unit * 16 + static_cast<unsigned int>(isDigit(c) ? c - '0' : (c | 0x20) - 'a' + 10);
    }
    return QChar(static_cast<char16_t>(unit));
}

/// The number as an int, 0 where it is none. Fifteen digits are what a double, which numbers with a fraction
/// pass through, tells apart for certain.
std::optional<int> JsonFastReader::readNumber()
{
    constexpr std::ptrdiff_t exactDigits = 15;
    bool const negative = skip('-');
    char const* const whole = m_next;
    m_next = std::find_if_not(whole, m_end, isDigit);
    char const* const point = m_next;
    bool const hasFraction = skip('.');
    char const* const fraction = m_next;
    if (hasFraction) {
        m_next = std::find_if_not(fraction, m_end, isDigit);
    }
    bool const leadingZero = point - whole > 1 && *whole == '0';
    bool const emptyFraction = hasFraction && m_next == fraction;
    if (point == whole || leadingZero || emptyFraction || m_next - whole > exactDigits) {
        return std::nullopt;
    }
    long long value = 0;
    for (char const* digit = whole; digit != point; ++digit) {
        value = value * 10 + (*digit - '0');
    }
    value = negative ? -value : value;
    bool const isInt = value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max();
    bool const isWhole = std::all_of(fraction, m_next, [](char c) { return c == '0'; });
    return isInt && isWhole ? static_cast<int>(value) : 0;
}

/// False when there is no value, or the key is in use.
template <typename T>
bool JsonFastReader::store(Key key, std::optional<T> const& value)
{
    if (!value) {
        return false;
    }
    return EntriesEditor::tryEmplace(m_open.back().record->entries, std::move(key), *value).second;
}
