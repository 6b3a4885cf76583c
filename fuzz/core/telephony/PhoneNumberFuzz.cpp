// Cleaning and splitting of phone numbers: what is clean stays as it is, and nothing comes out that is not in
// the number.

#include <telephony/DTMFHelpers.h>
#include <telephony/PhoneNumberLiterals.h>

#include <QStringList>
#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace {

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

void checkFilter(QString const& number, bool symbols, bool pause)
{
    QString once = number;
    PhoneNumberLiterals::filterInvalidPhoneNumberCharacters(once, symbols, pause);
    QString twice = once;
    PhoneNumberLiterals::filterInvalidPhoneNumberCharacters(twice, symbols, pause);
    require(once == twice);
    require(std::all_of(once.begin(), once.end(),
                        [](QChar c) { return c.isDigit() || DTMFHelpers::isValidDTMFCharacter(c); }));
}

void checkSanitize(QString const& number, bool plusAsDoubleZero)
{
    QString const once = PhoneNumberLiterals::sanitizePhoneNumber(number, plusAsDoubleZero);
    require(once == PhoneNumberLiterals::sanitizePhoneNumber(once, plusAsDoubleZero));
    require(once.lastIndexOf(u'+') <= 0);
}

void checkSplit(QString const& number)
{
    QString const tail = PhoneNumberLiterals::extractDTMFSignalsFromNumber(number);
    require(tail.size() <= number.size());
    QStringList const parts = number.split(u',', Qt::SkipEmptyParts);
    QString expected = parts.isEmpty() ? QString() : QString(number).remove(parts.constFirst());
    PhoneNumberLiterals::filterInvalidPhoneNumberCharacters(expected, true, true);
    require(parts.isEmpty() ? tail.isEmpty() : tail == expected);
}

void checkValidate(QString const& number, QString const& startChars)
{
    auto const [lead, rest] = PhoneNumberLiterals::processPhoneNumberPrefix(number, startChars);
    require(lead.size() <= 1 && number.endsWith(lead + rest));
    QString const dialable = PhoneNumberLiterals::validatePhoneNumber(number, startChars, false, true);
    require(dialable.startsWith(lead));
    require(std::all_of(dialable.begin() + lead.size(), dialable.end(), [](QChar c) { return c.isDigit(); }));
    bool const reachable = !PhoneNumberLiterals::sanitizePhoneNumber(
                                PhoneNumberLiterals::removeCountryCodeFromMobileNumber(number), false)
                                .isEmpty();
    require(PhoneNumberLiterals::comparePhoneNumbers(number, number) == reachable);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    // The first byte says how many of the following are the start characters.
    std::size_t const startSize = size == 0 ? 0 : std::min<std::size_t>(data[0] % 16, size - 1);
    auto const* const text = reinterpret_cast<char const*>(data) + (size == 0 ? 0 : 1);
    QString const startChars = QString::fromUtf8(text, static_cast<qsizetype>(startSize));
    QString const number =
        QString::fromUtf8(text + startSize, static_cast<qsizetype>(size - startSize - (size == 0 ? 0 : 1)));
    for (bool const first : {false, true}) {
        for (bool const second : {false, true}) {
            checkFilter(number, first, second);
        }
        checkSanitize(number, first);
    }
    checkSplit(number);
    checkValidate(number, startChars);
    return 0;
}
