#include "TypedNumber_p.h"

#include "../CodePoints_p.h"

#include <QByteArray>
#include <QRegularExpression>
#include <algorithm>
#include <string_view>

namespace Softphone {

namespace {

constexpr bool isPrintableAscii(QChar c)
{
    return c >= u' ' && c <= u'~';
}

bool isAsciiLetter(QChar c)
{
    return c.unicode() < 0x80 && c.isLetter();
}

constexpr auto isLetter = [](QChar c) { return c.isLetter(); };

bool hasLetters(QStringView text)
{
    return std::ranges::any_of(text, isLetter);
}

qsizetype digitCount(QStringView text)
{
    return std::ranges::count_if(text, isAsciiDigit);
}

QString const& extensionLabels()
{
    static QString const labels =
        QStringLiteral("(?:interno|int|extension|extn?|xtn?|x|poste|anexo|durchwahl|dw|доб|#|~)");
    return labels;
}

QRegularExpression insensitive(QString const& pattern)
{
    return QRegularExpression(pattern, QRegularExpression::CaseInsensitiveOption);
}

/// The length of the international prefix, however often it was typed: "+", "00", "00+".
qsizetype prefixLength(QStringView number)
{
    qsizetype length = 0;
    while (length < number.size()) {
        if (number[length] == u'+') {
            ++length;
        } else if (number.sliced(length).startsWith(u"00")) {
            length += 2;
        } else {
            break;
        }
    }
    return length;
}

bool isCountryCode(QStringView code)
{
    std::string region;
    plans().GetRegionCodeForCountryCode(code.toInt(), &region);
    return region != "ZZ";
}

/// The length of a country code at the beginning of \a rest after which a country code follows again: the
/// same one, or any with a plus sign.
qsizetype supersededCode(QStringView rest)
{
    for (qsizetype length = 1; length <= 3 && length < rest.size(); ++length) {
        QStringView const code = rest.first(length);
        QStringView const after = rest.sliced(length);
        qsizetype const prefix = prefixLength(after);
        bool const again = prefix > 0 && (after[0] == u'+' || after.sliced(prefix).startsWith(code));
        if (again && isCountryCode(code)) {
            return length;
        }
    }
    return 0;
}

/// \a number, which is digits, with one country code where "+39 0039 06..." or "0039 +39 06..." has two.
QString withOneCountryCode(QString number)
{
    for (;;) {
        qsizetype const prefix = prefixLength(number);
        QStringView const rest = QStringView(number).sliced(prefix);
        qsizetype const superseded = prefix > 0 ? supersededCode(rest) : 0;
        if (superseded > 0) {
            number = rest.sliced(superseded).toString();
            continue;
        }
        bool const plus = QStringView(number).first(prefix).contains(u'+');
        QString cleaned = (plus ? rest : QStringView(number)).toString().remove(u'+');
        if (plus) {
            cleaned.prepend(u'+');
        }
        if (cleaned == number) {
            return number;
        }
        number = cleaned; // two codes that a sign kept apart may have come together
    }
}

struct Plan
{
    PlanNumber number;
    bool possible = false;

    [[nodiscard]] bool isValid() const { return possible && plans().IsValidNumber(number); }
};

Plan askPlans(QString const& digits, std::string const& region)
{
    Plan plan;
    plan.possible =
        plans().ParseAndKeepRawInput(digits.toStdString(), region, &plan.number) == Plans::NO_PARSING_ERROR;
    return plan;
}

/// In the countries whose code is their national prefix too, "1 212 ..." is national.
bool isNational(PlanNumber const& number, std::string const& region)
{
    if (number.country_code_source() != PlanNumber::FROM_NUMBER_WITHOUT_PLUS_SIGN) {
        return number.country_code_source() == PlanNumber::FROM_DEFAULT_COUNTRY;
    }
    std::string prefix;
    plans().GetNddPrefixForRegion(region, true, &prefix);
    return prefix == std::to_string(number.country_code());
}

PhoneNumber fromPlan(PlanNumber number, std::string const& region)
{
    if (isNational(number, region)) {
        number.set_country_code_source(PlanNumber::FROM_DEFAULT_COUNTRY);
    }
    return NumberFields::fromPlan(number);
}

/// Up to six digits, typed without a country code.
std::optional<PhoneNumber> understandFew(QString const& digits, std::string const& region)
{
    if (isEmergency(digits, region)) {
        return NumberFields::fromShort(digits, region);
    }
    if (digits.size() < fewestShortDigits || plans().GetCountryCodeForRegion(region) == 0) {
        return std::nullopt;
    }
    Plan const plan = askPlans(digits, region);
    return plan.isValid() ? fromPlan(plan.number, region) : NumberFields::fromShort(digits, region);
}

std::optional<PhoneNumber> understand(QString const& digits, std::string const& region)
{
    bool const plus = digits.startsWith(u'+');
    if (!plus && digits.size() <= mostShortDigits) {
        return understandFew(digits, region);
    }
    Plan plan = askPlans(digits, region);
    bool const foreignZeros = digits.startsWith(QLatin1String("00")) &&
                              plan.number.country_code_source() != PlanNumber::FROM_NUMBER_WITH_IDD;
    if (foreignZeros) {
        Plan const foreign = askPlans(QLatin1Char('+') + digits.sliced(2), region);
        plan = foreign.isValid() ? foreign : plan;
    }
    if (!plan.possible) {
        return std::nullopt;
    }
    return fromPlan(plan.number, region);
}

/// Where "(0)" stands in \a text right behind a country code: the place of the zero among the digits.
qsizetype optionalZeroPlace(QStringView text)
{
    qsizetype const place = text.indexOf(u"(0)");
    if (place < 0) {
        return -1;
    }
    QString const before = digitsOf(text.first(place));
    QString const code = withOneCountryCode(before);
    qsizetype const prefix = prefixLength(code);
    return prefix > 0 && isCountryCode(QStringView(code).sliced(prefix)) ? before.size() : -1;
}

bool losesZeroAbroad(PhoneNumber const& number)
{
    std::string region;
    std::string prefix;
    plans().GetRegionCodeForCountryCode(NumberFields::toPlan(number).country_code(), &region);
    plans().GetNddPrefixForRegion(region, true, &prefix);
    return prefix == "0";
}

TypedNumber fromDialled(QString const& digits, std::string const& region)
{
    TypedNumber typed;
    typed.dialled = withOneCountryCode(digits);
    typed.number = understand(typed.dialled, region);
    return typed;
}

bool isValid(TypedNumber const& typed)
{
    return typed.number && typed.number->isValid();
}

/// A text without letters, as a number.
TypedNumber fromDigits(QStringView text, std::string const& region)
{
    QString const digits = digitsOf(text);
    TypedNumber typed = fromDialled(digits, region);
    qsizetype const zero = optionalZeroPlace(text);
    if (zero >= 0 && !isValid(typed)) {
        TypedNumber withoutZero = fromDialled(QString(digits).remove(zero, 1), region);
        if (isValid(withoutZero) || (typed.number && losesZeroAbroad(*typed.number))) {
            return withoutZero;
        }
    }
    return typed;
}

bool isComplete(TypedNumber const& typed, std::string const& region)
{
    return isValid(typed) ||
           (typed.number && NumberFields::isShort(*typed.number) && isKnownShort(typed.dialled, region));
}

/// Where "06 1234567 / 06 7654321" and "06 1234567/8" go on with another number; the end of \a text where
/// they do not.
qsizetype separatorPlace(QStringView text)
{
    int digits = 0;
    auto const separator = std::ranges::find_if(text, [&](QChar c) {
        digits += isAsciiDigit(c) ? 1 : 0;
        return digits >= mostShortDigits && QStringView(u"/|+\n").contains(c);
    });
    return separator - text.begin();
}

TypedNumber firstNumber(QStringView text, std::string const& region)
{
    return fromDigits(text.first(firstNumberLength(text, region)), region);
}

/// What follows a figure that may belong to no number: "1. 06 1234567", "2) 06 1234567", and whatever stands
/// in front of a plus sign. Empty where there is no such figure.
QStringView afterFigure(QStringView text)
{
    constexpr qsizetype longest = 2;
    auto const begin = std::ranges::find_if(text, isAsciiDigit);
    if (auto const plus = std::find(begin, text.end(), u'+'); plus != text.end()) {
        return {plus, text.end()};
    }
    auto const end = std::find_if_not(begin, text.end(), isAsciiDigit);
    QStringView const rest(end, text.end());
    bool const isListed = end - begin <= longest && (rest.startsWith(u". ") || rest.startsWith(u") "));
    return isListed ? rest.sliced(2) : QStringView();
}

/// A number that the exchange acts on itself, such as "*31#" or "**61*+393331234567#".
std::optional<TypedNumber> fromServiceCode(QStringView text)
{
    TypedNumber typed;
    for (QChar const c : text) {
        bool const isKey = isAsciiDigit(c) || c == u'*' || c == u'#';
        bool const opensNumber =
            typed.dialled.isEmpty() || typed.dialled.endsWith(u'*') || typed.dialled.endsWith(u'#');
        if (isKey || (c == u'+' && opensNumber)) {
            typed.dialled += c;
        }
    }
    return hasLetters(text) || digitCount(text) == 0 ? std::nullopt : std::optional(typed);
}

/// A star between digits is a key that somebody presses like them, and no punctuation.
bool hasStarAmongDigits(QStringView text)
{
    qsizetype const star = text.indexOf(u'*');
    return star >= 0 && digitCount(text.first(star)) > 0 && digitCount(text.sliced(star)) > 0;
}

std::optional<TypedNumber> withoutLetters(QStringView text, std::string const& region)
{
    if (digitCount(text) == 0 || isDate(text.trimmed())) {
        return std::nullopt;
    }
    if (hasStarAmongDigits(text)) {
        return fromServiceCode(text);
    }
    TypedNumber typed = firstNumber(text, region);
    if (QStringView const later = afterFigure(text); !later.isEmpty() && !isComplete(typed, region)) {
        TypedNumber const other = firstNumber(later, region);
        typed = isComplete(other, region) ? other : typed;
    }
    return digitCount(typed.dialled) > 0 ? std::optional(std::move(typed)) : std::nullopt;
}

char keypadDigit(QChar letter)
{
    constexpr std::string_view digits = "22233344455566677778889999";
    return digits[static_cast<size_t>((letter.unicode() | 0x20) - u'a')];
}

/// \a text with its letters as the digits of a keypad, when it has the shape of a vanity number.
std::optional<QString> vanityDigits(QStringView text)
{
    auto const firstLetter = std::ranges::find_if(text, isAsciiLetter);
    qsizetype const letters = std::ranges::count_if(text, isAsciiLetter);
    bool const shape = digitCount(text.first(firstLetter - text.begin())) >= 3 && letters >= 3 &&
                       letters == std::ranges::count_if(text, isLetter) &&
                       letters + digitCount(text) <= mostDigits;
    if (!shape) {
        return std::nullopt;
    }
    QString digits = text.toString();
    for (QChar& c : digits) {
        c = isAsciiLetter(c) ? QLatin1Char(keypadDigit(c)) : c;
    }
    return digits;
}

/// Whether \a text is written as vanity numbers are, even where no plan knows the number: in capitals or in
/// one piece.
bool looksLikeVanity(QStringView text)
{
    bool const capitals = std::ranges::none_of(text, [](QChar c) { return c.isLower(); });
    return capitals || !text.trimmed().contains(u' ');
}

std::optional<TypedNumber> fromVanity(QStringView text, std::string const& region)
{
    std::optional<QString> const digits = vanityDigits(text);
    if (!digits) {
        return std::nullopt;
    }
    TypedNumber typed = fromDigits(*digits, region);
    return isComplete(typed, region) || looksLikeVanity(text) ? std::optional(typed) : std::nullopt;
}

/// "06 1234567 (Mario)": the number, when it is one without the words.
std::optional<TypedNumber> beforeWords(QStringView text, std::string const& region)
{
    qsizetype const letter = std::ranges::find_if(text, isLetter) - text.begin();
    bool const glued = letter > 0 && isAsciiDigit(text[letter - 1]);
    if (glued) {
        return std::nullopt;
    }
    std::optional<TypedNumber> const typed = withoutLetters(text.first(letter), region);
    return typed && isComplete(*typed, region) ? typed : std::nullopt;
}

/// Where the number begins in \a text: at its first digit, with the signs that belong to it.
qsizetype numberStart(QStringView text)
{
    qsizetype start = std::ranges::find_if(text, isAsciiDigit) - text.begin();
    while (start > 0 && QStringView(u"+([").contains(text[start - 1])) {
        --start;
    }
    return start;
}

/// Whether \a label says that a number follows, so that one is there even where no plan knows it.
bool isNumberLabel(QStringView label)
{
    static QRegularExpression const word =
        insensitive(QStringLiteral(R"([:.]$|^(?:tel|telefono|telephone|phone|fax|mobile|cell)$)"));
    return word.match(label.trimmed().toString()).hasMatch();
}

std::optional<TypedNumber> amongWords(QStringView text, std::string const& region)
{
    qsizetype const start = numberStart(text);
    if (start == text.size()) {
        return std::nullopt;
    }
    QStringView const label = text.first(start);
    QStringView const rest = text.sliced(start);
    if (extensionLength(text) == text.size()) {
        return withoutLetters(rest, region);
    }
    if (label.endsWith(u'_') || (!label.isEmpty() && label.back().isLetterOrNumber())) {
        return std::nullopt;
    }
    if (!hasLetters(rest)) {
        std::optional<TypedNumber> const typed = withoutLetters(rest, region);
        bool const wanted = typed && (isNumberLabel(label) || isComplete(*typed, region));
        return wanted ? typed : std::nullopt;
    }
    std::optional<TypedNumber> const typed = beforeWords(rest, region);
    return typed ? typed : fromVanity(rest, region);
}

/// The parts of a typed text or a `tel:` address.
struct Parts
{
    QString number;
    QString extension;
    QString context; ///< the country code that a `tel:` address gives to a local number
    QString tones;
};

bool isTone(QChar c)
{
    return isAsciiDigit(c) || c == u'*' || c == u'#' || c == u',' || c == u';';
}

/// The tones in \a tail, which begins with ',' or ';'. A text that holds anything else is not
/// meant to be sent as tones.
QString tonesOf(QString tail)
{
    tail.removeIf([](QChar c) { return QStringView(u" -().\n").contains(c); });
    return std::ranges::all_of(tail, isTone) ? tail : QString();
}

bool isExtension(QStringView value)
{
    constexpr qsizetype longest = 15;
    return value.size() <= longest && std::ranges::all_of(value, [](QChar c) {
               return isAsciiDigit(c) || QStringView(u" -.()").contains(c);
           });
}

/// Takes the parameters of a `tel:` address out of \a tail: ";name=value".
void takeParameters(Parts& parts, QString& tail)
{
    static QRegularExpression const parameter =
        insensitive(QStringLiteral("; *([a-z-]+)(?:=([^;]*))?(?=;|$)"));
    for (QRegularExpressionMatch const& match : parameter.globalMatch(tail)) {
        QString const name = match.captured(1).toLower();
        QString const value = match.captured(2).trimmed();
        if (name == QLatin1String("ext") && isExtension(value)) {
            parts.extension = digitsOf(value);
        } else if (name == QLatin1String("phone-context") && value.startsWith(u'+')) {
            parts.context = digitsOf(value);
        }
    }
    tail.remove(parameter);
}

/// Takes "int. 12" from the end of the number, or of what follows its comma.
void takeExtension(Parts& parts)
{
    static QRegularExpression const ending = insensitive(
        QStringLiteral(R"(^(.*\d[^\p{L}\d]*?)[ ,(]*%1[ .:]*(\d{1,9})#?\)?$)").arg(extensionLabels()));
    QRegularExpressionMatch const match = ending.match(parts.number);
    if (match.hasMatch()) {
        parts.extension = match.captured(2);
        parts.number = match.captured(1);
    }
}

bool mayHoldExtension(QStringView text)
{
    return !text.isEmpty() && text[0] != u'*' && text[0] != u'#' && !hasStarAmongDigits(text) &&
           std::ranges::any_of(text, [](QChar c) { return c == u'#' || c == u'~' || c.isLetter(); });
}

Parts split(QString const& text)
{
    Parts parts;
    qsizetype const end =
        std::ranges::find_if(text, [](QChar c) { return c == u',' || c == u';'; }) - text.begin();
    parts.number = text.first(end).trimmed();
    QString tail = text.sliced(end);
    if (tail.contains(u'=')) {
        takeParameters(parts, tail);
    }
    if (mayHoldExtension(tail) && hasLetters(tail)) {
        QString const label = tail.sliced(1).trimmed();
        if (extensionLength(label) == label.size()) {
            parts.number += QLatin1Char(' ') + label;
        }
    }
    parts.tones = tonesOf(tail);
    if (mayHoldExtension(parts.number)) {
        takeExtension(parts);
    }
    return parts;
}

/// \a text without "tel:", its bytes decoded; nothing when it is no such address.
std::optional<QString> telephoneAddress(QString const& text)
{
    QLatin1String const scheme("tel:");
    if (!text.startsWith(scheme, Qt::CaseInsensitive)) {
        return std::nullopt;
    }
    QString const decoded =
        QString::fromUtf8(QByteArray::fromPercentEncoding(text.sliced(scheme.size()).toUtf8()));
    QString const visible = visibleText(decoded).trimmed();
    return visible.startsWith(QLatin1String("//")) ? visible.sliced(2) : visible;
}

/// A number that is local to a country, as addresses have them, with its country code unless it is a short
/// one.
QString withContext(Parts const& parts, std::string const& region)
{
    QString const digits = digitsOf(parts.number);
    if (parts.context.isEmpty() || digits.startsWith(u'+') || hasLetters(parts.number)) {
        return parts.number;
    }
    bool const here = parts.context.sliced(1).toInt() == plans().GetCountryCodeForRegion(region);
    bool const isShort = (here && digits.size() <= mostShortDigits) || isEmergency(digits, region);
    return isShort ? parts.number : parts.context + digits;
}

/// \a text out of the stars that messengers set bold text in.
QStringView withoutStars(QStringView text)
{
    while (text.size() > 2 && text.startsWith(u'*') && text.endsWith(u'*')) {
        text = text.sliced(1).chopped(1);
    }
    return text;
}

/// "* 06 1234567", "# 06 1234567", "*06 1234567*" and "**06 1234567**": the complete number behind the sign
/// of a list, or in bold. A short one is rather a code.
std::optional<TypedNumber> withoutListSign(QStringView text, std::string const& region)
{
    QStringView const bold = withoutStars(text);
    bool const isBold = bold.size() < text.size();
    QStringView const inner = isBold ? bold : text.sliced(1);
    bool const isCode = (!isBold && !inner.startsWith(u' ')) || inner.contains(u'*') || inner.contains(u'#');
    if (isCode || hasLetters(inner)) {
        return std::nullopt;
    }
    std::optional<TypedNumber> const typed = withoutLetters(inner.trimmed(), region);
    return typed && isValid(*typed) && !NumberFields::isShort(*typed->number) ? typed : std::nullopt;
}

std::optional<TypedNumber> readNumber(QString const& number, std::string const& region)
{
    if (number.startsWith(u'*') || number.startsWith(u'#')) {
        std::optional<TypedNumber> listed = withoutListSign(number, region);
        std::optional<TypedNumber> const code = listed ? std::nullopt : fromServiceCode(number);
        if (code) {
            // What stood between the digits may have hidden that they are one number in bold.
            listed = withoutListSign(code->dialled, region);
        }
        return listed ? listed : code;
    }
    return hasLetters(number) ? amongWords(number, region) : withoutLetters(number, region);
}

/// The extension that tones after a number stand for: ",,12".
QString extensionOfTones(QString const& tones)
{
    qsizetype const digits = std::ranges::find_if(tones, isAsciiDigit) - tones.begin();
    QString const rest = tones.sliced(digits);
    return std::ranges::all_of(rest, isAsciiDigit) && rest.size() <= 9 ? rest : QString();
}

/// Addresses of mail and the web, and amounts, hold digits that nobody dials.
bool holdsOtherDigits(QStringView text)
{
    return text.contains(u'@') || text.contains(u"://") || text.contains(u'%') ||
           std::ranges::any_of(text, [](QChar c) { return c.category() == QChar::Symbol_Currency; });
}

std::optional<TypedNumber> readPlainText(QString const& text, std::string const& region)
{
    QString const address = telephoneAddress(text).value_or(text);
    if (holdsOtherDigits(address)) {
        return std::nullopt;
    }
    Parts const parts = split(address);
    std::optional<TypedNumber> typed = readNumber(withContext(parts, region), region);
    if (!typed) {
        return std::nullopt;
    }
    typed->extension = parts.extension;
    typed->tones = parts.tones;
    if (typed->number) {
        NumberFields::setExtension(*typed->number, parts.extension.isEmpty() ? extensionOfTones(parts.tones)
                                                                             : parts.extension);
    }
    return typed;
}

std::optional<TypedNumber> readFound(QString const& text, std::string const& region)
{
    QList<FoundNumber> const found = findPhoneNumbers(text, QString::fromStdString(region));
    if (found.isEmpty()) {
        return std::nullopt;
    }
    FoundNumber const& first = found.constFirst();
    return readPlainText(visibleText(QStringView(text).sliced(first.position, first.length)), region);
}

} // namespace

char32_t visibleCharacter(char32_t c)
{
    switch (QChar::category(c)) {
    case QChar::Number_DecimalDigit:
        return U'0' + static_cast<char32_t>(QChar::digitValue(c));
    case QChar::Punctuation_Dash:
        return U'-';
    case QChar::Separator_Space:
        return U' ';
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return U'\n';
    case QChar::Other_Control:
        return c == U'\n' || c == U'\r' ? U'\n' : c == U'\t' ? U' ' : U'\0';
    case QChar::Other_Format:
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
        return U'\0';
    default:
        break;
    }
    constexpr char32_t wideForms = 0xff00 - 0x20;
    if (c > 0xff00 && c < 0xff5f) {
        return c - wideForms;
    }
    return c == U'\u2212' ? U'-' : c;
}

QString visibleText(QStringView text)
{
    if (std::ranges::all_of(text, isPrintableAscii)) {
        return text.toString();
    }
    QString visible;
    visible.reserve(text.size());
    for (qsizetype place = 0; place < text.size();) {
        char32_t const c = codePointAt(text, place);
        if (char32_t const seen = visibleCharacter(c); seen != 0) {
            visible += QChar::fromUcs4(seen);
        }
        place += units(c);
    }
    return visible;
}

QString digitsOf(QStringView text)
{
    QString digits;
    for (QChar const c : text) {
        if (isAsciiDigit(c) || c == u'+') {
            digits += c;
        }
    }
    return digits;
}

bool isDate(QStringView text)
{
    static QRegularExpression const date(QStringLiteral(
        R"(^(?:(?:0?[1-9]|[12]\d|3[01])([-./])(?:0?[1-9]|[12]\d|3[01])\1(?:19|20)\d\d|(?:19|20)\d\d([-./])(?:0?[1-9]|1[0-2])\2(?:0?[1-9]|[12]\d|3[01]))$)"));
    constexpr qsizetype longest = 10;
    return text.size() <= longest && date.match(text.toString()).hasMatch();
}

qsizetype extensionLength(QStringView text)
{
    static QRegularExpression const extension =
        insensitive(QStringLiteral(R"(^%1[ .:]{0,3}\d{1,9}(?![\p{L}\d]))").arg(extensionLabels()));
    constexpr qsizetype longest = 32;
    QRegularExpressionMatch const match =
        extension.match(text.first(std::min(text.size(), longest)).toString());
    return match.hasMatch() ? match.capturedLength() : 0;
}

qsizetype firstNumberLength(QStringView text, std::string const& region)
{
    qsizetype const separator = separatorPlace(text);
    QStringView const before = text.first(separator);
    QStringView const after = text.sliced(separator);
    if (digitCount(after) == 0 || !isComplete(fromDigits(before, region), region)) {
        return text.size();
    }
    QStringView const next = after[0] == u'+' ? after : after.sliced(1);
    bool const otherEnding = digitCount(next) <= 2;
    return otherEnding || isComplete(fromDigits(next, region), region) ? before.size() : text.size();
}

std::optional<TypedNumber> readTypedNumber(QString const& text, std::string const& region)
{
    QString const visible = visibleText(text).trimmed();
    bool const readable = visible.size() <= longestNumberText;
    std::optional<TypedNumber> const typed = readable ? readPlainText(visible, region) : std::nullopt;
    return typed ? typed : readFound(text, region);
}

} // namespace Softphone
