// Writes the manual page of spcore from its table of commands.

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
    if (!command.json.isEmpty()) {
        entry += QStringLiteral(".TP\n.B \\-\\-json\n%1.\n").arg(roff(command.json));
    }
    return entry;
}

QString examples()
{
    QString text = QStringLiteral(".SH EXAMPLES\n");
    for (Command const& command : allCommands()) {
        text += QStringLiteral(".PP\n%1:\n.PP\n.RS\n.nf\nspcore %2\n.fi\n.RE\n")
                    .arg(roff(command.summary), roff(command.example));
    }
    return text;
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
        ".SH JSON\n"
        "Every command takes \\-\\-json and prints what stands beside the option above: one object on a line, and "
        "where it is said \"for each\", as many lines as there are. Errors are told on standard error all the "
        "same. A byte of a file name that is no UTF\\-8 is half of a surrogate pair, U+DC00 and the byte, as in "
        "Python.\n"
        ".SH FILES\n"
        "Wherever a file is read, \"\\-\" is standard input; \"./\\-\" is a file of that name.\n"
        ".SH EXIT STATUS\n"
        ".TP\n.B 0\nThe command did what it was asked.\n"
        ".TP\n.B 1\nIt could not, be it for one of several files, or its output was lost; lines on standard "
        "error say why.\n"
        ".TP\n.B 2\nThe command line is wrong.\n"
        ".TP\n.B 130, 143\nCtrl\\-C or a request to end (SIGTERM) ended it; nothing half done stays.\n"
        ".SH ENVIRONMENT\n"
        ".TP\n.B NO_COLOR\nWhen set, terminals get plain text.\n"
        ".TP\n.B http_proxy, https_proxy, all_proxy, no_proxy\nThe proxy for the net commands and doctor.\n");
    page += examples();
    return page;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication const application(argc, argv);
    QByteArray const text = manual().toUtf8();
    auto const size = static_cast<std::size_t>(text.size());
    return std::fwrite(text.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0 ? 0 : 1;
}
