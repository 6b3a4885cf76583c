// A directory of 100,000 cards, about 40 MB of JSON, beside Qt's parser, Qt's filter model and the bare parse
// of a number. The memory of a loaded directory is printed as a counter, in multiples of the text.

#include <SampleDirectory.h>

#include <client/ContactDirectory.h>
#include <client/PhoneNumber.h>

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QSortFilterProxyModel>
#include <QStringListModel>
#include <benchmark/benchmark.h>
#include <malloc.h>

using Softphone::ContactCard;
using Softphone::ContactDirectory;

namespace {

constexpr int cards = 100'000;

QByteArray const& text()
{
    static QByteArray const json = SampleDirectory().json(cards);
    return json;
}

double inUse()
{
    struct mallinfo2 const info = ::mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

ContactDirectory& loaded()
{
    static ContactDirectory directory;
    if (directory.total() == 0) {
        directory.load(text());
    }
    return directory;
}

void parseWithQt(benchmark::State& state)
{
    text();
    for (auto _ : state) {
        benchmark::DoNotOptimize(QJsonDocument::fromJson(text()));
    }
}

void load(benchmark::State& state)
{
    text();
    double share = 0;
    for (auto _ : state) {
        double const before = inUse();
        auto* const directory = new ContactDirectory;
        directory->load(text());
        share = (inUse() - before) / static_cast<double>(text().size());
        state.PauseTiming();
        delete directory;
        state.ResumeTiming();
    }
    state.counters["memory/text"] = share;
    state.counters["text MB"] = static_cast<double>(text().size()) / 1e6;
}

void loadAgain(benchmark::State& state)
{
    loaded().setFilter(QString());
    for (auto _ : state) {
        loaded().load(text());
    }
}

/// A filter typed over all cards, from none.
void keystroke(benchmark::State& state, char16_t const* words)
{
    ContactDirectory& directory = loaded();
    for (auto _ : state) {
        state.PauseTiming();
        directory.setFilter(QStringLiteral("qq")); // or the same filter again would look at its own rows only
        directory.setFilter(QString());
        state.ResumeTiming();
        directory.setFilter(QString::fromUtf16(words));
    }
    state.counters["rows"] = directory.rowCount();
}

/// A filter typed over what another one left.
void narrowing(benchmark::State& state, char16_t const* before, char16_t const* words)
{
    ContactDirectory& directory = loaded();
    double share = 0;
    for (auto _ : state) {
        state.PauseTiming();
        directory.setFilter(QStringLiteral("qq"));
        directory.setFilter(QString::fromUtf16(before));
        share = static_cast<double>(directory.rowCount()) / cards;
        state.ResumeTiming();
        directory.setFilter(QString::fromUtf16(words));
    }
    state.counters["share"] = share;
    state.counters["rows"] = directory.rowCount();
}

/// The same over the same texts with Qt's filter model.
void keystrokeWithQt(benchmark::State& state, char16_t const* words)
{
    ContactDirectory& directory = loaded();
    directory.setFilter(QString());
    QStringList lines;
    for (int row = 0; row < directory.rowCount(); ++row) {
        auto const card = directory.index(row).data(ContactDirectory::CardRole).value<ContactCard>();
        lines.append(
            QStringList{card.displayName(), card.company, card.department, card.numbers().join(u' ')}.join(
                u' '));
    }
    QStringListModel source(lines);
    QSortFilterProxyModel filter;
    filter.setSourceModel(&source);
    filter.setFilterCaseSensitivity(Qt::CaseInsensitive);
    for (auto _ : state) {
        state.PauseTiming();
        filter.setFilterFixedString(QString());
        filter.rowCount();
        state.ResumeTiming();
        filter.setFilterFixedString(QString::fromUtf16(words));
        benchmark::DoNotOptimize(filter.rowCount());
    }
}

QStringList const& callers()
{
    static QStringList const numbers = [] {
        QStringList all;
        loaded().setFilter(QString());
        for (int row = 0; row < loaded().rowCount(); row += 1000) {
            auto const card = loaded().index(row).data(ContactDirectory::CardRole).value<ContactCard>();
            all += card.numbers();
        }
        return all;
    }();
    return numbers;
}

/// Looks for one number after the other, so that the time is that of one.
template <typename Look>
void lookFor(benchmark::State& state, Look look)
{
    QStringList const& numbers = callers();
    for (QString const& number : numbers) {
        benchmark::DoNotOptimize(look(number));
    }
    qsizetype next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(look(numbers[next]));
        next = (next + 1) % numbers.size();
    }
}

void caller(benchmark::State& state)
{
    lookFor(state, [](QString const& number) { return loaded().caller(number); });
}

void parseOfTheNumber(benchmark::State& state)
{
    lookFor(state, [](QString const& number) {
        return Softphone::PhoneNumber::parse(number, QStringLiteral("IT"));
    });
}

void oneCardChanges(benchmark::State& state)
{
    ContactDirectory& directory = loaded();
    directory.setFilter(QString());
    auto card = directory.index(50'000).data(ContactDirectory::CardRole).value<ContactCard>();
    for (auto _ : state) {
        card.department = card.department == u"x" ? QStringLiteral("y") : QStringLiteral("x");
        benchmark::DoNotOptimize(directory.addOrUpdate(card));
    }
}

BENCHMARK(load)->Name("load 100,000 cards|ours")->Unit(benchmark::kMillisecond);
BENCHMARK(parseWithQt)
    ->Name("load 100,000 cards|`QJsonDocument::fromJson`|at most 2")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(loadAgain)->Name("load the same cards again|ours")->Unit(benchmark::kMillisecond);

BENCHMARK_CAPTURE(keystroke, selective, u"mancini")
    ->Name("keystroke, a selective word|ours|at most 2 ms")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(keystrokeWithQt, selective, u"mancini")
    ->Name("keystroke, a selective word|`QSortFilterProxyModel`|at most 0.1")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(keystroke, rare, u"zanber")
    ->Name("keystroke, a rare word|ours|at most 2 ms")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(keystroke, letter, u"a")
    ->Name("keystroke, a common letter|ours|at most 5 ms")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(keystrokeWithQt, letter, u"a")
    ->Name("keystroke, a common letter|`QSortFilterProxyModel`|at most 0.1")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(keystroke, commonest, u"s")
    ->Name("keystroke, the commonest letter|ours|at most 5 ms")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(keystroke, digits, u"39312")
    ->Name("keystroke, digits|ours|at most 2 ms")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(keystroke, words, u"mar off")
    ->Name("keystroke, two words|ours")
    ->Unit(benchmark::kMicrosecond);

// A narrowing keystroke may take the share of cards that are left (0.33, 0.63 and next to none) of what a
// common letter may take, and 0.2 ms.
BENCHMARK_CAPTURE(narrowing, a, u"a", u"an")
    ->Name("narrowing keystroke, a common letter and another|ours|at most 1.85 ms")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(narrowing, s, u"s", u"st")
    ->Name("narrowing keystroke, the commonest letter and another|ours|at most 3.35 ms")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(narrowing, word, u"manc", u"manci")
    ->Name("narrowing keystroke, a selective word and a letter|ours|at most 0.2 ms")
    ->Unit(benchmark::kMicrosecond);

BENCHMARK(caller)->Name("caller of a number|ours");
BENCHMARK(parseOfTheNumber)->Name("caller of a number|the bare parse|at most 1 us more");
BENCHMARK(oneCardChanges)->Name("one card of 100,000 changes|ours");

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
