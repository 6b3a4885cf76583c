#pragma once

#include <softphonecore_export.h>

#include <QString>
#include <map>
#include <optional>
#include <string>
#include <utility>

/// The rules for telephone numbers: country code, cleaning of typed and pasted numbers, comparison, the DTMF
/// tail of a dial string, and emergency numbers.
///
/// The home country is fixed: its code is 39, and the emergency table holds its short numbers. A digit is '0'
/// to '9' or a single UTF-16 unit above 127 whose Unicode category is decimal digit; a DTMF symbol is '*' or
/// '#'; a pause is ','. Any thread; all operations take time linear in their arguments.
///
/// \code
/// PhoneNumberLiterals::validatePhoneNumber("tel:+39 333-1234567,,99#", "+0123456789", true, true);
/// // "00393331234567"
/// PhoneNumberLiterals::extractDTMFSignalsFromNumber("0612345678,,123#"); // ",,123#"
/// \endcode
class SOFTPHONECORE_EXPORT PhoneNumberLiterals
{
public:
    PhoneNumberLiterals() = delete;

    /// The national emergency numbers and their descriptions. Filled when the library is loaded.
    static std::map<QString, QString> const EMERGENCY_NUMBERS;

    /// The calling code of the home country.
    [[nodiscard]] static int getCountryCode();

    /// The pattern of a mobile number, an ECMAScript regular expression: an optional international prefix,
    /// bare or in brackets, and 9 or 10 digits.
    [[nodiscard]] static std::string getMobileValidateRegexpr();

    /// The pattern of any contact's number, an ECMAScript regular expression: as getMobileValidateRegexpr(),
    /// with 9 to 11 digits.
    [[nodiscard]] static std::string getGeneralContactNumberValidateRegexpr();

    /// Splits \a number at the first character that is one of \a startChars.
    ///
    /// The place is found over the UTF-8 bytes of both texts and then used as a position in \a number. With
    /// characters beyond ASCII before the match the split is therefore further right than the match; dialled
    /// numbers depend on it.
    ///
    /// \return the character there, and what follows it; two empty texts when there is none, or when the
    ///         position lies beyond the end of \a number
    [[nodiscard]] static std::pair<QString, QString> processPhoneNumberPrefix(QString const& number,
                                                                              QString const& startChars);

    /// Removes from \a number everything but digits, in place.
    ///
    /// \param number             the number
    /// \param allowDtmfSymbols   whether '*' and '#' stay too
    /// \param allowPause         whether ',' stays too
    static void filterInvalidPhoneNumberCharacters(QString& number, bool allowDtmfSymbols, bool allowPause);

    /// The digits, DTMF symbols and pauses of \a number, and its '+' when that is the first character.
    ///
    /// \param number            the number as typed
    /// \param plusAsDoubleZero  whether the leading '+' becomes "00"
    /// \return the clean number; empty when nothing is left
    [[nodiscard]] static QString sanitizePhoneNumber(QString const& number, bool plusAsDoubleZero);

    /// \a number without "0039" or "+39" at its start. Nothing is cleaned first.
    [[nodiscard]] static QString removeCountryCodeFromMobileNumber(QString const& number);

    /// Whether \a a and \a b call the same subscriber: whether they are the same, and not empty, without
    /// their country code and cleaned by sanitizePhoneNumber().
    [[nodiscard]] static bool comparePhoneNumbers(QString const& a, QString const& b);

    /// Whether \a number stands for a caller who hides theirs: "anonymous" in any case, without trimming.
    [[nodiscard]] static bool isAnonymousNumber(QString const& number);

    /// Makes a number that can be dialled of a typed or pasted one.
    ///
    /// What stands before the lead character is dropped, and so are the first ',' after it and all that
    /// follows. Between them, digits stay.
    ///
    /// \param number             the number as typed
    /// \param startChars         the characters that may lead a number (see processPhoneNumberPrefix()); the
    ///                           lead character itself is never filtered
    /// \param plusAsDoubleZero   whether a lead character '+' becomes "00"
    /// \param stripDtmfSymbols   whether '*' and '#' are dropped too
    /// \return the number to dial; empty when \a number has no lead character
    [[nodiscard]] static QString validatePhoneNumber(QString const& number, QString const& startChars,
                                                     bool plusAsDoubleZero, bool stripDtmfSymbols);

    /// The DTMF tail of the dial string \a number: its digits, symbols and pauses without the number proper.
    ///
    /// The number proper is the first non-empty part between commas. It is removed wherever it occurs, also
    /// inside the tail. Every comma that is left is a pause.
    ///
    /// \return the tail; empty when there is none
    [[nodiscard]] static QString extractDTMFSignalsFromNumber(QString const& number);

    /// The description of the emergency number \a number in EMERGENCY_NUMBERS; nothing for any other text.
    /// The number is not cleaned first.
    [[nodiscard]] static std::optional<QString> getEmergencyInfoByPhoneNumber(QString const& number);
};
