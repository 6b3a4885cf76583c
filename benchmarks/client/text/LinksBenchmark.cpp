// Links beside the kept way, HTMLHelpers::processLinks, and their growth on text made to slow them down.

#include "../../ChatSamples.h"

#include <client/Links.h>
#include <text/HTMLHelpers.h>

#include <benchmark/benchmark.h>

namespace {

/// Without telephone numbers, which the kept way does not parse.
QString tenChats()
{
    return chatText(QStringLiteral("write to me here")).repeated(10);
}

QString messageWithNumbers()
{
    return QStringLiteral("ring me on +39 06 1234567 or 333 1234567");
}

void linkedHtml(benchmark::State& state, QString const& text)
{
    for ([[maybe_unused]] auto const& step : state) {
        benchmark::DoNotOptimize(Softphone::linkedHtml(text));
    }
    state.SetBytesProcessed(state.iterations() * text.size() * 2);
}

void findLinks(benchmark::State& state, QString const& text)
{
    for ([[maybe_unused]] auto const& step : state) {
        benchmark::DoNotOptimize(Softphone::findLinks(text));
    }
    state.SetBytesProcessed(state.iterations() * text.size() * 2);
}

void processLinks(benchmark::State& state, QString const& text)
{
    for ([[maybe_unused]] auto const& step : state) {
        benchmark::DoNotOptimize(HTMLHelpers::processLinks(text));
    }
    state.SetBytesProcessed(state.iterations() * text.size() * 2);
}

/// As many characters as the range says, and an address at the very end.
void hostile(benchmark::State& state, char const* piece)
{
    QString const one = QString::fromUtf8(piece);
    QString const text = one.repeated(state.range(0) / one.size()) + QStringLiteral(" m@a.it");
    for ([[maybe_unused]] auto const& step : state) {
        benchmark::DoNotOptimize(Softphone::linkedHtml(text));
    }
}

void growing(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(16'384)->Arg(131'072);
}

} // namespace

// The target is for ordinary chat text: a short message has fixed costs, a telephone number its parse.
BENCHMARK_CAPTURE(linkedHtml, chat, tenChats())->Name("`linkedHtml`, chat text|ours");
BENCHMARK_CAPTURE(processLinks, chat, tenChats())->Name("`linkedHtml`, chat text|`processLinks`|at most 3");
BENCHMARK_CAPTURE(findLinks, chat, tenChats())->Name("`findLinks`, chat text|ours");
BENCHMARK_CAPTURE(linkedHtml, plain, textWithoutLinks().repeated(20))
    ->Name("`linkedHtml`, text without links|ours");
BENCHMARK_CAPTURE(processLinks, plain, textWithoutLinks().repeated(20))
    ->Name("`linkedHtml`, text without links|`processLinks`|at most 3");
BENCHMARK_CAPTURE(findLinks, plain, textWithoutLinks().repeated(20))
    ->Name("`findLinks`, text without links|ours");
BENCHMARK_CAPTURE(linkedHtml, message, shortMessage())->Name("`linkedHtml`, one short message|ours");
BENCHMARK_CAPTURE(processLinks, message, shortMessage())
    ->Name("`linkedHtml`, one short message|`processLinks`");
BENCHMARK_CAPTURE(findLinks, message, shortMessage())->Name("`findLinks`, one short message|ours");
BENCHMARK_CAPTURE(linkedHtml, numbers, messageWithNumbers())
    ->Name("`linkedHtml`, a message with two numbers|ours");
BENCHMARK_CAPTURE(processLinks, numbers, messageWithNumbers())
    ->Name("`linkedHtml`, a message with two numbers|`processLinks`");
BENCHMARK_CAPTURE(findLinks, numbers, messageWithNumbers())
    ->Name("`findLinks`, a message with two numbers|ours");
BENCHMARK_CAPTURE(hostile, hyphens, "a-")
    ->Name("`linkedHtml`, \"a-\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, dots, "a.")
    ->Name("`linkedHtml`, \"a.\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, brackets, "((((")
    ->Name("`linkedHtml`, \"((((\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, square, "[[[[")
    ->Name("`linkedHtml`, \"[[[[\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, mailto, "mailto:")
    ->Name("`linkedHtml`, \"mailto:\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, ats, "@")
    ->Name("`linkedHtml`, \"@\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, mailboxes, "a.b@")
    ->Name("`linkedHtml`, \"a.b@\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, octets, "1.1.1.")
    ->Name("`linkedHtml`, \"1.1.1.\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, slashes, "://")
    ->Name("`linkedHtml`, \"://\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, schemes, "https://")
    ->Name("`linkedHtml`, \"https://\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, open, "https://a.it/(")
    ->Name("`linkedHtml`, \"https://a.it/(\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, quotes, "https://a.it/\"x")
    ->Name("`linkedHtml`, \"https://a.it/\"x\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, sip, "sip:a")
    ->Name("`linkedHtml`, \"sip:a\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, tel, "tel:1")
    ->Name("`linkedHtml`, \"tel:1\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, refused, "javascript:")
    ->Name("`linkedHtml`, \"javascript:\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, links, "www.a.it ")
    ->Name("`linkedHtml`, \"www.a.it \" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, plusses, "a+")
    ->Name("`linkedHtml`, \"a+\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, underscores, "_")
    ->Name("`linkedHtml`, \"_\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, emphasis, "-.")
    ->Name("`linkedHtml`, \"-.\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, www, "www.")
    ->Name("`linkedHtml`, \"www.\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, encodedNames, "xn--")
    ->Name("`linkedHtml`, \"xn--\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, apostrophes, "https://a.it/x'")
    ->Name("`linkedHtml`, \"https://a.it/x'\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, mixedQuotes, "'\"")
    ->Name("`linkedHtml`, \"'\"\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, mixedBrackets, "https://a.it/[(")
    ->Name("`linkedHtml`, \"https://a.it/[(\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, hosts, "https://[")
    ->Name("`linkedHtml`, \"https://[\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, mailboxList, "mailto:a@a,")
    ->Name("`linkedHtml`, \"mailto:a@a,\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, backslashes, "\\")
    ->Name("`linkedHtml`, \"\\\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, numbers, "06 1234567 ")
    ->Name("`linkedHtml`, \"06 1234567 \" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, dates, "31/8/2011 ")
    ->Name("`linkedHtml`, \"31/8/2011 \" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(hostile, scripts, "a\u03b1\u0430\u0561\u05d0\u0627\u0905\u0e01\u10d0\u1100\u3042\u4e2d")
    ->Name("`linkedHtml`, a letter of each script repeated|ours|grows at most 2.2")
    ->Apply(growing);

BENCHMARK_MAIN();
