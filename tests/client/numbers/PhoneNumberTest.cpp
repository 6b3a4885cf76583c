#include <client/PhoneNumber.h>

#include <QFile>
#include <QMetaProperty>
#include <QTemporaryFile>
#include <RunTest.h>
#include <array>
#include <atomic>
#include <phonenumbers/phonenumber.pb.h>
#include <phonenumbers/phonenumberutil.h>
#include <random>
#include <thread>
#include <unistd.h>

using namespace Softphone;

namespace {

using Plans = i18n::phonenumbers::PhoneNumberUtil;
using PlanNumber = i18n::phonenumbers::PhoneNumber;

QString italy()
{
    return QStringLiteral("IT");
}

QString formatted(PlanNumber const& number, Plans::PhoneNumberFormat form)
{
    std::string text;
    Plans::GetInstance()->Format(number, form, &text);
    return QString::fromStdString(text);
}

PhoneNumber parsed(char const* text, char const* region = "IT")
{
    return PhoneNumber::parse(QString::fromUtf8(text), QString::fromUtf8(region)).value_or(PhoneNumber());
}

/// Numbers as people write them: significant digits of any length in groups, with or without a country code.
QString randomNumber(std::mt19937& engine)
{
    auto const pick = [&](int lowest, int highest) {
        return std::uniform_int_distribution<int>(lowest, highest)(engine);
    };
    constexpr std::array prefixes = {"",     "+39 ", "+39 0", "0039 ", "+44 ",  "+44 20 ", "+1 ",
                                     "+49 ", "0",    "06 ",   "3",     "+378 ", "+33 ",    "+41 "};
    constexpr std::array separators = {"", "", "", " ", "-", ".", "/", " - ", ") "};
    QString text = QString::fromLatin1(prefixes.at(static_cast<size_t>(pick(0, std::size(prefixes) - 1))));
    for (int left = pick(7, 11); left > 0; --left) {
        text += QChar(u'0' + pick(0, 9));
        text += QString::fromLatin1(separators.at(static_cast<size_t>(pick(0, std::size(separators) - 1))));
    }
    return text;
}

/// What the process writes to its standard output while this lives.
class CapturedOutput
{
public:
    CapturedOutput()
        : m_kept(dup(STDOUT_FILENO))
    {
        fflush(stdout);
        m_file.open();
        dup2(m_file.handle(), STDOUT_FILENO);
    }
    ~CapturedOutput()
    {
        restore();
        close(m_kept);
    }
    Q_DISABLE_COPY_MOVE(CapturedOutput)

    QByteArray text()
    {
        restore();
        m_file.seek(0);
        return m_file.readAll();
    }

private:
    void restore()
    {
        fflush(stdout);
        dup2(m_kept, STDOUT_FILENO);
    }

    QTemporaryFile m_file;
    int m_kept;
};

} // namespace

class PhoneNumberTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void printsNothing();
    void parsesInThreadsAtOnce();
    void hasForms();
    void hasUsualFormsOfCountry_data();
    void hasUsualFormsOfCountry();
    void hasFormsOfShortNumber();
    void fewDigitsAreAnEmergencyNumberOnly();
    void emergencyNumberHasNoCountryCode();
    void emptyNumber();
    void parsesExtension_data();
    void parsesExtension();
    void parsesNothing_data();
    void parsesNothing();
    void takesThreeToSeventeenDigits();
    void knowsKind_data();
    void knowsKind();
    void knowsRegion_data();
    void knowsRegion();
    void addressesComeBack_data();
    void addressesComeBack();
    void matches_data();
    void matches();
    void equalNumbers();
    void propertiesAreThere();
    void parsesLikeThePlans();
};

/// First, so that the plans are loaded here: from the first call on nothing is printed.
void PhoneNumberTest::printsNothing()
{
    CapturedOutput output;
    for (char const* text :
         {"+39 06 1234567", "x", "+999 1", "06 1234567 x", "+39 118", "tel:+;ext=", "\xff"}) {
        for (char const* region : {"IT", "ZZ", "", "001"}) {
            PhoneNumber const number = parsed(text, region);
            static_cast<void>(number.isValid());
            static_cast<void>(number.region());
            static_cast<void>(number.kind());
            static_cast<void>(dialString(QString::fromUtf8(text), QString::fromUtf8(region)));
            static_cast<void>(formatAsTyped(QString::fromUtf8(text), QString::fromUtf8(region)));
            static_cast<void>(findPhoneNumbers(QString::fromUtf8(text), QString::fromUtf8(region)));
        }
    }
    QCOMPARE(output.text(), QByteArray());
}

void PhoneNumberTest::parsesInThreadsAtOnce()
{
    std::atomic<int> right = 0;
    auto const work = [&right] {
        for (int i = 0; i < 200; ++i) {
            QString const text = QStringLiteral("06 12345%1").arg(i);
            std::optional<PhoneNumber> const number = PhoneNumber::parse(text, italy());
            bool const same = number && number->isValid() && findPhoneNumbers(text, italy()).size() == 1 &&
                              dialString(text, italy()) == QStringLiteral("0612345%1").arg(i) &&
                              number->e164() == QStringLiteral("+390612345%1").arg(i);
            right += same ? 1 : 0;
        }
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    QCOMPARE(right.load(), 400);
}

void PhoneNumberTest::hasForms()
{
    PhoneNumber const number = parsed("+44 (0)20 7946 0018 ext 12");
    QCOMPARE(number.e164(), QStringLiteral("+442079460018"));
    QCOMPARE(number.international(), QStringLiteral("+44 20 7946 0018 x12"));
    QVERIFY(number.national().startsWith(QStringLiteral("020 7946 0018")));
    QCOMPARE(number.extension(), QStringLiteral("12"));
    QCOMPARE(number.uri(), QUrl(QStringLiteral("tel:+44-20-7946-0018;ext=12")));
    QCOMPARE(number.region(), QStringLiteral("GB"));
    QCOMPARE(number.kind(), NumberKind::FixedLine);
    QVERIFY(number.isValid());
}

void PhoneNumberTest::hasUsualFormsOfCountry_data()
{
    QTest::addColumn<QString>("national");
    QTest::addColumn<QString>("international");
    auto const row = [](char const* region, char const* national, char const* international) {
        QTest::newRow(region) << QString::fromUtf8(national) << QString::fromUtf8(international);
    };
    row("IT", "06 1234 5678", "+39 06 1234 5678");
    row("SM", "0549 886377", "+378 0549 886377");
    row("GB", "020 7946 0018", "+44 20 7946 0018");
    row("US", "(212) 555-0123", "+1 212-555-0123");
    row("FR", "01 42 68 53 00", "+33 1 42 68 53 00");
    row("DE", "030 23125123", "+49 30 23125123");
    row("ES", "912 34 56 78", "+34 912 34 56 78");
    row("CH", "044 668 18 00", "+41 44 668 18 00");
    row("AT", "01 234567", "+43 1 234567");
    row("BE", "02 234 56 78", "+32 2 234 56 78");
    row("NL", "020 123 4567", "+31 20 123 4567");
    row("SE", "08-123 456 78", "+46 8 123 456 78");
    row("NO", "22 12 34 56", "+47 22 12 34 56");
    row("DK", "32 12 34 56", "+45 32 12 34 56");
    row("PL", "22 123 45 67", "+48 22 123 45 67");
    row("JP", "03-1234-5678", "+81 3-1234-5678");
    row("AU", "(02) 9374 4000", "+61 2 9374 4000");
}

/// As the regulators write them.
void PhoneNumberTest::hasUsualFormsOfCountry()
{
    QFETCH(QString, national);
    QFETCH(QString, international);
    QString const region = QString::fromLatin1(QTest::currentDataTag());
    for (QString const& written : {national, international}) {
        std::optional<PhoneNumber> const number = PhoneNumber::parse(written, region);
        QVERIFY(number);
        QCOMPARE(number->national(), national);
        QCOMPARE(number->international(), international);
        QCOMPARE(number->region(), region);
    }
}

void PhoneNumberTest::hasFormsOfShortNumber()
{
    PhoneNumber const number = parsed("118");
    for (QString const& form : {number.e164(), number.international(), number.national()}) {
        QCOMPARE(form, QStringLiteral("118"));
    }
    QCOMPARE(number.uri(), QUrl(QStringLiteral("tel:118;phone-context=+39")));
    QCOMPARE(number.region(), italy());
    QCOMPARE(number.kind(), NumberKind::Unknown);
    QVERIFY(number.isValid());
    QVERIFY(!parsed("101").isValid());
    QVERIFY(!parsed("0118").isValid());
}

/// France, say, has emergency numbers of two digits.
void PhoneNumberTest::fewDigitsAreAnEmergencyNumberOnly()
{
    QCOMPARE(parsed("15", "FR").e164(), QStringLiteral("15"));
    QVERIFY(parsed("15", "FR").isValid());
    QCOMPARE(parsed("15", "IT"), PhoneNumber());
}

/// No exchange knows "+39118", which would be a subscriber's number.
void PhoneNumberTest::emergencyNumberHasNoCountryCode()
{
    QCOMPARE(parsed("118").e164(), QStringLiteral("118"));
    QCOMPARE(parsed("+39118").e164(), QStringLiteral("+39118"));
    QVERIFY(!parsed("+39118").isValid());
}

void PhoneNumberTest::emptyNumber()
{
    PhoneNumber const number;
    for (QString const& form : {number.e164(), number.international(), number.national(), number.extension(),
                                number.region(), number.uri().toString()}) {
        QCOMPARE(form, QString());
    }
    QVERIFY(!number.isValid());
    QCOMPARE(number.kind(), NumberKind::Unknown);
    QCOMPARE(PhoneNumber::match(number, number), NumberMatch::None);
}

void PhoneNumberTest::parsesExtension_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("extension");
    auto const row = [](char const* text, char const* extension) {
        QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(extension);
    };
    row("06 1234567", "");
    row("06 1234567 int. 12", "12");
    row("06 1234567 int 12", "12");
    row("06 1234567 interno 12", "12");
    row("06 1234567 INT.12", "12");
    row("06 1234567 ext 12", "12");
    row("06 1234567 ext. 12", "12");
    row("06 1234567 extension: 12", "12");
    row("06 1234567 x12", "12");
    row("06 1234567x12", "12");
    row("06 1234567 #12", "12");
    row("06 1234567, int. 012", "012");
    row("06 1234567 (x 123456)", "123456");
    row("06 1234567,,12", "12");
    row("06 1234567,,123456789", "123456789");
    row("06 1234567,,1234567890", "");
    row("tel:+39-06-1234567;ext=12", "12");
    row("tel:+39-06-1234567;EXT=1-2", "12");
}

void PhoneNumberTest::parsesExtension()
{
    QFETCH(QString, text);
    std::optional<PhoneNumber> const number = PhoneNumber::parse(text, italy());
    QVERIFY(number);
    QCOMPARE(number->e164(), QStringLiteral("+39061234567"));
    QTEST(number->extension(), "extension");
}

void PhoneNumberTest::parsesNothing_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("region");
    auto const row = [](char const* tag, QString const& text, char const* region) {
        QTest::newRow(tag) << text << QString::fromLatin1(region);
    };
    row("empty", QString(), "IT");
    row("word", QStringLiteral("Mario"), "IT");
    row("plus sign", QStringLiteral("+"), "IT");
    row("national without a region", QStringLiteral("06 1234567"), "");
    row("national of an unknown region", QStringLiteral("06 1234567"), "ZZ");
    row("region that is a name", QStringLiteral("06 1234567"), "Italy");
    row("region that begins with a digit", QStringLiteral("06 1234567"), "1T");
    row("region that ends with a digit", QStringLiteral("06 1234567"), "I1");
    row("region in another script", QStringLiteral("06 1234567"), "\xc8T");
    row("extension of an unknown region", QStringLiteral("101"), "ZZ");
    row("unknown country code", QStringLiteral("+999 1234567"), "IT");
    row("service code", QStringLiteral("*31#"), "IT");
    row("star among the digits", QStringLiteral("061234567*5"), "IT");
    row("sip", QStringLiteral("sip:101@example.org"), "IT");
    row("one digit", QStringLiteral("9"), "IT");
    row("two digits", QStringLiteral("12"), "IT");
    row("address of one digit", QStringLiteral("tel:1"), "IT");
    row("address of one digit in a country", QStringLiteral("tel:1;phone-context=+39"), "IT");
    row("country code and one digit", QStringLiteral("+39 1"), "IT");
    row("18 digits", QStringLiteral("123456789012345678"), "IT");
    row("lone surrogates", QString(3, QChar(0xd800)), "IT");
    row("date", QStringLiteral("31/8/2011"), "IT");
}

void PhoneNumberTest::parsesNothing()
{
    QFETCH(QString, text);
    QFETCH(QString, region);
    QVERIFY(!PhoneNumber::parse(text, region));
}

void PhoneNumberTest::takesThreeToSeventeenDigits()
{
    QString const digits = QStringLiteral("12345678901234567");
    for (qsizetype length = 3; length <= digits.size(); ++length) {
        std::optional<PhoneNumber> const number =
            PhoneNumber::parse(digits.first(length), QStringLiteral("DE"));
        QVERIFY(number);
        QCOMPARE(number->e164(),
                 length <= 6 ? digits.first(length) : QStringLiteral("+49") + digits.first(length));
    }
}

void PhoneNumberTest::knowsKind_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<NumberKind>("kind");
    auto const row = [](char const* text, NumberKind kind) {
        QTest::newRow(text) << QString::fromUtf8(text) << kind;
    };
    row("+39 06 67061234", NumberKind::FixedLine);
    row("+39 333 1234567", NumberKind::Mobile);
    row("+1 212 555 0123", NumberKind::FixedLineOrMobile);
    row("+39 800 123456", NumberKind::TollFree);
    row("+39 899 123456", NumberKind::PremiumRate);
    row("+39 848 123456", NumberKind::SharedCost);
    row("+44 56 1234 5678", NumberKind::Voip);
    row("+44 70 1234 5678", NumberKind::Personal);
    row("+44 76 4012 3456", NumberKind::Pager);
    row("+44 55 1234 5678", NumberKind::Universal);
    row("+39 338 1234 56789", NumberKind::Voicemail);
    row("+39 9999", NumberKind::Unknown);
    row("101", NumberKind::Unknown);
}

void PhoneNumberTest::knowsKind()
{
    QFETCH(QString, text);
    std::optional<PhoneNumber> const number = PhoneNumber::parse(text, italy());
    QVERIFY(number);
    QTEST(number->kind(), "kind");
}

void PhoneNumberTest::knowsRegion_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("region");
    auto const row = [](char const* text, char const* region) {
        QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(region);
    };
    row("06 67061234", "IT");
    row("+378 0549 886377", "SM");
    row("+378 886377", "SM");
    row("06 698 12345", "VA");
    row("+1 416 555 0134", "CA");
    row("+1 212 555 0134", "US");
    row("+7 727 250 1234", "KZ");
    row("+44 1534 720000", "JE");
    row("+800 1234 5678", "001");
    row("+39 9999", "");
}

void PhoneNumberTest::knowsRegion()
{
    QFETCH(QString, text);
    std::optional<PhoneNumber> const number = PhoneNumber::parse(text, italy());
    QVERIFY(number);
    QTEST(number->region(), "region");
}

void PhoneNumberTest::addressesComeBack_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("address");
    auto const row = [](char const* text, char const* address) {
        QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(address);
    };
    row("tel:+39-06-1234;ext=12", "tel:+39-06-1234;ext=12");
    row("tel:112;phone-context=+39", "tel:112;phone-context=+39");
    row("tel:06-1234567;phone-context=+39", "tel:+39-06-123-4567");
    row("tel:1234567;phone-context=+3906", "tel:+39-06-123-4567");
    row("tel:7042;phone-context=example.com", "tel:7042;phone-context=+39");
    row("tel:101;ext=12;phone-context=+39", "tel:101;ext=12;phone-context=+39");
    row("tel:%2B39061234567", "tel:+39-06-123-4567");
}

void PhoneNumberTest::addressesComeBack()
{
    QFETCH(QString, text);
    std::optional<PhoneNumber> const number = PhoneNumber::parse(text, italy());
    QVERIFY(number);
    QCOMPARE(number->uri().scheme(), QStringLiteral("tel"));
    QTEST(number->uri().toString(), "address");
    QCOMPARE(PhoneNumber::parse(number->uri().toString(), italy()), number);
}

void PhoneNumberTest::matches_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<NumberMatch>("grade");
    auto const row = [](char const* first, char const* second, NumberMatch grade) {
        QTest::addRow("%s, %s", first, second)
            << QString::fromUtf8(first) << QString::fromUtf8(second) << grade;
    };
    row("+39 06 1234567", "06/1234567", NumberMatch::Exact);
    row("+39 06 1234567 x12", "06/1234567 int. 12", NumberMatch::Exact);
    row("+39 06 1234567 x12", "06/1234567", NumberMatch::Short);
    row("+39 06 1234567 x12", "06/1234567 x13", NumberMatch::None);
    row("+44 20 7946 0018", "+44 7946 0018", NumberMatch::Short);
    row("+44 20 7946 0018", "+44 20 7946 0019", NumberMatch::None);
    row("+44 3331234567", "333 1234567", NumberMatch::National);
    row("+44 3331234567", "+39 333 1234567", NumberMatch::None);
    row("+39 0549 886377", "+378 0549 886377", NumberMatch::National);
    row("+39 06 1234567", "+39 6 1234567", NumberMatch::Short);
    row("118", "118", NumberMatch::Exact);
    row("118", "+39 118", NumberMatch::None);
    row("118", "0039118", NumberMatch::None);
    row("118", "tel:118;phone-context=+39", NumberMatch::Exact);
    row("118", "06 123118", NumberMatch::None);
    row("101", "06 123101", NumberMatch::None);
    row("101", "102", NumberMatch::None);
    row("333 1234567", "+44 3331234567 x1", NumberMatch::None);
    row("061234567", "+44 61234567", NumberMatch::None);
    row("+356 21234567", "+61 21234567", NumberMatch::None);
}

void PhoneNumberTest::matches()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(NumberMatch, grade);
    std::optional<PhoneNumber> const a = PhoneNumber::parse(first, italy());
    std::optional<PhoneNumber> const b = PhoneNumber::parse(second, italy());
    QVERIFY(a && b);
    QCOMPARE(PhoneNumber::match(*a, *b), grade);
    QCOMPARE(PhoneNumber::match(*b, *a), grade);
}

void PhoneNumberTest::equalNumbers()
{
    QCOMPARE(parsed("06 1234567"), parsed("+39 06/123.4567", "US"));
    QCOMPARE(qHash(parsed("06 1234567")), qHash(parsed("+39 06 1234567", "US")));
    QCOMPARE(parsed("112", "DE"), parsed("112"));
    QCOMPARE(qHash(parsed("112", "DE")), qHash(parsed("112")));
    QVERIFY(parsed("06 1234567") != parsed("06 1234567 x1"));
    QVERIFY(parsed("06 1234567") != parsed("+39 6 1234567"));
    QVERIFY(parsed("112") != parsed("113"));
    QVERIFY(parsed("112") != PhoneNumber());
    QVERIFY(parsed("118") != parsed("+39118"));
    QVERIFY(parsed("+356 21234567") != parsed("+61 21234567"));
    QVERIFY(parsed("00 12345", "IT") != parsed("0 12345", "IT"));
}

void PhoneNumberTest::propertiesAreThere()
{
    PhoneNumber const number = parsed("06 1234567 x12");
    QMetaObject const& type = PhoneNumber::staticMetaObject;
    auto const value = [&](char const* name) {
        return type.property(type.indexOfProperty(name)).readOnGadget(&number);
    };
    QCOMPARE(value("e164").toString(), number.e164());
    QCOMPARE(value("international").toString(), number.international());
    QCOMPARE(value("national").toString(), number.national());
    QCOMPARE(value("extension").toString(), number.extension());
    QCOMPARE(value("uri").toUrl(), number.uri());
    QCOMPARE(value("region").toString(), italy());
    QCOMPARE(value("kind").value<NumberKind>(), NumberKind::FixedLine);
    QCOMPARE(value("valid").toBool(), true);
    QCOMPARE(QVariant::fromValue(number).value<PhoneNumber>(), number);
}

/// Where libphonenumber itself knows a valid number, the answer is its own.
void PhoneNumberTest::parsesLikeThePlans()
{
    std::mt19937 engine(20);
    Plans const& plans = *Plans::GetInstance();
    int valid = 0;
    for (int i = 0; i < 12000; ++i) {
        QString const text = randomNumber(engine);
        PlanNumber expected;
        bool const known = plans.Parse(text.toStdString(), "IT", &expected) == Plans::NO_PARSING_ERROR &&
                           plans.IsValidNumber(expected);
        // Two numbers with a slash between them are one to libphonenumber.
        if (!known || text.contains(u'/')) {
            continue;
        }
        ++valid;
        std::optional<PhoneNumber> const number = PhoneNumber::parse(text, italy());
        QVERIFY2(number && number->isValid(), qUtf8Printable(text));
        QCOMPARE(number->e164(), formatted(expected, Plans::E164));
        QCOMPARE(number->international(), formatted(expected, Plans::INTERNATIONAL));
        QCOMPARE(number->national(), formatted(expected, Plans::NATIONAL));
        QCOMPARE(number->uri().toString(), formatted(expected, Plans::RFC3966));
        std::string region;
        plans.GetRegionCodeForNumber(expected, &region);
        QCOMPARE(number->region(), QString::fromStdString(region));
    }
    QVERIFY2(valid > 500, qPrintable(QString::number(valid)));
}

int main(int argc, char** argv)
{
    return runTest<PhoneNumberTest>(argc, argv);
}

#include "PhoneNumberTest.moc"
