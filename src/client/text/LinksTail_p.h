#pragma once

// Where an address ends in running text.

#include <QList>
#include <QStringView>

namespace Softphone::Addresses {

/// The part of endsAddress() that asks Unicode.
[[nodiscard]] bool isEndOfOtherScript(char32_t c);

/// Whether \a c ends every address: blanks, controls, marks of direction, '<', '>'.
[[nodiscard]] inline bool endsAddress(char32_t c)
{
    return c < 0x80 ? c <= U' ' || c == 0x7f || c == U'<' || c == U'>' : isEndOfOtherScript(c);
}

/// Finds where addresses end: their path, query and fragment, or all after the scheme.
///
/// Addresses are asked for from left to right. Which brackets stay open is found out once for all addresses
/// up to the next blank, so that all calls together are linear, even where each address holds the next one in
/// a bracket that nobody closes.
class LinksTail
{
public:
    explicit LinksTail(QStringView text)
        : m_text(text)
    {
    }

    /// The end of the address that stands from \a begin and has been read up to \a place.
    [[nodiscard]] qsizetype end(qsizetype begin, qsizetype place);

private:
    [[nodiscard]] bool goesOn(char32_t c);
    [[nodiscard]] bool takesQuote();
    [[nodiscard]] bool isWordNext() const;
    [[nodiscard]] bool isOpenBracket();
    void findOpenBrackets();
    [[nodiscard]] qsizetype withoutPunctuation(qsizetype from) const;

    QStringView m_text;

    // The address that is being read.
    qsizetype m_place = 0;
    QChar m_before; ///< what stands in front of it
    qsizetype m_depth = 0;
    qsizetype m_apostrophes = 0;
    bool m_inQuote = false;

    // The brackets that do not close, up to the next blank.
    QList<qsizetype> m_open;
    qsizetype m_openUpTo = 0;
};

} // namespace Softphone::Addresses
