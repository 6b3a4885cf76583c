#pragma once

#include <softphonecore_export.h>

#include <QChar>
#include <optional>

/// Translates between the DTMF signals that a user sends during a call and the characters that stand for
/// them in dial strings.
///
/// The extended letters A to D and other pause or wait characters have no signal. Any thread; no allocation.
///
/// \code
/// DTMFHelpers::translateCharToDTMFSignal('9');                          // DTMFSignal::Digit9
/// DTMFHelpers::translateDTMFSignalToChar(DTMFHelpers::DTMFSignal::Hash); // '#'
/// DTMFHelpers::isValidDTMFCharacter(u'A');                              // false
/// \endcode
class SOFTPHONECORE_EXPORT DTMFHelpers
{
public:
    /// The signals. The number of a digit's signal is the digit plus one, because 0 is the pause.
    enum class DTMFSignal : int {
        Pause = 0,   ///< ',': a pause in dialling
        Digit0 = 1,  ///< '0'
        Digit1 = 2,  ///< '1'
        Digit2 = 3,  ///< '2'
        Digit3 = 4,  ///< '3'
        Digit4 = 5,  ///< '4'
        Digit5 = 6,  ///< '5'
        Digit6 = 7,  ///< '6'
        Digit7 = 8,  ///< '7'
        Digit8 = 9,  ///< '8'
        Digit9 = 10, ///< '9'
        Star = 11,   ///< '*'
        Hash = 12,   ///< '#'
    };

    DTMFHelpers() = delete;

    /// The character that stands for \a signal; nothing for a number outside DTMFSignal.
    [[nodiscard]] static std::optional<char> translateDTMFSignalToChar(DTMFSignal signal);

    /// The signal that \a character stands for; nothing for any other character.
    [[nodiscard]] static std::optional<DTMFSignal> translateCharToDTMFSignal(char character);

    /// Whether \a character stands for a signal: ',', '0' to '9', '*' or '#'.
    [[nodiscard]] static bool isValidDTMFCharacter(QChar character);
};
