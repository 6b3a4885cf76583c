#include "FoldedText_p.h"

#include "../CodePoints_p.h"

#include <QHash>
#include <QStringList>
#include <algorithm>
#include <array>

namespace Softphone {

namespace {

/// What a code unit is to a search, where it is not one letter; letters and digits lie above these values.
enum Class : char16_t {
    Invisible, ///< a format character or a mark: as if it were not there
    Mark,
    Blank,   ///< ends a word and whatever is written in one piece
    Stop,    ///< punctuation: ends a word
    Several, ///< more than one letter
    Surrogate,
};
constexpr char16_t firstLetter = u'0';

struct PlainLetter
{
    char16_t letter;
    QLatin1StringView plain;
};

/// Letters that people type without their stroke, hook or joint, and that Unicode does not take apart.
constexpr std::array plainLetters{
    PlainLetter{u'ß', QLatin1StringView("ss")}, PlainLetter{u'æ', QLatin1StringView("ae")},
    PlainLetter{u'œ', QLatin1StringView("oe")}, PlainLetter{u'þ', QLatin1StringView("th")},
    PlainLetter{u'ð', QLatin1StringView("d")},  PlainLetter{u'đ', QLatin1StringView("d")},
    PlainLetter{u'ɖ', QLatin1StringView("d")},  PlainLetter{u'ɗ', QLatin1StringView("d")},
    PlainLetter{u'ħ', QLatin1StringView("h")},  PlainLetter{u'ı', QLatin1StringView("i")},
    PlainLetter{u'ɨ', QLatin1StringView("i")},  PlainLetter{u'ĸ', QLatin1StringView("k")},
    PlainLetter{u'ƙ', QLatin1StringView("k")},  PlainLetter{u'ł', QLatin1StringView("l")},
    PlainLetter{u'ƚ', QLatin1StringView("l")},  PlainLetter{u'ŋ', QLatin1StringView("n")},
    PlainLetter{u'ɲ', QLatin1StringView("n")},  PlainLetter{u'ø', QLatin1StringView("o")},
    PlainLetter{u'ɵ', QLatin1StringView("o")},  PlainLetter{u'ŧ', QLatin1StringView("t")},
    PlainLetter{u'ƭ', QLatin1StringView("t")},  PlainLetter{u'ƀ', QLatin1StringView("b")},
    PlainLetter{u'ɓ', QLatin1StringView("b")},  PlainLetter{u'ƈ', QLatin1StringView("c")},
    PlainLetter{u'ȼ', QLatin1StringView("c")},  PlainLetter{u'ɇ', QLatin1StringView("e")},
    PlainLetter{u'ƒ', QLatin1StringView("f")},  PlainLetter{u'ǥ', QLatin1StringView("g")},
    PlainLetter{u'ɠ', QLatin1StringView("g")},  PlainLetter{u'ɉ', QLatin1StringView("j")},
    PlainLetter{u'ƥ', QLatin1StringView("p")},  PlainLetter{u'ɍ', QLatin1StringView("r")},
    PlainLetter{u'ʉ', QLatin1StringView("u")},  PlainLetter{u'ʋ', QLatin1StringView("v")},
    PlainLetter{u'ɏ', QLatin1StringView("y")},  PlainLetter{u'ƴ', QLatin1StringView("y")},
    PlainLetter{u'ƶ', QLatin1StringView("z")},  PlainLetter{u'ȥ', QLatin1StringView("z")},
    PlainLetter{u'ⱥ', QLatin1StringView("a")},  PlainLetter{u'ⱦ', QLatin1StringView("t")},
};

/// Apostrophes that Unicode counts among the letters.
constexpr bool isApostrophe(char32_t character)
{
    return (character >= 0x2b9 && character <= 0x2bf) || character == 0x2ee || character == 0xa78b ||
           character == 0xa78c;
}

constexpr char32_t arabicTatweel = 0x640; // stretches a word and is none of its letters

Class classOf(char32_t character)
{
    if (character == arabicTatweel) {
        return Invisible;
    }
    switch (QChar::category(character)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_SpacingCombining:
    case QChar::Mark_Enclosing:
        return Mark;
    case QChar::Other_Format:
        return Invisible;
    case QChar::Separator_Space:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
    case QChar::Other_Control:
        return Blank;
    case QChar::Other_Surrogate:
        return Surrogate;
    default:
        return QChar::isLetterOrNumber(character) && !isApostrophe(character) ? Several : Stop;
    }
}

QString withoutMarks(QString const& text)
{
    QString letters;
    for (char32_t const part : text.normalized(QString::NormalizationForm_KD).toUcs4()) {
        if (classOf(part) == Several) {
            int const digit = QChar::digitValue(part);
            letters += digit >= 0 ? QString(QChar(u'0' + digit)) : QString::fromUcs4(&part, 1);
        }
    }
    return letters;
}

bool hasPlainLetters(char16_t letter)
{
    return std::ranges::find(plainLetters, letter, &PlainLetter::letter) != plainLetters.end();
}

QString withPlainLetters(QString const& text)
{
    QString letters;
    for (QChar const letter : text) {
        auto const found = std::ranges::find(plainLetters, letter.unicode(), &PlainLetter::letter);
        letters += found == plainLetters.end() ? QString(letter) : QString(found->plain);
    }
    return letters;
}

/// What a search sees of the letter or digit \a character.
QString folded(char32_t character)
{
    QString letters = QString::fromUcs4(&character, 1);
    // Taken apart, a letter may have a case that it did not have as a whole, and the other way round.
    for (int round = 0; round < 3; ++round) {
        letters = withPlainLetters(withoutMarks(letters).toCaseFolded());
    }
    return letters;
}

/// What each code unit is, so that a letter costs one look.
struct FoldTable
{
    FoldTable()
    {
        for (unsigned int unit = 0; unit < units.size(); ++unit) {
            Class const what = classOf(unit);
            units[unit] = what == Several ? letterOrSeveral(static_cast<char16_t>(unit)) : char16_t{what};
        }
    }

    std::array<char16_t, 0x10000> units{};
    QHash<char16_t, QString> several;

private:
    char16_t letterOrSeveral(char16_t unit)
    {
        // Most letters are spelt in one way only, and asking Unicode for it takes long.
        if (QChar::isLetter(unit) && QChar::decompositionTag(unit) == QChar::NoDecomposition &&
            QChar::toCaseFolded(char32_t{unit}) == unit && !hasPlainLetters(unit)) {
            return unit;
        }
        return withSeveral(unit);
    }

    char16_t withSeveral(char16_t unit)
    {
        QString const letters = folded(unit);
        if (letters.isEmpty()) {
            return Invisible;
        }
        if (letters.size() == 1) {
            return letters.front().unicode();
        }
        several.insert(unit, letters);
        return Several;
    }
};

FoldTable const& foldTable()
{
    static FoldTable const table;
    return table;
}

/// Whether \a character may stand inside a telephone number.
bool partsNumber(char32_t character)
{
    switch (QChar::category(character)) {
    case QChar::Separator_Space:
    case QChar::Punctuation_Dash:
    case QChar::Punctuation_Open:
    case QChar::Punctuation_Close:
        return true;
    default:
        return character == U'.' || character == U'/' || character == U'\t';
    }
}

constexpr bool isAsciiDigit(char16_t letter)
{
    return letter >= u'0' && letter <= u'9';
}

} // namespace

/// One walk over one field.
class FoldedText::Folding
{
public:
    Folding(FoldedText& to, QStringView text, int field)
        : m_to(to)
        , m_text(text)
        , m_table(foldTable())
        , m_wordBegin(std::ssize(to.letters))
        , m_runWords(to.words.size())
        , m_field(field)
    {
    }

    void walk()
    {
        for (qsizetype at = 0; at < m_text.size();) {
            at = step(at);
        }
        endRun();
        endNumber();
    }

private:
    /// Takes the character at \a at and returns where the next one begins.
    qsizetype step(qsizetype at)
    {
        char16_t const unit = m_text[at].unicode();
        char16_t const what = m_table.units[unit];
        if (what >= firstLetter) {
            letter(what, at, at + 1);
            return at + 1;
        }
        if (what == Several) {
            letters(*m_table.several.find(unit), at, at + 1);
            return at + 1;
        }
        if (what == Surrogate) {
            return pair(at);
        }
        return other(static_cast<Class>(what), unit, at, at + 1);
    }

    qsizetype pair(qsizetype at)
    {
        char32_t const character = codePointAt(m_text, at);
        qsizetype const end = at + units(character);
        bool const half = end == at + 1;
        Class const what = half ? Stop : classOf(character);
        if (what != Several) {
            return other(what, character, at, end);
        }
        if (QString const spelt = folded(character); !spelt.isEmpty()) {
            letters(spelt, at, end);
        }
        return end;
    }

    qsizetype other(Class what, char32_t character, qsizetype begin, qsizetype end)
    {
        if (what == Mark) {
            mark(end);
        } else if (what != Invisible) {
            return separator(what, character, begin, end);
        }
        return end;
    }

    void letters(QStringView spelt, qsizetype begin, qsizetype end)
    {
        for (QChar const letter : spelt) {
            this->letter(letter.unicode(), begin, end);
        }
    }

    void letter(char16_t spelt, qsizetype begin, qsizetype end)
    {
        m_to.letters.push_back(spelt);
        m_digits = m_digits && isAsciiDigit(spelt);
        m_afterLetter = true;
        if (m_to.m_keepPlaces) {
            m_to.places.push_back({begin, end});
        }
    }

    /// A mark belongs to the letter in front of it, and a hit on that letter shows it.
    void mark(qsizetype end)
    {
        if (!m_afterLetter || m_to.places.empty()) {
            return;
        }
        qsizetype const begin = m_to.places.back().begin;
        auto const first = m_to.places.begin() + m_wordBegin;
        for (auto place = m_to.places.end(); place != first && (place - 1)->begin == begin; --place) {
            (place - 1)->end = end;
        }
    }

    qsizetype separator(Class what, char32_t character, qsizetype begin, qsizetype end)
    {
        m_afterLetter = false;
        endWord();
        if (what == Blank) {
            endRun();
        }
        if (character == U'(' && isTrunkZero(begin)) {
            return begin + 3;
        }
        if (character == U'+') {
            endNumber();
            m_plus = true;
        } else if (!partsNumber(character)) {
            endNumber();
        }
        return end;
    }

    /// Whether "(0)" follows in an international number: a zero that only those in the country dial.
    [[nodiscard]] bool isTrunkZero(qsizetype at) const
    {
        return m_numberWords > 0 && at + 2 < m_text.size() && m_text[at + 1].digitValue() == 0 &&
               m_text[at + 2] == u')' && isInternational(m_numberBegin, m_wordBegin);
    }

    [[nodiscard]] bool isInternational(qsizetype begin, qsizetype end) const
    {
        return m_plus || QStringView(m_to.letters).sliced(begin, end - begin).startsWith(u"00");
    }

    void endWord()
    {
        qsizetype const end = std::ssize(m_to.letters);
        if (end == m_wordBegin) {
            return;
        }
        if (!m_digits) {
            endNumber();
        } else if (m_numberWords++ == 0) {
            m_numberBegin = m_wordBegin;
        }
        int const number = m_digits ? static_cast<int>(m_to.numbers.size()) : -1;
        m_to.words.push_back({m_wordBegin, end, end, number, m_field});
        m_wordBegin = end;
        m_digits = true;
    }

    void endRun()
    {
        endWord();
        for (; m_runWords < m_to.words.size(); ++m_runWords) {
            m_to.words[m_runWords].runEnd = m_wordBegin;
        }
    }

    void endNumber()
    {
        // Called with a word of letters still open, this ends the number in front of it.
        if (m_numberWords > 0) {
            qsizetype const end = m_to.words.back().end;
            qsizetype significant = m_numberBegin;
            while (significant < end && m_to.letters[static_cast<std::size_t>(significant)] == u'0') {
                ++significant;
            }
            m_to.numbers.push_back({m_numberBegin, end, significant, isInternational(m_numberBegin, end)});
        }
        m_numberWords = 0;
        m_plus = false;
    }

    FoldedText& m_to;
    QStringView m_text;
    FoldTable const& m_table;
    qsizetype m_wordBegin;
    qsizetype m_numberBegin = 0;
    std::size_t m_runWords; ///< the first word of the run that is being read
    int m_numberWords = 0;
    int m_field;
    bool m_digits = true; ///< the word that is being read, if any, is digits only
    bool m_plus = false;
    bool m_afterLetter = false;
};

void FoldedText::append(QStringView text, int field)
{
    Folding(*this, text, field).walk();
}

void FoldedText::clear()
{
    letters.clear();
    places.clear();
    words.clear();
    numbers.clear();
}

} // namespace Softphone
