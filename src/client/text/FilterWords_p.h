#pragma once

#include "FoldedText_p.h"
#include "SearchFilter.h"

#include <QString>
#include <optional>
#include <vector>

namespace Softphone {

/// How a word of a filter stands in a word of a field; the later, the better.
enum class WordGrade { Inside, Opens, Whole };

/// A word of a filter, folded.
struct FilterWord
{
    QString letters;
    qsizetype significant; ///< of a word of digits, the first that is no zero
    bool digits;
    bool international; ///< of digits that begin with "+" or "00"

    bool operator==(FilterWord const& other) const = default;
};

/// Where a word of a filter stands in FoldedText::letters.
struct WordPlace
{
    WordGrade grade;
    qsizetype begin;
    qsizetype end;
};

/// What a filter's word is worth in a field: a sum of these compares as the rank of a match does.
[[nodiscard]] int wordScore(WordGrade grade, int field);

/// How \a word stands at, or in a number from, the word of \a text with the index \a index; the best way.
[[nodiscard]] std::optional<WordPlace> findWord(FilterWord const& word, FoldedText const& text,
                                                std::size_t index);

/// The words of a filter, read in each way that they may be meant.
class FilterWords
{
public:
    /// One way to read a filter. All of its words have to be served.
    using Reading = std::vector<FilterWord>;

    struct Match
    {
        int rank = 0;                   ///< 0 for none
        std::vector<WordPlace> places;  ///< of each word
        std::vector<std::size_t> words; ///< the index of the text's word that serves it
    };

    explicit FilterWords(QString const& words);

    /// Those of \a filter.
    static FilterWords const& of(SearchFilter const& filter) { return *filter.m_words; }

    /// Empty for a filter without words, else one or two.
    [[nodiscard]] std::vector<Reading> const& readings() const { return m_readings; }

    /// The best match of any reading in \a text.
    [[nodiscard]] Match bestMatch(FoldedText const& text) const;
    /// The best match of \a reading in \a text.
    [[nodiscard]] static Match bestMatch(Reading const& reading, FoldedText const& text);

private:
    std::vector<Reading> m_readings;
};

} // namespace Softphone
