#include "HTMLHelpers.h"

#include "LinkScanner_p.h"

#include <QStringView>

namespace {

/// Room for the tags of a few links; text with more of them grows as it is written.
constexpr qsizetype roomForAnchors = 256;

/// \a link without the punctuation at its end, which belongs to the sentence around it.
QStringView withoutPunctuation(QStringView link)
{
    constexpr QStringView punctuation = u".;,!)";
    while (!link.isEmpty() && punctuation.contains(link.back())) {
        link.chop(1);
    }
    return link;
}

/// Appends \a text with its links to \a html; false, and nothing appended, when it holds no link.
bool appendLinked(QString& html, QStringView text)
{
    LinkScanner scanner(text);
    qsizetype written = 0;
    while (auto const found = scanner.next()) {
        QStringView const link = withoutPunctuation(text.sliced(found->begin, found->end - found->begin));
        if (html.capacity() == 0) {
            html.reserve(text.size() + link.size() + roomForAnchors);
        }
        html += text.sliced(written, found->begin - written);
        html += QLatin1String("<a href=\"");
        html += link;
        html += QLatin1String("\">");
        html += link;
        html += QLatin1String("</a>");
        written = found->begin + link.size();
    }
    if (written == 0) {
        return false;
    }
    html += text.sliced(written);
    return true;
}

} // namespace

QString HTMLHelpers::processLinks(QString const& text)
{
    QString html;
    return appendLinked(html, text) ? html : text;
}

QString HTMLHelpers::generateParagraphs(QString const& text)
{
    QString html;
    html.reserve(text.size());
    QStringView rest = text;
    for (;;) {
        qsizetype const lineEnd = rest.indexOf(u'\n');
        QStringView const line = lineEnd < 0 ? rest : rest.first(lineEnd);
        if (!appendLinked(html, line)) {
            html += line;
        }
        if (lineEnd < 0) {
            return html;
        }
        html += QLatin1String("<br>");
        rest = rest.sliced(lineEnd + 1);
    }
}
