// Shows the desk, or an empty window if there is an argument or no desk, and ends with the first frame.
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlExtensionPlugin>
#include <QQuickWindow>
#include <cstdlib>

#ifdef IS_DESK
#include "WarmUp.h"

#include <appdata/ApplicationData.h>
#include <client/InstanceChannel.h>

Q_IMPORT_QML_PLUGIN(DeskPlugin)
#endif

int main(int argc, char** argv)
{
    QGuiApplication const application(argc, argv);
#ifdef IS_DESK
    Softphone::InstanceChannel channel(QStringLiteral("first-frame"));
    QFuture<DataSets::DataSet> names;
    if (argc == 1) {
        (void)channel.open();
        names = warmUp();
    }
#endif
    QQmlApplicationEngine engine;
    char const* const empty = "import QtQuick\nimport QtQuick.Controls.Basic\nimport QtQuick.Layouts\n"
                              "import QtQuick.Shapes\n"
                              "ApplicationWindow { width: 900; height: 640; visible: true }";
#ifdef IS_DESK
    if (argc > 1) {
        engine.loadData(empty);
    } else {
        ApplicationData::setApplicationData(names.takeResult());
        engine.setInitialProperties({{QStringLiteral("channel"), QVariant::fromValue(&channel)},
                                     {QStringLiteral("given"), QStringList()}});
        engine.load(QUrl(QStringLiteral("qrc:/qt-project.org/imports/Desk/qml/Main.qml")));
    }
#else
    engine.loadData(empty);
#endif
    auto* const window = qobject_cast<QQuickWindow*>(engine.rootObjects().value(0));
    if (window == nullptr) {
        return 1;
    }
    QObject::connect(
        window, &QQuickWindow::frameSwapped, window, [] { std::_Exit(0); }, Qt::DirectConnection);
    return QGuiApplication::exec();
}
