// What is dialled for what people type, paste and click.

#include <client/PhoneNumber.h>

#include <RunTest.h>
#include <TextGenerator.h>
#include <telephony/PhoneNumberLiterals.h>

using namespace Softphone;

class DialStringTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dials_data();
    void dials();
    void dialsEmergencyNumbersAsTyped();
    void dialsWithZeros_data();
    void dialsWithZeros();
    void takesAnyLength();
    void answersTwiceTheSame();
    void formatsAsTyped_data();
    void formatsAsTyped();
    void cursorStaysBehindItsDigit_data();
    void cursorStaysBehindItsDigit();
    void cursorOutsideIsTakenToTheEnds();
    void formattingEveryBeginning();
};

void DialStringTest::dials_data()
{
    QTest::addColumn<QString>("region");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("dialled");
    auto const row = [](char const* tag, char const* region, char const* typed, char const* dialled) {
        QTest::newRow(tag) << QString::fromUtf8(region) << QString::fromUtf8(typed)
                           << QString::fromUtf8(dialled);
    };
    row("emergency number of the table", "IT", "118", "118");
    row("emergency number of the table abroad", "FR", "113", "113");
    row("emergency number of the region", "GB", "999", "999");
    row("emergency number with zeros", "AU", "000", "000");
    row("emergency number with country code", "IT", "+39 118", "118");
    row("emergency number with country code after zeros", "IT", "0039 112", "112");
    row("emergency number after words", "IT", "chiama il 118", "118");
    row("emergency number before words", "IT", "118 ambulanza", "118");
    row("emergency number with the code of another country", "IT", "+44 118", "+44118");
    row("short number of another country", "FR", "+39 1515", "+391515");
    row("short number", "DE", "116 117", "116117");
    row("extension of one digit", "IT", "9", "9");
    row("extension of three digits", "IT", "101", "101");
    row("extension of six digits", "IT", "123456", "123456");
    row("extension with a leading zero", "IT", "0123", "0123");
    row("extension with a label", "IT", "int. 12", "12");
    row("extension after x", "IT", "x12", "12");
    row("labelled number that no plan knows", "IT", "Tel. 101", "101");

    row("national", "IT", "06 123 4567", "061234567");
    row("national with brackets", "IT", "(06) 123-4567", "061234567");
    row("national with a slash", "IT", "06/1234567", "061234567");
    row("national with a slash in the middle", "IT", "02 1234 / 5678", "0212345678");
    row("national without its zero", "GB", "20 7946 0020", "2079460020");
    row("national with (0)", "GB", "(0)20 7946 0020", "02079460020");
    row("national trunk prefix that is the country code", "US", "1 212 555 0123", "12125550123");
    row("local number", "US", "555-0123", "5550123");
    row("number of no plan", "IT", "20261122", "20261122");
    row("number of 18 digits", "IT", "123456789012345678", "123456789012345678");
    row("number of 17 digits", "IT", "12345678901234567", "12345678901234567");
    row("region in small letters", "it", "+39 06 1234567", "+39061234567");
    row("no region", "", "06 1234567", "061234567");
    row("unknown region", "ZZ", "+44 (0)20 7946 0020", "+442079460020");

    row("country code", "IT", "+39 333 123 4567", "+393331234567");
    row("country code and the zero of Italy", "US", "+39 06 1234567", "+39061234567");
    row("country code and the bracketed zero of Italy", "US", "+39 (0)6 1234567", "+39061234567");
    row("country code and (0)", "IT", "+44 (0)20 7946 0020", "+442079460020");
    row("country code after zeros and (0)", "IT", "0044 (0)20 7946 0020", "+442079460020");
    row("country code of nobody and (0)", "IT", "+999 (0)20 7946", "+9990207946");
    row("country code and (0), number of no plan", "IT", "+44 (0)20 79", "+442079");
    row("country code and the bracketed zero of Italy, number of no plan", "US", "+39 (0)6 12", "+390612");
    row("(0) where no number has a zero", "IT", "+1 (0)212 555 0123", "+12125550123");
    row("country code after zeros", "IT", "00442079460020", "+442079460020");
    row("country code after zeros where they are not usual", "US", "0044 20 7946 0020", "+442079460020");
    row("country code after 011", "US", "011 44 20 7946 0020", "+442079460020");
    row("country code without a plus sign", "IT", "39 333 1234567", "+393331234567");
    row("country code, number of no plan", "IT", "+39 9", "+399");
    row("code in front of itself", "IT", "+39 0039 06 1234567", "+39061234567");
    row("code in front of itself without blanks", "IT", "+390039061234567", "+39061234567");
    row("code with zeros in front of itself", "IT", "0039+39 06 1234567", "+39061234567");
    row("code twice with a plus sign", "IT", "+39+39 06 1234567", "+39061234567");
    row("code twice with zeros", "IT", "0039 0039 06 1234567", "+39061234567");
    row("code twice around a zero", "IT", "0044 (0) 0044 20 7946 0020", "+442079460020");
    row("code that comes together around a zero", "IT", "0044 (0)004 4 9004 306020", "+449004306020");
    row("code twice around a zero, with plus signs", "IT", "+44 (0) +44 20 7946 0020", "+442079460020");
    row("code in front of itself thrice", "IT", "+39 0039 +39 06 1234567", "+39061234567");
    row("code of three digits in front of itself", "IT", "+378 00378 0549 886377", "+3780549886377");
    row("plus sign and zeros", "IT", "+0039 06 1234567", "+39061234567");
    row("two plus signs", "IT", "++39 06 1234567", "+39061234567");
    row("code in front of another", "IT", "0039 +44 20 7946 0020", "+442079460020");
    row("free number of the world", "IT", "+800 8001 2345", "+80080012345");
    row("San Marino from Italy", "IT", "0549 886377", "0549886377");
    row("San Marino from abroad", "FR", "+378 0549 886377", "+3780549886377");
    row("San Marino without 0549", "FR", "+378 886377", "+3780549886377");
    row("San Marino at home", "SM", "886377", "886377");
    row("Vatican", "VA", "06 698 12345", "0669812345");
    row("Vatican from abroad", "FR", "+39 06 698 12345", "+390669812345");

    row("embedding mark in front", "IT", "\u202a+39 333 1234567", "+393331234567");
    row("isolates around", "IT", "\u2068+39 333 1234567\u2069", "+393331234567");
    row("direction marks inside", "IT", "\u200e06\u200f 1234567", "061234567");
    row("soft hyphens", "IT", "06\u00ad123\u00ad4567", "061234567");
    row("blanks of no width", "IT", "06\u200b12\u200c34\u200d567\ufeff", "061234567");
    row("blanks that do not break", "IT", "06\u00a0123\u202f4567", "061234567");
    row("dashes", "IT", "06\u2010123\u20114567\u2013", "061234567");
    row("minus sign", "IT", "06\u22121234567", "061234567");
    row("tab and line end", "IT", "\t06 1234567\r\n", "061234567");
    row("Arabic digits", "IT", "\u0660\u0666\u0661\u0662\u0663\u0664\u0665\u0666\u0667", "061234567");
    row("wide forms", "IT", "\uff0b\uff13\uff19\uff10\uff16\uff11\uff12\uff13\uff14\uff15\uff16\uff17",
        "+39061234567");
    row("digits as keys", "IT", "1\ufe0f\u20e31\ufe0f\u20e38\ufe0f\u20e3", "118");
    row("digits that another script counts with", "IT", "\u0660\u0666 1234567\u2029", "061234567");
    row("mathematical digits", "IT", "\U0001d7ce\U0001d7d4 1234567", "061234567");

    row("vanity", "US", "1-800-FLOWERS", "18003569377");
    row("vanity elsewhere", "IT", "1-800-FLOWERS", "18003569377");
    row("vanity with country code", "IT", "+1 800 FLOWERS", "+18003569377");
    row("vanity in small letters", "GB", "0800 flowers", "08003569377");
    row("vanity in one piece", "IT", "800-pizza", "80074992");
    row("vanity in small letters of no plan", "IT", "123 pizza oggi", "");

    row("extension in Italian", "IT", "+39 06 1234 int. 12", "+39061234,12");
    row("extension in full", "IT", "06 1234567 interno 12", "061234567,12");
    row("extension in English", "IT", "06 1234567 ext 12", "061234567,12");
    row("extension after a glued x", "IT", "06 1234567x12", "061234567,12");
    row("extension after a number sign", "IT", "06 1234567 #12", "061234567,12");
    row("extension in brackets", "IT", "06 1234567 (int. 12)", "061234567,12");
    row("extension after a comma", "IT", "06 1234567, int. 12", "061234567,12");

    row("tones", "IT", "06 1234,,12", "061234,,12");
    row("tones with signs", "IT", "0612345678,,123#", "0612345678,,123#");
    row("tones after a semicolon", "IT", "06 1234567;12", "061234567;12");
    row("tones after a country code", "IT", "+39 06 1234567,,12", "+39061234567,,12");
    row("words after a comma", "IT", "06 1234567, Mario", "061234567");
    row("tones alone", "IT", ",12", "");
    row("service code", "IT", "*31#", "*31#");
    row("service code and number", "IT", "*31#06 12345", "*31#0612345");
    row("diversion", "IT", "**61*+393331234567#", "**61*+393331234567#");
    row("service code with a number sign", "IT", "#31#", "#31#");
    row("service code without digits", "IT", "*", "");
    row("service code with blanks", "IT", "* 21 * 06 1234567 #", "*21*061234567#");
    row("short code in stars", "IT", "*31*", "*31*");
    row("star among the digits", "IT", "06 1234567*5", "061234567*5");
    row("star among the digits, labelled", "IT", "Tel: 06 1234567 * 5", "061234567*5");
    row("star and number sign among the digits", "IT", "061234567*5#2", "061234567*5#2");
    row("star and plus sign among the digits", "IT", "080004080*+4*", "080004080*+4*");
    row("bracketed zero inside of a country code", "GB", "+4 (0)4202", "+404202");
    row("country codes that a plus sign kept apart", "IT", "004+0004074+0004077", "+40740004077");
    row("figure of a list", "IT", "1. 06 1234567", "061234567");
    row("figure of a list in a bracket", "IT", "12) 333 1234567", "3331234567");
    row("figure of a list, international", "IT", "2) +39 06 1234567", "+39061234567");
    row("area code with a dot", "IT", "06. 1234567", "061234567");
    row("trunk digit with a dot", "US", "1. 212 555 0123", "12125550123");
    row("figure in front of what no plan knows", "IT", "1. 99 99 99 99", "199999999");
    row("longer figure in front of a number", "IT", "2011. 06 1234567", "2011061234567");
    row("star of a list", "IT", "* 06 1234567", "061234567");
    row("number sign of a list", "IT", "# +39 06 1234567", "+39061234567");
    row("forwarding code with a blank", "US", "* 72 555 0123", "*725550123");
    row("short number in stars", "US", "*2004*", "*2004*");
    row("plus sign that opens no number in a code", "US", "*2+4*", "*24*");
    row("in bold, behind a figure with bars", "GB", "*1||333]234567*,", "1333234567,");
    row("in bold", "IT", "*06 1234567*", "061234567");
    row("in bold, two stars", "IT", "**06 1234567**", "061234567");
    row("stars of other counts", "IT", "**061234567*", "**061234567*");
    row("in bold, with an extension", "IT", "*06 1234567 int. 12*", "061234567,12");
    row("star of a footnote", "IT", "06 1234567*", "061234567");

    row("tel", "IT", "tel:+39-06-1234567", "+39061234567");
    row("tel in capitals", "IT", "TEL:+39061234567", "+39061234567");
    row("tel with slashes", "IT", "tel://+39061234567", "+39061234567");
    row("tel with encoded bytes", "IT", "tel:%2B39%2006%201234567", "+39061234567");
    row("tel with extension", "IT", "tel:+39-06-1234;ext=12", "+39061234,12");
    row("tel with other parameters", "IT", "tel:+39061234567;isub=1;x=y", "+39061234567");
    row("tel with an emergency number", "IT", "tel:112;phone-context=+39", "112");
    row("tel with an emergency number abroad", "FR", "tel:112;phone-context=+39", "112");
    row("tel with a context", "FR", "tel:06-1234567;phone-context=+39", "+39061234567");
    row("tel with a context that names a network", "IT", "tel:101;phone-context=pbx.example.org", "101");
    row("tel with an extension that is none", "IT", "tel:+39061234567;ext=1-x2", "+39061234567");
    row("tel with a context and a country code", "FR", "tel:+442079460020;phone-context=+39",
        "+442079460020");
    row("tel with a context and letters", "IT", "tel:800-FLOWERS;phone-context=+1", "8003569377");
    row("tel with nothing", "IT", "tel:", "");

    row("sip", "IT", "sip:mario@example.org", "sip:mario@example.org");
    row("sips in capitals", "IT", "SIPS:Mario@Example.org;transport=tcp",
        "SIPS:Mario@Example.org;transport=tcp");
    row("sip with blanks and marks around", "IT", " \u202asip:mario@example.org\u202c\n",
        "sip:mario@example.org");
    row("sip in angle brackets", "IT", "\"Mario\" <sip:101@example.org>", "sip:101@example.org");
    row("sip of nobody", "IT", "sip:", "");
    row("sip with a line end inside", "IT", "sip:a@b\r\nVia: x", "");
    row("sip with a control inside", "IT", "sip:a@b\x01", "");
    row("sip with brackets inside", "IT", "sip:a@b<c>d", "");
    row("sip with a bracket that nothing opened", "IT", "sip:a>@b", "");

    row("number after a name", "IT", "Mario Rossi 06 1234567", "061234567");
    row("number after a name and a comma", "IT", "Mario Rossi, 06 1234567", "061234567");
    row("number before a name", "IT", "06 1234567 Mario", "061234567");
    row("number between words", "IT", "chiamami al 06 1234567 oggi", "061234567");
    row("number after another figure", "IT", "call me at 5 on 06 1234567", "061234567");
    row("first of two", "IT", "06 1234567 / 333 1234567", "061234567");
    row("number after the figure of a list", "IT", "1. +39 06 1234567", "+39061234567");
    row("number after a figure in brackets", "IT", "(2) +39 06 1234567 int. 12", "+39061234567,12");
    row("number after a time", "IT", "10:30 +39 06 1234567", "+39061234567");
    row("number after its country code without a sign", "IT", "39 +39 06 1234567", "+39061234567");
    row("first of two after a figure", "IT", "1. +39 06 1234567 / 333 1234567", "+39061234567");
    row("no number after a figure", "IT", "06 1234 +39 9", "061234399");
    row("first of two, of six digits", "IT", "803 116 / 06 1234567", "803116");
    row("first of two lines", "IT", "06 1234567\n06 7654321", "061234567");
    row("first of two with a country code", "IT", "06 1234567 +39 333 1234567", "061234567");
    row("first of two endings", "IT", "06 1234567/8", "061234567");
    row("first of two endings of two digits", "IT", "06 1234567/18", "061234567");

    row("nothing", "IT", "", "");
    row("blanks", "IT", "  \u00a0", "");
    row("name", "IT", "Mario", "");
    row("words", "IT", "call me", "");
    row("plus sign", "IT", "+", "");
    row("plus sign and zeros alone", "IT", "+00", "");
    row("brackets", "IT", "()", "");
    row("name with digits", "IT", "mario12345", "");
    row("digits with a name", "IT", "061234567abc", "061234567222");
    row("digits with two letters", "IT", "0612345AB", "");
    row("house number", "IT", "Via Roma 12, 00100 Roma", "");
    row("room", "IT", "Room 101", "");
    row("mail address", "IT", "mario99@example.org", "");
    row("web address", "IT", "https://example.org/061234567", "");
    row("web address after tel", "IT", "tel:https://061234567", "");
    row("number after a name with an underscore", "IT", "sala_061234567", "");
    row("number glued to a word of another script", "IT", "\u4e2d061234567", "");
    row("words with two figures", "IT", "06 1234567x Mario", "");
    row("date", "IT", "31/8/2011", "");
    row("date with dashes", "IT", "2011-08-31", "");
    row("percentage", "IT", "061234567%", "");
    row("amount", "IT", "\u20ac 1.234.567,00", "");
    row("order number", "IT", "Ordine 20261122", "");
}

void DialStringTest::dials()
{
    QFETCH(QString, region);
    QFETCH(QString, typed);
    QTEST(dialString(typed, region), "dialled");
}

void DialStringTest::dialsEmergencyNumbersAsTyped()
{
    for (auto const& [number, description] : PhoneNumberLiterals::EMERGENCY_NUMBERS) {
        for (char const* region : {"IT", "it", "GB", "US", "", "ZZ"}) {
            QCOMPARE(dialString(number, QString::fromLatin1(region)), number);
            QCOMPARE(dialString(QStringLiteral("\u202a %1 \u202c").arg(number), QString::fromLatin1(region)),
                     number);
            std::optional<PhoneNumber> const parsed = PhoneNumber::parse(number, QString::fromLatin1(region));
            QVERIFY(parsed && parsed->isValid());
        }
        QCOMPARE(dialString(QStringLiteral("+39 ") + number, QStringLiteral("IT")), number);
    }
}

void DialStringTest::dialsWithZeros_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("dialled");
    auto const row = [](char const* tag, char const* typed, char const* dialled) {
        QTest::newRow(tag) << QString::fromUtf8(typed) << QString::fromUtf8(dialled);
    };
    row("country code", "+44 (0)20 7946 0020", "00442079460020");
    row("zeros stay", "0044 20 7946 0020", "00442079460020");
    row("national", "06 1234567", "061234567");
    row("emergency number", "+39 118", "118");
    row("number of no plan", "+39 9", "00399");
    row("diversion", "**61*+393331234567#", "**61*00393331234567#");
    row("tones", "+39 06 1234567,,12", "0039061234567,,12");
    row("sip", "sip:+39061234567@example.org", "sip:+39061234567@example.org");
}

void DialStringTest::dialsWithZeros()
{
    QFETCH(QString, typed);
    QTEST(dialString(typed, QStringLiteral("IT"), PlusSign::DoubleZero), "dialled");
}

void DialStringTest::takesAnyLength()
{
    constexpr qsizetype many = 1'000'000;
    QString const it = QStringLiteral("IT");
    QString const number = QStringLiteral("06 1234567");
    QCOMPARE(dialString(QString(many, QChar(0x200b)) + number, it), QStringLiteral("061234567"));
    QCOMPARE(dialString(QString(many, u'1'), it), QString());
    QCOMPARE(dialString(QString(many, u'a') + u' ' + number, it), QStringLiteral("061234567"));
    QCOMPARE(dialString(QString(many, u'('), it), QString());
    QCOMPARE(dialString(QString(many, u'+'), it), QString());
    QVERIFY(!PhoneNumber::parse(QString(many, u'1'), it));
    QCOMPARE(formatAsTyped(QString(many, u'1'), it), QString(many, u'1'));
    QCOMPARE(dialString(QString(250, u'1'), it), QString(250, u'1'));
    QCOMPARE(dialString(QString(251, u'1'), it), QString());
}

void DialStringTest::answersTwiceTheSame()
{
    TextGenerator generator(
        14,
        {QStringLiteral("+"),     QStringLiteral("00"),   QStringLiteral("39"),      QStringLiteral("44"),
         QStringLiteral("06"),    QStringLiteral("(0)"),  QStringLiteral("1234"),    QStringLiteral("567"),
         QStringLiteral(" "),     QStringLiteral("-"),    QStringLiteral("/"),       QStringLiteral(","),
         QStringLiteral(";"),     QStringLiteral("*"),    QStringLiteral("#"),       QStringLiteral("x12"),
         QStringLiteral("int. "), QStringLiteral("tel:"), QStringLiteral("FLOWERS"), QStringLiteral("Mario "),
         QChar(0x202a),           QChar(0xd800),          QStringLiteral(";ext=12"), QStringLiteral("112"),
         QStringLiteral("800")});
    for (int i = 0; i < 3000; ++i) {
        QString const typed = generator.text(8);
        for (PlusSign const plus : {PlusSign::Keep, PlusSign::DoubleZero}) {
            QString const once = dialString(typed, QStringLiteral("IT"), plus);
            QString const twice = dialString(once, QStringLiteral("IT"), plus);
            QVERIFY2(once == twice,
                     qUtf8Printable(QStringList({typed, once, twice}).join(QStringLiteral(" -> "))));
        }
    }
}

void DialStringTest::formatsAsTyped_data()
{
    QTest::addColumn<QString>("region");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("formatted");
    auto const row = [](char const* tag, char const* region, char const* typed, char const* formatted) {
        QTest::newRow(tag) << QString::fromUtf8(region) << QString::fromUtf8(typed)
                           << QString::fromUtf8(formatted);
    };
    row("nothing", "IT", "", "");
    row("plus sign", "IT", "+", "+");
    row("one digit", "IT", "0", "0");
    row("national", "GB", "02079460020", "020 7946 0020");
    row("formatted already", "GB", "020 7946 0020", "020 7946 0020");
    row("a digit deleted in the middle", "GB", "020 746 0020", "020 7460 020");
    row("blank deleted", "GB", "020 79460020", "020 7946 0020");
    row("American", "US", "2125550123", "(212) 555-0123");
    row("American, bracket deleted", "US", "(212 555-0123", "(212) 555-0123");
    row("international", "IT", "+442079460020", "+44 20 7946 0020");
    row("emergency number", "IT", "118", "118");
    row("name", "IT", "Mario 06", "Mario 06");
    row("service code", "IT", "*31#06", "*31#06");
    row("tones", "GB", "02079460020,,12", "020 7946 0020,,12");
    row("as many digits as are formatted", "IT", "1234567890 1234567890", "12345678901234567890");
    row("too many digits", "IT", "1234567890 12345678901", "1234567890 12345678901");
    row("invisible mark", "GB", "\u202a02079460020", "020 7946 0020");
    row("bracketed zero", "IT", "+44 (0)20", "+44 (0)20");
    row("date", "IT", "31/8/2011", "31/8/2011");
    row("sip", "IT", "sip:1@2", "sip:1@2");
}

void DialStringTest::formatsAsTyped()
{
    QFETCH(QString, region);
    QFETCH(QString, typed);
    QTEST(formatAsTyped(typed, region), "formatted");
}

void DialStringTest::cursorStaysBehindItsDigit_data()
{
    QTest::addColumn<QString>("typed"); // '|' is the cursor
    QTest::addColumn<QString>("formatted");
    auto const row = [](char const* tag, char const* typed, char const* formatted) {
        QTest::newRow(tag) << QString::fromUtf8(typed) << QString::fromUtf8(formatted);
    };
    row("empty", "|", "|");
    row("at the end", "(212) 555-01|", "(212) 555-01|");
    row("at the end, behind what formatting takes away", "2125550123-|", "(212) 555-0123|");
    row("at the beginning", "|2125550123", "|(212) 555-0123");
    row("a digit typed in the middle", "(212) 55|5-013", "(212) 55|5-013");
    row("a digit typed before a dash", "212555|0123", "(212) 555|-0123");
    row("a digit deleted before a blank", "(21|) 555-0123", "(21|5) 550-123");
    row("behind a dash that goes and comes", "212555-|0123", "(212) 555|-0123");
    row("behind a dash of what is right already", "(212) 555-|0123", "(212) 555-|0123");
    row("behind the plus sign", "+|12125550123", "+|1 212-555-0123");
    row("invisible marks in front", "\u202a\u202a212|5550123", "(212|) 555-0123");
    row("digits of another script", "\u0662\u0661\u0662|5550123", "(212|) 555-0123");
    row("in the tones", "2125550123,1|2", "(212) 555-0123,1|2");
    row("a name, which stays", "Mary - |Jane", "Mary - |Jane");
}

void DialStringTest::cursorStaysBehindItsDigit()
{
    QFETCH(QString, typed);
    QFETCH(QString, formatted);
    auto const cursor = typed.indexOf(u'|');
    auto const expected = formatted.indexOf(u'|');
    typed.remove(u'|');
    formatted.remove(u'|');
    QCOMPARE(formatAsTyped(typed, QStringLiteral("US")), formatted);
    QCOMPARE(cursorInFormatted(typed, cursor, formatted), expected);
}

void DialStringTest::cursorOutsideIsTakenToTheEnds()
{
    QString const typed = QStringLiteral("2125550123");
    QString const formatted = QStringLiteral("(212) 555-0123");
    QCOMPARE(cursorInFormatted(typed, -1, formatted), 0);
    QCOMPARE(cursorInFormatted(typed, 1000, formatted), formatted.size());
    QCOMPARE(cursorInFormatted(typed, 9, QStringLiteral("(2")), 2);
}

/// While a number grows and shrinks no digit is lost, and formatting what is formatted changes nothing.
void DialStringTest::formattingEveryBeginning()
{
    QString const region = QStringLiteral("GB");
    for (QString const& number : {QStringLiteral("02079460020"), QStringLiteral("+442079460020"),
                                  QStringLiteral("0039061234567"), QStringLiteral("07700900018")}) {
        for (qsizetype length = 1; length <= number.size(); ++length) {
            QString const formatted = formatAsTyped(number.first(length), region);
            QString digits = formatted;
            digits.removeIf([](QChar c) { return !c.isDigit() && c != u'+'; });
            QCOMPARE(digits, number.first(length));
            QCOMPARE(formatAsTyped(formatted, region), formatted);
        }
    }
}

int main(int argc, char** argv)
{
    return runTest<DialStringTest>(argc, argv);
}

#include "DialStringTest.moc"
