#include "PhoneNumber.h"

#include "NumberPlans_p.h"
#include "TypedNumber_p.h"

namespace Softphone {

namespace {

QString format(PlanNumber const& number, Plans::PhoneNumberFormat form)
{
    std::string text;
    plans().Format(number, form, &text);
    return QString::fromStdString(text);
}

NumberKind kindOf(Plans::PhoneNumberType type)
{
    switch (type) {
    case Plans::FIXED_LINE:
        return NumberKind::FixedLine;
    case Plans::MOBILE:
        return NumberKind::Mobile;
    case Plans::FIXED_LINE_OR_MOBILE:
        return NumberKind::FixedLineOrMobile;
    case Plans::TOLL_FREE:
        return NumberKind::TollFree;
    case Plans::PREMIUM_RATE:
        return NumberKind::PremiumRate;
    case Plans::SHARED_COST:
        return NumberKind::SharedCost;
    case Plans::VOIP:
        return NumberKind::Voip;
    case Plans::PERSONAL_NUMBER:
        return NumberKind::Personal;
    case Plans::PAGER:
        return NumberKind::Pager;
    case Plans::UAN:
        return NumberKind::Universal;
    case Plans::VOICEMAIL:
        return NumberKind::Voicemail;
    case Plans::UNKNOWN:
        break;
    }
    return NumberKind::Unknown;
}

NumberMatch gradeOf(Plans::MatchType type)
{
    switch (type) {
    case Plans::EXACT_MATCH:
        return NumberMatch::Exact;
    case Plans::NSN_MATCH:
        return NumberMatch::National;
    case Plans::SHORT_NSN_MATCH:
        return NumberMatch::Short;
    case Plans::NO_MATCH:
    case Plans::INVALID_NUMBER:
        break;
    }
    return NumberMatch::None;
}

/// The national digits agree, and the country codes may too: one is only assumed, or both are those of San
/// Marino, whose numbers Italy has under its own code as well.
bool agreeNationally(PlanNumber const& first, bool firstAssumed, PlanNumber const& second, bool secondAssumed)
{
    constexpr int italy = 39;
    constexpr int sanMarino = 378;
    bool const digits = first.national_number() == second.national_number() &&
                        first.number_of_leading_zeros() == second.number_of_leading_zeros() &&
                        first.italian_leading_zero() == second.italian_leading_zero() &&
                        first.extension() == second.extension();
    bool const neighbours = first.country_code() + second.country_code() == italy + sanMarino &&
                            (first.country_code() == italy || second.country_code() == italy);
    return digits && (neighbours || firstAssumed != secondAssumed);
}

} // namespace

std::optional<PhoneNumber> PhoneNumber::parse(QString const& text, QString const& region)
{
    std::optional<TypedNumber> const typed = readTypedNumber(text, regionKey(region));
    return typed ? typed->number : std::nullopt;
}

QString PhoneNumber::e164() const
{
    return m_country == 0 || !m_short.isEmpty() ? m_short : format(NumberFields::toPlan(*this), Plans::E164);
}

QString PhoneNumber::international() const
{
    return m_country == 0 || !m_short.isEmpty() ? m_short
                                                : format(NumberFields::toPlan(*this), Plans::INTERNATIONAL);
}

QString PhoneNumber::national() const
{
    return m_country == 0 || !m_short.isEmpty() ? m_short
                                                : format(NumberFields::toPlan(*this), Plans::NATIONAL);
}

QUrl PhoneNumber::uri() const
{
    if (m_short.isEmpty()) {
        return m_country == 0 ? QUrl() : QUrl(format(NumberFields::toPlan(*this), Plans::RFC3966));
    }
    QString const extension = m_extension.isEmpty() ? QString() : QStringLiteral(";ext=") + m_extension;
    QString const context =
        m_country == 0 ? QString() : QStringLiteral(";phone-context=+") + QString::number(m_country);
    return QUrl(QStringLiteral("tel:") + m_short + extension + context);
}

QString PhoneNumber::region() const
{
    if (!m_short.isEmpty() || m_country == 0) {
        return m_shortRegion;
    }
    std::string region;
    plans().GetRegionCodeForNumber(NumberFields::toPlan(*this), &region);
    return region == "ZZ" ? QString() : QString::fromStdString(region);
}

NumberKind PhoneNumber::kind() const
{
    bool const known = m_short.isEmpty() && m_country != 0;
    return known ? kindOf(plans().GetNumberType(NumberFields::toPlan(*this))) : NumberKind::Unknown;
}

bool PhoneNumber::isValid() const
{
    if (!m_short.isEmpty()) {
        return isKnownShort(m_short, m_shortRegion.toStdString());
    }
    return m_country != 0 && plans().IsValidNumber(NumberFields::toPlan(*this));
}

NumberMatch PhoneNumber::match(PhoneNumber const& first, PhoneNumber const& second)
{
    bool const whole = NumberFields::isShort(first) || NumberFields::isShort(second) ||
                       first.m_country == 0 || second.m_country == 0;
    if (whole) {
        return first == second && !first.e164().isEmpty() ? NumberMatch::Exact : NumberMatch::None;
    }
    PlanNumber const a = NumberFields::toPlan(first);
    PlanNumber const b = NumberFields::toPlan(second);
    NumberMatch const grade = gradeOf(plans().IsNumberMatch(a, b));
    bool const national =
        grade == NumberMatch::None && agreeNationally(a, first.m_countryAssumed, b, second.m_countryAssumed);
    return national ? NumberMatch::National : grade;
}

} // namespace Softphone
