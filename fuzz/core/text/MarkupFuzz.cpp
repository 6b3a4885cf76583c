// Escaping and its undoing against the plain rules and each other; dropping of marks against the plain rule.

#include <text/StringUtils.h>

#include "FuzzText.h"

#include <TextOracles.h>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QString const text = textFrom(data, size);
    QString const html = StringUtils::sanitizeHTMLCharacters(text);
    require(html == plain::sanitizeHTMLCharacters(text));
    require(!html.contains(u'<') && !html.contains(u'>') && !html.contains(u'"') && !html.contains(u'\''));
    QString const undone = StringUtils::deHTMLfy(html);
    require(undone == text || text.contains(u'&'));
    QString const unescaped = StringUtils::deHTMLfy(text);
    require(unescaped.size() <= text.size());
    if (text.isValidUtf16()) {
        require(unescaped == plain::deHTMLfy(text));
    }
    require(StringUtils::removeDiacriticalMarks(text) == plain::removeDiacriticalMarks(text));
    return 0;
}
