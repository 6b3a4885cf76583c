#pragma once

#include <QStringView>
#include <string>
#include <vector>

namespace Softphone {

/// A run of letters and digits of a text, as places in FoldedText::letters.
struct FoldedWord
{
    qsizetype begin;
    qsizetype end;
    qsizetype runEnd; ///< where the words end that only punctuation separates from this one ("jean|luc")
    int number;       ///< the index of the telephone number that it belongs to, -1 unless it is digits only
    int field;
};

/// Words of digits that are one telephone number, whatever blanks, hyphens, dots, slashes and brackets
/// separate them.
struct FoldedNumber
{
    qsizetype begin;
    qsizetype end;
    qsizetype significant; ///< the first digit that is no zero: after "0" of the country or "00"
    bool international;    ///< begins with "+" or "00"
};

/// Fields without what a search does not look at: case, marks, punctuation, and how letters and digits are
/// spelt.
///
/// The words of all fields lie one after the other in \c letters, without anything between them. A word of
/// letters once folded stays as it is when it is folded again. Linear.
class FoldedText
{
public:
    /// Where a letter comes from: the whole character with its marks.
    struct Place
    {
        qsizetype begin;
        qsizetype end;
    };

    /// \a keepPlaces says whether places are filled in, which only hits need.
    explicit FoldedText(bool keepPlaces = false)
        : m_keepPlaces(keepPlaces)
    {
    }

    /// Adds the words of \a text as those of the field with the index \a field.
    void append(QStringView text, int field);
    void clear();

    std::u16string letters;
    std::vector<Place> places; ///< of each letter, in its field
    std::vector<FoldedWord> words;
    std::vector<FoldedNumber> numbers;

private:
    class Folding;

    bool m_keepPlaces;
};

} // namespace Softphone
