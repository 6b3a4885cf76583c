#include "StringUtils.h"

#include "../PatternSearch_p.h"
#include "CaseFolding_p.h"

#include "HTMLHelpers.h"
#include "SubstringWrapper.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

namespace {

struct Entity
{
    char16_t unit;
    QStringView name;
};

constexpr std::array<Entity, 5> entities = {{
    {u'&', u"&amp;"},
    {u'<', u"&lt;"},
    {u'>', u"&gt;"},
    {u'"', u"&quot;"},
    {u'\'', u"&apos;"},
}};

constexpr bool needsEscape(char16_t unit)
{
    // All five are below 64, so that one bit each says it.
    constexpr quint64 members = quint64(1) << u'&' | quint64(1) << u'<' | quint64(1) << u'>' |
                                quint64(1) << u'"' | quint64(1) << u'\'';
    return unit < 64 && (members >> unit & 1) != 0;
}

QStringView entityOf(char16_t unit)
{
    return std::ranges::find(entities, unit, &Entity::unit)->name;
}

char16_t* append(QStringView text, char16_t* out)
{
    return std::copy_n(text.utf16(), text.size(), out);
}

QString escaped(QString text)
{
    char16_t const* const begin = QStringView(text).utf16();
    char16_t const* const end = begin + text.size();
    char16_t const* const first = std::find_if(begin, end, needsEscape);
    if (first == end) {
        return text;
    }
    qsizetype size = text.size();
    for (char16_t const* unit = first; unit != end; ++unit) {
        size += needsEscape(*unit) ? entityOf(*unit).size() - 1 : 0;
    }
    QString result(size, Qt::Uninitialized);
    char16_t* out = std::copy(begin, first, reinterpret_cast<char16_t*>(result.data()));
    for (char16_t const* unit = first; unit != end; ++unit) {
        if (needsEscape(*unit)) {
            out = append(entityOf(*unit), out);
        } else {
            *out++ = *unit;
        }
    }
    return result;
}

/// \a html without its tags.
QString withoutTags(QStringView html)
{
    QString text;
    text.reserve(html.size());
    qsizetype done = 0;
    while (true) {
        qsizetype const open = html.indexOf(u'<', done);
        qsizetype const close = open < 0 ? -1 : html.indexOf(u'>', open);
        if (close < 0) {
            break;
        }
        text += html.sliced(done, open - done);
        done = close + 1;
    }
    text += html.sliced(done);
    return text;
}

/// Decodes in place the entities in \a text, "&amp;" before all others: what it leaves may be the ampersand
/// of another entity, but never of a second "&amp;".
void decodeEntities(QString& text)
{
    qsizetype const firstAmpersand = text.indexOf(u'&');
    if (firstAmpersand < 0) {
        return;
    }
    QChar* const begin = text.data();
    QChar* out = begin + firstAmpersand;
    QStringView rest = QStringView(text).sliced(firstAmpersand);
    while (!rest.isEmpty()) {
        QChar unit = rest.front();
        qsizetype length = 1;
        if (unit == u'&') {
            length = rest.startsWith(entities.front().name) ? entities.front().name.size() : 1;
            QStringView const after = rest.sliced(length);
            for (Entity const& entity : std::span(entities).subspan(1)) {
                if (after.startsWith(entity.name.sliced(1))) {
                    unit = entity.unit;
                    length += entity.name.size() - 1;
                    break;
                }
            }
        }
        *out++ = unit;
        rest = rest.sliced(length);
    }
    text.truncate(out - begin);
}

std::u16string_view unitsOf(QStringView text)
{
    return {text.utf16(), static_cast<std::size_t>(text.size())};
}

/// \a text with every \a wanted replaced. QString::replace() moves the rest of a long text over and over.
QString replaced(QString const& text, QStringView wanted, QString const& replacement)
{
    PatternSearch<char16_t> search(unitsOf(wanted));
    qsizetype found = search.indexIn(unitsOf(text));
    if (found < 0) {
        return text;
    }
    QString result;
    result.reserve(text.size() + replacement.size());
    qsizetype done = 0;
    while (found >= 0) {
        result += QStringView(text).sliced(done, found - done);
        result += replacement;
        done = found + wanted.size();
        found = search.indexIn(unitsOf(text), done);
    }
    result += QStringView(text).sliced(done);
    return result;
}

/// Escapes \a marked and turns its markers into the element \a tag.
QString markersToTags(QString marked, QStringView startMarker, QStringView endMarker, QString const& tag)
{
    QString const html = replaced(escaped(std::move(marked)), startMarker, u'<' + tag + u'>');
    return replaced(html, endMarker, QLatin1String("</") + tag + u'>');
}

} // namespace

QString StringUtils::sanitizeHTMLCharacters(QString text)
{
    return escaped(std::move(text));
}

QString StringUtils::htmlfy(QString const& text)
{
    return HTMLHelpers::generateParagraphs(escaped(text));
}

QString StringUtils::deHTMLfy(QString const& html)
{
    QString text = withoutTags(html);
    decodeEntities(text);
    return text;
}

QString StringUtils::wrapSubStringsInHTMLTag(QString const& text, QString const& subString,
                                             QString const& tag)
{
    // Marked before the text is escaped, so that a hit may hold what has to be escaped. A text that contains
    // a marker of its own gets a tag there, too.
    constexpr QStringView startMarker = u"%start%";
    constexpr QStringView endMarker = u"%end%";

    if (subString.isEmpty()) {
        return escaped(text);
    }
    PatternSearch<char16_t> search(unitsOf(subString));
    QString marked;
    marked.reserve(text.size() + startMarker.size() + endMarker.size());
    qsizetype done = 0;
    // The first hit counts in any case, the further ones only as they are written: callers know it so.
    for (qsizetype hit = CaseBlindSearch(subString).indexIn(FoldedText(text)); hit >= 0;
         hit = search.indexIn(unitsOf(text), done)) {
        marked += QStringView(text).sliced(done, hit - done);
        marked += startMarker;
        marked += QStringView(text).sliced(hit, subString.size());
        marked += endMarker;
        done = hit + subString.size();
    }
    marked += QStringView(text).sliced(done);
    return markersToTags(std::move(marked), startMarker, endMarker, tag);
}

QString StringUtils::wrapSubStringsInHTMLTagExtended(QString const& text, QString const& filter,
                                                     QString const& tag, bool matchWordStart)
{
    QString const startMarker = QStringLiteral("%start%");
    QString const stopMarker = QStringLiteral("%stop%");
    SubstringWrapper const wrapper(filter, text, {startMarker, stopMarker}, matchWordStart);
    return markersToTags(wrapper.wrapText(), startMarker, stopMarker, tag);
}
