#pragma once

// What a person typed or pasted, taken apart: the part that is dialled, the extension, the tones.

#include "NumberPlans_p.h"

#include <QStringView>
#include <optional>
#include <string>

namespace Softphone {

/// What costs time goes no further than this many visible characters.
constexpr qsizetype longestNumberText = 250;

/// The longest number of any plan, in digits.
constexpr qsizetype mostDigits = 17;

/// How many digits services and extensions have; the emergency numbers of some countries have fewer.
constexpr qsizetype fewestShortDigits = 3;
constexpr qsizetype mostShortDigits = 6;

constexpr bool isAsciiDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

/// \a c as it counts in a number: ASCII for digits of any script, wide forms, blanks and dashes. A null
/// character for what nobody sees: marks, controls, soft hyphens.
[[nodiscard]] char32_t visibleCharacter(char32_t c);

/// \a text as it counts in a number, character by character, without what nobody sees.
[[nodiscard]] QString visibleText(QStringView text);

/// The digits of \a text, and a '+' in front of the first one.
[[nodiscard]] QString digitsOf(QStringView text);

/// Whether \a text is a date and nothing else: day, month and year with separators, in any order.
[[nodiscard]] bool isDate(QStringView text);

/// The length of "int. 12" or another extension at the beginning of \a text; 0 when there is none.
[[nodiscard]] qsizetype extensionLength(QStringView text);

/// How much of \a text, which has no letters, is its first number: all of it, unless another number or
/// another ending follows, as in "06 1234567 / 06 7654321" and "06 1234567/8".
[[nodiscard]] qsizetype firstNumberLength(QStringView text, std::string const& region);

struct TypedNumber
{
    QString dialled; ///< digits, with a '+' in front where typed; or a service code
    QString extension;
    QString tones;                     ///< from the first ',' or ';' on
    std::optional<PhoneNumber> number; ///< as the plans know it, with the extension
};

/// Takes \a text apart, as typed in \a region; nothing when it holds no number.
[[nodiscard]] std::optional<TypedNumber> readTypedNumber(QString const& text, std::string const& region);

} // namespace Softphone
