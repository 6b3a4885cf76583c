#include "NumberFunctions.h"

#include <telephony/PhoneNumberLiterals.h>

#include <optional>

using Softphone::PhoneNumber;

namespace SoftphoneQml {

QVariant NumberFunctions::parse(QString const& text, QString const& region) const
{
    std::optional<PhoneNumber> const number = PhoneNumber::parse(text, region);
    return number ? QVariant::fromValue(*number) : QVariant();
}

QString NumberFunctions::dialString(QString const& typed, QString const& region,
                                    Softphone::PlusSign plus) const
{
    return Softphone::dialString(typed, region, plus);
}

QString NumberFunctions::formatAsTyped(QString const& typed, QString const& region) const
{
    return Softphone::formatAsTyped(typed, region);
}

int NumberFunctions::cursorInFormatted(QString const& typed, int cursor, QString const& formatted) const
{
    return static_cast<int>(Softphone::cursorInFormatted(typed, cursor, formatted));
}

QList<Softphone::FoundNumber> NumberFunctions::find(QString const& text, QString const& region) const
{
    return Softphone::findPhoneNumbers(text, region);
}

Softphone::NumberMatch NumberFunctions::match(PhoneNumber const& first, PhoneNumber const& second) const
{
    return PhoneNumber::match(first, second);
}

QString NumberFunctions::emergencyService(QString const& digits) const
{
    return PhoneNumberLiterals::getEmergencyInfoByPhoneNumber(digits).value_or(QString());
}

} // namespace SoftphoneQml
