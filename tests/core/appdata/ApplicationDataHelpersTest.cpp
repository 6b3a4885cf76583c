#include <appdata/ApplicationDataHelpers.h>

#include <AssetsBundle.h>
#include <MessageRecorder.h>
#include <QDir>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QScopeGuard>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <RunTest.h>
#include <TestFiles.h>
#include <Valgrind.h>
#include <algorithm>
#include <atomic>
#include <sys/resource.h>
#include <thread>
#include <vector>

using ResourcesDefs::RcsLanguage;
using ResourcesDefs::RemoteType;
using Pairs = QList<std::pair<QString, QString>>;

namespace {

Pairs pairs(std::initializer_list<std::pair<char const*, char const*>> const& texts)
{
    Pairs result;
    for (auto const& [first, second] : texts) {
        result.emplaceBack(QString::fromUtf8(first), QString::fromUtf8(second));
    }
    return result;
}

int registeredFonts()
{
    int count = 0;
    while (!QFontDatabase::applicationFontFamilies(count).isEmpty()) {
        ++count;
    }
    return count;
}

QByteArray sampleFont()
{
    return TestFiles::read(QStringLiteral(SAMPLE_FONT));
}

/// An open connection to the assets database, closed with this object.
class OpenAssets
{
public:
    OpenAssets() { m_open = m_database.open(); }
    ~OpenAssets() { m_database.close(); }
    OpenAssets(OpenAssets const&) = delete;
    OpenAssets& operator=(OpenAssets const&) = delete;

    QSqlDatabase const& database() const { return m_database; }
    bool isOpen() const { return m_open; }

private:
    QSqlDatabase m_database = ApplicationDataHelpers::getDBConnection();
    bool m_open;
};

QList<EndpointData> endpoints()
{
    OpenAssets const assets;
    return ApplicationDataHelpers::getEndpoints(assets.database());
}

bool setsTheManufacturer()
{
    OpenAssets const assets;
    return ApplicationDataHelpers::setManufacturer(assets.database());
}

bool setsTheName()
{
    OpenAssets const assets;
    return ApplicationDataHelpers::setApplicationName(assets.database());
}

bool versionFits()
{
    OpenAssets const assets;
    return ApplicationDataHelpers::checkVersion(assets.database());
}

/// The names of the readers that find something in the database as it is.
QStringList workingReaders()
{
    std::pair<char const*, bool> const readers[] = {
        {"version", versionFits()},
        {"name", setsTheName()},
        {"manufacturer", setsTheManufacturer()},
        {"light", !ApplicationDataHelpers::getColorsPalette(true).isEmpty()},
        {"dark", !ApplicationDataHelpers::getColorsPalette(false).isEmpty()},
        {"italian", !ApplicationDataHelpers::getStringsLanguage(RcsLanguage::Italian).isEmpty()},
        {"english", !ApplicationDataHelpers::getStringsLanguage(RcsLanguage::English).isEmpty()},
        {"family", !ApplicationDataHelpers::getFontFamily().isEmpty()},
        {"endpoints", !endpoints().isEmpty()},
    };
    QStringList working;
    for (auto const& [name, works] : readers) {
        if (works) {
            working.append(QLatin1String(name));
        }
    }
    return working;
}

QStringList allReadersBut(QStringList const& broken)
{
    QStringList readers{QStringLiteral("version"), QStringLiteral("name"),   QStringLiteral("manufacturer"),
                        QStringLiteral("light"),   QStringLiteral("dark"),   QStringLiteral("italian"),
                        QStringLiteral("english"), QStringLiteral("family"), QStringLiteral("endpoints")};
    for (QString const& name : broken) {
        readers.removeOne(name);
    }
    return readers;
}

/// Another program that has the database \a file open, having run \a statements on it, as long as it lives.
class Writer
{
public:
    Writer(QString const& file, QStringList const& statements)
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connectionName());
        database.setDatabaseName(file);
        m_isDone = database.open() && std::ranges::all_of(statements, [&](QString const& statement) {
                       return QSqlQuery(database).exec(statement);
                   });
    }
    ~Writer() { QSqlDatabase::removeDatabase(connectionName()); }
    Writer(Writer const&) = delete;
    Writer& operator=(Writer const&) = delete;

    /// Whether every statement could be run.
    [[nodiscard]] bool isDone() const { return m_isDone; }

private:
    static QString connectionName() { return QStringLiteral("writer"); }

    bool m_isDone;
};

/// Statements that leave the application's new name in the write-ahead log.
QStringList renamingIntoALog()
{
    return {QStringLiteral("PRAGMA journal_mode=WAL"), QStringLiteral("PRAGMA wal_autocheckpoint=0"),
            QStringLiteral("UPDATE tbl_NAMES SET Name = 'Written last'")};
}

} // namespace

class ApplicationDataHelpersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void namesEachConnectionAnew();
    void checksTheVersion_data();
    void checksTheVersion();
    void setsTheNames_data();
    void setsTheNames();
    void readsTheList_data();
    void readsTheList();
    void preparesWithoutExecuting();
    void takesAnyOtherLanguageForEnglish();

    void readsTheFontFamily_data();
    void readsTheFontFamily();
    void registersTheFonts_data();
    void registersTheFonts();
    void registersNoFontsOfTheCurrentFolder();

    void buildsAnEndpoint_data();
    void buildsAnEndpoint();
    void buildsNoEndpointWithoutARow();
    void buildsNoEndpointWithoutAColumn_data();
    void buildsNoEndpointWithoutAColumn();
    void readsTheEndpoints();
    void acceptsOneProductionRow_data();
    void acceptsOneProductionRow();

    void survivesADamagedSchema_data();
    void survivesADamagedSchema();
    void survivesADamagedFile_data();
    void survivesADamagedFile();
    void readsAWriteAheadLogDatabaseWithoutALog();
    void readsWhatIsStillInTheWriteAheadLog_data();
    void readsWhatIsStillInTheWriteAheadLog();
    void addsOnlyTheIndexOfALogThatWasLeft();
    void waitsShortlyForALock();
    void readsNothingThatIsLocked();
    void takesNothingFromAClosedConnection();
    void closesEveryConnection();
    void readsInSeveralThreads();

private:
    void make(QStringList const& more = {}) const
    {
        AssetsBundle::makeDatabase(m_bundle->database(), AssetsBundle::validStatements() + more);
    }

    std::unique_ptr<AssetsBundle> m_bundle;
};

void ApplicationDataHelpersTest::registersNoFontsOfTheCurrentFolder()
{
    make({QStringLiteral("DELETE FROM tbl_FONTS"),
          QStringLiteral("INSERT INTO tbl_FONTS VALUES ('DejaVu Sans', 'a.ttf', 'a.ttf', 'a.ttf')")});
    m_bundle->write(QStringLiteral("assets/fonts"), QByteArray("no folder"));
    QTemporaryDir const current;
    QVERIFY(TestFiles::write(current.filePath(QStringLiteral("a.ttf")), sampleFont()));
    QString const before = QDir::currentPath();
    QDir::setCurrent(current.path());
    QString const family = ApplicationDataHelpers::getFontFamily();
    QDir::setCurrent(before);
    QCOMPARE(family, QStringLiteral("DejaVu Sans"));
    QCOMPARE(registeredFonts(), 0);
}

void ApplicationDataHelpersTest::init()
{
    m_bundle = std::make_unique<AssetsBundle>(QCoreApplication::applicationDirPath());
    QCoreApplication::setApplicationName(QStringLiteral("name before"));
    QCoreApplication::setOrganizationName(QStringLiteral("maker before"));
}

void ApplicationDataHelpersTest::cleanup()
{
    QFontDatabase::removeAllApplicationFonts();
    m_bundle.reset();
}

void ApplicationDataHelpersTest::namesEachConnectionAnew()
{
    QSqlDatabase const first = ApplicationDataHelpers::getDBConnection();
    QSqlDatabase const second = ApplicationDataHelpers::getDBConnection();
    for (QSqlDatabase const& connection : {first, second}) {
        QVERIFY(connection.isValid());
        QVERIFY(!connection.isOpen());
        QCOMPARE(connection.driverName(), QStringLiteral("QSQLITE"));
        QCOMPARE(connection.databaseName(), m_bundle->database());
        QCOMPARE(connection.connectionName().size(), 36);
        QVERIFY(QSqlDatabase::contains(connection.connectionName()));
    }
    QVERIFY(first.connectionName() != second.connectionName());
    QVERIFY(m_bundle->content().isEmpty());
}

void ApplicationDataHelpersTest::checksTheVersion_data()
{
    QTest::addColumn<QString>("rows");
    QTest::addColumn<bool>("fits");
    QTest::newRow("12") << QStringLiteral("(12)") << true;
    QTest::newRow("11") << QStringLiteral("(11)") << false;
    QTest::newRow("13") << QStringLiteral("(13)") << false;
    QTest::newRow("12 after another row") << QStringLiteral("(11), (12)") << false;
    QTest::newRow("12 before another row") << QStringLiteral("(12), (11)") << true;
    QTest::newRow("no row") << QString() << false;
    QTest::newRow("NULL") << QStringLiteral("(NULL)") << false;
    QTest::newRow("text that is no number") << QStringLiteral("('twelve')") << false;
    QTest::newRow("12 beyond 32 bits") << QStringLiteral("(4294967308)") << false;
}

void ApplicationDataHelpersTest::checksTheVersion()
{
    QFETCH(QString, rows);
    QStringList statements{QStringLiteral("DELETE FROM tbl_VERSION")};
    if (!rows.isEmpty()) {
        statements.append(QStringLiteral("INSERT INTO tbl_VERSION VALUES ") + rows);
    }
    make(statements);
    QTEST(versionFits(), "fits");
}

void ApplicationDataHelpersTest::setsTheNames_data()
{
    QTest::addColumn<QString>("rows");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("manufacturer");
    QString const nameBefore = QStringLiteral("name before");
    QString const makerBefore = QStringLiteral("maker before");
    QTest::newRow("both") << QStringLiteral("('Client', 'Maker')") << QStringLiteral("Client")
                          << QStringLiteral("Maker");
    QTest::newRow("the first row counts")
        << QStringLiteral("('A', 'B'), ('C', 'D')") << QStringLiteral("A") << QStringLiteral("B");
    QTest::newRow("empty manufacturer") << QStringLiteral("('A', '')") << QStringLiteral("A") << makerBefore;
    QTest::newRow("empty name") << QStringLiteral("('', 'B')") << nameBefore << QStringLiteral("B");
    QTest::newRow("NULLs") << QStringLiteral("(NULL, NULL)") << nameBefore << makerBefore;
    QTest::newRow("no row") << QString() << nameBefore << makerBefore;
    QTest::newRow("beyond ASCII") << QStringLiteral("('Caffè ☎', '公司')") << QStringLiteral("Caffè ☎")
                                  << QStringLiteral("公司");
}

void ApplicationDataHelpersTest::setsTheNames()
{
    QFETCH(QString, rows);
    QFETCH(QString, name);
    QFETCH(QString, manufacturer);
    QStringList statements{QStringLiteral("DELETE FROM tbl_NAMES")};
    if (!rows.isEmpty()) {
        statements.append(QStringLiteral("INSERT INTO tbl_NAMES VALUES ") + rows);
    }
    make(statements);
    QCOMPARE(setsTheName(), !name.endsWith(QStringLiteral("before")));
    QCOMPARE(QCoreApplication::applicationName(), name);
    QCOMPARE(setsTheManufacturer(), !manufacturer.endsWith(QStringLiteral("before")));
    QCOMPARE(QCoreApplication::organizationName(), manufacturer);
}

void ApplicationDataHelpersTest::readsTheList_data()
{
    QTest::addColumn<QString>("which");
    QTest::addColumn<Pairs>("expected");
    QTest::newRow("light palette") << QStringLiteral("light")
                                   << pairs({{"text", "#000000"}, {"page", "#fefefe"}, {"accent", "#0a7"}});
    QTest::newRow("dark palette") << QStringLiteral("dark")
                                  << pairs({{"text", "#ffffff"}, {"page", "#101010"}, {"accent", ""}});
    QTest::newRow("Italian strings") << QStringLiteral("italian")
                                     << pairs({{"call", "Chiama"}, {"why", "Perché?"}, {"none", ""}});
    QTest::newRow("English strings") << QStringLiteral("english")
                                     << pairs({{"call", "Call"}, {"why", "Why?"}, {"none", ""}});
}

void ApplicationDataHelpersTest::readsTheList()
{
    QFETCH(QString, which);
    make();
    if (which == QStringLiteral("light") || which == QStringLiteral("dark")) {
        QTEST(ApplicationDataHelpers::getColorsPalette(which == QStringLiteral("light")), "expected");
    } else {
        QTEST(ApplicationDataHelpers::getStringsLanguage(
                  which == QStringLiteral("italian") ? RcsLanguage::Italian : RcsLanguage::English),
              "expected");
    }
}

void ApplicationDataHelpersTest::preparesWithoutExecuting()
{
    make();
    OpenAssets const assets;
    auto const firstText = [](QSqlQuery query) {
        return !query.isActive() && query.exec() && query.next() ? query.value(1).toString() : QString();
    };
    QCOMPARE(ApplicationDataHelpers::fetchPalette(assets.database(), true).lastQuery(),
             QStringLiteral("SELECT Code, Light FROM tbl_PALETTE;"));
    QCOMPARE(firstText(ApplicationDataHelpers::fetchPalette(assets.database(), true)),
             QStringLiteral("#000000"));
    QCOMPARE(firstText(ApplicationDataHelpers::fetchPalette(assets.database(), false)),
             QStringLiteral("#ffffff"));
    QCOMPARE(firstText(ApplicationDataHelpers::fetchStrings(assets.database(), RcsLanguage::Italian)),
             QStringLiteral("Chiama"));
    QCOMPARE(firstText(ApplicationDataHelpers::fetchStrings(assets.database(), RcsLanguage::English)),
             QStringLiteral("Call"));
}

void ApplicationDataHelpersTest::takesAnyOtherLanguageForEnglish()
{
    make();
    Pairs const english = ApplicationDataHelpers::getStringsLanguage(RcsLanguage::English);
    QVERIFY(!english.isEmpty());
    QCOMPARE(ApplicationDataHelpers::getStringsLanguage(static_cast<RcsLanguage>(7)), english);
    QCOMPARE(ApplicationDataHelpers::getStringsLanguage(static_cast<RcsLanguage>(-1)), english);
}

void ApplicationDataHelpersTest::readsTheFontFamily_data()
{
    QTest::addColumn<QString>("rows");
    QTest::addColumn<QString>("family");
    QTest::newRow("all weights") << QStringLiteral("('Sample', 'l', 'r', 'm')") << QStringLiteral("Sample");
    QTest::newRow("the first row counts")
        << QStringLiteral("('First', 'l', 'r', 'm'), ('Second', 'l', 'r', 'm')") << QStringLiteral("First");
    QTest::newRow("no weight at all")
        << QStringLiteral("('Sample', NULL, NULL, NULL)") << QStringLiteral("Sample");
    QTest::newRow("no family") << QStringLiteral("(NULL, 'l', 'r', 'm')") << QString();
    QTest::newRow("no row") << QString() << QString();
}

void ApplicationDataHelpersTest::readsTheFontFamily()
{
    QFETCH(QString, rows);
    QStringList statements{QStringLiteral("DELETE FROM tbl_FONTS")};
    if (!rows.isEmpty()) {
        statements.append(QStringLiteral("INSERT INTO tbl_FONTS VALUES ") + rows);
    }
    make(statements);
    QTEST(ApplicationDataHelpers::getFontFamily(), "family");
    QCOMPARE(registeredFonts(), 0);
}

void ApplicationDataHelpersTest::registersTheFonts_data()
{
    QTest::addColumn<QString>("row");
    QTest::addColumn<int>("registered");
    QTest::newRow("all three weights") << QStringLiteral("'a.ttf', 'b %1.ttf', 'c.ttf'") << 3;
    QTest::newRow("Medium is NULL") << QStringLiteral("'a.ttf', 'b %1.ttf', NULL") << 2;
    QTest::newRow("Light is NULL") << QStringLiteral("NULL, 'b %1.ttf', 'c.ttf'") << 2;
    QTest::newRow("a missing file") << QStringLiteral("'a.ttf', 'missing.ttf', 'c.ttf'") << 2;
    QTest::newRow("a file that is no font") << QStringLiteral("'a.ttf', 'text.ttf', 'c.ttf'") << 2;
    QTest::newRow("an empty name") << QStringLiteral("'a.ttf', '', 'c.ttf'") << 2;
    QTest::newRow("a folder") << QStringLiteral("'a.ttf', 'folder', 'c.ttf'") << 2;
    QTest::newRow("a number") << QStringLiteral("'a.ttf', 7, 'c.ttf'") << 2;
    QTest::newRow("a file outside the fonts folder") << QStringLiteral("'a.ttf', '../out.ttf', 'c.ttf'") << 2;
}

void ApplicationDataHelpersTest::registersTheFonts()
{
    QFETCH(QString, row);
    QByteArray const bytes = sampleFont();
    for (char const* name : {"fonts/a.ttf", "fonts/b %1.ttf", "fonts/c.ttf", "out.ttf"}) {
        m_bundle->write(QStringLiteral("assets/") + QLatin1String(name), bytes);
    }
    m_bundle->write(QStringLiteral("assets/fonts/text.ttf"), QByteArray("no font"));
    QDir(m_bundle->path()).mkpath(QStringLiteral("assets/fonts/folder"));
    make({QStringLiteral("DELETE FROM tbl_FONTS"),
          QStringLiteral("INSERT INTO tbl_FONTS VALUES ('DejaVu Sans', ") + row + QLatin1Char(')')});
    MessageRecorder recorder;
    QCOMPARE(ApplicationDataHelpers::getFontFamily(), QStringLiteral("DejaVu Sans"));
    QTEST(registeredFonts(), "registered");
    QCOMPARE(recorder.messages(), QStringList());
}

void ApplicationDataHelpersTest::buildsAnEndpoint_data()
{
    QTest::addColumn<QString>("columns");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("ws");
    QString const urls = QStringLiteral(", 'a' AS ANALYTICS, 'p' AS PASSWORD_RESET, 'w' AS WHATS_NEW, "
                                        "'l' AS LOCKED_FEATURE_MORE_INFO, 'd' AS DISCOVER_MOBILE_OFFER");
    auto const row = [&urls](char const* tag, char const* type, char const* ws, int expected,
                             char const* url) {
        QTest::newRow(tag) << QLatin1String(type) + QStringLiteral(" AS TYPE, ") + QLatin1String(ws) +
                                  QStringLiteral(" AS WS") + urls
                           << expected << QString::fromLatin1(url);
    };
    row("production", "0", "'x'", 0, "x");
    row("development", "2", "'x'", 2, "x");
    row("a type of the application's own", "-7", "'x'", -7, "x");
    row("the type as text", "'1'", "'x'", 1, "x");
    row("the type beyond 32 bits", "4294967296", "'x'", -1, "x");
    row("an address that is NULL", "1", "NULL", 1, "");
    row("an address that is a number", "1", "5", 1, "5");
    QTest::newRow("columns in another order and case")
        << QStringLiteral("'extra' AS EXTRA, 'x' AS ws") + urls + QStringLiteral(", 1 AS Type") << 1
        << QStringLiteral("x");
}

void ApplicationDataHelpersTest::buildsAnEndpoint()
{
    QFETCH(QString, columns);
    make();
    OpenAssets const assets;
    QSqlQuery query(assets.database());
    QVERIFY(query.exec(QStringLiteral("SELECT ") + columns));
    QVERIFY(query.next());
    std::optional<EndpointData> const endpoint = ApplicationDataHelpers::buildEndPointData(query);
    QVERIFY(endpoint.has_value());
    QTEST(static_cast<int>(endpoint->getType()), "type");
    QTEST(endpoint->getWs(), "ws");
    QCOMPARE(endpoint->getAnalytics(), QStringLiteral("a"));
    QCOMPARE(endpoint->getPasswordReset(), QStringLiteral("p"));
    QCOMPARE(endpoint->getWhatsNew(), QStringLiteral("w"));
    QCOMPARE(endpoint->getLockedFeatureModeInfo(), QStringLiteral("l"));
    QCOMPARE(endpoint->getDiscoverMobileOffer(), QStringLiteral("d"));
}

void ApplicationDataHelpersTest::buildsNoEndpointWithoutARow()
{
    make();
    OpenAssets const assets;
    MessageRecorder recorder;
    QSqlQuery query(assets.database());
    QVERIFY(!ApplicationDataHelpers::buildEndPointData(query).has_value());
    QVERIFY(query.exec(QStringLiteral("SELECT * FROM tbl_ENDPOINTS")));
    QVERIFY(!ApplicationDataHelpers::buildEndPointData(query).has_value());
    while (query.next()) {
        QVERIFY(ApplicationDataHelpers::buildEndPointData(query).has_value());
    }
    QVERIFY(!ApplicationDataHelpers::buildEndPointData(query).has_value());
    QCOMPARE(recorder.messages(), QStringList());
}

void ApplicationDataHelpersTest::buildsNoEndpointWithoutAColumn_data()
{
    QTest::addColumn<QString>("missing");
    for (char const* column : {"TYPE", "WS", "ANALYTICS", "PASSWORD_RESET", "WHATS_NEW",
                               "LOCKED_FEATURE_MORE_INFO", "DISCOVER_MOBILE_OFFER"}) {
        QTest::newRow(column) << QString::fromLatin1(column);
    }
}

void ApplicationDataHelpersTest::buildsNoEndpointWithoutAColumn()
{
    QFETCH(QString, missing);
    make({QStringLiteral("ALTER TABLE tbl_ENDPOINTS RENAME COLUMN ") + missing + QStringLiteral(" TO x")});
    OpenAssets const assets;
    QSqlQuery query(assets.database());
    QVERIFY(query.exec(QStringLiteral("SELECT * FROM tbl_ENDPOINTS")));
    QVERIFY(query.next());
    QVERIFY(!ApplicationDataHelpers::buildEndPointData(query).has_value());
}

void ApplicationDataHelpersTest::readsTheEndpoints()
{
    make();
    QList<EndpointData> const rows = endpoints();
    QCOMPARE(rows.size(), 2);
    QCOMPARE(rows.at(0).getType(), RemoteType::Staging);
    QCOMPARE(rows.at(0).getDiscoverMobileOffer(), QStringLiteral("dm1"));
    EndpointData production;
    production.setType(RemoteType::Production);
    production.setWs(QStringLiteral("ws0"));
    production.setAnalytics(QStringLiteral("an0"));
    production.setPasswordReset(QStringLiteral("pr0"));
    production.setWhatsNew(QStringLiteral("wn0"));
    production.setLocketFeautreModeInfo(QStringLiteral("lf0"));
    production.setDiscoverMobileOffer(QStringLiteral("dm0"));
    QCOMPARE(rows.at(1), production);
}

void ApplicationDataHelpersTest::acceptsOneProductionRow_data()
{
    QTest::addColumn<QString>("types");
    QTest::addColumn<int>("count");
    QTest::newRow("one, alone") << QStringLiteral("0") << 1;
    QTest::newRow("one, last of four") << QStringLiteral("1 2 -1 0") << 4;
    QTest::newRow("two") << QStringLiteral("0 1 0") << 0;
    QTest::newRow("none") << QStringLiteral("1 2") << 0;
    QTest::newRow("no row") << QString() << 0;
}

void ApplicationDataHelpersTest::acceptsOneProductionRow()
{
    QFETCH(QString, types);
    QStringList statements{QStringLiteral("DELETE FROM tbl_ENDPOINTS")};
    for (QString const& type : types.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        statements.append(QStringLiteral("INSERT INTO tbl_ENDPOINTS VALUES (") + type +
                          QStringLiteral(", 'w', 'a', 'p', 'n', 'l', 'd')"));
    }
    make(statements);
    QTEST(static_cast<int>(endpoints().size()), "count");
}

void ApplicationDataHelpersTest::survivesADamagedSchema_data()
{
    QTest::addColumn<QString>("statement");
    QTest::addColumn<QStringList>("broken");
    auto const row = [](char const* tag, char const* statement, char const* broken) {
        QTest::newRow(tag) << QString::fromLatin1(statement)
                           << QString::fromLatin1(broken).split(QLatin1Char(' '));
    };
    row("no version table", "DROP TABLE tbl_VERSION", "version");
    row("no names table", "DROP TABLE tbl_NAMES", "name manufacturer");
    row("no palette table", "DROP TABLE tbl_PALETTE", "light dark");
    row("no strings table", "DROP TABLE tbl_STRINGS", "italian english");
    row("no fonts table", "DROP TABLE tbl_FONTS", "family");
    row("no endpoints table", "DROP TABLE tbl_ENDPOINTS", "endpoints");
    row("no version column", "ALTER TABLE tbl_VERSION RENAME COLUMN version TO x", "version");
    row("no Name column", "ALTER TABLE tbl_NAMES RENAME COLUMN Name TO x", "name");
    row("no Manufacturer column", "ALTER TABLE tbl_NAMES RENAME COLUMN Manufacturer TO x", "manufacturer");
    row("no Code column", "ALTER TABLE tbl_PALETTE RENAME COLUMN Code TO x", "light dark");
    row("no Light column", "ALTER TABLE tbl_PALETTE RENAME COLUMN Light TO x", "light");
    row("no Dark column", "ALTER TABLE tbl_PALETTE RENAME COLUMN Dark TO x", "dark");
    row("no Id column", "ALTER TABLE tbl_STRINGS RENAME COLUMN Id TO x", "italian english");
    row("no Italian column", "ALTER TABLE tbl_STRINGS RENAME COLUMN Italian TO x", "italian");
    row("no English column", "ALTER TABLE tbl_STRINGS RENAME COLUMN English TO x", "english");
    row("no Family column", "ALTER TABLE tbl_FONTS RENAME COLUMN Family TO x", "family");
    row("no Medium column", "ALTER TABLE tbl_FONTS RENAME COLUMN Medium TO x", "");
    for (char const* column : {"TYPE", "WS", "ANALYTICS", "PASSWORD_RESET", "WHATS_NEW",
                               "LOCKED_FEATURE_MORE_INFO", "DISCOVER_MOBILE_OFFER"}) {
        QByteArray const tag = QByteArray("no ") + column + " column";
        QByteArray const statement =
            QByteArray("ALTER TABLE tbl_ENDPOINTS RENAME COLUMN ") + column + " TO x";
        row(tag.constData(), statement.constData(), "endpoints");
    }
}

void ApplicationDataHelpersTest::survivesADamagedSchema()
{
    QFETCH(QString, statement);
    QFETCH(QStringList, broken);
    make({statement});
    QDir(m_bundle->path()).mkpath(QStringLiteral("assets/fonts"));
    auto const before = m_bundle->content();
    MessageRecorder recorder;
    QCOMPARE(workingReaders(), allReadersBut(broken));
    QCOMPARE(recorder.messages(), QStringList());
    QVERIFY(m_bundle->content() == before);
}

void ApplicationDataHelpersTest::survivesADamagedFile_data()
{
    QTest::addColumn<QString>("damage");
    QTest::addColumn<QStringList>("broken");
    QStringList const all = allReadersBut({});
    for (char const* damage : {"missing", "empty", "half of it", "its header", "cut off in the header",
                               "text", "a header before noise", "a folder", "a link that leads nowhere"}) {
        QTest::newRow(damage) << QString::fromLatin1(damage) << all;
    }
    QTest::newRow("a page of the strings overwritten")
        << QStringLiteral("strings page")
        << QStringList{QStringLiteral("italian"), QStringLiteral("english")};
    QTest::newRow("a page of the endpoints overwritten, after the production row")
        << QStringLiteral("endpoints page") << QStringList{QStringLiteral("endpoints")};
}

void ApplicationDataHelpersTest::survivesADamagedFile()
{
    QFETCH(QString, damage);
    QFETCH(QStringList, broken);
    QDir(m_bundle->path()).mkpath(QStringLiteral("assets/fonts"));
    QString const row = damage == QStringLiteral("endpoints page")
                            ? QStringLiteral("tbl_ENDPOINTS VALUES (1, '%1', '%1', 'p', 'w', 'l', 'd')")
                            : QStringLiteral("tbl_STRINGS VALUES ('id', '%1', '%1')");
    QString const insert = QStringLiteral("INSERT INTO ") + row.arg(QString(100, QLatin1Char('x')));
    make(QStringList(QStringLiteral("BEGIN")) + QStringList(500, insert) +
         QStringList(QStringLiteral("COMMIT")));
    QCOMPARE(workingReaders(), allReadersBut({}));
    QByteArray const valid = TestFiles::read(m_bundle->database());
    QByteArray overwritten = valid;
    overwritten.replace(valid.size() - 8 * 4096, 4096, QByteArray(4096, '\xff'));

    QMap<QString, QByteArray> const contents{
        {QStringLiteral("empty"), QByteArray()},
        {QStringLiteral("half of it"), valid.left(valid.size() / 2)},
        {QStringLiteral("its header"), valid.left(100)},
        {QStringLiteral("cut off in the header"), valid.left(19)},
        {QStringLiteral("text"), QByteArray("no database at all\n").repeated(400)},
        {QStringLiteral("a header before noise"), valid.left(100) + QByteArray(8'092, '\x5a')},
        {QStringLiteral("strings page"), overwritten},
        {QStringLiteral("endpoints page"), overwritten},
    };
    QVERIFY(QFile::remove(m_bundle->database()));
    if (contents.contains(damage)) {
        m_bundle->write(QStringLiteral("assets.db"), contents.value(damage));
    } else if (damage == QStringLiteral("a folder")) {
        QVERIFY(QDir().mkdir(m_bundle->database()));
    } else if (damage == QStringLiteral("a link that leads nowhere")) {
        QVERIFY(QFile::link(QStringLiteral("missing.db"), m_bundle->database()));
    }
    auto const before = m_bundle->content();
    MessageRecorder recorder;
    QCOMPARE(workingReaders(), allReadersBut(broken));
    QCOMPARE(recorder.messages(), QStringList());
    QVERIFY(m_bundle->content() == before);
    QCOMPARE(QCoreApplication::applicationName(), QStringLiteral("Client %1"));
}

// A reader of such a database would leave its log and the log's index beside it.
void ApplicationDataHelpersTest::readsAWriteAheadLogDatabaseWithoutALog()
{
    AssetsBundle::makeDatabase(m_bundle->database(), QStringList(QStringLiteral("PRAGMA journal_mode=WAL")) +
                                                         AssetsBundle::validStatements());
    QDir(m_bundle->path()).mkpath(QStringLiteral("assets/fonts"));
    auto const before = m_bundle->content();
    QVERIFY(before.size() == 3);
    QCOMPARE(workingReaders(), allReadersBut({}));
    QVERIFY(m_bundle->content() == before);
}

void ApplicationDataHelpersTest::readsWhatIsStillInTheWriteAheadLog_data()
{
    QTest::addColumn<bool>("isLink");
    QTest::newRow("of the file itself") << false;
    QTest::newRow("of the file that a link leads to") << true;
}

void ApplicationDataHelpersTest::readsWhatIsStillInTheWriteAheadLog()
{
    QFETCH(bool, isLink);
    QTemporaryDir const elsewhere;
    QString const file = isLink ? elsewhere.filePath(QStringLiteral("real.db")) : m_bundle->database();
    AssetsBundle::makeDatabase(file, AssetsBundle::validStatements());
    QVERIFY(!isLink || QFile::link(file, m_bundle->database()));
    Writer const writer(file, renamingIntoALog());
    QVERIFY(writer.isDone());
    QVERIFY(setsTheName());
    QCOMPARE(QCoreApplication::applicationName(), QStringLiteral("Written last"));
}

// A copy of a database that was in use, or what a killed writer leaves.
void ApplicationDataHelpersTest::addsOnlyTheIndexOfALogThatWasLeft()
{
    QTemporaryDir const elsewhere;
    QString const file = elsewhere.filePath(QStringLiteral("in-use.db"));
    AssetsBundle::makeDatabase(file, AssetsBundle::validStatements());
    {
        Writer const writer(file, renamingIntoALog());
        QVERIFY(writer.isDone());
        m_bundle->write(QStringLiteral("assets.db"), TestFiles::read(file));
        m_bundle->write(QStringLiteral("assets.db-wal"), TestFiles::read(file + QStringLiteral("-wal")));
    }
    auto before = m_bundle->content();
    QVERIFY(setsTheName());
    QCOMPARE(QCoreApplication::applicationName(), QStringLiteral("Written last"));
    auto after = m_bundle->content();
    after.remove(m_bundle->path(QStringLiteral("assets.db-shm")));
    QVERIFY(after == before);
}

void ApplicationDataHelpersTest::waitsShortlyForALock()
{
    make();
    QSqlDatabase database = ApplicationDataHelpers::getDBConnection();
    QVERIFY(database.open());
    QSqlQuery timeout(QStringLiteral("PRAGMA busy_timeout"), database);
    QVERIFY(timeout.next());
    QCOMPARE(timeout.value(0).toInt(), 100);
}

void ApplicationDataHelpersTest::readsNothingThatIsLocked()
{
    make();
    QDir(m_bundle->path()).mkpath(QStringLiteral("assets/fonts"));
    MessageRecorder recorder;
    {
        Writer const writer(m_bundle->database(), {QStringLiteral("BEGIN EXCLUSIVE")});
        QVERIFY(writer.isDone());
        QCOMPARE(workingReaders(), QStringList());
    }
    QCOMPARE(workingReaders(), allReadersBut({}));
    QCOMPARE(recorder.messages(), QStringList());
}

void ApplicationDataHelpersTest::takesNothingFromAClosedConnection()
{
    make();
    MessageRecorder recorder;
    for (QSqlDatabase const& database : {ApplicationDataHelpers::getDBConnection(), QSqlDatabase()}) {
        QVERIFY(!ApplicationDataHelpers::checkVersion(database));
        QVERIFY(!ApplicationDataHelpers::setManufacturer(database));
        QVERIFY(!ApplicationDataHelpers::setApplicationName(database));
        QVERIFY(ApplicationDataHelpers::getEndpoints(database).isEmpty());
        QVERIFY(!ApplicationDataHelpers::fetchPalette(database, true).exec());
        QVERIFY(!ApplicationDataHelpers::fetchStrings(database, RcsLanguage::English).exec());
    }
    QCOMPARE(recorder.messages(), QStringList());
}

void ApplicationDataHelpersTest::closesEveryConnection()
{
    make();
    m_bundle->write(QStringLiteral("assets/fonts/light.ttf"), sampleFont());
    rlimit usual{};
    QCOMPARE(getrlimit(RLIMIT_NOFILE, &usual), 0);
    rlimit const tight{256, usual.rlim_max};
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &tight), 0);
    auto const restore = qScopeGuard([&usual] { setrlimit(RLIMIT_NOFILE, &usual); });

    qsizetype const before = TestFiles::openDescriptors();
    auto const call = [](int number) {
        switch (number % 4) {
        case 0:
            return !ApplicationDataHelpers::getColorsPalette(true).isEmpty();
        case 1:
            return !ApplicationDataHelpers::getStringsLanguage(RcsLanguage::Italian).isEmpty();
        case 2:
            return !ApplicationDataHelpers::getFontFamily().isEmpty();
        default:
            return !endpoints().isEmpty();
        }
    };
    auto const answers = [&call](int calls) {
        int count = 0;
        for (int number = 0; number < calls; ++number) {
            count += call(number) ? 1 : 0;
        }
        return count;
    };
    int const many = sizeForThisRun(1'000);
    QCOMPARE(answers(2 * many), 2 * many);
    m_bundle->write(QStringLiteral("assets.db"), QByteArray("no database at all\n").repeated(400));
    QCOMPARE(answers(many), 0);
    QVERIFY(QFile::remove(m_bundle->database()));
    QCOMPARE(answers(many), 0);
    make({QStringLiteral("DELETE FROM tbl_STRINGS"), QStringLiteral("DELETE FROM tbl_FONTS"),
          QStringLiteral("DROP TABLE tbl_PALETTE"),
          QStringLiteral("ALTER TABLE tbl_ENDPOINTS RENAME COLUMN WS TO x")});
    QCOMPARE(answers(many), 0);
    QVERIFY(QFile::remove(m_bundle->database()));
    make();
    QCOMPARE(answers(4), 4);
    QCOMPARE(TestFiles::openDescriptors(), before);
}

void ApplicationDataHelpersTest::readsInSeveralThreads()
{
    make();
    m_bundle->write(QStringLiteral("assets/fonts/light.ttf"), sampleFont());
    std::atomic<int> complete = 0;
    auto const read = [&complete] {
        for (int i = 0; i < 20; ++i) {
            OpenAssets const assets;
            bool const all = ApplicationDataHelpers::checkVersion(assets.database()) &&
                             ApplicationDataHelpers::getEndpoints(assets.database()).size() == 2 &&
                             ApplicationDataHelpers::getColorsPalette(i % 2 == 0).size() == 3 &&
                             ApplicationDataHelpers::getStringsLanguage(RcsLanguage::English).size() == 3 &&
                             ApplicationDataHelpers::getFontFamily() == QStringLiteral("Family %1");
            complete += all ? 1 : 0;
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back(read);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(complete.load(), 8 * 20);
}

int main(int argc, char** argv)
{
    return runTest<ApplicationDataHelpersTest, QGuiApplication>(argc, argv);
}

#include "ApplicationDataHelpersTest.moc"
