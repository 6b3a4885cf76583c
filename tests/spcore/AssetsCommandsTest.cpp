#include "SpcoreProcess.h"
#include "Terminal.h"

#include <AssetsBundle.h>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QTemporaryDir>
#include <QUrl>
#include <RunTest.h>
#include <TestFiles.h>

using TestFiles::read;

namespace {

QStringList assets(QStringList const& more = {})
{
    return QStringList(QStringLiteral("assets")) + more;
}

QStringList assetsIn(QString const& folder, QStringList const& more = {})
{
    return assets({QStringLiteral("--resources"), folder}) + more;
}

QJsonObject json(SpcoreResult const& result)
{
    return QJsonDocument::fromJson(result.out).object();
}

} // namespace

class AssetsCommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void showsTheSampleClient();
    void showsTheStringsOfALanguage_data();
    void showsTheStringsOfALanguage();
    void writesTheSampleAsJson();
    void readsAnotherFolder();
    void tellsWhichFontIsMissing();
    void leavesTheFolderAsItIs();
    void keepsControlCharactersFromTheTerminal();
    void showsColoursOnATerminalOnly();
    void refusesAWrongCommandLine_data();
    void refusesAWrongCommandLine();
    void refusesAnUnusableDatabase_data();
    void refusesAnUnusableDatabase();

private:
    QString folder() const { return m_root->path(); }
    QString database() const { return m_root->filePath(QStringLiteral("assets.db")); }
    void make(QStringList const& more = {}) const
    {
        AssetsBundle::makeDatabase(database(), AssetsBundle::validStatements() + more);
    }

    std::unique_ptr<QTemporaryDir> m_root;
};

void AssetsCommandsTest::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    QVERIFY(m_root->isValid());
}

void AssetsCommandsTest::cleanup()
{
    m_root.reset();
}

void AssetsCommandsTest::showsTheSampleClient()
{
    SpcoreResult const result = runSpcore(assets());
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.err, QByteArray());
    for (
        char const* line :
        {"Names\n", "  Application                Cordaviva Desk\n",
         "  Manufacturer               Officina Cordaviva\n", "  Schema version             fits\n",
         "Palette (light, dark)\n", "  background                 #FFFFFF   #14181C\n", "Strings (english)\n",
         "  call.answer                Answer\n", "  Family                     DejaVu Sans\n",
         "  DejaVuSans.ttf             registered\n", "  production\n", "  staging\n", "  development\n",
         "  {\"Manufacturer\":\"Officina Cordaviva\",\"Name\":\"Cordaviva Desk\",\"version\":\"1.5.0.1\"}\n"}) {
        QVERIFY2(result.out.contains(line), line);
    }
    QVERIFY(!result.out.contains('\x1b'));
}

void AssetsCommandsTest::showsTheStringsOfALanguage_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("italian") << QStringLiteral("italian")
                             << QByteArray("Strings (italian)\n  call.start                 Chiama\n");
    QTest::newRow("english") << QStringLiteral("english")
                             << QByteArray("Strings (english)\n  call.start                 Call\n");
}

void AssetsCommandsTest::showsTheStringsOfALanguage()
{
    QFETCH(QString, language);
    QFETCH(QByteArray, line);
    SpcoreResult const result = runSpcore(assets({QStringLiteral("--language"), language}));
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.out.contains(line), result.out.constData());
    SpcoreResult const machine =
        runSpcore(assets({QStringLiteral("--json"), QStringLiteral("--language=") + language}));
    QCOMPARE(json(machine).value(QStringLiteral("language")).toString(), language);
}

void AssetsCommandsTest::writesTheSampleAsJson()
{
    QJsonObject const english = json(runSpcore(assets({QStringLiteral("--json")})));
    QJsonObject const italian = json(runSpcore(
        assets({QStringLiteral("--json"), QStringLiteral("--language"), QStringLiteral("italian")})));
    QCOMPARE(english.value(QStringLiteral("versionFits")), QJsonValue(true));
    QCOMPARE(english.value(QStringLiteral("applicationData")).toObject(),
             (QJsonObject{{QStringLiteral("Name"), QStringLiteral("Cordaviva Desk")},
                          {QStringLiteral("Manufacturer"), QStringLiteral("Officina Cordaviva")},
                          {QStringLiteral("version"), QStringLiteral("1.5.0.1")}}));

    QJsonArray const palette = english.value(QStringLiteral("palette")).toArray();
    QVERIFY(palette.size() >= 20);
    QSet<QString> codes;
    for (QJsonValue const& role : palette) {
        codes.insert(role[QStringLiteral("code")].toString());
        QVERIFY(role[QStringLiteral("light")].toString().startsWith(QLatin1Char('#')));
        QVERIFY(role[QStringLiteral("dark")].toString().startsWith(QLatin1Char('#')));
    }
    QCOMPARE(codes.size(), palette.size());

    QJsonArray const strings = english.value(QStringLiteral("strings")).toArray();
    QJsonArray const stringhe = italian.value(QStringLiteral("strings")).toArray();
    QVERIFY(strings.size() >= 60);
    QCOMPARE(stringhe.size(), strings.size());
    for (qsizetype row = 0; row < strings.size(); ++row) {
        QCOMPARE(stringhe.at(row)[QStringLiteral("id")], strings.at(row)[QStringLiteral("id")]);
        QVERIFY(!strings.at(row)[QStringLiteral("text")].toString().isEmpty());
        QVERIFY(!stringhe.at(row)[QStringLiteral("text")].toString().isEmpty());
    }

    QJsonArray const endpoints = english.value(QStringLiteral("endpoints")).toArray();
    QCOMPARE(endpoints.size(), 3);
    QCOMPARE(std::count_if(
                 endpoints.begin(), endpoints.end(),
                 [](QJsonValue const& endpoint) { return endpoint[QStringLiteral("TYPE")].toInt() == 0; }),
             1);
    for (QJsonValue const& endpoint : endpoints) {
        for (QString const& column : endpoint.toObject().keys()) {
            QString const url = endpoint[column].toString();
            QVERIFY2(column == QStringLiteral("TYPE") ||
                         QUrl(url).host().endsWith(QStringLiteral(".example")),
                     qPrintable(url));
        }
    }

    QJsonObject const fonts = english.value(QStringLiteral("fonts")).toObject();
    QCOMPARE(fonts.value(QStringLiteral("family")).toString(), QStringLiteral("DejaVu Sans"));
    QJsonArray const files = fonts.value(QStringLiteral("files")).toArray();
    QCOMPARE(files.size(), 2);
    for (QJsonValue const& file : files) {
        QVERIFY(file[QStringLiteral("registered")].toBool());
    }
}

void AssetsCommandsTest::readsAnotherFolder()
{
    make();
    QJsonObject const document = json(runSpcore(assetsIn(folder(), {QStringLiteral("--json")})));
    QCOMPARE(document.value(QStringLiteral("applicationData"))[QStringLiteral("Name")].toString(),
             QStringLiteral("Client %1"));
    SpcoreProcess spcore;
    spcore.workingDirectory = folder();
    SpcoreResult const relative = spcore.run(assetsIn(QStringLiteral(".")));
    QCOMPARE(relative.exitCode, 0);
    QVERIFY2(relative.out.contains("Client %1"), relative.out.constData());
}

void AssetsCommandsTest::tellsWhichFontIsMissing()
{
    make();
    QDir(folder()).mkpath(QStringLiteral("assets/fonts"));
    QVERIFY(QFile::copy(QStringLiteral(SAMPLE_FONT),
                        m_root->filePath(QStringLiteral("assets/fonts/regular.ttf"))));
    SpcoreResult const result = runSpcore(assetsIn(folder()));
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.out.contains("  light.ttf                  not found, or no font\n"),
             result.out.constData());
    QVERIFY2(result.out.contains("  regular.ttf                registered\n"), result.out.constData());
}

void AssetsCommandsTest::leavesTheFolderAsItIs()
{
    make();
    QByteArray const before = read(database());
    QCOMPARE(runSpcore(assetsIn(folder())).exitCode, 0);
    QCOMPARE(QDir(folder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList(QStringLiteral("assets.db")));
    QVERIFY(read(database()) == before);
}

void AssetsCommandsTest::keepsControlCharactersFromTheTerminal()
{
    make(
        {QStringLiteral("INSERT INTO tbl_STRINGS VALUES ('bad' || char(27) || '[2J', 'x', 'a' || char(10, 7, "
                        "155) || 'z')")});
    SpcoreResult const result = runSpcore(assetsIn(folder()));
    QCOMPARE(result.exitCode, 0);
    QVERIFY(!result.out.contains('\x1b'));
    QVERIFY2(result.out.contains("  bad [2J                    a   z\n"), result.out.constData());
}

void AssetsCommandsTest::showsColoursOnATerminalOnly()
{
    Terminal const terminal;
    QVERIFY(terminal.isOpen());
    auto const outputIn = [&terminal](QProcessEnvironment const& environment) {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setStandardOutputFile(terminal.name(), QIODevice::Append);
        process.start(QStringLiteral(SPCORE_PROGRAM), assets());
        return terminal.readAll(process);
    };
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TERM"), QStringLiteral("xterm-256color"));
    environment.remove(QStringLiteral("NO_COLOR"));
    QByteArray const coloured = outputIn(environment);
    QVERIFY2(coloured.contains("\x1b[48;2;20;24;28m    \x1b[0m #14181C"), coloured.constData());
    QVERIFY2(coloured.contains("\x1b[1mEndpoints\x1b[0m"), coloured.constData());

    environment.insert(QStringLiteral("NO_COLOR"), QStringLiteral("1"));
    QByteArray const plain = outputIn(environment);
    QVERIFY2(plain.contains("#FFFFFF   #14181C"), plain.constData());
    QVERIFY(!plain.contains('\x1b'));
}

void AssetsCommandsTest::refusesAWrongCommandLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("an option that does not exist") << QStringList{QStringLiteral("--nonsense")};
    QTest::newRow("a language that does not exist")
        << QStringList{QStringLiteral("--language"), QStringLiteral("latin")};
    QTest::newRow("no language") << QStringList{QStringLiteral("--language")};
    QTest::newRow("no folder") << QStringList{QStringLiteral("--resources")};
    QTest::newRow("an argument") << QStringList{QStringLiteral("more")};
}

void AssetsCommandsTest::refusesAWrongCommandLine()
{
    QFETCH(QStringList, arguments);
    SpcoreResult const result = runSpcore(assets(arguments));
    QVERIFY2(result.failedWithOneLine(2), result.err.constData());
}

void AssetsCommandsTest::refusesAnUnusableDatabase_data()
{
    QTest::addColumn<QString>("damage");
    QTest::addColumn<QByteArray>("reason");
    auto const row = [](char const* damage, char const* reason) {
        QTest::newRow(damage) << QString::fromLatin1(damage) << QByteArray(reason);
    };
    row("no file", "there is no assets database ");
    row("a folder", "there is no assets database ");
    row("empty", " lacks a schema version that fits, the names");
    row("text", " lacks a schema version that fits, the names");
    row("UPDATE tbl_VERSION SET version = 13", " lacks a schema version that fits\n");
    row("UPDATE tbl_NAMES SET Manufacturer = ''", " lacks the names\n");
    row("ALTER TABLE tbl_PALETTE RENAME COLUMN Dark TO x", " lacks the palette\n");
    row("DELETE FROM tbl_STRINGS", " lacks the strings\n");
    row("DROP TABLE tbl_FONTS", " lacks the font\n");
    row("UPDATE tbl_ENDPOINTS SET TYPE = 0", " lacks endpoints with one production row\n");
}

void AssetsCommandsTest::refusesAnUnusableDatabase()
{
    QFETCH(QString, damage);
    QFETCH(QByteArray, reason);
    if (damage == QStringLiteral("a folder")) {
        QVERIFY(QDir().mkdir(database()));
    } else if (damage == QStringLiteral("empty") || damage == QStringLiteral("text")) {
        QFile file(database());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(damage == QStringLiteral("text") ? QByteArray(5'000, 'x') : QByteArray());
    } else if (damage != QStringLiteral("no file")) {
        make({damage});
    }
    QByteArray const before = read(database());
    for (QStringList const& more : {QStringList(), QStringList(QStringLiteral("--json"))}) {
        SpcoreResult const result = runSpcore(assetsIn(folder(), more));
        QVERIFY2(result.failedWithOneLine(1), result.err.constData());
        QVERIFY2(result.err.contains(reason), result.err.constData());
        QVERIFY2(result.err.contains(QFile::encodeName(database())), result.err.constData());
    }
    QVERIFY(read(database()) == before);
}

int main(int argc, char** argv)
{
    return runTest<AssetsCommandsTest>(argc, argv);
}

#include "AssetsCommandsTest.moc"
