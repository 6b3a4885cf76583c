#pragma once

// The one place that talks to libphonenumber's singletons.

#include "PhoneNumber.h"

#include <phonenumbers/phonenumber.pb.h>
#include <phonenumbers/phonenumberutil.h>
#include <phonenumbers/shortnumberinfo.h>

#include <string>

namespace Softphone {

using Plans = i18n::phonenumbers::PhoneNumberUtil;
using PlanNumber = i18n::phonenumbers::PhoneNumber;

/// The plans of all countries. The first call loads them, which takes some milliseconds.
[[nodiscard]] Plans const& plans();

/// The short numbers of all countries, loaded by the first call.
[[nodiscard]] i18n::phonenumbers::ShortNumberInfo const& shortNumbers();

/// \a region as libphonenumber has its keys; empty when that cannot be.
[[nodiscard]] std::string regionKey(QString const& region);

/// Whether \a digits are an emergency number in \a region or of the core's table.
[[nodiscard]] bool isEmergency(QString const& digits, std::string const& region);

/// Whether people in \a region reach an emergency service or another service by the short number \a digits.
[[nodiscard]] bool isKnownShort(QString const& digits, std::string const& region);

/// Converts numbers from what was read, and to what the forms are made of.
struct NumberFields
{
    static PhoneNumber fromPlan(PlanNumber const& number);
    static PhoneNumber fromShort(QString const& digits, std::string const& region);
    static PlanNumber toPlan(PhoneNumber const& number);

    static void setExtension(PhoneNumber& number, QString const& extension)
    {
        number.m_extension = extension;
    }
    static bool isShort(PhoneNumber const& number) { return !number.m_short.isEmpty(); }
    static bool isCountryAssumed(PhoneNumber const& number) { return number.m_countryAssumed; }
};

} // namespace Softphone
