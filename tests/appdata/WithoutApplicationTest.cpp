#include <appdata/ApplicationData.h>
#include <appdata/ApplicationDataHelpers.h>

#include <AssetsBundle.h>
#include <MessageRecorder.h>
#include <QCoreApplication>
#include <QDir>
#include <QTest>
#include <TestEnvironment.h>

/// Runs without an application object, without which Qt's font database ends the process, and the application
/// has no name but the one that it is given.
class WithoutApplicationTest : public QObject
{
    Q_OBJECT

public:
    explicit WithoutApplicationTest(char const* program)
        : m_folder(QFileInfo(QFile::decodeName(program)).canonicalPath())
    {
    }

private Q_SLOTS:
    void givesTheFamilyAllTheSame();
    void needsTheApplicationsName();

private:
    QString m_folder;
};

void WithoutApplicationTest::givesTheFamilyAllTheSame()
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

void WithoutApplicationTest::needsTheApplicationsName()
{
    QString const set = QStringLiteral("set");
    QCoreApplication::setOrganizationName(set);
    QCoreApplication::setApplicationVersion(set);
    QCOMPARE(QCoreApplication::applicationName(), QString());
    DataSets::DataSet record = DataSets::DataSet::createObject();
    QVERIFY(!ApplicationData::setApplicationData(record));
    record.setValue(QStringLiteral("Name"), set);
    QVERIFY(ApplicationData::setApplicationData(record));
}

int main(int argc, char** argv)
{
    TestEnvironment const environment;
    WithoutApplicationTest test(argv[0]);
    return QTest::qExec(&test, argc, argv);
}

#include "WithoutApplicationTest.moc"
