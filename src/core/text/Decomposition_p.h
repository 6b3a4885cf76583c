#pragma once

#include <QStringView>
#include <QtGlobal>
#include <array>
#include <bitset>
#include <limits>
#include <string>
#include <vector>

/// What dropping the marks of a text does to each character, ready to be looked up without an allocation.
///
/// QChar::decomposition() makes a string for each character and goes one step only. Hangul syllables are not
/// held here: their letters are computed.
class DecompositionTable
{
public:
    /// The one table, made on first use.
    static DecompositionTable const& instance();

    /// Whether \a unit is a character of its own that neither decomposes nor is a mark.
    [[nodiscard]] bool staysAsItIs(char16_t unit) const { return m_staying.test(unit); }

    /// The full canonical decomposition of \a character, empty when it has none.
    [[nodiscard]] QStringView find(char32_t character) const
    {
        std::size_t const page = character / pageSize;
        if (page >= m_pages.size()) {
            return {};
        }
        Place const place = m_places[m_pages[page] * pageSize + character % pageSize];
        return QStringView(m_units.data() + place.offset, place.size);
    }

private:
    /// Where in m_units a decomposition stands.
    struct Place
    {
        quint16 offset = 0;
        quint16 size = 0;
    };

    static constexpr std::size_t pageSize = 256;
    // No character above the supplementary ideographs has a decomposition.
    static constexpr char32_t end = 0x3'0000;

    DecompositionTable();
    void add(char32_t character);

    std::bitset<std::numeric_limits<char16_t>::max() + 1> m_staying;
    std::array<quint16, end / pageSize> m_pages{}; ///< page 0 of m_places is the empty one
    std::vector<Place> m_places;
    std::u16string m_units;
};

/// Whether \a character is a precomposed Hangul syllable.
constexpr bool isHangulSyllable(char32_t character)
{
    return character >= 0xAC00 && character <= 0xD7A3;
}

/// The two or three letters that the Hangul syllable \a character consists of; the third is 0 if there is
/// none.
std::array<char16_t, 3> decomposeHangul(char32_t character);
