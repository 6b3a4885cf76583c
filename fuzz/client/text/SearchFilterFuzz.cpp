// A filter on fields against the plain search. Input: UTF-8 lines, the filter first and then the fields.

#include <SearchOracle.h>

#include <client/SearchFilter.h>

#include <cstdint>
#include <cstdlib>

namespace {

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

/// Whether trying every way is over before long.
bool isSmall(QString const& words, QStringList const& fields)
{
    qsizetype count = 0;
    for (QString const& field : fields) {
        count += plain::searchField(field, 0).words.size();
    }
    return plain::searchField(words, 0).words.size() <= 4 && count <= 12;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QStringList fields =
        QString::fromUtf8(reinterpret_cast<char const*>(data), static_cast<qsizetype>(size)).split(u'\n');
    QString const words = fields.takeFirst();
    Softphone::SearchFilter const filter(words);
    int const rank = filter.rank(fields);
    QList<Softphone::SearchFilter::Hit> const hits = filter.hits(fields);
    require(filter.matches(fields) == (rank > 0));
    require(hits.isEmpty() == (rank == 0 || filter.isEmpty()));
    for (qsizetype at = 0; at < hits.size(); ++at) {
        Softphone::SearchFilter::Hit const& hit = hits[at];
        require(hit.length > 0 && hit.position >= 0);
        require(hit.position + hit.length <= fields[hit.field].size());
        require(
            at == 0 || hits[at - 1].field < hit.field ||
            (hits[at - 1].field == hit.field && hits[at - 1].position + hits[at - 1].length <= hit.position));
    }
    if (isSmall(words, fields)) {
        require(filter.isEmpty() == plain::searchReadings(words).isEmpty());
        require(filter.isEmpty() || rank == plain::search(words, fields).rank);
    }
    return 0;
}
