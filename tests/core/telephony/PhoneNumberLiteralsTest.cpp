#include <telephony/PhoneNumberLiterals.h>

#include <QRegularExpression>
#include <RunTest.h>
#include <Valgrind.h>
#include <random>

namespace {

QString const arabicOne(QChar(0x0661));
QString const mathematicalOne = QStringLiteral("\U0001d7cf");

bool matches(std::string const& pattern, QString const& number)
{
    return QRegularExpression(QString::fromStdString(pattern)).match(number).hasMatch();
}

/// The tail of a dial string found with QString's own operations.
QString plainTail(QString number)
{
    QStringList const parts = number.split(u',', Qt::SkipEmptyParts);
    if (parts.isEmpty()) {
        return {};
    }
    number.remove(parts.constFirst());
    PhoneNumberLiterals::filterInvalidPhoneNumberCharacters(number, true, true);
    return number;
}

} // namespace

class PhoneNumberLiteralsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void knowsHomeCountry();
    void validatesWithPatterns_data();
    void validatesWithPatterns();
    void splitsAtStartCharacter_data();
    void splitsAtStartCharacter();
    void filtersCharacters_data();
    void filtersCharacters();
    void filtersEveryCharacterByItself();
    void sanitizes_data();
    void sanitizes();
    void removesCountryCode_data();
    void removesCountryCode();
    void compares_data();
    void compares();
    void recognisesAnonymous_data();
    void recognisesAnonymous();
    void makesDialableNumber_data();
    void makesDialableNumber();
    void extractsSignals_data();
    void extractsSignals();
    void extractsSignalsLikePlainOperations();
    void findsEmergencyNumbers_data();
    void findsEmergencyNumbers();
    void listsEmergencyNumbers();
    void answersHostileNumbers();
};

void PhoneNumberLiteralsTest::knowsHomeCountry()
{
    QCOMPARE(PhoneNumberLiterals::getCountryCode(), 39);
    QCOMPARE(PhoneNumberLiterals::getMobileValidateRegexpr(),
             std::string("^(\\((00|\\+)\\d{1,3}\\)|(00|\\+)\\d{1,3})?\\d{9,10}$"));
    QCOMPARE(PhoneNumberLiterals::getGeneralContactNumberValidateRegexpr(),
             std::string("^(\\((00|\\+)\\d{1,3}\\)|(00|\\+)\\d{1,3})?\\d{9,11}$"));
}

void PhoneNumberLiteralsTest::validatesWithPatterns_data()
{
    QTest::addColumn<QString>("number");
    QTest::addColumn<bool>("mobile");
    QTest::addColumn<bool>("general");
    QTest::newRow("prefix in brackets") << QStringLiteral("(+39)3331234567") << true << true;
    QTest::newRow("bare prefix") << QStringLiteral("0039333123456") << true << true;
    QTest::newRow("eleven digits") << QStringLiteral("33312345678") << false << true;
    QTest::newRow("eight digits") << QStringLiteral("33312345") << false << false;
    QTest::newRow("open bracket") << QStringLiteral("(+393331234567") << false << false;
}

void PhoneNumberLiteralsTest::validatesWithPatterns()
{
    QFETCH(QString, number);
    QTEST(matches(PhoneNumberLiterals::getMobileValidateRegexpr(), number), "mobile");
    QTEST(matches(PhoneNumberLiterals::getGeneralContactNumberValidateRegexpr(), number), "general");
}

void PhoneNumberLiteralsTest::splitsAtStartCharacter_data()
{
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("startChars");
    QTest::addColumn<QString>("lead");
    QTest::addColumn<QString>("rest");
    auto const row = [](char const* tag, char16_t const* number, char16_t const* startChars,
                        char16_t const* lead, char16_t const* rest) {
        QTest::newRow(tag) << QString::fromUtf16(number) << QString::fromUtf16(startChars)
                           << QString::fromUtf16(lead) << QString::fromUtf16(rest);
    };
    row("first character", u"+39333", u"+0123456789", u"+", u"39333");
    row("behind a scheme", u"tel:+39", u"+0", u"+", u"39");
    row("last character", u"abc1", u"1", u"1", u"");
    row("none", u"abc", u"1", u"", u"");
    row("empty number", u"", u"1", u"", u"");
    row("no start characters", u"123", u"", u"", u"");
    row("beyond ASCII before the match moves the split", u"\u00e91234", u"1", u"2", u"34");
    row("three bytes before the match move it by two", u"\u20ac1234", u"1", u"3", u"4");
    row("found behind the end", u"\u00e9\u00e91", u"1", u"", u"");
    row("found at the last character", u"\u00e912", u"1", u"2", u"");
    row("surrogate pair before the match", u"\U0001f6001234", u"1", u"3", u"4");
    row("byte shared with another character", u"12\u00e9", u"\u00e8", u"\u00e9", u"");
    row("place inside a surrogate pair", u"\u00e91\U0001f600", u"1", u"\xd83d", u"\xde00");
}

void PhoneNumberLiteralsTest::splitsAtStartCharacter()
{
    QFETCH(QString, number);
    QFETCH(QString, startChars);
    auto const [lead, rest] = PhoneNumberLiterals::processPhoneNumberPrefix(number, startChars);
    QTEST(lead, "lead");
    QTEST(rest, "rest");
}

void PhoneNumberLiteralsTest::filtersCharacters_data()
{
    QTest::addColumn<QString>("number");
    QTest::addColumn<bool>("symbols");
    QTest::addColumn<bool>("pause");
    QTest::addColumn<QString>("filtered");
    QString const mixed = QStringLiteral("12,3*4#5");
    QTest::newRow("digits only") << mixed << false << false << QStringLiteral("12345");
    QTest::newRow("everything") << mixed << true << true << mixed;
    QTest::newRow("pauses") << mixed << false << true << QStringLiteral("12,345");
    QTest::newRow("symbols") << mixed << true << false << QStringLiteral("123*4#5");
    QTest::newRow("punctuation and letters")
        << QStringLiteral("+39 (06)-12a.3/4") << true << true << QStringLiteral("39061234");
    QTest::newRow("invalid ones in a row")
        << QStringLiteral("((  1))") << false << false << QStringLiteral("1");
    QTest::newRow("nothing valid") << QStringLiteral("abc") << false << false << QString();
    QTest::newRow("empty") << QString() << true << true << QString();
    QTest::newRow("digits beyond ASCII")
        << arabicOne + QStringLiteral("2") << false << false << arabicOne + QStringLiteral("2");
    QTest::newRow("digits of two units")
        << mathematicalOne + QStringLiteral("2") << false << false << QStringLiteral("2");
    QTest::newRow("superscript and fraction")
        << QStringLiteral("1\u00b2\u00bd") << false << false << QStringLiteral("1");
}

void PhoneNumberLiteralsTest::filtersCharacters()
{
    QFETCH(QString, number);
    QFETCH(bool, symbols);
    QFETCH(bool, pause);
    QString const before = number;
    QString const kept = number;
    PhoneNumberLiterals::filterInvalidPhoneNumberCharacters(number, symbols, pause);
    QTEST(number, "filtered");
    QCOMPARE(kept, before);
}

void PhoneNumberLiteralsTest::filtersEveryCharacterByItself()
{
    for (int code = 0; code <= 0xffff; ++code) {
        QChar const c(code);
        bool const isDigit =
            (code >= '0' && code <= '9') || (code > 127 && c.category() == QChar::Number_DecimalDigit);
        for (int flags = 0; flags < 4; ++flags) {
            bool const symbols = (flags & 1) != 0;
            bool const pause = (flags & 2) != 0;
            bool const stays = isDigit || (symbols && (code == '*' || code == '#')) || (pause && code == ',');
            QString number(c);
            PhoneNumberLiterals::filterInvalidPhoneNumberCharacters(number, symbols, pause);
            QCOMPARE(number, stays ? QString(c) : QString());
        }
    }
}

void PhoneNumberLiteralsTest::sanitizes_data()
{
    QTest::addColumn<QString>("number");
    QTest::addColumn<bool>("plusAsDoubleZero");
    QTest::addColumn<QString>("clean");
    QString const typed = QStringLiteral("+39 (06) 1234");
    QTest::newRow("plus becomes zeros") << typed << true << QStringLiteral("0039061234");
    QTest::newRow("plus stays") << typed << false << QStringLiteral("+39061234");
    QTest::newRow("plus inside") << QStringLiteral("06+1") << true << QStringLiteral("061");
    QTest::newRow("plus behind a space") << QStringLiteral(" +1") << false << QStringLiteral("1");
    QTest::newRow("two plus signs") << QStringLiteral("++1") << false << QStringLiteral("+1");
    QTest::newRow("plus alone") << QStringLiteral("+") << true << QStringLiteral("00");
    QTest::newRow("symbols and pauses stay")
        << QStringLiteral("1*2#3,4;5") << false << QStringLiteral("1*2#3,45");
    QTest::newRow("empty") << QString() << true << QString();
    QTest::newRow("nothing usable") << QStringLiteral("abc") << true << QString();
    QTest::newRow("digits beyond ASCII")
        << QStringLiteral("+") + arabicOne << false << QStringLiteral("+") + arabicOne;
    QTest::newRow("placeholders") << QStringLiteral("+%1%2") << true << QStringLiteral("0012");
}

void PhoneNumberLiteralsTest::sanitizes()
{
    QFETCH(QString, number);
    QFETCH(bool, plusAsDoubleZero);
    QTEST(PhoneNumberLiterals::sanitizePhoneNumber(number, plusAsDoubleZero), "clean");
}

void PhoneNumberLiteralsTest::removesCountryCode_data()
{
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("rest");
    auto const row = [](char const* tag, char const* number, char const* rest) {
        QTest::newRow(tag) << QString::fromUtf8(number) << QString::fromUtf8(rest);
    };
    row("zeros", "00393331234567", "3331234567");
    row("plus", "+393331234567", "3331234567");
    row("none", "3331234567", "3331234567");
    row("nothing else", "0039", "");
    row("only once", "00390039333", "0039333");
    row("other country", "+41333", "+41333");
    row("code without prefix", "39333", "39333");
    row("prefix not at the start", " +39333", " +39333");
    row("not cleaned", "+39 333", " 333");
    row("empty", "", "");
}

void PhoneNumberLiteralsTest::removesCountryCode()
{
    QFETCH(QString, number);
    QTEST(PhoneNumberLiterals::removeCountryCodeFromMobileNumber(number), "rest");
}

void PhoneNumberLiteralsTest::compares_data()
{
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<bool>("same");
    auto const row = [](char const* tag, char const* a, char const* b, bool same) {
        QTest::newRow(tag) << QString::fromUtf8(a) << QString::fromUtf8(b) << same;
    };
    row("written differently", "+39 333 1234567", "0039-333-1234567", true);
    row("with and without country code", "+393331234567", "333 1234567", true);
    row("other number", "3331234567", "3331234568", false);
    row("other country code", "+413331234567", "3331234567", false);
    row("plus and zeros of another country differ", "+41333", "0041333", false);
    row("both empty", "", "", false);
    row("both unusable", "abc", "abc", false);
    row("one empty", "", "333", false);
    row("country code alone", "+39", "0039", false);
    row("tail counts", "333,1", "333", false);
}

void PhoneNumberLiteralsTest::compares()
{
    QFETCH(QString, a);
    QFETCH(QString, b);
    QTEST(PhoneNumberLiterals::comparePhoneNumbers(a, b), "same");
    QTEST(PhoneNumberLiterals::comparePhoneNumbers(b, a), "same");
}

void PhoneNumberLiteralsTest::recognisesAnonymous_data()
{
    QTest::addColumn<QString>("number");
    QTest::addColumn<bool>("anonymous");
    QTest::newRow("lower case") << QStringLiteral("anonymous") << true;
    QTest::newRow("title case") << QStringLiteral("Anonymous") << true;
    QTest::newRow("upper case") << QStringLiteral("ANONYMOUS") << true;
    QTest::newRow("white space") << QStringLiteral(" anonymous") << false;
    QTest::newRow("longer") << QStringLiteral("anonymous1") << false;
    QTest::newRow("empty") << QString() << false;
}

void PhoneNumberLiteralsTest::recognisesAnonymous()
{
    QFETCH(QString, number);
    QTEST(PhoneNumberLiterals::isAnonymousNumber(number), "anonymous");
}

void PhoneNumberLiteralsTest::makesDialableNumber_data()
{
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("startChars");
    QTest::addColumn<bool>("plusAsDoubleZero");
    QTest::addColumn<bool>("stripDtmfSymbols");
    QTest::addColumn<QString>("dialable");
    auto const row = [](char const* tag, char const* number, char const* startChars, bool plusAsDoubleZero,
                        bool stripDtmfSymbols, char const* dialable) {
        QTest::newRow(tag) << QString::fromUtf8(number) << QString::fromUtf8(startChars) << plusAsDoubleZero
                           << stripDtmfSymbols << QString::fromUtf8(dialable);
    };
    char const* const usual = "+0123456789";
    row("pasted link with tail", "tel:+39 333-1234567,,99#", usual, true, true, "00393331234567");
    row("plus stays", "tel:+39 333-1234567,,99#", usual, false, true, "+393331234567");
    row("symbols stay", "*21*0612#", "*0123456789", false, false, "*21*0612#");
    row("symbols stripped behind the lead", "*21*0612#", "*0123456789", false, true, "*210612");
    row("nothing to start with", "abc", usual, true, true, "");
    row("empty", "", usual, true, true, "");
    row("lead alone", "+", usual, false, true, "+");
    row("lead alone as zeros", "+", usual, true, true, "00");
    row("second plus dropped", "++39", usual, true, true, "0039");
    row("pause behind the lead", "1,23", usual, true, true, "1");
    row("cut off at the first of several pauses", "12,34,5", usual, true, true, "12");
    row("lead is a pause", ",12,3", ",", false, true, ",12");
    row("lead is not filtered", "x12", "x", false, true, "x12");
    row("lead is a percent sign", "%12", "%", false, true, "%12");
    row("placeholders in the number", "+%1%2", usual, true, true, "0012");
}

void PhoneNumberLiteralsTest::makesDialableNumber()
{
    QFETCH(QString, number);
    QFETCH(QString, startChars);
    QFETCH(bool, plusAsDoubleZero);
    QFETCH(bool, stripDtmfSymbols);
    QTEST(PhoneNumberLiterals::validatePhoneNumber(number, startChars, plusAsDoubleZero, stripDtmfSymbols),
          "dialable");
}

void PhoneNumberLiteralsTest::extractsSignals_data()
{
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("tail");
    auto const row = [](char const* tag, char const* number, char const* tail) {
        QTest::newRow(tag) << QString::fromUtf8(number) << QString::fromUtf8(tail);
    };
    row("tail with pauses", "0612345678,,123#", ",,123#");
    row("no tail", "12345", "");
    row("empty", "", "");
    row("pauses only", ",,,", "");
    row("leading pauses", ",,12,3", ",,,3");
    row("number repeated in the tail", "12,12,3", ",,3");
    row("number inside the tail", "12,3124", ",34");
    row("number overlapping itself", "11,111", ",1");
    row("removal does not join a new occurrence", "12,1122", ",12");
    row("partly repeated start", "1213,121213", ",12");
    row("start that repeats within itself", "1121113,11211121113", ",1121");
    row("tail is cleaned", "12,a3 b*", ",3*");
    row("number is not cleaned first", "1 2,12", ",12");
}

void PhoneNumberLiteralsTest::extractsSignals()
{
    QFETCH(QString, number);
    QTEST(PhoneNumberLiterals::extractDTMFSignalsFromNumber(number), "tail");
}

void PhoneNumberLiteralsTest::extractsSignalsLikePlainOperations()
{
    QString const alphabet = QStringLiteral("112,,*a");
    std::mt19937 random(39);
    std::uniform_int_distribution<qsizetype> anyCharacter(0, alphabet.size() - 1);
    std::uniform_int_distribution<int> anyLength(0, 16);
    for (int i = 0; i < sizeForThisRun(100'000); ++i) {
        QString number;
        for (int left = anyLength(random); left > 0; --left) {
            number += alphabet[anyCharacter(random)];
        }
        QCOMPARE(PhoneNumberLiterals::extractDTMFSignalsFromNumber(number), plainTail(number));
    }
}

void PhoneNumberLiteralsTest::findsEmergencyNumbers_data()
{
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("description");
    QTest::newRow("112") << QStringLiteral("112") << QStringLiteral("Numero di emergenza unico");
    QTest::newRow("113") << QStringLiteral("113") << QStringLiteral("Soccorso pubblico di emergenza");
    QTest::newRow("114") << QStringLiteral("114") << QStringLiteral("Emergenza maltrattamenti dei minori");
    QTest::newRow("115") << QStringLiteral("115") << QStringLiteral("Vigili del fuoco Pronto Intervento");
    QTest::newRow("118") << QStringLiteral("118") << QStringLiteral("Emergenza sanitaria");
    QTest::newRow("119") << QStringLiteral("119") << QString();
    QTest::newRow("white space") << QStringLiteral(" 112") << QString();
    QTest::newRow("country code") << QStringLiteral("+39112") << QString();
    QTest::newRow("empty") << QString() << QString();
}

void PhoneNumberLiteralsTest::findsEmergencyNumbers()
{
    QFETCH(QString, number);
    QFETCH(QString, description);
    auto const found = PhoneNumberLiterals::getEmergencyInfoByPhoneNumber(number);
    QCOMPARE(found.has_value(), !description.isEmpty());
    QCOMPARE(found.value_or(QString()), description);
}

void PhoneNumberLiteralsTest::listsEmergencyNumbers()
{
    QStringList numbers;
    for (auto const& [number, description] : PhoneNumberLiterals::EMERGENCY_NUMBERS) {
        numbers += number;
        QVERIFY(PhoneNumberLiterals::getEmergencyInfoByPhoneNumber(number) == description);
    }
    QCOMPARE(numbers.join(u' '), QStringLiteral("112 113 114 115 118"));
}

void PhoneNumberLiteralsTest::answersHostileNumbers()
{
    qsizetype const size = sizeForThisRun(1'000'000);
    QString number = QStringLiteral("1a").repeated(size);
    PhoneNumberLiterals::filterInvalidPhoneNumberCharacters(number, true, true);
    QVERIFY(number == QString(size, u'1'));
    QVERIFY(PhoneNumberLiterals::extractDTMFSignalsFromNumber(QStringLiteral("1,").repeated(size)) ==
            QString(size, u','));
    // Every position of the tail agrees with the number proper for half its length.
    QString const tail(size, u'1');
    QVERIFY(PhoneNumberLiterals::extractDTMFSignalsFromNumber(QString(size / 2, u'1') + QStringLiteral("2,") +
                                                              tail) == QStringLiteral(",") + tail);
    QVERIFY(PhoneNumberLiterals::sanitizePhoneNumber(QString(size, u'+'), true) == QStringLiteral("00"));
}

int main(int argc, char** argv)
{
    return runTest<PhoneNumberLiteralsTest>(argc, argv);
}

#include "PhoneNumberLiteralsTest.moc"
