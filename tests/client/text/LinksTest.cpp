// Links in running text, and the HTML that has them.

#include "LinksReadBack.h"

#include <client/Links.h>
#include <client/PhoneNumber.h>

#include <QFile>
#include <QGuiApplication>
#include <RunTest.h>
#include <TextGenerator.h>
#include <algorithm>

using namespace Softphone;

namespace {

QStringList casesOf(QString const& path)
{
    QFile file(path);
    QStringList cases;
    if (!file.open(QIODevice::ReadOnly)) {
        return cases;
    }
    for (QString const& line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'))) {
        if (!line.isEmpty() && !line.startsWith(QLatin1String("# "))) {
            cases += line;
        }
    }
    return cases;
}

/// A text in front, without a sign that an address could begin with.
QString paragraphStart()
{
    return QStringLiteral("Ciao Anna,\nleggi ");
}

QString inParagraph(QString const& text)
{
    return paragraphStart() + text + QStringLiteral(" e rispondi, grazie.\n");
}

QStringList foundIn(QString const& text, LinkRules const& rules = {})
{
    QStringList found;
    for (Link const& link : findLinks(text, rules)) {
        found += text.sliced(link.position, link.length) + QStringLiteral(" -> ") +
                 link.target.toString(QUrl::FullyEncoded);
    }
    return found;
}

LinkKind kindOf(QUrl const& target)
{
    QString const scheme = target.scheme();
    return scheme.startsWith(QLatin1String("http"))  ? LinkKind::Web
           : scheme == QLatin1String("mailto")       ? LinkKind::Email
           : scheme == QLatin1String("tel")          ? LinkKind::Phone
           : scheme.startsWith(QLatin1String("sip")) ? LinkKind::Sip
                                                     : LinkKind::Other;
}

/// What holds for the links of every text.
bool isSound(QString const& text, LinkRules const& rules = {})
{
    qsizetype end = 0;
    for (Link const& link : findLinks(text, rules)) {
        bool const inOrder = link.position >= end && link.length > 0;
        end = link.position + link.length;
        bool const allowed = rules.schemes.contains(link.target.scheme(), Qt::CaseInsensitive);
        if (!inOrder || end > text.size() || !allowed || kindOf(link.target) != link.kind) {
            return false;
        }
    }
    return true;
}

bool survivesHtml(QString const& text, LinkRules const& rules = {})
{
    LinksReadBack const read(linkedHtml(text, rules));
    return read.hasLinks(findLinks(text, rules)) && read.shows(text);
}

} // namespace

class LinksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsLink_data();
    void findsLink();
    void takesEachCharacter_data();
    void takesEachCharacter();
    void findsNoLink_data();
    void findsNoLink();
    void findsSeveral_data();
    void findsSeveral();
    void keepsToRules_data();
    void keepsToRules();
    void refusesBrokenAddressesOfOtherSchemes_data();
    void refusesBrokenAddressesOfOtherSchemes();
    void usesRegion();
    void givesPlaces();
    void differsInAnyField();
    void hostsHaveUpTo253Characters();
    void writesHtml_data();
    void writesHtml();
    void everyUnitSurvives();
    void escapesAtEachPlace_data();
    void escapesAtEachPlace();
    void findsAtEachPlace();
    void hostileText_data();
    void hostileText();
    void randomText();
};

void LinksTest::findsLink_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("link");
    QTest::addColumn<QUrl>("target");
    for (QString const& line : casesOf(QStringLiteral(LINK_CASES))) {
        QStringList const cells = line.split(QStringLiteral(" | "));
        QVERIFY2(cells.size() == 3, qUtf8Printable(line));
        QUrl const target(cells[2] == QLatin1String("=") ? cells[1] : cells[2]);
        QTest::addRow("%s", qUtf8Printable(cells[0])) << cells[0] << cells[1] << target;
    }
}

void LinksTest::findsLink()
{
    QFETCH(QString, text);
    QFETCH(QString, link);
    QFETCH(QUrl, target);
    QStringList const expected(link + QStringLiteral(" -> ") + target.toString(QUrl::FullyEncoded));
    QCOMPARE(foundIn(text), expected);
    QCOMPARE(foundIn(inParagraph(text)), expected);
    QCOMPARE(findLinks(text)[0].kind, kindOf(target));
    QCOMPARE(findLinks(text)[0].target, target);
    QCOMPARE(findLinks(inParagraph(text))[0].position, findLinks(text)[0].position + paragraphStart().size());
    QVERIFY(survivesHtml(inParagraph(text)));
}

void LinksTest::takesEachCharacter_data()
{
    QTest::addColumn<QString>("pattern"); // %1 for the character
    QTest::addColumn<QString>("characters");
    QTest::newRow("in a mailbox") << QStringLiteral("anna%1rossi@example.com")
                                  << QStringLiteral("aZ09-._+&'*=%#$^~");
    QTest::newRow("in front of a mailbox's last sign")
        << QStringLiteral("anna%1-rossi@example.com") << QStringLiteral("aZ09-_+&'*=%#$^~");
    QTest::newRow("in a user's name")
        << QStringLiteral("https://anna%1rossi@example.com/x") << QStringLiteral("aZ09-._+&'*=%$~!,;");
    QTest::newRow("in a scheme") << QStringLiteral("x%1y:z") << QStringLiteral("a09-+");
    QTest::newRow("in an IPv6 address")
        << QStringLiteral("https://[::%1]/x") << QStringLiteral("0123456789abcdefABCDEF");
    QTest::newRow("behind a host") << QStringLiteral("https://example.com%1x") << QStringLiteral("/?#");
    QTest::newRow("behind a bare host") << QStringLiteral("example.com%1x") << QStringLiteral("/?#");
    QTest::newRow("behind a SIP host") << QStringLiteral("sip:anna@example.com%1x=y") << QStringLiteral(";?");
}

void LinksTest::takesEachCharacter()
{
    QFETCH(QString, pattern);
    QFETCH(QString, characters);
    for (QChar const character : characters) {
        QString const text = QString(pattern).replace(QStringLiteral("%1"), character);
        LinkRules rules;
        rules.schemes += text.section(QLatin1Char(':'), 0, 0);
        QList<Link> const links = findLinks(text, rules);
        QVERIFY2(links.size() == 1, qUtf8Printable(text));
        QCOMPARE(text.sliced(links[0].position, links[0].length), text);
        QVERIFY2(survivesHtml(text, rules), qUtf8Printable(text));
    }
}

void LinksTest::findsNoLink_data()
{
    QTest::addColumn<QString>("text");
    for (QString const& line : casesOf(QStringLiteral(NO_LINK_CASES))) {
        QTest::addRow("%s", qUtf8Printable(line)) << line;
    }
}

void LinksTest::findsNoLink()
{
    QFETCH(QString, text);
    QCOMPARE(foundIn(text), QStringList());
    QCOMPARE(foundIn(inParagraph(text)), QStringList());
    QVERIFY(survivesHtml(inParagraph(text)));
}

void LinksTest::findsSeveral_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("links");
    auto const row = [](char const* text, std::initializer_list<char const*> links) {
        QStringList list;
        for (char const* link : links) {
            list += QString::fromUtf8(link);
        }
        QTest::addRow("%s", text) << QString::fromUtf8(text) << list;
    };
    row("www.a.it, b@b.it e 06 1234567 o sip:c@c.it",
        {"www.a.it -> https://www.a.it", "b@b.it -> mailto:b@b.it", "06 1234567 -> tel:+39061234567",
         "sip:c@c.it -> sip:c@c.it"});
    row("06 1234567 / 333 1234567 https://a.it/061234567",
        {"06 1234567 -> tel:+39061234567", "333 1234567 -> tel:+393331234567",
         "https://a.it/061234567 -> https://a.it/061234567"});
    row("06 1234567/333 1234567", {"06 1234567 -> tel:+39061234567", "333 1234567 -> tel:+393331234567"});
    row("<https://a.it><https://b.it>", {"https://a.it -> https://a.it", "https://b.it -> https://b.it"});
    row("https://a.it/x(https://b.it/y there",
        {"https://a.it/x -> https://a.it/x", "https://b.it/y -> https://b.it/y"});
    row("[www.a.it](https://b.it)", {"www.a.it -> https://www.a.it", "https://b.it -> https://b.it"});
    row("a@a.it/b@b.it", {"a@a.it -> mailto:a@a.it", "b@b.it -> mailto:b@b.it"});
    row("a@a.it,b@b.it;c@c.it",
        {"a@a.it -> mailto:a@a.it", "b@b.it -> mailto:b@b.it", "c@c.it -> mailto:c@c.it"});
    row("javascript:alert(1) www.a.it", {"www.a.it -> https://www.a.it"});
    row("javascript:\u0001www.a.it www.b.it", {"www.b.it -> https://www.b.it"});
    row("a.it b.zzz c.it d.IT e.txt f.\u0440\u0444 g.txt",
        {"a.it -> https://a.it", "c.it -> https://c.it", "d.IT -> https://d.it",
         "f.\u0440\u0444 -> https://f.xn--p1ai"});
    row("www.a.it|www.b.it", {"www.a.it -> https://www.a.it", "www.b.it -> https://www.b.it"});
    row("tel:061234567 +39 02 88451234",
        {"tel:061234567 -> tel:+39061234567", "+39 02 88451234 -> tel:+390288451234"});
}

void LinksTest::findsSeveral()
{
    QFETCH(QString, text);
    QTEST(foundIn(text), "links");
    QVERIFY(survivesHtml(text));
}

void LinksTest::keepsToRules_data()
{
    QTest::addColumn<QStringList>("schemes");
    QTest::addColumn<bool>("bareHosts");
    QTest::addColumn<bool>("phoneNumbers");
    QTest::addColumn<QStringList>("links");
    QStringList const usual = LinkRules().schemes;
    QTest::newRow("usual") << usual << true << true
                           << QStringList{QStringLiteral("www.a.it"), QStringLiteral("m@a.it"),
                                          QStringLiteral("06 1234567"), QStringLiteral("http://b.it"),
                                          QStringLiteral("tel:06123456")};
    QTest::newRow("no bare hosts") << usual << false << true
                                   << QStringList{QStringLiteral("m@a.it"), QStringLiteral("06 1234567"),
                                                  QStringLiteral("http://b.it"),
                                                  QStringLiteral("tel:06123456")};
    QTest::newRow("no numbers") << usual << true << false
                                << QStringList{QStringLiteral("www.a.it"), QStringLiteral("m@a.it"),
                                               QStringLiteral("http://b.it"), QStringLiteral("tel:06123456")};
    QTest::newRow("http only") << QStringList(QStringLiteral("HTTP")) << true << true
                               << QStringList(QStringLiteral("http://b.it"));
    QTest::newRow("numbers only") << QStringList(QStringLiteral("tel")) << true << true
                                  << QStringList{QStringLiteral("06 1234567"),
                                                 QStringLiteral("tel:06123456")};
    QTest::newRow("another scheme") << QStringList{QStringLiteral("ftp"), QStringLiteral("xmpp")} << true
                                    << true
                                    << QStringList{QStringLiteral("ftp://c.it/x"),
                                                   QStringLiteral("xmpp:a@b")};
    QTest::newRow("nothing") << QStringList() << true << true << QStringList();
    QTest::newRow("no scheme at all") << QStringList{QString(), QStringLiteral(":"), QStringLiteral("a b")}
                                      << true << true << QStringList();
}

void LinksTest::keepsToRules()
{
    QFETCH(QStringList, schemes);
    QFETCH(bool, bareHosts);
    QFETCH(bool, phoneNumbers);
    QString const text = QStringLiteral(
        "www.a.it m@a.it 06 1234567 http://b.it tel:06123456, ftp://c.it/x. xmpp:a@b javascript:www.d.it");
    LinkRules const rules{schemes, bareHosts, phoneNumbers, QStringLiteral("IT")};
    QStringList found;
    for (Link const& link : findLinks(text, rules)) {
        found += text.sliced(link.position, link.length);
    }
    QTEST(found, "links");
    QVERIFY(isSound(text, rules));
}

void LinksTest::refusesBrokenAddressesOfOtherSchemes_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing after the scheme") << QStringLiteral("xmpp:<m@a.it>");
    QTest::newRow("nothing after the slashes") << QStringLiteral("ftp:// m.example");
    QTest::newRow("port that is a word") << QStringLiteral("ftp://a.it:port/www.b.it");
}

/// No part of them either: a reader would take it for the whole.
void LinksTest::refusesBrokenAddressesOfOtherSchemes()
{
    QFETCH(QString, text);
    LinkRules rules;
    rules.schemes += {QStringLiteral("xmpp"), QStringLiteral("ftp")};
    QCOMPARE(foundIn(text, rules), QStringList());
    QVERIFY(survivesHtml(text, rules));
}

void LinksTest::usesRegion()
{
    LinkRules rules;
    rules.region = QStringLiteral("GB");
    QCOMPARE(foundIn(QStringLiteral("020 7946 0018, tel:02079460018"), rules),
             QStringList({QStringLiteral("020 7946 0018 -> tel:+442079460018"),
                          QStringLiteral("tel:02079460018 -> tel:+442079460018")}));
}

void LinksTest::givesPlaces()
{
    QString const text = QStringLiteral("\U0001f600 (www.a.it)");
    Link const expected{4, 8, LinkKind::Web, QUrl(QStringLiteral("https://www.a.it"))};
    QCOMPARE(findLinks(text), QList<Link>({expected}));
    QCOMPARE(Link::staticMetaObject.propertyCount(), 4);
}

void LinksTest::differsInAnyField()
{
    Link const link{1, 2, Softphone::LinkKind::Web, QUrl(QStringLiteral("https://a.example"))};
    QCOMPARE(Link(link), link);
    for (auto const change : {+[](Link& of) { ++of.position; }, +[](Link& of) { ++of.length; },
                              +[](Link& of) { of.kind = Softphone::LinkKind::Other; },
                              +[](Link& of) { of.target.setPath(QStringLiteral("/")); }}) {
        Link other = link;
        change(other);
        QVERIFY(!(other == link));
    }
}

void LinksTest::hostsHaveUpTo253Characters()
{
    QString const longest = (QString(63, u'a') + u'.').repeated(3) + QString(61, u'a');
    QCOMPARE(longest.size(), 253);
    QCOMPARE(findLinks(QStringLiteral("https://") + longest).size(), 1);
    QVERIFY(findLinks(QStringLiteral("https://") + longest + u'a').isEmpty());
}

void LinksTest::writesHtml_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("html");
    auto const row = [](char const* tag, QString const& text, char const* html) {
        QTest::newRow(tag) << text << QString::fromUtf8(html);
    };
    row("nothing", {}, "");
    row("plain", QStringLiteral("a b"), "a b");
    row("markup", QStringLiteral("<b>\"a\" & 'b'</b>"), "&lt;b&gt;&quot;a&quot; &amp; 'b'&lt;/b&gt;");
    row("quoted link", QStringLiteral("\"www.a.it\""),
        "&quot;<a href=\"https://www.a.it\">www.a.it</a>&quot;");
    row("ampersand in a link", QStringLiteral("https://a.it/?a=1&copy=2"),
        "<a href=\"https://a.it/?a=1&amp;copy=2\">https://a.it/?a=1&amp;copy=2</a>");
    row("e-mail", QStringLiteral("m@a.it"), "<a href=\"mailto:m@a.it\">m@a.it</a>");
    row("number", QStringLiteral("06 1234567"), "<a href=\"tel:+39061234567\">06 1234567</a>");
    row("host of another script", QStringLiteral("m\u00fcnchen.de"),
        "<a href=\"https://xn--mnchen-3ya.de\">m\u00fcnchen.de</a>");
    row("line breaks", QStringLiteral("a\nb\rc\u2028d\u2029e"), "a<br>b<br>c<br>d<br>e");
    row("line break at the end", QStringLiteral("a\r"), "a<br>");
    row("line break of two", QStringLiteral("a\r\nb"), "a&nbsp;<br>b");
    row("empty lines", QStringLiteral("\n\na\n"), "<br><br>a<br>");
    row("blanks in a row", QStringLiteral("a   b"), "a&nbsp;&nbsp; b");
    row("blanks around", QStringLiteral(" a "), "&nbsp;a&nbsp;");
    row("blanks around a line break", QStringLiteral("a \n b"), "a&nbsp;<br>&nbsp;b");
    row("tabs", QStringLiteral("a\tb\t\tc"), "a b&nbsp; c");
    row("controls", QString::fromUtf16(u"a\u0000\u0001\u007f\ufffcz", 6),
        "a&#xfffd;&#xfffd;&#xfffd;&#xfffd;z");
    row("lone halves", QStringLiteral("a") + QChar(0xd800) + QStringLiteral("b") + QChar(0xdc00),
        "a&#xfffd;b&#xfffd;");
    row("pair", QStringLiteral("\U0001f600"), "\U0001f600");
}

void LinksTest::writesHtml()
{
    QFETCH(QString, text);
    QTEST(linkedHtml(text), "html");
    QVERIFY(survivesHtml(text));
}

void LinksTest::everyUnitSurvives()
{
    for (char32_t unit = 0; unit <= 0xffff; ++unit) {
        QString text = QStringLiteral("www.a.it ") + QChar(static_cast<char16_t>(unit));
        text += QStringLiteral(" m@a.it");
        QVERIFY2(survivesHtml(text), qPrintable(QString::number(unit, 16)));
        QCOMPARE(findLinks(text).size(), 2);
    }
}

void LinksTest::escapesAtEachPlace_data()
{
    QTest::addColumn<QString>("piece");
    QTest::addColumn<QString>("html");
    auto const row = [](char const* tag, QString const& piece, char const* html) {
        QTest::newRow(tag) << piece << QString::fromUtf8(html);
    };
    row("ampersand", QStringLiteral("&"), "&amp;");
    row("less", QStringLiteral("<"), "&lt;");
    row("greater", QStringLiteral(">"), "&gt;");
    row("quote", QStringLiteral("\""), "&quot;");
    row("line break", QStringLiteral("\n"), "<br>");
    row("control", QStringLiteral("\u0001"), "&#xfffd;");
    row("delete", QStringLiteral("\u007f"), "&#xfffd;");
    row("two blanks", QStringLiteral("  "), "&nbsp; ");
    row("three blanks", QStringLiteral("   "), "&nbsp;&nbsp; ");
    row("blank before a line break", QStringLiteral(" \n"), "&nbsp;<br>");
    row("blank after a line break", QStringLiteral("\n "), "<br>&nbsp;");
    row("blank before a letter of another script", QStringLiteral(" \u0431"), " \u0431");
    row("wide blank", QStringLiteral("\u3000"), " ");
    row("blank before a wide one", QStringLiteral(" \u3000"), "&nbsp; ");
    row("half", QString(QChar(0xd83d)), "&#xfffd;");
}

/// Several units are looked at together, so each place among them is tried, and each end.
void LinksTest::escapesAtEachPlace()
{
    QFETCH(QString, piece);
    QFETCH(QString, html);
    for (qsizetype before = 1; before <= 20; ++before) {
        for (qsizetype after = 1; after <= 20; ++after) {
            QString const left(before, u'a');
            QString const right(after, u'b');
            QCOMPARE(linkedHtml(left + piece + right), left + html + right);
            QCOMPARE(linkedHtml(left + piece + right + piece + left), left + html + right + html + left);
        }
    }
}

void LinksTest::findsAtEachPlace()
{
    for (QString const& address :
         {QStringLiteral("a.it"), QStringLiteral("m@a.it"), QStringLiteral("ftp://a.it"),
          QStringLiteral("\u0440.\u0440\u0444"), QStringLiteral("06 1234567"),
          QStringLiteral("\u0660\u0666 \u0661\u0662\u0663\u0664\u0665\u0666\u0667")}) {
        LinkRules rules;
        rules.schemes << QStringLiteral("ftp");
        for (qsizetype before = 0; before <= 20; ++before) {
            for (qsizetype after = 0; after <= 20; ++after) {
                QString const left = QString(before, u'x') + u' ';
                QList<Link> const links = findLinks(left + address + u' ' + QString(after, u'y'), rules);
                QCOMPARE(links.size(), 1);
                QCOMPARE(links[0].position, left.size());
                QCOMPARE(links[0].length, address.size());
            }
        }
    }
}

void LinksTest::hostileText_data()
{
    QTest::addColumn<QString>("piece");
    for (char const* piece : {"a-",
                              "a.",
                              "((((",
                              "[[[[",
                              "mailto:",
                              "@",
                              "1.1.1.",
                              "://",
                              "a@",
                              "@a.it",
                              "www.",
                              "https://",
                              "https://a.it/(",
                              "https://a.it/\"x",
                              "sip:",
                              "sip:a",
                              "tel:",
                              "tel:1",
                              "a:",
                              "a+",
                              "a.b@",
                              "https://a.it/[(",
                              "https://a.it/x'",
                              "_",
                              "-.",
                              "xn--",
                              "a.it&",
                              "javascript:",
                              "ftp://",
                              "\\",
                              "https://[",
                              "a.it:",
                              "mailto:a@a,",
                              "'\"",
                              "\u4e2d",
                              "\u0301",
                              "\U0001f600",
                              "\u200d"}) {
        QTest::addRow("%s", piece) << QString::fromUtf8(piece);
    }
    QTest::newRow("half") << QString(QChar(0xd800));
    QTest::newRow("one letter of each script")
        << QStringLiteral("a\u03b1\u0430\u0561\u05d0\u0627\u0905\u0e01\u10d0\u1100\u3042\u30a2\u4e2d.");
}

/// 64 KiB of it, and an address at the very end that has to be found.
void LinksTest::hostileText()
{
    QFETCH(QString, piece);
    QString const text = piece.repeated(32'768 / piece.size());
    QVERIFY(isSound(text));
    QString const withLink = text + QStringLiteral(" m@a.it");
    QVERIFY(isSound(withLink));
    QCOMPARE(findLinks(withLink).constLast().target, QUrl(QStringLiteral("mailto:m@a.it")));
    QVERIFY(!linkedHtml(withLink).isEmpty());
}

void LinksTest::randomText()
{
    TextGenerator generator(14, {QStringLiteral("https://"),
                                 QStringLiteral("www."),
                                 QStringLiteral("a.it"),
                                 QStringLiteral("mario"),
                                 QStringLiteral("@"),
                                 QStringLiteral(":"),
                                 QStringLiteral("."),
                                 QStringLiteral("/"),
                                 QStringLiteral("("),
                                 QStringLiteral(")"),
                                 QStringLiteral("["),
                                 QStringLiteral("]"),
                                 QStringLiteral("\""),
                                 QStringLiteral("'"),
                                 QStringLiteral("<"),
                                 QStringLiteral("&"),
                                 QStringLiteral(" "),
                                 QStringLiteral("  "),
                                 QStringLiteral("\t"),
                                 QStringLiteral("\r\n"),
                                 QStringLiteral("\n"),
                                 QStringLiteral("mailto:"),
                                 QStringLiteral("tel:"),
                                 QStringLiteral("sip:"),
                                 QStringLiteral("javascript:"),
                                 QStringLiteral("06 1234567"),
                                 QStringLiteral("+39"),
                                 QStringLiteral("m\u00fcnchen.de"),
                                 QStringLiteral("%"),
                                 QStringLiteral("%41"),
                                 QStringLiteral("?"),
                                 QStringLiteral("#"),
                                 QStringLiteral("-"),
                                 QStringLiteral("_"),
                                 QStringLiteral("1"),
                                 QStringLiteral("\u4e2d"),
                                 QStringLiteral("\U0001f600"),
                                 QStringLiteral("\u200b"),
                                 QStringLiteral("\u202e"),
                                 QStringLiteral("\u2028"),
                                 QStringLiteral("\u0301"),
                                 QChar(0xd800),
                                 QChar(0xdc00),
                                 QChar(u'\0'),
                                 QStringLiteral("[::1]"),
                                 QStringLiteral(","),
                                 QStringLiteral("\\")});
    qsizetype links = 0;
    for (int i = 0; i < 20'000; ++i) {
        QString const text = generator.text(14);
        QVERIFY2(isSound(text), qUtf8Printable(text));
        QVERIFY2(survivesHtml(text), qUtf8Printable(text));
        links += findLinks(text).size();
    }
    QVERIFY(links > 2'000);
}

int main(int argc, char** argv)
{
    return runTest<LinksTest, QGuiApplication>(argc, argv);
}

#include "LinksTest.moc"
