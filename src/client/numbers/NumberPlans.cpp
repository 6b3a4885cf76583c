#include "NumberPlans_p.h"

#include <phonenumbers/logger.h>

#include <string_view>
#include <telephony/PhoneNumberLiterals.h>
#include <typeinfo>

namespace Softphone {

namespace {

/// libphonenumber's logger is one for the process, and prints unless somebody sets another. Replacing it
/// would free one that others in the process may be using, so the printing one is turned down where it is
/// still in place.
void silenceDefaultLogger()
{
    using i18n::phonenumbers::Logger;
    Logger* const logger = Logger::mutable_logger_impl();
    if (logger == nullptr) {
        return;
    }
    if (std::string_view(typeid(*logger).name()).find("StdoutLogger") != std::string_view::npos) {
        logger->set_level(0);
    }
}

Plans const& loadPlans()
{
    Plans const* const loaded = Plans::GetInstance();
    silenceDefaultLogger();
    return *loaded;
}

char upperLetter(QChar c)
{
    return static_cast<char>(c.unicode() & ~0x20U);
}

bool isAsciiLetter(QChar c)
{
    return c.unicode() < 0x80 && c.isLetter();
}

} // namespace

Plans const& plans()
{
    static Plans const& instance = loadPlans();
    return instance;
}

i18n::phonenumbers::ShortNumberInfo const& shortNumbers()
{
    static i18n::phonenumbers::ShortNumberInfo const instance;
    return instance;
}

std::string regionKey(QString const& region)
{
    if (region.size() != 2 || !isAsciiLetter(region[0]) || !isAsciiLetter(region[1])) {
        return {};
    }
    return {upperLetter(region[0]), upperLetter(region[1])};
}

bool isEmergency(QString const& digits, std::string const& region)
{
    return PhoneNumberLiterals::EMERGENCY_NUMBERS.contains(digits) ||
           shortNumbers().IsEmergencyNumber(digits.toStdString(), region);
}

bool isKnownShort(QString const& digits, std::string const& region)
{
    if (isEmergency(digits, region)) {
        return true;
    }
    // The short plans are asked by country and number, not by text.
    PlanNumber number;
    number.set_country_code(plans().GetCountryCodeForRegion(region));
    number.set_national_number(digits.toULongLong());
    return number.country_code() != 0 && !digits.startsWith(u'0') &&
           shortNumbers().IsValidShortNumberForRegion(number, region);
}

PhoneNumber NumberFields::fromPlan(PlanNumber const& number)
{
    PhoneNumber made;
    made.m_country = number.country_code();
    made.m_national = number.national_number();
    made.m_zeros = number.italian_leading_zero() ? number.number_of_leading_zeros() : 0;
    made.m_extension = QString::fromStdString(number.extension());
    made.m_countryAssumed = number.country_code_source() == PlanNumber::FROM_DEFAULT_COUNTRY;
    return made;
}

PhoneNumber NumberFields::fromShort(QString const& digits, std::string const& region)
{
    PhoneNumber made;
    made.m_short = digits;
    made.m_shortRegion = QString::fromStdString(region);
    made.m_country = plans().GetCountryCodeForRegion(region);
    return made;
}

PlanNumber NumberFields::toPlan(PhoneNumber const& number)
{
    PlanNumber made;
    made.set_country_code(number.m_country);
    made.set_national_number(number.m_national);
    if (number.m_zeros > 0) {
        made.set_italian_leading_zero(true);
        made.set_number_of_leading_zeros(number.m_zeros);
    }
    if (!number.m_extension.isEmpty()) {
        made.set_extension(number.m_extension.toStdString());
    }
    return made;
}

} // namespace Softphone
