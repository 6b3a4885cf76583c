#pragma once

// Looking for single units in long texts, eight at a time. Compilers do not find this out by themselves: they
// make branches of the comparisons.

#include <QStringView>
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace Softphone {

/// Eight units of a text; comparisons give all bits of those for which they hold.
using Units [[gnu::vector_size(16)]] = quint16;

/// Eight times \a c.
[[nodiscard]] constexpr Units eightOf(char16_t c)
{
    return Units{} + static_cast<quint16>(c);
}

[[nodiscard]] inline Units loadUnits(char16_t const* from)
{
    Units loaded;
    std::memcpy(&loaded, from, sizeof(loaded));
    return loaded;
}

/// The place of the first of four comparisons that hold; 4 for none.
[[nodiscard]] constexpr int firstOfFour(quint64 comparisons)
{
    constexpr int bits = 16;
    bool const firstIsLow = std::endian::native == std::endian::little;
    return (firstIsLow ? std::countr_zero(comparisons) : std::countl_zero(comparisons)) / bits;
}

/// The first place in \a text, from \a begin to \a end, for whose unit \a condition holds; \a end for none.
///
/// \param condition  is given eight units and what follows each of them, which is 0 at the end of \a text
template <typename Condition>
[[nodiscard]] qsizetype findUnit(QStringView text, qsizetype begin, qsizetype end, Condition condition)
{
    constexpr qsizetype atOnce = 8;
    auto const find = [condition](char16_t const* place) {
        auto const [left, right] =
            std::bit_cast<std::array<quint64, 2>>(condition(loadUnits(place), loadUnits(place + 1)));
        return left != 0 ? firstOfFour(left) : atOnce / 2 + firstOfFour(right);
    };
    qsizetype place = begin;
    for (; place < end && place + atOnce < text.size(); place += atOnce) {
        if (qsizetype const found = find(text.utf16() + place); found < atOnce) {
            return std::min(place + found, end);
        }
    }
    if (place >= end) {
        return end;
    }
    std::array<char16_t, atOnce + 1> rest{};
    std::copy_n(text.utf16() + place, text.size() - place, rest.begin());
    return std::min(place + find(rest.data()), end);
}

} // namespace Softphone
