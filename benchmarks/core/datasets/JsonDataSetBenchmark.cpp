// JSON text to a record and back, beside Qt's own way to its variant maps.

#include <datasets/JsonDataSet.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVariant>
#include <benchmark/benchmark.h>

namespace {

QJsonObject contact(int number)
{
    QString const text = QString::number(number);
    return {{QStringLiteral("firstName"), QStringLiteral("Niccol\u00f2 ") + text},
            {QStringLiteral("lastName"), QStringLiteral("Rossi")},
            {QStringLiteral("company"), QStringLiteral("Officine \"Riunite\" s.r.l.")},
            {QStringLiteral("line"), number},
            {QStringLiteral("favourite"), number % 2 == 0},
            {QStringLiteral("contacts"),
             QJsonArray{QJsonObject{{QStringLiteral("type"), QStringLiteral("exten")},
                                    {QStringLiteral("value"), text}},
                        QJsonObject{{QStringLiteral("type"), QStringLiteral("mobile")},
                                    {QStringLiteral("value"), QStringLiteral("+39 333 000 ") + text}}}}};
}

/// A directory of about \a size bytes.
QByteArray directory(std::int64_t size)
{
    std::int64_t const one = QJsonDocument(contact(1000)).toJson(QJsonDocument::Compact).size() + 1;
    QJsonArray contacts;
    for (int i = 0; i < std::max<std::int64_t>(1, size / one); ++i) {
        contacts.append(contact(1000 + i));
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("directory"), contacts}}).toJson(QJsonDocument::Compact);
}

void ReadRecord(benchmark::State& state)
{
    QByteArray const json = directory(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(JsonDataSet::serializeJson(json));
    }
    state.SetBytesProcessed(state.iterations() * json.size());
}

void ReadVariant(benchmark::State& state)
{
    QByteArray const json = directory(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(QJsonDocument::fromJson(json).toVariant());
    }
    state.SetBytesProcessed(state.iterations() * json.size());
}

void WriteRecord(benchmark::State& state)
{
    QByteArray const json = directory(state.range(0));
    DataSets::DataSet const record = JsonDataSet::serializeJson(json);
    for (auto _ : state) {
        benchmark::DoNotOptimize(JsonDataSet::deserializeJson(record));
    }
    state.SetBytesProcessed(state.iterations() * json.size());
}

void WriteVariant(benchmark::State& state)
{
    QByteArray const json = directory(state.range(0));
    QVariant const variant = QJsonDocument::fromJson(json).toVariant();
    for (auto _ : state) {
        benchmark::DoNotOptimize(QJsonDocument::fromVariant(variant).toJson(QJsonDocument::Compact));
    }
    state.SetBytesProcessed(state.iterations() * json.size());
}

void sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(1'000)->Arg(100'000)->Arg(10'000'000)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(ReadRecord)->Name("JSON to record, {} bytes|ours")->Apply(sizes);
BENCHMARK(ReadVariant)->Name("JSON to record, {} bytes|`fromJson().toVariant()`|at most 0.6")->Apply(sizes);
BENCHMARK(WriteRecord)->Name("record to JSON, {} bytes|ours")->Apply(sizes);
BENCHMARK(WriteVariant)->Name("record to JSON, {} bytes|`fromVariant().toJson()`|at most 0.5")->Apply(sizes);

} // namespace
