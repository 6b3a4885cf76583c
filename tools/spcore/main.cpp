#include "Runner.h"

#include <QGuiApplication>

namespace {

/// The user sees the command's own messages; the toolkit's remarks about the machine are no help to them.
void dropMessage(QtMsgType, QMessageLogContext const&, QString const&) {}

} // namespace

int main(int argc, char** argv)
{
    qInstallMessageHandler(dropMessage);
    // Fonts and images need an application with a GUI; the command shows no window and needs no display.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QGuiApplication const application(argc, argv);
    QCoreApplication::setApplicationVersion(QStringLiteral(SPCORE_VERSION));
    return static_cast<int>(runCommand(QCoreApplication::arguments()));
}
