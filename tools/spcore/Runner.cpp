#include "Runner.h"

#include "Commands.h"
#include "Console.h"

#include <QCommandLineParser>
#include <algorithm>

namespace {

QString helpText()
{
    QString text = QStringLiteral("Usage: spcore COMMAND [OPTION...] [ARGUMENT...]\n\n"
                                  "Looks at a softphone client's data and tries out the core library.\n\n"
                                  "Commands:\n");
    for (Command const& command : allCommands()) {
        text += QStringLiteral("  ") + command.name.leftJustified(18) + QLatin1Char(' ') + command.summary +
                QLatin1Char('\n');
    }
    text +=
        QStringLiteral("\nOptions:\n"
                       "  -h, --help         Shows this text, or that of one command: spcore COMMAND --help\n"
                       "  -v, --version      Shows the version\n");
    return text;
}

/// The command whose words open \a words, the longest name first.
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

bool takesMany(Argument const& argument)
{
    return argument.name.endsWith(QStringLiteral("...")) || argument.name.endsWith(QStringLiteral("...]"));
}

bool isOptional(Argument const& argument)
{
    return argument.name.startsWith(QLatin1Char('['));
}

bool fits(QList<Argument> const& expected, qsizetype given)
{
    auto const required = std::count_if(expected.begin(), expected.end(),
                                        [](Argument const& argument) { return !isOptional(argument); });
    bool const unbounded = std::any_of(expected.begin(), expected.end(), takesMany);
    return given >= required && (unbounded || given <= expected.size());
}

ExitCode usageError(QString const& message)
{
    Console::printError(message + QStringLiteral(" (see spcore --help)"));
    return ExitCode::Usage;
}

ExitCode run(Command const& command, QStringList const& words)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(command.summary);
    QCommandLineOption const help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Shows this text"));
    parser.addOption(help);
    parser.addOptions(command.options);
    for (Argument const& argument : command.arguments) {
        parser.addPositionalArgument(argument.name, argument.description, argument.name);
    }
    QString const program = QStringLiteral("spcore ") + command.name;
    QStringList const own = words.mid(command.name.split(QLatin1Char(' ')).size());
    bool const understood = parser.parse(QStringList(program) + own);
    if (parser.isSet(help)) {
        Console::print(
            parser.helpText().replace(QCoreApplication::arguments().constFirst(), program).trimmed());
        return ExitCode::Success;
    }
    if (!understood) {
        return usageError(command.name + QStringLiteral(": ") + parser.errorText());
    }
    if (!fits(command.arguments, parser.positionalArguments().size())) {
        return usageError(command.name + QStringLiteral(": wrong number of arguments"));
    }
    return command.run(parser);
}

} // namespace

ExitCode runCommand(QStringList const& arguments)
{
    QStringList const words = arguments.mid(1);
    QString const first = words.value(0);
    if (first.isEmpty() || first == QStringLiteral("-h") || first == QStringLiteral("--help")) {
        Console::printBytes(helpText().toUtf8());
        return first.isEmpty() ? ExitCode::Usage : ExitCode::Success;
    }
    if (first == QStringLiteral("-v") || first == QStringLiteral("--version")) {
        Console::print(QStringLiteral("spcore ") + QCoreApplication::applicationVersion());
        return ExitCode::Success;
    }
    if (Command const* const command = findCommand(words)) {
        return run(*command, words);
    }
    return usageError(QStringLiteral("unknown command \"%1\"").arg(first));
}
