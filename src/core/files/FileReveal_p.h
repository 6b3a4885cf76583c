#pragma once

#include <QStringList>

/// Showing a file in the desktop's file manager.
namespace FileReveal {

struct Program
{
    QString path;
    QStringList arguments;
};

/// What shows the file \a path: the script program \a osascript where there is one, else the desktop's own
/// way.
[[nodiscard]] Program program(QString const& path,
                              QString const& osascript = QStringLiteral("/usr/bin/osascript"));

/// What shows the absolute \a path on a desktop without the script program.
[[nodiscard]] Program desktopProgram(QString const& path);

/// Starts \a program and does not wait for it; nothing of what it prints is shown.
void start(Program const& program);

} // namespace FileReveal
