#pragma once

#include "../PatternSearch_p.h"

#include <QStringView>
#include <string>

/// A text made ready for searches that ignore case; it must outlive this object.
struct FoldedText
{
    explicit FoldedText(QStringView original);

    QStringView text;
    /// One element for each UTF-16 unit, so that positions here are positions in the text. The second half of
    /// a character stands as the whole folded character, since that alone tells capital from small letters.
    std::u32string folded;
};

/// Finds one text in others as Qt does with Qt::CaseInsensitive, but in time linear in both.
class CaseBlindSearch
{
public:
    explicit CaseBlindSearch(QStringView wanted)
        : m_wanted(wanted)
        , m_search(m_wanted.folded)
    {
    }
    CaseBlindSearch(CaseBlindSearch const&) = delete;
    CaseBlindSearch& operator=(CaseBlindSearch const&) = delete;

    /// Whether \a text begins with what is wanted.
    [[nodiscard]] bool opens(FoldedText const& text) const
    {
        return text.folded.starts_with(m_wanted.folded);
    }

    /// The first position at which \a text holds what is wanted, or -1.
    [[nodiscard]] qsizetype indexIn(FoldedText const& text);

private:
    FoldedText m_wanted;
    PatternSearch<char32_t> m_search;
};
