#include <text/HTMLHelpers.h>
#include <text/StringUtils.h>
#include <text/SubstringWrapper.h>

#include <ChildProcess.h>
#include <FailingMalloc.h>
#include <RunTest.h>
#include <functional>
#include <new>

/// What comes back when memory runs out. In a test of its own, because the sanitizers need memory too.
class TextShortOfMemoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tableOfMarksMayFailAndIsMadeLater();
    void largeLinksComeBackEmpty();
    void largeTextWithoutAddressNeedsNoMemory();
    void everyAllocationMayFail_data();
    void everyAllocationMayFail();
    void validatorsAndOrderNeedNoMemory();
    void occurrencesStayWhole();
};

namespace {

using Operation = std::function<QString()>;
using TokenOccurrences = SubstringWrapper::TokenOccurrences;

/// What an operation gives, and how many of its allocations failed one by one; -1 when an exception came out
/// or something else was given than the right result or \a neutral.
int failuresOf(Operation const& operation, QString const& right, QString const& neutral)
{
    for (int nth = 0;; ++nth) {
        try {
            FailingMalloc const failure(nth);
            QString const result = operation();
            if (!failure.happened()) {
                return result == right ? nth : -1;
            }
            if (result != neutral && result != right) {
                return -1;
            }
        } catch (std::bad_alloc const&) {
            return -1;
        }
    }
}

QString shown(bool value)
{
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

/// Long enough not to fit the room that operations have on the stack.
QString repeated(char const* piece)
{
    return QString::fromUtf8(piece).repeated(50);
}

TokenOccurrences everyWordForEveryone()
{
    return TokenOccurrences(20, {0, {0, 1, 2, 3, 4}});
}

} // namespace

void TextShortOfMemoryTest::tableOfMarksMayFailAndIsMadeLater()
{
    QString const text = QStringLiteral("Cit\u00E8");
    // The first of all tests, so that nothing has asked for the table yet.
    int const exitCode = inChildProcess([&] {
        for (int const nth : {0, 1, 10, 100, 1'000}) {
            FailingMalloc const failure(nth);
            if (!StringUtils::removeDiacriticalMarks(text).isEmpty() || !failure.happened()) {
                return 1;
            }
        }
        return StringUtils::removeDiacriticalMarks(text) == QStringLiteral("Cite") ? 0 : 2;
    });
    QCOMPARE(exitCode, 0);
}

void TextShortOfMemoryTest::largeLinksComeBackEmpty()
{
    // Larger than what the allocator may have set aside for further threads.
    QString const large = QStringLiteral("www.example.com\n").repeated(4'500'000);
    int const exitCode = inChildProcess([&] {
        if (!limitResource(RLIMIT_AS, 0)) {
            return 1;
        }
        bool const empty =
            HTMLHelpers::processLinks(large).isEmpty() && HTMLHelpers::generateParagraphs(large).isEmpty();
        return empty ? 0 : 2;
    });
    QCOMPARE(exitCode, 0);
}

void TextShortOfMemoryTest::largeTextWithoutAddressNeedsNoMemory()
{
    QString const large = QStringLiteral("a-").repeated(10'000'000);
    int const exitCode = inChildProcess(
        [&] { return limitResource(RLIMIT_AS, 0) && HTMLHelpers::processLinks(large) == large ? 0 : 1; });
    QCOMPARE(exitCode, 0);
}

void TextShortOfMemoryTest::everyAllocationMayFail_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QString>("neutral");
    auto const row = [](char const* tag, Operation const& operation, QString const& neutral = {}) {
        QTest::newRow(tag) << operation << neutral;
    };
    QString const name = QStringLiteral("  anna   maria  bianchi ");
    QString const word = QStringLiteral("ab");
    QString const b = QStringLiteral("b");
    QString const html = repeated("<b>a &amp; b</b> ");
    QString const compact = QString(html).remove(u' ');
    QString const longWord = compact.left(80);
    QString const chat = repeated("a & www.example.com, 123456789\n");
    QString const names = repeated("\u0130nan \U00010400 bel ");
    QString const version = QString(300, u'0') + u'1';
    QString const earlier = QStringLiteral("0.0.1");

    row("padded number", [] { return StringUtils::stringifyNumberWithLowerBoundWidth(7, 5, u'0'); });
    row("title case", [=] { return StringUtils::getFistLetterUppercase(word); });
    row("blank spaces", [=] { return StringUtils::removeExtraBlankSpaces(name); });
    row("white space", [=] { return StringUtils::removeWhitespaceCharacters(name); });
    row("initials", [=] { return StringUtils::getInitialsFromFullName(name); });
    row("spaces of an e-mail address", [=] { return StringUtils::sanitizeEmail(name); });
    row(
        "unprintable characters",
        [=] {
            QString text = name;
            StringUtils::removeNoPrintableChars(text, word);
            return text;
        },
        name);
    row("duration", [] { return StringUtils::getDurationSecondsToString(3600); });
    row(
        "later version", [=] { return shown(StringUtils::isBiggerVersionThan(version, earlier)); },
        shown(false));
    row(
        "same version", [=] { return shown(StringUtils::isSameVersionAs(version, version)); }, shown(false));
    row(
        "earlier version", [=] { return shown(StringUtils::isLessVersionThan(earlier, version)); },
        shown(false));
    row("escaping", [=] { return StringUtils::sanitizeHTMLCharacters(html); });
    row("unescaping", [=] { return StringUtils::deHTMLfy(html); });
    row("chat", [=] { return StringUtils::htmlfy(chat); });
    row("links", [=] { return HTMLHelpers::processLinks(chat); });
    row("paragraphs", [=] { return HTMLHelpers::generateParagraphs(chat); });
    row("literal hits", [=] { return StringUtils::wrapSubStringsInHTMLTag(html, QStringLiteral("A &"), b); });
    // Without memory for the hits the text comes back without them, as it does without hits.
    QString const unmarked = StringUtils::sanitizeHTMLCharacters(html);
    row("filter hits", [=] {
        QString const marked =
            StringUtils::wrapSubStringsInHTMLTagExtended(html, QStringLiteral("a b"), b, false);
        return marked == unmarked ? QString() : marked;
    });
    row(
        "filter", [=] { return shown(StringUtils::isFilterMatched(names, names, false)); }, shown(false));
    row("marks", [=] { return StringUtils::removeDiacriticalMarks(QStringLiteral("\u00E8\U0001D165")); });
    row(
        "wrapper",
        [=] {
            return SubstringWrapper(QStringLiteral("an be"), names, {word, b}, false).wrapText();
        },
        names);
    row(
        "wrapper with a long filter",
        [=] {
            return SubstringWrapper(longWord, compact, {word, b}, true).wrapText();
        },
        compact);
    QStringList const words = names.split(u' ');
    row(
        "occurrences",
        [=] { return shown(SubstringWrapper::getTokenOccurrences(words, words, false).empty()); },
        shown(true));
}

void TextShortOfMemoryTest::everyAllocationMayFail()
{
    QFETCH(Operation, operation);
    QFETCH(QString, neutral);
    QString const right = operation();
    int const failures = failuresOf(operation, right, neutral);
    QVERIFY(right != neutral);
    QVERIFY2(failures > 0, QByteArray::number(failures).constData());
}

void TextShortOfMemoryTest::validatorsAndOrderNeedNoMemory()
{
    QString const number(1'000, u'1');
    QString const email = number + QStringLiteral("@example.com");
    FailingMalloc const failure(0);
    QVERIFY(StringUtils::validateEmail(email));
    QVERIFY(StringUtils::validatePhoneNumber(number));
    QVERIFY(StringUtils::isLessInsensitive(number, email) == true);
    QVERIFY(!failure.happened());
}

void TextShortOfMemoryTest::occurrencesStayWhole()
{
    TokenOccurrences occurrences = everyWordForEveryone();
    int failures = 0;
    while (true) {
        FailingMalloc const failure(failures);
        bool const done = SubstringWrapper::doRemoveDuplicates(occurrences, 0);
        if (!failure.happened()) {
            break;
        }
        ++failures;
        QVERIFY(!done);
        QVERIFY(occurrences == everyWordForEveryone());
    }
    QVERIFY(failures > 0);
    TokenOccurrences pruned = everyWordForEveryone();
    FailingMalloc const failure(0);
    QVERIFY(!SubstringWrapper::cleanFromDuplicates(pruned));
}

int main(int argc, char** argv)
{
    return runTest<TextShortOfMemoryTest>(argc, argv);
}

#include "TextShortOfMemoryTest.moc"
