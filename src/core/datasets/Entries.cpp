#include "Entries.h"

#include <algorithm>
#include <atomic>

namespace DataSets::Impl {
namespace {

/// The most that a page holds: entries in a leaf, children in a branch.
constexpr std::size_t capacity = 32;
/// The fewest that a page may keep, but for the root. Two pages that fit in one are joined only when one of
/// them is this small, so that removing and adding by turns does not join and split by turns.
constexpr std::size_t fewest = capacity / 4;

QStringView textOf(Key const& key)
{
    QString const* const text = std::get_if<QString>(&key);
    return text != nullptr ? QStringView(*text) : QStringView();
}

/// How \a key compares to \a text: below, above or 0.
int compareKey(Key const& key, QStringView text)
{
    QString const* const own = std::get_if<QString>(&key);
    return own == nullptr ? 1 : QStringView(*own).compare(text);
}

/// How the key that \a held holds compares to \a text: below, above or 0.
template <typename Held>
int compare(Held const& held, QStringView text)
{
    return held.text.isNull() ? compareKey(held.key(), text) : held.text.compare(text);
}

/// How the key that \a held holds compares to \a index: below, above or 0.
template <typename Held>
int compare(Held const& held, int index)
{
    int const* const own = std::get_if<int>(&held.key());
    return own == nullptr || *own < index ? -1 : int(*own > index);
}

struct Found
{
    std::size_t index; ///< of the first that is not before what was looked for
    bool isThere;
};

/// Looks for the key \a name in \a held, which is sorted by the keys held.
template <typename Held, typename Name>
Found search(std::vector<Held> const& held, Name name)
{
    std::size_t low = 0;
    std::size_t high = held.size();
    while (low < high) {
        std::size_t const middle = low + (high - low) / 2;
        int const order = compare(held[middle], name);
        if (order == 0) {
            return {middle, true};
        }
        if (order < 0) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return {low, false};
}

/// Calls \a function with the text or the index that \a key is.
template <typename Function>
decltype(auto) withName(Key const& key, Function const& function)
{
    QString const* const text = std::get_if<QString>(&key);
    return text != nullptr ? function(QStringView(*text)) : function(*std::get_if<int>(&key));
}

unsigned long long newMap()
{
    static std::atomic<unsigned long long> last = 0;
    return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

/// Moves what lies behind the first \a kept of \a source to the front of \a target, which has room for it.
template <typename Slot>
void moveTail(std::vector<Slot>& source, std::size_t kept, std::vector<Slot>& target)
{
    auto const tail = source.begin() + static_cast<std::ptrdiff_t>(std::min(kept, source.size()));
    target.insert(target.begin(), std::make_move_iterator(tail), std::make_move_iterator(source.end()));
    source.erase(tail, source.end());
}

/// Moves the first \a count of \a source to the end of \a target, which has room for it.
template <typename Slot>
void moveHead(std::vector<Slot>& source, std::size_t count, std::vector<Slot>& target)
{
    auto const head = source.begin() + static_cast<std::ptrdiff_t>(count);
    target.insert(target.end(), std::make_move_iterator(source.begin()), std::make_move_iterator(head));
    source.erase(source.begin(), head);
}

/// Moves everything to \a left where it fits, else half of it to each.
template <typename Slot>
void level(std::vector<Slot>& left, std::vector<Slot>& right)
{
    std::size_t const total = left.size() + right.size();
    std::size_t const target = total <= capacity ? total : total / 2;
    if (left.size() > target) {
        moveTail(left, target, right);
    } else {
        moveHead(right, target - left.size(), left);
    }
}

} // namespace

/// The tree's own operations. Of a page's two lists one is empty, so that what moves both moves the right
/// one.
struct Entries::Tree
{
    static bool isLeaf(Page const& page) { return page.children.empty(); }

    static bool isFull(Page const& page)
    {
        return page.entries.size() == capacity || page.children.size() == capacity;
    }

    static bool isTooSmall(Page const& page)
    {
        return std::max(page.entries.size(), page.children.size()) < fewest;
    }

    static void setFirst(Child& child)
    {
        child.first = firstOf(*child.page);
        child.text = textOf(child.key());
    }

    static value_type const* firstOf(Page const& page)
    {
        return isLeaf(page) ? page.entries.front().entry.get() : page.children.front().first;
    }

    static Page const* firstLeaf(Page const& root)
    {
        Page const* page = &root;
        while (!isLeaf(*page)) {
            page = page->children.front().page.get();
        }
        return page;
    }

    static Page const* lastLeaf(Page const& root)
    {
        Page const* page = &root;
        while (!isLeaf(*page)) {
            page = page->children.back().page.get();
        }
        return page;
    }

    /// The child of \a branch below which \a name belongs.
    template <typename Name>
    static std::size_t childFor(Page const& branch, Name name)
    {
        Found const found = search(branch.children, name);
        return found.isThere || found.index == 0 ? found.index : found.index - 1;
    }

    /// Where \a name is, or belongs, below \a root.
    template <typename Name>
    static Place locate(Page const& root, Name name)
    {
        Page const* page = &root;
        while (!isLeaf(*page)) {
            page = page->children[childFor(*page, name)].page.get();
        }
        Found const found = search(page->entries, name);
        return Place{page, static_cast<std::ptrdiff_t>(found.index), found.isThere};
    }

    /// Splits the full child \a index of \a parent, which has room for one more, in two.
    static void split(Page& parent, std::size_t index)
    {
        Page& left = *parent.children[index].page;
        auto added = std::make_unique<Page>();
        Page& right = *added;
        right.entries.reserve(isLeaf(left) ? capacity : 0);
        right.children.reserve(isLeaf(left) ? 0 : capacity);
        moveTail(left.entries, capacity / 2, right.entries);
        moveTail(left.children, capacity / 2, right.children);
        right.following = left.following;
        left.following = &right;
        auto const place = parent.children.begin() + static_cast<std::ptrdiff_t>(index) + 1;
        setFirst(*parent.children.insert(place, Child{std::move(added), nullptr, {}}));
    }

    /// Puts what \a root holds one level deeper.
    static void deepen(Page& root)
    {
        auto below = std::make_unique<Page>();
        std::vector<Child> children;
        children.reserve(capacity);
        std::swap(*below, root);
        children.push_back(Child{std::move(below), nullptr, {}});
        setFirst(children.front());
        root.children = std::move(children);
    }

    /// Splits the full pages on the way from \a root, which is not full, to \a name, so that the leaf has
    /// room.
    template <typename Name>
    static void splitTowards(Page& root, Name name)
    {
        Page* page = &root;
        while (!isLeaf(*page)) {
            std::size_t index = childFor(*page, name);
            if (isFull(*page->children[index].page)) {
                split(*page, index);
                index = childFor(*page, name);
            }
            page = page->children[index].page.get();
        }
    }

    /// Takes the entry \a name out of what is below \a page.
    template <typename Name>
    static std::unique_ptr<value_type> take(Page& page, Name name)
    {
        if (isLeaf(page)) {
            auto const slot =
                page.entries.begin() + static_cast<std::ptrdiff_t>(search(page.entries, name).index);
            std::unique_ptr<value_type> entry = std::move(slot->entry);
            page.entries.erase(slot);
            return entry;
        }
        std::size_t const index = childFor(page, name);
        Child& child = page.children[index];
        std::unique_ptr<value_type> entry = take(*child.page, name);
        setFirst(child);
        if (isTooSmall(*child.page) && page.children.size() > 1) {
            mend(page, index == 0 ? 0 : index - 1);
        }
        return entry;
    }

    /// Joins the child \a index of \a parent and the next one, or makes them alike in size.
    static void mend(Page& parent, std::size_t index)
    {
        Page& left = *parent.children[index].page;
        Child& next = parent.children[index + 1];
        level(left.entries, next.page->entries);
        level(left.children, next.page->children);
        if (!next.page->entries.empty() || !next.page->children.empty()) {
            setFirst(next);
            return;
        }
        left.following = next.page->following;
        parent.children.erase(parent.children.begin() + static_cast<std::ptrdiff_t>(index) + 1);
    }
};

Entries::Entries()
    : m_stamp{newMap(), 0}
{
}

Entries::~Entries() = default;

Entries::Place Entries::locate(QStringView text) const
{
    return Tree::locate(m_root, text);
}

Entries::Place Entries::locate(int index) const
{
    return Tree::locate(m_root, index);
}

Entries::Place Entries::locate(Key const& key) const
{
    return withName(key, [this](auto name) { return locate(name); });
}

std::pair<Entries::iterator, bool> Entries::insertOrAssign(Key key, MultiType const& value)
{
    auto const stored = tryEmplace(std::move(key), value);
    if (!stored.second) {
        stored.first->second = value;
    }
    return stored;
}

std::pair<Entries::iterator, bool> Entries::tryEmplace(Key key, MultiType const& value)
{
    Place place = placeFor(key);
    if (place.isThere) {
        return {cursor<iterator>(place), false};
    }
    auto entry = std::make_unique<value_type>(std::move(key), value);
    if (Tree::isFull(*place.leaf)) {
        makeRoom(entry->first);
        place = locate(entry->first);
    }
    // The leaf is one of this map's own, which is not const here.
    std::vector<Slot>& entries = const_cast<Page*>(place.leaf)->entries;
    if (entries.empty()) {
        entries.reserve(fewest);
    }
    QStringView const text = textOf(entry->first);
    entries.insert(entries.begin() + place.index, Slot{std::move(entry), text});
    ++m_size;
    ++m_stamp.changes;
    renewFirst();
    return {cursor<iterator>(place), true};
}

/// Where \a key is or belongs; found at once when that is the end, where most records grow.
Entries::Place Entries::placeFor(Key const& key) const
{
    return withName(key, [this](auto name) {
        bool const isLast = !empty() && compare(m_last->entries.back(), name) < 0;
        return isLast ? Place{m_last, std::ssize(m_last->entries), false} : locate(name);
    });
}

/// Splits what is full on the way to the leaf where \a key belongs.
void Entries::makeRoom(Key const& key)
{
    // What has been split stays so when memory runs out further down.
    ++m_stamp.changes;
    if (Tree::isFull(m_root)) {
        Tree::deepen(m_root);
        setEnds();
    }
    withName(key, [this](auto name) { Tree::splitTowards(m_root, name); });
    setEnds();
}

/// Tells the branches above the first leaf that it may begin with another entry.
void Entries::renewFirst()
{
    for (Page* page = &m_root; !Tree::isLeaf(*page); page = page->children.front().page.get()) {
        page->children.front().first = m_first->entries.front().entry.get();
        page->children.front().text = m_first->entries.front().text;
    }
}

std::unique_ptr<Entries::value_type> Entries::extract(const_iterator position)
{
    std::unique_ptr<value_type> entry =
        withName(position->first, [this](auto name) { return Tree::take(m_root, name); });
    while (m_root.children.size() == 1) {
        std::unique_ptr<Page> const only = std::move(m_root.children.front().page);
        m_root = std::move(*only);
    }
    setEnds();
    --m_size;
    ++m_stamp.changes;
    return entry;
}

void Entries::setEnds()
{
    m_first = Tree::firstLeaf(m_root);
    m_last = Tree::lastLeaf(m_root);
}

void Entries::clear()
{
    // What is released may hold the last handle to the record that these entries belong to.
    Page const removed = std::exchange(m_root, Page());
    setEnds();
    m_size = 0;
    ++m_stamp.changes;
}

} // namespace DataSets::Impl
