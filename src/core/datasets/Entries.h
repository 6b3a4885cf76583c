#pragma once

#include "MultiType.h"

#include <QString>
#include <QStringView>
#include <cstddef>
#include <iterator>
#include <memory>
#include <softphonecore_export.h>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace DataSets::Impl {

/// A key as stored: the text of an object record, or the index of an array record.
using Key = std::variant<QString, int>;

/// The entries of a record, sorted by key: texts before indices, texts by UTF-16 code unit, indices as
/// numbers.
///
/// A map to read, with the names that std::map has; setValueImpl(), extractValueImpl() and their like change
/// it. The entries lie one by one, so that a pointer or reference to one is good until that one is removed;
/// their order is kept in a B+ tree, whose leaves a walk reads from end to end. An iterator is good until an
/// entry is added or removed.
///
/// Looking up, adding and removing take logarithmic time, a step of an iterator constant time.
///
/// \code
/// for (auto const& [key, value] : record.data->entries) {
///     // key is a text in an object record and an index in an array record
/// }
/// \endcode
class Entries
{
    struct Page;
    struct Slot;

public:
    /// What an entry is found by.
    using key_type = Key;
    /// What an entry holds.
    using mapped_type = MultiType;
    /// An entry.
    using value_type = std::pair<Key const, MultiType>;
    /// A number of entries.
    using size_type = std::size_t;

    /// Stands on an entry, or behind the last one.
    template <typename Entry>
    class Cursor
    {
    public:
        /// Cursors step forward only.
        using iterator_category = std::forward_iterator_tag;
        /// What a cursor stands on.
        using value_type = Entries::value_type;
        /// Required of an iterator.
        using difference_type = std::ptrdiff_t;
        /// A pointer to an entry.
        using pointer = Entry*;
        /// A reference to an entry.
        using reference = Entry&;

        /// Stands nowhere.
        Cursor() = default;
        /// A cursor that only reads, where \a other is.
        template <typename Other>
        requires(std::is_const_v<Entry> && !std::is_const_v<Other>) Cursor(Cursor<Other> const& other)
            : m_page(other.m_page)
            , m_slot(other.m_slot)
        {
        }

        /// The entry.
        reference operator*() const { return *m_slot->entry; }
        /// The entry.
        pointer operator->() const { return m_slot->entry.get(); }

        /// Steps to the next entry.
        Cursor& operator++()
        {
            ++m_slot;
            if (m_slot == m_page->end() && m_page->following != nullptr) {
                m_page = m_page->following;
                m_slot = m_page->begin();
            }
            return *this;
        }
        /// Steps to the next entry; the result stays.
        Cursor operator++(int)
        {
            Cursor const before = *this;
            ++*this;
            return before;
        }
        /// Whether two cursors stand at the same place.
        friend bool operator==(Cursor const& left, Cursor const& right)
        {
            // The end of one leaf may lie where another begins.
            return left.m_slot == right.m_slot && left.m_page == right.m_page;
        }

        /// Has the processor fetch the entry \a distance steps ahead, if that is in the same leaf.
        void prefetch(std::ptrdiff_t distance) const
        {
            if (m_page->end() - m_slot > distance) {
                __builtin_prefetch(m_slot[distance].entry.get());
            }
        }

    private:
        friend class Entries;
        template <typename Other>
        friend class Cursor;

        Cursor(Page const* page, Slot const* slot)
            : m_page(page)
            , m_slot(slot)
        {
        }

        Page const* m_page = nullptr;
        Slot const* m_slot = nullptr;
    };

    /// Stands on an entry whose value may be changed.
    using iterator = Cursor<value_type>;
    /// Stands on an entry.
    using const_iterator = Cursor<value_type const>;

    /// Tells one state of one map from every other state, of any map, as far as iterators are concerned.
    struct Stamp
    {
        /// The map; 0 for none.
        unsigned long long map = 0;
        /// How often entries were added to or removed from it.
        unsigned long long changes = 0;

        /// Whether \a other is the same state.
        bool operator==(Stamp const& other) const = default;
    };

    /// Makes a map without entries.
    SOFTPHONECORE_EXPORT Entries();
    /// Releases the entries.
    SOFTPHONECORE_EXPORT ~Entries();
    Entries(Entries const&) = delete;
    Entries& operator=(Entries const&) = delete;

    /// Whether there are no entries.
    [[nodiscard]] bool empty() const { return m_size == 0; }
    /// The number of entries.
    [[nodiscard]] size_type size() const { return m_size; }
    /// Changes whenever iterators become invalid.
    [[nodiscard]] Stamp stamp() const { return m_stamp; }

    /// Stands on the first entry.
    [[nodiscard]] iterator begin() { return {m_first, m_first->begin()}; }
    /// \overload
    [[nodiscard]] const_iterator begin() const { return {m_first, m_first->begin()}; }
    /// \overload
    [[nodiscard]] const_iterator cbegin() const { return begin(); }
    /// Stands behind the last entry.
    [[nodiscard]] iterator end() { return {m_last, m_last->end()}; }
    /// \overload
    [[nodiscard]] const_iterator end() const { return {m_last, m_last->end()}; }
    /// \overload
    [[nodiscard]] const_iterator cend() const { return end(); }

    /// Stands on the entry under \a key, a text, an index or a Key, or behind the last one when there is
    /// none.
    template <typename AnyKey>
    [[nodiscard]] iterator find(AnyKey const& key)
    {
        Place const place = locate(key);
        return place.isThere ? cursor<iterator>(place) : end();
    }
    /// \overload
    template <typename AnyKey>
    [[nodiscard]] const_iterator find(AnyKey const& key) const
    {
        Place const place = locate(key);
        return place.isThere ? cursor<const_iterator>(place) : end();
    }
    /// Whether there is an entry under \a key, a text, an index or a Key.
    template <typename AnyKey>
    [[nodiscard]] bool contains(AnyKey const& key) const
    {
        return locate(key).isThere;
    }

private:
    friend struct EntriesEditor;

    /// Holds an entry of a leaf.
    struct Slot
    {
        std::unique_ptr<value_type> entry;
        QStringView text; ///< the key's text, so that a search need not ask the entry; null where it must

        [[nodiscard]] Key const& key() const { return entry->first; }
    };

    /// Holds a page below a branch, and the key that the page begins with.
    struct Child
    {
        std::unique_ptr<Page> page;
        value_type const* first;
        QStringView text;

        [[nodiscard]] Key const& key() const { return first->first; }
    };

    /// A leaf has entries and knows the next leaf, a branch has children; none but the root is ever empty.
    struct Page
    {
        std::vector<Slot> entries;
        std::vector<Child> children;
        Page* following = nullptr;

        [[nodiscard]] Slot const* begin() const { return entries.data(); }
        [[nodiscard]] Slot const* end() const { return entries.data() + entries.size(); }
    };

    /// Where an entry is, or belongs.
    struct Place
    {
        Page const* leaf;
        std::ptrdiff_t index;
        bool isThere;
    };

    struct Tree;

    template <typename Iterator>
    static Iterator cursor(Place const& place)
    {
        return {place.leaf, place.leaf->begin() + place.index};
    }

    [[nodiscard]] SOFTPHONECORE_EXPORT Place locate(QStringView text) const;
    [[nodiscard]] Place locate(QString const& text) const { return locate(QStringView(text)); }
    [[nodiscard]] SOFTPHONECORE_EXPORT Place locate(int index) const;
    [[nodiscard]] SOFTPHONECORE_EXPORT Place locate(Key const& key) const;

    std::pair<iterator, bool> insertOrAssign(Key key, MultiType const& value);
    std::pair<iterator, bool> tryEmplace(Key key, MultiType const& value);
    std::unique_ptr<value_type> extract(const_iterator position);
    void clear();

    [[nodiscard]] Place placeFor(Key const& key) const;
    void makeRoom(Key const& key);
    void renewFirst();
    void setEnds();

    Page m_root;
    Page const* m_first = &m_root; ///< the first leaf
    Page const* m_last = &m_root;  ///< the last leaf
    size_type m_size = 0;
    Stamp m_stamp;
};

} // namespace DataSets::Impl
