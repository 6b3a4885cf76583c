#include "LinksTail_p.h"

#include "LinksHost_p.h"

#include <algorithm>
#include <utility>

namespace Softphone::Addresses {

namespace {

constexpr QStringView openings = u"([{";
constexpr QStringView closings = u")]}";

/// Quotes, brackets and dashes of all scripts belong to the sentence, and so do the full stops of those that
/// set no blank after them.
bool isSentenceMark(char32_t c)
{
    constexpr QStringView marks = u"\u3001\u3002\uff01\uff0c\uff0e\uff1a\uff1b\uff1f\u2014\u2015";
    switch (QChar::category(c)) {
    case QChar::Punctuation_Open:
    case QChar::Punctuation_Close:
    case QChar::Punctuation_InitialQuote:
    case QChar::Punctuation_FinalQuote:
        return true;
    default:
        return c <= 0xffff && marks.contains(QChar(static_cast<char16_t>(c)));
    }
}

/// What ends a sentence, or a part of it.
bool isPunctuation(QChar c)
{
    return AsciiSet(".,;:!?").contains(c) || c == u'\u2026' || c == u'\u2013' || isJoiner(c.unicode());
}

} // namespace

bool isEndOfOtherScript(char32_t c)
{
    constexpr char32_t objectReplacement = 0xfffc;
    switch (QChar::category(c)) {
    case QChar::Separator_Space:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
    case QChar::Other_Control:
    case QChar::Other_Surrogate:
    case QChar::Other_NotAssigned:
        return true;
    case QChar::Other_Format:
        return !isJoiner(c);
    default:
        return c == objectReplacement || c == QChar::ReplacementCharacter;
    }
}

qsizetype LinksTail::end(qsizetype begin, qsizetype place)
{
    m_place = place;
    m_before = begin > 0 ? m_text[begin - 1] : QChar();
    m_depth = 0;
    m_apostrophes = 0;
    m_inQuote = false;
    while (m_place < m_text.size()) {
        char32_t const c = codePointAt(m_text, m_place);
        if (endsAddress(c) || !goesOn(c)) {
            break;
        }
        m_place += units(c);
    }
    return withoutPunctuation(place);
}

bool LinksTail::goesOn(char32_t c)
{
    switch (c) {
    case U'(':
    case U'[':
    case U'{':
        ++m_depth;
        return !isOpenBracket();
    case U')':
    case U']':
    case U'}':
        return m_depth-- > 0;
    case U'"':
        return takesQuote();
    case U'\'':
        ++m_apostrophes;
        return m_before != u'\'' || isWordNext();
    case U'\u2019':
        return isWordNext();
    case U'`':
    case U'|':
    case U'\\':
    case U'^':
        return false;
    default:
        return c < 0x80 || !isSentenceMark(c);
    }
}

/// A quote belongs to the address when a word follows and the quote closes in the address.
bool LinksTail::takesQuote()
{
    if (m_inQuote) {
        m_inQuote = false;
        return true;
    }
    if (m_before == u'"' || !isWordNext()) {
        return false;
    }
    auto const ends = [](QChar c) { return c == u'"' || (!c.isSurrogate() && endsAddress(c.unicode())); };
    auto const closing = std::find_if(m_text.begin() + m_place + 1, m_text.end(), ends);
    m_inQuote = closing != m_text.end() && *closing == u'"';
    return m_inQuote;
}

bool LinksTail::isWordNext() const
{
    return m_place + 1 < m_text.size() && QChar::isLetterOrNumber(codePointAt(m_text, m_place + 1));
}

bool LinksTail::isOpenBracket()
{
    if (m_place >= m_openUpTo) {
        findOpenBrackets();
    }
    return std::ranges::binary_search(m_open, m_place);
}

/// A bracket that closes another one than the last leaves all open that are.
void LinksTail::findOpenBrackets()
{
    m_open.clear();
    QList<qsizetype> waiting;
    qsizetype place = m_place;
    for (; place < m_text.size() && !endsAddress(codePointAt(m_text, place));
         place += units(codePointAt(m_text, place))) {
        QChar const c = m_text[place];
        if (openings.contains(c)) {
            waiting += place;
        } else if (qsizetype const kind = closings.indexOf(c); kind >= 0 && !waiting.isEmpty()) {
            if (m_text[waiting.constLast()] == openings[kind]) {
                waiting.removeLast();
            } else {
                m_open += std::exchange(waiting, {});
            }
        }
    }
    m_open += waiting;
    m_openUpTo = place;
}

/// The end of the address without what ends the sentence.
qsizetype LinksTail::withoutPunctuation(qsizetype from) const
{
    qsizetype apostrophes = m_apostrophes;
    qsizetype end = m_place;
    for (; end > from; --end) {
        QChar const last = m_text[end - 1];
        bool const emphasised = last == m_before && AsciiSet("*_~").contains(last);
        bool const closesQuote = last == u'\'' && apostrophes-- % 2 != 0;
        if (!isPunctuation(last) && !emphasised && !closesQuote) {
            break;
        }
    }
    return end;
}

} // namespace Softphone::Addresses
