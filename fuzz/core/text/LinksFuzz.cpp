// HTMLHelpers::processLinks against the expression that defines it, on texts short enough for the engine.

#include <text/HTMLHelpers.h>

#include "FuzzText.h"

#include <LinkOracle.h>
#include <QStringList>

namespace {

constexpr std::size_t longestText = 64;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size > longestText) {
        return 0;
    }
    QString const text = QString::fromUtf8(reinterpret_cast<char const*>(data), static_cast<qsizetype>(size));
    QString const html = HTMLHelpers::processLinks(text);
    if (auto const expected = LinkOracle::processLinks(text)) {
        require(html == *expected);
    }
    QStringList lines = text.split(u'\n');
    for (QString& line : lines) {
        line = HTMLHelpers::processLinks(line);
    }
    require(HTMLHelpers::generateParagraphs(text) == lines.join(QStringLiteral("<br>")));
    return 0;
}
