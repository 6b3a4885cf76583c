#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

/// What the commands print, and what they know of the terminal they print to.
namespace Console {

/// Writes \a text to standard output as UTF-8, with a line break.
void print(QString const& text);

/// Writes \a bytes to standard output as they are.
void printBytes(QByteArray const& bytes);

/// Writes "spcore: " and \a message to standard error, as one line whatever \a message holds.
void printError(QString const& message);

/// \a text with blanks for its control characters: what others wrote must not steer the terminal.
QString harmless(QString text);

/// Whether standard output is a terminal.
bool isTerminal();

/// Whether standard output is a terminal that shows colours; NO_COLOR and TERM=dumb turn them off.
bool hasColours();

/// \a text between the escape sequences for bold when the terminal has colours, else \a text.
QString bold(QString const& text);

/// All of standard input, or of the file at \a path ("-" is standard input); empty when it cannot be read.
std::optional<QByteArray> readInput(QString const& path);

/// Shows how far an operation has come, on standard error and only where that is a terminal.
class ProgressBar
{
public:
    explicit ProgressBar(QString label);
    ~ProgressBar();
    ProgressBar(ProgressBar const&) = delete;
    ProgressBar& operator=(ProgressBar const&) = delete;

    /// Draws the bar when the percentage has changed; \a total 0 or less shows the count alone.
    void update(long long now, long long total);

private:
    QString m_label;
    long long m_shown = -1;
    bool m_visible;
};

} // namespace Console
