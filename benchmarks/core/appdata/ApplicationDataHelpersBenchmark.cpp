// The readers of the assets database beside plain loops over a query. The argument is the number of rows.

#include <appdata/ApplicationData.h>
#include <appdata/ApplicationDataHelpers.h>

#include <AssetsBundle.h>
#include <QCoreApplication>
#include <QFile>
#include <QUuid>
#include <array>
#include <benchmark/benchmark.h>

using ResourcesDefs::RcsLanguage;

namespace {

AssetsBundle const* bundle = nullptr;

/// Makes a database whose lists have \a rows rows each.
void makeDatabase(std::int64_t rows)
{
    QString const counted =
        QStringLiteral(" WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < ") +
        QString::number(rows) + QStringLiteral(") SELECT ");
    QString const url = QStringLiteral(", 'https://host.example/' || i");
    QFile::remove(bundle->database());
    AssetsBundle::makeDatabase(
        bundle->database(),
        AssetsBundle::validStatements() +
            QStringList{
                QStringLiteral("DELETE FROM tbl_PALETTE"),
                QStringLiteral("DELETE FROM tbl_STRINGS"),
                QStringLiteral("DELETE FROM tbl_ENDPOINTS"),
                QStringLiteral("INSERT INTO tbl_PALETTE") + counted +
                    QStringLiteral("'role' || i, '#0a0b0c', '#f0f1f2' FROM n"),
                QStringLiteral("INSERT INTO tbl_STRINGS") + counted +
                    QStringLiteral("'id' || i, 'Testo numero ' || i, 'Text number ' || i FROM n"),
                QStringLiteral("INSERT INTO tbl_ENDPOINTS") + counted + QStringLiteral("i - 1") +
                    url.repeated(6) + QStringLiteral(" FROM n"),
            });
}

/// A connection of the peer's own, gone with this object.
class PlainConnection
{
public:
    PlainConnection()
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
        database.setDatabaseName(bundle->database());
        database.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        database.open();
    }
    ~PlainConnection() { QSqlDatabase::removeDatabase(m_name); }
    PlainConnection(PlainConnection const&) = delete;
    PlainConnection& operator=(PlainConnection const&) = delete;

    [[nodiscard]] QSqlDatabase database() const { return QSqlDatabase::database(m_name); }

private:
    QString m_name = QUuid::createUuid().toString();
};

QList<std::pair<QString, QString>> plainPairs(QString const& statement)
{
    QList<std::pair<QString, QString>> pairs;
    PlainConnection const connection;
    QSqlQuery query(connection.database());
    query.setForwardOnly(true);
    query.exec(statement);
    while (query.next()) {
        pairs.emplaceBack(query.value(0).toString(), query.value(1).toString());
    }
    return pairs;
}

void readStrings(benchmark::State& state)
{
    makeDatabase(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(ApplicationDataHelpers::getStringsLanguage(RcsLanguage::Italian));
    }
}

void readStringsPlainly(benchmark::State& state)
{
    makeDatabase(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(plainPairs(QStringLiteral("SELECT Id, Italian FROM tbl_STRINGS;")));
    }
}

void readPalette(benchmark::State& state)
{
    makeDatabase(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(ApplicationDataHelpers::getColorsPalette(true));
    }
}

void readPalettePlainly(benchmark::State& state)
{
    makeDatabase(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(plainPairs(QStringLiteral("SELECT Code, Light FROM tbl_PALETTE;")));
    }
}

void readEndpoints(benchmark::State& state)
{
    makeDatabase(state.range(0));
    QSqlDatabase database = ApplicationDataHelpers::getDBConnection();
    database.open();
    for (auto _ : state) {
        benchmark::DoNotOptimize(ApplicationDataHelpers::getEndpoints(database));
    }
    database.close();
}

void readEndpointsPlainly(benchmark::State& state)
{
    using Row = std::pair<int, std::array<QString, 6>>;
    makeDatabase(state.range(0));
    PlainConnection const connection;
    for (auto _ : state) {
        QList<Row> rows;
        QSqlQuery query(connection.database());
        query.setForwardOnly(true);
        query.exec(QStringLiteral("SELECT * FROM tbl_ENDPOINTS;"));
        while (query.next()) {
            Row row{query.value(0).toInt(), {}};
            for (int column = 0; column < 6; ++column) {
                row.second[static_cast<std::size_t>(column)] = query.value(column + 1).toString();
            }
            rows.append(row);
        }
        benchmark::DoNotOptimize(rows);
    }
}

void readApplicationData(benchmark::State& state)
{
    makeDatabase(1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(ApplicationData::getApplicationData());
    }
}

void readApplicationDataPlainly(benchmark::State& state)
{
    makeDatabase(1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(plainPairs(QStringLiteral("SELECT Name, Manufacturer FROM tbl_NAMES;")));
    }
}

void sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(10)->Arg(1'000)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(readStrings)->Name("strings of a language, {} rows|ours")->Apply(sizes);
BENCHMARK(readStringsPlainly)->Name("strings of a language, {} rows|a loop over a `QSqlQuery`")->Apply(sizes);
BENCHMARK(readPalette)->Name("palette, {} rows|ours")->Apply(sizes);
BENCHMARK(readPalettePlainly)->Name("palette, {} rows|a loop over a `QSqlQuery`")->Apply(sizes);
BENCHMARK(readEndpoints)->Name("endpoints, {} rows, connection open|ours")->Apply(sizes);
BENCHMARK(readEndpointsPlainly)->Name("endpoints, {} rows, connection open|columns by number")->Apply(sizes);
BENCHMARK(readApplicationData)->Name("application data as a record|ours")->Unit(benchmark::kMicrosecond);
BENCHMARK(readApplicationDataPlainly)
    ->Name("application data as a record|both names in one query")
    ->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    AssetsBundle const assets(QCoreApplication::applicationDirPath());
    bundle = &assets;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
