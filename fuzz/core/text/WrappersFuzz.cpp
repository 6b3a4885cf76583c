// The wrappers of search hits: taking the marks away gives back the text, and the plain rules agree.
//
// Input: a flag byte, the filter up to the first line break, the text after it.

#include <text/StringUtils.h>
#include <text/SubstringWrapper.h>

#include "FuzzText.h"

#include <TextOracles.h>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    constexpr std::size_t longestForPlainRules = 512;
    QString const input = textFrom(data, size);
    qsizetype const lineBreak = input.indexOf(u'\n');
    QString const filter = input.left(std::max<qsizetype>(lineBreak, 0));
    QString const text = input.mid(lineBreak + 1);
    bool const matchWordStart = size > 0 && (data[0] & 2) != 0;

    std::pair const markers(QStringLiteral("\uE000"), QStringLiteral("\uE001"));
    QString wrapped = SubstringWrapper(filter, text, markers, matchWordStart).wrapText();
    if (size <= longestForPlainRules) {
        require(wrapped == plain::wrapText(filter, text, markers, matchWordStart));
    }
    bool const hasMarkers = text.contains(markers.first) || text.contains(markers.second);
    require(hasMarkers || wrapped.remove(markers.first).remove(markers.second) == text);

    QString const tag = QStringLiteral("\uE000");
    QString const html = StringUtils::wrapSubStringsInHTMLTag(text, filter, tag);
    if (!filter.isEmpty() && size <= longestForPlainRules) {
        require(html == plain::wrapSubStringsInHTMLTag(text, filter, tag));
    }
    if (!hasMarkers && !text.contains(u'%')) {
        QString bare = html;
        bare.remove(u'<' + tag + u'>').remove(QStringLiteral("</") + tag + u'>');
        require(bare == StringUtils::sanitizeHTMLCharacters(text));
    }
    return 0;
}
