// PhoneNumberLiterals beside the obvious ways to do the same with QString.

#include <telephony/DTMFHelpers.h>
#include <telephony/PhoneNumberLiterals.h>

#include <QRegularExpression>
#include <QStringList>
#include <benchmark/benchmark.h>
#include <map>

namespace {

QString typedNumber()
{
    return QStringLiteral("+39 (06) 1234-5678");
}

/// A number as long as a careless paste, half of it to be removed.
QString pastedText(benchmark::State const& state)
{
    return QStringLiteral("1-").repeated(state.range(0));
}

void removeOneByOne(QString& number)
{
    for (qsizetype i = 0; i < number.size();) {
        if (number[i].isDigit()) {
            ++i;
        } else {
            number.remove(i, 1);
        }
    }
}

void filter(benchmark::State& state)
{
    QString const text = pastedText(state);
    for (auto _ : state) {
        QString number = text;
        PhoneNumberLiterals::filterInvalidPhoneNumberCharacters(number, false, false);
        benchmark::DoNotOptimize(number);
    }
}

void filterCharacterByCharacter(benchmark::State& state)
{
    QString const text = pastedText(state);
    for (auto _ : state) {
        QString number = text;
        removeOneByOne(number);
        benchmark::DoNotOptimize(number);
    }
}

void sanitize(benchmark::State& state)
{
    QString const number = typedNumber();
    for (auto _ : state) {
        benchmark::DoNotOptimize(PhoneNumberLiterals::sanitizePhoneNumber(number, true));
    }
}

void sanitizeWithExpression(benchmark::State& state)
{
    QString const number = typedNumber();
    QRegularExpression const expression(QStringLiteral("[^\\d*#,]"));
    for (auto _ : state) {
        QString clean = number;
        clean.remove(expression);
        benchmark::DoNotOptimize(clean.prepend(QStringLiteral("00")));
    }
}

void extractTail(benchmark::State& state)
{
    QString const number = QStringLiteral("1,").repeated(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(PhoneNumberLiterals::extractDTMFSignalsFromNumber(number));
    }
}

void extractTailWithSplitAndRemove(benchmark::State& state)
{
    QString const number = QStringLiteral("1,").repeated(state.range(0));
    for (auto _ : state) {
        QString tail = number;
        tail.remove(number.split(u',', Qt::SkipEmptyParts).constFirst());
        PhoneNumberLiterals::filterInvalidPhoneNumberCharacters(tail, true, true);
        benchmark::DoNotOptimize(tail);
    }
}

void compare(benchmark::State& state)
{
    QString const number = typedNumber();
    QString const other = QStringLiteral("0039-06-12345678");
    for (auto _ : state) {
        benchmark::DoNotOptimize(PhoneNumberLiterals::comparePhoneNumbers(number, other));
    }
}

void dtmfCharacters(benchmark::State& state)
{
    QString const number = typedNumber();
    for (auto _ : state) {
        int valid = 0;
        for (QChar const c : number) {
            valid += DTMFHelpers::isValidDTMFCharacter(c) ? 1 : 0;
        }
        benchmark::DoNotOptimize(valid);
    }
}

void dtmfCharactersWithMap(benchmark::State& state)
{
    std::map<QChar, int> signalOf;
    for (QChar const c : QStringLiteral(",0123456789*#")) {
        signalOf.emplace(c, static_cast<int>(signalOf.size()));
    }
    QString const number = typedNumber();
    for (auto _ : state) {
        int valid = 0;
        for (QChar const c : number) {
            valid += signalOf.contains(c) ? 1 : 0;
        }
        benchmark::DoNotOptimize(valid);
    }
}

void sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(64)->Arg(32'768);
}

void growing(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(4'096)->Arg(32'768);
}

} // namespace

BENCHMARK(filter)->Name("clean a number of {} pairs, one of each to go|ours")->Apply(sizes);
BENCHMARK(filterCharacterByCharacter)
    ->Name("clean a number of {} pairs, one of each to go|`remove()` one at a time")
    ->Apply(sizes);
BENCHMARK(filter)->Name("clean a growing number|ours|grows at most 2.2")->Apply(growing);
BENCHMARK(sanitize)->Name("sanitize a typed number|ours");
BENCHMARK(sanitizeWithExpression)->Name("sanitize a typed number|`remove()` with a compiled expression");
BENCHMARK(extractTail)->Name("DTMF tail of {} repeated parts|ours")->Apply(sizes);
BENCHMARK(extractTailWithSplitAndRemove)
    ->Name("DTMF tail of {} repeated parts|`split()` and `remove()`")
    ->Apply(sizes);
BENCHMARK(extractTail)->Name("DTMF tail of a growing number|ours|grows at most 2.2")->Apply(growing);
BENCHMARK(compare)->Name("compare two numbers|ours");
BENCHMARK(dtmfCharacters)->Name("DTMF characters of a number|ours");
BENCHMARK(dtmfCharactersWithMap)->Name("DTMF characters of a number|look-up in a `std::map`");

BENCHMARK_MAIN();
