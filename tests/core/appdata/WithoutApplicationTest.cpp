#include <appdata/ApplicationData.h>
#include <appdata/ApplicationDataHelpers.h>

#include <AssetsBundle.h>
#include <MessageRecorder.h>
#include <QCoreApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QSqlDatabase>
#include <QTest>
#include <QVersionNumber>
#include <TestEnvironment.h>
#include <memory>

/// Runs without an application object, without which Qt's font database ends the process, and so do databases
/// from version 6.5 on; the application has no name but the one that it is given.
class WithoutApplicationTest : public QObject
{
    Q_OBJECT

public:
    explicit WithoutApplicationTest(QString const& folder)
        : m_bundle(folder)
    {
        AssetsBundle::makeDatabase(m_bundle.database(), AssetsBundle::validStatements());
    }

private Q_SLOTS:
    void givesTheFamilyAllTheSame();
    void readsWhatQtLetsItRead();
    void needsTheApplicationsName();

private:
    AssetsBundle m_bundle;
    bool m_hasDatabases = QLibraryInfo::version() < QVersionNumber(6, 5);
};

void WithoutApplicationTest::givesTheFamilyAllTheSame()
{
    QVERIFY(QCoreApplication::instance() == nullptr);
    QVERIFY(QDir().mkpath(m_bundle.path(QStringLiteral("assets/fonts"))));
    QVERIFY(
        QFile::copy(QStringLiteral(SAMPLE_FONT), m_bundle.path(QStringLiteral("assets/fonts/light.ttf"))));
    MessageRecorder recorder;
    QCOMPARE(ApplicationDataHelpers::getFontFamily(),
             m_hasDatabases ? QStringLiteral("Family %1") : QString());
    QCOMPARE(recorder.messages(), QStringList());
}

void WithoutApplicationTest::readsWhatQtLetsItRead()
{
    QSqlDatabase connection = ApplicationDataHelpers::getDBConnection();
    bool const isOpen = m_hasDatabases && connection.open();
    QCOMPARE(isOpen, m_hasDatabases);
    QCOMPARE(ApplicationDataHelpers::checkVersion(connection), m_hasDatabases);
    QCOMPARE(!ApplicationDataHelpers::getColorsPalette(false).empty(), m_hasDatabases);
    QCOMPARE(!ApplicationDataHelpers::getEndpoints(connection).empty(), m_hasDatabases);
    QVERIFY(!ApplicationDataHelpers::buildEndPointData(QSqlQuery()).has_value());
    QCOMPARE(ApplicationData::getApplicationData().isEmpty(), !m_hasDatabases);
    connection = QSqlDatabase();
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
    auto const test = [&] {
        // The database is made with an application, which is gone again when the tests run.
        QCoreApplication const application(argc, argv);
        return std::make_unique<WithoutApplicationTest>(QCoreApplication::applicationDirPath());
    }();
    QCoreApplication::setApplicationName(QString());
    return QTest::qExec(test.get(), argc, argv);
}

#include "WithoutApplicationTest.moc"
