#include "Links.h"

#include "LinksScanner_p.h"

#include <algorithm>

namespace Softphone {

namespace {

constexpr qsizetype roomForAnchors = 256;

constexpr bool isLineBreak(QChar c)
{
    return (c >= u'\n' && c <= u'\r') || c == u'\u0085' || c == u'\u2028' || c == u'\u2029';
}

bool isHalf(QStringView text, qsizetype place)
{
    bool const first =
        text[place].isHighSurrogate() && place + 1 < text.size() && text[place + 1].isLowSurrogate();
    bool const second = text[place].isLowSurrogate() && place > 0 && text[place - 1].isHighSurrogate();
    return text[place].isSurrogate() && !first && !second;
}

/// Whether documents keep \a c: they use some units that no text has for frames and pictures.
bool isText(QChar c)
{
    constexpr char16_t picture = 0xfffc;
    bool const noCharacter = (c >= u'\ufdd0' && c <= u'\ufdef') || c >= u'\ufffe';
    return c.category() != QChar::Other_Control && c != picture && !noCharacter;
}

/// A blank where HTML keeps it: between two characters of a line.
bool isKeptBlank(QStringView text, qsizetype place)
{
    bool const first = place == 0 || isLineBreak(text[place - 1]);
    return !first && place + 1 < text.size() && !text[place + 1].isSpace();
}

constexpr bool isWord(char16_t c)
{
    return c > u' ' && c < u'\x7f';
}

constexpr bool isPlain(char16_t c)
{
    return isWord(c) && c != u'&' && c != u'<' && c != u'>' && c != u'"';
}

constexpr qsizetype blockLength = 16;

/// Whether the units of a block stand for themselves, found out without branches, for all at once.
bool isPlainBlock(QStringView text, qsizetype begin)
{
    char16_t const* const block = text.utf16() + begin;
    unsigned special = 0;
    for (qsizetype i = 0; i < blockLength; ++i) {
        char16_t const c = block[i];
        auto const markup =
            unsigned{c == u'&'} | unsigned{c == u'<'} | unsigned{c == u'>'} | unsigned{c == u'"'};
        auto const other = unsigned{c < u' '} | unsigned{c >= u'\x7f'};
        auto const blanks =
            unsigned{c == u' '} & (unsigned{block[i - 1] <= u' '} | unsigned{block[i + 1] <= u' '} |
                                   unsigned{block[i - 1] >= u'\x7f'} | unsigned{block[i + 1] >= u'\x7f'});
        special |= markup | other | blanks;
    }
    return special == 0;
}

/// How many units from \a place on surely stand for themselves, in whole blocks.
qsizetype plainLength(QStringView text, qsizetype place, qsizetype end)
{
    // A block looks at its neighbours.
    qsizetype const last = std::min(end, text.size() - 1) - blockLength;
    qsizetype next = place;
    while (next > 0 && next <= last && isPlainBlock(text, next)) {
        next += blockLength;
    }
    return next - place;
}

/// What stands for the unit at \a place, which is not plain; nothing where the unit may stand for itself.
QLatin1String replacement(QStringView text, qsizetype place)
{
    QChar const c = text[place];
    switch (c.unicode()) {
    case u'&':
        return QLatin1String("&amp;");
    case u'<':
        return QLatin1String("&lt;");
    case u'>':
        return QLatin1String("&gt;");
    case u'"':
        return QLatin1String("&quot;");
    case u' ':
        return isKeptBlank(text, place) ? QLatin1String() : QLatin1String("&nbsp;");
    case u'\u00a0':
        return {};
    default:
        break;
    }
    if (isLineBreak(c)) {
        bool const firstOfTwo = c == u'\r' && place + 1 < text.size() && text[place + 1] == u'\n';
        return firstOfTwo ? QLatin1String("&nbsp;") : QLatin1String("<br>");
    }
    if (c.isSpace()) {
        return isKeptBlank(text, place) ? QLatin1String(" ") : QLatin1String("&nbsp;");
    }
    return isText(c) && !isHalf(text, place) ? QLatin1String() : QLatin1String("&#xfffd;");
}

/// Appends \a text from \a begin to \a end, which is looked at as a part of the whole.
void appendEscaped(QString& html, QStringView text, qsizetype begin, qsizetype end)
{
    qsizetype written = begin;
    qsizetype nextBlock = begin;
    for (qsizetype place = begin; place < end; ++place) {
        if (place >= nextBlock) {
            place += plainLength(text, place, end);
            nextBlock = place + blockLength;
        }
        if (place >= end || isPlain(text[place].unicode())) {
            continue;
        }
        if (QLatin1String const other = replacement(text, place); !other.isEmpty()) {
            html += text.sliced(written, place - written);
            html += other;
            written = place + 1;
        }
    }
    html += text.sliced(written, end - written);
}

} // namespace

QString linkedHtml(QString const& text, LinkRules const& rules)
{
    QString html;
    html.reserve(text.size() + roomForAnchors);
    qsizetype written = 0;
    for (Addresses::FoundLink const& found : Addresses::searchLinks(text, rules)) {
        auto const [begin, end] = found.place;
        appendEscaped(html, text, written, begin);
        html += QLatin1String("<a href=\"");
        appendEscaped(html, found.address, 0, found.address.size());
        html += QLatin1String("\">");
        appendEscaped(html, text, begin, end);
        html += QLatin1String("</a>");
        written = end;
    }
    appendEscaped(html, text, written, text.size());
    return html;
}

} // namespace Softphone
