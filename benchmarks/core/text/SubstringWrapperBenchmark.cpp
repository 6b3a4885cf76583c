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
BENCHMARK(Wrap_name);

void Wrap_nameStraightforward(benchmark::State& state)
{
    QString const filter = QStringLiteral("ma ro");
    QString const text = QStringLiteral("Mario Rossi (Ufficio)");
    for (auto _ : state) {
        benchmark::DoNotOptimize(plain::wrapText(filter, text, markers(), true));
    }
}
BENCHMARK(Wrap_nameStraightforward);

QString numbered(char const* front, int count)
{
    QStringList words;
    for (int i = 0; i < count; ++i) {
        words += QString::fromLatin1(front) + QString::number(i);
    }
    return words.join(QLatin1Char(' '));
}

/// 2,000 filter words on 20,000 text words.
void wrapMany(benchmark::State& state, QString const& filter, QString const& text)
{
    bool const matchWordStart = state.range(0) == 1;
    for (auto _ : state) {
        benchmark::DoNotOptimize(SubstringWrapper(filter, text, markers(), matchWordStart).wrapText());
    }
    state.SetLabel(matchWordStart ? "at starts" : "anywhere");
}

void Wrap_everyWordMatchesEveryWord(benchmark::State& state)
{
    wrapMany(state, QStringLiteral("an ").repeated(2'000), QStringLiteral("anna ").repeated(20'000));
}
BENCHMARK(Wrap_everyWordMatchesEveryWord)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void Wrap_everyWordMatchesEveryWordLate(benchmark::State& state)
{
    wrapMany(state, QStringLiteral("ab ").repeated(2'000), QStringLiteral("aaaaaaab ").repeated(20'000));
}
BENCHMARK(Wrap_everyWordMatchesEveryWordLate)->Arg(0)->Unit(benchmark::kMillisecond);

void Wrap_numberedWords(benchmark::State& state)
{
    wrapMany(state, numbered("word1", 2'000), numbered("word", 20'000));
}
BENCHMARK(Wrap_numberedWords)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void Wrap_candidatesWrittenDown(benchmark::State& state)
{
    QStringList const filterWords(2'000, QStringLiteral("an"));
    QStringList const textWords(20'000, QStringLiteral("anna"));
    for (auto _ : state) {
        auto occurrences = SubstringWrapper::getTokenOccurrences(filterWords, textWords, true);
        benchmark::DoNotOptimize(SubstringWrapper::cleanFromDuplicates(occurrences));
    }
}
BENCHMARK(Wrap_candidatesWrittenDown)->Unit(benchmark::kMillisecond);

} // namespace
