#include <text/SubstringWrapper.h>

#include <RunTest.h>
#include <TextGenerator.h>
#include <TextOracles.h>
#include <Valgrind.h>
#include <algorithm>

using TokenOccurrences = SubstringWrapper::TokenOccurrences;

class SubstringWrapperTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wrapsEachFilterWordInItsOwnTextWord_data();
    void wrapsEachFilterWordInItsOwnTextWord();
    void listsCandidatesOfTheMostConstrainedFirst_data();
    void listsCandidatesOfTheMostConstrainedFirst();
    void withdrawsCandidatesFromLaterEntries_data();
    void withdrawsCandidatesFromLaterEntries();
    void withdrawingBehindTheLastEntryDoesNothing();
    void cleansTheEdges();
    void agreesWithThePlainRulesOnEveryShortText();
    void agreesWithThePlainRulesOnGeneratedTexts();
    void agreesWithThePlainRulesOnTextsOfManyWords();
    void agreesWithThePlainRulesOnCutCharacters();
    void agreesWithThePlainRulesOnGeneratedOccurrences_data();
    void agreesWithThePlainRulesOnGeneratedOccurrences();
    void foldsTheWholeUnicodeRange();
    void findsALongWordInAHostileText();
    void holdsWhenEveryWordMatchesEveryWord();
    void dealsOutManyWordsOneByOne();
};

namespace {

std::pair<QString, QString> const& markers()
{
    static std::pair<QString, QString> const pair(QStringLiteral("%start%"), QStringLiteral("%stop%"));
    return pair;
}

QString wrap(QString const& filter, QString const& text, bool matchWordStart)
{
    return SubstringWrapper(filter, text, markers(), matchWordStart).wrapText();
}

QString repeated(QString const& piece, int times)
{
    return QStringList(times, piece).join(QLatin1Char(' '));
}

QByteArray describe(TokenOccurrences const& occurrences)
{
    QByteArray text;
    for (auto const& [filterWord, candidates] : occurrences) {
        text += QByteArray::number(filterWord) + ':';
        for (int const candidate : candidates) {
            text += ' ' + QByteArray::number(candidate);
        }
        text += "; ";
    }
    return text;
}

} // namespace

Q_DECLARE_METATYPE(TokenOccurrences)

void SubstringWrapperTest::wrapsEachFilterWordInItsOwnTextWord_data()
{
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("matchWordStart");
    QTest::addColumn<QString>("wrapped");
    auto const row = [](char const* tag, char const* filter, char const* text, bool start,
                        char const* wrapped) {
        QTest::newRow(tag) << QString::fromUtf8(filter) << QString::fromUtf8(text) << start
                           << QString::fromUtf8(wrapped);
    };
    row("two words at their starts", "ma ro", "Mario Rossi", true, "%start%Ma%stop%rio %start%Ro%stop%ssi");
    row("filter words in another order", "ro ma", "Mario Rossi", true,
        "%start%Ma%stop%rio %start%Ro%stop%ssi");
    row("two filter words, one candidate", "ma ma", "Mario Rossi", true, "Mario Rossi");
    row("the first gives up what the second needs", "ma ma", "Mario Marco", true,
        "%start%Ma%stop%rio %start%Ma%stop%rco");
    row("greedy withdrawal misses a distribution that exists", "an bel ella", "anna annabella bella", false,
        "anna annabella bella");
    row("inside a word, only starts wanted", "ssi", "Mario Rossi", true, "Mario Rossi");
    row("inside a word", "ssi", "Mario Rossi", false, "Mario Ro%start%ssi%stop%");
    row("more filter words than text words", "a b c", "a b", false, "a b");
    row("double spaces kept", "ro", "Mario  Rossi", true, "Mario  %start%Ro%stop%ssi");
    row("spaces at both ends kept", "ro", "  Rossi ", true, "  %start%Ro%stop%ssi ");
    row("spaces of the filter do not count", "  ma   ro ", "Mario Rossi", true,
        "%start%Ma%stop%rio %start%Ro%stop%ssi");
    row("empty filter", "", "Mario Rossi", true, "Mario Rossi");
    row("blank filter", "   ", "Mario Rossi", false, "Mario Rossi");
    row("empty text", "a", "", false, "");
    row("blank text", "a", "   ", false, "   ");
    row("first hit in the word only", "a", "banana", false, "b%start%a%stop%nana");
    row("first candidate taken", "a", "b ab ac", true, "b %start%a%stop%b ac");
    row("one filter word not found", "ma x", "Mario Rossi", false, "Mario Rossi");
    row("accents count", "cite", "Cit\xC3\xA8", false, "Cit\xC3\xA8");
    row("case of accented letters ignored", "CIT\xC3\x88", "Cit\xC3\xA8", false, "%start%Cit\xC3\xA8%stop%");
    row("sharp s is one letter", "\xC3\x9F", "stra\xC3\x9F\x65", false, "stra%start%\xC3\x9F%stop%e");
    row("capital sigma finds both", "\xCE\xA3", "a\xCF\x82", false, "a%start%\xCF\x82%stop%");
    row("letters outside the basic plane", "\xF0\x90\x90\x80", "x\xF0\x90\x90\xA8y", false,
        "x%start%\xF0\x90\x90\xA8%stop%y");
    row("a marker in the text is text", "start", "%start% x", false, "%%start%start%stop%% x");
    row("a tab does not separate", "b", "a\tb", true, "a\tb");
}

void SubstringWrapperTest::wrapsEachFilterWordInItsOwnTextWord()
{
    QFETCH(QString, filter);
    QFETCH(QString, text);
    QFETCH(bool, matchWordStart);
    QTEST(wrap(filter, text, matchWordStart), "wrapped");
    QTEST(plain::wrapText(filter, text, markers(), matchWordStart), "wrapped");
}

void SubstringWrapperTest::listsCandidatesOfTheMostConstrainedFirst_data()
{
    QTest::addColumn<QStringList>("filterWords");
    QTest::addColumn<QStringList>("textWords");
    QTest::addColumn<bool>("matchWordStart");
    QTest::addColumn<TokenOccurrences>("occurrences");
    auto const words = [](char const* text) {
        return QString::fromUtf8(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    };
    QTest::newRow("ties keep the order of the filter")
        << words("x a b") << words("xa xb ab") << false
        << TokenOccurrences{{0, {0, 1}}, {1, {0, 2}}, {2, {1, 2}}};
    QTest::newRow("the rarest word comes first")
        << words("a ab") << words("a ab abc b") << true << TokenOccurrences{{1, {1, 2}}, {0, {0, 1, 2}}};
    QTest::newRow("no filter words") << words("") << words("a") << false << TokenOccurrences{};
    QTest::newRow("nothing at all") << words("") << words("") << false << TokenOccurrences{};
    QTest::newRow("more filter words than text words")
        << words("a a") << words("a") << false << TokenOccurrences{};
    QTest::newRow("a word that opens nothing")
        << words("a b") << words("ab ac") << true << TokenOccurrences{};
    QTest::newRow("an empty filter word is found everywhere")
        << QStringList{QStringLiteral("")} << words("a b") << false << TokenOccurrences{{0, {0, 1}}};
    QTest::newRow("an empty text word holds nothing")
        << words("a") << QStringList{QStringLiteral(""), QStringLiteral("A")} << false
        << TokenOccurrences{{0, {1}}};
}

void SubstringWrapperTest::listsCandidatesOfTheMostConstrainedFirst()
{
    QFETCH(QStringList, filterWords);
    QFETCH(QStringList, textWords);
    QFETCH(bool, matchWordStart);
    QFETCH(TokenOccurrences, occurrences);
    QCOMPARE(describe(SubstringWrapper::getTokenOccurrences(filterWords, textWords, matchWordStart)),
             describe(occurrences));
}

void SubstringWrapperTest::withdrawsCandidatesFromLaterEntries_data()
{
    QTest::addColumn<TokenOccurrences>("before");
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("done");
    QTest::addColumn<TokenOccurrences>("after");
    using T = TokenOccurrences;
    QTest::newRow("no candidates") << T{{0, {}}, {1, {1}}} << 0 << true << T{{0, {}}, {1, {1}}};
    QTest::newRow("taken from a later entry with others")
        << T{{0, {0}}, {1, {0, 1}}} << 0 << true << T{{0, {0}}, {1, {1}}};
    QTest::newRow("both have only this one") << T{{0, {0}}, {1, {0}}} << 0 << false << T{{0, {0}}, {1, {0}}};
    QTest::newRow("given up for a later entry's only one")
        << T{{0, {0, 1}}, {1, {0}}} << 0 << true << T{{0, {1}}, {1, {0}}};
    QTest::newRow("withdrawn before it is given up")
        << T{{0, {0, 1}}, {1, {0, 2}}, {2, {0}}, {3, {0, 3}}} << 0 << true
        << T{{0, {1}}, {1, {2}}, {2, {0}}, {3, {0, 3}}};
    QTest::newRow("fails after it has given up")
        << T{{0, {0, 1}}, {1, {0}}, {2, {1}}} << 0 << false << T{{0, {1}}, {1, {0}}, {2, {1}}};
    QTest::newRow("every candidate is withdrawn, used or not")
        << T{{0, {0, 1}}, {1, {0, 1, 2}}} << 0 << true << T{{0, {0, 1}}, {1, {2}}};
    QTest::newRow("a later entry becomes the only one on the way")
        << T{{0, {0, 1}}, {1, {0, 1}}} << 0 << true << T{{0, {0}}, {1, {1}}};
    QTest::newRow("earlier entries stay untouched")
        << T{{0, {0, 1}}, {1, {0}}, {2, {0, 1}}} << 1 << true << T{{0, {0, 1}}, {1, {0}}, {2, {1}}};
    QTest::newRow("the last entry has nothing behind it")
        << T{{0, {0}}, {1, {0}}} << 1 << true << T{{0, {0}}, {1, {0}}};
    QTest::newRow("candidates in any order")
        << T{{0, {1, 0}}, {1, {0, 1}}} << 0 << true << T{{0, {1}}, {1, {0}}};
    QTest::newRow("a candidate listed twice")
        << T{{0, {0, 0}}, {1, {0, 1, 0}}} << 0 << true << T{{0, {0, 0}}, {1, {1}}};
}

void SubstringWrapperTest::withdrawsCandidatesFromLaterEntries()
{
    QFETCH(TokenOccurrences, before);
    QFETCH(int, index);
    QFETCH(bool, done);
    QFETCH(TokenOccurrences, after);
    TokenOccurrences expected = before;
    QCOMPARE(plain::doRemoveDuplicates(expected, static_cast<std::size_t>(index)), done);
    QCOMPARE(describe(expected), describe(after));
    QCOMPARE(SubstringWrapper::doRemoveDuplicates(before, static_cast<std::size_t>(index)), done);
    QCOMPARE(describe(before), describe(after));
}

void SubstringWrapperTest::withdrawingBehindTheLastEntryDoesNothing()
{
    TokenOccurrences occurrences{{0, {0}}};
    QVERIFY(SubstringWrapper::doRemoveDuplicates(occurrences, 1));
    QVERIFY(SubstringWrapper::doRemoveDuplicates(occurrences, static_cast<std::size_t>(-1)));
    QCOMPARE(describe(occurrences), QByteArray("0: 0; "));
}

void SubstringWrapperTest::cleansTheEdges()
{
    TokenOccurrences none;
    QVERIFY(SubstringWrapper::cleanFromDuplicates(none));
    TokenOccurrences one{{0, {3, 4}}};
    QVERIFY(SubstringWrapper::cleanFromDuplicates(one));
    QCOMPARE(describe(one), QByteArray("0: 3 4; "));
    TokenOccurrences two{{0, {0, 1}}, {1, {0, 1, 2, 3}}};
    QVERIFY(SubstringWrapper::cleanFromDuplicates(two));
    QCOMPARE(describe(two), QByteArray("0: 0; 1: 2 3; "));
    TokenOccurrences empty{{0, {}}, {1, {}}};
    QVERIFY(SubstringWrapper::cleanFromDuplicates(empty));
    QCOMPARE(describe(empty), QByteArray("0:; 1:; "));
}

void SubstringWrapperTest::agreesWithThePlainRulesOnEveryShortText()
{
    QStringList const pieces{QStringLiteral("a"), QStringLiteral("B"), QStringLiteral(" ")};
    QStringList texts;
    QStringList filters;
    for (int length = 0; length <= 6; ++length) {
        TextGenerator::visitAll(pieces, length, [&](QString const& text) { texts += text; });
    }
    for (int length = 0; length <= 4; ++length) {
        TextGenerator::visitAll(pieces, length, [&](QString const& text) { filters += text.toLower(); });
    }
    for (QString const& text : texts) {
        for (QString const& filter : filters) {
            for (bool const start : {false, true}) {
                QString const expected = plain::wrapText(filter, text, markers(), start);
                if (wrap(filter, text, start) != expected) {
                    qInfo() << filter << text << start;
                    QCOMPARE(wrap(filter, text, start), expected);
                }
            }
        }
    }
}

void SubstringWrapperTest::agreesWithThePlainRulesOnGeneratedTexts()
{
    QStringList const pieces{
        QStringLiteral("a"),          QStringLiteral("A"),          QStringLiteral("b"),
        QStringLiteral("ab"),         QStringLiteral(" "),          QStringLiteral(" "),
        QStringLiteral("  "),         QStringLiteral("\u00E8"),     QStringLiteral("\u00C8"),
        QStringLiteral("\u0130"),     QStringLiteral("\u212A"),     QStringLiteral("k"),
        QStringLiteral("\U00010400"), QStringLiteral("\U00010428"), QStringLiteral("\u03C2"),
        QStringLiteral("\u03A3")};
    TextGenerator generator(20'260'101, pieces);
    for (int round = 0; round < sizeForThisRun(100'000); ++round) {
        QString const text = generator.text(30);
        QString const filter = generator.text(10);
        bool const start = generator.coin();
        QString const wrapped = wrap(filter, text, start);
        if (wrapped != plain::wrapText(filter, text, markers(), start)) {
            qInfo() << filter << text << start;
            QCOMPARE(wrapped, plain::wrapText(filter, text, markers(), start));
        }
        QString unwrapped = wrapped;
        QCOMPARE(unwrapped.remove(markers().first).remove(markers().second), text);
    }
}

void SubstringWrapperTest::agreesWithThePlainRulesOnTextsOfManyWords()
{
    TextGenerator generator(64, QStringLiteral("a b c d ab bc cd x x x").split(QLatin1Char(' ')));
    auto const words = [&generator](int count) {
        QStringList list;
        for (int left = count; left > 0; --left) {
            list += generator.text(4);
        }
        return list.join(QLatin1Char(' '));
    };
    for (int round = 0; round < 3'000; ++round) {
        QString const text = words(generator.number(60, 200));
        QString const filter = words(generator.number(1, 12));
        bool const start = generator.coin();
        QString const expected = plain::wrapText(filter, text, markers(), start);
        if (wrap(filter, text, start) != expected) {
            qInfo() << filter << text << start;
            QCOMPARE(wrap(filter, text, start), expected);
        }
    }
    // The candidates of "ab" stand in the first and in the second 64 words.
    QStringList list(100, QStringLiteral("x"));
    list[10] = QStringLiteral("ab");
    list[65] = QStringLiteral("abc");
    list[66] = QStringLiteral("abc");
    QCOMPARE(plain::wrapText(QStringLiteral("ab abc abc"), list.join(u' '), markers(), true),
             wrap(QStringLiteral("ab abc abc"), list.join(u' '), true));
    QCOMPARE(plain::wrapText(QStringLiteral("a ab"), list.join(u' '), markers(), true),
             wrap(QStringLiteral("a ab"), list.join(u' '), true));
}

void SubstringWrapperTest::agreesWithThePlainRulesOnCutCharacters()
{
    QStringList const pieces{QString(QChar(0xD801)), QString(QChar(0xDC00)), QString(QChar(0xDC28)),
                             QStringLiteral("a"), QStringLiteral(" ")};
    TextGenerator generator(7, pieces);
    for (int round = 0; round < sizeForThisRun(100'000); ++round) {
        QString const text = generator.text(12);
        QString const filter = generator.text(6);
        bool const start = generator.coin();
        QString const expected = plain::wrapText(filter, text, markers(), start);
        if (wrap(filter, text, start) != expected) {
            qInfo() << filter << text << start;
            QCOMPARE(wrap(filter, text, start), expected);
        }
    }
}

void SubstringWrapperTest::agreesWithThePlainRulesOnGeneratedOccurrences_data()
{
    QTest::addColumn<bool>("ascending");
    QTest::newRow("ascending, as they are found") << true;
    QTest::newRow("in any order, with repetitions") << false;
}

void SubstringWrapperTest::agreesWithThePlainRulesOnGeneratedOccurrences()
{
    QFETCH(bool, ascending);
    TextGenerator generator(4711, {});
    for (int round = 0; round < sizeForThisRun(50'000); ++round) {
        TokenOccurrences ours(static_cast<std::size_t>(generator.number(1, 7)));
        int const words = generator.number(1, 9);
        for (std::size_t i = 0; i < ours.size(); ++i) {
            ours[i].first = static_cast<int>(i);
            std::vector<int>& candidates = ours[i].second;
            for (int w = 0; w < words; ++w) {
                if (generator.coin()) {
                    candidates.push_back(ascending ? w : generator.number(0, words));
                }
            }
        }
        QByteArray const before = describe(ours);
        TokenOccurrences step = ours;
        TokenOccurrences plainStep = ours;
        TokenOccurrences expected = ours;
        auto const index = static_cast<std::size_t>(generator.number(0, static_cast<int>(ours.size()) - 1));
        bool const stepDone = SubstringWrapper::doRemoveDuplicates(step, index);
        bool const plainStepDone = plain::doRemoveDuplicates(plainStep, index);
        bool const done = SubstringWrapper::cleanFromDuplicates(ours);
        bool const plainDone = plain::cleanFromDuplicates(expected);
        QVERIFY2(stepDone == plainStepDone && describe(step) == describe(plainStep), before.constData());
        QVERIFY2(done == plainDone && describe(ours) == describe(expected), before.constData());
    }
}

void SubstringWrapperTest::foldsTheWholeUnicodeRange()
{
    for (char32_t character = 0x21; character <= 0x10'FFFF; ++character) {
        char32_t const other =
            QChar::toUpper(character) == character ? QChar::toLower(character) : QChar::toUpper(character);
        if (other == character || QChar::isSurrogate(character)) {
            continue;
        }
        QString const filter = QString::fromUcs4(&character, 1);
        QString const word = QStringLiteral("x") + QString::fromUcs4(&other, 1);
        bool const found = wrap(filter, word, false) != word;
        QVERIFY2(found == word.contains(filter, Qt::CaseInsensitive),
                 QByteArray::number(static_cast<uint>(character), 16).constData());
    }
}

void SubstringWrapperTest::findsALongWordInAHostileText()
{
    QString const hostile(200'000, QLatin1Char('a'));
    QString const wanted = QStringLiteral("b") + QString(50'000, QLatin1Char('A'));
    QCOMPARE(wrap(wanted, hostile, false), hostile);
    QCOMPARE(wrap(wanted, hostile + wanted, false), hostile + markers().first + wanted + markers().second);
    QString const periodic = QStringLiteral("ab").repeated(25);
    QCOMPARE(wrap(periodic + QLatin1Char('c'), QStringLiteral("ab").repeated(60) + QLatin1Char('c'), false),
             QStringLiteral("ab").repeated(35) + markers().first + periodic + QLatin1Char('c') +
                 markers().second);
}

void SubstringWrapperTest::holdsWhenEveryWordMatchesEveryWord()
{
    QString const text = repeated(QStringLiteral("anna"), 20'000);
    QString const filter = repeated(QStringLiteral("an"), 2'000);
    QCOMPARE(wrap(filter, text, true), text);
    QCOMPARE(wrap(filter, text, false), text);

    auto occurrences = SubstringWrapper::getTokenOccurrences(filter.split(QLatin1Char(' ')),
                                                             text.split(QLatin1Char(' ')), true);
    QCOMPARE(occurrences.size(), std::size_t(2'000));
    QVERIFY(
        std::ranges::all_of(occurrences, [](auto const& entry) { return entry.second.size() == 20'000; }));
    QVERIFY(!SubstringWrapper::cleanFromDuplicates(occurrences));
    QCOMPARE(occurrences[0].second, std::vector<int>{0});
    QCOMPARE(occurrences[1].second, std::vector<int>{19'999});
    QCOMPARE(occurrences[1'999].second, std::vector<int>{19'999});
}

void SubstringWrapperTest::dealsOutManyWordsOneByOne()
{
    QStringList filterWords;
    QStringList textWords;
    QStringList wrapped;
    for (int i = 0; i < 1'000; ++i) {
        QString const number = QStringLiteral("%1").arg(i, 4, 10, QLatin1Char('0'));
        filterWords.prepend(QStringLiteral("N") + number);
        textWords += QStringLiteral("n") + number + QStringLiteral("x");
        textWords += QStringLiteral("other");
        wrapped += markers().first + QStringLiteral("n") + number + markers().second + QStringLiteral("x");
        wrapped += QStringLiteral("other");
    }
    QCOMPARE(wrap(filterWords.join(QLatin1Char(' ')), textWords.join(QLatin1Char(' ')), true),
             wrapped.join(QLatin1Char(' ')));
}

int main(int argc, char** argv)
{
    return runTest<SubstringWrapperTest>(argc, argv);
}

#include "SubstringWrapperTest.moc"
