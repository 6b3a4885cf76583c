#include "Commands.h"
#include "Console.h"

#include <telephony/PhoneNumberLiterals.h>

#include <QCommandLineParser>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaEnum>
#include <client/PhoneNumber.h>
#include <utility>

namespace {

QString optionZeros()
{
    return QStringLiteral("plus-as-zeros");
}

QString optionStart()
{
    return QStringLiteral("start");
}

QString optionStrip()
{
    return QStringLiteral("strip-symbols");
}

QCommandLineOption zerosOption()
{
    return {optionZeros(), QStringLiteral("Writes a leading + as 00")};
}

QString optionRegion()
{
    return QStringLiteral("region");
}

QString optionJson()
{
    return QStringLiteral("json");
}

QCommandLineOption regionOption()
{
    return {optionRegion(), QStringLiteral("Where the number was typed, two letters (IT unless given)"),
            QStringLiteral("REGION"), QStringLiteral("IT")};
}

QCommandLineOption jsonOption()
{
    return {optionJson(), QStringLiteral("Prints a JSON object")};
}

/// Prints \a result; where nothing is left of \a number, that is the command's failure.
ExitCode printOrFail(QString const& result, QString const& number)
{
    if (result.isEmpty()) {
        Console::printError(QStringLiteral("no number in \"") + number + QLatin1Char('"'));
        return ExitCode::Failure;
    }
    Console::print(result);
    return ExitCode::Success;
}

ExitCode clean(QCommandLineParser const& parser)
{
    QString const number = parser.positionalArguments().constFirst();
    return printOrFail(PhoneNumberLiterals::sanitizePhoneNumber(number, parser.isSet(optionZeros())), number);
}

ExitCode validate(QCommandLineParser const& parser)
{
    QString const number = parser.positionalArguments().constFirst();
    return printOrFail(PhoneNumberLiterals::validatePhoneNumber(number, parser.value(optionStart()),
                                                                parser.isSet(optionZeros()),
                                                                parser.isSet(optionStrip())),
                       number);
}

ExitCode compare(QCommandLineParser const& parser)
{
    QStringList const numbers = parser.positionalArguments();
    if (!PhoneNumberLiterals::comparePhoneNumbers(numbers[0], numbers[1])) {
        Console::printError(QStringLiteral("the numbers differ"));
        return ExitCode::Failure;
    }
    Console::print(QStringLiteral("the numbers are the same"));
    return ExitCode::Success;
}

ExitCode split(QCommandLineParser const& parser)
{
    QString const dialled = parser.positionalArguments().constFirst();
    QStringList const parts = dialled.split(QLatin1Char(','), Qt::SkipEmptyParts);
    if (parts.isEmpty()) {
        return printOrFail(QString(), dialled);
    }
    Console::print(QStringLiteral("number ") + parts.constFirst());
    Console::print(QStringLiteral("tones  ") + PhoneNumberLiterals::extractDTMFSignalsFromNumber(dialled));
    return ExitCode::Success;
}

QList<std::pair<QString, QString>> formsOf(Softphone::PhoneNumber const& number)
{
    auto const kinds = QMetaEnum::fromType<Softphone::NumberKind>();
    return {{QStringLiteral("e164"), number.e164()},
            {QStringLiteral("international"), number.international()},
            {QStringLiteral("national"), number.national()},
            {QStringLiteral("extension"), number.extension()},
            {QStringLiteral("uri"), number.uri().toString()},
            {QStringLiteral("region"), number.region()},
            {QStringLiteral("kind"), QString::fromLatin1(kinds.valueToKey(static_cast<int>(number.kind())))}};
}

void printJson(QJsonObject const& object)
{
    Console::printBytes(QJsonDocument(object).toJson(QJsonDocument::Indented));
}

ExitCode parse(QCommandLineParser const& parser)
{
    QString const text = parser.positionalArguments().constFirst();
    std::optional<Softphone::PhoneNumber> const number =
        Softphone::PhoneNumber::parse(text, parser.value(optionRegion()));
    if (!number) {
        return printOrFail(QString(), text);
    }
    if (parser.isSet(optionJson())) {
        QJsonObject object{{QStringLiteral("valid"), number->isValid()}};
        for (auto const& [name, form] : formsOf(*number)) {
            object[name] = form;
        }
        printJson(object);
        return ExitCode::Success;
    }
    constexpr int column = 14;
    for (auto const& [name, form] : formsOf(*number)) {
        Console::print(name.leftJustified(column) + form);
    }
    Console::print(QStringLiteral("valid").leftJustified(column) +
                   (number->isValid() ? QStringLiteral("yes") : QStringLiteral("no")));
    return ExitCode::Success;
}

ExitCode dial(QCommandLineParser const& parser)
{
    QString const typed = parser.positionalArguments().constFirst();
    auto const plus =
        parser.isSet(optionZeros()) ? Softphone::PlusSign::DoubleZero : Softphone::PlusSign::Keep;
    QString const dialled = Softphone::dialString(typed, parser.value(optionRegion()), plus);
    if (!dialled.isEmpty() && parser.isSet(optionJson())) {
        printJson({{QStringLiteral("typed"), typed}, {QStringLiteral("dial"), dialled}});
        return ExitCode::Success;
    }
    return printOrFail(dialled, typed);
}

} // namespace

QList<Command> numberCommands()
{
    Argument const number{QStringLiteral("NUMBER"), QStringLiteral("A number as typed or pasted")};
    return {
        {QStringLiteral("number parse"),
         QStringLiteral("Prints the forms, the kind and the region of a number (the new way)"),
         {number},
         {regionOption(), jsonOption()},
         parse},
        {QStringLiteral("number dial"),
         QStringLiteral(
             "Prints what to dial for a number as typed or pasted (the new way; validate is the kept one)"),
         {number},
         {regionOption(), zerosOption(), jsonOption()},
         dial},
        {QStringLiteral("number clean"),
         QStringLiteral("Prints the digits, *, # and commas of a number, and its leading + (the kept way)"),
         {number},
         {zerosOption()},
         clean},
        {QStringLiteral("number validate"),
         QStringLiteral("Prints the number to dial, without the tones after its first comma (the kept way)"),
         {number},
         {zerosOption(),
          {optionStart(), QStringLiteral("Characters that may begin a number"), QStringLiteral("CHARACTERS"),
           QStringLiteral("+0123456789*#")},
          {optionStrip(), QStringLiteral("Drops * and # too")}},
         validate},
        {QStringLiteral("number compare"),
         QStringLiteral(
             "Tells whether two numbers, written in any way, call the same subscriber (the kept way)"),
         {number, {QStringLiteral("OTHER"), QStringLiteral("The number to compare with")}},
         {},
         compare},
        {QStringLiteral("number split"),
         QStringLiteral("Prints the number and the tones of a dial string (the kept way)"),
         {{QStringLiteral("NUMBER"), QStringLiteral("A number, and after commas the tones to send")}},
         {},
         split},
    };
}
