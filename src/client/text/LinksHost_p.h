#pragma once

// Host names as they stand in running text, and the characters around them.

#include "../CodePoints_p.h"
#include "AsciiSet_p.h"

#include <QStringView>
#include <optional>

namespace Softphone::Addresses {

constexpr bool isAsciiLetter(QChar c)
{
    return (c.unicode() | 0x20U) - u'a' < 26;
}

inline constexpr AsciiSet asciiAlnum("0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ");
inline constexpr AsciiSet asciiHostCharacters = asciiAlnum | AsciiSet("-._");

[[nodiscard]] bool isAscii(QStringView text);

/// Joiners shape the letters around them and end no name.
constexpr bool isJoiner(char32_t c)
{
    return c == 0x200c || c == 0x200d;
}

/// The part of isHostCharacter() that asks Unicode.
[[nodiscard]] bool isHostCharacterOfOtherScript(char32_t c);

/// Whether \a c may stand in a host name: letters, marks and digits of any script, '-', '.' and '_'.
[[nodiscard]] inline bool isHostCharacter(char32_t c)
{
    return c < 0x80 ? asciiHostCharacters.contains(c) : isHostCharacterOfOtherScript(c);
}

/// Where the host characters around \a place begin, not before \a floor. Two dots in a row end them.
[[nodiscard]] qsizetype hostRunBegin(QStringView text, qsizetype place, qsizetype floor);

/// Where the host characters that begin at \a place end.
[[nodiscard]] qsizetype hostRunEnd(QStringView text, qsizetype place);

/// The end of \a run, which ends at \a end, without what ends no host name.
[[nodiscard]] qsizetype withoutHostPunctuation(QStringView text, qsizetype begin, qsizetype end);

/// Whether \a host is a host name by its labels (RFC 1123) or an IPv4 address. A number that is none, though
/// some programs read one from it, is no host.
[[nodiscard]] bool isHost(QStringView host);

/// Whether \a host is a name under a top level domain that there is.
[[nodiscard]] bool isPublicHost(QStringView host);

} // namespace Softphone::Addresses
