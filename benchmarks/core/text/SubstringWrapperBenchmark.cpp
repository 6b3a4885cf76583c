#include <text/SubstringWrapper.h>

#include <TextOracles.h>
#include <benchmark/benchmark.h>

namespace {

std::pair<QString, QString> const& markers()
{
    static std::pair<QString, QString> const pair(QStringLiteral("%start%"), QStringLiteral("%stop%"));
    return pair;
}

void Wrap_name(benchmark::State& state)
{
    QString const filter = QStringLiteral("ma ro");
    QString const text = QStringLiteral("Mario Rossi (Ufficio)");
    for (auto _ : state) {
        benchmark::DoNotOptimize(SubstringWrapper(filter, text, markers(), true).wrapText());
    }
}
BENCHMARK(Wrap_name)->Name("hits of a name marked|ours");

void Wrap_nameStraightforward(benchmark::State& state)
{
    QString const filter = QStringLiteral("ma ro");
    QString const text = QStringLiteral("Mario Rossi (Ufficio)");
    for (auto _ : state) {
        benchmark::DoNotOptimize(plain::wrapText(filter, text, markers(), true));
    }
}
BENCHMARK(Wrap_nameStraightforward)->Name("hits of a name marked|rule by rule");

QString numbered(char const* front, int count)
{
    QStringList words;
    for (int i = 0; i < count; ++i) {
        words += QString::fromLatin1(front) + QString::number(i);
    }
    return words.join(QLatin1Char(' '));
}

/// 2,000 filter words on 20,000 text words.
void wrapMany(benchmark::State& state, QString const& filter, QString const& text, bool matchWordStart)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(SubstringWrapper(filter, text, markers(), matchWordStart).wrapText());
    }
}

BENCHMARK_CAPTURE(wrapMany, anywhere, QStringLiteral("an ").repeated(2'000),
                  QStringLiteral("anna ").repeated(20'000), false)
    ->Name("2,000 filter words on 20,000 words, all match, anywhere|ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(wrapMany, atStarts, QStringLiteral("an ").repeated(2'000),
                  QStringLiteral("anna ").repeated(20'000), true)
    ->Name("2,000 filter words on 20,000 words, all match, at starts|ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(wrapMany, late, QStringLiteral("ab ").repeated(2'000),
                  QStringLiteral("aaaaaaab ").repeated(20'000), false)
    ->Name("2,000 filter words on 20,000 words, all match at their ends|ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(wrapMany, numbered, numbered("word1", 2'000), numbered("word", 20'000), false)
    ->Name("2,000 filter words on 20,000 words, numbered|ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(wrapMany, numberedAtStarts, numbered("word1", 2'000), numbered("word", 20'000), true)
    ->Name("2,000 filter words on 20,000 words, numbered, at starts|ours")
    ->Unit(benchmark::kMillisecond);

void Wrap_candidatesWrittenDown(benchmark::State& state)
{
    QStringList const filterWords(2'000, QStringLiteral("an"));
    QStringList const textWords(20'000, QStringLiteral("anna"));
    for (auto _ : state) {
        auto occurrences = SubstringWrapper::getTokenOccurrences(filterWords, textWords, true);
        benchmark::DoNotOptimize(SubstringWrapper::cleanFromDuplicates(occurrences));
    }
}
BENCHMARK(Wrap_candidatesWrittenDown)
    ->Name("all 40 million candidates written down|ours")
    ->Unit(benchmark::kMillisecond);

} // namespace
