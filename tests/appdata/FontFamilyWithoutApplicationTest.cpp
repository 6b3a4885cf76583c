#include <appdata/ApplicationDataHelpers.h>

#include <AssetsBundle.h>
#include <MessageRecorder.h>
#include <QCoreApplication>
#include <QDir>
#include <QTest>
#include <TestEnvironment.h>

/// Runs without an application object, in which Qt's font database ends the process.
class FontFamilyWithoutApplicationTest : public QObject
{
    Q_OBJECT

public:
    explicit FontFamilyWithoutApplicationTest(char const* program)
        : m_folder(QFileInfo(QFile::decodeName(program)).canonicalPath())
    {
    }

private Q_SLOTS:
    void givesTheFamilyAllTheSame();

private:
    QString m_folder;
};

void FontFamilyWithoutApplicationTest::givesTheFamilyAllTheSame()
{
    QVERIFY(QCoreApplication::instance() == nullptr);
    AssetsBundle const bundle(m_folder);
    AssetsBundle::makeDatabase(bundle.database(), AssetsBundle::validStatements());
    QVERIFY(QDir().mkpath(bundle.path(QStringLiteral("assets/fonts"))));
    QVERIFY(QFile::copy(QStringLiteral(SAMPLE_FONT), bundle.path(QStringLiteral("assets/fonts/light.ttf"))));
    MessageRecorder recorder;
    QCOMPARE(ApplicationDataHelpers::getFontFamily(), QStringLiteral("Family %1"));
    QCOMPARE(recorder.messages(), QStringList());
}

int main(int argc, char** argv)
{
    TestEnvironment const environment;
    FontFamilyWithoutApplicationTest test(argv[0]);
    return QTest::qExec(&test, argc, argv);
}

#include "FontFamilyWithoutApplicationTest.moc"
