#include <text/StringUtils.h>

#include <TextOracles.h>
#include <array>
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

struct Filter
{
    char const* label;
    char const* words;
    bool matchWordStart;
};

constexpr std::array<Filter, 6> filters = {{
    {"one letter anywhere", "a", false},
    {"one word at starts", "ross", true},
    {"one word anywhere", "oss", false},
    {"two words at starts", "ma ro", true},
    {"two words anywhere", "ar os", false},
    {"never found", "xyz", false},
}};

template <typename Matches>
void filterNames(benchmark::State& state, Matches matches)
{
    Filter const& filter = filters[static_cast<std::size_t>(state.range(0))];
    QString const words = QString::fromLatin1(filter.words);
    QStringList const& names = contactNames();
    for (auto _ : state) {
        int found = 0;
        for (QString const& name : names) {
            found += matches(name, words, filter.matchWordStart) ? 1 : 0;
        }
        benchmark::DoNotOptimize(found);
    }
    state.SetLabel(filter.label);
}

void Filter_isFilterMatched(benchmark::State& state)
{
    filterNames(state, StringUtils::isFilterMatched);
}
BENCHMARK(Filter_isFilterMatched)->DenseRange(0, int(filters.size()) - 1)->Unit(benchmark::kMillisecond);

void Filter_straightforward(benchmark::State& state)
{
    filterNames(state, plain::isFilterMatched);
}
BENCHMARK(Filter_straightforward)->DenseRange(0, int(filters.size()) - 1)->Unit(benchmark::kMillisecond);

void Filter_bareContains(benchmark::State& state)
{
    QStringList const words =
        QString::fromLatin1(filters[static_cast<std::size_t>(state.range(0))].words).split(QLatin1Char(' '));
    filterNames(state, [&](QString const& name, QString const&, bool) {
        return std::all_of(words.begin(), words.end(),
                           [&](QString const& word) { return name.contains(word, Qt::CaseInsensitive); });
    });
}
BENCHMARK(Filter_bareContains)->DenseRange(0, int(filters.size()) - 1)->Unit(benchmark::kMillisecond);

void validateText(benchmark::State& state, bool (*validate)(QString const&), char const* text)
{
    QString const value = QString::fromLatin1(text);
    for (auto _ : state) {
        benchmark::DoNotOptimize(validate(value));
    }
}

BENCHMARK_CAPTURE(validateText, email_ours, StringUtils::validateEmail, "john.doe@example.com");
BENCHMARK_CAPTURE(validateText, email_expression, plain::validateEmail, "john.doe@example.com");
BENCHMARK_CAPTURE(validateText, bad_email_ours, StringUtils::validateEmail, "john.doe@example.museum");
BENCHMARK_CAPTURE(validateText, bad_email_expression, plain::validateEmail, "john.doe@example.museum");
BENCHMARK_CAPTURE(validateText, number_ours, StringUtils::validatePhoneNumber, "+390612345678");
BENCHMARK_CAPTURE(validateText, number_expression, plain::validatePhoneNumber, "+390612345678");
BENCHMARK_CAPTURE(validateText, bad_number_ours, StringUtils::validatePhoneNumber, "06-1234");
BENCHMARK_CAPTURE(validateText, bad_number_expression, plain::validatePhoneNumber, "06-1234");

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

BENCHMARK_CAPTURE(changeText, escape_ours_ascii, escaped, "ascii");
BENCHMARK_CAPTURE(changeText, escape_qt_ascii, toHtmlEscaped, "ascii");
BENCHMARK_CAPTURE(changeText, escape_steps_ascii, escapedStepByStep, "ascii");
BENCHMARK_CAPTURE(changeText, escape_ours_italian, escaped, "italian");
BENCHMARK_CAPTURE(changeText, escape_qt_italian, toHtmlEscaped, "italian");
BENCHMARK_CAPTURE(changeText, escape_steps_italian, escapedStepByStep, "italian");
BENCHMARK_CAPTURE(changeText, escape_ours_markup, escaped, "markup");
BENCHMARK_CAPTURE(changeText, escape_qt_markup, toHtmlEscaped, "markup");
BENCHMARK_CAPTURE(changeText, escape_steps_markup, escapedStepByStep, "markup");
BENCHMARK_CAPTURE(changeText, unescape_ours, StringUtils::deHTMLfy, "markup");
BENCHMARK_CAPTURE(changeText, unescape_steps, unescapedStepByStep, "markup");
BENCHMARK_CAPTURE(changeText, marks_ours_ascii, StringUtils::removeDiacriticalMarks, "ascii");
BENCHMARK_CAPTURE(changeText, marks_normalized_ascii, normalized, "ascii");
BENCHMARK_CAPTURE(changeText, marks_ours_italian, StringUtils::removeDiacriticalMarks, "italian");
BENCHMARK_CAPTURE(changeText, marks_normalized_italian, normalized, "italian");
BENCHMARK_CAPTURE(changeText, marks_ours_russian, StringUtils::removeDiacriticalMarks, "russian");
BENCHMARK_CAPTURE(changeText, marks_normalized_russian, normalized, "russian");
BENCHMARK_CAPTURE(changeText, marks_ours_chinese, StringUtils::removeDiacriticalMarks, "chinese");
BENCHMARK_CAPTURE(changeText, marks_normalized_chinese, normalized, "chinese");
BENCHMARK_CAPTURE(changeText, marks_ours_korean, StringUtils::removeDiacriticalMarks, "korean");
BENCHMARK_CAPTURE(changeText, marks_normalized_korean, normalized, "korean");

void removeMarksOfOneLetter(benchmark::State& state)
{
    QString const text = QLatin1Char('a') + QStringLiteral("\u0316\u0301").repeated(state.range(0) / 2);
    for (auto _ : state) {
        benchmark::DoNotOptimize(StringUtils::removeDiacriticalMarks(text));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(removeMarksOfOneLetter)->RangeMultiplier(2)->Range(1 << 12, 1 << 17)->Complexity(benchmark::oN);

void wrapEveryLetter(benchmark::State& state)
{
    QString const text(state.range(0), QLatin1Char('a'));
    QString const letter = QStringLiteral("a");
    QString const tag = QStringLiteral("b");
    for (auto _ : state) {
        benchmark::DoNotOptimize(StringUtils::wrapSubStringsInHTMLTag(text, letter, tag));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(wrapEveryLetter)->RangeMultiplier(2)->Range(1 << 12, 1 << 17)->Complexity(benchmark::oN);

void wrapNearlyFound(benchmark::State& state)
{
    QString const text(state.range(0), QLatin1Char('a'));
    QString const wanted = QString(state.range(0) / 4, QLatin1Char('a')) + QLatin1Char('b');
    QString const tag = QStringLiteral("b");
    for (auto _ : state) {
        benchmark::DoNotOptimize(StringUtils::wrapSubStringsInHTMLTag(text, wanted, tag));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(wrapNearlyFound)->RangeMultiplier(2)->Range(1 << 12, 1 << 17)->Complexity(benchmark::oN);

void unescapeOpenedTags(benchmark::State& state)
{
    QString const text = QStringLiteral("<&").repeated(state.range(0) / 2);
    for (auto _ : state) {
        benchmark::DoNotOptimize(StringUtils::deHTMLfy(text));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(unescapeOpenedTags)->RangeMultiplier(2)->Range(1 << 12, 1 << 17)->Complexity(benchmark::oN);

} // namespace
