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

enum Text { Chat, WithoutLinks, Message };

QString textOf(benchmark::State const& state)
{
    switch (state.range(0)) {
    case Chat:
        return chatText().repeated(10);
    case WithoutLinks:
        return textWithoutLinks().repeated(20);
    default:
        return QStringLiteral("ok, see you at www.example.com at ten");
    }
}

void processLinks(benchmark::State& state)
{
    QString const text = textOf(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(HTMLHelpers::processLinks(text));
    }
    state.SetBytesProcessed(state.iterations() * text.size() * 2);
}

void processLinksPlainExpression(benchmark::State& state)
{
    QString const text = textOf(state);
    if (LinkOracle::processLinks(text) != HTMLHelpers::processLinks(text)) {
        state.SkipWithError("the answers differ");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(LinkOracle::processLinks(text));
    }
    state.SetBytesProcessed(state.iterations() * text.size() * 2);
}

void texts(benchmark::internal::Benchmark* benchmark)
{
    benchmark->ArgName("text")->Arg(Chat)->Arg(WithoutLinks)->Arg(Message);
}

void hostile(benchmark::State& state, char const* unit)
{
    QString const text = QString::fromLatin1(unit).repeated(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(HTMLHelpers::processLinks(text));
    }
    state.SetComplexityN(state.range(0));
}

void hostilePlainExpression(benchmark::State& state)
{
    QString const text = QStringLiteral("a-").repeated(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(LinkOracle::processLinks(text));
    }
    state.SetComplexityN(state.range(0));
}

void sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->RangeMultiplier(2)->Range(1 << 14, 1 << 18)->Complexity();
}

} // namespace

BENCHMARK(processLinks)->Apply(texts);
BENCHMARK(processLinksPlainExpression)->Apply(texts);
BENCHMARK_CAPTURE(hostile, hyphens, "a-")->Apply(sizes);
BENCHMARK_CAPTURE(hostile, dots, "a.")->Apply(sizes);
BENCHMARK_CAPTURE(hostile, pluses, "a+")->Apply(sizes);
BENCHMARK_CAPTURE(hostile, letters, "a")->Apply(sizes);
BENCHMARK_CAPTURE(hostile, digits, "1")->Apply(sizes);
BENCHMARK_CAPTURE(hostile, www, "www.")->Apply(sizes);
BENCHMARK_CAPTURE(hostile, ats, "@")->Apply(sizes);
BENCHMARK_CAPTURE(hostile, schemes, "http://")->Apply(sizes);
BENCHMARK_CAPTURE(hostile, octets, "1.1.1.")->Apply(sizes);
BENCHMARK(hostilePlainExpression)->RangeMultiplier(2)->Range(32, 256)->Complexity();
