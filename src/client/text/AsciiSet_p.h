#pragma once

#include <QChar>
#include <array>
#include <string_view>

namespace Softphone {

/// A set of ASCII characters, made by the compiler.
class AsciiSet
{
public:
    consteval explicit AsciiSet(std::string_view characters)
    {
        for (char const c : characters) {
            m_bits[static_cast<unsigned char>(c) / 64U] |= quint64{1} << static_cast<unsigned char>(c) % 64U;
        }
    }

    [[nodiscard]] consteval AsciiSet operator|(AsciiSet other) const
    {
        other.m_bits[0] |= m_bits[0];
        other.m_bits[1] |= m_bits[1];
        return other;
    }

    [[nodiscard]] constexpr bool contains(char32_t c) const
    {
        return c < 0x80 && (m_bits[c / 64U] >> c % 64U & 1U) != 0;
    }

    [[nodiscard]] constexpr bool contains(QChar c) const { return contains(char32_t{c.unicode()}); }

private:
    std::array<quint64, 2> m_bits{};
};

} // namespace Softphone
