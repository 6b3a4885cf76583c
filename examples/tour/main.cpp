// One walk through the library as a client takes it, on the sample data.

#include "Steps.h"

#include <QCommandLineParser>
#include <QDir>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <cstdio>

namespace {

/// The report is what is to be seen; the toolkit's remarks about the machine are not.
void dropMessage(QtMsgType, QMessageLogContext const&, QString const&) {}

} // namespace

int main(int argc, char** argv)
{
    qInstallMessageHandler(dropMessage);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QGuiApplication const application(argc, argv);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Walks through the library on the sample data."));
    parser.addHelpOption();
    parser.addOption({QStringLiteral("json"), QStringLiteral("Writes the report as JSON")});
    parser.addPositionalArgument(QStringLiteral("CONTACTS"), QStringLiteral("Folder of contact files"));
    parser.process(application);
    if (parser.positionalArguments().size() != 1) {
        parser.showHelp(2);
    }

    bool const asJson = parser.isSet(QStringLiteral("json"));
    QTemporaryDir const scratch;
    Report report(!asJson);
    showAssets(report);
    showDirectory(report, QDir(parser.positionalArguments().constFirst()));
    showCall(report);
    showChat(report);
    showRecordings(report, QDir(scratch.path()));
    showSettings(report);
    showTransfer(report, QDir(scratch.path()));
    if (asJson) {
        std::fputs(report.toJson().constData(), stdout);
    }
    return report.succeeded() ? 0 : 1;
}
