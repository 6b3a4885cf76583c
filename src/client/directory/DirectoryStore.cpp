#include "DirectoryStore_p.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <utility>

namespace Softphone {

namespace {

/// An id for a card without one: the same for the same content.
QString idOfContent(ContactCard const& card)
{
    QByteArray const content = QJsonDocument(card.toJson()).toJson(QJsonDocument::Compact);
    QByteArray const digest = QCryptographicHash::hash(content, QCryptographicHash::Sha256);
    return QStringLiteral("content-") + QString::fromLatin1(digest.first(16).toHex());
}

QCollatorSortKey sortKey(QCollator const& collator, ContactCard const& card)
{
    return collator.sortKey(card.displayName());
}

} // namespace

QStringList searchFields(ContactCard const& card)
{
    return QStringList{card.displayName(), card.company, card.department} + card.numbers();
}

DirectoryBatch DirectoryStore::prepare(std::vector<ContactCard>&& cards, QLocale const& locale)
{
    QCollator const collator(locale);
    DirectoryBatch batch;
    batch.cards.reserve(cards.size());
    for (ContactCard& card : cards) {
        if (card.id.isEmpty()) {
            card.id = idOfContent(card);
        }
        QCollatorSortKey const key = sortKey(collator, card);
        batch.cards.push_back({std::move(card), key});
    }
    return batch;
}

DirectoryStore::Changes DirectoryStore::merge(std::vector<StoredCard>&& cards)
{
    Changes changes;
    std::vector<int> unordered;
    std::vector<bool> updated(m_cards.size(), false);
    auto const before = m_cards.size();
    bool const most = cards.size() > before;
    if (most) {
        auto const all = before + cards.size();
        m_cards.reserve(all);
        m_numbers.reserve(static_cast<qsizetype>(all));
    }
    for (StoredCard& card : cards) {
        int const known = find(card.card.id);
        if (known < 0) {
            ++changes.added;
            unordered.push_back(place(std::move(card)));
            continue;
        }
        StoredCard& stored = m_cards[static_cast<std::size_t>(known)];
        if (stored.card == card.card) {
            continue;
        }
        stored = std::move(card);
        m_callers.add(known, stored.card);
        m_index.add(known, searchFields(stored.card));
        changes.updated.push_back(known);
        if (static_cast<std::size_t>(known) < before) {
            updated[static_cast<std::size_t>(known)] = true;
        }
    }
    // One that came twice in this batch, or took the number of a card that is gone, is in the list already.
    std::vector<char> listed(m_cards.size(), 0);
    for (int const card : unordered) {
        listed[static_cast<std::size_t>(card)] = 1;
    }
    std::erase_if(m_order, [&](int card) { return updated[static_cast<std::size_t>(card)]; });
    for (int const card : changes.updated) {
        if (std::exchange(listed[static_cast<std::size_t>(card)], 1) == 0) {
            unordered.push_back(card);
        }
    }
    putIntoOrder(std::move(unordered));
    if (most) {
        m_index.settle();
    }
    return changes;
}

std::vector<StoredCard> DirectoryStore::takeCards()
{
    std::vector<StoredCard> cards;
    cards.reserve(m_order.size());
    for (int const card : m_order) {
        cards.push_back(std::move(m_cards[static_cast<std::size_t>(card)]));
    }
    return cards;
}

int DirectoryStore::place(StoredCard&& card)
{
    bool const isNew = m_free.empty();
    int const number = isNew ? static_cast<int>(m_cards.size()) : m_free.back();
    m_numbers.insert(card.card.id, number);
    if (isNew) {
        m_cards.push_back(std::move(card));
    } else {
        m_free.pop_back();
        m_cards[static_cast<std::size_t>(number)] = std::move(card);
    }
    m_callers.add(number, this->card(number));
    m_index.add(number, searchFields(this->card(number)));
    return number;
}

void DirectoryStore::takeOut(int card)
{
    m_numbers.remove(this->card(card).id);
    std::erase(m_order, card);
    m_positions.clear();
    m_index.remove(card);
}

void DirectoryStore::forget(int card)
{
    m_cards[static_cast<std::size_t>(card)].card = {};
    m_free.push_back(card);
}

void DirectoryStore::setLocale(QLocale const& locale)
{
    m_locale = locale;
    QCollator const collator(locale);
    for (int const card : m_order) {
        StoredCard& stored = m_cards[static_cast<std::size_t>(card)];
        stored.key = sortKey(collator, stored.card);
    }
    putIntoOrder(std::exchange(m_order, {}));
}

bool DirectoryStore::isBefore(int first, int second) const
{
    StoredCard const& one = m_cards[static_cast<std::size_t>(first)];
    StoredCard const& other = m_cards[static_cast<std::size_t>(second)];
    int const order = one.key.compare(other.key);
    return order != 0 ? order < 0 : one.card.id < other.card.id;
}

void DirectoryStore::putIntoOrder(std::vector<int> cards)
{
    m_positions.clear();
    auto const before = [this](int first, int second) { return isBefore(first, second); };
    // Each comparison goes over memory that lies apart: this one makes fewer.
    std::ranges::stable_sort(cards, before);
    // A few are looked up, many are merged in one walk.
    if (cards.size() < m_order.size() / 64) {
        for (int const card : cards) {
            m_order.insert(std::ranges::upper_bound(m_order, card, before), card);
        }
        return;
    }
    std::vector<int> merged;
    merged.reserve(m_order.size() + cards.size());
    std::ranges::merge(m_order, cards, std::back_inserter(merged), before);
    m_order = std::move(merged);
}

std::vector<int> DirectoryStore::search(SearchFilter const& filter)
{
    if (filter.isEmpty()) {
        return m_order;
    }
    if (m_index.isMostlyWaste()) {
        rebuildIndex();
    }
    std::vector<int> const& ranks = m_index.ranks(FilterWords::of(filter));
    // There are few different ranks.
    std::map<int, std::vector<int>, std::greater<>> byRank;
    for (int const card : foundInOrder(ranks)) {
        byRank[ranks[static_cast<std::size_t>(card)]].push_back(card);
    }
    std::vector<int> cards;
    cards.reserve(m_index.found().size());
    for (auto const& [rank, equals] : byRank) {
        cards.insert(cards.end(), equals.begin(), equals.end());
    }
    return cards;
}

/// The cards that the index has found, in the order of the locale.
std::vector<int> DirectoryStore::foundInOrder(std::vector<int> const& ranks)
{
    std::vector<int> found = m_index.found();
    if (found.size() > m_order.size() / 16) {
        found.clear();
        std::ranges::copy_if(m_order, std::back_inserter(found),
                             [&](int card) { return ranks[static_cast<std::size_t>(card)] > 0; });
        return found;
    }
    std::ranges::sort(found, {}, [this](int card) { return position(card); });
    return found;
}

int DirectoryStore::position(int card) const
{
    if (m_positions.empty()) {
        m_positions.resize(m_cards.size(), -1);
        for (int position = 0; int const each : m_order) {
            m_positions[static_cast<std::size_t>(each)] = position++;
        }
    }
    return m_positions[static_cast<std::size_t>(card)];
}

void DirectoryStore::rebuildIndex()
{
    m_index.clear();
    for (int const card : m_order) {
        m_index.add(card, searchFields(this->card(card)));
    }
}

} // namespace Softphone
