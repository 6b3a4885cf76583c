#include "Links.h"

#include "LinksScanner_p.h"
#include "UnitSearch_p.h"

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

/// Whether units may need a replacement: markup, all that is no printable ASCII, and blanks in a row.
constexpr auto isSpecial = [](Units c, Units next) {
    // One bit is between '"' and '&', and one between '<' and '>'.
    auto const isMarkup = ((c | eightOf(4)) == eightOf(u'&')) | ((c | eightOf(2)) == eightOf(u'>'));
    auto const isOther = (c < eightOf(u' ')) | (c > eightOf(u'~'));
    return isMarkup | isOther | ((c | next) == eightOf(u' '));
};

/// The first unit from \a begin to \a end that may need a replacement: a special one, or a blank beside it.
qsizetype nextSpecial(QStringView text, qsizetype begin, qsizetype end)
{
    if (begin < end && (text[begin] == u' ' || text[begin] > u'~')) {
        return begin;
    }
    qsizetype const place = findUnit(text, begin, end, isSpecial);
    bool const followsBlank = place > begin && text[place - 1] == u' ';
    return followsBlank ? place - 1 : place;
}

/// What stands for the unit at \a place, which is not plain; nothing where the unit may stand for itself.
QStringView replacement(QStringView text, qsizetype place)
{
    QChar const c = text[place];
    switch (c.unicode()) {
    case u'&':
        return QStringView(u"&amp;");
    case u'<':
        return QStringView(u"&lt;");
    case u'>':
        return QStringView(u"&gt;");
    case u'"':
        return QStringView(u"&quot;");
    case u' ':
        return isKeptBlank(text, place) ? QStringView() : QStringView(u"&nbsp;");
    case u'\u00a0':
        return {};
    default:
        break;
    }
    if (isLineBreak(c)) {
        bool const firstOfTwo = c == u'\r' && place + 1 < text.size() && text[place + 1] == u'\n';
        return firstOfTwo ? QStringView(u"&nbsp;") : QStringView(u"<br>");
    }
    if (c.isSpace()) {
        return isKeptBlank(text, place) ? QStringView(u" ") : QStringView(u"&nbsp;");
    }
    return isText(c) && !isHalf(text, place) ? QStringView() : QStringView(u"&#xfffd;");
}

/// Appends \a text from \a begin to \a end, which is looked at as a part of the whole.
void appendEscaped(QString& html, QStringView text, qsizetype begin, qsizetype end)
{
    qsizetype written = begin;
    for (qsizetype place = begin;; ++place) {
        place = nextSpecial(text, place, end);
        if (place == end) {
            break;
        }
        if (QStringView const other = replacement(text, place); !other.isEmpty()) {
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
        html += QStringView(u"<a href=\"");
        if (found.address.isNull()) {
            html += found.scheme;
            appendEscaped(html, text, begin, end);
        } else {
            appendEscaped(html, found.address, 0, found.address.size());
        }
        html += QStringView(u"\">");
        appendEscaped(html, text, begin, end);
        html += QStringView(u"</a>");
        written = end;
    }
    appendEscaped(html, text, written, text.size());
    return html;
}

} // namespace Softphone
