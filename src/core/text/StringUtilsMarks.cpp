#include "StringUtils.h"

#include <QList>
#include <QStringView>
#include <algorithm>
#include <bitset>
#include <limits>
#include <utility>

namespace {

/// What dropping the marks does to each unit. Asking Qt's tables for every unit takes longer than decomposing
/// the text does.
struct UnitKinds
{
    using Set = std::bitset<std::numeric_limits<char16_t>::max() + 1>;

    UnitKinds()
    {
        for (std::size_t unit = 0; unit < marks.size(); ++unit) {
            auto const character = static_cast<char32_t>(unit);
            marks.set(unit, QChar::isMark(character));
            staying.set(unit, QChar::decompositionTag(character) != QChar::Canonical &&
                                  !QChar::isMark(character) && !QChar::isSurrogate(character));
        }
    }

    Set marks;
    Set staying; ///< neither marks nor decomposed, and no halves of characters
};

UnitKinds const& unitKinds()
{
    static UnitKinds const kinds;
    return kinds;
}

/// Whether \a mark takes part in the sorting of marks that the decomposition brings, itself or by its parts.
bool isSorted(QChar mark)
{
    return mark.combiningClass() != 0 || (mark.decompositionTag() == QChar::Canonical &&
                                          mark.decomposition().front().combiningClass() != 0);
}

bool isAscii(QStringView text)
{
    // Whole blocks without a way out in between, so that the compiler makes vector instructions of them.
    constexpr qsizetype block = 64;
    while (text.size() >= block) {
        char16_t seen = 0;
        for (qsizetype i = 0; i < block; ++i) {
            seen = static_cast<char16_t>(seen | text.utf16()[i]);
        }
        if (seen >= 0x80) {
            return false;
        }
        text = text.sliced(block);
    }
    return std::ranges::all_of(text, [](QChar unit) { return unit.unicode() < 0x80; });
}

/// \a text without the marks of the basic plane that would be sorted.
///
/// They are dropped in the end, but Qt sorts by exchanging neighbours, which takes quadratic time on a letter
/// with thousands of marks.
QString withoutSortedMarks(QString text)
{
    UnitKinds::Set const& marks = unitKinds().marks;
    QChar* out = text.data();
    QChar previous;
    for (QChar const unit : std::as_const(text)) {
        // Halves of two characters that a mark keeps apart must not become one character.
        if (!marks.test(unit.unicode()) || previous.isHighSurrogate() || !isSorted(unit)) {
            *out++ = unit;
        }
        previous = unit;
    }
    text.truncate(out - text.constData());
    return text;
}

/// The mark outside the basic plane at \a position, 0 when there is none. These marks stay: the rule drops
/// units, and the units of such a mark are halves of a character.
char32_t outerMarkAt(QStringView text, qsizetype position)
{
    if (position + 1 >= text.size() || !text[position].isHighSurrogate() ||
        !text[position + 1].isLowSurrogate()) {
        return 0;
    }
    char32_t const character = QChar::surrogateToUcs4(text[position], text[position + 1]);
    return QChar::combiningClass(character) != 0 ? character : 0;
}

/// Puts the marks that stay in the order of the decomposition, so that Qt finds them sorted.
void sortOuterMarks(QString& text)
{
    auto const combiningClass = [](char32_t mark) { return QChar::combiningClass(mark); };
    for (qsizetype at = 0; at < text.size(); ++at) {
        QList<char32_t> run;
        while (char32_t const mark = outerMarkAt(text, at)) {
            run += mark;
            at += 2;
        }
        if (run.size() > 1) {
            std::ranges::stable_sort(run, {}, combiningClass);
            QString const sorted = QString::fromUcs4(run.constData(), run.size());
            text.replace(at - sorted.size(), sorted.size(), sorted);
        }
    }
}

/// \a text in form D, one piece after the other: for each letter that decomposes, Qt moves what stands after
/// it.
QString decomposed(QStringView text)
{
    constexpr qsizetype usualPiece = 256;
    // Before a character without a combining class nothing is sorted with what follows.
    auto const mayCut = [text](qsizetype at) {
        return at >= text.size() ||
               (!text[at].isLowSurrogate() && text[at].combiningClass() == 0 && outerMarkAt(text, at) == 0);
    };
    QString result;
    result.reserve(text.size());
    for (qsizetype begin = 0; begin < text.size();) {
        qsizetype end = std::min(begin + usualPiece, text.size());
        while (!mayCut(end)) {
            ++end;
        }
        result += text.sliced(begin, end - begin).toString().normalized(QString::NormalizationForm_D);
        begin = end;
    }
    return result;
}

} // namespace

QString StringUtils::removeDiacriticalMarks(QString const& text)
{
    UnitKinds const& kinds = unitKinds();
    auto const stays = [&](QChar unit) { return kinds.staying.test(unit.unicode()); };
    auto const isMark = [&](QChar unit) { return kinds.marks.test(unit.unicode()); };
    if (isAscii(text) || std::ranges::all_of(text, stays)) {
        return text;
    }
    bool const mayBeSorted =
        std::ranges::any_of(text, [&](QChar unit) { return isMark(unit) || unit.isSurrogate(); });
    QString unmarked = mayBeSorted ? withoutSortedMarks(text) : text;
    if (mayBeSorted) {
        sortOuterMarks(unmarked);
    }
    unmarked = decomposed(unmarked);
    unmarked.removeIf(isMark);
    return unmarked;
}
