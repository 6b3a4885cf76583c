#include "Commands.h"
#include "Console.h"

#include <text/StringUtils.h>
#include <text/SubstringWrapper.h>

#include <QCommandLineParser>
#include <QJsonArray>
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

/// The text in the file at \a path ("-" is standard input) without the line break at its end; says why when
/// it cannot be read.
std::optional<QString> readText(QString const& path)
{
    std::optional<QByteArray> bytes = Console::readInput(path);
    if (!bytes) {
        return std::nullopt;
    }
    if (bytes->endsWith('\n')) {
        bytes->chop(1);
    }
    return QString::fromUtf8(*bytes);
}

ExitCode answerHtml(QCommandLineParser const& parser, QString const& html)
{
    if (wantsJson(parser)) {
        Console::printJson({{QStringLiteral("html"), html}});
    } else {
        Console::print(html);
    }
    return ExitCode::Success;
}

ExitCode mark(QCommandLineParser const& parser)
{
    QString const search = parser.positionalArguments()[0];
    QString const text = parser.positionalArguments()[1];
    QString const tag = parser.value(optionTag());
    bool const isLiteral = parser.isSet(optionLiteral());
    return answerHtml(parser, isLiteral ? StringUtils::wrapSubStringsInHTMLTag(text, search, tag)
                                        : StringUtils::wrapSubStringsInHTMLTagExtended(
                                              text, search, tag, parser.isSet(optionWordStart())));
}

ExitCode link(QCommandLineParser const& parser)
{
    std::optional<QString> const text = readText(parser.positionalArguments().value(0, QStringLiteral("-")));
    if (!text) {
        return ExitCode::Failure;
    }
    return answerHtml(parser, StringUtils::htmlfy(*text));
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
    Console::printJsonArray(array);
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
        return answerHtml(parser, Softphone::linkedHtml(*text, rules));
    }
    QList<Softphone::Link> const found = Softphone::findLinks(*text, rules);
    wantsJson(parser) ? printLinksAsJson(*text, found) : printLinks(*text, found);
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
    std::optional<QString> const names = readText(parser.positionalArguments().value(1, QStringLiteral("-")));
    if (!names) {
        return ExitCode::Failure;
    }
    bool found = false;
    int line = 0;
    for (QString const& name : names->split(QLatin1Char('\n'))) {
        ++line;
        if (!StringUtils::isFilterMatched(name, words, matchWordStart)) {
            continue;
        }
        found = true;
        if (wantsJson(parser)) {
            Console::printJson({{QStringLiteral("line"), line}, {QStringLiteral("text"), name}});
        } else {
            Console::print(Console::isTerminal() ? highlighted(name, words, matchWordStart) : name);
        }
    }
    return found ? ExitCode::Success
                 : failed(ExitCode::Failure, QStringLiteral("no name matches \"") + words + QLatin1Char('"'));
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
           QStringLiteral("REGION"), QStringLiteral("IT")}},
         links,
         QStringLiteral("[{position, length, text, kind, target}...]; with --html {html}"),
         QStringLiteral("text links message.txt")},
        {QStringLiteral("text mark"),
         QStringLiteral("Writes a text as HTML with the hits of a search marked"),
         {filterWords, {QStringLiteral("TEXT"), QStringLiteral("The text to mark")}},
         {wordStartOption(), literal, tag},
         mark,
         QStringLiteral("{html}"),
         QStringLiteral("text mark 'ro ma' 'Mario Rossi'")},
        {QStringLiteral("text link"),
         QStringLiteral("Writes a chat text as HTML with its addresses linked (the kept way)"),
         {file},
         {},
         link,
         QStringLiteral("{html}"),
         QStringLiteral("text link message.txt")},
        {QStringLiteral("text filter"),
         QStringLiteral("Shows the lines of a text that match a search filter"),
         {filterWords, file},
         {wordStartOption()},
         filter,
         QStringLiteral("{line, text} for each line that matches; lines count from 1"),
         QStringLiteral("text filter 'ma ro' names.txt")},
    };
}
