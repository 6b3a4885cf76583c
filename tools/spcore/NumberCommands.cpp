#include "Commands.h"
#include "Console.h"

#include <telephony/PhoneNumberLiterals.h>

#include <QCommandLineParser>
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

QCommandLineOption regionOption()
{
    return {optionRegion(), QStringLiteral("Where the number was typed, two letters (IT unless given)"),
            QStringLiteral("REGION"), QStringLiteral("IT")};
}

ExitCode noNumberIn(QString const& text)
{
    return failed(ExitCode::Failure, QStringLiteral("no number in \"") + text + QLatin1Char('"'));
}

/// Prints \a result, which --json calls \a name; where nothing is left of \a typed, that is the command's
/// failure.
ExitCode printOrFail(QCommandLineParser const& parser, QString const& typed, QString const& name,
                     QString const& result)
{
    if (result.isEmpty()) {
        return noNumberIn(typed);
    }
    if (wantsJson(parser)) {
        Console::printJson({{QStringLiteral("typed"), typed}, {name, result}});
    } else {
        Console::print(result);
    }
    return ExitCode::Success;
}

ExitCode clean(QCommandLineParser const& parser)
{
    QString const number = parser.positionalArguments().constFirst();
    return printOrFail(parser, number, QStringLiteral("number"),
                       PhoneNumberLiterals::sanitizePhoneNumber(number, parser.isSet(optionZeros())));
}

ExitCode validate(QCommandLineParser const& parser)
{
    QString const number = parser.positionalArguments().constFirst();
    return printOrFail(parser, number, QStringLiteral("number"),
                       PhoneNumberLiterals::validatePhoneNumber(number, parser.value(optionStart()),
                                                                parser.isSet(optionZeros()),
                                                                parser.isSet(optionStrip())));
}

ExitCode compare(QCommandLineParser const& parser)
{
    QStringList const numbers = parser.positionalArguments();
    bool const isSame = PhoneNumberLiterals::comparePhoneNumbers(numbers[0], numbers[1]);
    if (wantsJson(parser)) {
        Console::printJson({{QStringLiteral("first"), numbers[0]},
                            {QStringLiteral("second"), numbers[1]},
                            {QStringLiteral("same"), isSame}});
        return isSame ? ExitCode::Success : ExitCode::Failure;
    }
    if (!isSame) {
        return failed(ExitCode::Failure, QStringLiteral("the numbers differ"));
    }
    Console::print(QStringLiteral("the numbers are the same"));
    return ExitCode::Success;
}

ExitCode split(QCommandLineParser const& parser)
{
    QString const dialled = parser.positionalArguments().constFirst();
    QStringList const parts = dialled.split(QLatin1Char(','), Qt::SkipEmptyParts);
    if (parts.isEmpty()) {
        return noNumberIn(dialled);
    }
    QString const tones = PhoneNumberLiterals::extractDTMFSignalsFromNumber(dialled);
    if (wantsJson(parser)) {
        Console::printJson({{QStringLiteral("typed"), dialled},
                            {QStringLiteral("number"), parts.constFirst()},
                            {QStringLiteral("tones"), tones}});
        return ExitCode::Success;
    }
    Console::print(QStringLiteral("number ") + parts.constFirst());
    Console::print(QStringLiteral("tones  ") + tones);
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

ExitCode parse(QCommandLineParser const& parser)
{
    QString const text = parser.positionalArguments().constFirst();
    std::optional<Softphone::PhoneNumber> const number =
        Softphone::PhoneNumber::parse(text, parser.value(optionRegion()));
    if (!number) {
        return noNumberIn(text);
    }
    if (wantsJson(parser)) {
        QJsonObject object{{QStringLiteral("valid"), number->isValid()}};
        for (auto const& [name, form] : formsOf(*number)) {
            object[name] = form;
        }
        Console::printJson(object);
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
    return printOrFail(parser, typed, QStringLiteral("dial"),
                       Softphone::dialString(typed, parser.value(optionRegion()), plus));
}

} // namespace

QList<Command> numberCommands()
{
    Argument const number{QStringLiteral("NUMBER"), QStringLiteral("A number as typed or pasted")};
    return {
        {QStringLiteral("number parse"),
         QStringLiteral("Prints the forms, the kind and the region of a number (the new way)"),
         {number},
         {regionOption()},
         parse,
         QStringLiteral("{e164, international, national, extension, uri, region, kind, valid}"),
         QStringLiteral("number parse --region IT '06 1234567 int. 12'")},
        {QStringLiteral("number dial"),
         QStringLiteral(
             "Prints what to dial for a number as typed or pasted (the new way; validate is the kept one)"),
         {number},
         {regionOption(), zerosOption()},
         dial,
         QStringLiteral("{typed, dial}"),
         QStringLiteral("number dial '+44 (0)20 7946 0018'")},
        {QStringLiteral("number clean"),
         QStringLiteral("Prints the digits, *, # and commas of a number, and its leading + (the kept way)"),
         {number},
         {zerosOption()},
         clean,
         QStringLiteral("{typed, number}"),
         QStringLiteral("number clean '+39 (06) 1234'")},
        {QStringLiteral("number validate"),
         QStringLiteral("Prints the number to dial, without the tones after its first comma (the kept way)"),
         {number},
         {zerosOption(),
          {optionStart(), QStringLiteral("Characters that may begin a number"), QStringLiteral("CHARACTERS"),
           QStringLiteral("+0123456789*#")},
          {optionStrip(), QStringLiteral("Drops * and # too")}},
         validate,
         QStringLiteral("{typed, number}"),
         QStringLiteral("number validate 'tel:+39 333-1234567,,99#'")},
        {QStringLiteral("number compare"),
         QStringLiteral(
             "Tells whether two numbers, written in any way, call the same subscriber (the kept way)"),
         {number, {QStringLiteral("OTHER"), QStringLiteral("The number to compare with")}},
         {},
         compare,
         QStringLiteral("{first, second, same}; the exit code is 1 when they differ"),
         QStringLiteral("number compare '+39 333 1234567' 0039-333-1234567")},
        {QStringLiteral("number split"),
         QStringLiteral("Prints the number and the tones of a dial string (the kept way)"),
         {{QStringLiteral("NUMBER"), QStringLiteral("A number, and after commas the tones to send")}},
         {},
         split,
         QStringLiteral("{typed, number, tones}"),
         QStringLiteral("number split '0612345678,,123#'")},
    };
}
