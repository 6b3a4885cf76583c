#include <RunTest.h>
#include <SearchOracle.h>
#include <TextGenerator.h>

#include <client/SearchFilter.h>

#include <QTest>
#include <numeric>

using namespace Qt::StringLiterals;
using Softphone::SearchFilter;

namespace {

/// The pieces of \a fields that \a filter marks, u"|"_s between them.
QString marked(SearchFilter const& filter, QStringList const& fields)
{
    QStringList pieces;
    for (SearchFilter::Hit const& hit : filter.hits(fields)) {
        pieces.append(fields[hit.field].mid(hit.position, hit.length));
    }
    return pieces.join(u'|');
}

/// What is wrong with the answers of \a filter, empty when they are those of the plain search.
QString wrong(QString const& words, SearchFilter const& filter, QStringList const& fields)
{
    plain::SearchResult const expected = plain::search(words, fields);
    QString const what = u"<%1> in <%2>: "_s.arg(words, fields.join(u"> <"));
    if (filter.isEmpty()) {
        bool const right = filter.matches(fields) && filter.hits(fields).isEmpty() &&
                           filter.rank(fields) == 1 && expected.rank == 0;
        return right ? QString() : what + u"no words"_s;
    }
    int const rank = filter.rank(fields);
    if (rank != expected.rank) {
        return what + QStringLiteral("rank %1, expected %2").arg(rank).arg(expected.rank);
    }
    QList<plain::SearchHit> hits;
    for (SearchFilter::Hit const& hit : filter.hits(fields)) {
        if (!hits.isEmpty() && std::tuple(hit.field, hit.position) <
                                   std::tuple(hits.back().field, hits.back().position + hits.back().length)) {
            return what + u"hits overlap or are not sorted"_s;
        }
        hits.append({hit.field, hit.position, hit.length});
    }
    if (hits.isEmpty() != (rank == 0) || filter.matches(fields) != (rank > 0)) {
        return what + u"matches, hits and rank do not agree"_s;
    }
    // Where several ways are the best, any of them may be shown.
    auto const readings = plain::searchReadings(words);
    bool const oneWay = fields.size() == 1 && readings.size() == 1 && readings.front().size() == 1;
    if (oneWay && !plain::markTheSame(hits, expected.hits)) {
        return what + u"hits at "_s + marked(filter, fields);
    }
    return {};
}

} // namespace

class SearchFilterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void finds_data();
    void finds();
    void withoutWords_data();
    void withoutWords();
    void ranksTheBetterMatchHigher_data();
    void ranksTheBetterMatchHigher();
    void fieldsCountUpToTheThirtyFirst();
    void countsThirtyTwoWords();
    void isSharedByCopies();
    void foldedLettersOfAllOfUnicodeAreFoundByThemselves();
    void equalsThePlainSearchOnShortTexts_data();
    void equalsThePlainSearchOnShortTexts();
    void equalsThePlainSearchOnManyFields();
};

void SearchFilterTest::finds_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<QStringList>("fields");
    QTest::addColumn<QString>("pieces"); // empty: not found

    auto const row = [](char const* name, char const* words, QStringList const& fields, char const* pieces) {
        QTest::newRow(name) << QString::fromUtf8(words) << fields << QString::fromUtf8(pieces);
    };
    row("a beginning", "mar", {u"Mario Rossi"_s}, "Mar");
    row("a whole word", "mario", {u"Mario Rossi"_s}, "Mario");
    row("not the inside of a word", "ario", {u"Mario Rossi"_s}, "");
    row("not more than a word", "marios", {u"Mario Rossi"_s}, "");
    row("words in any order", "ro ma", {u"Mario Rossi"_s}, "Ma|Ro");
    row("words in different fields", "ro off", {u"Mario Rossi"_s, u"Officina"_s}, "Ro|Off");
    row("every word has to be found", "ro x", {u"Mario Rossi"_s}, "");
    row("a word serves once", "ma ma", {u"Mario Rossi"_s}, "");
    row("two words serve twice", "ma ma", {u"Mario"_s, u"Marco"_s}, "Ma|Ma");
    row("the best assignment", "ma mario", {u"mario marco"_s}, "mario|ma");
    row("the best assignment, the other way round", "mario ma", {u"mario marco"_s}, "mario|ma");
    row("case", "MÜLLER", {u"müller"_s}, "müller");
    row("marks are left out", "muller", {u"Müller"_s}, "Müller");
    row("marks are given", "müller", {u"Muller"_s}, "Muller");
    row("a mark of its own stays with its letter", "mu", {u"Mu\u0308ller"_s}, "Mu\u0308");
    row("two marks", "viet", {u"Việt"_s}, "Việt");
    row("a mark in the filter alone", "\u0301mu", {u"Muller"_s}, "Mu");
    row("sharp s", "strasse", {u"Straße"_s}, "Straße");
    row("sharp s in the filter", "straße", {u"Strasse"_s}, "Strasse");
    row("half a sharp s", "stras", {u"Straße"_s}, "Straß");
    row("capital sharp s", "strass", {u"STRAẞE"_s}, "STRAẞ");
    row("crossed l", "walesa", {u"Wałęsa"_s}, "Wałęsa");
    row("crossed o", "soren", {u"Søren"_s}, "Søren");
    row("ae", "aero", {u"Ærø"_s}, "Ærø");
    row("thorn", "thor", {u"Þór"_s}, "Þór");
    row("dotless i", "isik", {u"Işık"_s}, "Işık");
    row("capital i with a dot", "istanbul", {u"İstanbul"_s}, "İstanbul");
    row("ligature", "fi", {u"ﬁne"_s}, "ﬁ");
    row("wide letters", "abc", {u"ＡＢＣ"_s}, "ＡＢＣ");
    row("Greek, final sigma", "παπαδοπουλος", {u"Παπαδόπουλος"_s}, "Παπαδόπουλος");
    row("Cyrillic", "алена", {u"Алёна"_s}, "Алёна");
    row("Arabic marks", "محمد", {u"مُحَمَّد"_s}, "مُحَمَّد");
    row("Hebrew points", "שלום", {u"שָׁלוֹם"_s}, "שָׁלוֹם");
    row("Hangul by its letters", "기", {u"김"_s}, "김");
    row("letters outside the first plane", "𝐚", {u"Abc"_s}, "A");
    row("soft hyphen inside", "mario", {u"Ma\u00adrio"_s}, "Ma\u00adrio");
    row("direction mark in front", "mario", {u"\u202amario\u202c"_s}, "mario");
    row("hyphen and apostrophe", "luc bri", {u"Jean-Luc O'Brien"_s}, "Luc|Bri");
    row("punctuation left out", "obrien", {u"Jean-Luc O'Brien"_s}, "O'Brien");
    row("another apostrophe", "o’brien", {u"O'Brien"_s}, "O|Brien");
    row("an apostrophe that is a letter", "obrien", {u"Oʼbrien"_s}, "Oʼbrien");
    row("a hyphen for a blank", "jean-luc", {u"Luc Jean"_s}, "Luc|Jean");
    row("a hyphen for nothing", "jean-luc", {u"Jeanluc"_s}, "Jeanluc");
    row("a word beyond punctuation", "jeanl", {u"Jean-Luc"_s}, "Jean-L");
    row("not beyond a blank", "jeanl", {u"Jean Luc"_s}, "");
    row("ampersand", "b", {u"A&B"_s}, "B");
    row("lone halves of a pair", "b", {QString(QChar(0xd800)) + u'b' + QChar(0xdc00)}, "b");
    row("digits open a word", "3", {u"3M Italia"_s}, "3");
    row("not inside of a word with letters", "3", {u"B3"_s}, "");
    row("a national number", "02079460020", {u"+44 20 7946 0020"_s}, "20 7946 0020");
    row("inside a number", "94600", {u"+44 20 7946 0020"_s}, "946 00");
    row("an international number", "+44 20 7946 0020", {u"+442079460020"_s}, "442079460020");
    row("dialled with 00", "0044 20 7946", {u"+44 20 7946 0020"_s}, "44 20 7946");
    row("written with 00", "+4420", {u"0044 20 7946 0020"_s}, "44 20");
    row("a zero in brackets", "442079460020", {u"+44 (0)20 7946 0020"_s}, "44 (0)20 7946 0020");
    row("a zero in brackets, national", "020794", {u"+44 (0)20 7946 0020"_s}, "20 794");
    row("a group in brackets that begins with a zero", "020794", {u"+44 (020) 7946 0020"_s}, "020) 794");
    row("a zero in brackets that opens a group", "07946", {u"+44 (0 7946) 0020"_s}, "0 7946");
    row("a number that ends with a bracket", "440", {u"+44 (0"_s}, "44 (0");
    row("an area code in brackets", "1212555", {u"+1 (212) 555 0123"_s}, "1 (212) 555");
    row("a number with its country code finds one without", "+44 20 7946 0020", {u"020 7946 0020"_s},
        "20 7946 0020");
    row("another country code", "+39 20 7946 0020", {u"+44 20 7946 0020"_s}, "");
    row("a country code and digits from inside of a national number", "+44 79460", {u"020 7946 0020"_s}, "");
    row("the country code alone does not", "+44 20", {u"020 7946 0020"_s}, "");
    row("the groups of a number", "7946 0020", {u"+442079460020"_s}, "79460020");
    row("the groups one by one", "0020 7946", {u"+44 20 7946 0020"_s}, "7946|0020");
    row("dots and slashes", "0612345", {u"06/12.345"_s}, "06/12.345");
    row("digits of another script", "0612", {u"٠٦ ١٢"_s}, "٠٦ ١٢");
    row("wide digits in the filter", "０６", {u"06 1234"_s}, "06");
    row("the zero stands for the national one only", "0946", {u"+44 20 7946 0020"_s}, "");
    row("two numbers are not one", "1234", {u"12, 34"_s}, "");
    row("two fields are not one number", "1234", {u"12"_s, u"34"_s}, "");
    row("a name and a number", "mario 0794", {u"Mario"_s, u"+39 0794 1"_s}, "Mario|0794");
}

void SearchFilterTest::finds()
{
    QFETCH(QString, words);
    QFETCH(QStringList, fields);
    QFETCH(QString, pieces);

    SearchFilter const filter(words);
    QCOMPARE(marked(filter, fields), pieces);
    QCOMPARE(wrong(words, filter, fields), QString());
}

void SearchFilterTest::withoutWords_data()
{
    QTest::addColumn<QString>("words");
    QTest::newRow("null") << QString();
    QTest::newRow("blanks") << QStringLiteral(" \t\u00a0");
    QTest::newRow("punctuation") << QStringLiteral("-'!☎");
    QTest::newRow("marks alone") << QStringLiteral("\u0301\u200d");
}

void SearchFilterTest::withoutWords()
{
    QFETCH(QString, words);

    SearchFilter const filter(words);
    QVERIFY(filter.isEmpty());
    for (QStringList const& fields : {QStringList(), QStringList(u""_s), QStringList(u"Mario"_s)}) {
        QVERIFY(filter.matches(fields));
        QVERIFY(filter.hits(fields).isEmpty());
        QCOMPARE(filter.rank(fields), 1);
    }
}

void SearchFilterTest::ranksTheBetterMatchHigher_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<QStringList>("better");
    QTest::addColumn<QStringList>("worse");

    QTest::newRow("whole before beginning")
        << u"mar"_s << QStringList{u"x"_s, u"x"_s, u"Mar"_s} << QStringList{u"Mario"_s};
    QTest::newRow("then the earlier field")
        << u"mar"_s << QStringList{u"Mario"_s} << QStringList{u"x"_s, u"Mario"_s};
    QTest::newRow("whole in spite of a later field")
        << u"mar"_s << QStringList{u"x"_s, u"Mar"_s} << QStringList{u"Mario"_s, u"x"_s};
    QTest::newRow("more whole words")
        << u"mar ros"_s << QStringList{u"Mar Ros"_s} << QStringList{u"Mar Rossi"_s};
    QTest::newRow("one whole before two beginnings")
        << u"a b"_s << QStringList{u"x"_s, u"a bb"_s} << QStringList{u"aa bb"_s};
    QTest::newRow("the start of a number before its inside")
        << u"12"_s << QStringList{u"x"_s, u"1234"_s} << QStringList{u"9123"_s};
    QTest::newRow("the whole number") << u"0612"_s << QStringList{u"06 12"_s} << QStringList{u"06 123"_s};
    QTest::newRow("the whole number without its zero")
        << u"0201"_s << QStringList{u"+44 201"_s} << QStringList{u"+44 2012"_s};
}

void SearchFilterTest::ranksTheBetterMatchHigher()
{
    QFETCH(QString, words);
    QFETCH(QStringList, better);
    QFETCH(QStringList, worse);

    SearchFilter const filter(words);
    QVERIFY(filter.rank(worse) > 0);
    QVERIFY(filter.rank(better) > filter.rank(worse));
}

void SearchFilterTest::fieldsCountUpToTheThirtyFirst()
{
    SearchFilter const filter(u"mar"_s);
    auto const rankInField = [&](qsizetype field) {
        QStringList fields(field, u"x"_s);
        return filter.rank(fields << u"Mario"_s);
    };
    for (qsizetype field = 0; field < 30; ++field) {
        QVERIFY(rankInField(field) > rankInField(field + 1));
    }
    QVERIFY(rankInField(30) > 0);
    QCOMPARE(rankInField(31), rankInField(30));
    QCOMPARE(rankInField(100), rankInField(30));
}

void SearchFilterTest::countsThirtyTwoWords()
{
    QStringList words;
    for (int word = 0; word < 32; ++word) {
        words.append(QStringLiteral("w%1").arg(word));
    }
    QString const text = words.join(u' ');
    QVERIFY(SearchFilter(text).matches(words));
    QVERIFY(!SearchFilter(text).matches(words.mid(1)));
    QVERIFY(!SearchFilter(text).matches(words.first(31)));
    QVERIFY(SearchFilter(text + u" another"_s).matches({text}));
}

void SearchFilterTest::isSharedByCopies()
{
    SearchFilter filter;
    QVERIFY(filter.isEmpty());
    {
        SearchFilter const other(QStringLiteral("mario"));
        filter = other;
    }
    QVERIFY(filter.matches({u"Mario"_s}));
    QVERIFY(!filter.matches({u"Luca"_s}));
}

void SearchFilterTest::foldedLettersOfAllOfUnicodeAreFoundByThemselves()
{
    for (char32_t character = 0; character <= 0x10ffff; ++character) {
        if (!QChar::isLetterOrNumber(character)) {
            continue;
        }
        QString const text = QString::fromUcs4(&character, 1);
        QString const letters = plain::searchLetters(character);
        SearchFilter const filter(text);
        QCOMPARE(filter.isEmpty(), plain::searchReadings(text).isEmpty());
        if (!filter.isEmpty() && !(filter.matches({letters}) && SearchFilter(letters).matches({text}))) {
            QFAIL(qPrintable(QStringLiteral("U+%1 is not found").arg(uint(character), 4, 16)));
        }
    }
}

void SearchFilterTest::equalsThePlainSearchOnShortTexts_data()
{
    QTest::addColumn<QStringList>("filterPieces");
    QTest::addColumn<QStringList>("fieldPieces");
    QTest::addColumn<int>("filterLength");
    QTest::addColumn<int>("fieldLength");

    QTest::newRow("letters") << QStringList{u"a"_s, u"B"_s, u"ß"_s, u"s"_s, u"ü"_s, u"-"_s, u" "_s}
                             << QStringList{u"A"_s, u"b"_s, u"ß"_s, u"S"_s, u"u\u0308"_s, u"'"_s, u" "_s} << 3
                             << 4;
    QTest::newRow("invisible") << QStringList{u"a"_s, u"\u0301"_s, u"\u200d"_s, u"æ"_s, u"\u0640"_s, u"𝐞"_s}
                               << QStringList{u"a"_s, u"\u0301"_s, u"\u200d"_s,
                                              u"æ"_s, u"𝐞"_s,      QString(QChar(0xd800))}
                               << 3 << 4;
    QTest::newRow("digits") << QStringList{u"0"_s, u"1"_s, u"2"_s, u"+"_s, u" "_s, u"a"_s}
                            << QStringList{u"0"_s, u"1"_s, u"2"_s, u"+"_s, u" "_s, u"-"_s, u","_s, u"a"_s}
                            << 3 << 4;
    QTest::newRow("numbers") << QStringList{u"0"_s, u"1"_s, u"+"_s}
                             << QStringList{u"0"_s, u"1"_s, u"+"_s, u" "_s, u"(0)"_s} << 5 << 5;
    QTest::newRow("words") << QStringList{u"a "_s, u"ab "_s, u"a-"_s, u"1 "_s}
                           << QStringList{u"a "_s, u"ab "_s, u"a-b "_s, u"1 "_s, u"12 "_s, u"b"_s} << 3 << 4;
}

void SearchFilterTest::equalsThePlainSearchOnShortTexts()
{
    QFETCH(QStringList, filterPieces);
    QFETCH(QStringList, fieldPieces);
    QFETCH(int, filterLength);
    QFETCH(int, fieldLength);

    QStringList fields;
    TextGenerator::visitAll(fieldPieces, fieldLength, [&](QString const& field) { fields.append(field); });
    int row = 0;
    QString failure;
    TextGenerator::visitAll(filterPieces, filterLength, [&](QString const& words) {
        SearchFilter const filter(words);
        // Every seventh, at another place each time, or the plain search takes minutes.
        for (qsizetype at = row++ % 7; at < fields.size() && failure.isEmpty(); at += 7) {
            failure = wrong(words, filter, {fields[at]});
        }
    });
    QCOMPARE(failure, QString());
}

void SearchFilterTest::equalsThePlainSearchOnManyFields()
{
    TextGenerator generator(20261122, {u"ma"_s, u"mario"_s, u"Mario"_s, u"marco"_s, u" "_s, u" "_s, u"-"_s,
                                       u"'"_s, u"+39"_s, u"06"_s, u"12"_s, u"0"_s, u"ß"_s, u"ss"_s, u"(0)"_s,
                                       u"."_s, u"u\u0308"_s, u";"_s});
    for (int round = 0; round < 20'000; ++round) {
        QStringList fields;
        for (int left = generator.number(0, 3); left > 0; --left) {
            fields.append(generator.text(6));
        }
        QString const words = generator.text(6);
        QString const failure = wrong(words, SearchFilter(words), fields);
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
    }
}

int main(int argc, char** argv)
{
    return runTest<SearchFilterTest>(argc, argv);
}

#include "SearchFilterTest.moc"
