#include "WordTable_p.h"

#include <algorithm>
#include <bit>
#include <numeric>

namespace {

constexpr std::size_t bitsPerBlock = 64;

quint64 lettersOf(QStringView folded)
{
    quint64 letters = 0;
    for (QChar const unit : folded) {
        letters |= quint64(1) << (unit.unicode() % bitsPerBlock);
    }
    return letters;
}

} // namespace

FoldedWords::FoldedWords(std::span<QStringView const> words)
{
    auto const addSize = [](std::size_t sum, QStringView word) {
        return sum + static_cast<std::size_t>(word.size());
    };
    m_units.resize(std::accumulate(words.begin(), words.end(), std::size_t(0), addSize));
    m_words.reserve(words.size());
    char16_t* out = m_units.data();
    for (QStringView const word : words) {
        QStringView const folded(out, word.size());
        out = writeFolded(word, out);
        m_words.push_back({word, folded, lettersOf(folded)});
    }
}

WordFinder::WordFinder(FoldedWords::Word const& wanted, bool matchWordStart)
    : m_wanted(wanted)
    , m_search(wanted.folded)
    , m_matchWordStart(matchWordStart)
    , m_needsContext(!wanted.original.isEmpty() && wanted.original.front().isLowSurrogate())
{
}

// The second half of a character folds by what stands before it, which only matters to a filter word that
// was cut out of the middle of a character.
qsizetype WordFinder::indexWithContext(FoldedWords::Word const& word) const
{
    if (m_matchWordStart) {
        return word.original.startsWith(m_wanted.original, Qt::CaseInsensitive) ? 0 : -1;
    }
    return word.original.indexOf(m_wanted.original, 0, Qt::CaseInsensitive);
}

/// The candidates of one filter word.
class WordTable::Row
{
public:
    Row(quint64* blocks, std::size_t blockCount, std::size_t& count)
        : m_blocks(blocks, blockCount)
        , m_count(&count)
    {
    }

    [[nodiscard]] std::size_t count() const { return *m_count; }
    [[nodiscard]] bool holds(int word) const { return (blockOf(word) & bitOf(word)) != 0; }

    void add(int word)
    {
        blockOf(word) |= bitOf(word);
        ++*m_count;
    }

    void remove(int word)
    {
        blockOf(word) &= ~bitOf(word);
        --*m_count;
    }

    /// The first candidate at or behind \a word, or -1.
    [[nodiscard]] int next(int word) const
    {
        std::size_t const from = static_cast<std::size_t>(word);
        quint64 masked = ~quint64(0) << (from % bitsPerBlock);
        for (std::size_t block = from / bitsPerBlock; block < m_blocks.size(); ++block) {
            if (quint64 const found = m_blocks[block] & masked; found != 0) {
                return static_cast<int>(block * bitsPerBlock) + std::countr_zero(found);
            }
            masked = ~quint64(0);
        }
        return -1;
    }

private:
    [[nodiscard]] quint64& blockOf(int word) const
    {
        return m_blocks[static_cast<std::size_t>(word) / bitsPerBlock];
    }
    [[nodiscard]] static quint64 bitOf(int word)
    {
        return quint64(1) << (static_cast<std::size_t>(word) % bitsPerBlock);
    }

    std::span<quint64> m_blocks;
    std::size_t* m_count;
};

namespace {

/// Withdraws the candidates of the first of \a entries from the others, as
/// SubstringWrapper::doRemoveDuplicates() does.
template <typename Entry>
bool withdrawFromLater(std::span<Entry> entries)
{
    Entry& own = entries.front();
    for (int word = own.next(0); word >= 0; word = own.next(word + 1)) {
        if (!withdraw(word, entries.subspan(1))) {
            if (own.count() == 1) {
                return false;
            }
            own.remove(word);
        }
    }
    return true;
}

} // namespace

WordTable::WordTable(std::size_t filterWords, std::size_t textWords)
    : m_blocksPerRow((textWords + bitsPerBlock - 1) / bitsPerBlock)
    , m_bits(filterWords * m_blocksPerRow)
    , m_counts(filterWords)
{
}

std::optional<WordTable> WordTable::find(FoldedWords const& filterWords, FoldedWords const& textWords,
                                         bool matchWordStart)
{
    if (filterWords.size() > textWords.size()) {
        return std::nullopt;
    }
    WordTable table(filterWords.size(), textWords.size());
    for (std::size_t t = 0; t < filterWords.size(); ++t) {
        Row row = table.row(t);
        visitCandidates(filterWords[t], textWords, matchWordStart, [&](int w) { row.add(w); });
        if (row.count() == 0) {
            return std::nullopt;
        }
    }
    return table;
}

WordTable::Row WordTable::row(std::size_t filterWord)
{
    return {m_bits.data() + filterWord * m_blocksPerRow, m_blocksPerRow, m_counts[filterWord]};
}

bool WordTable::dealOut()
{
    std::vector<Row> entries;
    entries.reserve(m_counts.size());
    for (std::size_t t = 0; t < m_counts.size(); ++t) {
        entries.push_back(row(t));
    }
    std::ranges::stable_sort(entries, {}, &Row::count);
    for (std::span<Row> later(entries); later.size() > 1; later = later.subspan(1)) {
        if (!withdrawFromLater(later)) {
            return false;
        }
    }
    return true;
}

int WordTable::firstCandidate(std::size_t filterWord) const
{
    quint64 const* const blocks = m_bits.data() + filterWord * m_blocksPerRow;
    quint64 const* block = blocks;
    while (*block == 0) {
        ++block;
    }
    auto const skipped = static_cast<std::size_t>(block - blocks);
    return static_cast<int>(skipped * bitsPerBlock) + std::countr_zero(*block);
}
