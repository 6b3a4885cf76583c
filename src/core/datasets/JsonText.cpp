#include "JsonText_p.h"

#include <QChar>
#include <algorithm>

namespace {

/// Text is encoded in blocks: within one there is room for the worst case, so that no unit need ask for it,
/// and what is reserved in vain stays small.
constexpr qsizetype blockLength = 1024;
constexpr qsizetype longestEscape = 6; // \u001f

char* escape(char* out, char16_t unit)
{
    static constexpr char digits[] = "0123456789abcdef";
    *out++ = '\\';
    switch (unit) {
    case u'"':
    case u'\\':
        *out++ = static_cast<char>(unit);
        return out;
    case u'\b':
        *out++ = 'b';
        return out;
    case u'\f':
        *out++ = 'f';
        return out;
    case u'\n':
        *out++ = 'n';
        return out;
    case u'\r':
        *out++ = 'r';
        return out;
    case u'\t':
        *out++ = 't';
        return out;
    default:
        *out++ = 'u';
        for (int shift = 12; shift >= 0; shift -= 4) {
            *out++ = digits[(unit >> shift) & 0xf];
        }
        return out;
    }
}

char* encode(char* out, char32_t character)
{
    constexpr char32_t payload = 0x3f;
    auto const trail = [&out, character](int shift) {
        *out++ = static_cast<char>(0x80 | ((character >> shift) & payload));
    };
    if (character < 0x800) {
        *out++ = static_cast<char>(0xc0 | (character >> 6));
    } else if (character < 0x10000) {
        *out++ = static_cast<char>(0xe0 | (character >> 12));
        trail(6);
    } else {
        *out++ = static_cast<char>(0xf0 | (character >> 18));
        trail(12);
        trail(6);
    }
    trail(0);
    return out;
}

bool isPlain(char16_t unit)
{
    return unit >= 0x20 && unit < 0x80 && unit != u'"' && unit != u'\\';
}

} // namespace

void JsonText::string(QStringView text)
{
    separate();
    quote(text);
}

void JsonText::name(QStringView text)
{
    separate();
    quote(text);
    m_text.append(':');
}

void JsonText::open(bool isArray)
{
    separate();
    m_text.append(isArray ? '[' : '{');
    m_closing.append(isArray ? ']' : '}');
}

void JsonText::close()
{
    m_text.append(m_closing.back());
    m_closing.chop(1);
}

void JsonText::value(QByteArrayView written)
{
    separate();
    m_text.append(written);
}

/// Everything but an opening bracket and a name is followed by a comma.
void JsonText::separate()
{
    char const last = m_text.isEmpty() ? '[' : m_text.back();
    if (last != '{' && last != '[' && last != ':') {
        m_text.append(',');
    }
}

void JsonText::quote(QStringView text)
{
    m_text.append('"');
    char16_t const* const units = text.utf16();
    qsizetype const size = text.size();
    for (qsizetype i = 0; i < size;) {
        qsizetype const blockEnd = i + std::min(size - i, blockLength);
        qsizetype const used = m_text.size();
        // A pair that straddles the end of the block needs less than its first half was given.
        m_text.resize(used + (blockEnd - i) * longestEscape);
        char* const begin = m_text.data() + used;
        char* out = begin;
        while (i < blockEnd) {
            char16_t const unit = units[i++];
            bool const isPair = QChar::isHighSurrogate(unit) && i < size && QChar::isLowSurrogate(units[i]);
            if (isPlain(unit)) {
                *out++ = static_cast<char>(unit);
            } else if (isPair) {
                out = encode(out, QChar::surrogateToUcs4(unit, units[i++]));
            } else if (unit < 0x80 || QChar::isSurrogate(unit)) {
                out = escape(out, unit);
            } else {
                out = encode(out, unit);
            }
        }
        m_text.truncate(used + (out - begin));
    }
    m_text.append('"');
}
