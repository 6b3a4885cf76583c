#include "PhoneNumberLiterals.h"

#include "../PatternSearch_p.h"

#include <QStringView>
#include <algorithm>
#include <bitset>

namespace {

constexpr QChar pauseSign = u',';

bool isDtmfSymbol(QChar c)
{
    return c == u'*' || c == u'#';
}

/// The position of the first byte of \a text that occurs in \a wanted, -1 when there is none.
qsizetype firstByteOf(QByteArray const& text, QByteArray const& wanted)
{
    auto const value = [](char c) { return static_cast<unsigned char>(c); };
    std::bitset<256> set;
    for (char const c : wanted) {
        set.set(value(c));
    }
    auto const found = std::find_if(text.begin(), text.end(), [&](char c) { return set.test(value(c)); });
    return found == text.end() ? -1 : found - text.begin();
}

/// \a text without the occurrences of \a word, which is not empty.
///
/// Built as it goes: QString::remove() takes far longer on a text that repeats its first part thousands of
/// times.
QString withoutWord(QStringView text, QStringView word)
{
    PatternSearch<char16_t> search(std::u16string_view(word.utf16(), std::size_t(word.size())));
    std::u16string_view const units(text.utf16(), std::size_t(text.size()));
    QString rest;
    rest.reserve(text.size());
    qsizetype done = 0;
    for (qsizetype found = search.indexIn(units); found >= 0; found = search.indexIn(units, done)) {
        rest += text.sliced(done, found - done);
        done = found + word.size();
    }
    return rest += text.sliced(done);
}

} // namespace

std::map<QString, QString> const PhoneNumberLiterals::EMERGENCY_NUMBERS = {
    {QStringLiteral("112"), QStringLiteral("Numero di emergenza unico")},
    {QStringLiteral("113"), QStringLiteral("Soccorso pubblico di emergenza")},
    {QStringLiteral("114"), QStringLiteral("Emergenza maltrattamenti dei minori")},
    {QStringLiteral("115"), QStringLiteral("Vigili del fuoco Pronto Intervento")},
    {QStringLiteral("118"), QStringLiteral("Emergenza sanitaria")},
};

int PhoneNumberLiterals::getCountryCode()
{
    return 39;
}

std::string PhoneNumberLiterals::getMobileValidateRegexpr()
{
    return R"(^(\((00|\+)\d{1,3}\)|(00|\+)\d{1,3})?\d{9,10}$)";
}

std::string PhoneNumberLiterals::getGeneralContactNumberValidateRegexpr()
{
    return R"(^(\((00|\+)\d{1,3}\)|(00|\+)\d{1,3})?\d{9,11}$)";
}

std::pair<QString, QString> PhoneNumberLiterals::processPhoneNumberPrefix(QString const& number,
                                                                          QString const& startChars)
{
    // Found among bytes but used among characters: in front of letters beyond ASCII the place is off, and
    // may lie outside. Callers know it so.
    qsizetype const position = firstByteOf(number.toUtf8(), startChars.toUtf8());
    bool const inside = position >= 0 && position < number.size();
    return inside ? std::pair(number.sliced(position, 1), number.sliced(position + 1))
                  : std::pair<QString, QString>();
}

void PhoneNumberLiterals::filterInvalidPhoneNumberCharacters(QString& number, bool allowDtmfSymbols,
                                                             bool allowPause)
{
    number.removeIf([=](QChar c) {
        // Digits of every script pass.
        return !c.isDigit() && !(allowDtmfSymbols && isDtmfSymbol(c)) && !(allowPause && c == pauseSign);
    });
}

QString PhoneNumberLiterals::sanitizePhoneNumber(QString const& number, bool plusAsDoubleZero)
{
    bool const hasPlus = number.startsWith(u'+');
    QString clean = number;
    filterInvalidPhoneNumberCharacters(clean, true, true);
    if (hasPlus) {
        clean.prepend(plusAsDoubleZero ? QLatin1String("00") : QLatin1String("+"));
    }
    return clean;
}

QString PhoneNumberLiterals::removeCountryCodeFromMobileNumber(QString const& number)
{
    for (QLatin1String const prefix : {QLatin1String("0039"), QLatin1String("+39")}) {
        if (number.startsWith(prefix)) {
            return number.sliced(prefix.size());
        }
    }
    return number;
}

bool PhoneNumberLiterals::comparePhoneNumbers(QString const& a, QString const& b)
{
    auto const reduced = [](QString const& number) {
        return sanitizePhoneNumber(removeCountryCodeFromMobileNumber(number), false);
    };
    // Nothing left to dial is nobody's number, so it equals none.
    QString const first = reduced(a);
    return !first.isEmpty() && first.compare(reduced(b), Qt::CaseInsensitive) == 0;
}

bool PhoneNumberLiterals::isAnonymousNumber(QString const& number)
{
    return number.compare(QLatin1String("anonymous"), Qt::CaseInsensitive) == 0;
}

QString PhoneNumberLiterals::validatePhoneNumber(QString const& number, QString const& startChars,
                                                 bool plusAsDoubleZero, bool stripDtmfSymbols)
{
    auto [lead, rest] = processPhoneNumberPrefix(number, startChars);
    if (plusAsDoubleZero && lead == QLatin1String("+")) {
        lead = QStringLiteral("00");
    }
    QString part = rest.left(rest.indexOf(pauseSign));
    filterInvalidPhoneNumberCharacters(part, !stripDtmfSymbols, false);
    return lead + part;
}

QString PhoneNumberLiterals::extractDTMFSignalsFromNumber(QString const& number)
{
    auto const begin = std::find_if(number.begin(), number.end(), [](QChar c) { return c != pauseSign; });
    auto const end = std::find(begin, number.end(), pauseSign);
    if (begin == end) {
        return {};
    }
    // The number goes wherever it occurs, also among the tones; the commas around it stay as pauses.
    QString tail = withoutWord(number, QStringView(begin, end));
    filterInvalidPhoneNumberCharacters(tail, true, true);
    return tail;
}

std::optional<QString> PhoneNumberLiterals::getEmergencyInfoByPhoneNumber(QString const& number)
{
    auto const found = EMERGENCY_NUMBERS.find(number);
    return found == EMERGENCY_NUMBERS.end() ? std::nullopt : std::optional(found->second);
}
