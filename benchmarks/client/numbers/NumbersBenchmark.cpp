// Numbers as people write them, beside libphonenumber called directly; its texts are converted from and to
// UTF-16 on both sides. The first call of a process loads the plans, so it is measured in processes of its
// own.

#include <client/PhoneNumber.h>

#include <QCoreApplication>
#include <QProcess>
#include <benchmark/benchmark.h>
#include <chrono>
#include <iostream>
#include <phonenumbers/phonenumber.pb.h>
#include <phonenumbers/phonenumberutil.h>

namespace {

using Plans = i18n::phonenumbers::PhoneNumberUtil;
using PlanNumber = i18n::phonenumbers::PhoneNumber;

QString italy()
{
    return QStringLiteral("IT");
}

/// As they stand in mails, on cards and in address books.
QStringList writtenNumbers()
{
    return {QStringLiteral("06 1234567"),         QStringLiteral("06/12345678"),
            QStringLiteral("(06) 1234-5678"),     QStringLiteral("02 88451234"),
            QStringLiteral("0471 997123"),        QStringLiteral("333 1234567"),
            QStringLiteral("347-123.45.67"),      QStringLiteral("3201234567"),
            QStringLiteral("800 123456"),         QStringLiteral("+39 06 12345678"),
            QStringLiteral("+39 (0)6 12345678"),  QStringLiteral("+39 333 1234567"),
            QStringLiteral("0039 333 1234567"),   QStringLiteral("+44 (0)20 7946 0018"),
            QStringLiteral("+44 20 7946 0018"),   QStringLiteral("0044 7400 123456"),
            QStringLiteral("+49 (30) 23125-123"), QStringLiteral("+33 1 42 68 53 00"),
            QStringLiteral("+1 (212) 555-0123"),  QStringLiteral("+1-415-555-0123"),
            QStringLiteral("06 1234567 int. 12"), QStringLiteral("+39 06 1234567 ext 12"),
            QStringLiteral("+41 44 668 18 00"),   QStringLiteral("Tel. 06 1234567"),
            QStringLiteral("+378 0549 886377"),   QStringLiteral("+390612345678")};
}

/// An everyday message that holds two numbers.
QString message()
{
    return QStringLiteral(
        "Ciao, il 31/8/2011 alle 08:30 siamo in ufficio; chiamaci allo 06 1234567 int. 12 oppure "
        "al +39 333 1234567. Fattura 20261122, totale 1.234,50 euro. Grazie, Mario");
}

PlanNumber planNumber(QString const& text)
{
    PlanNumber number;
    static_cast<void>(Plans::GetInstance()->Parse(text.toStdString(), "IT", &number));
    return number;
}

QString planFormat(PlanNumber const& number, Plans::PhoneNumberFormat form)
{
    std::string text;
    Plans::GetInstance()->Format(number, form, &text);
    return QString::fromStdString(text);
}

void parse(benchmark::State& state)
{
    QStringList const numbers = writtenNumbers();
    for ([[maybe_unused]] auto const& step : state) {
        for (QString const& number : numbers) {
            benchmark::DoNotOptimize(Softphone::PhoneNumber::parse(number, italy()));
        }
    }
    state.SetItemsProcessed(state.iterations() * numbers.size());
}
BENCHMARK(parse)->Name("parse 26 numbers as people write them|ours");

void parseWithLibphonenumber(benchmark::State& state)
{
    QStringList const numbers = writtenNumbers();
    for ([[maybe_unused]] auto const& step : state) {
        for (QString const& number : numbers) {
            benchmark::DoNotOptimize(planNumber(number));
        }
    }
    state.SetItemsProcessed(state.iterations() * numbers.size());
}
BENCHMARK(parseWithLibphonenumber)->Name("parse 26 numbers as people write them|libphonenumber|at most 1.15");

void format(benchmark::State& state)
{
    QList<Softphone::PhoneNumber> numbers;
    for (QString const& number : writtenNumbers()) {
        numbers += *Softphone::PhoneNumber::parse(number, italy());
    }
    for ([[maybe_unused]] auto const& step : state) {
        for (Softphone::PhoneNumber const& number : numbers) {
            benchmark::DoNotOptimize(number.e164());
            benchmark::DoNotOptimize(number.international());
            benchmark::DoNotOptimize(number.national());
        }
    }
    state.SetItemsProcessed(state.iterations() * numbers.size());
}
BENCHMARK(format)->Name("three forms of each|ours");

void formatWithLibphonenumber(benchmark::State& state)
{
    QList<PlanNumber> numbers;
    for (QString const& number : writtenNumbers()) {
        numbers += planNumber(number);
    }
    for ([[maybe_unused]] auto const& step : state) {
        for (PlanNumber const& number : numbers) {
            benchmark::DoNotOptimize(planFormat(number, Plans::E164));
            benchmark::DoNotOptimize(planFormat(number, Plans::INTERNATIONAL));
            benchmark::DoNotOptimize(planFormat(number, Plans::NATIONAL));
        }
    }
    state.SetItemsProcessed(state.iterations() * numbers.size());
}
BENCHMARK(formatWithLibphonenumber)->Name("three forms of each|libphonenumber|at most 1.15");

void dial(benchmark::State& state)
{
    QStringList const numbers = writtenNumbers();
    for ([[maybe_unused]] auto const& step : state) {
        for (QString const& number : numbers) {
            benchmark::DoNotOptimize(Softphone::dialString(number, italy()));
        }
    }
    state.SetItemsProcessed(state.iterations() * numbers.size());
}
BENCHMARK(dial)->Name("what to dial for each|ours");

void findInMessage(benchmark::State& state)
{
    QString const text = message();
    for ([[maybe_unused]] auto const& step : state) {
        benchmark::DoNotOptimize(Softphone::findPhoneNumbers(text, italy()));
    }
}
BENCHMARK(findInMessage)->Name("the numbers of a message|ours");

void formatTyped(benchmark::State& state)
{
    QString const typed = QStringLiteral("+442079460018");
    for ([[maybe_unused]] auto const& step : state) {
        benchmark::DoNotOptimize(Softphone::formatAsTyped(typed, italy()));
    }
}
BENCHMARK(formatTyped)->Name("format while typing|ours");

void growing(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(4'096)->Arg(65'536);
}

/// Texts that look like numbers and are none, of growing length.
void findInHostileText(benchmark::State& state, char const* piece)
{
    QString const one = QString::fromUtf8(piece);
    QString const text = one.repeated(state.range(0) / one.size());
    for ([[maybe_unused]] auto const& step : state) {
        benchmark::DoNotOptimize(Softphone::findPhoneNumbers(text, italy()));
    }
}
BENCHMARK_CAPTURE(findInHostileText, dots, "1.1.1.")
    ->Name("numbers found, \"1.1.1.\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(findInHostileText, blanks, "1 ")
    ->Name("numbers found, \"1 \" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(findInHostileText, digits, "1")
    ->Name("numbers found, \"1\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(findInHostileText, brackets, "((((")
    ->Name("numbers found, \"((((\" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(findInHostileText, numbers, "06 1234567 ")
    ->Name("numbers found, \"06 1234567 \" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(findInHostileText, dates, "31/8/2011 ")
    ->Name("numbers found, dates repeated|ours|grows at most 2.2")
    ->Apply(growing);

void dialHostileText(benchmark::State& state, char const* piece)
{
    QString const one = QString::fromUtf8(piece);
    QString const text = one.repeated(state.range(0) / one.size());
    for ([[maybe_unused]] auto const& step : state) {
        benchmark::DoNotOptimize(Softphone::dialString(text, italy()));
    }
}
BENCHMARK_CAPTURE(dialHostileText, words, "a1 ")
    ->Name("what to dial, \"a1 \" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(dialHostileText, marks, "1\u200b")
    ->Name("what to dial, \"1\" and a blank of no width repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(dialHostileText, codes, "+39 ")
    ->Name("what to dial, \"+39 \" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(dialHostileText, extensions, "1 x1 ")
    ->Name("what to dial, \"1 x1 \" repeated|ours|grows at most 2.2")
    ->Apply(growing);
BENCHMARK_CAPTURE(dialHostileText, parameters, ";a=1")
    ->Name("what to dial, \";a=1\" repeated|ours|grows at most 2.2")
    ->Apply(growing);

/// The seconds that the first call took in a new process of this program, which is told to make it.
void firstParse(benchmark::State& state, char const* caller)
{
    QProcess process;
    for ([[maybe_unused]] auto const& step : state) {
        process.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(caller)});
        process.waitForFinished();
        state.SetIterationTime(process.readAllStandardOutput().toDouble());
    }
}
BENCHMARK_CAPTURE(firstParse, ours, "first")->Name("the first parse of a process|ours")->UseManualTime();
BENCHMARK_CAPTURE(firstParse, libphonenumber, "first with libphonenumber")
    ->Name("the first parse of a process|libphonenumber")
    ->UseManualTime();

template <typename Call>
int printSeconds(Call call)
{
    auto const start = std::chrono::steady_clock::now();
    benchmark::DoNotOptimize(call());
    std::cout << std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    QString const task = application.arguments().value(1);
    QString const number = QStringLiteral("06 1234567");
    if (task == u"first") {
        return printSeconds([&] { return Softphone::PhoneNumber::parse(number, italy()); });
    }
    if (task == u"first with libphonenumber") {
        return printSeconds([&] { return planNumber(number); });
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
