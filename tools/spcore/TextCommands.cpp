#include "Commands.h"
#include "Console.h"

#include <text/StringUtils.h>
#include <text/SubstringWrapper.h>

#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaEnum>
#include <client/Links.h>
#include <utility>

namespace {

QString optionTag()
{
    return QStringLiteral("tag");
}

QString optionLiteral()
{
    return QStringLiteral("literal");
}

QString optionWordStart()
{
    return QStringLiteral("word-start");
}

QString optionJson()
{
    return QStringLiteral("json");
}

QString optionHtml()
{
    return QStringLiteral("html");
}

QString optionRegion()
{
    return QStringLiteral("region");
}

QCommandLineOption wordStartOption()
{
    return {optionWordStart(), QStringLiteral("Words of the filter must open a word of the text")};
}

/// The text in the file at \a path ("-" is standard input) without the line break at its end; says so when it
/// cannot be read.
std::optional<QString> readText(QString const& path)
{
    std::optional<QByteArray> bytes = Console::readInput(path);
    if (!bytes) {
        Console::printError(QStringLiteral("cannot read \"") + path + QLatin1Char('"'));
        return std::nullopt;
    }
    if (bytes->endsWith('\n')) {
        bytes->chop(1);
    }
    return QString::fromUtf8(*bytes);
}

ExitCode mark(QCommandLineParser const& parser)
{
    QString const search = parser.positionalArguments()[0];
    QString const text = parser.positionalArguments()[1];
    QString const tag = parser.value(optionTag());
    bool const isLiteral = parser.isSet(optionLiteral());
    Console::print(isLiteral ? StringUtils::wrapSubStringsInHTMLTag(text, search, tag)
                             : StringUtils::wrapSubStringsInHTMLTagExtended(text, search, tag,
                                                                            parser.isSet(optionWordStart())));
    return ExitCode::Success;
}

ExitCode link(QCommandLineParser const& parser)
{
    std::optional<QString> const text = readText(parser.positionalArguments().value(0, QStringLiteral("-")));
    if (!text) {
        return ExitCode::Failure;
    }
    Console::print(StringUtils::htmlfy(*text));
    return ExitCode::Success;
}

QString kindOf(Softphone::Link const& link)
{
    auto const kinds = QMetaEnum::fromType<Softphone::LinkKind>();
    return QString::fromLatin1(kinds.valueToKey(static_cast<int>(link.kind)));
}

QJsonObject toJson(QString const& text, Softphone::Link const& link)
{
    return {{QStringLiteral("position"), link.position},
            {QStringLiteral("length"), link.length},
            {QStringLiteral("text"), text.sliced(link.position, link.length)},
            {QStringLiteral("kind"), kindOf(link)},
            {QStringLiteral("target"), link.target.toString(QUrl::FullyEncoded)}};
}

void printLinks(QString const& text, QList<Softphone::Link> const& links)
{
    constexpr int column = 7;
    for (Softphone::Link const& link : links) {
        Console::print(kindOf(link).leftJustified(column) + link.target.toString(QUrl::FullyEncoded) +
                       QLatin1String("  ") + text.sliced(link.position, link.length));
    }
}

void printLinksAsJson(QString const& text, QList<Softphone::Link> const& links)
{
    QJsonArray array;
    for (Softphone::Link const& link : links) {
        array.push_back(toJson(text, link));
    }
    Console::printBytes(QJsonDocument(array).toJson(QJsonDocument::Indented));
}

ExitCode links(QCommandLineParser const& parser)
{
    std::optional<QString> const text = readText(parser.positionalArguments().value(0, QStringLiteral("-")));
    if (!text) {
        return ExitCode::Failure;
    }
    Softphone::LinkRules rules;
    rules.region = parser.value(optionRegion());
    if (parser.isSet(optionHtml())) {
        Console::print(Softphone::linkedHtml(*text, rules));
        return ExitCode::Success;
    }
    QList<Softphone::Link> const found = Softphone::findLinks(*text, rules);
    parser.isSet(optionJson()) ? printLinksAsJson(*text, found) : printLinks(*text, found);
    return ExitCode::Success;
}

/// \a name with the hits of \a filter in bold, for a terminal.
QString highlighted(QString name, QString const& filter, bool matchWordStart)
{
    name = Console::harmless(std::move(name));
    if (!Console::hasColours()) {
        return name;
    }
    std::pair<QString, QString> const bold(QStringLiteral("\x1b[1m"), QStringLiteral("\x1b[0m"));
    return SubstringWrapper(filter, name, bold, matchWordStart).wrapText();
}

ExitCode filter(QCommandLineParser const& parser)
{
    QString const words = parser.positionalArguments().constFirst();
    bool const matchWordStart = parser.isSet(optionWordStart());
    std::optional<QString> const names = readText(QStringLiteral("-"));
    if (!names) {
        return ExitCode::Failure;
    }
    bool found = false;
    for (QString const& name : names->split(QLatin1Char('\n'))) {
        if (StringUtils::isFilterMatched(name, words, matchWordStart)) {
            Console::print(Console::isTerminal() ? highlighted(name, words, matchWordStart) : name);
            found = true;
        }
    }
    if (!found) {
        Console::printError(QStringLiteral("no name matches \"") + words + QLatin1Char('"'));
    }
    return found ? ExitCode::Success : ExitCode::Failure;
}

} // namespace

QList<Command> textCommands()
{
    Argument const filterWords{QStringLiteral("FILTER"), QStringLiteral("The words to look for")};
    QCommandLineOption const tag(optionTag(),
                                 QStringLiteral("The HTML element to put hits in, b unless given"),
                                 QStringLiteral("NAME"), QStringLiteral("b"));
    QCommandLineOption const literal(optionLiteral(),
                                     QStringLiteral("Looks for FILTER as it stands, not for its words"));
    Argument const file{QStringLiteral("[FILE]"),
                        QStringLiteral("The text; standard input if - or not given")};
    return {
        {QStringLiteral("text links"),
         QStringLiteral(
             "Lists the addresses of a text and what opens them (the new way; link is the kept one)"),
         {file},
         {{optionHtml(), QStringLiteral("Writes the text as HTML with its addresses linked")},
          {optionRegion(),
           QStringLiteral("Where numbers without a country code are dialled (IT unless given)"),
           QStringLiteral("REGION"), QStringLiteral("IT")},
          {optionJson(), QStringLiteral("Prints a JSON array")}},
         links},
        {QStringLiteral("text mark"),
         QStringLiteral("Writes a text as HTML with the hits of a search marked"),
         {filterWords, {QStringLiteral("TEXT"), QStringLiteral("The text to mark")}},
         {wordStartOption(), literal, tag},
         mark},
        {QStringLiteral("text link"),
         QStringLiteral("Writes a chat text as HTML with its addresses linked (the kept way)"),
         {file},
         {},
         link},
        {QStringLiteral("text filter"),
         QStringLiteral("Shows the lines of standard input that match a search filter"),
         {filterWords},
         {wordStartOption()},
         filter},
    };
}
