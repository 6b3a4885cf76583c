#include <appdata/ApplicationData.h>

#include <AssetsBundle.h>
#include <MessageRecorder.h>
#include <QSqlDatabase>
#include <RunTest.h>
#include <appdata/ApplicationDataHelpers.h>
#include <memory>

using DataSets::DataSet;

namespace {

QString name()
{
    return QStringLiteral("Name");
}

QString manufacturer()
{
    return QStringLiteral("Manufacturer");
}

QString version()
{
    return QStringLiteral("version");
}

QString text(DataSet const& record, QString const& key)
{
    return record.value<QString>(key).value_or(QStringLiteral("no text"));
}

void setApplication(QString const& name, QString const& manufacturer, QString const& version)
{
    QCoreApplication::setApplicationName(name);
    QCoreApplication::setOrganizationName(manufacturer);
    QCoreApplication::setApplicationVersion(version);
}

QStringList application()
{
    return {QCoreApplication::applicationName(), QCoreApplication::organizationName(),
            QCoreApplication::applicationVersion()};
}

} // namespace

class ApplicationDataTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void readsTheRecord();
    void givesAnEmptyRecord_data();
    void givesAnEmptyRecord();
    void setsAField_data();
    void setsAField();
    void setsNoFieldOfARecordThatTakesNone();
    void appliesTheRecord_data();
    void appliesTheRecord();
    void needsAllThreeSettings();
    void readsWhatItApplies();

private:
    std::unique_ptr<AssetsBundle> m_bundle;
};

void ApplicationDataTest::init()
{
    m_bundle = std::make_unique<AssetsBundle>(QCoreApplication::applicationDirPath());
}

void ApplicationDataTest::cleanup()
{
    m_bundle.reset();
}

void ApplicationDataTest::readsTheRecord()
{
    AssetsBundle::makeDatabase(m_bundle->database(), AssetsBundle::validStatements());
    auto const before = m_bundle->content();
    qsizetype const connections = QSqlDatabase::connectionNames().size();
    DataSet const record = ApplicationData::getApplicationData();
    QCOMPARE(record.count(), 3);
    QVERIFY(!record.isArray());
    QCOMPARE(text(record, name()), QStringLiteral("Client %1"));
    QCOMPARE(text(record, manufacturer()), QStringLiteral("Maker %2"));
    QCOMPARE(text(record, version()), QStringLiteral("1.5.0.1"));
    QCOMPARE(QSqlDatabase::connectionNames().size(), connections + 1);
    QCOMPARE(m_bundle->content(), before);
}

void ApplicationDataTest::givesAnEmptyRecord_data()
{
    QTest::addColumn<QStringList>("statements");
    QTest::addColumn<bool>("database");
    QString const noRow = QStringLiteral("DELETE FROM tbl_NAMES");
    QTest::newRow("no database") << QStringList{} << false;
    QTest::newRow("no names table") << QStringList{QStringLiteral("DROP TABLE tbl_NAMES")} << true;
    QTest::newRow("no row") << QStringList{noRow} << true;
    QTest::newRow("empty manufacturer")
        << QStringList{noRow, QStringLiteral("INSERT INTO tbl_NAMES VALUES ('A', '')")} << true;
    QTest::newRow("empty manufacturer in the first row")
        << QStringList{noRow, QStringLiteral("INSERT INTO tbl_NAMES VALUES ('A', ''), ('A', 'B')")} << true;
    QTest::newRow("NULL as name") << QStringList{noRow,
                                                 QStringLiteral("INSERT INTO tbl_NAMES VALUES (NULL, 'B')")}
                                  << true;
    QTest::newRow("no Manufacturer column")
        << QStringList{QStringLiteral("ALTER TABLE tbl_NAMES RENAME COLUMN Manufacturer TO x")} << true;
}

void ApplicationDataTest::givesAnEmptyRecord()
{
    QFETCH(QStringList, statements);
    QFETCH(bool, database);
    if (database) {
        AssetsBundle::makeDatabase(m_bundle->database(), AssetsBundle::validStatements() + statements);
    }
    auto const before = m_bundle->content();
    qsizetype const connections = QSqlDatabase::connectionNames().size();
    MessageRecorder recorder;
    DataSet const record = ApplicationData::getApplicationData();
    QVERIFY(record.data != nullptr);
    QVERIFY(record.isEmpty());
    QVERIFY(!record.isArray());
    QCOMPARE(recorder.messages(), QStringList());
    QCOMPARE(m_bundle->content(), before);
    // Without a file there is nothing to connect to.
    QCOMPARE(QSqlDatabase::connectionNames().size(), connections + (database ? 1 : 0));
}

void ApplicationDataTest::setsAField_data()
{
    QTest::addColumn<QString>("column");
    QTest::addColumn<bool>("set");
    QTest::newRow("Name") << QStringLiteral("Name") << true;
    QTest::newRow("any other column of the table") << QStringLiteral("Extra") << true;
    QTest::newRow("an empty text") << QStringLiteral("Blank") << false;
    QTest::newRow("a column that does not exist") << QStringLiteral("Missing") << false;
    QTest::newRow("no column") << QString() << false;
}

void ApplicationDataTest::setsAField()
{
    QFETCH(QString, column);
    AssetsBundle::makeDatabase(
        m_bundle->database(),
        AssetsBundle::validStatements() +
            QStringList{QStringLiteral("ALTER TABLE tbl_NAMES ADD COLUMN Extra TEXT DEFAULT 'more'"),
                        QStringLiteral("ALTER TABLE tbl_NAMES ADD COLUMN Blank TEXT DEFAULT ''")});
    QSqlDatabase database = ApplicationDataHelpers::getDBConnection();
    DataSet record = DataSet::createObject();
    record.setValue(QStringLiteral("other"), 1);
    QVERIFY(!ApplicationData::setField(database, column, record));
    QVERIFY(database.open());
    MessageRecorder recorder;
    QTEST(ApplicationData::setField(database, column, record), "set");
    database.close();
    QTEST(record.contains(column), "set");
    QCOMPARE(record.value<int>(QStringLiteral("other")).value_or(0), 1);
    QCOMPARE(recorder.messages(), QStringList());
}

void ApplicationDataTest::setsNoFieldOfARecordThatTakesNone()
{
    AssetsBundle::makeDatabase(m_bundle->database(), AssetsBundle::validStatements());
    QSqlDatabase database = ApplicationDataHelpers::getDBConnection();
    QVERIFY(database.open());
    DataSet null;
    QVERIFY(!ApplicationData::setField(database, name(), null));
    DataSet array = DataSet::createArray();
    QVERIFY(!ApplicationData::setField(database, name(), array));
    QVERIFY(array.isEmpty());
    database.close();
}

void ApplicationDataTest::appliesTheRecord_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QStringList>("expected");
    QStringList const before{QStringLiteral("n"), QStringLiteral("m"), QStringLiteral("v")};
    QString const value = QStringLiteral("new %1");
    QTest::newRow("Name") << name() << value << int(MultiType::String)
                          << QStringList{value, QStringLiteral("m"), QStringLiteral("v")};
    QTest::newRow("Manufacturer") << manufacturer() << value << int(MultiType::String)
                                  << QStringList{QStringLiteral("n"), value, QStringLiteral("v")};
    QTest::newRow("version") << version() << value << int(MultiType::String)
                             << QStringList{QStringLiteral("n"), QStringLiteral("m"), value};
    QTest::newRow("Name as an Int") << name() << value << int(MultiType::Int) << before;
    QTest::newRow("Name as bytes") << name() << value << int(MultiType::ByteArray) << before;
    QTest::newRow("an empty name") << name() << QString() << int(MultiType::String) << before;
    QTest::newRow("a key in another case")
        << QStringLiteral("name") << value << int(MultiType::String) << before;
}

void ApplicationDataTest::appliesTheRecord()
{
    QFETCH(QString, key);
    QFETCH(QString, value);
    QFETCH(int, kind);
    setApplication(QStringLiteral("n"), QStringLiteral("m"), QStringLiteral("v"));
    DataSet record = DataSet::createObject();
    if (kind == MultiType::Int) {
        record.setValue(key, 7);
    } else if (kind == MultiType::ByteArray) {
        record.setValue(key, value.toUtf8());
    } else {
        record.setValue(key, value);
    }
    QVERIFY(ApplicationData::setApplicationData(record));
    QTEST(application(), "expected");
}

void ApplicationDataTest::needsAllThreeSettings()
{
    DataSet const empty = DataSet::createObject();
    QString const set = QStringLiteral("set");
    setApplication(set, set, set);
    QVERIFY(ApplicationData::setApplicationData(empty));
    QVERIFY(ApplicationData::setApplicationData(DataSet()));
    setApplication(set, QString(), set);
    QVERIFY(!ApplicationData::setApplicationData(empty));
    setApplication(set, set, QString());
    QVERIFY(!ApplicationData::setApplicationData(empty));
    DataSet record = DataSet::createObject();
    record.setValue(version(), QStringLiteral("2"));
    QVERIFY(ApplicationData::setApplicationData(record));
}

void ApplicationDataTest::readsWhatItApplies()
{
    AssetsBundle::makeDatabase(m_bundle->database(), AssetsBundle::validStatements());
    setApplication(QString(), QString(), QString());
    QVERIFY(ApplicationData::setApplicationData(ApplicationData::getApplicationData()));
    QCOMPARE(application(), (QStringList{QStringLiteral("Client %1"), QStringLiteral("Maker %2"),
                                         QStringLiteral("1.5.0.1")}));
}

int main(int argc, char** argv)
{
    return runTest<ApplicationDataTest>(argc, argv);
}

#include "ApplicationDataTest.moc"
