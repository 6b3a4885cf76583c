#include "FileReveal_p.h"

#include <QFileInfo>
#include <QProcess>

namespace {

/// \a text as it stands inside a quoted script text, where it cannot end it.
QString escaped(QString text)
{
    return text.replace(QLatin1Char('\\'), QStringLiteral("\\\\"))
        .replace(QLatin1Char('"'), QStringLiteral("\\\""));
}

} // namespace

FileReveal::Program FileReveal::program(QString const& path, QString const& osascript)
{
    if (!QFileInfo::exists(osascript)) {
        return desktopProgram(QFileInfo(path).absoluteFilePath());
    }
    QString const option = QStringLiteral("-e");
    return {osascript,
            {option,
             QStringLiteral("tell application \"Finder\" to reveal POSIX file \"") + escaped(path) +
                 QLatin1Char('"'),
             option, QStringLiteral("tell application \"Finder\" to activate")}};
}

void FileReveal::start(Program const& program)
{
    QProcess process;
    process.setProgram(program.path);
    process.setArguments(program.arguments);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.startDetached();
}
