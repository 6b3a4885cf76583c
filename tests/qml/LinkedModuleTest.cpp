#include <QQmlComponent>
#include <QQmlEngine>
#include <RunTest.h>
#include <memory>

/// A program that links the module imports it from wherever it runs.
class LinkedModuleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isImportedWithoutAnImportPath()
    {
        QQmlEngine engine;
        QQmlComponent component(&engine);
        component.setData("import QtQml\nimport Softphone\nCallClock { status: LineStatus.Active }", {});
        std::unique_ptr<QObject> const clock(component.create());
        QVERIFY2(clock != nullptr, qPrintable(component.errorString()));
        QCOMPARE(clock->property("text").toString(), QStringLiteral("00:00"));
        QCOMPARE(clock->property("running").toBool(), true);
    }
};

int main(int argc, char** argv)
{
    return runTest<LinkedModuleTest>(argc, argv);
}

#include "LinkedModuleTest.moc"
