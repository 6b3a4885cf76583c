#pragma once

#include "../text/FilterWords_p.h"

#include <QString>
#include <QStringList>
#include <optional>
#include <span>
#include <vector>

namespace Softphone {

/// Ranks many cards at once as SearchFilter::rank() ranks one.
///
/// Names and numbers repeat, so each piece of text that a filter's word cannot reach across is
/// held once, folded, with the cards that have it. A filter's word looks at the pieces, most of which a
/// signature rules out, and then at the cards of those that it matches. A longer word looks only at what its
/// beginning left.
class DirectoryIndex
{
public:
    /// Sets what is searched of the card \a card.
    void add(int card, QStringList const& fields);
    void remove(int card);
    void clear();
    /// Prepares for searches after many cards were added, and gives back memory that was taken in advance.
    void settle();
    /// Whether more is left of cards that are gone or changed than of the others.
    [[nodiscard]] bool isMostlyWaste() const { return m_waste > m_references.size() / 2 + 1024; }

    /// The rank of each card, 0 for one that does not match \a words, which has at least one word.
    [[nodiscard]] std::vector<int> const& ranks(FilterWords const& words);
    /// The cards that the last call of ranks() found, in any order.
    [[nodiscard]] std::vector<int> const& found() const { return m_found; }

private:
    /// A piece in a field of a card.
    struct Reference
    {
        quint32 piece : 27;
        quint32 field : 5;
    };
    /// A card that has a piece, and in which field.
    struct Place
    {
        quint32 card : 27;
        quint32 field : 5;
    };
    struct References
    {
        quint32 begin = 0;
        quint32 end = 0;
    };
    /// Begins where the one before it ends.
    struct Piece
    {
        quint32 begin : 31;
        quint32 isWord : 1; ///< one word and no number
    };
    /// What a word of the last filter matched.
    struct WordMatches
    {
        FilterWord word;
        std::vector<quint32> pieces;
    };

    [[nodiscard]] QStringView text(quint32 piece) const;
    quint32 pieceOf(QStringView text, std::size_t first, std::size_t last);
    void growSlots();
    void collectPlaces();
    [[nodiscard]] std::span<Place const> places(quint32 piece) const;
    [[nodiscard]] bool isFresh(quint32 card) const { return m_cards[card].begin >= m_settled; }
    [[nodiscard]] WordMatches match(FilterWord const& word, std::vector<quint32> const* among);
    void gradePiece(FilterWord const& word, quint32 piece, WordMatches& matches);
    [[nodiscard]] quint32 gradeOf(FilterWord const& word, quint32 piece);
    [[nodiscard]] bool narrows(FilterWords::Reading const& reading) const;
    void rankAll(FilterWords::Reading const& reading, std::vector<WordMatches> const& before);
    void markWords(std::vector<WordMatches> const& matches);
    void rankPlaces(WordMatches const& of);
    void rankPlaces(FilterWords::Reading const& reading, std::vector<WordMatches> const& matches);
    void take(quint32 card, int rank);
    [[nodiscard]] int rankByOneWord(References const& of) const;
    [[nodiscard]] int rankByWords(FilterWords::Reading const& reading, References const& of);
    void forgetLastFilter();

    std::u16string m_texts; ///< of all pieces, in a form that folds to itself
    std::vector<Piece> m_pieces;
    std::vector<quint64> m_signatures; ///< of each piece
    std::vector<quint32> m_slots;      ///< a hash table of pieces, counted from 1
    std::vector<Reference> m_references;
    std::vector<References> m_cards;
    std::size_t m_waste = 0;

    std::vector<Place> m_places;        ///< piece by piece
    std::vector<quint32> m_placesBegin; ///< of each piece, and the end of the last one
    quint32 m_settled = 0;              ///< up to which reference they are collected
    std::vector<int> m_fresh;           ///< cards that have changed since

    std::vector<quint32> m_marks; ///< of each piece: its grade from 1 for one word, else a bit for each word
    std::vector<WordMatches> m_last; ///< of the last filter, if it can be narrowed
    std::vector<int> m_ranks;
    std::vector<int> m_found;
    FoldedText m_folded;
};

} // namespace Softphone
