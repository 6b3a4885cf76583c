#include <text/StringUtils.h>

#include <QThread>
#include <RunTest.h>
#include <TextGenerator.h>
#include <TextOracles.h>
#include <Valgrind.h>
#include <memory>
#include <vector>

class StringUtilsMarkupTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstUseFromManyThreads();
    void escapes_data();
    void escapes();
    void unescapes_data();
    void unescapes();
    void escapingIsUndone();
    void markupAgreesWithThePlainRules();
    void unescapingAgreesWithThePlainRulesOnEveryShortText();
    void makesHtmlOfChatText_data();
    void makesHtmlOfChatText();
    void wrapsALiteralSubString_data();
    void wrapsALiteralSubString();
    void wrappingALiteralAgreesWithThePlainRules();
    void wrapsFilterHits_data();
    void wrapsFilterHits();
    void wrappingFilterHitsAgreesWithThePlainRules();
    void matchesFilters_data();
    void matchesFilters();
    void matchingAgreesWithThePlainRules();
    void lowersEveryCharacterAsQtDoes();
    void matchesEveryPairOfLatinCharactersAsThePlainRulesDo();
    void removesMarks_data();
    void removesMarks();
    void removesMarksFromEveryCharacterAsThePlainRuleDoes();
    void removesMarksFromGeneratedTextsAsThePlainRuleDoes();
    void holdsOnHostileTexts();
};

void StringUtilsMarkupTest::firstUseFromManyThreads()
{
    QString const text = QStringLiteral("Niccol\u00F2 <Cit\u00E8> x");
    std::vector<std::unique_ptr<QThread>> threads;
    std::array<QString, 4> unmarked;
    std::array<QString, 4> wrapped;
    for (std::size_t i = 0; i < unmarked.size(); ++i) {
        threads.emplace_back(QThread::create([&, i] {
            unmarked[i] = StringUtils::removeDiacriticalMarks(text);
            wrapped[i] = StringUtils::wrapSubStringsInHTMLTag(text, QStringLiteral("x"), QStringLiteral("b"));
        }));
    }
    std::ranges::for_each(threads, [](auto& thread) { thread->start(); });
    std::ranges::for_each(threads, [](auto& thread) { thread->wait(); });
    for (std::size_t i = 0; i < unmarked.size(); ++i) {
        QCOMPARE(unmarked[i], QStringLiteral("Niccolo <Cite> x"));
        QCOMPARE(wrapped[i], QStringLiteral("Niccol\u00F2 &lt;Cit\u00E8&gt; <b>x</b>"));
    }
}

void StringUtilsMarkupTest::escapes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("html");
    auto const row = [](char const* tag, char const* text, char const* html) {
        QTest::newRow(tag) << QString::fromUtf8(text) << QString::fromUtf8(html);
    };
    row("empty", "", "");
    row("nothing to escape", "abc \xC3\xA8", "abc \xC3\xA8");
    row("the example", "a<b & c", "a&lt;b &amp; c");
    row("all five", "&<>\"'", "&amp;&lt;&gt;&quot;&apos;");
    row("an entity is escaped again", "&lt;", "&amp;lt;");
    row("at both ends", "<a>", "&lt;a&gt;");
    row("units 64 above the five stay", "fg|~\x62g", "fg|~\x62g");
    row("other signs stay", "!#$%()*+,-./:;=?@[\\]^_`{|}~", "!#$%()*+,-./:;=?@[\\]^_`{|}~");
    row("line breaks stay", "a\nb", "a\nb");
    row("argument marks stay", "%1 & %2", "%1 &amp; %2");
}

void StringUtilsMarkupTest::escapes()
{
    QFETCH(QString, text);
    QString const before = text;
    QTEST(StringUtils::sanitizeHTMLCharacters(text), "html");
    QCOMPARE(text, before);
    QTEST(plain::sanitizeHTMLCharacters(text), "html");
}

void StringUtilsMarkupTest::unescapes_data()
{
    QTest::addColumn<QString>("html");
    QTest::addColumn<QString>("text");
    auto const row = [](char const* tag, char const* html, char const* text) {
        QTest::newRow(tag) << QString::fromUtf8(html) << QString::fromUtf8(text);
    };
    row("empty", "", "");
    row("the example", "a&lt;b &amp; c", "a<b & c");
    row("tags go, line breaks too", "<p>Hello<br>World</p>", "HelloWorld");
    row("twice escaped comes out plain", "&amp;lt;", "<");
    row("thrice escaped does not", "&amp;amp;lt;", "&amp;lt;");
    row("all five", "&amp;&lt;&gt;&quot;&apos;", "&<>\"'");
    row("other entities stay", "&nbsp;&#60;&AMP;", "&nbsp;&#60;&AMP;");
    row("decoded brackets make no tag", "&lt;b&gt;", "<b>");
    row("an opening bracket inside a tag", "a<b<c>d", "ad");
    row("a closing bracket behind a tag stays", "<<a>b>", "b>");
    row("never closed", "a < b", "a < b");
    row("closed before it is opened", "a > b < c", "a > b < c");
    row("the last one is not closed", "<a>b<c", "b<c");
    row("an empty tag", "a<>b", "ab");
    row("a tag across lines", "a<b\nc>d", "ad");
    row("an entity that a tag had cut", "&am<b>p;lt;", "<");
    row("ampersands in a row", "&&amp;&", "&&&");
    row("ampersand at the end", "a&", "a&");
    row("cut entity at the end", "a&lt", "a&lt");
    QString const half(QChar(0xD800));
    QTest::newRow("half a character does not keep the tags")
        << half + QStringLiteral("<b>x</b>&lt;") << half + QStringLiteral("x<");
}

void StringUtilsMarkupTest::unescapes()
{
    QFETCH(QString, html);
    QTEST(StringUtils::deHTMLfy(html), "text");
    if (html.isValidUtf16()) {
        QTEST(plain::deHTMLfy(html), "text");
    }
}

void StringUtilsMarkupTest::escapingIsUndone()
{
    TextGenerator generator(11, QStringLiteral("& < > \" ' a lt; amp; \u00E8").split(QLatin1Char(' ')));
    for (int round = 0; round < sizeForThisRun(20'000); ++round) {
        QString const text = generator.text(12);
        // What looks like an entity already is decoded once more, because ampersands are decoded first.
        QString expected = text;
        for (auto const& [entity, character] : {std::pair("&lt;", "<"), std::pair("&gt;", ">"),
                                                std::pair("&quot;", "\""), std::pair("&apos;", "'")}) {
            expected.replace(QString::fromLatin1(entity), QString::fromLatin1(character));
        }
        QCOMPARE(StringUtils::deHTMLfy(StringUtils::sanitizeHTMLCharacters(text)), expected);
    }
}

void StringUtilsMarkupTest::markupAgreesWithThePlainRules()
{
    TextGenerator generator(12,
                            QStringLiteral("& < > \" ' a amp; lt; gt; quot; apos; &amp; ; p \u00E8 <b> &a")
                                .split(QLatin1Char(' ')));
    for (int round = 0; round < sizeForThisRun(200'000); ++round) {
        QString const text = generator.text(20);
        QCOMPARE(StringUtils::sanitizeHTMLCharacters(text), plain::sanitizeHTMLCharacters(text));
        QCOMPARE(StringUtils::deHTMLfy(text), plain::deHTMLfy(text));
    }
}

void StringUtilsMarkupTest::unescapingAgreesWithThePlainRulesOnEveryShortText()
{
    QStringList const pieces{QStringLiteral("<"), QStringLiteral(">"),    QStringLiteral("&"),
                             QStringLiteral("a"), QStringLiteral("amp;"), QStringLiteral("lt;")};
    for (int length = 0; length <= 6; ++length) {
        TextGenerator::visitAll(pieces, length, [](QString const& html) {
            QVERIFY2(StringUtils::deHTMLfy(html) == plain::deHTMLfy(html), qPrintable(html));
        });
    }
}

void StringUtilsMarkupTest::makesHtmlOfChatText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("html");
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("escaped before lines are broken")
        << QStringLiteral("a<b\n'c'") << QStringLiteral("a&lt;b<br>&apos;c&apos;");
    QTest::newRow("a link beside escaped text")
        << QStringLiteral("<www.example.com>")
        << QStringLiteral("&lt;<a href=\"www.example.com\">www.example.com</a>&gt;");
    QTest::newRow("a link is escaped once")
        << QStringLiteral("http://x/?a=1&b=2")
        << QStringLiteral("<a href=\"http://x/?a=1&amp;b=2\">http://x/?a=1&amp;b=2</a>");
}

void StringUtilsMarkupTest::makesHtmlOfChatText()
{
    QFETCH(QString, text);
    QTEST(StringUtils::htmlfy(text), "html");
}

void StringUtilsMarkupTest::wrapsALiteralSubString_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("subString");
    QTest::addColumn<QString>("tag");
    QTest::addColumn<QString>("html");
    auto const row = [](char const* tag, char const* text, char const* subString, char const* element,
                        char const* html) {
        QTest::newRow(tag) << QString::fromUtf8(text) << QString::fromUtf8(subString)
                           << QString::fromUtf8(element) << QString::fromUtf8(html);
    };
    row("the first in any case, later ones in the very case", "Rossi and ROSSI & rossi", "rossi", "b",
        "<b>Rossi</b> and ROSSI &amp; <b>rossi</b>");
    row("not found", "a & b", "x", "b", "a &amp; b");
    row("empty text", "", "x", "b", "");
    row("both empty", "", "", "b", "");
    row("empty search text", "a<b", "", "b", "a&lt;b");
    row("empty search text leaves markers alone", "%start%", "", "b", "%start%");
    row("hits side by side", "aaa", "a", "b", "<b>a</b><b>a</b><b>a</b>");
    row("overlapping hits count from the left", "aaaa", "aaa", "b", "<b>aaa</b>a");
    row("the whole text", "ab", "AB", "b", "<b>ab</b>");
    row("escaped inside the hit", "a<b", "A<B", "b", "<b>a&lt;b</b>");
    row("an entity is no text", "a&b", "amp", "b", "a&amp;b");
    row("what escaping makes is not searched", "&lt;", "lt", "b", "&amp;<b>lt</b>;");
    row("own start marker becomes a tag", "x %start% y", "y", "b", "x <b> <b>y</b>");
    row("own end marker becomes a tag", "%end%y", "y", "b", "</b><b>y</b>");
    row("own marker without a hit becomes a tag", "%start%", "y", "b", "<b>");
    row("own text and a marker make one", "%starty", "y", "b", "<b>start%y</b>");
    row("the other operation's marker is text", "%stop%y", "y", "b", "%stop%<b>y</b>");
    row("searching for a marker", "%start%", "start", "b", "%<b>start</b>%");
    row("searching for a percent sign", "5%", "%", "b", "5<b>%</b>");
    row("argument marks in the text", "%1 %2", "%1", "b", "<b>%1</b> %2");
    row("a marker in the tag", "a", "a", "%end%", "<</%end%>>a</%end%>");
    row("an empty tag", "a", "a", "", "<>a</>");
    row("a tag is not escaped", "a", "a", "b&c", "<b&c>a</b&c>");
    row("case of the whole range", "x\xC3\x88", "\xC3\xA8", "b", "x<b>\xC3\x88</b>");
    row("case outside the basic plane", "x\xF0\x90\x90\x80", "\xF0\x90\x90\xA8", "b",
        "x<b>\xF0\x90\x90\x80</b>");
    row("the Kelvin sign", "\xE2\x84\xAA", "k", "b", "<b>\xE2\x84\xAA</b>");
    row("dotted capital I is one letter of its own", "\xC4\xB0", "i", "b", "\xC4\xB0");
    row("a long search text twice",
        "abcdefghijklmnopqrstuvwxyz0123456789 abcdefghijklmnopqrstuvwxyz0123456789!",
        "abcdefghijklmnopqrstuvwxyz0123456789", "b",
        "<b>abcdefghijklmnopqrstuvwxyz0123456789</b> <b>abcdefghijklmnopqrstuvwxyz0123456789</b>!");
}

void StringUtilsMarkupTest::wrapsALiteralSubString()
{
    QFETCH(QString, text);
    QFETCH(QString, subString);
    QFETCH(QString, tag);
    QTEST(StringUtils::wrapSubStringsInHTMLTag(text, subString, tag), "html");
    if (!subString.isEmpty()) {
        QTEST(plain::wrapSubStringsInHTMLTag(text, subString, tag), "html");
    }
}

void StringUtilsMarkupTest::wrappingALiteralAgreesWithThePlainRules()
{
    QStringList const pieces =
        QStringLiteral("a A b ab % %start% %start start% %end% end % & < \u00E8 \u00C8 "
                       "\u212A k \U00010400 \U00010428 \u0130 \u1E9E \u00DF")
            .split(QLatin1Char(' ')) +
        QStringList{QString(QChar(0xD801)), QString(QChar(0xDC00))};
    TextGenerator generator(13, pieces);
    for (int round = 0; round < sizeForThisRun(200'000); ++round) {
        QString const text = generator.text(16);
        QString const subString = pieces[generator.number(0, 23)] + generator.text(2);
        QString const tag = generator.text(2);
        QString const html = StringUtils::wrapSubStringsInHTMLTag(text, subString, tag);
        if (html != plain::wrapSubStringsInHTMLTag(text, subString, tag)) {
            qInfo() << text << subString << tag;
            QCOMPARE(html, plain::wrapSubStringsInHTMLTag(text, subString, tag));
        }
    }
}

void StringUtilsMarkupTest::wrapsFilterHits_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("filter");
    QTest::addColumn<bool>("matchWordStart");
    QTest::addColumn<QString>("html");
    auto const row = [](char const* tag, char const* text, char const* filter, bool start, char const* html) {
        QTest::newRow(tag) << QString::fromUtf8(text) << QString::fromUtf8(filter) << start
                           << QString::fromUtf8(html);
    };
    row("two words", "Mario Rossi", "ro ma", true, "<b>Ma</b>rio <b>Ro</b>ssi");
    row("inside a word", "Mario Rossi", "ssi", false, "Mario Ro<b>ssi</b>");
    row("no hit, only escaped", "Mario & Rossi", "x", false, "Mario &amp; Rossi");
    row("escaped round the hit", "<Mario> Rossi", "mario", false, "&lt;<b>Mario</b>&gt; Rossi");
    row("own start marker becomes a tag", "%start% Rossi", "ro", true, "<b> <b>Ro</b>ssi");
    row("own stop marker becomes a tag", "%stop% Rossi", "ro", true, "</b> <b>Ro</b>ssi");
    row("the other operation's marker is text", "%end% Rossi", "ro", true, "%end% <b>Ro</b>ssi");
    row("empty filter", "a<b", "", true, "a&lt;b");
}

void StringUtilsMarkupTest::wrapsFilterHits()
{
    QFETCH(QString, text);
    QFETCH(QString, filter);
    QFETCH(bool, matchWordStart);
    QTEST(StringUtils::wrapSubStringsInHTMLTagExtended(text, filter, QStringLiteral("b"), matchWordStart),
          "html");
}

void StringUtilsMarkupTest::wrappingFilterHitsAgreesWithThePlainRules()
{
    TextGenerator generator(
        14, QStringLiteral("a|A|b|ab| | |%start%|%stop%|%|&|<|\u00E8|start").split(QLatin1Char('|')));
    std::pair const markers(QStringLiteral("%start%"), QStringLiteral("%stop%"));
    for (int round = 0; round < sizeForThisRun(50'000); ++round) {
        QString const text = generator.text(16);
        QString const filter = generator.text(4);
        bool const start = generator.coin();
        QString expected = plain::sanitizeHTMLCharacters(plain::wrapText(filter, text, markers, start));
        expected.replace(markers.first, QStringLiteral("<em>"));
        expected.replace(markers.second, QStringLiteral("</em>"));
        QCOMPARE(StringUtils::wrapSubStringsInHTMLTagExtended(text, filter, QStringLiteral("em"), start),
                 expected);
    }
}

void StringUtilsMarkupTest::matchesFilters_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("filter");
    QTest::addColumn<bool>("atStart");
    QTest::addColumn<bool>("anywhere");
    auto const row = [](char const* tag, char const* text, char const* filter, bool atStart, bool anywhere) {
        QTest::newRow(tag) << QString::fromUtf8(text) << QString::fromUtf8(filter) << atStart << anywhere;
    };
    row("empty filter", "Mario Rossi", "", true, true);
    row("blank filter", "Mario Rossi", "   ", true, true);
    row("empty filter, empty text", "", "", true, true);
    row("empty text", "", "a", false, false);
    row("twice as long in lower case, and a blank", "\xC4\xB0", "i\xCC\x87 ", true, true);
    row("blank text", "   ", "a", false, false);
    row("words in any order", "Mario Rossi", "ro ma", true, true);
    row("inside a word", "Mario Rossi", "ssi", false, true);
    row("each filter word needs a word of its own", "Mario Rossi", "mario mario", false, false);
    row("the first fitting word is taken", "mario marco", "ma mar", true, true);
    row("no better assignment is looked for", "mario marco", "ma mario", false, false);
    row("a word taken is not found again inside", "anna bel", "an n", false, false);
    row("longer than the word", "ma rio", "mario", false, false);
    row("case ignored", "MARIO", "mario", true, true);
    row("accents count", "Cit\xC3\xA8", "cite", false, false);
    row("case of accented letters", "CIT\xC3\x88", "cit\xC3\xA8", true, true);
    row("dotted capital I is i and a dot", "\xC4\xB0stanbul", "i\xCC\x87s", true, true);
    row("dotted capital I opens with i", "\xC4\xB0stanbul", "i", true, true);
    row("dotted capital I is not plain i", "\xC4\xB0stanbul", "is", false, false);
    row("the Kelvin sign is a k", "\xE2\x84\xAA", "k", true, true);
    row("a multiplication sign is no division sign", "\xC3\x97", "\xC3\xB7", false, false);
    row("final sigma stays one", "\xCE\xA3\xCE\xA3", "\xCF\x83\xCF\x82", false, false);
    row("sharp s stays one", "STRASSE", "stra\xC3\x9F\x65", false, false);
    row("letters outside the basic plane", "\xF0\x90\x90\x80", "\xF0\x90\x90\xA8", true, true);
    row("tabs do not separate", "a\tb", "b", false, true);
    row("runs of spaces", "  mario   rossi  ", "  ro  ", true, true);
    row("more filter words than text words", "a b", "a b a", false, false);
    row("ten words of the filter", "j i h g f e d c b a", "a b c d e f g h i j", true, true);
    row("a tenth word that is taken", "j i h g f e d c b a", "a b c d e f g h i a", false, false);
    row("a tenth word that is free", "a a a a a a a a a a", "a a a a a a a a a a", true, true);
    row("a tenth word too many", "a a a a a a a a a", "a a a a a a a a a a", false, false);
    row("the Kelvin sign behind many words", "a b c d e f g h i \xE2\x84\xAA", "i h g f e d c b a k", true,
        true);
}

void StringUtilsMarkupTest::matchesFilters()
{
    QFETCH(QString, text);
    QFETCH(QString, filter);
    QTEST(StringUtils::isFilterMatched(text, filter, true), "atStart");
    QTEST(StringUtils::isFilterMatched(text, filter, false), "anywhere");
    QTEST(plain::isFilterMatched(text, filter, true), "atStart");
    QTEST(plain::isFilterMatched(text, filter, false), "anywhere");
}

void StringUtilsMarkupTest::matchingAgreesWithThePlainRules()
{
    QStringList const pieces =
        QStringLiteral("a|A|b|ab|abcdefgh|ABCDEFGH| | |  |\u00E8|\u00C8|\u0130|i|\u0307|\u212A|k|\U00010400|"
                       "\U00010428|\u03A3|\u03C2|\u03C3|\t")
            .split(QLatin1Char('|')) +
        QStringList{QString(QChar(0xD801)), QString(QChar(0xDC00)), QString(QChar(0xDC28))};
    TextGenerator generator(15, pieces);
    for (int round = 0; round < sizeForThisRun(300'000); ++round) {
        QString const text = generator.text(generator.number(0, 40));
        QString const filter = generator.text(6);
        bool const start = generator.coin();
        if (StringUtils::isFilterMatched(text, filter, start) !=
            plain::isFilterMatched(text, filter, start)) {
            qInfo() << text << filter << start;
            QCOMPARE(StringUtils::isFilterMatched(text, filter, start),
                     plain::isFilterMatched(text, filter, start));
        }
    }
}

void StringUtilsMarkupTest::lowersEveryCharacterAsQtDoes()
{
    for (char32_t character = 0x21; character <= 0x10'FFFF; ++character) {
        QString const text = QString::fromUcs4(&character, 1);
        QVERIFY2(StringUtils::isFilterMatched(text, text.toLower(), true) &&
                     StringUtils::isFilterMatched(text.toLower(), text, true),
                 QByteArray::number(static_cast<uint>(character), 16).constData());
    }
}

void StringUtilsMarkupTest::matchesEveryPairOfLatinCharactersAsThePlainRulesDo()
{
    constexpr int endOfLatin1 = 0x100;
    for (int first = 0; first < endOfLatin1; ++first) {
        for (int second = 0; second < endOfLatin1; ++second) {
            QString const text{QChar(first)};
            QString const filter{QChar(second)};
            QVERIFY2(StringUtils::isFilterMatched(text, filter, false) ==
                         plain::isFilterMatched(text, filter, false),
                     qPrintable(QStringLiteral("%1 and %2").arg(first).arg(second)));
        }
    }
}

void StringUtilsMarkupTest::removesMarks_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("unmarked");
    auto const row = [](char const* tag, char const* text, char const* unmarked) {
        QTest::newRow(tag) << QString::fromUtf8(text) << QString::fromUtf8(unmarked);
    };
    row("empty", "", "");
    row("pure ASCII", "Mario Rossi", "Mario Rossi");
    row("accented letters", "Niccol\xC3\xB2 Cit\xC3\xA8", "Niccolo Cite");
    row("a letter without a decomposition", "\xC3\xB8", "\xC3\xB8");
    row("a mark of its own", "e\xCC\x81", "e");
    row("only marks", "\xCC\x81\xCC\x82", "");
    row("two marks on one letter", "\xE1\xBA\xAE", "A");
    row("decomposes in several steps", "\xE1\xBD\xA7", "\xCF\x89");
    row("a Hangul syllable of two letters", "\xEA\xB0\x80", "\xE1\x84\x80\xE1\x85\xA1");
    row("a Hangul syllable of three letters", "\xED\x9E\xA3", "\xE1\x84\x92\xE1\x85\xB5\xE1\x87\x82");
    row("compatibility forms stay", "\xEF\xAC\x81\xE2\x91\xA0", "\xEF\xAC\x81\xE2\x91\xA0");
    row("the Angstrom sign", "\xE2\x84\xAB", "A");
    row("a compatibility ideograph", "\xEF\xA4\x80", "\xE8\xB1\x88");
    row("a compatibility ideograph outside the basic plane", "\xF0\xAF\xA0\x80", "\xE4\xB8\xBD");
    row("a mark outside the basic plane stays", "a\xF0\x9D\x85\xA5", "a\xF0\x9D\x85\xA5");
    row("marks outside the basic plane are put in order", "\xF0\x9D\x85\xAD\xCC\x81\xF0\x9D\x85\xA5",
        "\xF0\x9D\x85\xA5\xF0\x9D\x85\xAD");
    row("a letter keeps them apart", "\xF0\x9D\x85\xAD\x61\xF0\x9D\x85\xA5",
        "\xF0\x9D\x85\xAD\x61\xF0\x9D\x85\xA5");
    row("a dropped mark without a class keeps them apart", "\xF0\x9D\x85\xAD\xE0\xA4\xBE\xF0\x9D\x85\xA5",
        "\xF0\x9D\x85\xAD\xF0\x9D\x85\xA5");
    auto const longRow = [](char const* tag, QString const& front, QString const& back,
                            QString const& unmarked) {
        QTest::newRow(tag) << front + back << front + unmarked;
    };
    QString const accented = QStringLiteral("\u00E8");
    QString const e = QStringLiteral("e");
    longRow("at the end of 64 units", QString(63, u'a'), accented, e);
    longRow("behind 64 units of ASCII", QString(64, u'a'), accented, e);
    longRow("in the second 64 units of ASCII", QString(100, u'a'), accented + QString(64, u'b'),
            e + QString(64, u'b'));
    longRow("behind 64 letters that stay", QString(64, u'\u044F'), accented, e);
    longRow("among 64 letters that stay", QString(20, u'\u044F'), accented + QString(64, u'\u044F'),
            e + QString(64, u'\u044F'));
    longRow("behind ASCII and letters that stay", QString(64, u'a') + QString(64, u'\u044F'), accented, e);
    longRow("none in 200 units", QString(200, u'a'), QString(), QString());
    QString const half(QChar(0xD834));
    // A note and its stem, which are one character as well: only that one is taken apart.
    QString const noteHalves[] = {QString(QChar(0xD834)), QString(QChar(0xDD5E))};
    QTest::newRow("halves that a mark kept apart")
        << noteHalves[0] + QStringLiteral("\u0301") + noteHalves[1] << noteHalves[0] + noteHalves[1];
    for (int front = 252; front <= 256; ++front) {
        QTest::addRow("marks outside the basic plane in order after %d units", front)
            << QString(front, u'\u044F') + QStringLiteral("\U0001D15E\U0001D167")
            << QString(front, u'\u044F') + QStringLiteral("\U0001D157\U0001D167\U0001D165");
    }
    QTest::newRow("half a character stays") << half + QStringLiteral("\u00E8") << half + QStringLiteral("e");
}

void StringUtilsMarkupTest::removesMarks()
{
    QFETCH(QString, text);
    QTEST(StringUtils::removeDiacriticalMarks(text), "unmarked");
    QTEST(plain::removeDiacriticalMarks(text), "unmarked");
}

void StringUtilsMarkupTest::removesMarksFromEveryCharacterAsThePlainRuleDoes()
{
    for (char32_t character = 0; character <= 0x10'FFFF; ++character) {
        QString const text = QString::fromUcs4(&character, 1);
        QVERIFY2(StringUtils::removeDiacriticalMarks(text) == plain::removeDiacriticalMarks(text),
                 QByteArray::number(static_cast<uint>(character), 16).constData());
    }
}

void StringUtilsMarkupTest::removesMarksFromGeneratedTextsAsThePlainRuleDoes()
{
    QStringList pieces{QStringLiteral("a"),    QStringLiteral("abc"),  QString(61, u'a'),
                       QString(64, u'\u044F'), QString(QChar(0xD834)), QString(QChar(0xDD65))};
    QStringList marksOutside;
    for (char32_t character = 0x80; character <= 0x10'FFFF; ++character) {
        bool const decomposes = QChar::decompositionTag(character) == QChar::Canonical;
        if (QChar::combiningClass(character) != 0 || (decomposes && character % 7 == 0)) {
            (character > 0xFFFF ? marksOutside : pieces) += QString::fromUcs4(&character, 1);
        }
    }
    QVERIFY(marksOutside.size() > 50);
    for (int i = 0; i < 6; ++i) {
        pieces += marksOutside;
    }
    TextGenerator generator(16, pieces);
    for (int round = 0; round < sizeForThisRun(300'000); ++round) {
        QString const text = generator.text(10);
        if (StringUtils::removeDiacriticalMarks(text) != plain::removeDiacriticalMarks(text)) {
            qInfo() << text.toUcs4();
            QCOMPARE(StringUtils::removeDiacriticalMarks(text).toUcs4(),
                     plain::removeDiacriticalMarks(text).toUcs4());
        }
    }
}

void StringUtilsMarkupTest::holdsOnHostileTexts()
{
    int const length = sizeForThisRun(1'000'000);
    QString const opened(length, QLatin1Char('<'));
    QCOMPARE(StringUtils::deHTMLfy(opened), opened);
    QCOMPARE(StringUtils::deHTMLfy(opened + QLatin1Char('>')), QString());
    QString const ampersands(length, QLatin1Char('&'));
    QCOMPARE(StringUtils::deHTMLfy(ampersands), ampersands);
    QCOMPARE(StringUtils::sanitizeHTMLCharacters(ampersands), QStringLiteral("&amp;").repeated(length));

    QString const letters(length, QLatin1Char('a'));
    QString const b = QStringLiteral("b");
    QCOMPARE(StringUtils::wrapSubStringsInHTMLTag(letters, QStringLiteral("a"), b),
             QStringLiteral("<b>a</b>").repeated(length));
    QString const late = QString(length / 4, QLatin1Char('a')) + QStringLiteral("b");
    QCOMPARE(StringUtils::wrapSubStringsInHTMLTag(letters, late, b), letters);
    QCOMPARE(StringUtils::wrapSubStringsInHTMLTagExtended(letters, late, b, false), letters);
    QVERIFY(!StringUtils::isFilterMatched(letters, late, false));
    QVERIFY(StringUtils::isFilterMatched(letters + b, late, false));

    QString const dotted = QString(length, QChar(0x130)) + QChar(0xD801) + b;
    QVERIFY(StringUtils::isFilterMatched(dotted, QStringLiteral("\uFFFDb"), false));
    QVERIFY(!StringUtils::isFilterMatched(dotted, QStringLiteral("x"), false));
    QString const halves(length, QChar(0xDC00));
    QString const lateHalf = QString(length / 4, QChar(0xDC00)) + b;
    QCOMPARE(StringUtils::wrapSubStringsInHTMLTag(halves, lateHalf, b), halves);
    QCOMPARE(StringUtils::wrapSubStringsInHTMLTagExtended(halves, lateHalf, b, false), halves);
    QCOMPARE(StringUtils::removeDiacriticalMarks(QString(length, QChar(0xE8))), QString(length, u'e'));
    QCOMPARE(StringUtils::removeDiacriticalMarks(QString(length, QChar(0xF73))), QString());

    QString const marks = QStringLiteral("a") + QStringLiteral("\u0301\u0316").repeated(length / 2);
    QCOMPARE(StringUtils::removeDiacriticalMarks(marks), QStringLiteral("a"));
    QString const outside = QStringLiteral("\U0001D16D\U0001D165").repeated(1000);
    QCOMPARE(StringUtils::removeDiacriticalMarks(outside),
             QStringLiteral("\U0001D165").repeated(1000) + QStringLiteral("\U0001D16D").repeated(1000));
}

int main(int argc, char** argv)
{
    return runTest<StringUtilsMarkupTest>(argc, argv);
}

#include "StringUtilsMarkupTest.moc"
