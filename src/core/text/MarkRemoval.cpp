#include "MarkRemoval_p.h"

#include "Decomposition_p.h"

#include <QChar>
#include <QStringView>
#include <QVarLengthArray>
#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace {

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

} // namespace

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
