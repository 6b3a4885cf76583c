#pragma once

#include "UnitSearch_p.h"

#include <QStringView>
#include <QtGlobal>
#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// Words made ready to be compared with others without regard to case.
class FoldedWords
{
public:
    struct Word
    {
        QStringView original;
        QStringView folded;
        quint64 letters; ///< one bit for each folded unit, modulo 64: a quick "cannot hold that"
    };

    /// \a words are views of texts that outlive this object.
    explicit FoldedWords(std::span<QStringView const> words);
    FoldedWords(FoldedWords const&) = delete;
    FoldedWords& operator=(FoldedWords const&) = delete;

    [[nodiscard]] std::size_t size() const { return m_words.size(); }
    [[nodiscard]] Word const& operator[](std::size_t index) const { return m_words[index]; }

private:
    std::u16string m_units;
    std::vector<Word> m_words;
};

/// Looks for one filter word in text words.
class WordFinder
{
public:
    WordFinder(FoldedWords::Word const& wanted, bool matchWordStart);

    /// Where \a word holds the filter word first, or -1.
    [[nodiscard]] qsizetype indexIn(FoldedWords::Word const& word) const
    {
        if (m_needsContext) {
            return indexWithContext(word);
        }
        if ((m_wanted.letters & ~word.letters) != 0) {
            return -1;
        }
        return m_matchWordStart ? indexAtStart(word) : m_search.indexIn(word.folded);
    }

private:
    [[nodiscard]] qsizetype indexAtStart(FoldedWords::Word const& word) const
    {
        QStringView const wanted = m_wanted.folded;
        bool const opens = word.folded.size() >= wanted.size() &&
                           std::equal(wanted.utf16(), wanted.utf16() + wanted.size(), word.folded.utf16());
        return opens ? 0 : -1;
    }

    [[nodiscard]] qsizetype indexWithContext(FoldedWords::Word const& word) const;

    FoldedWords::Word const& m_wanted;
    UnitSearch m_search;
    bool m_matchWordStart;
    bool m_needsContext;
};

/// Calls \a visit with the index of each of \a words that the filter word \a wanted is found in.
template <typename Visit>
void visitCandidates(FoldedWords::Word const& wanted, FoldedWords const& words, bool matchWordStart,
                     Visit visit)
{
    WordFinder const finder(wanted, matchWordStart);
    for (std::size_t w = 0; w < words.size(); ++w) {
        if (finder.indexIn(words[w]) >= 0) {
            visit(static_cast<int>(w));
        }
    }
}

/// Takes \a word from each of the \a later entries that holds it, up to one that holds nothing else.
///
/// \return whether there was none such
template <typename Entry>
bool withdraw(int word, std::span<Entry> later)
{
    for (Entry& entry : later) {
        if (entry.holds(word)) {
            if (entry.count() == 1) {
                return false;
            }
            entry.remove(word);
        }
    }
    return true;
}

/// Which text words each filter word can take, one bit a pair.
///
/// Does what SubstringWrapper's operations on TokenOccurrences do, for filters and texts whose candidates
/// would fill the memory if they were written down.
class WordTable
{
public:
    /// Finds the candidates; empty when a filter word has none, or there are not enough text words.
    static std::optional<WordTable> find(FoldedWords const& filterWords, FoldedWords const& textWords,
                                         bool matchWordStart);

    /// Deals out the text words; false when an entry is left without one of its own.
    bool dealOut();

    /// The first of the remaining candidates of filter word \a filterWord.
    [[nodiscard]] int firstCandidate(std::size_t filterWord) const;

private:
    class Row;

    [[nodiscard]] Row row(std::size_t filterWord);

    WordTable(std::size_t filterWords, std::size_t textWords);

    std::size_t m_blocksPerRow;
    std::vector<quint64> m_bits;
    std::vector<std::size_t> m_counts;
};
