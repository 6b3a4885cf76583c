#include <runtime/AsyncCommandsContainter.h>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <map>
#include <random>

namespace {

/// The least that a container of tickets can do: a map and a generator of its own.
class PlainMap
{
public:
    std::optional<unsigned long> add(std::shared_ptr<void> object)
    {
        unsigned long const ticket = static_cast<unsigned long>(m_random());
        bool const stored = m_objects.try_emplace(ticket, std::move(object)).second;
        return stored ? std::optional(ticket) : std::nullopt;
    }
    std::shared_ptr<void> getObject(unsigned long ticket) const
    {
        auto const found = m_objects.find(ticket);
        return found == m_objects.end() ? nullptr : found->second;
    }
    std::shared_ptr<void> popObject(unsigned long ticket)
    {
        auto const node = m_objects.extract(ticket);
        return node.empty() ? nullptr : node.mapped();
    }

private:
    std::mt19937 m_random{1};
    std::map<unsigned long, std::shared_ptr<void>> m_objects;
};

/// Adds \a count objects and gives the tickets in an order that has nothing to do with theirs.
template <typename Container>
std::vector<unsigned long> fill(Container& container, std::int64_t count)
{
    std::shared_ptr<void> const object = std::make_shared<int>(1);
    std::vector<unsigned long> tickets;
    tickets.reserve(static_cast<std::size_t>(count));
    for (std::int64_t index = 0; index < count; ++index) {
        if (auto const ticket = container.add(object)) {
            tickets.push_back(*ticket);
        }
    }
    std::shuffle(tickets.begin(), tickets.end(), std::mt19937(2));
    return tickets;
}

void sized(benchmark::internal::Benchmark* benchmark)
{
    benchmark->RangeMultiplier(1'000)->Range(1'000, 1'000'000)->Unit(benchmark::kMillisecond);
}

template <typename Container>
void Tickets_add(benchmark::State& state)
{
    std::shared_ptr<void> const object = std::make_shared<int>(1);
    for (auto _ : state) {
        auto container = std::make_unique<Container>();
        for (std::int64_t index = 0; index < state.range(0); ++index) {
            benchmark::DoNotOptimize(container->add(object));
        }
        state.PauseTiming();
        container.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(Tickets_add<AsyncCommandsContainter>)->Name("{} tickets: `add`|ours")->Apply(sized);
BENCHMARK(Tickets_add<PlainMap>)->Name("{} tickets: `add`|`std::map` with `std::mt19937`")->Apply(sized);

template <typename Container>
void Tickets_find(benchmark::State& state)
{
    Container container;
    std::vector<unsigned long> const tickets = fill(container, state.range(0));
    for (auto _ : state) {
        for (unsigned long const ticket : tickets) {
            benchmark::DoNotOptimize(container.getObject(ticket));
        }
    }
}
BENCHMARK(Tickets_find<AsyncCommandsContainter>)
    ->Name("{} tickets: `getObject`, random order|ours")
    ->Apply(sized);
BENCHMARK(Tickets_find<PlainMap>)->Name("{} tickets: `getObject`, random order|`std::map`")->Apply(sized);

template <typename Container>
void Tickets_pop(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        Container container;
        std::vector<unsigned long> const tickets = fill(container, state.range(0));
        state.ResumeTiming();
        for (unsigned long const ticket : tickets) {
            benchmark::DoNotOptimize(container.popObject(ticket));
        }
    }
}
BENCHMARK(Tickets_pop<AsyncCommandsContainter>)
    ->Name("{} tickets: `popObject`, random order|ours")
    ->Apply(sized);
BENCHMARK(Tickets_pop<PlainMap>)->Name("{} tickets: `popObject`, random order|`std::map`")->Apply(sized);

} // namespace
