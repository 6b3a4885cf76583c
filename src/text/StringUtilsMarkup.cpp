#include "StringUtils.h"

#include "../Boundary_p.h"
#include "Decomposition_p.h"
#include "FilterMatcher_p.h"
#include "HTMLHelpers.h"
#include "SubstringWrapper.h"
#include "UnitSearch_p.h"

#include <QVarLengthArray>
#include <algorithm>
#include <array>
#include <optional>
#include <span>
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
            QStringView const behind = rest.sliced(length);
            for (Entity const& entity : std::span(entities).subspan(1)) {
                if (behind.startsWith(entity.name.sliced(1))) {
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

/// \a text with every \a wanted replaced; QString::replace() moves the rest of a long text over and over.
QString replaced(QString const& text, QStringView wanted, QString const& replacement)
{
    UnitSearch const search(wanted);
    qsizetype found = search.indexIn(text);
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
        found = search.indexIn(text, done);
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

QString folded(QStringView text)
{
    QString result(text.size(), Qt::Uninitialized);
    writeFolded(text, reinterpret_cast<char16_t*>(result.data()));
    return result;
}

qsizetype indexIgnoringCase(QString const& text, QString const& wanted)
{
    // The second half of a character folds by what stands before it; only half a character can ask for that.
    if (wanted.front().isLowSurrogate()) {
        return text.indexOf(wanted, 0, Qt::CaseInsensitive);
    }
    QString const foldedWanted = folded(wanted);
    return UnitSearch(foldedWanted).indexIn(folded(text));
}

/// Collects decomposed characters without their marks.
class UnmarkedText
{
public:
    explicit UnmarkedText(qsizetype size) { m_text.reserve(size); }

    /// Appends what stays as it is.
    void appendRun(QStringView text)
    {
        if (!text.isEmpty()) {
            flush();
            m_text += text;
        }
    }

    /// Appends what the character at \a unit decomposes into.
    ///
    /// \return its length
    std::ptrdiff_t appendCharacter(char16_t const* unit, char16_t const* end, DecompositionTable const& table)
    {
        bool const isPair =
            QChar::isHighSurrogate(*unit) && unit + 1 != end && QChar::isLowSurrogate(*(unit + 1));
        char32_t const character = isPair ? QChar::surrogateToUcs4(*unit, *(unit + 1)) : *unit;
        if (QStringView const decomposed = table.find(character); !decomposed.isEmpty()) {
            append(decomposed);
        } else if (isPair) {
            appendPair(character);
        } else if (isHangulSyllable(character)) {
            appendHangul(character);
        } else {
            appendUnit(*unit);
        }
        return isPair ? 2 : 1;
    }

    QString take()
    {
        flush();
        return std::move(m_text);
    }

private:
    struct Mark
    {
        unsigned char combiningClass;
        char32_t character;
    };

    void appendUnit(char16_t unit)
    {
        if (QChar::isMark(char32_t(unit))) {
            // A mark without a combining class ends a run like a letter does, though it is dropped.
            if (!m_run.isEmpty() && QChar::combiningClass(char32_t(unit)) == 0) {
                flush();
            }
            return;
        }
        flush();
        m_text += QChar(unit);
    }

    /// Marks outside the basic plane stay, in the order that the decomposition gives to a run of marks.
    void appendPair(char32_t character)
    {
        if (unsigned char const combiningClass = QChar::combiningClass(character); combiningClass != 0) {
            m_run.append({combiningClass, character});
            return;
        }
        flush();
        m_text += QChar::fromUcs4(character);
    }

    void appendHangul(char32_t syllable)
    {
        std::array<char16_t, 3> const letters = decomposeHangul(syllable);
        appendRun(QStringView(letters.data(), letters.back() == 0 ? 2 : 3));
    }

    void append(QStringView decomposed)
    {
        for (qsizetype i = 0; i < decomposed.size(); ++i) {
            if (decomposed[i].isHighSurrogate()) {
                appendPair(QChar::surrogateToUcs4(decomposed[i], decomposed[i + 1]));
                ++i;
            } else {
                appendUnit(decomposed[i].unicode());
            }
        }
    }

    void flush()
    {
        if (m_run.isEmpty()) {
            return;
        }
        std::ranges::stable_sort(m_run, {}, &Mark::combiningClass);
        for (Mark const& mark : m_run) {
            m_text += QChar::fromUcs4(mark.character);
        }
        m_run.clear();
    }

    QString m_text;
    QVarLengthArray<Mark, 16> m_run;
};

/// The end of the characters from \a begin on that stay as they are.
char16_t const* endOfStaying(char16_t const* begin, char16_t const* end, DecompositionTable const& table)
{
    constexpr std::ptrdiff_t block = 64;
    constexpr char16_t beyondAscii = 0xFF80;
    while (end - begin >= block) {
        char16_t seen = 0;
        for (std::ptrdiff_t i = 0; i < block; ++i) {
            seen = static_cast<char16_t>(seen | begin[i]);
        }
        if ((seen & beyondAscii) != 0) {
            char16_t const* const stop = begin + block;
            begin = std::find_if(begin, stop, [&](char16_t unit) { return !table.staysAsItIs(unit); });
            if (begin != stop) {
                return begin;
            }
        } else {
            begin += block;
        }
    }
    return std::find_if(begin, end, [&](char16_t unit) { return !table.staysAsItIs(unit); });
}

QString withoutMarks(QString const& text)
{
    DecompositionTable const& table = DecompositionTable::instance();
    char16_t const* at = QStringView(text).utf16();
    char16_t const* const end = at + text.size();
    char16_t const* runEnd = endOfStaying(at, end, table);
    if (runEnd == end) {
        return text;
    }
    UnmarkedText result(text.size());
    while (true) {
        result.appendRun(QStringView(at, runEnd));
        if (runEnd == end) {
            return result.take();
        }
        at = runEnd + result.appendCharacter(runEnd, end, table);
        runEnd = endOfStaying(at, end, table);
    }
}

} // namespace

QString StringUtils::sanitizeHTMLCharacters(QString text)
{
    return guarded([&] { return escaped(std::move(text)); });
}

QString StringUtils::htmlfy(QString const& text)
{
    return guarded([&] { return HTMLHelpers::generateParagraphs(escaped(text)); });
}

QString StringUtils::deHTMLfy(QString const& html)
{
    return guarded([&] {
        QString text = withoutTags(html);
        decodeEntities(text);
        return text;
    });
}

QString StringUtils::wrapSubStringsInHTMLTag(QString const& text, QString const& subString,
                                             QString const& tag)
{
    constexpr QStringView startMarker = u"%start%";
    constexpr QStringView endMarker = u"%end%";

    return guarded([&] {
        if (subString.isEmpty()) {
            return escaped(text);
        }
        UnitSearch const search(subString);
        QString marked;
        marked.reserve(text.size() + startMarker.size() + endMarker.size());
        qsizetype done = 0;
        for (qsizetype hit = indexIgnoringCase(text, subString); hit >= 0; hit = search.indexIn(text, done)) {
            marked += QStringView(text).sliced(done, hit - done);
            marked += startMarker;
            marked += QStringView(text).sliced(hit, subString.size());
            marked += endMarker;
            done = hit + subString.size();
        }
        marked += QStringView(text).sliced(done);
        return markersToTags(std::move(marked), startMarker, endMarker, tag);
    });
}

QString StringUtils::wrapSubStringsInHTMLTagExtended(QString const& text, QString const& filter,
                                                     QString const& tag, bool matchWordStart)
{
    return guarded([&] {
        QString const startMarker = QStringLiteral("%start%");
        QString const stopMarker = QStringLiteral("%stop%");
        SubstringWrapper const wrapper(filter, text, {startMarker, stopMarker}, matchWordStart);
        return markersToTags(wrapper.wrapText(), startMarker, stopMarker, tag);
    });
}

bool StringUtils::isFilterMatched(QString const& text, QString const& filter, bool matchWordStart)
{
    return guarded([&] {
        std::optional<bool> const matched = FilterMatcher::matchesUnitByUnit(text, filter, matchWordStart);
        return matched ? *matched : FilterMatcher::matches(text, filter, matchWordStart);
    });
}

QString StringUtils::removeDiacriticalMarks(QString const& text)
{
    return guarded([&] { return withoutMarks(text); });
}
