#include "CaseFolding_p.h"

#include <QChar>

FoldedText::FoldedText(QStringView original)
    : text(original)
{
    folded.reserve(static_cast<std::size_t>(text.size()));
    QChar previous;
    for (QChar const unit : text) {
        bool const endsPair = unit.isLowSurrogate() && previous.isHighSurrogate();
        folded +=
            QChar::toCaseFolded(endsPair ? QChar::surrogateToUcs4(previous, unit) : char32_t(unit.unicode()));
        previous = unit;
    }
}

qsizetype CaseBlindSearch::indexIn(FoldedText const& text)
{
    // Half a character is found inside whole ones when nothing else is wanted, and only then.
    QStringView const wanted = m_wanted.text;
    return wanted.size() == 1 && wanted.front().isLowSurrogate() ? text.text.indexOf(wanted.front())
                                                                 : m_search.indexIn(text.folded);
}
