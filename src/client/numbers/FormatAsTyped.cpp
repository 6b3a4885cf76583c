#include "PhoneNumber.h"

#include "NumberPlans_p.h"
#include "TypedNumber_p.h"

#include <phonenumbers/asyoutypeformatter.h>

#include <algorithm>
#include <memory>

namespace Softphone {

namespace {

/// Whether \a text is digits and what formatting may have put between them.
bool isPartOfNumber(QStringView text)
{
    QStringView const digits = text.startsWith(u'+') ? text.sliced(1) : text;
    return std::ranges::all_of(digits,
                               [](QChar c) { return isAsciiDigit(c) || QStringView(u" -()./").contains(c); });
}

QString formatDigits(QString const& digits, std::string const& region)
{
    std::unique_ptr<i18n::phonenumbers::AsYouTypeFormatter> const formatter(
        plans().GetAsYouTypeFormatter(region));
    std::string formatted;
    for (QChar const c : digits) {
        formatter->InputDigit(c.unicode(), &formatted);
    }
    return QString::fromStdString(formatted);
}

} // namespace

QString formatAsTyped(QString const& typed, QString const& region)
{
    constexpr qsizetype mostFormatted = 20;
    QString const visible = visibleText(typed);
    qsizetype const end =
        std::ranges::find_if(visible, [](QChar c) { return c == u',' || c == u';'; }) - visible.begin();
    QString const number = visible.first(end).trimmed();
    QString const digits = digitsOf(number);
    bool const keep = number.contains(QLatin1String("(0)")) || isDate(number) || !isPartOfNumber(number);
    if (digits.isEmpty() || digits.size() > mostFormatted || keep) {
        return typed;
    }
    QString const formatted = formatDigits(digits, regionKey(region));
    return (digitsOf(formatted) == digits ? formatted : digits) + visible.sliced(end);
}

} // namespace Softphone
