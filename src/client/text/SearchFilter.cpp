#include "SearchFilter.h"

#include "FilterWords_p.h"

#include <algorithm>
#include <tuple>

namespace Softphone {

namespace {

FoldedText foldedFields(QStringList const& fields, bool keepPlaces)
{
    FoldedText text(keepPlaces);
    for (int field = 0; QString const& content : fields) {
        text.append(content, field++);
    }
    return text;
}

/// \a hits sorted, and those that overlap as one.
QList<SearchFilter::Hit> merged(QList<SearchFilter::Hit> hits)
{
    std::ranges::sort(hits, {}, [](SearchFilter::Hit const& hit) {
        return std::tuple(hit.field, hit.position, hit.length);
    });
    QList<SearchFilter::Hit> apart;
    for (SearchFilter::Hit const& hit : hits) {
        if (!apart.isEmpty() && apart.back().field == hit.field &&
            hit.position < apart.back().position + apart.back().length) {
            SearchFilter::Hit& last = apart.back();
            last.length = std::max(last.length, hit.position + hit.length - last.position);
        } else {
            apart.append(hit);
        }
    }
    return apart;
}

} // namespace

SearchFilter::SearchFilter()
    : SearchFilter(QString())
{
}

SearchFilter::SearchFilter(QString const& words)
    : m_words(std::make_shared<FilterWords const>(words))
{
}

bool SearchFilter::isEmpty() const
{
    return m_words->readings().empty();
}

bool SearchFilter::matches(QStringList const& fields) const
{
    return rank(fields) > 0;
}

QList<SearchFilter::Hit> SearchFilter::hits(QStringList const& fields) const
{
    FoldedText const text = foldedFields(fields, true);
    FilterWords::Match const match = m_words->bestMatch(text);
    QList<Hit> hits;
    for (std::size_t word = 0; word < match.places.size(); ++word) {
        FoldedText::Place const& first = text.places[static_cast<std::size_t>(match.places[word].begin)];
        FoldedText::Place const& last = text.places[static_cast<std::size_t>(match.places[word].end) - 1];
        hits.append({text.words[match.words[word]].field, first.begin, last.end - first.begin});
    }
    return merged(std::move(hits));
}

int SearchFilter::rank(QStringList const& fields) const
{
    return isEmpty() ? 1 : m_words->bestMatch(foldedFields(fields, false)).rank;
}

} // namespace Softphone
