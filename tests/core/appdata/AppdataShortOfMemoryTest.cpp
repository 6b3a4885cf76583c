#include <appdata/ApplicationData.h>
#include <appdata/ApplicationDataHelpers.h>

#include <AssetsBundle.h>
#include <ChildProcess.h>
#include <RunTest.h>

using ResourcesDefs::RcsLanguage;

/// What the readers of the assets database answer when no allocation succeeds any more. In a test of its own,
/// because the sanitizers need memory too.
class AppdataShortOfMemoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answersWithoutMemory_data();
    void answersWithoutMemory();
};

namespace {

/// What the checks work on, made while there is memory.
struct Given
{
    QSqlDatabase open = ApplicationDataHelpers::getDBConnection();
    DataSets::DataSet record = DataSets::DataSet::createObject();
    QString const name = QStringLiteral("Name");
    EndpointData endpoint;
    QSqlQuery row;

    Given()
    {
        open.open();
        endpoint.setWs(QStringLiteral("wss://example.org"));
        row = QSqlQuery(open);
        row.exec(QStringLiteral("SELECT * FROM tbl_ENDPOINTS"));
        row.next();
    }
};

using Check = bool (*)(Given& given);

bool connectionIsInvalid(Given&)
{
    return !ApplicationDataHelpers::getDBConnection().isValid();
}

bool versionDoesNotFit(Given& given)
{
    return !ApplicationDataHelpers::checkVersion(given.open);
}

bool namesAreNotSet(Given& given)
{
    return !ApplicationDataHelpers::setManufacturer(given.open) &&
           !ApplicationDataHelpers::setApplicationName(given.open);
}

bool listsAreEmpty(Given&)
{
    return ApplicationDataHelpers::getColorsPalette(true).isEmpty() &&
           ApplicationDataHelpers::getStringsLanguage(RcsLanguage::English).isEmpty();
}

bool familyIsEmpty(Given&)
{
    return ApplicationDataHelpers::getFontFamily().isEmpty();
}

bool endpointsAreEmpty(Given& given)
{
    return ApplicationDataHelpers::getEndpoints(given.open).isEmpty();
}

bool endpointIsNone(Given& given)
{
    return !ApplicationDataHelpers::buildEndPointData(given.row).has_value();
}

bool recordIsEmpty(Given&)
{
    return ApplicationData::getApplicationData().isEmpty();
}

bool fieldIsNotSet(Given& given)
{
    return !ApplicationData::setField(given.open, given.name, given.record) && given.record.isEmpty();
}

bool nothingIsPrinted(Given& given)
{
    return toString(given.endpoint) == nullptr;
}

} // namespace

void AppdataShortOfMemoryTest::answersWithoutMemory_data()
{
    QTest::addColumn<Check>("check");
    QTest::newRow("connection") << Check(connectionIsInvalid);
    QTest::newRow("version") << Check(versionDoesNotFit);
    QTest::newRow("names") << Check(namesAreNotSet);
    QTest::newRow("lists") << Check(listsAreEmpty);
    QTest::newRow("family") << Check(familyIsEmpty);
    QTest::newRow("endpoints") << Check(endpointsAreEmpty);
    QTest::newRow("endpoint") << Check(endpointIsNone);
    QTest::newRow("record") << Check(recordIsEmpty);
    QTest::newRow("field") << Check(fieldIsNotSet);
    QTest::newRow("printed") << Check(nothingIsPrinted);
}

void AppdataShortOfMemoryTest::answersWithoutMemory()
{
    QFETCH(Check, check);
    AssetsBundle const bundle(QCoreApplication::applicationDirPath());
    AssetsBundle::makeDatabase(bundle.database(), AssetsBundle::validStatements());
    // The first call resolves symbols and fills what is kept for all calls; its answer is another one.
    Given warmUp;
    check(warmUp);
    Given given;
    QCOMPARE(inChildProcess([&] { return takeAllMemory() && check(given) ? 0 : 1; }), 0);
}

int main(int argc, char** argv)
{
    return runTest<AppdataShortOfMemoryTest>(argc, argv);
}

#include "AppdataShortOfMemoryTest.moc"
