// HTMLHelpers beside the plain expression (LinkOracle), and its growth on text made to slow it down.

#include <text/HTMLHelpers.h>

#include <LinkOracle.h>
#include <benchmark/benchmark.h>

namespace {

/// Short messages as people write them; one in six holds an address.
QString chatText()
{
    return QStringLiteral(
        "Hi Anna, are you free for a call at 10:30? The customer from Turin rang twice.\n"
        "Sure - give me five minutes, I am still in the other meeting (it is nearly over).\n"
        "Great! The agenda is at https://intranet.example.com/meetings/2024-06-07?room=12, page 3.\n"
        "I can't open it... could you send it to anna.rossi@example.com, please?\n"
        "Done. If the line drops, ring me on +39 06 1234567 or +390612345678.\n"
        "Thanks; talk to you soon :-)\n");
}

QString textWithoutLinks()
{
    return QStringLiteral(
        "The meeting has been moved to Thursday, because half of the team is out of the office. "
        "Please tell me before noon whether that suits you; otherwise we shall look for another "
        "day. Room 12 is free from 9:30 to 11:00, and there is coffee.\n");
}

QString message()
{
    return QStringLiteral("ok, see you at www.example.com at ten");
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

BENCHMARK_CAPTURE(processLinks, chat, chatText().repeated(10))
    ->Name("`processLinks`, chat text with an address in every third line|ours");
BENCHMARK_CAPTURE(processLinksPlainExpression, chat, chatText().repeated(10))
    ->Name("`processLinks`, chat text with an address in every third line|expression|at most 0.2");
BENCHMARK_CAPTURE(processLinks, plain, textWithoutLinks().repeated(20))
    ->Name("`processLinks`, text without links|ours");
BENCHMARK_CAPTURE(processLinksPlainExpression, plain, textWithoutLinks().repeated(20))
    ->Name("`processLinks`, text without links|expression|at most 0.2");
BENCHMARK_CAPTURE(processLinks, message, message())->Name("`processLinks`, one short message|ours");
BENCHMARK_CAPTURE(processLinksPlainExpression, message, message())
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
