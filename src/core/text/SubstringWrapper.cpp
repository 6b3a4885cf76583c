#include "SubstringWrapper.h"

#include "CaseFolding_p.h"

#include <QStringView>
#include <algorithm>
#include <functional>

namespace {

using TokenOccurrences = SubstringWrapper::TokenOccurrences;

/// Removal from an ascending list that is asked about ascending words: the list is walked once, and what
/// stays is moved together on the way.
class AscendingList
{
public:
    explicit AscendingList(TokenOccurrences::value_type& entry)
        : m_list(entry.second)
        , m_kept(m_list.begin())
        , m_next(m_list.begin())
    {
    }
    AscendingList(AscendingList const&) = delete;
    AscendingList& operator=(AscendingList const&) = delete;
    ~AscendingList()
    {
        if (m_kept != m_next) {
            m_list.erase(std::move(m_next, m_list.end(), m_kept), m_list.end());
        }
    }

    [[nodiscard]] std::size_t count() const
    {
        return m_list.size() - static_cast<std::size_t>(m_next - m_kept);
    }

    bool holds(int word)
    {
        auto const found =
            m_next != m_list.end() && *m_next >= word ? m_next : std::lower_bound(m_next, m_list.end(), word);
        m_kept = m_kept == m_next ? found : std::move(m_next, found, m_kept);
        m_next = found;
        return m_next != m_list.end() && *m_next == word;
    }

    void remove(int) { ++m_next; }

private:
    std::vector<int>& m_list;
    std::vector<int>::iterator m_kept;
    std::vector<int>::iterator m_next;
};

/// Removal from a list in any order, which callers may have made by hand.
class UnorderedList
{
public:
    explicit UnorderedList(TokenOccurrences::value_type& entry)
        : m_list(entry.second)
    {
    }

    [[nodiscard]] std::size_t count() const { return m_list.size(); }
    [[nodiscard]] bool holds(int word) const { return std::ranges::find(m_list, word) != m_list.end(); }
    void remove(int word) { m_list.erase(std::ranges::find(m_list, word)); }

private:
    std::vector<int>& m_list;
};

bool areAscending(TokenOccurrences const& occurrences)
{
    return std::ranges::all_of(occurrences, [](auto const& entry) {
        return std::ranges::adjacent_find(entry.second, std::greater_equal<>()) == entry.second.end();
    });
}

/// Takes \a word from each of the \a later entries that holds it, up to one that holds nothing else.
///
/// \return whether there was no such entry
template <typename List>
bool withdraw(int word, std::vector<List>& later)
{
    for (List& entry : later) {
        if (entry.holds(word)) {
            if (entry.count() == 1) {
                return false;
            }
            entry.remove(word);
        }
    }
    return true;
}

template <typename List>
bool removeDuplicates(TokenOccurrences& occurrences, std::size_t index)
{
    std::vector<int>& own = occurrences[index].second;
    auto const firstLater = occurrences.begin() + static_cast<std::ptrdiff_t>(index) + 1;
    std::vector<List> later(firstLater, occurrences.end());
    auto word = own.begin();
    while (word != own.end()) {
        // A word that is another's only one is left to it, as long as this entry has others.
        if (withdraw(*word, later)) {
            ++word;
        } else if (own.size() == 1) {
            return false;
        } else {
            word = own.erase(word);
        }
    }
    return true;
}

/// The words of \a filterWords with the \a textWords that each can take, fewest first; see
/// getTokenOccurrences().
TokenOccurrences findCandidates(QList<QStringView> const& filterWords, QList<QStringView> const& textWords,
                                bool matchWordStart)
{
    // Each filter word takes a word of its own.
    if (filterWords.size() > textWords.size()) {
        return {};
    }
    std::vector<FoldedText> const words(textWords.begin(), textWords.end());
    TokenOccurrences occurrences;
    for (QStringView const filterWord : filterWords) {
        CaseBlindSearch search(filterWord);
        std::vector<int> candidates;
        for (std::size_t w = 0; w < words.size(); ++w) {
            if (matchWordStart ? search.opens(words[w]) : search.indexIn(words[w]) >= 0) {
                candidates.push_back(static_cast<int>(w));
            }
        }
        if (candidates.empty()) {
            return {};
        }
        occurrences.emplace_back(static_cast<int>(occurrences.size()), std::move(candidates));
    }
    std::ranges::stable_sort(occurrences, {}, [](auto const& entry) { return entry.second.size(); });
    return occurrences;
}

/// Where in the whole text a filter word was found.
struct Hit
{
    qsizetype position;
    qsizetype length;
};

/// The hits of all filter words in the order of the text; none when the words cannot be dealt out.
std::vector<Hit> findHits(QStringView filter, QStringView text, bool matchWordStart)
{
    QList<QStringView> const filterWords = filter.split(u' ', Qt::SkipEmptyParts);
    QList<QStringView> const textWords = text.split(u' ', Qt::KeepEmptyParts);
    TokenOccurrences occurrences = findCandidates(filterWords, textWords, matchWordStart);
    if (!SubstringWrapper::cleanFromDuplicates(occurrences)) {
        return {};
    }
    std::vector<Hit> hits;
    for (auto const& [filterWord, candidates] : occurrences) {
        QStringView const wanted = filterWords[filterWord];
        QStringView const word = textWords[candidates.front()];
        qsizetype const start = word.utf16() - text.utf16();
        qsizetype const inWord = CaseBlindSearch(wanted).indexIn(FoldedText(word));
        hits.push_back({start + inWord, wanted.size()});
    }
    std::ranges::sort(hits, {}, &Hit::position);
    return hits;
}

QString withMarkers(QStringView text, std::vector<Hit> const& hits,
                    std::pair<QString, QString> const& markers)
{
    QString marked;
    marked.reserve(text.size() +
                   static_cast<qsizetype>(hits.size()) * (markers.first.size() + markers.second.size()));
    qsizetype done = 0;
    for (Hit const& hit : hits) {
        marked += text.sliced(done, hit.position - done);
        marked += markers.first;
        marked += text.sliced(hit.position, hit.length);
        marked += markers.second;
        done = hit.position + hit.length;
    }
    marked += text.sliced(done);
    return marked;
}

} // namespace

SubstringWrapper::SubstringWrapper(QString filter, QString text, std::pair<QString, QString> markers,
                                   bool matchWordStart)
    : m_filter(std::move(filter))
    , m_text(std::move(text))
    , m_markers(std::move(markers))
    , m_matchWordStart(matchWordStart)
{
}

QString SubstringWrapper::wrapText() const
{
    std::vector<Hit> const hits = findHits(m_filter, m_text, m_matchWordStart);
    return hits.empty() ? m_text : withMarkers(m_text, hits, m_markers);
}

SubstringWrapper::TokenOccurrences SubstringWrapper::getTokenOccurrences(QList<QString> const& filterWords,
                                                                         QList<QString> const& textWords,
                                                                         bool matchWordStart)
{
    return findCandidates({filterWords.begin(), filterWords.end()}, {textWords.begin(), textWords.end()},
                          matchWordStart);
}

bool SubstringWrapper::doRemoveDuplicates(TokenOccurrences& occurrences, std::size_t index)
{
    if (index >= occurrences.size()) {
        return true;
    }
    return areAscending(occurrences) ? removeDuplicates<AscendingList>(occurrences, index)
                                     : removeDuplicates<UnorderedList>(occurrences, index);
}

bool SubstringWrapper::cleanFromDuplicates(TokenOccurrences& occurrences)
{
    auto const remove =
        areAscending(occurrences) ? removeDuplicates<AscendingList> : removeDuplicates<UnorderedList>;
    for (std::size_t i = 0; i + 1 < occurrences.size(); ++i) {
        if (!remove(occurrences, i)) {
            return false;
        }
        std::vector<int>& candidates = occurrences[i].second;
        candidates.resize(std::min<std::size_t>(candidates.size(), 1));
    }
    return true;
}
