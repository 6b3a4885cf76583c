#include <text/HTMLHelpers.h>

#include <LinkOracle.h>
#include <RunTest.h>
#include <Valgrind.h>
#include <random>
#include <string_view>
#include <vector>

namespace {

// Sanitizers slow the engine most of all.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int generatedTexts = 100'000;
constexpr int exhaustiveLength = 4;
#else
constexpr int generatedTexts = 1'000'000;
constexpr int exhaustiveLength = 6;
#endif

QString anchor(QString const& link)
{
    return QStringLiteral("<a href=\"") + link + QStringLiteral("\">") + link + QStringLiteral("</a>");
}

QString shown(QString const& text)
{
    return QString::fromLatin1(text.toUtf8().toPercentEncoding(" @:/#*,+"));
}

/// A description of the difference between the scanner and the expression on \a text, empty when there is
/// none.
QString difference(QString const& text)
{
    auto const expected = LinkOracle::processLinks(text);
    if (!expected) {
        return QStringLiteral("the engine gave up on \"%1\"").arg(shown(text));
    }
    QString const actual = HTMLHelpers::processLinks(text);
    return actual == *expected ? QString()
                               : QStringLiteral("\"%1\": got \"%2\", expected \"%3\"")
                                     .arg(shown(text), shown(actual), shown(*expected));
}

QString repeated(char const* unit, int count)
{
    return QString::fromUtf8(unit).repeated(count);
}

} // namespace

class HTMLHelpersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linksAddresses_data();
    void linksAddresses();
    void leavesTextWithoutAddress_data();
    void leavesTextWithoutAddress();
    void agreesWithExpressionOnWhatItReads_data();
    void agreesWithExpressionOnWhatItReads();
    void agreesWithExpressionOnAllShortTexts_data();
    void agreesWithExpressionOnAllShortTexts();
    void agreesWithExpressionOnGeneratedTexts();
    void answersHostileText_data();
    void answersHostileText();
    void findsLinksRoundLoneSurrogates();
    void breaksLines_data();
    void breaksLines();
    void linksEachLineByItself();
};

void HTMLHelpersTest::linksAddresses_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("after");
    auto const row = [](char const* tag, char const* before, char const* link, char const* after) {
        QTest::newRow(tag) << QString::fromUtf8(before) << QString::fromUtf8(link)
                           << QString::fromUtf8(after);
    };
    row("final full stop stays outside", "see ", "www.example.com", ".");
    row("comma after a phone number", "call ", "+390612345678", ", thanks");
    row("bracket after a URL", "", "http://example.org/page", ")");
    row("several marks after a link", "(", "http://example.org/page", ").;,!");
    row("marks within a path stay", "", "example.org/a.b,c;d!e)f", ")");
    row("IP address with port and path", "", "10.0.0.1:8080/a", "");
    row("IP address without word boundary", "9", "99.1.1.1", "");
    row("IP address inside a word", "x", "1.2.3.4", "y");
    row("last octet takes what fits", "", "1.2.3.25", "6");
    row("octet with a leading zero", "0", "1.2.3.4", "");
    row("last octet zero", "", "1.2.3.0", "4");
    row("IP address with a colon and no port", "", "1.2.3.4", ": hello");
    row("IP address with a path and no port", "", "1.2.3.4/x", " y");
    row("fifth octet stays outside", "", "1.2.3.4", ".5");
    row("nine digits", "call ", "123456789", " now");
    row("phone number with tones", "", "0612345678,,12#*3", "");
    row("commas at the end of a phone number", "", "0612345678", ",,,");
    row("plus behind a digit", "0", "+0612345678", "");
    row("two plus signs", "+", "+0612345678", "");
    row("e-mail address", "write to ", "john.doe+x@mail.example.com", "!");
    row("e-mail address with an underscore", "", "_john_@example.com", "");
    row("e-mail address starting after its dot", ".", "john@example.com", "");
    row("e-mail address with path", "", "a@b.cd/x:y", " z");
    row("second at sign", "a@", "b@example.com", "");
    row("file name", "open ", "notes.txt", " please");
    row("host name with port", "at ", "example.org:8080/x", "");
    row("host name after an underscore and a hyphen", "_", "-b.com", "");
    row("host name inside hyphens", "--", "a-b.example.com", "");
    row("letters left over behind the last label", "", "example.com", "2");
    row("one letter behind the last label", "", "a.bc", ".d");
    row("label of digits ends the host name", "", "a.bc", ".1.de");
    row("host name starting behind a label of digits", "1.", "a1.de", "");
    row("upper-case scheme", "", "HTTPS://X", "");
    row("scheme with a name of its own", "", "smb://server", "");
    for (char const* const scheme :
         {"http", "https", "smb", "ftp", "file", "HTTP", "HTTPS", "SMB", "FTP", "FILE"}) {
        QByteArray const url = QByteArray(scheme) + "://x";
        row(scheme, "", url.constData(), "");
    }
    row("scheme behind a hyphen", "x-", "file:///etc/hosts", "");
    row("URL of nothing but a mark", "http://", "", ")");
    QTest::newRow("path in other alphabets")
        << QString() << QStringLiteral("example.org/\u00e9\u00a0\u0085\u20ac") << QStringLiteral(" x");
    QTest::newRow("letters of other alphabets are no word")
        << QStringLiteral("\u00e9") << QStringLiteral("example.com") << QStringLiteral("\u00e9");
    QTest::newRow("line feed ends a path") << QString() << QStringLiteral("a.bc/d") << QStringLiteral("\ne");
    QTest::newRow("vertical tab ends a path")
        << QString() << QStringLiteral("a.bc/d") << QStringLiteral("\ve");
    QTest::newRow("placeholders in a path")
        << QStringLiteral("%1 ") << QStringLiteral("a.bc/%1%2") << QStringLiteral(" %2");
}

void HTMLHelpersTest::linksAddresses()
{
    QFETCH(QString, before);
    QFETCH(QString, link);
    QFETCH(QString, after);
    if (link.isEmpty()) {
        link = before;
        before.clear();
    }
    QCOMPARE(HTMLHelpers::processLinks(before + link + after), before + anchor(link) + after);
    QCOMPARE(difference(before + link + after), QString());
}

void HTMLHelpersTest::leavesTextWithoutAddress_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("words") << QStringLiteral("hello, how are you? Fine. And you?");
    QTest::newRow("eight digits") << QStringLiteral("12345678");
    QTest::newRow("plus and eight digits") << QStringLiteral("+12345678");
    QTest::newRow("host name ending in one letter") << QStringLiteral("a.b");
    QTest::newRow("label without a letter") << QStringLiteral("1-2.com");
    QTest::newRow("host name behind an underscore") << QStringLiteral("_a.com");
    QTest::newRow("letter of the label before its hyphen only") << QStringLiteral("_a-1.com");
    QTest::newRow("double dot") << QStringLiteral("a..com");
    QTest::newRow("scheme alone") << QStringLiteral("http:// x");
    QTest::newRow("scheme in mixed case") << QStringLiteral("Http://x");
    QTest::newRow("scheme behind a letter") << QStringLiteral("xhttp://x");
    QTest::newRow("unknown scheme") << QStringLiteral("tel://x");
    QTest::newRow("three octets") << QStringLiteral("1.2.3.");
    QTest::newRow("octet too high") << QStringLiteral("1.2.256.4");
    QTest::newRow("no host behind the at sign") << QStringLiteral("john@example");
    QTest::newRow("digits of another script")
        << QStringLiteral("\u0661\u0662\u0663\u0664\u0665\u0666\u0667\u0668\u0669");
}

void HTMLHelpersTest::leavesTextWithoutAddress()
{
    QFETCH(QString, text);
    QCOMPARE(HTMLHelpers::processLinks(text), text);
    QCOMPARE(difference(text), QString());
}

void HTMLHelpersTest::agreesWithExpressionOnWhatItReads_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("mail behind a phone number") << QStringLiteral("+123456789@example.com/x y");
    QTest::newRow("mail behind an IP address") << QStringLiteral("1.2.3.4.a@example.com");
    QTest::newRow("host name in a run that mail follows") << QStringLiteral("a.bc.d@e");
    QTest::newRow("chain that ends in digits, then another") << QStringLiteral("a.b.1.c.de.f..g.hi");
    QTest::newRow("IP addresses without a gap") << QStringLiteral("1.1.1.11.1.1.11.1.1.1");
    QTest::newRow("www in the middle") << QStringLiteral("a.www.b.cd www.cd www.a.b");
    QTest::newRow("URL behind an unfinished one") << QStringLiteral("http:// http://a http:/b.cd");
    QTest::newRow("every ASCII character") << [] {
        QString all;
        for (char16_t c = 0; c < 256; ++c) {
            all += QStringLiteral(" a.bc/") + QChar(c) + QStringLiteral("d.ef") + QChar(c) +
                   QStringLiteral("@g.hi");
        }
        return all;
    }();
}

void HTMLHelpersTest::agreesWithExpressionOnWhatItReads()
{
    QFETCH(QString, text);
    QCOMPARE(difference(text), QString());
}

void HTMLHelpersTest::agreesWithExpressionOnAllShortTexts_data()
{
    QTest::addColumn<QString>("opening");
    QTest::addColumn<QString>("alphabet");
    QTest::newRow("hosts and mail") << QString() << QStringLiteral("a1-._@/ ");
    QTest::newRow("mail signs") << QStringLiteral("a") << QStringLiteral("a+.@-_:1");
    QTest::newRow("behind a host name") << QStringLiteral("a.bc") << QStringLiteral("a.:/1@- ");
    QTest::newRow("behind a mail address") << QStringLiteral("x@y.zz") << QStringLiteral("a.:/1@-_");
    QTest::newRow("inside a word") << QStringLiteral("_a") << QStringLiteral("a1-._@+b");
    QTest::newRow("behind www") << QStringLiteral("www.") << QStringLiteral("wa.1-@:w");
    QTest::newRow("octets") << QStringLiteral("1.2.") << QStringLiteral("0125.6:/");
    QTest::newRow("behind an IP address") << QStringLiteral("25.1.0.2") << QStringLiteral("059.:/a-");
    QTest::newRow("phone numbers") << QStringLiteral("12345678") << QStringLiteral("9+#*,. a");
    for (QString const& word : LinkOracle::words()) {
        if (!word.endsWith(u':') && !word.endsWith(u'/')) {
            QTest::addRow("behind %s", qPrintable(word)) << word << QStringLiteral(":/a. @");
        }
    }
}

void HTMLHelpersTest::agreesWithExpressionOnAllShortTexts()
{
    QFETCH(QString, opening);
    QFETCH(QString, alphabet);
    std::vector<qsizetype> digits;
    auto const advance = [&digits, &alphabet] {
        for (qsizetype& digit : digits) {
            if (++digit < alphabet.size()) {
                return true;
            }
            digit = 0;
        }
        digits.push_back(0);
        return digits.size() <= exhaustiveLength;
    };
    do {
        QString text = opening;
        for (qsizetype const digit : digits) {
            text += alphabet[digit];
        }
        QString const found = difference(text);
        if (!found.isEmpty()) {
            QFAIL(qPrintable(found));
        }
    } while (advance());
}

void HTMLHelpersTest::agreesWithExpressionOnGeneratedTexts()
{
    static constexpr std::u16string_view signsAndAddresses[] = {
        u"a",       u"bc",     u"Z",       u"1",         u"25",
        u"255",     u"256",    u"0",       u"-",         u".",
        u".",       u"_",      u"+",       u"@",         u"/",
        u":",       u" ",      u"\n",      u"\t",        u",",
        u";",       u"!",      u")",       u"#",         u"*",
        u"//",      u".com",   u"1.2.3.4", u".1.",       u"\u00e9",
        u"\u00a0",  u"\u0085", u"\u2028",  u"\u0660",    u"&amp;",
        u"K",       u"%1",     u"example", u"123456789", u"\U0001F600",
        u"Http://", u"hTTPS:", u"tel:",    u"www.",      std::u16string_view(u"\0", 1)};
    QStringList pieces = LinkOracle::words();
    for (std::u16string_view const piece : signsAndAddresses) {
        pieces += QStringView(piece).toString();
    }
    std::mt19937 random(20240607);
    std::uniform_int_distribution<qsizetype> anyPiece(0, pieces.size() - 1);
    std::uniform_int_distribution<int> anyCount(1, 14);
    for (int i = 0; i < sizeForThisRun(generatedTexts); ++i) {
        QString text;
        for (int left = anyCount(random); left > 0; --left) {
            text += pieces[anyPiece(random)];
        }
        QString const found = difference(text);
        if (!found.isEmpty()) {
            QFAIL(qPrintable(found));
        }
        // The engine refuses a lone surrogate; it must count as any other character that belongs to no word.
        if (text.contains(QChar::ReplacementCharacter)) {
            QString expected = HTMLHelpers::processLinks(text);
            expected.replace(QChar::ReplacementCharacter, QChar(0xdfff));
            text.replace(QChar::ReplacementCharacter, QChar(0xdfff));
            QCOMPARE(HTMLHelpers::processLinks(text), expected);
        }
    }
}

void HTMLHelpersTest::answersHostileText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("html");
    auto const unchanged = [](char const* tag, char const* unit) {
        QTest::newRow(tag) << repeated(unit, 500'000) << repeated(unit, 500'000);
    };
    auto const oneLink = [](char const* tag, QString const& text, QString const& trailing = {}) {
        QTest::newRow(tag) << text + trailing << anchor(text) + trailing;
    };
    unchanged("letters and hyphens", "a-");
    unchanged("letters and dots", "a.");
    unchanged("letters and plus signs", "a+");
    unchanged("letters", "a");
    unchanged("hyphens", "-");
    unchanged("dots", ".");
    unchanged("digits and hyphens", "1-");
    unchanged("at signs", "@");
    unchanged("letters and at signs", "a@");
    unchanged("labels and at signs", "a.b@");
    unchanged("three octets", "1.1.1.a");
    unchanged("colons", "a:");
    unchanged("schemes without a body", "http:// ");
    unchanged("digits of eight", "12345678 ");
    QTest::newRow("labels before a long body")
        << repeated("a-", 200'000) + QStringLiteral("://") + repeated("x", 200'000)
        << repeated("a-", 200'000) + QStringLiteral("://") + repeated("x", 200'000);
    oneLink("digits", repeated("1", 500'000));
    oneLink("www", repeated("www.", 250'000) + QStringLiteral("com"));
    oneLink("www without an end", repeated("www.", 249'999) + QStringLiteral("www"), QStringLiteral("."));
    oneLink("schemes", repeated("http://", 100'000));
    oneLink("labels beyond the engine's limits", repeated("ab.", 100'000) + QStringLiteral("com"));
    oneLink("mail beyond the engine's limits", repeated("a-", 100'000) + QStringLiteral("b@") +
                                                   repeated("ab.", 100'000) + QStringLiteral("com"));
    oneLink("tones", QStringLiteral("123456789") + repeated("1#*,", 100'000) + QStringLiteral("1"));
    oneLink("marks at the end", QStringLiteral("a.bc/x"), repeated(".;,!)", 100'000));
    QTest::newRow("octets without an end")
        << repeated("1.1.1.", 200'000)
        << (anchor(QStringLiteral("1.1.1.1")) + QStringLiteral(".")).repeated(150'000);
}

void HTMLHelpersTest::answersHostileText()
{
    QFETCH(QString, text);
    QFETCH(QString, html);
    QVERIFY(HTMLHelpers::processLinks(text) == html);
    QVERIFY(HTMLHelpers::generateParagraphs(text) == html);
}

void HTMLHelpersTest::findsLinksRoundLoneSurrogates()
{
    QString const high(QChar(0xd83d));
    QString const low(QChar(0xde00));
    QString const host = QStringLiteral("a.bc");
    QCOMPARE(HTMLHelpers::processLinks(high + host + low), high + anchor(host) + low);
    QCOMPARE(HTMLHelpers::processLinks(low + host + QStringLiteral("/") + high + QStringLiteral(" x")),
             low + anchor(host + QStringLiteral("/") + high) + QStringLiteral(" x"));
    QCOMPARE(HTMLHelpers::processLinks(high), high);
}

void HTMLHelpersTest::breaksLines_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("html");
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("one line") << QStringLiteral("a") << QStringLiteral("a");
    QTest::newRow("two lines") << QStringLiteral("a\nb") << QStringLiteral("a<br>b");
    QTest::newRow("empty lines") << QStringLiteral("\n\na\n") << QStringLiteral("<br><br>a<br>");
    QTest::newRow("carriage return stays") << QStringLiteral("a\r\nb") << QStringLiteral("a\r<br>b");
    QTest::newRow("links on each line")
        << QStringLiteral("a.bc\nb.cd/x")
        << anchor(QStringLiteral("a.bc")) + QStringLiteral("<br>") + anchor(QStringLiteral("b.cd/x"));
}

void HTMLHelpersTest::breaksLines()
{
    QFETCH(QString, text);
    QTEST(HTMLHelpers::generateParagraphs(text), "html");
}

void HTMLHelpersTest::linksEachLineByItself()
{
    QString const line = QStringLiteral("see www.example.com, 123456789 and a@b.cd");
    QString const linked = HTMLHelpers::processLinks(line);
    QVERIFY(linked != line);
    int const lines = 10'000;
    QStringList const text(lines, line);
    QStringList const html(lines, linked);
    QVERIFY(HTMLHelpers::generateParagraphs(text.join(u'\n')) == html.join(QStringLiteral("<br>")));
}

int main(int argc, char** argv)
{
    return runTest<HTMLHelpersTest>(argc, argv);
}

#include "HTMLHelpersTest.moc"
