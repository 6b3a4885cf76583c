#include "FilterMatcher_p.h"

#include "UnitSearch_p.h"

#include <QVarLengthArray>
#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <iterator>

namespace {

constexpr char16_t space = u' ';

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

/// Calls \a test with each word of \a units in turn; false as soon as \a test is.
template <typename Test>
bool allWords(QStringView units, Test test)
{
    char16_t const* const end = units.utf16() + units.size();
    char16_t const* word = skipSpaces(units.utf16(), end);
    while (word != end) {
        char16_t const* const wordEnd = skipWord(word, end);
        if (!test(QStringView(word, wordEnd))) {
            return false;
        }
        word = skipSpaces(wordEnd, end);
    }
    return true;
}

/// A text in lower case behind one space, so that each of its words stands behind a space.
class LoweredText
{
public:
    explicit LoweredText(QString const& text)
        : m_units(2 * text.size() + 1)
    {
        m_units.front() = space;
        char16_t* end = writeLower(text, m_units.data() + 1);
        if (end == nullptr) {
            QString const lowered = text.toLower();
            end = std::copy_n(QStringView(lowered).utf16(), lowered.size(), m_units.data() + 1);
        }
        m_size = end - m_units.data();
    }

    [[nodiscard]] QStringView units() const { return QStringView(m_units.data(), m_size); }

    /// Blanks the word that holds the unit at \a position.
    void removeWord(qsizetype position)
    {
        char16_t* const unit = m_units.data() + position;
        char16_t* wordBegin = unit;
        while (*(wordBegin - 1) != space) {
            --wordBegin;
        }
        std::fill(wordBegin, std::find(unit, m_units.data() + m_size, space), space);
    }

private:
    QVarLengthArray<char16_t, 512> m_units;
    qsizetype m_size;
};

/// Lowers single units, as long as no character comes that needs more than that.
class UnitLowering
{
public:
    char16_t operator()(char16_t unit)
    {
        if (unit < 0x80) {
            return isWithin(unit, u'A', u'Z') ? static_cast<char16_t>(unit | 0x20) : unit;
        }
        if (unit < 0x100) {
            return isWithin(unit, u'\u00C0', u'\u00DE') && unit != u'\u00D7' // the multiplication sign
                       ? static_cast<char16_t>(unit | 0x20)
                       : unit;
        }
        constexpr char16_t dottedCapitalI = 0x130; // two units in lower case
        m_failed = m_failed || unit == dottedCapitalI || QChar::isSurrogate(unit);
        return static_cast<char16_t>(QChar::toLower(char32_t(unit)));
    }

    [[nodiscard]] bool hasFailed() const { return m_failed; }

private:
    static constexpr bool isWithin(char16_t unit, char16_t first, char16_t last)
    {
        return unit >= first && unit <= last;
    }

    bool m_failed = false;
};

/// A name that is looked at where it stands.
class NameInPlace
{
public:
    explicit NameInPlace(QStringView text)
        : m_begin(text.utf16())
        , m_end(m_begin + text.size())
    {
    }

    /// Whether the first free word that opens with \a wanted was found and taken.
    bool takeWordOpeningWith(QStringView wanted)
    {
        settle();
        char16_t const* word = skipSpaces(m_begin, m_end);
        while (word != m_end) {
            if (standsAt(word, wanted) && !isTaken(word)) {
                m_hit = word;
                return true;
            }
            word = skipSpaces(skipWord(word, m_end), m_end);
        }
        return false;
    }

    /// Whether the first free word that holds \a wanted was found and taken.
    bool takeWordHolding(QStringView wanted)
    {
        settle();
        QStringView const rest = wanted.sliced(1);
        char16_t const* unit = m_begin;
        while (unit != m_end) {
            if (m_lowered(*unit) != wanted.front().unicode() || !standsAt(unit + 1, rest)) {
                ++unit;
            } else if (isTaken(unit)) {
                unit = skipWord(unit, m_end);
            } else {
                m_hit = unit;
                return true;
            }
        }
        return false;
    }

    /// Whether a character was met that is not lowered unit by unit, or more words were taken than are kept;
    /// the answers do not hold then.
    [[nodiscard]] bool hasFailed() const { return m_lowered.hasFailed() || m_tooMany; }

private:
    /// Looks at a unit before it asks whether enough of them are left: one of them may count for two.
    bool standsAt(char16_t const* unit, QStringView wanted)
    {
        for (QChar const wantedUnit : wanted) {
            if (unit == m_end || m_lowered(*unit) != wantedUnit.unicode()) {
                return false;
            }
            ++unit;
        }
        return true;
    }

    [[nodiscard]] char16_t const* wordAround(char16_t const* unit) const
    {
        while (unit != m_begin && *(unit - 1) != space) {
            --unit;
        }
        return unit;
    }

    [[nodiscard]] bool isTaken(char16_t const* unit) const
    {
        auto const end = m_taken.begin() + m_takenCount;
        return m_takenCount > 0 && std::find(m_taken.begin(), end, wordAround(unit)) != end;
    }

    /// Notes which word the last hit takes, which only a further filter word makes worth knowing.
    void settle()
    {
        if (m_hit == nullptr) {
            return;
        }
        m_tooMany = m_takenCount == std::ssize(m_taken);
        if (!m_tooMany) {
            m_taken[static_cast<std::size_t>(m_takenCount++)] = wordAround(m_hit);
        }
    }

    char16_t const* m_begin;
    char16_t const* m_end;
    char16_t const* m_hit = nullptr;
    UnitLowering m_lowered;
    std::array<char16_t const*, 8> m_taken;
    std::ptrdiff_t m_takenCount = 0;
    bool m_tooMany = false;
};

/// The answer for a filter of one letter: how every search begins, over all names.
std::optional<bool> holdsLetter(QStringView text, char16_t letter)
{
    UnitLowering lowering;
    char16_t const wanted = lowering(letter);
    bool const found = std::any_of(text.utf16(), text.utf16() + text.size(),
                                   [&](char16_t unit) { return lowering(unit) == wanted; });
    return lowering.hasFailed() ? std::nullopt : std::optional<bool>(found);
}

} // namespace

bool FilterMatcher::matches(QString const& text, QString const& filter, bool matchWordStart)
{
    LoweredText const loweredFilter(filter);
    LoweredText loweredText(text);
    return allWords(loweredFilter.units(), [&](QStringView word) {
        // With the space before it, a word is only found where a word of the text begins.
        qsizetype const before = matchWordStart ? 1 : 0;
        UnitSearch const search(QStringView(word.utf16() - before, word.size() + before));
        qsizetype const found = search.indexIn(loweredText.units());
        if (found < 0) {
            return false;
        }
        loweredText.removeWord(found + before);
        return true;
    });
}

std::optional<bool> FilterMatcher::matchesUnitByUnit(QStringView text, QStringView filter,
                                                     bool matchWordStart)
{
    if (filter.size() == 1 && filter.front() != space && !matchWordStart) {
        return holdsLetter(text, filter.front().unicode());
    }
    std::array<char16_t, 32> loweredFilter;
    if (filter.size() > qsizetype(loweredFilter.size())) {
        return std::nullopt;
    }
    UnitLowering lowering;
    std::transform(filter.utf16(), filter.utf16() + filter.size(), loweredFilter.begin(), std::ref(lowering));
    if (lowering.hasFailed()) {
        return std::nullopt;
    }
    NameInPlace name(text);
    bool const matched = allWords(QStringView(loweredFilter.data(), filter.size()), [&](QStringView word) {
        return (matchWordStart ? name.takeWordOpeningWith(word) : name.takeWordHolding(word)) &&
               !name.hasFailed();
    });
    return name.hasFailed() ? std::nullopt : std::optional<bool>(matched);
}
