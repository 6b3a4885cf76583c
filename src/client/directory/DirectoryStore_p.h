#pragma once

#include "CallerIndex_p.h"
#include "ContactDirectory.h"
#include "DirectoryIndex_p.h"

#include <QCollator>
#include <QHash>
#include <client/SearchFilter.h>
#include <optional>
#include <vector>

namespace Softphone {

/// A card with an id, and its place in the order of the locale.
struct StoredCard
{
    ContactCard card;
    QCollatorSortKey key;
};

/// Cards that are ready to be merged, and what was wrong with the others.
struct DirectoryBatch
{
    std::vector<StoredCard> cards;
    QList<ContactDirectory::LoadError> errors;
};

/// The fields of \a card that a filter looks at: the name, the company, the department and each number.
[[nodiscard]] QStringList searchFields(ContactCard const& card);

/// The cards of a directory without a model's signals: merged by id, in the order of the locale, searched.
///
/// A card has a number by which it is known as long as it is there.
class DirectoryStore
{
public:
    /// What a merge did.
    struct Changes
    {
        int added = 0;
        std::vector<int> updated; ///< those that have another content now
    };

    /// Makes \a cards ready for a merge; any thread.
    [[nodiscard]] static DirectoryBatch prepare(std::vector<ContactCard>&& cards, QLocale const& locale);

    Changes merge(std::vector<StoredCard>&& cards);
    /// All cards, in the order of the locale, ready for a merge; the store is left without a use.
    [[nodiscard]] std::vector<StoredCard> takeCards();
    /// Takes the card out of the order; it can be read until forget().
    void takeOut(int card);
    void forget(int card);

    [[nodiscard]] int count() const { return static_cast<int>(m_order.size()); }
    /// The number of the card with the id \a id, -1 for none.
    [[nodiscard]] int find(QString const& id) const { return m_numbers.value(id, -1); }
    /// All numbers of cards are below.
    [[nodiscard]] std::size_t bound() const { return m_cards.size(); }
    [[nodiscard]] ContactCard const& card(int number) const
    {
        return m_cards[static_cast<std::size_t>(number)].card;
    }

    [[nodiscard]] QLocale const& locale() const { return m_locale; }
    void setLocale(QLocale const& locale);
    void setRegion(QString const& region) { m_callers.setRegion(region); }

    /// The cards that match \a filter, the best first and then in the order of the locale.
    [[nodiscard]] std::vector<int> search(SearchFilter const& filter);
    /// The first card with the number \a number, -1 for none.
    [[nodiscard]] int caller(QString const& number) const { return m_callers.find(number, *this); }
    /// The cards in the order of the locale.
    [[nodiscard]] std::vector<int> const& order() const { return m_order; }
    /// The place of \a card in that order; -1 for one that is gone.
    [[nodiscard]] int position(int card) const;

private:
    [[nodiscard]] int place(StoredCard&& card);
    [[nodiscard]] bool isBefore(int first, int second) const;
    void putIntoOrder(std::vector<int> cards);
    void rebuildIndex();
    [[nodiscard]] std::vector<int> foundInOrder(std::vector<int> const& ranks);

    std::vector<StoredCard> m_cards;
    std::vector<int> m_free; ///< numbers of cards that are gone
    std::vector<int> m_order;
    mutable std::vector<int> m_positions; ///< of each card in the order; empty when it has to be rebuilt
    QHash<QString, int> m_numbers;
    QLocale m_locale;
    DirectoryIndex m_index;
    mutable CallerIndex m_callers;
};

} // namespace Softphone
