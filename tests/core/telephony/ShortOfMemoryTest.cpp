#include <telephony/PhoneNumberLiterals.h>
#include <telephony/PhoneUtils.h>

#include <ChildProcess.h>
#include <RunTest.h>

/// What is left when a number as large as the machine's memory is handed over. In a test of its own, because
/// the sanitizers need memory too.
class ShortOfMemoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void numbersStayOrComeBackEmpty_data();
    void numbersStayOrComeBackEmpty();
};

namespace {

using Check = bool (*)(QString const& large);

bool filterKeepsTheNumber(QString const& large)
{
    QString number = large;
    PhoneNumberLiterals::filterInvalidPhoneNumberCharacters(number, false, false);
    return number.size() == large.size() && number.constData() == large.constData();
}

bool sanitizeGivesNothing(QString const& large)
{
    return PhoneNumberLiterals::sanitizePhoneNumber(large, true).isEmpty();
}

bool prefixGivesNothing(QString const& large)
{
    auto const [lead, rest] = PhoneNumberLiterals::processPhoneNumberPrefix(large, QStringLiteral("1"));
    return lead.isEmpty() && rest.isEmpty();
}

bool validateGivesNothing(QString const& large)
{
    return PhoneNumberLiterals::validatePhoneNumber(large, QStringLiteral("1"), true, true).isEmpty();
}

bool tailIsEmpty(QString const& large)
{
    return PhoneNumberLiterals::extractDTMFSignalsFromNumber(large).isEmpty();
}

bool nothingIsTheSame(QString const& large)
{
    return !PhoneNumberLiterals::comparePhoneNumbers(large, large);
}

bool countryCodeGivesNothing(QString const& large)
{
    return PhoneNumberLiterals::removeCountryCodeFromMobileNumber(large).isEmpty();
}

bool descriptionsAreEmpty(QString const& large)
{
    return PhoneUtils::getLandlineSelectedDescription(large, large).isEmpty() &&
           PhoneUtils::getSipAccountDescription(large, large, large).isEmpty();
}

} // namespace

void ShortOfMemoryTest::numbersStayOrComeBackEmpty_data()
{
    QTest::addColumn<Check>("check");
    QTest::newRow("filter") << Check(filterKeepsTheNumber);
    QTest::newRow("sanitize") << Check(sanitizeGivesNothing);
    QTest::newRow("prefix") << Check(prefixGivesNothing);
    QTest::newRow("validate") << Check(validateGivesNothing);
    QTest::newRow("tail") << Check(tailIsEmpty);
    QTest::newRow("compare") << Check(nothingIsTheSame);
    QTest::newRow("country code") << Check(countryCodeGivesNothing);
    QTest::newRow("descriptions") << Check(descriptionsAreEmpty);
}

void ShortOfMemoryTest::numbersStayOrComeBackEmpty()
{
    QFETCH(Check, check);
    // Larger than what the allocator may have set aside for further threads.
    QString const large = QStringLiteral("+391-,").repeated(12'000'000);
    int const exitCode = inChildProcess([&] { return limitResource(RLIMIT_AS, 0) && check(large) ? 0 : 1; });
    QCOMPARE(exitCode, 0);
}

int main(int argc, char** argv)
{
    return runTest<ShortOfMemoryTest>(argc, argv);
}

#include "ShortOfMemoryTest.moc"
