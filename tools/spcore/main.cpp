#include "Console.h"
#include "FileName.h"
#include "Runner.h"

#include <QGuiApplication>
#include <algorithm>
#include <csignal>
#include <span>

namespace {

/// The user sees the command's own messages; the toolkit's remarks about the machine are no help to them.
void dropMessage(QtMsgType, QMessageLogContext const&, QString const&) {}

} // namespace

int main(int argc, char** argv)
{
    qInstallMessageHandler(dropMessage);
    // A limit on the size of files is something to tell.
    std::signal(SIGXFSZ, SIG_IGN);
    // Fonts and images need an application with a GUI; the command shows no window and needs no display.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QStringList arguments;
    for (char const* const argument : std::span(argv, static_cast<std::size_t>(argc))) {
        arguments.append(FileName::fromNative(argument));
    }
    // The toolkit sees the program's name alone: none of the other words is meant for it.
    int own = std::min(argc, 1);
    QGuiApplication const application(own, argv);
    QCoreApplication::setApplicationVersion(QStringLiteral(SPCORE_VERSION));
    return static_cast<int>(Console::finish(runCommand(arguments)));
}
