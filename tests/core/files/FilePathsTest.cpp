#include <files/FilePaths.h>

#include <MessageRecorder.h>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QUrl>
#include <RunTest.h>
#include <TestFiles.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

class FilePathsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void knowsTheApplication();
    void findsTheResourcesBesideTheApplication();
    void staysWhereItIsWithoutResources();

    void makesTheUsersFolders();
    void givesNoUserFolderThatCannotBeMade();
    void tempPathEndsWithOrganisationAndApplication_data();
    void tempPathEndsWithOrganisationAndApplication();

    void makesFoldersLevelByLevel_data();
    void makesFoldersLevelByLevel();
    void keepsTheLevelsMadeBeforeAFailure();
    void makesTheSameFolderFromManyThreads();
    void makesASubfolder_data();
    void makesASubfolder();

    void namesAFile_data();
    void namesAFile();
    void numbersATakenName_data();
    void numbersATakenName();
    void looksForTakenNamesInTheCurrentFolder();

    void buildsFilePaths();
    void buildsFilePathsInMadeFolders();
    void takesARelativeFolderTwoWays();
    void buildsNoPathInAFolderThatCannotBeMade();
    void joinsPaths_data();
    void joinsPaths();
    void findsAFileAsItStandsOrBesideTheApplication();
    void findsTheFolderOfAFile_data();
    void findsTheFolderOfAFile();

    void takesPathsApart_data();
    void takesPathsApart();
    void takesUrlsApart_data();
    void takesUrlsApart();
    void knowsNetworkPaths_data();
    void knowsNetworkPaths();
    void prependsTheFileProtocol_data();
    void prependsTheFileProtocol();
    void changesTheNameInAPath_data();
    void changesTheNameInAPath();
    void removesASubfolder_data();
    void removesASubfolder();

    void answersAboutExistence();
    void measuresFiles();

    void searchesSubfoldersFirst();
    void searchesInTheOrderOfNames();
    void searchesForTheExactName();
    void endsOnLinkLoops();
    void visitsNoFolderTwice();
    void searchesDeepFolders();

    void stampsAFileWithNow();
    void refusesNamesThatNoFileCanHave_data();
    void refusesNamesThatNoFileCanHave();
    void makesSafeNames_data();
    void makesSafeNames();
    void safeNamesCanBeWritten();
    void putsPathsTogetherWhateverTheFolder_data();
    void putsPathsTogetherWhateverTheFolder();

private:
    QString path(QString const& name) const { return m_root->filePath(name); }
    void write(QString const& name, QByteArray const& content = QByteArray("x")) const;

    std::unique_ptr<QTemporaryDir> m_root;
    QString m_startFolder;
};

void FilePathsTest::init()
{
    m_startFolder = QDir::currentPath();
    m_root = std::make_unique<QTemporaryDir>();
    QVERIFY(m_root->isValid());
    QCoreApplication::setOrganizationName(QStringLiteral("Maker %1"));
    QCoreApplication::setApplicationName(QStringLiteral("Client %2"));
}

void FilePathsTest::cleanup()
{
    QDir::setCurrent(m_startFolder);
    m_root.reset();
}

void FilePathsTest::write(QString const& name, QByteArray const& content) const
{
    QVERIFY(QDir().mkpath(QFileInfo(path(name)).path()));
    QVERIFY(TestFiles::write(path(name), content));
}

void FilePathsTest::knowsTheApplication()
{
    QCOMPARE(FilePaths::getAppPath(), QCoreApplication::applicationDirPath());
    QCOMPARE(FilePaths::getAppFilename(), QStringLiteral("filepathstest"));
}

// The test's own program stands in a folder of its own in the build tree, whose sibling "Resources" it may
// make and remove.
void FilePathsTest::findsTheResourcesBesideTheApplication()
{
    QString const above = QFileInfo(QCoreApplication::applicationDirPath()).path();
    QVERIFY(QDir().mkpath(above + QStringLiteral("/Resources/assets")));
    QString const resources = FilePaths::getResourcePath();
    QString const assets = FilePaths::getAssetsPath();
    QString const icon = FilePaths::getAppIconPath();
    QVERIFY(QDir(above + QStringLiteral("/Resources")).removeRecursively());
    QCOMPARE(resources, above + QStringLiteral("/Resources"));
    QCOMPARE(assets, above + QStringLiteral("/Resources/assets/"));
    QCOMPARE(icon, above + QStringLiteral("/Resources/appIcon.png"));
}

void FilePathsTest::staysWhereItIsWithoutResources()
{
    QString const above = QFileInfo(QCoreApplication::applicationDirPath()).path();
    QVERIFY(!QDir(above + QStringLiteral("/Resources")).exists());
    QCOMPARE(FilePaths::getResourcePath(), above);
    QCOMPARE(FilePaths::getAssetsPath(), above + QLatin1Char('/'));
    QCOMPARE(FilePaths::getAppIconPath(), above + QStringLiteral("/appIcon.png"));

    QVERIFY(QDir(above).mkdir(QStringLiteral("Resources")));
    QString const assets = FilePaths::getAssetsPath();
    QVERIFY(QDir(above).rmdir(QStringLiteral("Resources")));
    QCOMPARE(assets, above + QStringLiteral("/Resources/"));
}

void FilePathsTest::makesTheUsersFolders()
{
    QString const expected =
        qEnvironmentVariable("HOME") + QStringLiteral("/.local/share/Maker %1/Client %2");
    QDir(expected).removeRecursively();
    QCOMPARE(FilePaths::buildDataDir(), expected);
    QVERIFY(QDir(expected).exists());
    QDir(expected).removeRecursively();
    QCOMPARE(FilePaths::buildLocalDataDir(), expected);
    QVERIFY(QDir(expected).exists());
    QCOMPARE(FilePaths::buildDataPath(QStringLiteral("a/b.db")), expected + QStringLiteral("/a/b.db"));
    QCOMPARE(FilePaths::buildLocalDataPath(QStringLiteral("b.db")), expected + QStringLiteral("/b.db"));
    QVERIFY(!QFile::exists(expected + QStringLiteral("/a")));
}

void FilePathsTest::givesNoUserFolderThatCannotBeMade()
{
    write(QStringLiteral("file"));
    QString const home = qEnvironmentVariable("HOME");
    QString const temp = qEnvironmentVariable("TMPDIR");
    qputenv("HOME", QFile::encodeName(path(QStringLiteral("file"))));
    qputenv("TMPDIR", QFile::encodeName(path(QStringLiteral("file"))));
    QStringList const results{FilePaths::buildDataDir(), FilePaths::buildLocalDataDir(),
                              FilePaths::buildTempPath(), FilePaths::buildDataPath(QStringLiteral("a")),
                              FilePaths::buildLocalDataPath(QStringLiteral("a"))};
    qputenv("HOME", home.toUtf8());
    qputenv("TMPDIR", temp.toUtf8());
    QCOMPARE(results, QStringList(5, QString()));
}

void FilePathsTest::tempPathEndsWithOrganisationAndApplication_data()
{
    QTest::addColumn<QString>("organisation");
    QTest::addColumn<QString>("application");
    QTest::addColumn<QString>("end");
    QTest::newRow("both names") << QStringLiteral("Maker") << QStringLiteral("Client")
                                << QStringLiteral("/Maker/Client");
    QTest::newRow("names with placeholders")
        << QStringLiteral("%2") << QStringLiteral("%1 %3") << QStringLiteral("/%2/%1 %3");
    QTest::newRow("no organisation") << QString() << QStringLiteral("Client") << QStringLiteral("/Client");
    QTest::newRow("an organisation of two levels")
        << QStringLiteral("a/b") << QStringLiteral("Client") << QStringLiteral("/a/b/Client");
}

void FilePathsTest::tempPathEndsWithOrganisationAndApplication()
{
    QFETCH(QString, organisation);
    QFETCH(QString, application);
    QFETCH(QString, end);
    QCoreApplication::setOrganizationName(organisation);
    QCoreApplication::setApplicationName(application);
    QString const result = FilePaths::buildTempPath();
    QCOMPARE(result, qEnvironmentVariable("TMPDIR") + end);
    QVERIFY(QDir(result).exists());
}

void FilePathsTest::makesFoldersLevelByLevel_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("made");
    QTest::newRow("two missing levels") << QStringLiteral("ROOT/a/b") << true;
    QTest::newRow("it is there") << QStringLiteral("ROOT/there") << true;
    QTest::newRow("slashes in a row and at the end") << QStringLiteral("ROOT//c///d/") << true;
    QTest::newRow("a name with placeholders") << QStringLiteral("ROOT/%1/%2 %1") << true;
    QTest::newRow("a name beyond ASCII") << QStringLiteral("ROOT/caffè ☎") << true;
    QTest::newRow("up and down again") << QStringLiteral("ROOT/there/../e") << true;
    QTest::newRow("one level") << QStringLiteral("/tmp") << false;
    QTest::newRow("one level that does not exist") << QStringLiteral("/softphone-core-test") << false;
    QTest::newRow("one level with a slash") << QStringLiteral("/tmp/") << false;
    QTest::newRow("one level, relative") << QStringLiteral("tmp") << false;
    QTest::newRow("the root") << QStringLiteral("/") << false;
    QTest::newRow("nothing") << QString() << false;
    QTest::newRow("a first level that is not there") << QStringLiteral("/softphone-core-test/a") << false;
    QTest::newRow("below a file") << QStringLiteral("ROOT/file/a") << false;
    QTest::newRow("at a file") << QStringLiteral("ROOT/file") << false;
    QTest::newRow("at a link that leads nowhere") << QStringLiteral("ROOT/nowhere") << false;
}

void FilePathsTest::makesFoldersLevelByLevel()
{
    QFETCH(QString, path);
    QFETCH(bool, made);
    QDir(m_root->path()).mkdir(QStringLiteral("there"));
    write(QStringLiteral("file"));
    QVERIFY(QFile::link(QStringLiteral("missing"), this->path(QStringLiteral("nowhere"))));
    QString const absolute = path.replace(QStringLiteral("ROOT"), m_root->path());
    QCOMPARE(FilePaths::createFoldersIteratively(absolute), made);
    QCOMPARE(FilePaths::buildDir(absolute), made);
    QCOMPARE(FilePaths::createDirIfNeeded(absolute), made);
    if (made) {
        QVERIFY(QFileInfo(absolute).isDir());
    }
    QVERIFY(!QFile::exists(QStringLiteral("/softphone-core-test")));
}

void FilePathsTest::keepsTheLevelsMadeBeforeAFailure()
{
    QString const tooLong(300, QLatin1Char('n'));
    QVERIFY(!FilePaths::createFoldersIteratively(path(QStringLiteral("a/b/") + tooLong)));
    QVERIFY(QDir(path(QStringLiteral("a/b"))).exists());
}

void FilePathsTest::makesTheSameFolderFromManyThreads()
{
    QString const deep = path(QStringLiteral("1/2/3/4/5/6/7/8"));
    std::atomic<int> made = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] { made += FilePaths::createFoldersIteratively(deep) ? 1 : 0; });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(made.load(), 8);
    QVERIFY(QDir(deep).exists());
}

void FilePathsTest::makesASubfolder_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("made");
    QTest::newRow("one level") << QStringLiteral("a") << true;
    QTest::newRow("three levels") << QStringLiteral("b/c/d") << true;
    QTest::newRow("it is there") << QStringLiteral(".") << true;
    QTest::newRow("at a file") << QStringLiteral("file") << false;
    QTest::newRow("below a file") << QStringLiteral("file/a") << false;
    QTest::newRow("nothing") << QString() << false;
}

void FilePathsTest::makesASubfolder()
{
    QFETCH(QString, path);
    write(QStringLiteral("file"));
    QVERIFY(QDir::setCurrent(m_root->path()));
    QTEST(FilePaths::createSubdir(path), "made");
    QTEST(!path.isEmpty() && QFileInfo(path).isDir(), "made");
}

void FilePathsTest::namesAFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");
    QTest::newRow("absolute") << QStringLiteral("/x/y.txt") << QStringLiteral("y.txt");
    QTest::newRow("bare name") << QStringLiteral("y.txt") << QStringLiteral("y.txt");
    QTest::newRow("a folder") << QStringLiteral("/x/") << QString();
    QTest::newRow("nothing") << QString() << QString();
    QTest::newRow("a backslash is part of the name") << QStringLiteral("a\\b") << QStringLiteral("a\\b");
}

void FilePathsTest::namesAFile()
{
    QFETCH(QString, path);
    QVERIFY(QDir::setCurrent(m_root->path()));
    QTEST(FilePaths::getFileName(path, false), "name");
    QTEST(FilePaths::getFileName(path, true), "name");
    write(QStringLiteral("y.txt"));
    QTEST(FilePaths::getFileName(path, false), "name");
}

void FilePathsTest::numbersATakenName_data()
{
    QTest::addColumn<QStringList>("taken");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");
    auto const row = [](char const* tag, QStringList const& taken, char const* path, char const* name) {
        QTest::newRow(tag) << taken << QString::fromLatin1(path) << QString::fromLatin1(name);
    };
    QString const report = QStringLiteral("report.pdf");
    QString const second = QStringLiteral("report(1).pdf");
    row("free", {}, "/x/report.pdf", "report.pdf");
    row("taken once", {report}, "/x/report.pdf", "report(1).pdf");
    row("taken twice", {report, second}, "/x/report.pdf", "report(2).pdf");
    row("only the numbered name is taken", {second}, "/x/report.pdf", "report.pdf");
    row("a numbered name as wish", {second}, "report(1).pdf", "report(1)(1).pdf");
    row("two suffixes", {QStringLiteral("archive.tar.gz")}, "archive.tar.gz", "archive(1).gz");
    row("no suffix", {QStringLiteral("notes")}, "notes", "notes(1).");
    row("nothing but a suffix", {QStringLiteral(".rc")}, ".rc", "(1).rc");
    row("placeholders in the name", {QStringLiteral("%2 %1.%3")}, "%2 %1.%3", "%2 %1(1).%3");
    row("taken by a folder", {QStringLiteral("d.x/")}, "d.x", "d(1).x");
}

void FilePathsTest::numbersATakenName()
{
    QFETCH(QStringList, taken);
    QFETCH(QString, path);
    for (QString const& name : taken) {
        name.endsWith(QLatin1Char('/')) ? void(QDir(m_root->path()).mkdir(name)) : write(name);
    }
    QVERIFY(QDir::setCurrent(m_root->path()));
    QTEST(FilePaths::getFileName(path, true), "name");
    QTEST(FilePaths::buildAbsoluteFilePath(QStringLiteral("/"), path, true).mid(1), "name");
}

void FilePathsTest::looksForTakenNamesInTheCurrentFolder()
{
    write(QStringLiteral("other/report.pdf"));
    QDir(m_root->path()).mkdir(QStringLiteral("here"));
    QVERIFY(QDir::setCurrent(path(QStringLiteral("here"))));
    QCOMPARE(
        FilePaths::buildAbsoluteFilePath(path(QStringLiteral("other")), QStringLiteral("report.pdf"), true),
        path(QStringLiteral("other/report.pdf")));
}

void FilePathsTest::buildsFilePaths()
{
    QString const dir = path(QStringLiteral("not made"));
    QCOMPARE(FilePaths::buildAbsoluteFilePath(dir, QStringLiteral("x/a.txt")),
             dir + QStringLiteral("/a.txt"));
    QCOMPARE(FilePaths::buildAbsoluteFilePath(dir, QStringLiteral("a.txt"), false),
             dir + QStringLiteral("/a.txt"));
    QVERIFY(!QFile::exists(dir));
    QVERIFY(QDir::setCurrent(m_root->path()));
    QCOMPARE(FilePaths::buildAbsoluteFilePath(QStringLiteral("rel"), QStringLiteral("a")),
             QDir::currentPath() + QStringLiteral("/rel/a"));
}

void FilePathsTest::buildsFilePathsInMadeFolders()
{
    QString const dir = path(QStringLiteral("%1"));
    QCOMPARE(FilePaths::buildAbsoluteFilePath(dir, QStringLiteral("b/%2"), QStringLiteral("x/a.txt"), false),
             dir + QStringLiteral("/b/%2/a.txt"));
    QVERIFY(QDir(dir + QStringLiteral("/b/%2")).exists());
    QCOMPARE(FilePaths::buildAbsoluteDirPath(dir, QStringLiteral("c")), dir + QStringLiteral("/c"));
    QVERIFY(QDir(dir + QStringLiteral("/c")).exists());
    QCOMPARE(FilePaths::buildAbsoluteDirPath(dir, QString()), dir);
    QVERIFY(QDir::setCurrent(m_root->path()));
    write(QStringLiteral("a.txt"));
    QCOMPARE(FilePaths::buildAbsoluteFilePath(dir, QStringLiteral("c"), QStringLiteral("a.txt"), true),
             dir + QStringLiteral("/c/a(1).txt"));
}

// The outer folder is made below the root, as createFoldersIteratively() reads it, the inner one below the
// current folder, where the path that comes back leads.
void FilePathsTest::takesARelativeFolderTwoWays()
{
    QVERIFY(QDir::setCurrent(m_root->path()));
    QString const relative = path(QStringLiteral("outer")).mid(1);
    QCOMPARE(FilePaths::buildAbsoluteDirPath(relative, QStringLiteral("inner")),
             relative + QStringLiteral("/inner"));
    QVERIFY(QDir(path(QStringLiteral("outer"))).exists());
    QVERIFY(QDir(QDir::current().filePath(relative + QStringLiteral("/inner"))).exists());
    QVERIFY(!QDir(path(QStringLiteral("outer/inner"))).exists());
}

void FilePathsTest::buildsNoPathInAFolderThatCannotBeMade()
{
    write(QStringLiteral("file"));
    QString const file = path(QStringLiteral("file"));
    QString const name = QFileInfo(m_root->path()).fileName() + QLatin1Char('a'); // nobody else's
    QCOMPARE(FilePaths::buildAbsoluteDirPath(file, name), QString());
    QCOMPARE(FilePaths::buildAbsoluteDirPath(m_root->path(), QStringLiteral("file/b")), QString());
    QCOMPARE(FilePaths::buildAbsoluteDirPath(QStringLiteral("/tmp"), name), QString());
    QVERIFY(!QFile::exists(QStringLiteral("/tmp/") + name));
    QCOMPARE(FilePaths::buildAbsoluteDirPath(QString(), name), QString());
    QCOMPARE(FilePaths::buildAbsoluteFilePath(file, name, name, false), QString());
    QCOMPARE(FilePaths::buildAbsoluteFilePath(m_root->path(), QStringLiteral("file"), name, true), QString());
}

void FilePathsTest::joinsPaths_data()
{
    QTest::addColumn<QString>("dir");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("absolute");
    QTest::addColumn<QString>("asGiven");
    QTest::newRow("absolute folder") << QStringLiteral("/a/b") << QStringLiteral("c.txt")
                                     << QStringLiteral("/a/b/c.txt") << QStringLiteral("/a/b/c.txt");
    QTest::newRow("relative folder") << QStringLiteral("a") << QStringLiteral("c.txt")
                                     << QStringLiteral("CURRENT/a/c.txt") << QStringLiteral("a/c.txt");
    QTest::newRow("absolute file") << QStringLiteral("/a") << QStringLiteral("/c.txt")
                                   << QStringLiteral("/c.txt") << QStringLiteral("/c.txt");
    QTest::newRow("file in a subfolder") << QStringLiteral("/a") << QStringLiteral("b/c.txt")
                                         << QStringLiteral("/a/b/c.txt") << QStringLiteral("/a/b/c.txt");
}

void FilePathsTest::joinsPaths()
{
    QFETCH(QString, dir);
    QFETCH(QString, file);
    QFETCH(QString, absolute);
    absolute.replace(QStringLiteral("CURRENT"), QDir::currentPath());
    QCOMPARE(FilePaths::absoluteFilePath(dir, file), absolute);
    QCOMPARE(FilePaths::absoluteDirPath(dir, file), absolute);
    QTEST(FilePaths::buildRelativeFilePath(dir, file), "asGiven");
}

void FilePathsTest::findsAFileAsItStandsOrBesideTheApplication()
{
    write(QStringLiteral("here.txt"));
    QDir(m_root->path()).mkdir(QStringLiteral("folder"));
    QVERIFY(QDir::setCurrent(m_root->path()));
    QString const current = QDir::currentPath();
    QString const app = QCoreApplication::applicationDirPath();
    QCOMPARE(FilePaths::getAbsoluteFilePath(QStringLiteral("here.txt")),
             current + QStringLiteral("/here.txt"));
    QCOMPARE(FilePaths::getAbsoluteFilePath(QStringLiteral("folder")), current + QStringLiteral("/folder"));
    QCOMPARE(FilePaths::getAbsoluteFilePath(path(QStringLiteral("here.txt"))),
             path(QStringLiteral("here.txt")));
    QCOMPARE(FilePaths::getAbsoluteFilePath(QStringLiteral("missing.txt")),
             app + QStringLiteral("/missing.txt"));
    QCOMPARE(FilePaths::getAbsoluteFilePath(QStringLiteral("/missing.txt")), QStringLiteral("/missing.txt"));
    QCOMPARE(FilePaths::getAbsoluteFilePath(QString()), app);
}

void FilePathsTest::findsTheFolderOfAFile_data()
{
    QTest::addColumn<QString>("pathOrUrl");
    QTest::addColumn<QString>("folder");
    QTest::newRow("absolute path") << QStringLiteral("/a/b/c.txt") << QStringLiteral("/a/b");
    QTest::newRow("file URL") << QStringLiteral("file:///a/b%20c/d.txt") << QStringLiteral("/a/b c");
    QTest::newRow("relative path") << QStringLiteral("b/c.txt") << QStringLiteral("CURRENT/b");
    QTest::newRow("name that looks like a host")
        << QStringLiteral("readme.example") << QStringLiteral("CURRENT");
    QTest::newRow("web URL") << QStringLiteral("http://host.example/a/b") << QString();
    QTest::newRow("nothing") << QString() << QString();
    QTest::newRow("file URL with an encoded NUL") << QStringLiteral("file:///a%00b/c.txt") << QString();
}

void FilePathsTest::findsTheFolderOfAFile()
{
    QFETCH(QString, pathOrUrl);
    QFETCH(QString, folder);
    QCOMPARE(FilePaths::getAbsolutePath(pathOrUrl),
             folder.replace(QStringLiteral("CURRENT"), QDir::currentPath()));
}

void FilePathsTest::takesPathsApart_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("lastFolder");
    QTest::addColumn<QString>("extension");
    QTest::newRow("a file") << QStringLiteral("/a/b/c.txt") << QStringLiteral("c.txt")
                            << QStringLiteral("txt");
    QTest::newRow("a slash at the end") << QStringLiteral("/a/b/") << QStringLiteral("b") << QString();
    QTest::newRow("two suffixes") << QStringLiteral("/a/b.tar.gz") << QStringLiteral("b.tar.gz")
                                  << QStringLiteral("gz");
    QTest::newRow("dot in the folder alone") << QStringLiteral("/a.b/c") << QStringLiteral("c") << QString();
    QTest::newRow("hidden") << QStringLiteral("/a/.rc") << QStringLiteral(".rc") << QStringLiteral("rc");
    QTest::newRow("dot at the end") << QStringLiteral("/a/b.") << QStringLiteral("b.") << QString();
}

void FilePathsTest::takesPathsApart()
{
    QFETCH(QString, path);
    QTEST(FilePaths::getFolderNameFromFolderPath(path), "lastFolder");
    QTEST(FilePaths::getFileExtension(path), "extension");
}

void FilePathsTest::takesUrlsApart_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("path");
    QTest::newRow("the whole path") << QStringLiteral("http://host.example/a/b/c.txt")
                                    << QStringLiteral("/a/b/c.txt");
    QTest::newRow("decoded") << QStringLiteral("https://host.example/a%20b/%C3%A8%25.txt")
                             << QStringLiteral("/a b/è%.txt");
    QTest::newRow("without query and fragment")
        << QStringLiteral("http://host.example/c.txt?q=/x#/y") << QStringLiteral("/c.txt");
    QTest::newRow("no scheme") << QStringLiteral("host.example/c.txt") << QStringLiteral("/c.txt");
    QTest::newRow("local path") << QStringLiteral("/a/c.txt") << QStringLiteral("/a/c.txt");
    QTest::newRow("host alone") << QStringLiteral("http://host.example") << QString();
    QTest::newRow("nothing") << QString() << QString();
}

void FilePathsTest::takesUrlsApart()
{
    QFETCH(QString, url);
    QTEST(FilePaths::getFileNameFromUrl(url), "path");
}

void FilePathsTest::knowsNetworkPaths_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("network");
    QTest::newRow("share") << QStringLiteral("//server/share") << true;
    QTest::newRow("local") << QStringLiteral("/tmp") << false;
    QTest::newRow("URL") << QStringLiteral("file://tmp") << false;
    QTest::newRow("backslashes") << QStringLiteral("\\\\server\\share") << false;
    QTest::newRow("nothing") << QString() << false;
}

void FilePathsTest::knowsNetworkPaths()
{
    QFETCH(QString, path);
    QTEST(FilePaths::isNetworkPath(path), "network");
}

void FilePathsTest::prependsTheFileProtocol_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("result");
    QTest::newRow("has it") << QStringLiteral("file:///tmp/a") << QStringLiteral("file:///tmp/a");
    QTest::newRow("has it not") << QStringLiteral("/tmp/a") << QStringLiteral("file:///tmp/a");
    QTest::newRow("in capitals") << QStringLiteral("FILE:///a") << QStringLiteral("file://FILE:///a");
    QTest::newRow("placeholders") << QStringLiteral("%2%1") << QStringLiteral("file://%2%1");
    QTest::newRow("nothing") << QString() << QStringLiteral("file://");
}

void FilePathsTest::prependsTheFileProtocol()
{
    QFETCH(QString, path);
    QTEST(FilePaths::prependFileProtocolToPath(path), "result");
}

void FilePathsTest::changesTheNameInAPath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("prepended");
    QTest::addColumn<QString>("removed");
    QTest::addColumn<QString>("appended");
    auto const row = [](char const* tag, char const* path, char const* text, char const* prepended,
                        char const* removed, char const* appended) {
        QTest::newRow(tag) << QString::fromLatin1(path) << QString::fromLatin1(text)
                           << QString::fromLatin1(prepended) << QString::fromLatin1(removed)
                           << QString::fromLatin1(appended);
    };
    row("without the prefix", "/a/b/c.txt", "x_", "/a/b/x_c.txt", "/a/b/c.txt", "/a/b/c-x_.txt");
    row("with the prefix", "/a/b/x_c.txt", "x_", "/a/b/x_x_c.txt", "/a/b/c.txt", "/a/b/x_c-x_.txt");
    row("placeholders in the folder", "/%1/%2/c.txt", "x", "/%1/%2/xc.txt", "/%1/%2/c.txt", "/%1/%2/c-x.txt");
    row("placeholders in the text", "/a/%3.txt", "%1", "/a/%1%3.txt", "/a/%3.txt", "/a/%3-%1.txt");
    row("two suffixes", "/d/photo.tar.gz", "bk", "/d/bkphoto.tar.gz", "/d/photo.tar.gz",
        "/d/photo-bk.tar.gz");
    row("no suffix", "/d/photo", "bk", "/d/bkphoto", "/d/photo", "");
    row("a dot in the folder alone", "/d.e/photo", "bk", "/d.e/bkphoto", "/d.e/photo", "");
    row("a dot at the end", "/d/photo.", "bk", "/d/bkphoto.", "/d/photo.", "");
    row("nothing but a suffix", "/d/.rc", "bk", "/d/bk.rc", "/d/.rc", "/d/-bk.rc");
    row("bare name", "c.txt", "x_", "./x_c.txt", "c.txt", "c-x_.txt");
    row("the prefix is the name", "/a/c.txt", "c.txt", "/a/c.txtc.txt", "/a/", "/a/c-c.txt.txt");
    row("the prefix in another case", "/a/X_c.txt", "x_", "/a/x_X_c.txt", "/a/X_c.txt", "/a/X_c-x_.txt");
}

void FilePathsTest::changesTheNameInAPath()
{
    QFETCH(QString, path);
    QFETCH(QString, text);
    QTEST(FilePaths::prependStringToFilename(path, text), "prepended");
    QTEST(FilePaths::removePrefixFromFilename(path, text), "removed");
    QTEST(FilePaths::appendSuffix(path, text), "appended");
}

void FilePathsTest::removesASubfolder_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("subfolder");
    QTest::addColumn<QString>("result");
    QTest::newRow("at the end") << QStringLiteral("/a/b") << QStringLiteral("b") << QStringLiteral("/a");
    QTest::newRow("in the middle") << QStringLiteral("/a/b/c") << QStringLiteral("b")
                                   << QStringLiteral("/a/c");
    QTest::newRow("the last of two") << QStringLiteral("/b/a/b/c") << QStringLiteral("b")
                                     << QStringLiteral("/b/a/c");
    QTest::newRow("only the start of a name")
        << QStringLiteral("/a/bc") << QStringLiteral("b") << QStringLiteral("/ac");
    QTest::newRow("two levels") << QStringLiteral("/a/b/c") << QStringLiteral("b/c") << QStringLiteral("/a");
    QTest::newRow("not there") << QStringLiteral("/a/b") << QStringLiteral("c") << QStringLiteral("/a/b");
    QTest::newRow("nothing") << QStringLiteral("/a/b") << QString() << QStringLiteral("/ab");
}

void FilePathsTest::removesASubfolder()
{
    QFETCH(QString, path);
    QFETCH(QString, subfolder);
    QTEST(FilePaths::cleanFromSubFolder(path, subfolder), "result");
}

void FilePathsTest::answersAboutExistence()
{
    write(QStringLiteral("file"));
    QDir(m_root->path()).mkdir(QStringLiteral("folder"));
    QVERIFY(QFile::link(QStringLiteral("folder"), path(QStringLiteral("link"))));
    QVERIFY(QFile::link(QStringLiteral("missing"), path(QStringLiteral("nowhere"))));
    auto const answers = [this](char const* name) {
        QString const full = path(QString::fromLatin1(name));
        return std::array{FilePaths::fileExists(full), FilePaths::dirExists(full),
                          FilePaths::isDirectory(full)};
    };
    QVERIFY(answers("file") == (std::array{true, false, false}));
    QVERIFY(answers("folder") == (std::array{true, true, true}));
    QVERIFY(answers("link") == (std::array{true, true, true}));
    QVERIFY(answers("nowhere") == (std::array{false, false, false}));
    QVERIFY(answers("missing") == (std::array{false, false, false}));
    QVERIFY(answers("file/below") == (std::array{false, false, false}));
}

void FilePathsTest::measuresFiles()
{
    write(QStringLiteral("empty"), QByteArray());
    write(QStringLiteral("five"), QByteArray("12345"));
    QCOMPARE(FilePaths::getFileSize(path(QStringLiteral("empty"))), 0);
    QCOMPARE(FilePaths::getFileSize(path(QStringLiteral("five"))), 5);
    QCOMPARE(FilePaths::getFileSize(path(QStringLiteral("missing"))), -1);
    QFile sparse(path(QStringLiteral("large")));
    QVERIFY(sparse.open(QIODevice::WriteOnly));
    QVERIFY(sparse.resize(5'000'000'000));
    QCOMPARE(FilePaths::getFileSize(path(QStringLiteral("large"))), 5'000'000'000);
}

void FilePathsTest::searchesSubfoldersFirst()
{
    for (char const* name : {"wanted", "b/wanted", "a/z/wanted", "a/other"}) {
        write(QString::fromLatin1(name));
    }
    QString const wanted = QStringLiteral("wanted");
    QCOMPARE(FilePaths::recursiveCheckFile(QDir(m_root->path()), wanted), path(QStringLiteral("a/z/wanted")));
    QCOMPARE(FilePaths::getFilePathInSubfolder(m_root->path(), wanted), path(QStringLiteral("a/z/wanted")));
    QVERIFY(QFile::remove(path(QStringLiteral("a/z/wanted"))));
    QCOMPARE(FilePaths::getFilePathInSubfolder(m_root->path(), wanted), path(QStringLiteral("b/wanted")));
    QVERIFY(QFile::remove(path(QStringLiteral("b/wanted"))));
    QCOMPARE(FilePaths::getFilePathInSubfolder(m_root->path(), wanted), path(wanted));
    QVERIFY(QDir::setCurrent(m_root->path()));
    QCOMPARE(FilePaths::getFilePathInSubfolder(QStringLiteral("."), wanted),
             QDir::currentPath() + QStringLiteral("/wanted"));
}

void FilePathsTest::searchesInTheOrderOfNames()
{
    // Capitals come first, and what is hidden is not looked into.
    for (char const* name : {"a/wanted", "B/wanted", ".hidden/wanted", ".other"}) {
        write(QString::fromLatin1(name));
    }
    QCOMPARE(FilePaths::getFilePathInSubfolder(m_root->path(), QStringLiteral("wanted")),
             path(QStringLiteral("B/wanted")));
    QCOMPARE(FilePaths::getFilePathInSubfolder(m_root->path(), QStringLiteral(".other")), QString());
}

void FilePathsTest::searchesForTheExactName()
{
    write(QStringLiteral("Wanted"));
    write(QStringLiteral("wanted.txt"));
    QDir(m_root->path()).mkpath(QStringLiteral("sub/wanted"));
    QCOMPARE(FilePaths::getFilePathInSubfolder(m_root->path(), QStringLiteral("wanted")), QString());
    QCOMPARE(FilePaths::getFilePathInSubfolder(m_root->path(), QStringLiteral("*")), QString());
    QCOMPARE(FilePaths::getFilePathInSubfolder(path(QStringLiteral("missing")), QStringLiteral("wanted")),
             QString());
    QDir filtered(m_root->path(), QStringLiteral("*.png"));
    QCOMPARE(FilePaths::recursiveCheckFile(filtered, QStringLiteral("Wanted")),
             path(QStringLiteral("Wanted")));
}

void FilePathsTest::endsOnLinkLoops()
{
    write(QStringLiteral("a/b/file"));
    QVERIFY(QFile::link(m_root->path(), path(QStringLiteral("a/b/up"))));
    QVERIFY(QFile::link(QStringLiteral("."), path(QStringLiteral("a/self"))));
    QVERIFY(QFile::link(QStringLiteral("loop"), path(QStringLiteral("loop"))));
    QCOMPARE(FilePaths::getFilePathInSubfolder(m_root->path(), QStringLiteral("missing")), QString());
    QCOMPARE(FilePaths::getFilePathInSubfolder(m_root->path(), QStringLiteral("file")),
             path(QStringLiteral("a/b/file")));
}

// Twenty folders, each holding two links to the next: a walk that visits folders again takes a million
// visits.
void FilePathsTest::visitsNoFolderTwice()
{
    constexpr int levels = 40;
    for (int level = 0; level < levels; ++level) {
        QString const folder = QString::number(level);
        QString const next = QStringLiteral("../%1").arg(level + 1);
        QVERIFY(QDir(m_root->path()).mkdir(folder));
        QVERIFY(QFile::link(next, path(folder + QStringLiteral("/left"))));
        QVERIFY(QFile::link(next, path(folder + QStringLiteral("/right"))));
    }
    write(QString::number(levels) + QStringLiteral("/file"));
    QCOMPARE(FilePaths::getFilePathInSubfolder(path(QStringLiteral("0")), QStringLiteral("missing")),
             QString());
    QString const found =
        FilePaths::getFilePathInSubfolder(path(QStringLiteral("30")), QStringLiteral("file"));
    QCOMPARE(QFileInfo(found).canonicalFilePath(),
             QFileInfo(path(QStringLiteral("40/file"))).canonicalFilePath());
}

void FilePathsTest::searchesDeepFolders()
{
    QString deep = m_root->path();
    while (deep.size() < 3'500) {
        deep += QStringLiteral("/d");
    }
    QVERIFY(QDir().mkpath(deep));
    QFile file(deep + QStringLiteral("/file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(FilePaths::getFilePathInSubfolder(m_root->path(), QStringLiteral("file")), file.fileName());
}

void FilePathsTest::stampsAFileWithNow()
{
    write(QStringLiteral("%1 caffè"));
    QString const file = path(QStringLiteral("%1 caffè"));
    QByteArray const name = QFile::encodeName(file);
    timeval const longAgo[] = {{1'000, 0}, {2'000, 0}};
    QCOMPARE(utimes(name.constData(), longAgo), 0);
    time_t const before = std::time(nullptr);
    QVERIFY(FilePaths::setFileBirthTimeToNow(file));
    time_t const after = std::time(nullptr);
    struct stat status
    {
    };
    QCOMPARE(stat(name.constData(), &status), 0);
    QVERIFY(status.st_mtim.tv_sec >= before && status.st_mtim.tv_sec <= after);
    QCOMPARE(status.st_atim.tv_sec, status.st_mtim.tv_sec);
    QCOMPARE(status.st_mtim.tv_nsec, 0);
    QVERIFY(!FilePaths::setFileBirthTimeToNow(path(QStringLiteral("missing"))));
    QVERIFY(!QFile::exists(path(QStringLiteral("missing"))));
}

void FilePathsTest::refusesNamesThatNoFileCanHave_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("nothing") << QString();
    QTest::newRow("an embedded NUL") << QStringLiteral("/tmp/a") + QChar(QChar::Null) + QStringLiteral("/b");
    QTest::newRow("a NUL after an existing name") << QStringLiteral("/tmp") + QChar(QChar::Null);
}

void FilePathsTest::refusesNamesThatNoFileCanHave()
{
    QFETCH(QString, name);
    MessageRecorder recorder;
    QVERIFY(!FilePaths::fileExists(name));
    QVERIFY(!FilePaths::dirExists(name));
    QVERIFY(!FilePaths::isDirectory(name));
    QVERIFY(!FilePaths::createSubdir(name));
    QVERIFY(!FilePaths::createFoldersIteratively(name));
    QVERIFY(!FilePaths::setFileBirthTimeToNow(name));
    QCOMPARE(FilePaths::getFileSize(name), -1);
    QCOMPARE(FilePaths::getAbsolutePath(name), QString());
    QCOMPARE(FilePaths::buildAbsoluteDirPath(name, QStringLiteral("a")), QString());
    QCOMPARE(FilePaths::getFilePathInSubfolder(name, QStringLiteral("missing")), QString());
    QCOMPARE(FilePaths::getFilePathInSubfolder(m_root->path(), name), QString());
    static_cast<void>(FilePaths::buildAbsoluteFilePath(name, name, true));
    QCOMPARE(recorder.messages(), QStringList());
}

void FilePathsTest::makesSafeNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("safe");
    auto const row = [](char const* title, QString const& name, QString const& safe) {
        QTest::newRow(title) << name << safe;
    };
    QString const accents = QStringLiteral("e\u0301");
    row("a plain name", QStringLiteral("report (2).tar.gz"), QStringLiteral("report (2).tar.gz"));
    row("a hidden name", QStringLiteral(".profile"), QStringLiteral(".profile"));
    row("other alphabets and symbols", QStringLiteral("\u540d\u524d \U0001F600.png"),
        QStringLiteral("\u540d\u524d \U0001F600.png"));
    row("nothing", QString(), QStringLiteral("_"));
    row("this folder", QStringLiteral("."), QStringLiteral("_"));
    row("the folder above", QStringLiteral(".."), QStringLiteral("_"));
    row("dots and blanks alone", QStringLiteral(". .\u00A0.. "), QStringLiteral("_"));
    row("a way up", QStringLiteral("../../etc/passwd"), QStringLiteral(".._.._etc_passwd"));
    row("an absolute path", QStringLiteral("/etc/passwd"), QStringLiteral("_etc_passwd"));
    row("another system's path", QStringLiteral("C:\\a\\b.txt"), QStringLiteral("C__a_b.txt"));
    row("a resource", QStringLiteral(":x"), QStringLiteral("_x"));
    row("reserved characters", QStringLiteral("a*b?c\"d<e>f|g"), QStringLiteral("a_b_c_d_e_f_g"));
    row("controls", QStringLiteral("a\r\nb\tc\x7f\u0085"), QStringLiteral("a__b_c__"));
    row("a NUL", QStringLiteral("a.png\0.exe"), QStringLiteral("a.png_.exe"));
    row("ends of lines and paragraphs", QStringLiteral("a\u2028b\u2029c"), QStringLiteral("a_b_c"));
    row("text turned round", QStringLiteral("a\u202Etxt.exe"), QStringLiteral("a_txt.exe"));
    row("text set apart", QStringLiteral("a\u2066b\u2067c\u2068d\u2069e"), QStringLiteral("a_b_c_d_e"));
    row("text embedded", QStringLiteral("a\u202Ab\u202Bc\u202Cd\u202De"), QStringLiteral("a_b_c_d_e"));
    row("half a character", QString(QChar(0xD83D)) + QStringLiteral("a") + QChar(0xDE00),
        QStringLiteral("_a_"));
    row("dots and blanks at the end", QStringLiteral("a.txt. .."), QStringLiteral("a.txt"));
    row("a device", QStringLiteral("NUL"), QStringLiteral("_NUL"));
    row("a device in lower case with suffixes", QStringLiteral("con.tar.gz"), QStringLiteral("_con.tar.gz"));
    row("a device after dots are gone", QStringLiteral("aux..."), QStringLiteral("_aux"));
    row("a device before a blank", QStringLiteral("prn .txt"), QStringLiteral("_prn .txt"));
    row("numbered devices", QStringLiteral("Lpt1.txt"), QStringLiteral("_Lpt1.txt"));
    row("superscript numbers", QStringLiteral("COM\u00B9"), QStringLiteral("_COM\u00B9"));
    row("longer than a device", QStringLiteral("console.com10"), QStringLiteral("console.com10"));
    row("as long as a name may be", QString(251, QLatin1Char('a')) + QStringLiteral(".txt"),
        QString(251, QLatin1Char('a')) + QStringLiteral(".txt"));
    row("one longer", QString(252, QLatin1Char('a')) + QStringLiteral(".txt"),
        QString(251, QLatin1Char('a')) + QStringLiteral(".txt"));
    row("long without a suffix", QString(300, QLatin1Char('a')), QString(255, QLatin1Char('a')));
    row("long and hidden", QStringLiteral(".") + QString(300, QLatin1Char('a')),
        QStringLiteral(".") + QString(254, QLatin1Char('a')));
    row("characters of two bytes", QString(200, QChar(0xE9)) + QStringLiteral(".txt"),
        QString(125, QChar(0xE9)) + QStringLiteral(".txt"));
    row("characters of two units", QStringLiteral("\U0001F600").repeated(100) + QStringLiteral(".a"),
        QStringLiteral("\U0001F600").repeated(63) + QStringLiteral(".a"));
    row("letters with marks", accents.repeated(100), accents.repeated(85));
    row("letters with marks before a suffix", accents.repeated(100) + QStringLiteral(".txt"),
        accents.repeated(83) + QStringLiteral(".txt"));
    row("one letter with many marks", QStringLiteral("e") + QString(300, QChar(0x301)),
        QStringLiteral("e") + QString(127, QChar(0x301)));
    row("one letter with many marks, cut inside of another character",
        QChar(0xE9) + QString(62, QChar(0x20D0)) + QStringLiteral("\U000E0100").repeated(20),
        QChar(0xE9) + QString(62, QChar(0x20D0)) + QStringLiteral("\U000E0100").repeated(16));
    row("a suffix that leaves room for one character",
        QStringLiteral("abcdefgh.") + QString(250, QLatin1Char('b')),
        QStringLiteral("abcd.") + QString(250, QLatin1Char('b')));
    row("a suffix too long to keep", QStringLiteral("a.") + QString(300, QLatin1Char('b')),
        QStringLiteral("a.") + QString(253, QLatin1Char('b')));
    row("a blank where it is cut",
        QString(250, QLatin1Char('a')) + QString(30, QLatin1Char(' ')) + QStringLiteral("b"),
        QString(250, QLatin1Char('a')));
}

void FilePathsTest::makesSafeNames()
{
    QFETCH(QString, name);
    QTEST(FilePaths::safeFileName(name), "safe");
    QFETCH(QString, safe);
    QCOMPARE(FilePaths::safeFileName(safe), safe);
}

void FilePathsTest::safeNamesCanBeWritten()
{
    QDir const folder(m_root->path());
    QVERIFY(folder.mkdir(QStringLiteral("inner")));
    // Every character that there is, a few at a time, and every short name of those that mean something.
    QStringList hostile;
    for (char32_t first = 0; first < 0x3000; first += 64) {
        QString name;
        for (char32_t code = first; code < first + 64; ++code) {
            name += QChar(static_cast<char16_t>(code));
        }
        hostile += name;
    }
    QString const alphabet = QStringLiteral("./\\: ~a\0");
    for (QChar const a : alphabet) {
        for (QChar const b : alphabet) {
            hostile += QString(a) + b;
            hostile += QString(a) + b + QStringLiteral("inner");
        }
    }
    for (QString const& name : hostile) {
        QString const path = folder.filePath(QStringLiteral("inner/") + FilePaths::safeFileName(name));
        QCOMPARE(FilePaths::createBinaryDataFile(path, "x"), path);
        QCOMPARE(TestFiles::names(folder.filePath(QStringLiteral("inner"))),
                 QSet<QString>{FilePaths::safeFileName(name)});
        QVERIFY(FilePaths::removeFile(path));
    }
    QCOMPARE(TestFiles::names(m_root->path()), QSet<QString>{QStringLiteral("inner")});
}

void FilePathsTest::putsPathsTogetherWhateverTheFolder_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("path");
    QTest::newRow("a NUL") << QStringLiteral("/d/a\0b") << "c" << QStringLiteral("/d/a\0b/c");
    QTest::newRow("a NUL, relative") << QStringLiteral("a\0b") << "c" << QStringLiteral("a\0b/c");
    QTest::newRow("a NUL before a level up") << QStringLiteral("/d/a\0b/../e/") << "c"
                                             << "/d/e/c";
    QTest::newRow("a NUL before an absolute name") << QStringLiteral("/d/a\0b") << "/c"
                                                   << "/c";
    QTest::newRow("a NUL and no name") << QStringLiteral("/d/a\0b/") << "" << QStringLiteral("/d/a\0b");
    QTest::newRow("no folder") << ""
                               << "c" << QDir::currentPath() + QStringLiteral("/c");
}

void FilePathsTest::putsPathsTogetherWhateverTheFolder()
{
    QFETCH(QString, folder);
    QFETCH(QString, file);
    MessageRecorder recorder;
    QTEST(FilePaths::absoluteFilePath(folder, file), "path");
    QTEST(FilePaths::absoluteDirPath(folder, file), "path");
    QCOMPARE(recorder.messages(), QStringList());
}

int main(int argc, char** argv)
{
    return runTest<FilePathsTest>(argc, argv);
}

#include "FilePathsTest.moc"
