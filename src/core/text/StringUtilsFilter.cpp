#include "../PatternSearch_p.h"
#include "StringUtils.h"

#include <QStringView>
#include <QVarLengthArray>
#include <algorithm>
#include <string_view>
#include <utility>

namespace {

constexpr char16_t space = u' ';
constexpr char16_t dottedCapitalI = 0x130; // the only letter whose lower case is longer than itself

/// Whether \a text has more units than \a most, blanks apart. A pasted text is not read to its end for that.
bool holdsMoreThan(qsizetype most, QStringView text)
{
    return text.size() > most && std::ranges::any_of(text, [left = most](QChar unit) mutable {
               return unit != space && left-- == 0;
           });
}

/// \a unit in lower case. Sets \a metSpecial for one that is lowered together with its neighbours, or to more
/// than one, and leaves it otherwise.
char16_t loweredUnit(char16_t unit, bool& metSpecial)
{
    constexpr char16_t firstNonAscii = 0x80;
    if (unit >= firstNonAscii) {
        metSpecial |= unit == dottedCapitalI || QChar::isSurrogate(unit);
        return static_cast<char16_t>(QChar::toLower(char32_t(unit)));
    }
    constexpr unsigned letters = 26;
    bool const isCapital = unit - unsigned{u'A'} < letters;
    return static_cast<char16_t>(unit | (unsigned{isCapital} << 5));
}

/// text.toLower() in linear time: that moves the rest of the text at each dotted capital I. One is left to
/// it, as the first capital decides what becomes of halves of characters.
QString lowered(QString const& text)
{
    qsizetype const rest = text.indexOf(QChar(dottedCapitalI)) + 1;
    QString const widened =
        text.first(rest) + text.sliced(rest).replace(QChar(dottedCapitalI), QStringLiteral("i\u0307"));
    // Not of a temporary: that would be lowered in place, and halves of characters replaced.
    return widened.toLower();
}

char16_t const* skipSpaces(char16_t const* unit, char16_t const* end)
{
    while (unit != end && *unit == space) {
        ++unit;
    }
    return unit;
}

char16_t const* skipWord(char16_t const* unit, char16_t const* end)
{
    while (unit != end && *unit != space) {
        ++unit;
    }
    return unit;
}

/// The words of a name, which the words of a filter take one by one.
///
/// The name is lowered where it stands: a list is filtered at each keystroke, most names differ from the
/// filter within a few letters, and a lowered copy of each would take far longer than the search.
class NameWords
{
public:
    explicit NameWords(QStringView name)
        : m_begin(name.utf16())
        , m_end(m_begin + name.size())
    {
    }

    /// Where the first free word opens with \a wanted, or where it holds it; null when there is none.
    char16_t const* find(std::u16string_view wanted, bool matchWordStart)
    {
        return matchWordStart ? findOpening(wanted) : findHolding(wanted);
    }

    /// Takes the word that \a unit stands in.
    void take(char16_t const* unit)
    {
        m_taken.resize(m_end - m_begin, false);
        m_taken[beginOfWord(unit)] = true;
    }

    /// Whether a unit was read that is not lowered by itself; what was found does not count then.
    [[nodiscard]] bool metSpecial() const { return m_metSpecial; }

private:
    [[nodiscard]] char16_t const* findOpening(std::u16string_view wanted)
    {
        for (char16_t const* word = skipSpaces(m_begin, m_end); word != m_end;
             word = skipSpaces(skipWord(word, m_end), m_end)) {
            if (opensWith(word, wanted) && !isTaken(word)) {
                return word;
            }
        }
        return nullptr;
    }

    [[nodiscard]] char16_t const* findHolding(std::u16string_view wanted)
    {
        PatternSearch<char16_t> search(wanted);
        bool metSpecial = m_metSpecial; // a local one stays in a register
        auto const lower = [&metSpecial](char16_t unit) { return loweredUnit(unit, metSpecial); };
        for (char16_t const* from = m_begin;;) {
            char16_t const* const found = search.find(from, m_end, lower);
            if (found == nullptr || !isTaken(found)) {
                m_metSpecial = metSpecial;
                return found;
            }
            from = skipWord(found, m_end);
        }
    }

    bool opensWith(char16_t const* word, std::u16string_view wanted)
    {
        for (char16_t const unit : wanted) {
            if (word == m_end || loweredUnit(*word, m_metSpecial) != unit) {
                return false;
            }
            ++word;
        }
        return true;
    }

    [[nodiscard]] bool isTaken(char16_t const* unit) const
    {
        return !m_taken.isEmpty() && m_taken[beginOfWord(unit)];
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
    bool m_metSpecial = false;
    QVarLengthArray<bool, 128> m_taken; ///< for each position, whether the word that begins there is taken
};

/// Whether each word of \a filter, which is in lower case, in turn finds a word of \a name that it can take.
bool takeAllWords(NameWords& name, QStringView filter, bool matchWordStart)
{
    char16_t const* const end = filter.utf16() + filter.size();
    for (char16_t const* word = skipSpaces(filter.utf16(), end); word != end;) {
        char16_t const* const wordEnd = skipWord(word, end);
        char16_t const* const found = name.find({word, wordEnd}, matchWordStart);
        if (found == nullptr) {
            return false;
        }
        word = skipSpaces(wordEnd, end);
        if (word != end) {
            name.take(found);
        }
    }
    return true;
}

/// \a filter is in lower case.
bool matches(QString const& text, QStringView filter, bool matchWordStart)
{
    // What is in lower case stays as it is, so that the same search works on a name that had to be lowered as
    // a whole.
    QString copy;
    for (QStringView name = text;; name = copy) {
        NameWords words(name);
        bool const matched = takeAllWords(words, filter, matchWordStart);
        if (!words.metSpecial() || !copy.isNull()) {
            return matched;
        }
        copy = lowered(text);
    }
}

bool isLowerCase(QStringView text)
{
    bool metSpecial = false;
    bool const isLowered = std::ranges::all_of(
        text, [&](QChar unit) { return loweredUnit(unit.unicode(), metSpecial) == unit; });
    return isLowered && !metSpecial;
}

} // namespace

bool StringUtils::isFilterMatched(QString const& text, QString const& filter, bool matchWordStart)
{
    // No name holds words longer than itself, and its lower case is at most twice as long.
    if (holdsMoreThan(2 * text.size(), filter)) {
        return false;
    }
    QString const copy = isLowerCase(filter) ? QString() : lowered(filter);
    return matches(text, copy.isNull() ? QStringView(filter) : QStringView(copy), matchWordStart);
}
