#pragma once

// Characters of a text, where two units may be one.

#include <QStringView>

namespace Softphone {

/// The code point at \a place; that of a lone surrogate is its own.
[[nodiscard]] inline char32_t codePointAt(QStringView text, qsizetype place)
{
    bool const pair =
        text[place].isHighSurrogate() && place + 1 < text.size() && text[place + 1].isLowSurrogate();
    return pair ? QChar::surrogateToUcs4(text[place], text[place + 1]) : text[place].unicode();
}

/// The code point that ends in front of \a place, which is not 0.
[[nodiscard]] inline char32_t codePointBefore(QStringView text, qsizetype place)
{
    bool const pair = place > 1 && text[place - 1].isLowSurrogate() && text[place - 2].isHighSurrogate();
    return codePointAt(text, pair ? place - 2 : place - 1);
}

/// How many units \a c takes.
constexpr qsizetype units(char32_t c)
{
    return c > 0xffff ? 2 : 1;
}

} // namespace Softphone
