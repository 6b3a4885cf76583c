// A person's display names and initials, beside the same with QString alone.

#include <contacts/NameDataInfo.h>

#include <QStringList>
#include <benchmark/benchmark.h>

namespace {

struct Person
{
    QString first;
    QString last;
};

Person person()
{
    return {QStringLiteral("Anna  Maria"), QStringLiteral("Bianchi")};
}

QString initialsOf(QString const& fullName)
{
    QString initials;
    for (QString const& word : fullName.split(QLatin1Char(' '), Qt::SkipEmptyParts).mid(0, 3)) {
        initials += word.front();
    }
    return initials;
}

void setName(benchmark::State& state)
{
    auto const [first, last] = person();
    for (auto _ : state) {
        NameDataInfo name;
        name.setNameAndInitials(first, last);
        benchmark::DoNotOptimize(name);
    }
}

void setNamePlainly(benchmark::State& state)
{
    auto const [first, last] = person();
    for (auto _ : state) {
        Person copy{first, last};
        QString const initials = initialsOf(first + QLatin1Char(' ') + last);
        benchmark::DoNotOptimize(copy);
        benchmark::DoNotOptimize(initials);
    }
}

void fullName(benchmark::State& state)
{
    auto const [first, last] = person();
    NameDataInfo name;
    name.setNameAndInitials(first, last);
    for (auto _ : state) {
        benchmark::DoNotOptimize(name.getFullName(true));
    }
}

void fullNamePlainly(benchmark::State& state)
{
    auto const [first, last] = person();
    for (auto _ : state) {
        benchmark::DoNotOptimize(QString(first + QLatin1Char(' ') + last).simplified());
    }
}

BENCHMARK(setName)->Name("name and initials set|ours");
BENCHMARK(setNamePlainly)->Name("name and initials set|`QString::split()`");
BENCHMARK(fullName)->Name("full name without extra blanks|ours");
BENCHMARK(fullNamePlainly)->Name("full name without extra blanks|`QString::simplified()`");

} // namespace
