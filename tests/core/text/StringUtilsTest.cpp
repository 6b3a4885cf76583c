#include <text/StringUtils.h>

#include <MessageRecorder.h>
#include <QVariant>
#include <RunTest.h>
#include <TextGenerator.h>
#include <TextOracles.h>
#include <Valgrind.h>
#include <algorithm>
#include <limits>

class StringUtilsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void padsNumbers_data();
    void padsNumbers();
    void titleCasesTheFirstLetter_data();
    void titleCasesTheFirstLetter();
    void takesInitialsOfThreeWords_data();
    void takesInitialsOfThreeWords();
    void collapsesSpacesOnly_data();
    void collapsesSpacesOnly();
    void simplifiesWhiteSpace_data();
    void simplifiesWhiteSpace();
    void removesSpacesFromEmail_data();
    void removesSpacesFromEmail();
    void removesUnprintableUnits_data();
    void removesUnprintableUnits();
    void removesUnprintableUnitsAsTheRuleSays();
    void removesTheCharactersOfTheTextItself();
    void validatesEmails_data();
    void validatesEmails();
    void validatesPhoneNumbers_data();
    void validatesPhoneNumbers();
    void validatesEveryShortTextAsItsExpressionDoes();
    void validatesGeneratedTextsAsTheirExpressionsDo();
    void validatesHostileTexts_data();
    void validatesHostileTexts();
    void filtersAudioDevices_data();
    void filtersAudioDevices();
    void writesDurations_data();
    void writesDurations();
    void ordersIgnoringCase_data();
    void ordersIgnoringCase();
    void parsesShortcuts_data();
    void parsesShortcuts();
    void comparesShortcutsByKeyTextAndModifiers();
    void comparesVersions_data();
    void comparesVersions();
};

void StringUtilsTest::padsNumbers_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("width");
    QTest::addColumn<QChar>("fill");
    QTest::addColumn<QString>("padded");
    QTest::newRow("zero to two digits") << 0 << 2 << QChar(u'0') << QStringLiteral("00");
    QTest::newRow("one digit to two") << 7 << 2 << QChar(u'0') << QStringLiteral("07");
    QTest::newRow("exactly as wide") << 42 << 2 << QChar(u'0') << QStringLiteral("42");
    QTest::newRow("wider is not cut") << 12345 << 2 << QChar(u'0') << QStringLiteral("12345");
    QTest::newRow("no width") << 5 << 0 << QChar(u'x') << QStringLiteral("5");
    QTest::newRow("negative width pads on the right") << 5 << -3 << QChar(u'x') << QStringLiteral("5xx");
    QTest::newRow("zeros go behind the sign") << -5 << 4 << QChar(u'0') << QStringLiteral("-005");
    QTest::newRow("other fill goes before the sign") << -5 << 4 << QChar(u' ') << QStringLiteral("  -5");
    QTest::newRow("a percent sign as fill") << 1 << 3 << QChar(u'%') << QStringLiteral("%%1");
    QTest::newRow("lowest int") << std::numeric_limits<int>::min() << 3 << QChar(u'0')
                                << QStringLiteral("-2147483648");
}

void StringUtilsTest::padsNumbers()
{
    QFETCH(int, number);
    QFETCH(int, width);
    QFETCH(QChar, fill);
    QTEST(StringUtils::stringifyNumberWithLowerBoundWidth(number, width, fill), "padded");
}

void StringUtilsTest::titleCasesTheFirstLetter_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("changed");
    auto const same = [](char const* tag, char const* text) {
        QTest::newRow(tag) << QString::fromUtf8(text) << QString::fromUtf8(text);
    };
    QTest::newRow("small letter") << QStringLiteral("mario rossi") << QStringLiteral("Mario rossi");
    QTest::newRow("the rest keeps its case") << QStringLiteral("mARIO") << QStringLiteral("MARIO");
    QTest::newRow("accented letter") << QStringLiteral("\u00E8 vero") << QStringLiteral("\u00C8 vero");
    QTest::newRow("title case is not upper case") << QStringLiteral("\u01C6ep") << QStringLiteral("\u01C5ep");
    QTest::newRow("upper case of a pair becomes title case")
        << QStringLiteral("\u01C4ep") << QStringLiteral("\u01C5ep");
    same("empty", "");
    same("capital letter", "Mario");
    same("digit", "1st");
    same("space before the letter", " mario");
    same("bracket beside the letters", "[mario");
    same("at sign", "@mario");
    same("sharp s has no title case of one unit", "\xC3\x9F\x61");
    same("Chinese letter", "\xE4\xB8\xAD\x61");
    same("Arabic-Indic digit is no letter", "\xD9\xA1\x61");
    same("surrogates are no letters", "\xF0\x90\x90\xA8\x61");
    same("small roman numeral is a number", "\xE2\x85\xB0\x61");
}

void StringUtilsTest::titleCasesTheFirstLetter()
{
    QFETCH(QString, text);
    QTEST(StringUtils::getFistLetterUppercase(text), "changed");
}

void StringUtilsTest::takesInitialsOfThreeWords_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("initials");
    auto const row = [](char const* tag, char const* name, char const* initials) {
        QTest::newRow(tag) << QString::fromUtf8(name) << QString::fromUtf8(initials);
    };
    row("empty", "", "");
    row("all blank", "   \t ", "");
    row("one word", "mario", "m");
    row("two words, case kept", "  mario rossi ", "mr");
    row("four words", "Anna Maria Bianchi Verdi", "AMB");
    row("first word opens with a bracket", "(Office) Desk", "D");
    row("first word is a dash", "- Mario", "M");
    row("digits count", "123 Main", "1M");
    row("words without initials do not use up the three", "a - b - c d", "abc");
    row("Arabic-Indic digit counts", "\xD9\xA1\xD9\xA2 x", "\xD9\xA1x");
    row("accented letter counts", "\xC3\xA8 o", "\xC3\xA8o");
    row("superscript two is a number", "\xC2\xB2 a", "\xC2\xB2\x61");
    row("surrogates are no letters", "\xF0\x90\x90\xA8x b", "b");
    row("combining mark is no letter", "\xCC\x81\x61 b", "b");
    row("tab before the name goes", "\tmario rossi", "mr");
    row("tab inside opens a word that does not count", "mario \trossi", "m");
    row("tab does not separate", "mario\trossi", "m");
    row("no-break space does not separate", "mario\xC2\xA0rossi", "m");
    row("runs of spaces", "a    b", "ab");
    row("only signs", "( ) -", "");
}

void StringUtilsTest::takesInitialsOfThreeWords()
{
    QFETCH(QString, name);
    QTEST(StringUtils::getInitialsFromFullName(name), "initials");
}

void StringUtilsTest::collapsesSpacesOnly_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("collapsed");
    auto const row = [](char const* tag, char const* text, char const* collapsed) {
        QTest::newRow(tag) << QString::fromUtf8(text) << QString::fromUtf8(collapsed);
    };
    row("empty", "", "");
    row("only spaces", "   ", "");
    row("nothing to do", "a b", "a b");
    row("runs of spaces, a tab kept", "a   b\t c", "a b\t c");
    row("spaces round a tab", "a  \t  b", "a \t b");
    row("line breaks stay", "a\n\nb", "a\n\nb");
    row("every kind of white space goes at the ends", "\xC2\xA0\t a  b \n\xE2\x80\x83", "a b");
    row("no-break spaces stay inside", "a\xC2\xA0\xC2\xA0\x62", "a\xC2\xA0\xC2\xA0\x62");
}

void StringUtilsTest::collapsesSpacesOnly()
{
    QFETCH(QString, text);
    QString const before = text;
    QTEST(StringUtils::removeExtraBlankSpaces(text), "collapsed");
    QCOMPARE(text, before);
}

void StringUtilsTest::simplifiesWhiteSpace_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("simplified");
    QTest::newRow("spaces, tab and line break") << QStringLiteral(" a \t b\n") << QStringLiteral("a b");
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("only white space") << QStringLiteral("\t\r\n ") << QString();
    QTest::newRow("no-break space too") << QStringLiteral("a\u00A0\u2003b") << QStringLiteral("a b");
}

void StringUtilsTest::simplifiesWhiteSpace()
{
    QFETCH(QString, text);
    QTEST(StringUtils::removeWhitespaceCharacters(text), "simplified");
}

void StringUtilsTest::removesSpacesFromEmail_data()
{
    QTest::addColumn<QString>("email");
    QTest::addColumn<QString>("sanitized");
    QTest::newRow("spaces everywhere") << QStringLiteral(" a b@c . d ") << QStringLiteral("ab@c.d");
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("other white space stays")
        << QStringLiteral("a\t\n\u00A0b") << QStringLiteral("a\t\n\u00A0b");
}

void StringUtilsTest::removesSpacesFromEmail()
{
    QFETCH(QString, email);
    QTEST(StringUtils::sanitizeEmail(email), "sanitized");
}

void StringUtilsTest::removesUnprintableUnits_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("unwanted");
    QTest::addColumn<QString>("rest");
    auto const row = [](char const* tag, char const* text, char const* unwanted, char const* rest) {
        QTest::newRow(tag) << QString::fromUtf8(text) << QString::fromUtf8(unwanted)
                           << QString::fromUtf8(rest);
    };
    row("empty", "", "", "");
    row("control characters, tabs and line breaks", "a\tb\r\nc\x07", "", "abc");
    row("spaces are printable", " a b ", "", " a b ");
    row("named characters too", "a-b (c)", "-()", "ab c");
    row("a character named twice", "aab", "aa", "b");
    row("all of it", "aaa", "a", "");
    row("accents stay", "\xC3\xA8", "e", "\xC3\xA8");
    row("zero-width joiner is unprintable", "a\xE2\x80\x8D\x62", "", "ab");
    row("surrogates are unprintable", "a\xF0\x9F\x98\x80\x62", "", "ab");
}

void StringUtilsTest::removesUnprintableUnits()
{
    QFETCH(QString, text);
    QFETCH(QString, unwanted);
    StringUtils::removeNoPrintableChars(text, unwanted);
    QTEST(text, "rest");
}

void StringUtilsTest::removesUnprintableUnitsAsTheRuleSays()
{
    QString every;
    QString unwanted;
    QString expected;
    for (int unit = 0; unit <= 0xFFFF; ++unit) {
        QChar const character(unit);
        every += character;
        bool const isUnwanted = unit % 3 == 0;
        if (isUnwanted) {
            unwanted += character;
        }
        if (character.isPrint() && !isUnwanted) {
            expected += character;
        }
    }
    StringUtils::removeNoPrintableChars(every, unwanted);
    QCOMPARE(every, expected);
}

void StringUtilsTest::removesTheCharactersOfTheTextItself()
{
    QString text = QStringLiteral("abc");
    StringUtils::removeNoPrintableChars(text, text);
    QCOMPARE(text, QString());
}

void StringUtilsTest::validatesEmails_data()
{
    QTest::addColumn<QString>("email");
    QTest::addColumn<bool>("valid");
    auto const row = [](char const* tag, char const* email, bool valid) {
        QTest::newRow(tag) << QString::fromUtf8(email) << valid;
    };
    row("plain", "john.doe@example.com", true);
    row("every sign of the mailbox", "a._%+-Z9@x.it", true);
    row("signs open the mailbox", "-@x.it", true);
    row("a dot opens the domain", "a@.x.it", true);
    row("the domain is one dash", "a@-.it", true);
    row("dots in a row", "a@..it", true);
    row("four letters at the end", "a@x.info", true);
    row("empty", "", false);
    row("space", "john doe@example.com", false);
    row("five letters at the end", "a@x.arena", false);
    row("museum", "john@example.museum", false);
    row("one letter at the end", "a@x.y", false);
    row("digit at the end", "a@x.i2", false);
    row("no dot", "a@xit", false);
    row("nothing before the dot", "a@.it", false);
    row("no mailbox", "@x.it", false);
    row("no at sign", "a.it", false);
    row("two at signs", "a@b@x.it", false);
    row("dot only before the at sign", "a.it@x", false);
    row("ends in a dot", "a@x.it.", false);
    row("line break at the end", "a@x.it\n", false);
    row("accented letter in the mailbox", "\xC3\xA8@x.it", false);
    row("accented letter in the domain", "a@\xC3\xA8.it", false);
    row("accented letter at the end", "a@x.i\xC3\xA8", false);
    row("full-width letters", "\xEF\xBD\x81@x.it", false);
    row("bracket beside the capitals", "[@x.it", false);
    row("underscore in the domain", "a@x_y.it", false);
    QTest::newRow("zero unit") << QStringLiteral("a@x.it") + QChar(0) << false;
    QTest::newRow("lone surrogate") << QString(QChar(0xD800)) + QStringLiteral("@x.it") << false;
}

void StringUtilsTest::validatesEmails()
{
    QFETCH(QString, email);
    QTEST(StringUtils::validateEmail(email), "valid");
    QTEST(plain::validateEmail(email), "valid");
}

void StringUtilsTest::validatesPhoneNumbers_data()
{
    QTest::addColumn<QString>("number");
    QTest::addColumn<bool>("valid");
    auto const row = [](char const* tag, char const* number, bool valid) {
        QTest::newRow(tag) << QString::fromUtf8(number) << valid;
    };
    row("international", "+390612345678", true);
    row("service code", "*31#", true);
    row("pause inside", "123,456", true);
    row("pause at the end", "123,", true);
    row("pauses in a row", "1,,2", true);
    row("one digit", "1", true);
    row("plus and star", "+*", true);
    row("empty", "", false);
    row("lone plus", "+", false);
    row("plus and pause", "+,1", false);
    row("opens with a pause", ",1", false);
    row("two pluses", "++1", false);
    row("plus inside", "1+2", false);
    row("spaces", "+39 06 1234", false);
    row("dashes", "06-1234", false);
    row("brackets", "(06)1234", false);
    row("letters", "0800CALL", false);
    row("line break at the end", "123\n", false);
    row("Arabic-Indic digits", "\xD9\xA1\xD9\xA2", false);
    row("full-width digits", "\xEF\xBC\x91", false);
    QTest::newRow("zero unit") << QStringLiteral("1") + QChar(0) << false;
    QTest::newRow("lone surrogate") << QStringLiteral("1") + QChar(0xDC00) << false;
}

void StringUtilsTest::validatesPhoneNumbers()
{
    QFETCH(QString, number);
    QTEST(StringUtils::validatePhoneNumber(number), "valid");
    QTEST(plain::validatePhoneNumber(number), "valid");
}

void StringUtilsTest::validatesEveryShortTextAsItsExpressionDoes()
{
    QStringList const emailPieces{QStringLiteral("a"), QStringLiteral("."), QStringLiteral("@"),
                                  QStringLiteral("_"), QStringLiteral("\u00E8")};
    for (int length = 0; length <= 6; ++length) {
        TextGenerator::visitAll(emailPieces, length, [](QString const& email) {
            bool const valid = StringUtils::validateEmail(email);
            QVERIFY2(valid == plain::validateEmail(email), qPrintable(email));
        });
    }
    QStringList const numberPieces{QStringLiteral("1"), QStringLiteral("#"), QStringLiteral(","),
                                   QStringLiteral("+"), QStringLiteral("a")};
    for (int length = 0; length <= 6; ++length) {
        TextGenerator::visitAll(numberPieces, length, [](QString const& number) {
            bool const valid = StringUtils::validatePhoneNumber(number);
            QVERIFY2(valid == plain::validatePhoneNumber(number), qPrintable(number));
        });
    }
}

void StringUtilsTest::validatesGeneratedTextsAsTheirExpressionsDo()
{
    std::regex const email = plain::emailExpression();
    std::regex const number = plain::phoneNumberExpression();
    QStringList pieces{QStringLiteral("@x."), QStringLiteral(".it"), QStringLiteral("\u00E8"),
                       QStringLiteral("\u0661"), QString(QChar(0xD801))};
    for (char character = 0x20; character < 0x7F; ++character) {
        pieces += QString(QLatin1Char(character));
    }
    TextGenerator emails(1, pieces);
    TextGenerator likelyEmails(2,
                               pieces.mid(0, 2) + QStringLiteral("a b @ . - _ i t").split(QLatin1Char(' ')));
    TextGenerator numbers(3, QStringLiteral("1 2 0 # * , + a").split(QLatin1Char(' ')));
    int valid = 0;
    for (int round = 0; round < sizeForThisRun(350'000); ++round) {
        for (QString const& text : {emails.text(6), likelyEmails.text(8), numbers.text(7)}) {
            std::string const bytes = plain::bytesOf(text);
            bool const isEmail = StringUtils::validateEmail(text);
            bool const isNumber = StringUtils::validatePhoneNumber(text);
            QVERIFY2(isEmail == std::regex_match(bytes, email), bytes.c_str());
            QVERIFY2(isNumber == std::regex_match(bytes, number), bytes.c_str());
            valid += isEmail || isNumber ? 1 : 0;
        }
    }
    QVERIFY(valid > sizeForThisRun(10'000));
}

void StringUtilsTest::validatesHostileTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("email");
    QTest::addColumn<bool>("number");
    int const length = sizeForThisRun(1'000'000);
    QString const digits(length, QLatin1Char('1'));
    QTest::newRow("digits") << digits << false << true;
    QTest::newRow("digits and a letter") << digits + QStringLiteral("x") << false << false;
    QTest::newRow("digits and pauses")
        << QStringLiteral("1,").repeated(length / 2) + QStringLiteral("x") << false << false;
    QTest::newRow("a long mailbox") << digits + QStringLiteral("@x.it") << true << false;
    QTest::newRow("dots behind the at sign")
        << QStringLiteral("a@") + QStringLiteral("a.").repeated(length / 2) << false << false;
    QTest::newRow("at signs") << QString(length, QLatin1Char('@')) << false << false;
}

void StringUtilsTest::validatesHostileTexts()
{
    QFETCH(QString, text);
    QTEST(StringUtils::validateEmail(text), "email");
    QTEST(StringUtils::validatePhoneNumber(text), "number");
}

void StringUtilsTest::filtersAudioDevices_data()
{
    QTest::addColumn<QString>("endPattern");
    QTest::addColumn<QString>("namePattern");
    QTest::addColumn<QStringList>("kept");
    QString const headset = QStringLiteral("USB Headset (2- Plantronics)");
    QString const speakers = QStringLiteral("Speakers (Realtek)");
    QString const monitor = QStringLiteral("Monitor of Speakers (Realtek)");
    QString const hostile = QString(40, QLatin1Char('a')) + QStringLiteral("!");
    QTest::newRow("both empty keep all")
        << QString() << QString() << QStringList{headset, speakers, monitor, hostile};
    QTest::newRow("the end") << QStringLiteral("\\(Realtek\\)") << QString()
                             << QStringList{speakers, monitor};
    QTest::newRow("not at the end") << QStringLiteral("Realtek") << QString() << QStringList{};
    QTest::newRow("the name, order kept")
        << QString() << QStringLiteral("Speakers|Headset") << QStringList{headset, speakers, monitor};
    QTest::newRow("both") << QStringLiteral("\\)") << QStringLiteral("^Speakers") << QStringList{speakers};
    QTest::newRow("case counts") << QString() << QStringLiteral("speakers") << QStringList{};
    QTest::newRow("the end binds only the last alternative")
        << QStringLiteral("USB|nothing") << QString() << QStringList{headset};
    QTest::newRow("invalid end") << QStringLiteral("(") << QString() << QStringList{};
    QTest::newRow("invalid name") << QString() << QStringLiteral("[") << QStringList{};
    QTest::newRow("a backslash eats the end") << QStringLiteral("\\") << QString() << QStringList{};
    QTest::newRow("the engine's limit matches nothing")
        << QString() << QStringLiteral("^(?:a|a?)+$|^USB") << QStringList{headset};
}

void StringUtilsTest::filtersAudioDevices()
{
    QFETCH(QString, endPattern);
    QFETCH(QString, namePattern);
    QList<QString> const devices{
        QStringLiteral("USB Headset (2- Plantronics)"), QStringLiteral("Speakers (Realtek)"),
        QStringLiteral("Monitor of Speakers (Realtek)"), QString(40, QLatin1Char('a')) + QStringLiteral("!")};
    MessageRecorder recorder;
    QList<QString> const found = StringUtils::filterAudioDevices(devices, endPattern, namePattern);
    QCOMPARE(recorder.messages(), QStringList());
    QTEST(found, "kept");
}

void StringUtilsTest::writesDurations_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << 0 << QStringLiteral("00:00");
    QTest::newRow("under a minute") << 59 << QStringLiteral("00:59");
    QTest::newRow("a minute") << 60 << QStringLiteral("01:00");
    QTest::newRow("last second without hours") << 3599 << QStringLiteral("59:59");
    QTest::newRow("an hour") << 3600 << QStringLiteral("01:00:00");
    QTest::newRow("last second of the day") << 86399 << QStringLiteral("23:59:59");
    QTest::newRow("a day wraps") << 86400 << QStringLiteral("00:00");
    QTest::newRow("a day and an hour") << 90000 << QStringLiteral("01:00:00");
    QTest::newRow("before midnight") << -1 << QStringLiteral("23:59:59");
    QTest::newRow("a day before") << -86400 << QStringLiteral("00:00");
    QTest::newRow("highest int") << std::numeric_limits<int>::max() << QStringLiteral("03:14:07");
    QTest::newRow("lowest int") << std::numeric_limits<int>::min() << QStringLiteral("20:45:52");
}

void StringUtilsTest::writesDurations()
{
    QFETCH(int, seconds);
    QTEST(StringUtils::getDurationSecondsToString(seconds), "text");
}

void StringUtilsTest::ordersIgnoringCase_data()
{
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<QString>("answer");
    auto const row = [](char const* tag, char const* a, char const* b, char const* answer) {
        QTest::newRow(tag) << QString::fromUtf8(a) << QString::fromUtf8(b) << QString::fromUtf8(answer);
    };
    row("equal but for case", "abc", "ABC", "undecided");
    row("both empty", "", "", "undecided");
    row("before", "abc", "abd", "less");
    row("behind, whatever the case", "b", "A", "not less");
    row("a prefix sorts before", "ab", "ABC", "less");
    row("empty sorts before", "", "a", "less");
    row("accented letters", "\xC3\x88", "\xC3\xA8", "undecided");
    row("final and other sigma", "\xCF\x82", "\xCE\xA3", "undecided");
    row("letters outside the basic plane", "\xF0\x90\x90\x80", "\xF0\x90\x90\xA8", "undecided");
    row("the Kelvin sign is a k", "\xE2\x84\xAA", "k", "undecided");
}

void StringUtilsTest::ordersIgnoringCase()
{
    QFETCH(QString, a);
    QFETCH(QString, b);
    std::optional<bool> const less = StringUtils::isLessInsensitive(a, b);
    QString const decided = less.value_or(false) ? QStringLiteral("less") : QStringLiteral("not less");
    QTEST(less ? decided : QStringLiteral("undecided"), "answer");
}

void StringUtilsTest::parsesShortcuts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<unsigned int>("modifiers");
    QTest::addColumn<unsigned int>("key");
    QTest::addColumn<QString>("keyText");
    unsigned int const ctrl = Qt::ControlModifier;
    unsigned int const alt = Qt::AltModifier;
    unsigned int const all = Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier | Qt::MetaModifier;
    unsigned int const unknown = 0x01FF'FFFF;
    auto const row = [](char const* tag, char const* text, unsigned int modifiers, unsigned int key,
                        char const* keyText) {
        QTest::newRow(tag) << QString::fromUtf8(text) << modifiers << key << QString::fromUtf8(keyText);
    };
    row("one modifier", "Ctrl+A", ctrl, Qt::Key_A, "A");
    row("small letters", "ctrl+a", ctrl, Qt::Key_A, "A");
    row("no modifier", "F4", 0, Qt::Key_F4, "F4");
    row("every modifier", "Meta+Ctrl+Alt+Shift+Space", all, Qt::Key_Space, "Space");
    row("keypad", "Num+5", Qt::KeypadModifier, Qt::Key_5, "5");
    row("plus as the key", "Ctrl++", ctrl, Qt::Key_Plus, "+");
    row("comma as the key", "Ctrl+,", ctrl, Qt::Key_Comma, ",");
    row("a letter beyond ASCII", "Alt+\xC3\xA0", alt, 0xC0, "\xC3\x80");
    row("only the first chord counts", "Ctrl+A, Alt+B", ctrl, Qt::Key_A, "A");
    row("empty", "", 0, unknown, "");
    row("unreadable", "foobar", 0, unknown, "");
    row("unreadable key behind a modifier", "Ctrl+foobar", 0, unknown, "");
    row("a modifier alone", "Ctrl+", 0, unknown, "");
    row("a character outside the basic plane", "\xF0\x9F\x98\x80", 0, unknown, "");
    row("a chord behind an unreadable one", "foobar, A", 0, unknown, "");
    row("an unreadable chord behind one", "A, foobar", 0, Qt::Key_A, "A");
    QTest::newRow("a zero unit behind a modifier")
        << QStringLiteral("Ctrl+") + QChar(0) << 0U << unknown << QString();
}

void StringUtilsTest::parsesShortcuts()
{
    QFETCH(QString, text);
    QFETCH(unsigned int, modifiers);
    QFETCH(unsigned int, key);
    QFETCH(QString, keyText);
    StringUtils::ShortcutDefinition const definition = StringUtils::parseShortcut(text);
    QCOMPARE(definition.modifiers, modifiers);
    QCOMPARE(definition.key, key);
    QCOMPARE(definition.keyText, keyText);
    QCOMPARE(definition.isValid(), !keyText.isEmpty());
    QCOMPARE(definition.shortcut, keyText.isEmpty() ? QString() : text);
    QList<QVariant> const sequence = StringUtils::toQmlSequence(text);
    if (keyText.isEmpty()) {
        QVERIFY(sequence.isEmpty());
    } else {
        QCOMPARE(sequence.size(), 2);
        QCOMPARE(sequence[0].toUInt(), modifiers);
        QCOMPARE(sequence[1].toUInt(), key);
    }
}

void StringUtilsTest::comparesShortcutsByKeyTextAndModifiers()
{
    auto const parsed = [](char const* text) { return StringUtils::parseShortcut(QString::fromUtf8(text)); };
    QVERIFY(parsed("Ctrl+A") == parsed("Ctrl+a"));
    QVERIFY(!(parsed("Ctrl+A") == parsed("Alt+A")));
    QVERIFY(!(parsed("Ctrl+A") == parsed("Ctrl+B")));
    QVERIFY(parsed("") == StringUtils::ShortcutDefinition());
    QVERIFY(parsed("foobar") == StringUtils::ShortcutDefinition());
    StringUtils::ShortcutDefinition const left{1, 2, QStringLiteral("\u00E8"), QStringLiteral("x")};
    StringUtils::ShortcutDefinition const right{1, 3, QStringLiteral("\u00C8"), QStringLiteral("y")};
    QVERIFY(left == right);
}

void StringUtilsTest::comparesVersions_data()
{
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<int>("order");
    auto const row = [](char const* tag, char const* a, char const* b, int order) {
        QTest::newRow(tag) << QString::fromUtf8(a) << QString::fromUtf8(b) << order;
    };
    row("missing components are zero", "1.2", "1.2.0.0", 0);
    row("an empty component is zero", "1..3", "1.0.3", 0);
    row("a component that is no number is zero", "2.x", "2", 0);
    row("a number with a tail is zero", "2.1beta", "2", 0);
    row("the fifth component is ignored", "1.2.3.4.5", "1.2.3.4", 0);
    row("numbers, not text", "1.10", "1.9", 1);
    row("the first difference decides", "1.2.9", "1.3.0", -1);
    row("the fourth component counts", "1.2.3.4", "1.2.3.5", -1);
    row("both empty", "", "", 0);
    row("empty is zero", "", "0.0.0.0", 0);
    row("empty is earlier", "", "0.0.0.1", -1);
    row("negative components", "-1", "0", -1);
    row("highest int", "2147483647", "2147483646", 1);
    row("too high is zero", "2147483648", "0", 0);
    row("lowest int", "-2147483648", "-2147483647", -1);
    row("twenty digits are zero", "99999999999999999999", "1", -1);
    row("leading zeros", "1.02", "1.2", 0);
    row("hexadecimal is zero", "0x10", "0", 0);
    row("Arabic-Indic digits are zero", "\xD9\xA1", "0", 0);
    row("dots only", "...", "0", 0);
}

void StringUtilsTest::comparesVersions()
{
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(int, order);
    QCOMPARE(StringUtils::isLessVersionThan(a, b), order < 0);
    QCOMPARE(StringUtils::isSameVersionAs(a, b), order == 0);
    QCOMPARE(StringUtils::isBiggerVersionThan(a, b), order > 0);
    QCOMPARE(StringUtils::isLessVersionThan(b, a), order > 0);
    QCOMPARE(StringUtils::isBiggerVersionThan(b, a), order < 0);
}

int main(int argc, char** argv)
{
    return runTest<StringUtilsTest>(argc, argv);
}

#include "StringUtilsTest.moc"
