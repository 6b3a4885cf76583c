#pragma once

#include <QHash>
#include <QString>
#include <client/PhoneNumber.h>
#include <optional>
#include <tuple>
#include <vector>

namespace Softphone {

class ContactCard;
class DirectoryStore;

/// Finds the cards that have a number, without having parsed the numbers of the others.
///
/// The last digits of each number lead to the few that can be the same, which are parsed when somebody asks.
/// An entry of a number that is gone stays until the next time that all are read, as each candidate is looked
/// at anyway.
class CallerIndex
{
public:
    /// Remembers the numbers of the card with the number \a number.
    void add(int number, ContactCard const& card);
    void setRegion(QString const& region);

    /// The card of \a store that has \a number, the first in its order; -1 for none.
    [[nodiscard]] int find(QString const& number, DirectoryStore const& store);

private:
    struct Entry
    {
        quint32 tail;
        int card;
        int point; ///< the index of the number among the card's points

        bool operator==(Entry const& other) const = default;
        bool operator<(Entry const& other) const
        {
            return std::tie(tail, card, point) < std::tie(other.tail, other.card, other.point);
        }
    };

    void update(DirectoryStore const& store);
    void addEntries(int number, ContactCard const& card);
    [[nodiscard]] bool has(ContactCard const& card, int point, PhoneNumber const& number);

    std::vector<Entry> m_entries; ///< sorted
    std::vector<int> m_pending;   ///< cards that are not among the entries yet
    bool m_complete = true;       ///< all others are
    QHash<QString, std::optional<PhoneNumber>> m_parsed;
    QString m_region = QStringLiteral("IT");
};

} // namespace Softphone
