#pragma once

#include <QCommandLineOption>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

class QCommandLineParser;

/// How a command ended, as its exit code.
enum class ExitCode : int {
    Success = 0,
    Failure = 1,       ///< the command was understood and could not be carried out
    Usage = 2,         ///< the command line is wrong
    Interrupted = 130, ///< Ctrl-C ended it
    Terminated = 143,  ///< a request to end (SIGTERM) did
};

/// Prints \a message as Console::printError() does and gives \a code back.
ExitCode failed(ExitCode code, QString const& message);

/// The same with what could not be done and the sentence that says why.
ExitCode failed(ExitCode code, QString const& problem, QString const& cause);

/// The same for \a file, one of several that a command works on. With --json the answer for it is an object
/// that holds its name under \a key, and \a cause as "error".
ExitCode fileFailed(QCommandLineParser const& parser, QString const& file, QString const& problem,
                    QString const& cause, QString const& key = QStringLiteral("file"));

/// One positional argument, for the usage line and the help text.
struct Argument
{
    QString name;        ///< "FILE", "[FILE]" or "FILE..."
    QString description; ///< one line, without a full stop
};

/// One command of the tool: what is typed, what its help says, and what runs.
///
/// Help, manual page and shell completion are all made from these records.
struct Command
{
    QString name;    ///< "assets", or a group and its command: "wav join"
    QString summary; ///< one line, without a full stop
    QList<Argument> arguments;
    QList<QCommandLineOption> options;
    ExitCode (*run)(QCommandLineParser const& parser);
    QString json;    ///< what --json prints, for the help: "{file, sha256}"
    QString example; ///< what may follow "spcore ", for the manual page
    /// The words that an option takes, by the option's long name; others take any.
    QMap<QString, QStringList> words = {};
};

/// Whether the user has asked for JSON. Every command has that option.
[[nodiscard]] bool wantsJson(QCommandLineParser const& parser);
