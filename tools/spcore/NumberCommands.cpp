#include "Commands.h"
#include "Console.h"

#include <telephony/PhoneNumberLiterals.h>

#include <QCommandLineParser>
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

} // namespace

QList<Command> numberCommands()
{
    Argument const number{QStringLiteral("NUMBER"), QStringLiteral("A number as typed or pasted")};
    return {
        {QStringLiteral("number clean"),
         QStringLiteral("Prints the digits, *, # and commas of a number, and its leading +"),
         {number},
         {zerosOption()},
         clean},
        {QStringLiteral("number validate"),
         QStringLiteral("Prints the number to dial, without the tones behind its first comma"),
         {number},
         {zerosOption(),
          {optionStart(), QStringLiteral("Characters that may begin a number"), QStringLiteral("CHARACTERS"),
           QStringLiteral("+0123456789*#")},
          {optionStrip(), QStringLiteral("Drops * and # too")}},
         validate},
        {QStringLiteral("number compare"),
         QStringLiteral("Tells whether two numbers, written in any way, call the same subscriber"),
         {number, {QStringLiteral("OTHER"), QStringLiteral("The number to compare with")}},
         {},
         compare},
        {QStringLiteral("number split"),
         QStringLiteral("Prints the number and the tones of a dial string"),
         {{QStringLiteral("NUMBER"), QStringLiteral("A number, and behind commas the tones to send")}},
         {},
         split},
    };
}
