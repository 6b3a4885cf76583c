#include "../PatternSearch_p.h"
#include "StringUtils.h"

#include <QStringView>
#include <QVarLengthArray>
#include <algorithm>
#include <cstddef>

namespace {

constexpr char16_t space = u' ';
constexpr char16_t dottedCapitalI = 0x130; // the only letter whose lower case is longer than itself

/// Lowers single units, which is the whole truth for all letters but those that announcesMore() names.
class UnitLowering
{
public:
    char16_t operator()(char16_t unit)
    {
        constexpr char16_t firstNonAscii = 0x80;
        if (unit < firstNonAscii) {
            constexpr char16_t letters = 26;
            bool const isCapital = static_cast<char16_t>(unit - u'A') < letters;
            return static_cast<char16_t>(unit | (isCapital ? 0x20 : 0));
        }
        m_metMore = m_metMore || unit == dottedCapitalI || QChar::isSurrogate(unit);
        return static_cast<char16_t>(QChar::toLower(char32_t(unit)));
    }

    /// Whether a unit was met that is not lowered by itself; what was found out does not hold then.
    [[nodiscard]] bool metMore() const { return m_metMore; }

private:
    bool m_metMore = false;
};

bool isPair(QStringView text, qsizetype at)
{
    return text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
}

/// Where the first letter with a lower case of its own stands in \a text, or its end.
qsizetype firstCapital(QStringView text)
{
    for (qsizetype at = 0; at < text.size(); ++at) {
        bool const pair = isPair(text, at);
        char32_t const character =
            pair ? QChar::surrogateToUcs4(text[at], text[at + 1]) : char32_t(text[at].unicode());
        if (QChar::toLower(character) != character || character == dottedCapitalI) {
            return at;
        }
        at += pair ? 1 : 0;
    }
    return text.size();
}

/// The \a size units from \a from on of \a text in lower case, as they stand in text.toLower().
///
/// Linear; QString::toLower() moves the rest of the text at each dotted capital I. It is followed in what it
/// does to halves of characters, too: from the first capital on it replaces them, but not at the text's end.
QString lowered(QStringView text, qsizetype from, qsizetype size)
{
    qsizetype end = text.size();
    while (end > 0 && text[end - 1].isHighSurrogate()) {
        --end;
    }
    qsizetype const capital = firstCapital(text);
    QString result;
    result.reserve(size);
    for (qsizetype at = from; at < from + size; ++at) {
        QChar const unit = text[at];
        if (isPair(text, at)) {
            result += QChar::fromUcs4(QChar::toLower(QChar::surrogateToUcs4(unit, text[at + 1])));
            ++at;
        } else if (unit.isSurrogate()) {
            result += at < capital || at >= end ? unit : QChar(QChar::ReplacementCharacter);
        } else if (unit == dottedCapitalI) {
            result += QStringLiteral("i\u0307");
        } else {
            result += unit.toLower();
        }
    }
    return result;
}

/// A name that is searched where it stands, in lower case, and whose words are taken one by one.
///
/// A list is filtered at each keystroke, and most names differ from the filter within a few letters: a
/// lowered copy of each would take far longer than the search.
class NameWords
{
public:
    explicit NameWords(QStringView name)
        : m_begin(name.utf16())
        , m_end(m_begin + name.size())
    {
    }

    /// Takes the first free word that opens with \a wanted, or that holds it anywhere; false when there is
    /// none.
    bool take(QStringView wanted, bool matchWordStart)
    {
        return matchWordStart ? takeOpeningWith(wanted) : takeHolding(wanted);
    }

    [[nodiscard]] bool metMore() const { return m_lowering.metMore(); }

private:
    /// Takes the first free word that opens with \a wanted.
    bool takeOpeningWith(QStringView wanted)
    {
        for (char16_t const* word = skipSpaces(m_begin); word != m_end; word = skipSpaces(skipWord(word))) {
            if (opensWith(word, wanted) && takeWordAt(word)) {
                return true;
            }
        }
        return false;
    }

    /// Takes the first free word that holds \a wanted.
    bool takeHolding(QStringView wanted)
    {
        PatternSearch<char16_t> search(std::u16string_view(wanted.utf16(), std::size_t(wanted.size())));
        char16_t const* from = m_begin;
        while (char16_t const* const found = search.find(from, m_end, m_lowering)) {
            if (takeWordAt(found)) {
                return true;
            }
            from = skipWord(found);
        }
        return false;
    }

    [[nodiscard]] char16_t const* skipSpaces(char16_t const* unit) const
    {
        return std::find_if(unit, m_end, [](char16_t each) { return each != space; });
    }

    [[nodiscard]] char16_t const* skipWord(char16_t const* unit) const
    {
        return std::find(unit, m_end, space);
    }

    bool opensWith(char16_t const* word, QStringView wanted)
    {
        for (QChar const unit : wanted) {
            if (word == m_end || m_lowering(*word) != unit.unicode()) {
                return false;
            }
            ++word;
        }
        return true;
    }

    /// Takes the word that \a unit stands in; false when an earlier filter word has it.
    bool takeWordAt(char16_t const* unit)
    {
        // Which word was taken last is only worth knowing once a further filter word has found one.
        if (m_lastTaken != nullptr) {
            if (m_takenAt.isEmpty()) {
                m_takenAt.resize(m_end - m_begin);
                std::ranges::fill(m_takenAt, false);
            }
            m_takenAt[beginOfWord(m_lastTaken)] = true;
        }
        if (!m_takenAt.isEmpty() && m_takenAt[beginOfWord(unit)]) {
            return false;
        }
        m_lastTaken = unit;
        return true;
    }

    [[nodiscard]] qsizetype beginOfWord(char16_t const* unit) const
    {
        while (unit != m_begin && *(unit - 1) != space) {
            --unit;
        }
        return unit - m_begin;
    }

    char16_t const* m_begin;
    char16_t const* m_end;
    char16_t const* m_lastTaken = nullptr;
    UnitLowering m_lowering;
    QVarLengthArray<bool, 128> m_takenAt; ///< for each position, whether the word that begins there is taken
};

/// Whether each word of \a filter, in turn, finds a word of \a name that it can take.
bool takeAllWords(NameWords& name, QStringView filter, qsizetype longestWord, bool matchWordStart)
{
    qsizetype begin = 0;
    while (true) {
        while (begin < filter.size() && filter[begin] == space) {
            ++begin;
        }
        if (begin == filter.size()) {
            return true;
        }
        UnitLowering lowering;
        bool isLower = true;
        qsizetype end = begin;
        while (end < filter.size() && filter[end] != space) {
            isLower = lowering(filter[end].unicode()) == filter[end] && isLower;
            ++end;
            // No name holds a word longer than itself; a pasted text may be one word.
            if (end - begin > longestWord) {
                return false;
            }
        }
        // What is typed is mostly in lower case already.
        bool const asItIs = isLower && !lowering.metMore();
        bool const taken = asItIs ? name.take(filter.sliced(begin, end - begin), matchWordStart)
                                  : name.take(lowered(filter, begin, end - begin), matchWordStart);
        if (!taken) {
            return false;
        }
        begin = end;
    }
}

} // namespace

bool StringUtils::isFilterMatched(QString const& text, QString const& filter, bool matchWordStart)
{
    NameWords name(text);
    qsizetype const longestWord = 2 * text.size(); // once in lower case
    bool const matched = takeAllWords(name, filter, longestWord, matchWordStart);
    if (!name.metMore()) {
        return matched;
    }
    // Lowered text is its own lower case, so that the same search works on it.
    QString const copy = lowered(text, 0, text.size());
    NameWords words(copy);
    return takeAllWords(words, filter, longestWord, matchWordStart);
}
