// HTMLHelpers beside the plain expression (LinkOracle), and its growth on text made to slow it down.

#include "../../ChatSamples.h"

#include <text/HTMLHelpers.h>

#include <LinkOracle.h>
#include <benchmark/benchmark.h>

namespace {

QString tenChats()
{
    return chatText(QStringLiteral("ring me on +39 06 1234567 or +390612345678")).repeated(10);
}

void processLinks(benchmark::State& state, QString const& text)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(HTMLHelpers::processLinks(text));
    }
    state.SetBytesProcessed(state.iterations() * text.size() * 2);
}

void processLinksPlainExpression(benchmark::State& state, QString const& text)
{
    if (LinkOracle::processLinks(text) != HTMLHelpers::processLinks(text)) {
        state.SkipWithError("the answers differ");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(LinkOracle::processLinks(text));
    }
    state.SetBytesProcessed(state.iterations() * text.size() * 2);
}

void hostile(benchmark::State& state, char const* unit)
{
    QString const text = QString::fromLatin1(unit).repeated(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(HTMLHelpers::processLinks(text));
    }
}

void growing(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(16'384)->Arg(262'144);
}

} // namespace

BENCHMARK_CAPTURE(processLinks, chat, tenChats())
    ->Name("`processLinks`, chat text with an address in every third line|ours");
BENCHMARK_CAPTURE(processLinksPlainExpression, chat, tenChats())
    ->Name("`processLinks`, chat text with an address in every third line|expression|at most 0.2");
BENCHMARK_CAPTURE(processLinks, plain, textWithoutLinks().repeated(20))
    ->Name("`processLinks`, text without links|ours");
BENCHMARK_CAPTURE(processLinksPlainExpression, plain, textWithoutLinks().repeated(20))
    ->Name("`processLinks`, text without links|expression|at most 0.2");
BENCHMARK_CAPTURE(processLinks, message, shortMessage())->Name("`processLinks`, one short message|ours");
BENCHMARK_CAPTURE(processLinksPlainExpression, message, shortMessage())
    ->Name("`processLinks`, one short message|expression|at most 0.2");
BENCHMARK_CAPTURE(hostile, hyphens, "a-")
    ->Name("`processLinks`, \"a-\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, dots, "a.")
    ->Name("`processLinks`, \"a.\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, pluses, "a+")
    ->Name("`processLinks`, \"a+\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, letters, "a")
    ->Name("`processLinks`, \"a\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, digits, "1")
    ->Name("`processLinks`, \"1\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, www, "www.")
    ->Name("`processLinks`, \"www.\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, ats, "@")
    ->Name("`processLinks`, \"@\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, schemes, "http://")
    ->Name("`processLinks`, \"http://\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, octets, "1.1.1.")
    ->Name("`processLinks`, \"1.1.1.\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
