#include "Crc16_p.h"

#include <QtEndian>
#include <array>

namespace {

constexpr std::uint16_t reversedPolynomial = 0x8408; // x^16 + x^12 + x^5 + 1, lowest bit first
constexpr std::size_t stride = 16;

/// Row r, column b: what the byte b does to the remainder when r further bytes follow it.
using Tables = std::array<std::array<std::uint16_t, 256>, stride>;

constexpr Tables makeTables()
{
    Tables tables{};
    for (std::uint16_t byte = 0; byte < 256; ++byte) {
        std::uint16_t remainder = byte;
        for (int bit = 0; bit < 8; ++bit) {
            int const reduction = (remainder & 1) != 0 ? reversedPolynomial : 0;
            remainder = static_cast<std::uint16_t>((remainder >> 1) ^ reduction);
        }
        tables[0][byte] = remainder;
    }
    for (std::size_t row = 1; row < stride; ++row) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            std::uint16_t const before = tables[row - 1][byte];
            tables[row][byte] = static_cast<std::uint16_t>((before >> 8) ^ tables[0][before & 0xFF]);
        }
    }
    return tables;
}

constexpr Tables tables = makeTables();

/// What the eight bytes of \a word do to the remainder when \a following bytes come after them.
template <std::size_t following>
unsigned contribution(std::uint64_t word)
{
    unsigned sum = 0;
    for (std::size_t i = 0; i < 8; ++i) {
        sum ^= tables[following + 7 - i][word >> (8 * i) & 0xFF];
    }
    return sum;
}

} // namespace

void Crc16::update(unsigned char const* bytes, std::size_t size)
{
    unsigned remainder = m_remainder;
    for (; size >= stride; size -= stride, bytes += stride) {
        remainder = contribution<8>(qFromLittleEndian<quint64>(bytes) ^ remainder) ^
                    contribution<0>(qFromLittleEndian<quint64>(bytes + 8));
    }
    for (; size > 0; --size, ++bytes) {
        remainder = remainder >> 8 ^ tables[0][(remainder ^ *bytes) & 0xFF];
    }
    m_remainder = static_cast<std::uint16_t>(remainder);
}
