#include "Runner.h"

#include "Commands.h"
#include "Completion.h"
#include "Console.h"
#include "Suggestion.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <algorithm>
#include <iterator>

namespace {

QString optionHelp()
{
    return QStringLiteral("help");
}

QString line(Command const& command)
{
    constexpr int column = 18;
    return QStringLiteral("  ") + command.name.leftJustified(column) + QLatin1Char(' ') + command.summary +
           QLatin1Char('\n');
}

QString helpText()
{
    QString text = QStringLiteral("Usage: spcore COMMAND [OPTION...] [ARGUMENT...]\n\n"
                                  "Looks at a softphone client's data and tries out the core library.\n\n"
                                  "Commands:\n");
    for (Command const& command : allCommands()) {
        text += line(command);
    }
    text +=
        QStringLiteral("\nOptions:\n"
                       "  -h, --help         Shows this text, or that of one command: spcore COMMAND --help\n"
                       "  -v, --version      Shows the version\n"
                       "\nEvery command takes --json; spcore help COMMAND tells what it prints then.\n");
    return text;
}

/// The commands whose names begin with the word \a group.
QList<Command> membersOf(QString const& group)
{
    QList<Command> members;
    std::ranges::copy_if(allCommands(), std::back_inserter(members), [&group](Command const& command) {
        return command.name.startsWith(group + QLatin1Char(' '));
    });
    return members;
}

QString groupHelp(QString const& group)
{
    QString text =
        QStringLiteral("Usage: spcore %1 COMMAND [OPTION...] [ARGUMENT...]\n\nCommands:\n").arg(group);
    for (Command const& command : membersOf(group)) {
        text += line(command);
    }
    return text + QStringLiteral("\nspcore help COMMAND tells more of each.\n");
}

/// Says what is wrong with the command line, and that \a help tells more.
ExitCode usageError(QString const& message, QString const& help)
{
    return failed(ExitCode::Usage, QStringLiteral("%1 (see spcore %2)").arg(message, help));
}

/// "; did you mean "x"?" where one of \a candidates is near \a word, else nothing.
QString suggestion(QString const& word, QStringList const& candidates)
{
    QString const meant = nearest(word, candidates);
    return meant.isEmpty() ? QString() : QStringLiteral("; did you mean \"%1\"?").arg(meant);
}

QString unknownCommand(QStringList const& words)
{
    QString const& first = words.constFirst();
    if (!membersOf(first).isEmpty() && words.size() > 1) {
        QStringList members;
        for (Command const& command : membersOf(first)) {
            members += command.name.section(QLatin1Char(' '), 1);
        }
        return QStringLiteral("%1 has no command \"%2\"").arg(first, words[1]) +
               suggestion(words[1], members);
    }
    QStringList names{QStringLiteral("--help"), QStringLiteral("--version")};
    for (Command const& command : allCommands()) {
        names << command.name << command.name.section(QLatin1Char(' '), 0, 0);
    }
    QString const whole = words.mid(0, 2).join(QLatin1Char(' '));
    QString const meant = suggestion(first, names);
    return QStringLiteral("unknown command \"%1\"").arg(first) +
           (meant.isEmpty() ? suggestion(whole, names) : meant);
}

QString longName(QCommandLineOption const& option)
{
    return QStringLiteral("--") + option.names().constLast();
}

/// What is wrong with the options of \a command; empty when nothing is.
QString wrongOption(Command const& command, QCommandLineParser const& parser)
{
    if (QStringList const unknown = parser.unknownOptionNames(); !unknown.isEmpty()) {
        QString const typed = QStringLiteral("--") + unknown.constFirst();
        QStringList names;
        std::ranges::transform(optionsOf(command), std::back_inserter(names), longName);
        return QStringLiteral("there is no option ") + typed + suggestion(typed, names);
    }
    if (!parser.errorText().isEmpty()) {
        return parser.errorText();
    }
    for (auto const& [name, words] : command.words.asKeyValueRange()) {
        if (QString const given = parser.value(name); !words.contains(given)) {
            return QStringLiteral("--%1 is %2, not \"%3\"")
                       .arg(name, words.join(QStringLiteral(" or ")), given) +
                   suggestion(given, words);
        }
    }
    return QString();
}

bool takesMany(Argument const& argument)
{
    return argument.name.contains(QStringLiteral("..."));
}

bool isOptional(Argument const& argument)
{
    return argument.name.startsWith(QLatin1Char('['));
}

/// Which argument is missing from \a given or too many among them; empty when they fit.
QString wrongArgument(Command const& command, QStringList const& given)
{
    QList<Argument> const& expected = command.arguments;
    if (given.size() < expected.size() && !isOptional(expected[given.size()])) {
        Argument const& missing = expected[given.size()];
        return QStringLiteral("%1 is missing: %2").arg(missing.name, missing.description);
    }
    bool const isBounded = std::ranges::none_of(expected, takesMany);
    return isBounded && given.size() > expected.size()
               ? QStringLiteral("\"%1\" is one argument too many").arg(given[expected.size()])
               : QString();
}

void printHelp(Command const& command, QCommandLineParser const& parser)
{
    QString const program = QStringLiteral("spcore ") + command.name;
    QString text = parser.helpText().replace(QCoreApplication::arguments().constFirst(), program).trimmed();
    if (!command.json.isEmpty()) {
        text += QStringLiteral("\n\nWith --json: ") + command.json;
    }
    if (!command.example.isEmpty()) {
        text += QStringLiteral("\n\nExample: spcore ") + command.example;
    }
    for (Command const& member : membersOf(command.name)) {
        text += QStringLiteral("\n\nSee also: spcore help ") + member.name;
    }
    Console::print(text);
}

ExitCode run(Command const& command, QStringList const& words)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(command.summary);
    parser.addOptions(optionsOf(command));
    for (Argument const& argument : command.arguments) {
        parser.addPositionalArgument(argument.name, argument.description, argument.name);
    }
    QStringList const own = words.mid(command.name.count(QLatin1Char(' ')) + 1);
    parser.parse(QStringList(command.name) + own);
    if (parser.isSet(optionHelp())) {
        printHelp(command, parser);
        return ExitCode::Success;
    }
    for (QString const& problem :
         {wrongOption(command, parser), wrongArgument(command, parser.positionalArguments())}) {
        if (!problem.isEmpty()) {
            return usageError(command.name + QStringLiteral(": ") + problem,
                              QStringLiteral("help ") + command.name);
        }
    }
    return command.run(parser);
}

ExitCode help(QCommandLineParser const& parser)
{
    QStringList const words = parser.positionalArguments();
    if (wantsJson(parser)) {
        QJsonArray commands;
        for (Command const& command : allCommands()) {
            commands.append(QJsonObject{{QStringLiteral("name"), command.name},
                                        {QStringLiteral("summary"), command.summary},
                                        {QStringLiteral("json"), command.json}});
        }
        Console::printJson({{QStringLiteral("commands"), commands}});
        return ExitCode::Success;
    }
    return runCommand(QStringList(QStringLiteral("spcore")) + words + QStringList(QStringLiteral("--help")));
}

} // namespace

QList<Command> helpCommands()
{
    return {{QStringLiteral("help"),
             QStringLiteral("Shows the commands, those of a group, or the help of one"),
             {{QStringLiteral("[COMMAND...]"), QStringLiteral("A group, or a command with its group")}},
             {},
             help,
             QStringLiteral("{commands: [{name, summary, json}...]}"),
             QStringLiteral("help wav join")}};
}

Command const* findCommand(QStringList const& words)
{
    Command const* found = nullptr;
    for (Command const& command : allCommands()) {
        QStringList const name = command.name.split(QLatin1Char(' '));
        bool const opens = words.size() >= name.size() && std::equal(name.begin(), name.end(), words.begin());
        if (opens && (found == nullptr || command.name.size() > found->name.size())) {
            found = &command;
        }
    }
    return found;
}

QList<QCommandLineOption> optionsOf(Command const& command)
{
    return command.options +
           QList<QCommandLineOption>{
               {QStringLiteral("json"), QStringLiteral("Prints JSON, one object on a line")},
               {{QStringLiteral("h"), optionHelp()}, QStringLiteral("Shows this text")}};
}

ExitCode runCommand(QStringList const& arguments)
{
    QStringList const words = arguments.mid(1);
    QString const first = words.value(0);
    bool const isHelp = first == QStringLiteral("-h") || first == QStringLiteral("--help");
    if (first.isEmpty() || isHelp) {
        Console::printBytes(helpText().toUtf8());
        return isHelp ? ExitCode::Success : ExitCode::Usage;
    }
    if (first == QStringLiteral("-v") || first == QStringLiteral("--version")) {
        Console::print(QStringLiteral("spcore ") + QCoreApplication::applicationVersion());
        return ExitCode::Success;
    }
    if (first == QStringLiteral("--complete")) {
        for (QString const& line : completions(words.mid(1))) {
            Console::print(line);
        }
        return ExitCode::Success;
    }
    if (Command const* const command = findCommand(words)) {
        return run(*command, words);
    }
    QString const second = words.value(1);
    bool const wantsGroup = second == QStringLiteral("-h") || second == QStringLiteral("--help");
    if (!membersOf(first).isEmpty() && (second.isEmpty() || wantsGroup)) {
        Console::printBytes(groupHelp(first).toUtf8());
        return wantsGroup ? ExitCode::Success : ExitCode::Usage;
    }
    return usageError(unknownCommand(words), QStringLiteral("--help"));
}
