// Writes the manual page or the shell completion of spcore from its table of commands.

#include "Commands.h"

#include <QCoreApplication>
#include <QStringList>
#include <cstdio>

namespace {

QString roff(QString text)
{
    text.replace(QLatin1Char('\\'), QStringLiteral("\\e")).replace(QLatin1Char('-'), QStringLiteral("\\-"));
    bool const looksLikeRequest = text.startsWith(QLatin1Char('.')) || text.startsWith(QLatin1Char('\''));
    return looksLikeRequest ? QStringLiteral("\\&") + text : text;
}

/// "-h, --help" of an option, with the name of its value.
QString spelling(QCommandLineOption const& option)
{
    QStringList names;
    for (QString const& name : option.names()) {
        names += (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
    }
    QString const value = option.valueName().isEmpty() ? QString() : QLatin1Char(' ') + option.valueName();
    return names.join(QStringLiteral(", ")) + value;
}

QString synopsis(Command const& command)
{
    QString line = command.name;
    if (!command.options.isEmpty()) {
        line += QStringLiteral(" [OPTION...]");
    }
    for (Argument const& argument : command.arguments) {
        line += QLatin1Char(' ') + argument.name;
    }
    return line;
}

QString manualEntry(Command const& command)
{
    QString entry = QStringLiteral(".SS \"%1\"\n%2.\n").arg(roff(synopsis(command)), roff(command.summary));
    for (Argument const& argument : command.arguments) {
        entry += QStringLiteral(".TP\n.I %1\n%2.\n").arg(roff(argument.name), roff(argument.description));
    }
    for (QCommandLineOption const& option : command.options) {
        entry += QStringLiteral(".TP\n.B %1\n%2.\n").arg(roff(spelling(option)), roff(option.description()));
    }
    return entry;
}

QString manual()
{
    QString page =
        QStringLiteral(".TH SPCORE 1 \"\" \"softphone-core %1\"\n"
                       ".SH NAME\n"
                       "spcore \\- look at a softphone client's data and try out the core library\n"
                       ".SH SYNOPSIS\n"
                       ".B spcore\n"
                       ".I COMMAND\n"
                       "[\\fIOPTION\\fR...] [\\fIARGUMENT\\fR...]\n"
                       ".SH COMMANDS\n")
            .arg(roff(QStringLiteral(SPCORE_VERSION)));
    for (Command const& command : allCommands()) {
        page += manualEntry(command);
    }
    page += QStringLiteral(
        ".SH OPTIONS\n"
        ".TP\n.B \\-h, \\-\\-help\nShows the commands, or the help of the command it follows.\n"
        ".TP\n.B \\-v, \\-\\-version\nShows the version.\n"
        ".SH EXIT STATUS\n"
        ".TP\n.B 0\nThe command did what it was asked.\n"
        ".TP\n.B 1\nIt could not; one line on standard error says why.\n"
        ".TP\n.B 2\nThe command line is wrong.\n"
        ".TP\n.B 130, 143\nCtrl\\-C or a request to end (SIGTERM) ended a transfer; nothing of it stays.\n"
        ".SH ENVIRONMENT\n"
        ".TP\n.B NO_COLOR\nWhen set, terminals get plain text.\n");
    return page;
}

QString completionCase(Command const& command)
{
    QStringList words{QStringLiteral("--help")};
    for (QCommandLineOption const& option : command.options) {
        words += QStringLiteral("--") + option.names().constLast();
    }
    return QStringLiteral("    \"%1\"*) options=\"%2\" ;;\n").arg(command.name, words.join(QLatin1Char(' ')));
}

/// The first words, and the second words of every group.
QString wordTable()
{
    QStringList groups;
    QStringList cases;
    for (Command const& command : allCommands()) {
        QString const group = command.name.section(QLatin1Char(' '), 0, 0);
        if (groups.contains(group)) {
            continue;
        }
        groups += group;
        QStringList members;
        for (Command const& other : allCommands()) {
            if (other.name.startsWith(group + QLatin1Char(' '))) {
                members += other.name.section(QLatin1Char(' '), 1);
            }
        }
        if (!members.isEmpty()) {
            cases += QStringLiteral("    %1) members=\"%2\" ;;\n").arg(group, members.join(QLatin1Char(' ')));
        }
    }
    return QStringLiteral("    local groups=\"%1\" members=\"\"\n"
                          "    case ${COMP_WORDS[1]} in\n%2    esac\n")
        .arg(groups.join(QLatin1Char(' ')), cases.join(QString()));
}

QString bashCompletion()
{
    QString script = QStringLiteral("# Completion of spcore's commands and options, for bash.\n"
                                    "_spcore() {\n"
                                    "    local word=${COMP_WORDS[COMP_CWORD]} options=\"--help\"\n");
    script += wordTable();
    script += QStringLiteral("    case \"${COMP_WORDS[*]:1}\" in\n");
    for (Command const& command : allCommands()) {
        script += completionCase(command);
    }
    script += QStringLiteral("    esac\n"
                             "    if [[ $word == -* ]]; then\n"
                             "        COMPREPLY=($(compgen -W \"$options\" -- \"$word\"))\n"
                             "    elif ((COMP_CWORD == 1)); then\n"
                             "        COMPREPLY=($(compgen -W \"$groups\" -- \"$word\"))\n"
                             "    elif ((COMP_CWORD == 2)) && [[ -n $members ]]; then\n"
                             "        COMPREPLY=($(compgen -W \"$members\" -- \"$word\"))\n"
                             "    else\n"
                             "        COMPREPLY=($(compgen -f -- \"$word\"))\n"
                             "    fi\n"
                             "}\n"
                             "complete -o filenames -F _spcore spcore\n");
    return script;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    QString const wanted = QCoreApplication::arguments().value(1);
    if (wanted != QStringLiteral("man") && wanted != QStringLiteral("bash")) {
        std::fputs("usage: spcore-docs man|bash\n", stderr);
        return 2;
    }
    QByteArray const text = (wanted == QStringLiteral("man") ? manual() : bashCompletion()).toUtf8();
    return std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout) ==
                   static_cast<std::size_t>(text.size())
               ? 0
               : 1;
}
