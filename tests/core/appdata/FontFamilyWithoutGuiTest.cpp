#include <appdata/ApplicationDataHelpers.h>

#include <AssetsBundle.h>
#include <MessageRecorder.h>
#include <QDir>
#include <RunTest.h>

/// Runs with an application that has no GUI, in which Qt's font database ends the process.
class FontFamilyWithoutGuiTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void givesTheFamilyAllTheSame();
};

void FontFamilyWithoutGuiTest::givesTheFamilyAllTheSame()
{
    AssetsBundle const bundle(QCoreApplication::applicationDirPath());
    AssetsBundle::makeDatabase(bundle.database(), AssetsBundle::validStatements());
    QVERIFY(QDir().mkpath(bundle.path(QStringLiteral("assets/fonts"))));
    QVERIFY(QFile::copy(QStringLiteral(SAMPLE_FONT), bundle.path(QStringLiteral("assets/fonts/light.ttf"))));
    MessageRecorder recorder;
    QCOMPARE(ApplicationDataHelpers::getFontFamily(), QStringLiteral("Family %1"));
    QCOMPARE(recorder.messages(), QStringList());
}

int main(int argc, char** argv)
{
    return runTest<FontFamilyWithoutGuiTest>(argc, argv);
}

#include "FontFamilyWithoutGuiTest.moc"
