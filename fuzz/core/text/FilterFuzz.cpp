// Filter matching against the plain rules. Input: a flag byte, the filter up to the first line break, the
// text after it.

#include <text/StringUtils.h>

#include "FuzzText.h"

#include <TextOracles.h>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QString const input = textFrom(data, size);
    qsizetype const lineBreak = input.indexOf(u'\n');
    QString const filter = input.left(std::max<qsizetype>(lineBreak, 0));
    QString const text = input.mid(lineBreak + 1);
    for (bool const matchWordStart : {false, true}) {
        require(StringUtils::isFilterMatched(text, filter, matchWordStart) ==
                plain::isFilterMatched(text, filter, matchWordStart));
    }
    return 0;
}
