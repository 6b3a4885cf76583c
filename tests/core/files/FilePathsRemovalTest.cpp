#include <files/FilePaths.h>

#include <RunTest.h>
#include <TestFiles.h>
#include <dirent.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using TestFiles::isThere;
using TestFiles::link;
using TestFiles::names;
using TestFiles::read;
using TestFiles::write;

namespace {

constexpr qint64 minute = 60;
constexpr qint64 hour = 60 * minute;
constexpr qint64 day = 24 * hour;

/// Makes \a depth folders, each inside the one before, in \a folder: deeper than any path can be written.
bool nest(QString const& folder, int depth)
{
    int current = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < depth && current >= 0; ++i) {
        ::mkdirat(current, "inner", 0700);
        int const file = ::openat(current, "file", O_CREAT | O_WRONLY, 0600);
        ::close(file);
        int const inner = ::openat(current, "inner", O_RDONLY | O_DIRECTORY);
        ::close(current);
        current = inner;
    }
    ::close(current);
    return current >= 0;
}

} // namespace

class FilePathsRemovalTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void removeFolderTakesAll();
    void removeFolderOfNothingSucceeds_data();
    void removeFolderOfNothingSucceeds();
    void removeFolderLeavesFilesAlone();
    void removeFolderTakesLinksNotTheirTargets();
    void removeFolderTakesTheLinkItIsGiven_data();
    void removeFolderTakesTheLinkItIsGiven();
    void removeFolderHandlesAnyDepth();
    void removeFolderWithManyEntries();

    void cleanFolderEmpties();
    void cleanFolderKeepsTheMode_data();
    void cleanFolderKeepsTheMode();
    void cleanFolderOfNothingFails_data();
    void cleanFolderOfNothingFails();
    void cleanFolderReplacesALinkByAFolder();

    void prunesByWholeHours_data();
    void prunesByWholeHours();
    void prunesFromTheExactHourOn();
    void prunesFilesOfAnyName();
    void prunesSubfoldersOnlyWhenAsked_data();
    void prunesSubfoldersOnlyWhenAsked();
    void prunesLinksByTheirOwnTime();
    void doesNotPruneBehindALink_data();
    void doesNotPruneBehindALink();
    void prunesNothingButFiles();
    void prunesNothingWhereThereIsNothing_data();
    void prunesNothingWhereThereIsNothing();
    void prunesAnyDepth();

    void removesAllFilesByBaseName_data();
    void removesAllFilesByBaseName();
    void removesOtherFilesByBaseName_data();
    void removesOtherFilesByBaseName();
    void removesFilesByExtension_data();
    void removesFilesByExtension();
    void removalsByNameWantAFolder();

private:
    QString path(QString const& name) const { return m_dir->filePath(name); }

    /// A folder outside of what is removed, with a file that must survive.
    QString makeOutside() const
    {
        QDir(m_dir->path()).mkpath(QStringLiteral("outside/deep"));
        write(path(QStringLiteral("outside/kept")), "kept");
        write(path(QStringLiteral("outside/deep/kept")), "kept");
        TestFiles::setAge(path(QStringLiteral("outside/kept")), 10 * day);
        TestFiles::setAge(path(QStringLiteral("outside/deep/kept")), 10 * day);
        return path(QStringLiteral("outside"));
    }

    bool isOutsideWhole() const
    {
        return read(path(QStringLiteral("outside/kept"))) == "kept" &&
               read(path(QStringLiteral("outside/deep/kept"))) == "kept";
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void FilePathsRemovalTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("folder")));
}

void FilePathsRemovalTest::cleanup()
{
    m_dir.reset();
}

void FilePathsRemovalTest::removeFolderTakesAll()
{
    QString const folder = path(QStringLiteral("folder"));
    for (char const* const sub : {"a/b/c", ".hidden/d", "%1/%2", "two words", "\u00e8"}) {
        QString const inner = folder + QLatin1Char('/') + QString::fromUtf8(sub);
        QVERIFY(QDir().mkpath(inner));
        QVERIFY(write(inner + QStringLiteral("/.rc"), "x"));
        QVERIFY(write(inner + QStringLiteral("/line\nbreak %1"), "x"));
    }
    QVERIFY(write(folder + QStringLiteral("/a/read-only"), "x"));
    QFile::setPermissions(folder + QStringLiteral("/a/read-only"), QFile::ReadOwner);
    QCOMPARE(::mkfifo(QFile::encodeName(folder + QStringLiteral("/pipe")).constData(), 0600), 0);
    QVERIFY(FilePaths::removeFolder(folder + QLatin1Char('/')));
    QVERIFY(names(m_dir->path()).isEmpty());
}

void FilePathsRemovalTest::removeFolderOfNothingSucceeds_data()
{
    QTest::addColumn<QString>("folder");
    QTest::newRow("missing") << QStringLiteral("/nowhere/at/all");
    QTest::newRow("no name, not the current folder") << QString();
    QTest::newRow("embedded NUL") << QStringLiteral(".\0x");
    QTest::newRow("name too long") << QStringLiteral("/tmp/") + QString(300, QLatin1Char('x'));
}

void FilePathsRemovalTest::removeFolderOfNothingSucceeds()
{
    QFETCH(QString, folder);
    QDir::setCurrent(path(QStringLiteral("folder")));
    QVERIFY(write(QStringLiteral("kept"), "kept"));
    QVERIFY(FilePaths::removeFolder(folder));
    QCOMPARE(read(QStringLiteral("kept")), QByteArray("kept"));
    QDir::setCurrent(QDir::rootPath());
}

void FilePathsRemovalTest::removeFolderLeavesFilesAlone()
{
    QVERIFY(write(path(QStringLiteral("file")), "kept"));
    QVERIFY(link(path(QStringLiteral("file")), path(QStringLiteral("link"))));
    QVERIFY(FilePaths::removeFolder(path(QStringLiteral("file"))));
    QVERIFY(FilePaths::removeFolder(path(QStringLiteral("link"))));
    QCOMPARE(read(path(QStringLiteral("file"))), QByteArray("kept"));
    QVERIFY(isThere(path(QStringLiteral("link"))));
}

void FilePathsRemovalTest::removeFolderTakesLinksNotTheirTargets()
{
    QString const outside = makeOutside();
    QString const folder = path(QStringLiteral("folder"));
    QVERIFY(QDir(folder).mkdir(QStringLiteral("inner")));
    QVERIFY(link(outside, folder + QStringLiteral("/to folder")));
    QVERIFY(link(outside + QStringLiteral("/kept"), folder + QStringLiteral("/inner/to file")));
    QVERIFY(link(outside + QStringLiteral("/deep"), folder + QStringLiteral("/inner/to folder")));
    QVERIFY(link(folder, folder + QStringLiteral("/inner/back up")));
    QVERIFY(link(QStringLiteral("/nowhere/at/all"), folder + QStringLiteral("/dangling")));
    QVERIFY(FilePaths::removeFolder(folder));
    QVERIFY(!isThere(folder));
    QVERIFY(isOutsideWhole());
}

void FilePathsRemovalTest::removeFolderTakesTheLinkItIsGiven_data()
{
    QTest::addColumn<QString>("ending");
    QTest::newRow("plain") << QString();
    QTest::newRow("slash at the end") << QStringLiteral("/");
    QTest::newRow("slashes at the end") << QStringLiteral("///");
    QTest::newRow("dots at the end") << QStringLiteral("/././");
}

void FilePathsRemovalTest::removeFolderTakesTheLinkItIsGiven()
{
    QFETCH(QString, ending);
    QVERIFY(link(makeOutside(), path(QStringLiteral("link"))));
    QVERIFY(FilePaths::removeFolder(path(QStringLiteral("link")) + ending));
    QVERIFY(!isThere(path(QStringLiteral("link"))));
    QVERIFY(isOutsideWhole());
}

void FilePathsRemovalTest::removeFolderHandlesAnyDepth()
{
    QString const folder = path(QStringLiteral("folder"));
    QVERIFY(nest(folder, 3'000));
    QVERIFY(FilePaths::removeFolder(folder));
    QVERIFY(!isThere(folder));
}

void FilePathsRemovalTest::removeFolderWithManyEntries()
{
    QDir const folder(path(QStringLiteral("folder")));
    for (int i = 0; i < 3'000; ++i) {
        QVERIFY(folder.mkdir(QString::number(i)));
        QVERIFY(write(folder.filePath(QStringLiteral("f") + QString::number(i)), QByteArray()));
    }
    QVERIFY(FilePaths::removeFolder(folder.path()));
    QVERIFY(!folder.exists());
}

void FilePathsRemovalTest::cleanFolderEmpties()
{
    QString const folder = path(QStringLiteral("folder"));
    for (char const* const ending : {"", "/", "/."}) {
        QVERIFY(QDir(folder).mkpath(QStringLiteral("a/.b")));
        QVERIFY(write(folder + QStringLiteral("/a/.b/.rc"), "x"));
        QVERIFY(FilePaths::cleanFolder(folder + QLatin1String(ending)));
        QVERIFY(QFileInfo(folder).isDir());
        QVERIFY(names(folder).isEmpty());
        QVERIFY(QDir(folder).mkdir(QStringLiteral("fresh")));
        QCOMPARE(QFileInfo(folder).permissions(), QFileInfo(folder + QStringLiteral("/fresh")).permissions());
    }
}

void FilePathsRemovalTest::cleanFolderKeepsTheMode_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("the user's alone") << 0700;
    QTest::newRow("read by a group") << 0750;
    QTest::newRow("open to everyone") << 0777;
    QTest::newRow("shared by everyone") << 01777;
    QTest::newRow("of a group, for what is made in it as well") << 02770;
}

void FilePathsRemovalTest::cleanFolderKeepsTheMode()
{
    QFETCH(int, mode);
    QString const folder = path(QStringLiteral("folder"));
    QVERIFY(QDir(folder).mkpath(QStringLiteral("a")));
    QCOMPARE(::chmod(QFile::encodeName(folder).constData(), static_cast<mode_t>(mode)), 0);
    QVERIFY(FilePaths::cleanFolder(folder));
    struct stat status
    {
    };
    QCOMPARE(::stat(QFile::encodeName(folder).constData(), &status), 0);
    QCOMPARE(static_cast<int>(status.st_mode & 07777), mode);
    QVERIFY(names(folder).isEmpty());
}

void FilePathsRemovalTest::cleanFolderOfNothingFails_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << QStringLiteral("missing");
    QTest::newRow("a file") << QStringLiteral("file");
    QTest::newRow("a link that leads nowhere") << QStringLiteral("dangling");
}

void FilePathsRemovalTest::cleanFolderOfNothingFails()
{
    QFETCH(QString, name);
    QVERIFY(write(path(QStringLiteral("file")), "kept"));
    QVERIFY(link(path(QStringLiteral("nowhere")), path(QStringLiteral("dangling"))));
    QSet<QString> const before = names(m_dir->path());
    QVERIFY(!FilePaths::cleanFolder(path(name)));
    QVERIFY(!FilePaths::cleanFolder(QString()));
    QCOMPARE(names(m_dir->path()), before);
    QCOMPARE(read(path(QStringLiteral("file"))), QByteArray("kept"));
}

void FilePathsRemovalTest::cleanFolderReplacesALinkByAFolder()
{
    QString const link = path(QStringLiteral("link"));
    QVERIFY(TestFiles::link(makeOutside(), link));
    QVERIFY(FilePaths::cleanFolder(link));
    QVERIFY(QFileInfo(link).isDir() && !QFileInfo(link).isSymLink());
    QVERIFY(names(link).isEmpty());
    QVERIFY(isOutsideWhole());
}

void FilePathsRemovalTest::prunesByWholeHours_data()
{
    QTest::addColumn<int>("days");
    QTest::addColumn<qint64>("age");
    QTest::addColumn<bool>("kept");
    // Ages stay ten seconds clear of the bounds, so that a slow machine does not turn a row.
    constexpr qint64 clear = 10;
    QTest::newRow("a day, 24 hours old") << 1 << day << false;
    QTest::newRow("a day, 23 hours 59 minutes old") << 1 << day - minute << true;
    QTest::newRow("a day, 24 hours 59 minutes old") << 1 << day + 59 * minute << false;
    QTest::newRow("a week, seconds short of it") << 7 << 7 * day - clear << true;
    QTest::newRow("a week old") << 7 << 7 * day << false;
    QTest::newRow("no days, new") << 0 << qint64(0) << false;
    QTest::newRow("no days, minutes old") << 0 << 5 * minute << false;
    QTest::newRow("no days, seconds in the future") << 0 << -60 * clear << true;
    QTest::newRow("no days, far in the future") << 0 << -100 * day << true;
    QTest::newRow("negative days, new") << -1 << qint64(0) << false;
    QTest::newRow("negative days, in the future") << -1 << -hour << true;
    QTest::newRow("greatest number of days") << std::numeric_limits<int>::max() << 1000 * day << true;
    QTest::newRow("least number of days") << std::numeric_limits<int>::min() << qint64(0) << false;
}

void FilePathsRemovalTest::prunesByWholeHours()
{
    QFETCH(int, days);
    QFETCH(qint64, age);
    QString const file = path(QStringLiteral("folder/file.wav"));
    QVERIFY(write(file, "x"));
    QVERIFY(TestFiles::setAge(file, age));
    FilePaths::removeOldFiles(path(QStringLiteral("folder")), days, false);
    QTEST(isThere(file), "kept");
}

void FilePathsRemovalTest::prunesFromTheExactHourOn()
{
    QString const file = path(QStringLiteral("folder/file"));
    for (int days = 0; days < 4; ++days) {
        QVERIFY(write(file, "x"));
        QVERIFY(TestFiles::setAge(file, days * day));
        FilePaths::removeOldFiles(path(QStringLiteral("folder")), days + 1, false);
        QVERIFY(isThere(file));
        FilePaths::removeOldFiles(path(QStringLiteral("folder")), days, false);
        QVERIFY(!isThere(file));
    }
}

void FilePathsRemovalTest::prunesFilesOfAnyName()
{
    QString const folder = path(QStringLiteral("folder"));
    for (char const* const name : {".hidden", "%1", "a b", "\u00e8", "line\nbreak", "no-write"}) {
        QString const file = folder + QLatin1Char('/') + QString::fromUtf8(name);
        QVERIFY(write(file, "x"));
        QVERIFY(TestFiles::setAge(file, 2 * day));
    }
    QFile::setPermissions(folder + QStringLiteral("/no-write"), QFile::ReadOwner);
    FilePaths::removeOldFiles(folder + QStringLiteral("//"), 1, false);
    QVERIFY(names(folder).isEmpty());
}

void FilePathsRemovalTest::prunesSubfoldersOnlyWhenAsked_data()
{
    QTest::addColumn<bool>("recursive");
    QTest::newRow("one folder") << false;
    QTest::newRow("all folders") << true;
}

void FilePathsRemovalTest::prunesSubfoldersOnlyWhenAsked()
{
    QFETCH(bool, recursive);
    QString const folder = path(QStringLiteral("folder"));
    QVERIFY(QDir(folder).mkpath(QStringLiteral("a/.b")));
    for (char const* const name : {"file", "a/file", "a/.b/file"}) {
        QString const file = folder + QLatin1Char('/') + QLatin1String(name);
        QVERIFY(write(file, "x"));
        QVERIFY(TestFiles::setAge(file, 2 * day));
    }
    QVERIFY(TestFiles::setAge(folder + QStringLiteral("/a"), 2 * day));
    FilePaths::removeOldFiles(folder, 1, recursive);
    QVERIFY(!isThere(folder + QStringLiteral("/file")));
    QCOMPARE(isThere(folder + QStringLiteral("/a/file")), !recursive);
    QCOMPARE(isThere(folder + QStringLiteral("/a/.b/file")), !recursive);
    QVERIFY(isThere(folder + QStringLiteral("/a/.b")));
}

void FilePathsRemovalTest::prunesLinksByTheirOwnTime()
{
    QString const outside = makeOutside();
    QString const folder = path(QStringLiteral("folder"));
    QVERIFY(link(outside + QStringLiteral("/kept"), folder + QStringLiteral("/new link to an old file")));
    QVERIFY(link(outside + QStringLiteral("/kept"), folder + QStringLiteral("/old link")));
    QVERIFY(TestFiles::setAge(folder + QStringLiteral("/old link"), 2 * day));
    FilePaths::removeOldFiles(folder, 1, true);
    QCOMPARE(names(folder), QSet<QString>{QStringLiteral("new link to an old file")});
    QVERIFY(isOutsideWhole());
}

void FilePathsRemovalTest::doesNotPruneBehindALink_data()
{
    QTest::addColumn<QString>("folder");
    QTest::newRow("a link inside") << QStringLiteral("folder");
    QTest::newRow("the folder itself a link") << QStringLiteral("folder/link");
    QTest::newRow("the folder itself a link, with a slash") << QStringLiteral("folder/link/");
}

void FilePathsRemovalTest::doesNotPruneBehindALink()
{
    QFETCH(QString, folder);
    QVERIFY(link(makeOutside(), path(QStringLiteral("folder/link"))));
    FilePaths::removeOldFiles(path(folder), 0, true);
    FilePaths::removeOldFiles(path(folder), 0, false);
    QVERIFY(isOutsideWhole());
}

void FilePathsRemovalTest::prunesNothingButFiles()
{
    QString const folder = path(QStringLiteral("folder"));
    QVERIFY(QDir(folder).mkdir(QStringLiteral("inner")));
    QCOMPARE(::mkfifo(QFile::encodeName(folder + QStringLiteral("/pipe")).constData(), 0600), 0);
    for (char const* const name : {"inner", "pipe"}) {
        QVERIFY(TestFiles::setAge(folder + QLatin1Char('/') + QLatin1String(name), 2 * day));
    }
    FilePaths::removeOldFiles(folder, 1, true);
    QCOMPARE(names(folder), (QSet<QString>{QStringLiteral("inner"), QStringLiteral("pipe")}));
}

void FilePathsRemovalTest::prunesNothingWhereThereIsNothing_data()
{
    QTest::addColumn<QString>("folder");
    QTest::newRow("missing") << QStringLiteral("/nowhere/at/all");
    QTest::newRow("no name, not the current folder") << QString();
    QTest::newRow("a file") << QStringLiteral("kept");
}

void FilePathsRemovalTest::prunesNothingWhereThereIsNothing()
{
    QFETCH(QString, folder);
    QDir::setCurrent(path(QStringLiteral("folder")));
    QVERIFY(write(QStringLiteral("kept"), "kept"));
    FilePaths::removeOldFiles(folder, 0, true);
    QCOMPARE(read(QStringLiteral("kept")), QByteArray("kept"));
    QDir::setCurrent(QDir::rootPath());
}

void FilePathsRemovalTest::prunesAnyDepth()
{
    QString const folder = path(QStringLiteral("folder"));
    QVERIFY(nest(folder, 1'500));
    FilePaths::removeOldFiles(folder, 0, true);
    // Without its files the tree is folders and nothing else, which a plain listing of the top ones shows.
    QString inner = folder;
    for (int i = 0; i < 100; ++i) {
        QCOMPARE(names(inner), QSet<QString>{QStringLiteral("inner")});
        inner += QStringLiteral("/inner");
    }
    QVERIFY(FilePaths::removeFolder(folder));
}

void FilePathsRemovalTest::removesAllFilesByBaseName_data()
{
    QTest::addColumn<QString>("baseName");
    QTest::addColumn<QString>("kept"); // of the names below, with a '/' between them
    QTest::newRow("plain") << "rec"
                           << "Rec.wav/rec.tar.gz/record.wav/.rc/%1.txt/rec.dir";
    QTest::newRow("with a dot") << "rec.tar"
                                << "Rec.wav/rec/rec.mp3/rec.wav/record.wav/.rc/%1.txt/rec.dir";
    QTest::newRow("placeholder") << "%1"
                                 << "Rec.wav/rec/rec.mp3/rec.wav/rec.tar.gz/record.wav/.rc/rec.dir";
    QTest::newRow("wildcard is a letter")
        << "*"
        << "Rec.wav/rec/rec.mp3/rec.wav/rec.tar.gz/record.wav/.rc/%1.txt/rec.dir";
    QTest::newRow("before a leading dot")
        << ""
        << "Rec.wav/rec/rec.mp3/rec.wav/rec.tar.gz/record.wav/%1.txt/rec.dir";
}

void FilePathsRemovalTest::removesAllFilesByBaseName()
{
    QFETCH(QString, baseName);
    QFETCH(QString, kept);
    QDir const folder(path(QStringLiteral("folder")));
    for (char const* const name :
         {"rec.wav", "rec.mp3", "rec", "Rec.wav", "rec.tar.gz", "record.wav", ".rc", "%1.txt"}) {
        QVERIFY(write(folder.filePath(QLatin1String(name)), "x"));
    }
    QVERIFY(folder.mkdir(QStringLiteral("rec.dir")));
    FilePaths::removeAllFilesByBaseName(folder.path(), baseName);
    QStringList const expected = kept.split(QLatin1Char('/'));
    QCOMPARE(names(folder.path()), QSet<QString>(expected.begin(), expected.end()));
}

void FilePathsRemovalTest::removesOtherFilesByBaseName_data()
{
    QTest::addColumn<QString>("keep");
    QTest::addColumn<QString>("kept");
    QTest::newRow("bare name") << "rec.wav"
                               << "rec.wav/rec.tar.gz/record.mp3/%1.a/%1.b";
    QTest::newRow("full path") << "/d/rec.mp3"
                               << "rec.mp3/rec.tar.gz/record.mp3/%1.a/%1.b";
    QTest::newRow("missing file") << "rec.ogg"
                                  << "rec.tar.gz/record.mp3/%1.a/%1.b";
    QTest::newRow("no suffix") << "rec"
                               << "rec/rec.tar.gz/record.mp3/%1.a/%1.b";
    QTest::newRow("placeholder") << "%1.b"
                                 << "rec/rec.wav/rec.WAV/rec.mp3/rec.tar.gz/record.mp3/%1.b";
}

void FilePathsRemovalTest::removesOtherFilesByBaseName()
{
    QFETCH(QString, keep);
    QFETCH(QString, kept);
    QDir const folder(path(QStringLiteral("folder")));
    for (char const* const name :
         {"rec.wav", "rec.WAV", "rec.mp3", "rec", "rec.tar.gz", "record.mp3", "%1.a", "%1.b"}) {
        QVERIFY(write(folder.filePath(QLatin1String(name)), "x"));
    }
    FilePaths::removeOtherFilesByBaseName(folder.path(), keep);
    QStringList const expected = kept.split(QLatin1Char('/'));
    QCOMPARE(names(folder.path()), QSet<QString>(expected.begin(), expected.end()));
}

void FilePathsRemovalTest::removesFilesByExtension_data()
{
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QString>("kept");
    QTest::newRow("last part of several") << "gz"
                                          << "a.tar.gz/a.GZ/a/b.txt";
    QTest::newRow("complete suffix") << "tar.gz"
                                     << "a.gz/a.GZ/a/b.txt/.gz";
    QTest::newRow("upper case") << "GZ"
                                << "a.tar.gz/a.gz/a/b.txt/.gz";
    QTest::newRow("none") << ""
                          << "a.tar.gz/a.gz/a.GZ/b.txt/.gz";
    QTest::newRow("with a dot") << ".gz"
                                << "a.tar.gz/a.gz/a.GZ/a/b.txt/.gz";
    QTest::newRow("wildcard is a letter") << "*"
                                          << "a.tar.gz/a.gz/a.GZ/a/b.txt/.gz";
}

void FilePathsRemovalTest::removesFilesByExtension()
{
    QFETCH(QString, extension);
    QFETCH(QString, kept);
    QDir const folder(path(QStringLiteral("folder")));
    for (char const* const name : {"a.tar.gz", "a.gz", "a.GZ", "a", "b.txt", ".gz"}) {
        QVERIFY(write(folder.filePath(QLatin1String(name)), "x"));
    }
    QVERIFY(folder.mkdir(QStringLiteral("folder.gz")));
    FilePaths::removeExtensionFilesFromFolder(folder.path(), extension);
    QStringList const expected = kept.split(QLatin1Char('/')) + QStringList(QStringLiteral("folder.gz"));
    QCOMPARE(names(folder.path()), QSet<QString>(expected.begin(), expected.end()));
}

void FilePathsRemovalTest::removalsByNameWantAFolder()
{
    QDir::setCurrent(path(QStringLiteral("folder")));
    QVERIFY(write(QStringLiteral("a.wav"), "kept"));
    for (QString const& folder : {QString(), QStringLiteral("/nowhere/at/all"), QStringLiteral(".\0x")}) {
        FilePaths::removeAllFilesByBaseName(folder, QStringLiteral("a"));
        FilePaths::removeOtherFilesByBaseName(folder, QStringLiteral("a.mp3"));
        FilePaths::removeExtensionFilesFromFolder(folder, QStringLiteral("wav"));
    }
    QCOMPARE(read(QStringLiteral("a.wav")), QByteArray("kept"));
    QDir::setCurrent(QDir::rootPath());
}

int main(int argc, char** argv)
{
    return runTest<FilePathsRemovalTest>(argc, argv);
}

#include "FilePathsRemovalTest.moc"
