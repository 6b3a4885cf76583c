#pragma once

#include <QString>
#include <cstdint>
#include <cstdlib>
#include <cstring>

/// Ends the process when \a holds is false, which the fuzzer reports as a find.
inline void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

/// \a data as UTF-16 units as they come, so that halves of characters are among them.
inline QString unitsFrom(std::uint8_t const* data, std::size_t size)
{
    QString text(static_cast<qsizetype>(size / sizeof(char16_t)), Qt::Uninitialized);
    if (!text.isEmpty()) {
        std::memcpy(text.data(), data, size / sizeof(char16_t) * sizeof(char16_t));
    }
    return text;
}

/// \a data as UTF-8, or as UTF-16 units when its first byte is odd; the first byte is no part of the text.
inline QString textFrom(std::uint8_t const* data, std::size_t size)
{
    if (size == 0) {
        return {};
    }
    bool const asUnits = (data[0] & 1) != 0;
    return asUnits
               ? unitsFrom(data + 1, size - 1)
               : QString::fromUtf8(reinterpret_cast<char const*>(data + 1), static_cast<qsizetype>(size - 1));
}
