#include "WarmUp.h"

#include <appdata/ApplicationData.h>
#include <client/InstanceChannel.h>

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlExtensionPlugin>

Q_IMPORT_QML_PLUGIN(DeskPlugin)

int main(int argc, char** argv)
{
    QGuiApplication const application(argc, argv);
    QGuiApplication::setDesktopFileName(QStringLiteral("example.cordaviva.desk"));

    QStringList const given = QGuiApplication::arguments().mid(1);
    Softphone::InstanceChannel channel(QStringLiteral("cordaviva-desk"));
    if (!channel.open() && channel.sendAndWait(given)) {
        return 0;
    }

    QFuture<DataSets::DataSet> names = warmUp();
    QQmlApplicationEngine engine;
    ApplicationData::setApplicationData(names.takeResult());
    engine.setInitialProperties(
        {{QStringLiteral("channel"), QVariant::fromValue(&channel)}, {QStringLiteral("given"), given}});
    engine.load(QUrl(QStringLiteral("qrc:/qt-project.org/imports/Desk/qml/Main.qml")));
    return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
