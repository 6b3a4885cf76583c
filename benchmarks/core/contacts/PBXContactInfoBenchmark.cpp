// A directory entry on its way from the PBX's JSON to the stored JSON, beside the same with Qt's variant map.
// The argument is the number of the entry's contact points.

#include <contacts/PBXContactInfo.h>
#include <datasets/JsonDataSet.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QStringList>
#include <QVariantMap>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <set>
#include <vector>

namespace {

QByteArray entry(std::int64_t points)
{
    QJsonArray contacts;
    for (std::int64_t i = 0; i < points; ++i) {
        // In an order of its own, with every fifth number there twice.
        std::int64_t const number = i % 5 == 4 ? i - 1 : i;
        contacts.append(QJsonObject{
            {QStringLiteral("type"), i % 7 == 6 ? QStringLiteral("email") : QStringLiteral("mobile")},
            {QStringLiteral("value"), QString::number(3'330'000'000 + number * 7'919 % 10'007)}});
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("firstName"), QStringLiteral("Niccol\u00f2")},
                                     {QStringLiteral("lastName"), QStringLiteral("Rossi")},
                                     {QStringLiteral("company"), QStringLiteral("Officine Riunite")},
                                     {QStringLiteral("unit"), QStringLiteral("Vendite")},
                                     {QStringLiteral("contacts"), contacts}})
        .toJson(QJsonDocument::Compact);
}

QStringList sortedNumbers(QJsonArray const& contacts)
{
    QSet<QString> numbers;
    for (QJsonValue const element : contacts) {
        QJsonObject const contact = element.toObject();
        if (contact.value(QStringLiteral("type")).toString() != QStringLiteral("email")) {
            numbers.insert(contact.value(QStringLiteral("value")).toString());
        }
    }
    QStringList sorted = numbers.values();
    sorted.sort();
    return sorted;
}

QVariantMap storedForm(QJsonObject const& json)
{
    QStringList const numbers = sortedNumbers(json.value(QStringLiteral("contacts")).toArray());
    return {
        {QStringLiteral("firstName"), json.value(QStringLiteral("firstName")).toString()},
        {QStringLiteral("lastName"), json.value(QStringLiteral("lastName")).toString()},
        {QStringLiteral("number"), numbers.join(QLatin1Char(';'))},
        {QStringLiteral("company"), json.value(QStringLiteral("company")).toString()},
        {QStringLiteral("department"), json.value(QStringLiteral("unit")).toString()},
    };
}

void storeEntry(benchmark::State& state)
{
    QByteArray const json = entry(state.range(0));
    for (auto _ : state) {
        PBXContactInfo const contact(QJsonDocument::fromJson(json).object());
        benchmark::DoNotOptimize(JsonDataSet::deserializeJson(contact.serialize()));
    }
}

void storeEntryWithVariantMap(benchmark::State& state)
{
    QByteArray const json = entry(state.range(0));
    for (auto _ : state) {
        QVariantMap const stored = storedForm(QJsonDocument::fromJson(json).object());
        benchmark::DoNotOptimize(QJsonDocument::fromVariant(stored).toJson(QJsonDocument::Compact));
    }
}

void loadEntry(benchmark::State& state)
{
    PBXContactInfo const contact(QJsonDocument::fromJson(entry(state.range(0))).object());
    QByteArray const stored = JsonDataSet::deserializeJson(contact.serialize());
    for (auto _ : state) {
        benchmark::DoNotOptimize(PBXContactInfo(JsonDataSet::serializeJson(stored)));
    }
}

void loadEntryWithVariantMap(benchmark::State& state)
{
    QByteArray const stored =
        QJsonDocument::fromVariant(storedForm(QJsonDocument::fromJson(entry(state.range(0))).object()))
            .toJson(QJsonDocument::Compact);
    for (auto _ : state) {
        QVariantMap const map = QJsonDocument::fromJson(stored).object().toVariantMap();
        benchmark::DoNotOptimize(map.value(QStringLiteral("firstName")).toString());
        benchmark::DoNotOptimize(map.value(QStringLiteral("lastName")).toString());
        benchmark::DoNotOptimize(map.value(QStringLiteral("company")).toString());
        benchmark::DoNotOptimize(map.value(QStringLiteral("department")).toString());
        QStringList const numbers =
            map.value(QStringLiteral("number")).toString().split(QLatin1Char(';'), Qt::SkipEmptyParts);
        benchmark::DoNotOptimize(QSet<QString>(numbers.begin(), numbers.end()));
    }
}

/// The fields of a contact in a plain struct.
struct PlainContact
{
    QString firstName;
    QString lastName;
    std::set<QString> numbers;
    QString company;
    QString department;

    [[nodiscard]] QString const& getLastName() const { return lastName; }
};

template <typename Contact, typename Make>
void sortContacts(benchmark::State& state, Make make)
{
    std::vector<Contact> contacts;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        QString const name = QString::number(i * 7'919 % 100'003);
        contacts.push_back(make(name, std::set<QString>{name, name + u'0', name + u'1'}));
    }
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<Contact> sorted = contacts;
        state.ResumeTiming();
        std::ranges::sort(sorted, {}, [](Contact const& contact) { return contact.getLastName(); });
        benchmark::DoNotOptimize(sorted.data());
    }
}

void sortEntries(benchmark::State& state)
{
    sortContacts<PBXContactInfo>(state, [](QString const& name, std::set<QString> const& numbers) {
        PBXContactInfo contact;
        contact.setLastName(name);
        contact.setNumbers(numbers);
        return contact;
    });
}

void sortPlainStructs(benchmark::State& state)
{
    sortContacts<PlainContact>(state, [](QString const& name, std::set<QString> const& numbers) {
        return PlainContact{{}, name, numbers, {}, {}};
    });
}

void sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(3)->Arg(100)->Arg(3'000);
}

BENCHMARK(sortEntries)->Name("{} contacts sorted|ours")->Arg(50'000)->Unit(benchmark::kMillisecond);
BENCHMARK(sortPlainStructs)
    ->Name("{} contacts sorted|a plain struct")
    ->Arg(50'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(storeEntry)->Name("directory JSON to stored JSON, {} contact points|ours")->Apply(sizes);
BENCHMARK(storeEntryWithVariantMap)
    ->Name("directory JSON to stored JSON, {} contact points|a `QVariantMap`")
    ->Apply(sizes);
BENCHMARK(loadEntry)->Name("stored JSON to contact, {} contact points|ours")->Apply(sizes);
BENCHMARK(loadEntryWithVariantMap)
    ->Name("stored JSON to contact, {} contact points|numbers in a `QSet`, unsorted")
    ->Apply(sizes);

} // namespace
