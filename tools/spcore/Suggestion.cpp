#include "Suggestion.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace {

constexpr qsizetype longestWord = 40; // no candidate comes near

/// How many letters must be changed, left out, added or swapped with the next to make \a b of \a a.
qsizetype distance(QString const& a, QString const& b)
{
    using Row = std::vector<qsizetype>;
    Row beforeLast;
    Row last(static_cast<std::size_t>(b.size()) + 1);
    std::iota(last.begin(), last.end(), 0);
    for (qsizetype i = 1; i <= a.size(); ++i) {
        Row row(last.size(), i);
        for (qsizetype j = 1; j <= b.size(); ++j) {
            auto const at = static_cast<std::size_t>(j);
            row[at] =
                std::min({last[at] + 1, row[at - 1] + 1, last[at - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                row[at] = std::min(row[at], beforeLast[at - 2] + 1);
            }
        }
        beforeLast = std::exchange(last, row);
    }
    return last.back();
}

} // namespace

QString nearest(QString const& word, QStringList const& candidates)
{
    QString best;
    qsizetype least = std::max<qsizetype>(word.size() / 3, 1) + 1;
    if (word.isEmpty() || word.size() > longestWord) {
        return best;
    }
    for (QString const& candidate : candidates) {
        qsizetype const steps = distance(word.toLower(), candidate);
        if (steps < least) {
            least = steps;
            best = candidate;
        }
    }
    return best;
}
