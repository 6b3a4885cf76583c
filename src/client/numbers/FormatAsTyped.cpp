#include "PhoneNumber.h"

#include "NumberPlans_p.h"
#include "TypedNumber_p.h"

#include <phonenumbers/asyoutypeformatter.h>

#include <algorithm>
#include <functional>
#include <memory>

namespace Softphone {

namespace {

/// Whether formatting may put \a c between the digits, or take it away.
bool isSeparator(QChar c)
{
    return QStringView(u" -()./").contains(c);
}

/// Whether \a text is digits and what formatting may have put between them.
bool isPartOfNumber(QStringView text)
{
    QStringView const digits = text.startsWith(u'+') ? text.sliced(1) : text;
    return std::ranges::all_of(digits, [](QChar c) { return isAsciiDigit(c) || isSeparator(c); });
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

qsizetype cursorInFormatted(QString const& typed, qsizetype cursor, QString const& formatted)
{
    if (cursor >= typed.size()) {
        return formatted.size();
    }
    qsizetype const before = std::max<qsizetype>(cursor, 0);
    if (typed == formatted) {
        return before;
    }
    QString const passed = visibleText(QStringView(typed).first(before));
    auto left = std::ranges::count_if(passed, std::not_fn(isSeparator));
    qsizetype place = 0;
    while (left > 0 && place < formatted.size()) {
        left -= isSeparator(formatted[place]) ? 0 : 1;
        ++place;
    }
    return place;
}

} // namespace Softphone
