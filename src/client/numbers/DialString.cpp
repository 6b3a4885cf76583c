#include "PhoneNumber.h"

#include "NumberPlans_p.h"
#include "TypedNumber_p.h"

#include <algorithm>

namespace Softphone {

namespace {

bool isSipAddress(QStringView text)
{
    return text.startsWith(u"sip:", Qt::CaseInsensitive) || text.startsWith(u"sips:", Qt::CaseInsensitive);
}

bool isInvisible(QChar c)
{
    return c.category() == QChar::Other_Format;
}

/// \a typed without invisible marks and blanks around it, and out of the angle brackets of a mail program.
QString bareAddress(QString typed)
{
    typed.removeIf(isInvisible);
    QString const text = typed.trimmed();
    qsizetype const bracket = text.endsWith(u'>') ? text.lastIndexOf(u'<') : -1;
    return bracket < 0 ? text : text.sliced(bracket + 1).chopped(1).trimmed();
}

/// \a address if there is somebody to call and nothing in it could break out of a message.
QString wholeAddress(QString const& address)
{
    bool const broken = std::ranges::any_of(address, [](QChar c) {
        return c.isSpace() || c.category() == QChar::Other_Control || c == u'<' || c == u'>';
    });
    bool const nobody = address.size() == address.indexOf(u':') + 1;
    return broken || nobody ? QString() : address;
}

/// The short number that \a number is with a country code in front, which people and address books write and
/// no exchange understands; empty when it is none of \a region.
QString withoutCountryCode(PhoneNumber const& number, std::string const& region)
{
    PlanNumber const plan = NumberFields::toPlan(number);
    std::string significant;
    plans().GetNationalSignificantNumber(plan, &significant);
    QString const digits = QString::fromStdString(significant);
    bool const own = plan.country_code() == plans().GetCountryCodeForRegion(region);
    return own && isKnownShort(digits, region) ? digits : QString();
}

QString numberToDial(TypedNumber const& typed, std::string const& region)
{
    if (!typed.number || NumberFields::isCountryAssumed(*typed.number)) {
        return typed.dialled;
    }
    PhoneNumber const& number = *typed.number;
    bool const isKnown = number.isValid() || NumberFields::isShort(number);
    QString const digits = isKnown ? number.e164() : withoutCountryCode(number, region);
    return digits.isEmpty() ? typed.dialled : digits;
}

/// Whether \a dialled is a sign with nothing but zeros, which reaches nobody.
bool isPrefixAlone(QStringView dialled)
{
    return dialled.startsWith(u'+') &&
           std::ranges::all_of(dialled.sliced(1), [](QChar c) { return c == u'0'; });
}

} // namespace

QString dialString(QString const& typed, QString const& region, PlusSign plus)
{
    QString const address = bareAddress(typed);
    if (isSipAddress(address)) {
        return wholeAddress(address);
    }
    std::string const key = regionKey(region);
    std::optional<TypedNumber> const number = readTypedNumber(typed, key);
    if (!number) {
        return {};
    }
    QString dialled = numberToDial(*number, key);
    if (isPrefixAlone(dialled)) {
        return {};
    }
    if (plus == PlusSign::DoubleZero) {
        dialled.replace(u'+', QLatin1String("00"));
    }
    QString const extension = number->extension.isEmpty() ? QString() : QLatin1Char(',') + number->extension;
    return dialled + extension + number->tones;
}

} // namespace Softphone
