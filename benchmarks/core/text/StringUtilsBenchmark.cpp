#include <text/StringUtils.h>

#include <TextOracles.h>
#include <algorithm>
#include <benchmark/benchmark.h>

namespace {

QStringList const& contactNames()
{
    static QStringList const names = [] {
        QStringList const first =
            QStringLiteral("Mario Anna Luca Giulia Niccol\u00F2 Francesca Andrea Chiara Jos\u00E9 "
                           "Marco Elena Paolo Sara Antonio Laura Stefano Ren\u00E9e")
                .split(QLatin1Char(' '));
        QStringList const last =
            QStringLiteral("Rossi Bianchi Ferrari Esposito Romano Colombo Ricci Marino Greco "
                           "Bruno Gallo Conti De\u00A0Luca Costa Giordano Mancini Rizzo Cit\u00E8 "
                           "Lombardi")
                .split(QLatin1Char(' '));
        QStringList made;
        for (int i = 0; i < 100'000; ++i) {
            made += first[i % first.size()] + QLatin1Char(' ') + last[i / 17 % last.size()] +
                    (i % 5 == 0 ? QStringLiteral(" (Ufficio %1)").arg(i) : QString());
        }
        return made;
    }();
    return names;
}

enum Where { Anywhere, AtStarts };

template <typename Matches>
void filterNames(benchmark::State& state, Matches matches, char const* words, Where where)
{
    QString const filter = QString::fromLatin1(words);
    QStringList const& names = contactNames();
    for (auto _ : state) {
        int found = 0;
        for (QString const& name : names) {
            found += matches(name, filter, where == AtStarts) ? 1 : 0;
        }
        benchmark::DoNotOptimize(found);
    }
}

void filter(benchmark::State& state, char const* words, Where where)
{
    filterNames(state, StringUtils::isFilterMatched, words, where);
}

void filterPlainly(benchmark::State& state, char const* words, Where where)
{
    filterNames(state, plain::isFilterMatched, words, where);
}

void filterByContains(benchmark::State& state, char const* words, Where where)
{
    QStringList const each = QString::fromLatin1(words).split(QLatin1Char(' '));
    auto const containsEach = [&](QString const& name, QString const&, bool) {
        return std::all_of(each.begin(), each.end(),
                           [&](QString const& word) { return name.contains(word, Qt::CaseInsensitive); });
    };
    filterNames(state, containsEach, words, where);
}

BENCHMARK_CAPTURE(filter, letter, "a", Anywhere)
    ->Name("100,000 names, one letter anywhere|ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterByContains, letter, "a", Anywhere)
    ->Name("100,000 names, one letter anywhere|`contains`|at most 1")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterPlainly, letter, "a", Anywhere)
    ->Name("100,000 names, one letter anywhere|lower, split and scan|at most 0.333")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filter, wordAtStarts, "ross", AtStarts)
    ->Name("100,000 names, one word at starts|ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterByContains, wordAtStarts, "ross", AtStarts)
    ->Name("100,000 names, one word at starts|`contains`|at most 1")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterPlainly, wordAtStarts, "ross", AtStarts)
    ->Name("100,000 names, one word at starts|lower, split and scan|at most 0.333")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filter, word, "oss", Anywhere)
    ->Name("100,000 names, one word anywhere|ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterByContains, word, "oss", Anywhere)
    ->Name("100,000 names, one word anywhere|`contains`|at most 1")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterPlainly, word, "oss", Anywhere)
    ->Name("100,000 names, one word anywhere|lower, split and scan|at most 0.333")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filter, wordsAtStarts, "ma ro", AtStarts)
    ->Name("100,000 names, two words at starts|ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterByContains, wordsAtStarts, "ma ro", AtStarts)
    ->Name("100,000 names, two words at starts|`contains`|at most 1")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterPlainly, wordsAtStarts, "ma ro", AtStarts)
    ->Name("100,000 names, two words at starts|lower, split and scan|at most 0.333")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filter, words, "ar os", Anywhere)
    ->Name("100,000 names, two words anywhere|ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterByContains, words, "ar os", Anywhere)
    ->Name("100,000 names, two words anywhere|`contains`|at most 1")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterPlainly, words, "ar os", Anywhere)
    ->Name("100,000 names, two words anywhere|lower, split and scan|at most 0.333")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filter, never, "xyz", Anywhere)
    ->Name("100,000 names, never found|ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterByContains, never, "xyz", Anywhere)
    ->Name("100,000 names, never found|`contains`|at most 1")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterPlainly, never, "xyz", Anywhere)
    ->Name("100,000 names, never found|lower, split and scan|at most 0.333")
    ->Unit(benchmark::kMillisecond);

void validateText(benchmark::State& state, bool (*validate)(QString const&), char const* text)
{
    QString const value = QString::fromLatin1(text);
    for (auto _ : state) {
        benchmark::DoNotOptimize(validate(value));
    }
}

BENCHMARK_CAPTURE(validateText, email_ours, StringUtils::validateEmail, "john.doe@example.com")
    ->Name("`validateEmail`, valid|ours");
BENCHMARK_CAPTURE(validateText, email_expression, plain::validateEmail, "john.doe@example.com")
    ->Name("`validateEmail`, valid|expression built and run|at most 0.01");
BENCHMARK_CAPTURE(validateText, bad_email_ours, StringUtils::validateEmail, "john.doe@example.museum")
    ->Name("`validateEmail`, refused|ours");
BENCHMARK_CAPTURE(validateText, bad_email_expression, plain::validateEmail, "john.doe@example.museum")
    ->Name("`validateEmail`, refused|expression built and run|at most 0.01");
BENCHMARK_CAPTURE(validateText, number_ours, StringUtils::validatePhoneNumber, "+390612345678")
    ->Name("`validatePhoneNumber`, valid|ours");
BENCHMARK_CAPTURE(validateText, number_expression, plain::validatePhoneNumber, "+390612345678")
    ->Name("`validatePhoneNumber`, valid|expression built and run|at most 0.01");
BENCHMARK_CAPTURE(validateText, bad_number_ours, StringUtils::validatePhoneNumber, "06-1234")
    ->Name("`validatePhoneNumber`, refused|ours");
BENCHMARK_CAPTURE(validateText, bad_number_expression, plain::validatePhoneNumber, "06-1234")
    ->Name("`validatePhoneNumber`, refused|expression built and run|at most 0.01");

QString textOf(char const* kind)
{
    QString const name = QString::fromLatin1(kind);
    if (name == QStringLiteral("ascii")) {
        return QStringLiteral("See you at the office at nine, or call me before. ").repeated(20);
    }
    if (name == QStringLiteral("italian")) {
        return QStringLiteral(
                   "Perch\u00E9 non c'\u00E8 pi\u00F9 caff\u00E8? Verr\u00F2 alle 9, cos\u00EC parliamo. ")
            .repeated(20);
    }
    if (name == QStringLiteral("russian")) {
        return QStringLiteral(
                   "\u0414\u043E\u0431\u0440\u043E\u0435 \u0443\u0442\u0440\u043E, \u043A\u0430\u043A "
                   "\u0434\u0435\u043B\u0430? \u0412\u0441\u0451 \u0445\u043E\u0440\u043E\u0448\u043E. ")
            .repeated(25);
    }
    if (name == QStringLiteral("chinese")) {
        return QStringLiteral("\u660E\u5929\u4E0A\u5348\u4E5D\u70B9\u5728\u529E\u516C\u5BA4\u89C1\u3002")
            .repeated(60);
    }
    if (name == QStringLiteral("korean")) {
        return QStringLiteral("\uB0B4\uC77C \uC544\uCE68 \uC0AC\uBB34\uC2E4\uC5D0\uC11C \uBD10\uC694. ")
            .repeated(50);
    }
    return QStringLiteral("<p class=\"a\">Tom & Jerry's</p> ").repeated(30);
}

void changeText(benchmark::State& state, QString (*change)(QString const&), char const* kind)
{
    QString const text = textOf(kind);
    for (auto _ : state) {
        benchmark::DoNotOptimize(change(text));
    }
    state.SetBytesProcessed(state.iterations() * text.size() * 2);
}

QString escaped(QString const& text)
{
    return StringUtils::sanitizeHTMLCharacters(text);
}

QString escapedStepByStep(QString const& text)
{
    return plain::sanitizeHTMLCharacters(text);
}

QString unescapedStepByStep(QString const& html)
{
    return plain::deHTMLfy(html);
}

QString toHtmlEscaped(QString const& text)
{
    return text.toHtmlEscaped();
}

QString normalized(QString const& text)
{
    return text.normalized(QString::NormalizationForm_D);
}

BENCHMARK_CAPTURE(changeText, escape_ours_ascii, escaped, "ascii")
    ->Name("`sanitizeHTMLCharacters`, ASCII|ours");
BENCHMARK_CAPTURE(changeText, escape_qt_ascii, toHtmlEscaped, "ascii")
    ->Name("`sanitizeHTMLCharacters`, ASCII|`toHtmlEscaped`|at most 1");
BENCHMARK_CAPTURE(changeText, escape_steps_ascii, escapedStepByStep, "ascii")
    ->Name("`sanitizeHTMLCharacters`, ASCII|one replacement after another");
BENCHMARK_CAPTURE(changeText, escape_ours_italian, escaped, "italian")
    ->Name("`sanitizeHTMLCharacters`, Italian|ours");
BENCHMARK_CAPTURE(changeText, escape_qt_italian, toHtmlEscaped, "italian")
    ->Name("`sanitizeHTMLCharacters`, Italian|`toHtmlEscaped`|at most 1");
BENCHMARK_CAPTURE(changeText, escape_steps_italian, escapedStepByStep, "italian")
    ->Name("`sanitizeHTMLCharacters`, Italian|one replacement after another");
BENCHMARK_CAPTURE(changeText, escape_ours_markup, escaped, "markup")
    ->Name("`sanitizeHTMLCharacters`, markup|ours");
BENCHMARK_CAPTURE(changeText, escape_qt_markup, toHtmlEscaped, "markup")
    ->Name("`sanitizeHTMLCharacters`, markup|`toHtmlEscaped`|at most 1");
BENCHMARK_CAPTURE(changeText, escape_steps_markup, escapedStepByStep, "markup")
    ->Name("`sanitizeHTMLCharacters`, markup|one replacement after another");
BENCHMARK_CAPTURE(changeText, unescape_ours, StringUtils::deHTMLfy, "markup")
    ->Name("`deHTMLfy`, markup|ours");
BENCHMARK_CAPTURE(changeText, unescape_steps, unescapedStepByStep, "markup")
    ->Name("`deHTMLfy`, markup|expression and replaces");
BENCHMARK_CAPTURE(changeText, marks_ours_ascii, StringUtils::removeDiacriticalMarks, "ascii")
    ->Name("`removeDiacriticalMarks`, ASCII|ours");
BENCHMARK_CAPTURE(changeText, marks_normalized_ascii, normalized, "ascii")
    ->Name("`removeDiacriticalMarks`, ASCII|`normalized`|at most 1.5");
BENCHMARK_CAPTURE(changeText, marks_ours_italian, StringUtils::removeDiacriticalMarks, "italian")
    ->Name("`removeDiacriticalMarks`, Italian|ours");
BENCHMARK_CAPTURE(changeText, marks_normalized_italian, normalized, "italian")
    ->Name("`removeDiacriticalMarks`, Italian|`normalized`|at most 1.5");
BENCHMARK_CAPTURE(changeText, marks_ours_russian, StringUtils::removeDiacriticalMarks, "russian")
    ->Name("`removeDiacriticalMarks`, Russian|ours");
BENCHMARK_CAPTURE(changeText, marks_normalized_russian, normalized, "russian")
    ->Name("`removeDiacriticalMarks`, Russian|`normalized`|at most 1.5");
BENCHMARK_CAPTURE(changeText, marks_ours_chinese, StringUtils::removeDiacriticalMarks, "chinese")
    ->Name("`removeDiacriticalMarks`, Chinese|ours");
BENCHMARK_CAPTURE(changeText, marks_normalized_chinese, normalized, "chinese")
    ->Name("`removeDiacriticalMarks`, Chinese|`normalized`|at most 1.5");
BENCHMARK_CAPTURE(changeText, marks_ours_korean, StringUtils::removeDiacriticalMarks, "korean")
    ->Name("`removeDiacriticalMarks`, Korean|ours");
BENCHMARK_CAPTURE(changeText, marks_normalized_korean, normalized, "korean")
    ->Name("`removeDiacriticalMarks`, Korean|`normalized`|at most 1.5");

void growing(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(4'096)->Arg(131'072);
}

void removeMarksOfOneLetter(benchmark::State& state)
{
    QString const text = QLatin1Char('a') + QStringLiteral("\u0316\u0301").repeated(state.range(0) / 2);
    for (auto _ : state) {
        benchmark::DoNotOptimize(StringUtils::removeDiacriticalMarks(text));
    }
}
BENCHMARK(removeMarksOfOneLetter)
    ->Name("`removeDiacriticalMarks`, marks of one letter|ours|grows at most 2.2")
    ->Apply(growing);

void wrapEveryLetter(benchmark::State& state)
{
    QString const text(state.range(0), QLatin1Char('a'));
    QString const letter = QStringLiteral("a");
    QString const tag = QStringLiteral("b");
    for (auto _ : state) {
        benchmark::DoNotOptimize(StringUtils::wrapSubStringsInHTMLTag(text, letter, tag));
    }
}
BENCHMARK(wrapEveryLetter)
    ->Name("`wrapSubStringsInHTMLTag`, every letter found|ours|grows at most 2.2")
    ->Apply(growing);

void wrapNearlyFound(benchmark::State& state)
{
    QString const text(state.range(0), QLatin1Char('a'));
    QString const wanted = QString(state.range(0) / 4, QLatin1Char('a')) + QLatin1Char('b');
    QString const tag = QStringLiteral("b");
    for (auto _ : state) {
        benchmark::DoNotOptimize(StringUtils::wrapSubStringsInHTMLTag(text, wanted, tag));
    }
}
BENCHMARK(wrapNearlyFound)
    ->Name("`wrapSubStringsInHTMLTag`, nearly found everywhere|ours|grows at most 2.2")
    ->Apply(growing);

/// Dotted capital I's, whose lower case is longer than they are, and half a character.
void filterDottedLetters(benchmark::State& state)
{
    QString const text = QString(state.range(0), QChar(0x130)) + QChar(0xD801) + QLatin1Char('x');
    QString const filter = QStringLiteral("never");
    for (auto _ : state) {
        benchmark::DoNotOptimize(StringUtils::isFilterMatched(text, filter, false));
    }
}
BENCHMARK(filterDottedLetters)
    ->Name("`isFilterMatched`, dotted capital I's and half a character|ours|grows at most 2.2")
    ->Apply(growing);

/// A search text that opens with half a character and is nearly found everywhere.
void wrapHalfACharacter(benchmark::State& state)
{
    QString const text(state.range(0), QChar(0xDC00));
    QString const wanted = QString(state.range(0) / 4, QChar(0xDC00)) + QLatin1Char('b');
    QString const tag = QStringLiteral("b");
    for (auto _ : state) {
        benchmark::DoNotOptimize(StringUtils::wrapSubStringsInHTMLTag(text, wanted, tag));
        benchmark::DoNotOptimize(StringUtils::wrapSubStringsInHTMLTagExtended(text, wanted, tag, false));
    }
}
BENCHMARK(wrapHalfACharacter)
    ->Name("both markers, search text opens with half a character|ours|grows at most 2.2")
    ->Apply(growing);

/// One keystroke with a long pasted text, of many words or of one, as the filter of 100,000 names.
void filterByPastedText(benchmark::State& state, char const* word)
{
    QString const filter = QString::fromLatin1(word).repeated(state.range(0) / 6);
    for (auto _ : state) {
        for (QString const& name : contactNames()) {
            benchmark::DoNotOptimize(StringUtils::isFilterMatched(name, filter, false));
        }
    }
}
BENCHMARK_CAPTURE(filterByPastedText, words, "Lorem ")
    ->Name("100,000 names, {} units of pasted words|ours")
    ->Arg(600)
    ->Arg(100'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(filterByPastedText, oneWord, "Loremx")
    ->Name("100,000 names, one pasted word of {} units|ours")
    ->Arg(600)
    ->Arg(100'000)
    ->Unit(benchmark::kMillisecond);

void removeMarksOfAccentedLetters(benchmark::State& state)
{
    QString const text(state.range(0), QChar(0xE8));
    for (auto _ : state) {
        benchmark::DoNotOptimize(StringUtils::removeDiacriticalMarks(text));
    }
}
BENCHMARK(removeMarksOfAccentedLetters)
    ->Name("`removeDiacriticalMarks`, accented letters|ours|grows at most 2.2")
    ->Apply(growing);

void unescapeOpenedTags(benchmark::State& state)
{
    QString const text = QStringLiteral("<&").repeated(state.range(0) / 2);
    for (auto _ : state) {
        benchmark::DoNotOptimize(StringUtils::deHTMLfy(text));
    }
}
BENCHMARK(unescapeOpenedTags)->Name("`deHTMLfy`, \"<&\" repeated|ours|grows at most 2.2")->Apply(growing);

} // namespace
