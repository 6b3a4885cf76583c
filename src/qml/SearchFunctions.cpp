#include "SearchFunctions.h"

#include <algorithm>

using Softphone::SearchFilter;

namespace SoftphoneQml {

SearchFilter SearchFunctions::filter(QString const& words) const
{
    return SearchFilter(words);
}

QVariantList SearchFunctions::hits(SearchFilter const& filter, QStringList const& fields) const
{
    QVariantList hits;
    for (SearchFilter::Hit const& hit : filter.hits(fields)) {
        hits.append(QVariantMap{{QStringLiteral("field"), hit.field},
                                {QStringLiteral("position"), hit.position},
                                {QStringLiteral("length"), hit.length}});
    }
    return hits;
}

QString SearchFunctions::marked(QString const& text, QVariantList const& hits, QColor const& color) const
{
    QString const opening = QStringLiteral("<span style=\"background-color:%1\">").arg(color.name());
    QString html;
    qsizetype done = 0;
    for (QVariant const& hit : hits) {
        QVariantMap const place = hit.toMap();
        qsizetype const begin =
            std::clamp<qsizetype>(place.value(QStringLiteral("position")).toLongLong(), done, text.size());
        qsizetype const length =
            std::clamp<qsizetype>(place.value(QStringLiteral("length")).toLongLong(), 0, text.size() - begin);
        if (length > 0) {
            html += text.sliced(done, begin - done).toHtmlEscaped() + opening +
                    text.sliced(begin, length).toHtmlEscaped() + QStringLiteral("</span>");
            done = begin + length;
        }
    }
    return html + text.sliced(done).toHtmlEscaped();
}

} // namespace SoftphoneQml
