#pragma once

#include "Command.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <optional>

/// What the commands print, and what they know of the terminal they print to.
namespace Console {

/// Writes \a text to standard output as UTF-8, with a line break.
void print(QString const& text);

/// Writes the file name \a name to standard output, byte by byte as the system has it, with a line break.
void printName(QString const& name);

/// Writes \a bytes to standard output as they are.
void printBytes(QByteArray const& bytes);

/// Lets whoever reads standard output have what was printed.
void flush();

/// Writes \a object or \a array to standard output as one line of JSON. What is no Unicode in a
/// file name becomes a replacement character, as JSON has no bytes.
void printJson(QJsonObject const& object);
void printJsonArray(QJsonArray const& array);

/// Writes "spcore: " and \a message to standard error, as one line whatever \a message holds and without the
/// logins and the queries of the addresses in it, which often hold keys.
void printError(QString const& message);

/// Ends a command that ended with \a code: what was printed goes out, and where it is lost, this says so and
/// makes a failure of a success. A reader that has gone is told nothing.
[[nodiscard]] ExitCode finish(ExitCode code);

/// \a text with blanks for its control characters: what others wrote must not steer the terminal.
QString harmless(QString text);

/// Whether standard output is a terminal.
bool isTerminal();

/// Whether standard output is a terminal that shows colours; NO_COLOR and TERM=dumb turn them off.
bool hasColours();

/// \a text between the escape sequences for bold when the terminal has colours, else \a text.
QString bold(QString const& text);

/// All of the file \a path ("-" is standard input). Where it cannot be read, this prints why and gives
/// nothing.
[[nodiscard]] std::optional<QByteArray> readInput(QString const& path);

} // namespace Console
