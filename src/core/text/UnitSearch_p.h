#pragma once

#include <QChar>
#include <QStringView>
#include <algorithm>
#include <vector>

/// Finds one text in others unit by unit, in time linear in both whatever they hold.
///
/// The text searched for is not copied and must outlive the searcher.
class UnitSearch
{
public:
    explicit UnitSearch(QStringView wanted)
        : m_wanted(wanted)
    {
        if (wanted.size() > longestTriedInPlace) {
            findBorders();
        }
    }

    /// The first position at or behind \a from, a position in \a text or its end, at which \a text holds what
    /// is searched for, or -1.
    [[nodiscard]] qsizetype indexIn(QStringView text, qsizetype from = 0) const
    {
        if (m_wanted.isEmpty()) {
            return from;
        }
        return m_borders.empty() ? tryEachPlace(text, from) : followBorders(text, from);
    }

private:
    // Up to this length, comparing afresh at each place is quicker than looking back, and still bounded.
    static constexpr qsizetype longestTriedInPlace = 32;

    [[nodiscard]] qsizetype tryEachPlace(QStringView text, qsizetype from) const
    {
        char16_t const* const units = text.utf16();
        char16_t const* const wanted = m_wanted.utf16();
        qsizetype const length = m_wanted.size();
        qsizetype const last = text.size() - length;
        for (qsizetype at = from; at <= last; ++at) {
            if (units[at] == wanted[0] && std::equal(wanted + 1, wanted + length, units + at + 1)) {
                return at;
            }
        }
        return -1;
    }

    /// For each prefix of the text searched for, the length of the longest shorter prefix that ends it.
    void findBorders();
    [[nodiscard]] qsizetype followBorders(QStringView text, qsizetype from) const;

    QStringView m_wanted;
    std::vector<qsizetype> m_borders;
};

/// Writes \a text to \a out with every character case-folded as a comparison that ignores case folds it.
///
/// Each folded character has the length of the original, so positions in both are the same.
/// \return the place behind what was written
char16_t* writeFolded(QStringView text, char16_t* out);

/// Writes \a text to \a out in lower case, as QString::toLower() gives it; \a out has room for twice the
/// length of \a text.
///
/// \return the place behind what was written; null when \a text holds half a character, for which
///         QString::toLower() has rules of its own
char16_t* writeLower(QStringView text, char16_t* out);
