#pragma once

#include <softphonecore_export.h>

#include <QList>
#include <QString>
#include <cstddef>
#include <utility>
#include <vector>

/// Marks in a displayed text where each word of a search filter was found, so that a list of contacts or
/// calls can show the hits.
///
/// Each filter word takes a text word of its own. The words are assigned greedily, the filter word with the
/// fewest candidates first, and no better distribution is looked for: a filter may find no distribution
/// where one exists, and the text is then shown without marks.
///
/// A wrapper never changes after construction; it and the static operations may be used from any thread.
/// Example: SubstringWrapper("ma ro", "Mario Rossi", {"[", "]"}, true).wrapText() is "[Ma]rio [Ro]ssi".
class SOFTPHONECORE_EXPORT SubstringWrapper
{
public:
    /// For each filter word, by its index: the indexes of the text words that it can take, ascending.
    using TokenOccurrences = std::vector<std::pair<int, std::vector<int>>>;

    /// Prepares to mark the words of \a filter, which are separated by spaces (U+0020), in \a text.
    ///
    /// \param filter          the words to look for, without regard to case
    /// \param text            the text to mark
    /// \param markers         what is put before and after a hit
    /// \param matchWordStart  whether a filter word must open a text word, or may stand anywhere in it
    SubstringWrapper(QString filter, QString text, std::pair<QString, QString> markers, bool matchWordStart);

    /// Returns the text with each filter word's hit between the markers, the hit in its own letter case and
    /// all spacing kept; the text unchanged when the filter is blank, or when not every filter word gets a
    /// text word of its own.
    ///
    /// Takes time linear in the text for each filter word, and memory for each pair of a filter word and a
    /// text word that it can take.
    [[nodiscard]] QString wrapText() const;

    /// Finds for each of \a filterWords all \a textWords that open with it (\a matchWordStart) or hold it
    /// anywhere, ignoring case.
    ///
    /// \return the filter words with the fewest candidates first, and in their order where these are equally
    ///         many; empty when there are no filter words, more of them than text words, or one without a
    ///         candidate
    [[nodiscard]] static TokenOccurrences getTokenOccurrences(QList<QString> const& filterWords,
                                                              QList<QString> const& textWords,
                                                              bool matchWordStart);

    /// Withdraws the candidates of the entry at \a index from the entries after it.
    ///
    /// Every candidate is withdrawn, also those that the entry will not use in the end. Where a later entry
    /// has no other candidate, it keeps that one and the entry at \a index gives it up.
    ///
    /// \return false when the entry's only candidate is a later entry's only candidate too; what was
    ///         withdrawn until then stays withdrawn. True otherwise, and when there is no such entry.
    static bool doRemoveDuplicates(TokenOccurrences& occurrences, std::size_t index);

    /// Runs doRemoveDuplicates() for every entry of \a occurrences but the last, and cuts each of them down
    /// to the first candidate that it has left. The last entry keeps its list, of which the first counts.
    ///
    /// \return false when an entry's run fails; the entries are then left as they are at that moment
    static bool cleanFromDuplicates(TokenOccurrences& occurrences);

private:
    QString m_filter;
    QString m_text;
    std::pair<QString, QString> m_markers;
    bool m_matchWordStart;
};
