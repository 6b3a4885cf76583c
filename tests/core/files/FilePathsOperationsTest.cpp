#include <files/FilePaths.h>

#include <MessageRecorder.h>
#include <QFileInfo>
#include <QStandardPaths>
#include <RunTest.h>
#include <TestFiles.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

using TestFiles::isThere;
using TestFiles::names;
using TestFiles::read;
using TestFiles::write;

namespace {

QStringList const& awkwardNames()
{
    static QStringList const list = {
        QStringLiteral("%1.txt"),
        QStringLiteral("two words.txt"),
        QStringLiteral("\u00e8\u4e2d\U0001f4de.txt"),
        QStringLiteral("no suffix"),
        QStringLiteral("a.b.c.txt"),
        QStringLiteral(".hidden"),
        QStringLiteral(".hidden.txt"),
        QStringLiteral("%L2 100%.t%1"),
        QStringLiteral("line\nbreak.txt"),
    };
    return list;
}

void addAwkwardNames()
{
    QTest::addColumn<QString>("name");
    for (QString const& name : awkwardNames()) {
        QTest::newRow(name.toUtf8().constData()) << name;
    }
}

qint64 ageOf(QString const& path)
{
    return QFileInfo(path).lastModified().secsTo(QDateTime::currentDateTime());
}

} // namespace

class FilePathsOperationsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void removesFiles();
    void removeFileLeavesWhatALinkLeadsTo();
    void removeFileRefusesFolders();
    void createFileMakesAndEmpties();
    void createFileFailsWhereNothingCanBe_data();
    void createFileFailsWhereNothingCanBe();
    void createFileDoesNotWaitAtAPipe();

    void createBinaryDataFileWritesAllBytes_data();
    void createBinaryDataFileWritesAllBytes();
    void createBinaryDataFileFollowsLinks_data();
    void createBinaryDataFileFollowsLinks();
    void createBinaryDataFileKeepsPermissions();
    void createBinaryDataFileRefuses_data();
    void createBinaryDataFileRefuses();

    void copyFileFindsAFreeName_data();
    void copyFileFindsAFreeName();
    void copyFileCountsUpFromTheRequestedName();
    void copyFileStampsTheCopyInWholeSeconds();
    void copyFileKeepsAwkwardNames_data();
    void copyFileKeepsAwkwardNames();
    void copyFilePassesOverLinksThatLeadNowhere();
    void copyFileFails_data();
    void copyFileFails();
    void copyFileDoesNotWaitAtAPipe();
    void racingCopiesGetNamesOfTheirOwn();
    void copyFileToItselfMakesASecondFile();
    void takesOneTextAsSourceAndTarget();
    void readsTheApplicationsResources();

    void moveFileRemovesTheSource();
    void moveFileOfNothingFails();
    void createFileCopyInSameFolderNamesTheCopy_data();
    void createFileCopyInSameFolderNamesTheCopy();

    void renameFileReplaces();
    void renameFileKeepsAwkwardNames_data();
    void renameFileKeepsAwkwardNames();
    void renameFileWithoutSourceDestroysNothing_data();
    void renameFileWithoutSourceDestroysNothing();
    void renameFileOntoItselfDestroysNothing_data();
    void renameFileOntoItselfDestroysNothing();
    void renameFileReplacesALinkNotItsTarget();
    void renameFileRenamesLinks();
    void renameFileRefusesAFolder_data();
    void renameFileRefusesAFolder();
    void renameFileTellsFileSystemsApart();
    void renameFileRenamesFolders();
    void renameFileWorksAcrossFileSystems();
    void renameFileAcrossFileSystemsLeavesBothOnFailure();
    void moveFolderRenames();
    void moveFolderNeverReplaces_data();
    void moveFolderNeverReplaces();
    void moveFolderTakesNoAbsoluteName();

    void writesText_data();
    void writesText();
    void writeFileContentTellsWhetherItOpened_data();
    void writeFileContentTellsWhetherItOpened();
    void readsAcceptableText_data();
    void readsAcceptableText();
    void readFileContentRejects_data();
    void readFileContentRejects();
    void readFileContentStoresTheSuffixBeforeTheFurtherChecks();
    void readFileContentDoesNotWaitAtAPipe();

    void findsTheNewestFileByBaseName();
    void findsNoFileByBaseName_data();
    void findsNoFileByBaseName();
    void filesEquallyNewGoByName();
    void findsAwkwardNames_data();
    void findsAwkwardNames();

    void takesTheExtension_data();
    void takesTheExtension();
    void appendsToFileName_data();
    void appendsToFileName();
    void changesTheExtension_data();
    void changesTheExtension();
    void changeFileExtensionLeavesFoldersAlone();
    void handlesTheFileScheme();
    void handleFileSchemeLeavesOtherTexts_data();
    void handleFileSchemeLeavesOtherTexts();
    void tellsTheMimeType_data();
    void tellsTheMimeType();
    void comparesPaths_data();
    void comparesPaths();
    void buildsDownloadPaths();
    void passesOverNamesThatNoFileCanHave_data();
    void passesOverNamesThatNoFileCanHave();

private:
    QString path(QString const& name) const { return m_dir->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void FilePathsOperationsTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

void FilePathsOperationsTest::removesFiles()
{
    for (QString const& name : awkwardNames()) {
        QVERIFY(FilePaths::removeFile(path(name)));
        QVERIFY(write(path(name), "x"));
        QVERIFY(FilePaths::removeFile(path(name)));
        QVERIFY(!isThere(path(name)));
    }
}

void FilePathsOperationsTest::removeFileLeavesWhatALinkLeadsTo()
{
    QVERIFY(write(path(QStringLiteral("target")), "kept"));
    QVERIFY(TestFiles::link(path(QStringLiteral("target")), path(QStringLiteral("link"))));
    QVERIFY(TestFiles::link(path(QStringLiteral("nowhere")), path(QStringLiteral("dangling"))));
    QVERIFY(FilePaths::removeFile(path(QStringLiteral("link"))));
    QVERIFY(FilePaths::removeFile(path(QStringLiteral("dangling"))));
    QCOMPARE(names(m_dir->path()), QSet<QString>{QStringLiteral("target")});
    QCOMPARE(read(path(QStringLiteral("target"))), QByteArray("kept"));
}

void FilePathsOperationsTest::removeFileRefusesFolders()
{
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("folder")));
    QVERIFY(!FilePaths::removeFile(path(QStringLiteral("folder"))));
    QVERIFY(isThere(path(QStringLiteral("folder"))));
}

void FilePathsOperationsTest::createFileMakesAndEmpties()
{
    for (QString const& name : awkwardNames()) {
        QVERIFY(FilePaths::createFile(path(name)));
        QCOMPARE(QFileInfo(path(name)).size(), 0);
        QVERIFY(write(path(name), "x"));
        QVERIFY(FilePaths::createFile(path(name)));
        QCOMPARE(QFileInfo(path(name)).size(), 0);
    }
}

void FilePathsOperationsTest::createFileFailsWhereNothingCanBe_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("no name") << QString();
    QTest::newRow("embedded NUL") << QStringLiteral("/tmp/a\0b").left(8);
    QTest::newRow("a folder") << QStringLiteral("/tmp");
    QTest::newRow("no such folder") << QStringLiteral("/nowhere/at/all.txt");
    QTest::newRow("name too long") << QStringLiteral("/tmp/") + QString(300, QLatin1Char('x'));
}

void FilePathsOperationsTest::createFileFailsWhereNothingCanBe()
{
    QFETCH(QString, name);
    QVERIFY(!FilePaths::createFile(name));
    QVERIFY(!FilePaths::writeFileContent(name, QStringLiteral("x")));
    QCOMPARE(FilePaths::createBinaryDataFile(name, "x"), QString());
}

void FilePathsOperationsTest::createFileDoesNotWaitAtAPipe()
{
    QString const pipe = path(QStringLiteral("pipe"));
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QVERIFY(!FilePaths::createFile(pipe));
    QVERIFY(!FilePaths::writeFileContent(pipe, QStringLiteral("x")));
    QVERIFY(isThere(pipe));
}

void FilePathsOperationsTest::createBinaryDataFileWritesAllBytes_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("line ends and NULs") << QByteArray("a\r\n\0\x1a\xff", 6);
    QTest::newRow("several blocks") << QByteArray(100'000, 'x');
}

void FilePathsOperationsTest::createBinaryDataFileWritesAllBytes()
{
    QFETCH(QByteArray, data);
    for (QString const& name : awkwardNames()) {
        QCOMPARE(FilePaths::createBinaryDataFile(path(name), "before"), path(name));
        QCOMPARE(FilePaths::createBinaryDataFile(path(name), data), path(name));
        QCOMPARE(read(path(name)), data);
    }
    QCOMPARE(names(m_dir->path()), QSet<QString>(awkwardNames().begin(), awkwardNames().end()));
}

void FilePathsOperationsTest::createBinaryDataFileFollowsLinks_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<bool>("targetExists");
    QTest::newRow("absolute link") << QStringLiteral("absolute") << true;
    QTest::newRow("relative link") << QStringLiteral("relative") << true;
    QTest::newRow("link to a link") << QStringLiteral("chain") << true;
    QTest::newRow("link to a file to come") << QStringLiteral("absolute") << false;
    QTest::newRow("relative link to a file to come") << QStringLiteral("relative") << false;
    QTest::newRow("link to a link to a file to come") << QStringLiteral("chain") << false;
}

void FilePathsOperationsTest::createBinaryDataFileFollowsLinks()
{
    QFETCH(QString, first);
    QFETCH(bool, targetExists);
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("inner")));
    QString const target = path(QStringLiteral("inner/target"));
    QVERIFY(!targetExists || write(target, "before"));
    QVERIFY(TestFiles::link(target, path(QStringLiteral("absolute"))));
    QCOMPARE(::symlink("inner/target", QFile::encodeName(path(QStringLiteral("relative"))).constData()), 0);
    QCOMPARE(::symlink("relative", QFile::encodeName(path(QStringLiteral("chain"))).constData()), 0);

    QString const link = path(first);
    QCOMPARE(FilePaths::createBinaryDataFile(link, "after"), link);
    QVERIFY(QFileInfo(link).isSymLink());
    QVERIFY(!QFileInfo(target).isSymLink());
    QCOMPARE(read(target), QByteArray("after"));
    QCOMPARE(names(path(QStringLiteral("inner"))), QSet<QString>{QStringLiteral("target")});
}

void FilePathsOperationsTest::createBinaryDataFileKeepsPermissions()
{
    QString const target = path(QStringLiteral("target"));
    QString const link = path(QStringLiteral("link"));
    QVERIFY(write(target, "before"));
    QVERIFY(TestFiles::link(target, link));
    for (mode_t const mode : {0600U, 0640U, 0664U, 0755U, 0400U, 02640U, 04755U}) {
        QCOMPARE(::chmod(QFile::encodeName(target).constData(), mode), 0);
        // Only root writes to what is protected.
        bool const isWritten = (mode & S_IWUSR) != 0 || ::geteuid() == 0;
        QCOMPARE(FilePaths::createBinaryDataFile(link, "after"), isWritten ? link : QString());
        struct stat status
        {
        };
        QCOMPARE(::stat(QFile::encodeName(target).constData(), &status), 0);
        // What runs as its owner is no longer what that owner made of it; the system takes the bit away.
        mode_t const kept = ::geteuid() == 0 ? mode : mode & ~mode_t(S_ISUID);
        QCOMPARE(status.st_mode & 07777, kept);
    }
}

void FilePathsOperationsTest::createBinaryDataFileRefuses_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("a pipe") << QStringLiteral("pipe");
    QTest::newRow("a folder") << QStringLiteral("folder");
    QTest::newRow("a link to a device") << QStringLiteral("device");
    QTest::newRow("a link to itself") << QStringLiteral("loop");
}

void FilePathsOperationsTest::createBinaryDataFileRefuses()
{
    QFETCH(QString, kind);
    QString const pipe = path(QStringLiteral("pipe"));
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("folder")));
    QVERIFY(TestFiles::link(QStringLiteral("/dev/null"), path(QStringLiteral("device"))));
    QVERIFY(TestFiles::link(path(QStringLiteral("loop")), path(QStringLiteral("loop"))));
    QSet<QString> const before = names(m_dir->path());
    QCOMPARE(FilePaths::createBinaryDataFile(path(kind), "x"), QString());
    QCOMPARE(names(m_dir->path()), before);
    QVERIFY(QFileInfo(QStringLiteral("/dev/null")).exists() &&
            !QFileInfo(QStringLiteral("/dev/null")).isFile());
}

void FilePathsOperationsTest::copyFileFindsAFreeName_data()
{
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<QString>("taken"); // names with a '/' between them
    QTest::addColumn<QString>("used");
    QTest::newRow("free") << "a.txt"
                          << ""
                          << "a.txt";
    QTest::newRow("taken once") << "a.txt"
                                << "a.txt"
                                << "a(1).txt";
    QTest::newRow("taken twice") << "a.txt"
                                 << "a.txt/a(1).txt"
                                 << "a(2).txt";
    QTest::newRow("a gap is used") << "a.txt"
                                   << "a.txt/a(2).txt"
                                   << "a(1).txt";
    QTest::newRow("several dots") << "a.b.txt"
                                  << "a.b.txt"
                                  << "a(1).txt";
    QTest::newRow("no suffix") << "notes"
                               << "notes"
                               << "notes(1).";
    QTest::newRow("leading dot") << ".rc"
                                 << ".rc"
                                 << "(1).rc";
    QTest::newRow("numbered already") << "a(1).txt"
                                      << "a(1).txt"
                                      << "a(1)(1).txt";
    QTest::newRow("placeholder") << "%1%2.%3"
                                 << "%1%2.%3"
                                 << "%1%2(1).%3";
    QTest::newRow("placeholder twice") << "%3.%1"
                                       << "%3.%1/%3(1).%1"
                                       << "%3(2).%1";
    QTest::newRow("non-ASCII") << "\u00e8.t\u00e8"
                               << "\u00e8.t\u00e8"
                               << "\u00e8(1).t\u00e8";
}

void FilePathsOperationsTest::copyFileFindsAFreeName()
{
    QFETCH(QString, wanted);
    QFETCH(QString, taken);
    QFETCH(QString, used);
    QDir(m_dir->path()).mkdir(QStringLiteral("d"));
    QStringList const takenNames = taken.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    for (QString const& name : takenNames) {
        QVERIFY(write(path(QStringLiteral("d/") + name), "taken"));
    }
    QVERIFY(write(path(QStringLiteral("source")), "content"));
    QString dst = path(QStringLiteral("d/") + wanted);
    QVERIFY(FilePaths::copyFile(path(QStringLiteral("source")), dst));
    QCOMPARE(dst, path(QStringLiteral("d/") + used));
    QCOMPARE(read(dst), QByteArray("content"));
    for (QString const& name : takenNames) {
        QCOMPARE(read(path(QStringLiteral("d/") + name)), QByteArray("taken"));
    }
}

void FilePathsOperationsTest::copyFileCountsUpFromTheRequestedName()
{
    QVERIFY(write(path(QStringLiteral("source")), "content"));
    for (int n = 0; n < 12; ++n) {
        QString dst = path(QStringLiteral("a.txt"));
        QVERIFY(FilePaths::copyFile(path(QStringLiteral("source")), dst));
        QCOMPARE(QFileInfo(dst).fileName(),
                 n == 0 ? QStringLiteral("a.txt") : QStringLiteral("a(%1).txt").arg(n));
    }
}

void FilePathsOperationsTest::copyFileStampsTheCopyInWholeSeconds()
{
    QString const source = path(QStringLiteral("source.txt"));
    QVERIFY(write(source, "content"));
    QVERIFY(TestFiles::setAge(source, 1'000'000));
    QFile::setPermissions(source, QFile::ReadOwner);
    QString dst = path(QStringLiteral("copy.txt"));
    QVERIFY(FilePaths::copyFile(source, dst));
    QVERIFY(ageOf(dst) <= 60);
    QCOMPARE(QFileInfo(dst).lastModified().time().msec(), 0);
    QVERIFY(ageOf(source) >= 1'000'000);
}

void FilePathsOperationsTest::copyFileKeepsAwkwardNames_data()
{
    addAwkwardNames();
}

void FilePathsOperationsTest::copyFileKeepsAwkwardNames()
{
    QFETCH(QString, name);
    QVERIFY(write(path(name), "content"));
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("%1 d")));
    QString dst = path(QStringLiteral("%1 d/") + name);
    QString const wanted = dst;
    QVERIFY(FilePaths::copyFile(path(name), dst));
    QCOMPARE(dst, wanted);
    QCOMPARE(read(dst), QByteArray("content"));
    QVERIFY(FilePaths::copyFile(path(name), dst));
    QVERIFY(dst != wanted);
    QCOMPARE(read(dst), QByteArray("content"));
    QCOMPARE(QFileInfo(dst).path(), path(QStringLiteral("%1 d")));
}

void FilePathsOperationsTest::copyFilePassesOverLinksThatLeadNowhere()
{
    QVERIFY(write(path(QStringLiteral("source")), "content"));
    QVERIFY(TestFiles::link(path(QStringLiteral("nowhere")), path(QStringLiteral("a.txt"))));
    QString dst = path(QStringLiteral("a.txt"));
    QVERIFY(FilePaths::copyFile(path(QStringLiteral("source")), dst));
    QCOMPARE(dst, path(QStringLiteral("a(1).txt")));
    QVERIFY(!isThere(path(QStringLiteral("nowhere"))));
}

void FilePathsOperationsTest::copyFileFails_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("target");
    QTest::newRow("no source") << "missing"
                               << "a.txt";
    QTest::newRow("nothing named as source") << ""
                                             << "a.txt";
    QTest::newRow("a folder as source") << "folder"
                                        << "a.txt";
    QTest::newRow("no such folder") << "source"
                                    << "nowhere/a.txt";
    QTest::newRow("a file as folder") << "source"
                                      << "source/a.txt";
    QTest::newRow("name too long") << "source" << QString(300, QLatin1Char('x'));
}

void FilePathsOperationsTest::copyFileFails()
{
    QFETCH(QString, source);
    QFETCH(QString, target);
    QVERIFY(write(path(QStringLiteral("source")), "content"));
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("folder")));
    QSet<QString> const before = names(m_dir->path());
    QString dst = path(target);
    QString const from = source.isEmpty() ? QString() : path(source);
    QVERIFY(!FilePaths::copyFile(from, dst));
    QString nothing;
    QVERIFY(!FilePaths::copyFile(path(QStringLiteral("source")), nothing));
    QVERIFY(!FilePaths::moveFile(from, dst));
    QCOMPARE(names(m_dir->path()), before);
    QCOMPARE(read(path(QStringLiteral("source"))), QByteArray("content"));
}

void FilePathsOperationsTest::copyFileDoesNotWaitAtAPipe()
{
    QString const pipe = path(QStringLiteral("pipe"));
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QString dst = path(QStringLiteral("a.txt"));
    QVERIFY(!FilePaths::copyFile(pipe, dst));
    QVERIFY(!FilePaths::copyFile(QStringLiteral("/dev/zero"), dst));
    QVERIFY(!isThere(dst));
}

void FilePathsOperationsTest::racingCopiesGetNamesOfTheirOwn()
{
    constexpr int callers = 8;
    constexpr int rounds = 10;
    std::vector<QString> used(callers * rounds);
    for (int i = 0; i < callers; ++i) {
        QVERIFY(write(path(QString::number(i)), QByteArray(50'000, static_cast<char>('a' + i))));
    }
    std::vector<std::thread> threads;
    for (int i = 0; i < callers; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < rounds; ++round) {
                QString dst = path(QStringLiteral("copy.bin"));
                if (FilePaths::copyFile(path(QString::number(i)), dst)) {
                    used[static_cast<std::size_t>(i * rounds + round)] = dst;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(QSet<QString>(used.begin(), used.end()).size(), callers * rounds);
    for (int i = 0; i < callers * rounds; ++i) {
        QCOMPARE(read(used[static_cast<std::size_t>(i)]),
                 QByteArray(50'000, static_cast<char>('a' + i / rounds)));
    }
}

void FilePathsOperationsTest::copyFileToItselfMakesASecondFile()
{
    QString const source = path(QStringLiteral("a.txt"));
    QVERIFY(write(source, "content"));
    QString dst = source;
    QVERIFY(FilePaths::copyFile(source, dst));
    QCOMPARE(dst, path(QStringLiteral("a(1).txt")));
    QCOMPARE(read(source), QByteArray("content"));
    QCOMPARE(read(dst), QByteArray("content"));
}

void FilePathsOperationsTest::takesOneTextAsSourceAndTarget()
{
    QString name = path(QStringLiteral("a.txt"));
    QVERIFY(write(name, "content"));
    QVERIFY(FilePaths::copyFile(name, name));
    QCOMPARE(name, path(QStringLiteral("a(1).txt")));
    QCOMPARE(read(name), QByteArray("content"));

    name = path(QStringLiteral("a.txt"));
    QVERIFY(FilePaths::moveFile(name, name));
    QCOMPARE(name, path(QStringLiteral("a(2).txt")));
    QCOMPARE(read(name), QByteArray("content"));
    QCOMPARE(names(m_dir->path()), (QSet<QString>{QStringLiteral("a(1).txt"), QStringLiteral("a(2).txt")}));
}

void FilePathsOperationsTest::readsTheApplicationsResources()
{
    QString const resource = QStringLiteral(":/greeting.txt");
    QString copy = path(QStringLiteral("copy.txt"));
    QVERIFY(FilePaths::copyFile(resource, copy));
    QCOMPARE(read(copy), QByteArray("hello\n"));
    QString suffix;
    QCOMPARE(FilePaths::readFileContent(resource, QStringLiteral("text/plain"), {QStringLiteral("txt")}, 6,
                                        suffix),
             QStringLiteral("hello\n"));
    QCOMPARE(FilePaths::getFileSize(resource), 6);
    QCOMPARE(FilePaths::getFileByBaseName(QStringLiteral(":/"), QStringLiteral("greeting")), resource);
    QCOMPARE(FilePaths::getFilePathInSubfolder(QStringLiteral(":/"), QStringLiteral("greeting.txt")),
             resource);
    // They are part of the program: nothing is written there.
    MessageRecorder recorder;
    QVERIFY(!FilePaths::removeFile(resource));
    QVERIFY(!FilePaths::createFile(resource));
    QVERIFY(!FilePaths::writeFileContent(resource, QStringLiteral("x")));
    QCOMPARE(FilePaths::createBinaryDataFile(resource, "x"), QString());
    QVERIFY(!FilePaths::renameFile(resource, path(QStringLiteral("renamed.txt"))));
    QVERIFY(!FilePaths::renameFile(copy, resource));
    QCOMPARE(recorder.messages(), QStringList());
    QCOMPARE(read(resource), QByteArray("hello\n"));
    QCOMPARE(names(m_dir->path()), QSet<QString>{QStringLiteral("copy.txt")});
}

void FilePathsOperationsTest::moveFileRemovesTheSource()
{
    QVERIFY(write(path(QStringLiteral("source")), "content"));
    QVERIFY(write(path(QStringLiteral("a.txt")), "taken"));
    QString dst = path(QStringLiteral("a.txt"));
    QVERIFY(FilePaths::moveFile(path(QStringLiteral("source")), dst));
    QCOMPARE(dst, path(QStringLiteral("a(1).txt")));
    QCOMPARE(read(dst), QByteArray("content"));
    QCOMPARE(read(path(QStringLiteral("a.txt"))), QByteArray("taken"));
    QVERIFY(!isThere(path(QStringLiteral("source"))));
}

void FilePathsOperationsTest::moveFileOfNothingFails()
{
    QString dst = path(QStringLiteral("a.txt"));
    QVERIFY(!FilePaths::moveFile(path(QStringLiteral("source")), dst));
    QVERIFY(!isThere(dst));
}

void FilePathsOperationsTest::createFileCopyInSameFolderNamesTheCopy_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("copy");
    QTest::newRow("one suffix") << "photo.jpg"
                                << "photo-bk.jpg";
    QTest::newRow("several dots") << "photo.tar.gz"
                                  << "photo-bk.tar.gz";
    QTest::newRow("placeholder") << "%1.%2"
                                 << "%1-bk.%2";
    QTest::newRow("no suffix") << "photo" << QString();
}

void FilePathsOperationsTest::createFileCopyInSameFolderNamesTheCopy()
{
    QFETCH(QString, name);
    QFETCH(QString, copy);
    QVERIFY(write(path(name), "content"));
    QCOMPARE(FilePaths::createFileCopyInSameFolder(path(name), QStringLiteral("bk")), !copy.isEmpty());
    QSet<QString> const expected = copy.isEmpty() ? QSet<QString>{name} : QSet<QString>{name, copy};
    QCOMPARE(names(m_dir->path()), expected);
    QVERIFY(copy.isEmpty() || read(path(copy)) == "content");
}

void FilePathsOperationsTest::renameFileReplaces()
{
    QString const source = path(QStringLiteral("source"));
    QString const dst = path(QStringLiteral("dst"));
    QVERIFY(write(source, "new"));
    QVERIFY(FilePaths::renameFile(source, dst));
    QCOMPARE(read(dst), QByteArray("new"));
    QVERIFY(write(source, "newer"));
    QVERIFY(FilePaths::renameFile(source, dst));
    QCOMPARE(read(dst), QByteArray("newer"));
    QVERIFY(!isThere(source));
}

void FilePathsOperationsTest::renameFileKeepsAwkwardNames_data()
{
    addAwkwardNames();
}

void FilePathsOperationsTest::renameFileKeepsAwkwardNames()
{
    QFETCH(QString, name);
    QVERIFY(write(path(QStringLiteral("source")), "content"));
    QVERIFY(FilePaths::renameFile(path(QStringLiteral("source")), path(name)));
    QCOMPARE(names(m_dir->path()), QSet<QString>{name});
    QVERIFY(FilePaths::renameFile(path(name), path(QStringLiteral("back"))));
    QCOMPARE(read(path(QStringLiteral("back"))), QByteArray("content"));
}

void FilePathsOperationsTest::renameFileWithoutSourceDestroysNothing_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("target");
    QTest::newRow("missing source") << "missing"
                                    << "dst";
    QTest::newRow("source below a file") << "dst/missing"
                                         << "dst";
    QTest::newRow("name too long") << QString(300, QLatin1Char('x')) << "dst";
    QTest::newRow("no such target folder") << "dst"
                                           << "nowhere/dst";
    QTest::newRow("target name too long") << "dst" << QString(300, QLatin1Char('x'));
}

void FilePathsOperationsTest::renameFileWithoutSourceDestroysNothing()
{
    QFETCH(QString, source);
    QFETCH(QString, target);
    QVERIFY(write(path(QStringLiteral("dst")), "kept"));
    QVERIFY(!FilePaths::renameFile(path(source), path(target)));
    QVERIFY(!FilePaths::renameFile(QString(), path(QStringLiteral("dst"))));
    QVERIFY(!FilePaths::renameFile(path(QStringLiteral("dst")), QString()));
    QString const cut = path(QStringLiteral("dst")) + QChar(QChar::Null) + QLatin1Char('x');
    QVERIFY(!FilePaths::renameFile(cut, path(QStringLiteral("other"))));
    QVERIFY(!FilePaths::renameFile(path(QStringLiteral("dst")), cut));
    QCOMPARE(read(path(QStringLiteral("dst"))), QByteArray("kept"));
    QCOMPARE(names(m_dir->path()), QSet<QString>{QStringLiteral("dst")});
}

void FilePathsOperationsTest::renameFileOntoItselfDestroysNothing_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("target");
    QTest::newRow("same path") << "file"
                               << "file";
    QTest::newRow("spelt through the same folder") << "file"
                                                   << "./file";
    QTest::newRow("spelt through another folder") << "folder/../file"
                                                  << "file";
    QTest::newRow("through a linked folder") << "file"
                                             << "linked/file";
    QTest::newRow("hard link") << "file"
                               << "hard";
    QTest::newRow("link onto its file") << "soft"
                                        << "file";
    QTest::newRow("file onto a link to it") << "file"
                                            << "soft";
    QTest::newRow("link onto itself") << "soft"
                                      << "soft";
    QTest::newRow("link onto a link to it") << "soft"
                                            << "softer";
}

void FilePathsOperationsTest::renameFileOntoItselfDestroysNothing()
{
    QFETCH(QString, source);
    QFETCH(QString, target);
    QVERIFY(write(path(QStringLiteral("file")), "kept"));
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("folder")));
    QVERIFY(TestFiles::link(m_dir->path(), path(QStringLiteral("linked"))));
    QVERIFY(TestFiles::link(path(QStringLiteral("file")), path(QStringLiteral("soft"))));
    QVERIFY(TestFiles::link(path(QStringLiteral("soft")), path(QStringLiteral("softer"))));
    QCOMPARE(::link(QFile::encodeName(path(QStringLiteral("file"))).constData(),
                    QFile::encodeName(path(QStringLiteral("hard"))).constData()),
             0);
    QSet<QString> const before = names(m_dir->path());
    QVERIFY(FilePaths::renameFile(path(source), path(target)));
    QCOMPARE(names(m_dir->path()), before);
    for (char const* const name : {"file", "hard", "soft", "softer", "linked/file"}) {
        QCOMPARE(read(path(QLatin1String(name))), QByteArray("kept"));
    }
}

void FilePathsOperationsTest::renameFileReplacesALinkNotItsTarget()
{
    QVERIFY(write(path(QStringLiteral("source")), "new"));
    QVERIFY(write(path(QStringLiteral("target")), "kept"));
    QVERIFY(TestFiles::link(path(QStringLiteral("target")), path(QStringLiteral("link"))));
    QVERIFY(FilePaths::renameFile(path(QStringLiteral("source")), path(QStringLiteral("link"))));
    QCOMPARE(read(path(QStringLiteral("target"))), QByteArray("kept"));
    QCOMPARE(read(path(QStringLiteral("link"))), QByteArray("new"));
    QVERIFY(!QFileInfo(path(QStringLiteral("link"))).isSymLink());

    // A link to a folder is a link, too.
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("folder")));
    QVERIFY(TestFiles::link(path(QStringLiteral("folder")), path(QStringLiteral("to folder"))));
    QVERIFY(FilePaths::renameFile(path(QStringLiteral("link")), path(QStringLiteral("to folder"))));
    QCOMPARE(read(path(QStringLiteral("to folder"))), QByteArray("new"));
    QVERIFY(names(path(QStringLiteral("folder"))).isEmpty());
}

void FilePathsOperationsTest::renameFileRenamesLinks()
{
    QVERIFY(TestFiles::link(path(QStringLiteral("nowhere")), path(QStringLiteral("dangling"))));
    QVERIFY(FilePaths::renameFile(path(QStringLiteral("dangling")), path(QStringLiteral("renamed"))));
    QCOMPARE(names(m_dir->path()), QSet<QString>{QStringLiteral("renamed")});
    QVERIFY(QFileInfo(path(QStringLiteral("renamed"))).isSymLink());
    QVERIFY(FilePaths::renameFile(path(QStringLiteral("renamed")), path(QStringLiteral("renamed"))));
    QVERIFY(isThere(path(QStringLiteral("renamed"))));
}

void FilePathsOperationsTest::renameFileRefusesAFolder_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("target");
    QTest::newRow("file onto an empty folder") << "file"
                                               << "empty";
    QTest::newRow("file onto a full folder") << "file"
                                             << "full";
    QTest::newRow("folder onto an empty folder") << "full"
                                                 << "empty";
    QTest::newRow("folder onto a full folder") << "empty"
                                               << "full";
    QTest::newRow("link to a folder onto an empty folder") << "linked"
                                                           << "empty";
}

void FilePathsOperationsTest::renameFileRefusesAFolder()
{
    QFETCH(QString, source);
    QFETCH(QString, target);
    QVERIFY(write(path(QStringLiteral("file")), "kept"));
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("empty")));
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("full")));
    QVERIFY(write(path(QStringLiteral("full/file")), "kept"));
    QVERIFY(TestFiles::link(path(QStringLiteral("full")), path(QStringLiteral("linked"))));
    QSet<QString> const before = names(m_dir->path());
    QVERIFY(!FilePaths::renameFile(path(source), path(target)));
    QCOMPARE(names(m_dir->path()), before);
    QCOMPARE(read(path(QStringLiteral("file"))), QByteArray("kept"));
    QCOMPARE(read(path(QStringLiteral("linked/file"))), QByteArray("kept"));
    QVERIFY(names(path(QStringLiteral("empty"))).isEmpty());
}

/// The numbers of files are unique within a file system only.
void FilePathsOperationsTest::renameFileTellsFileSystemsApart()
{
    QString const first = QStringLiteral("/proc");
    QString const second = QStringLiteral("/sys");
    auto const numberOf = [](QString const& folder) {
        struct stat status = {};
        return ::stat(QFile::encodeName(folder).constData(), &status) == 0 ? status.st_ino : 0;
    };
    if (numberOf(first) == 0 || numberOf(first) != numberOf(second)) {
        QSKIP("no two file systems here whose tops have one number");
    }
    QString const link = path(QStringLiteral("link"));
    QVERIFY(TestFiles::link(first, link));
    QVERIFY(!FilePaths::renameFile(link, second));
    QVERIFY(isThere(link));
}

void FilePathsOperationsTest::renameFileRenamesFolders()
{
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("folder")));
    QVERIFY(write(path(QStringLiteral("folder/file")), "content"));
    QVERIFY(FilePaths::renameFile(path(QStringLiteral("folder")), path(QStringLiteral("folder"))));
    QVERIFY(FilePaths::renameFile(path(QStringLiteral("folder")), path(QStringLiteral("renamed"))));
    QCOMPARE(read(path(QStringLiteral("renamed/file"))), QByteArray("content"));
    QCOMPARE(names(m_dir->path()), QSet<QString>{QStringLiteral("renamed")});
}

void FilePathsOperationsTest::renameFileWorksAcrossFileSystems()
{
    QTemporaryDir const other(QStringLiteral("/dev/shm/spcore-test-XXXXXX"));
    QString const source = other.filePath(QStringLiteral("source.txt"));
    QString const dst = path(QStringLiteral("dst.txt"));
    QVERIFY(write(source, "new"));
    QVERIFY(write(dst, "old"));
    QVERIFY(FilePaths::renameFile(source, dst));
    QCOMPARE(read(dst), QByteArray("new"));
    QVERIFY(!isThere(source));
    QCOMPARE(names(m_dir->path()), QSet<QString>{QStringLiteral("dst.txt")});

    QString const longest(255, QLatin1Char('n'));
    QVERIFY(write(source, "long"));
    QVERIFY(FilePaths::renameFile(source, path(longest)));
    QCOMPARE(read(path(longest)), QByteArray("long"));
}

void FilePathsOperationsTest::renameFileAcrossFileSystemsLeavesBothOnFailure()
{
    QTemporaryDir const other(QStringLiteral("/dev/shm/spcore-test-XXXXXX"));
    QString const source = other.filePath(QStringLiteral("source.txt"));
    QVERIFY(write(source, "kept"));
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("folder")));
    QVERIFY(!FilePaths::renameFile(source, path(QStringLiteral("folder"))));
    QVERIFY(!FilePaths::renameFile(source, path(QStringLiteral("nowhere/a.txt"))));
    QVERIFY(!FilePaths::renameFile(other.path(), path(QStringLiteral("new folder"))));
    QCOMPARE(read(source), QByteArray("kept"));
    QCOMPARE(names(m_dir->path()), QSet<QString>{QStringLiteral("folder")});
}

void FilePathsOperationsTest::moveFolderRenames()
{
    QDir(m_dir->path()).mkpath(QStringLiteral("src %1/deep"));
    QDir(m_dir->path()).mkpath(QStringLiteral("dest"));
    QVERIFY(write(path(QStringLiteral("src %1/deep/a")), "content"));
    QVERIFY(FilePaths::moveFolder(path(QStringLiteral("src %1")), path(QStringLiteral("dest")),
                                  QStringLiteral("new %1")));
    QCOMPARE(read(path(QStringLiteral("dest/new %1/deep/a"))), QByteArray("content"));
    QVERIFY(!isThere(path(QStringLiteral("src %1"))));
    // A name of several levels stays inside, and dots alone lead nowhere.
    QVERIFY(FilePaths::moveFolder(path(QStringLiteral("dest/new %1")), m_dir->path(),
                                  QStringLiteral("dest/..new..")));
    QCOMPARE(read(path(QStringLiteral("dest/..new../deep/a"))), QByteArray("content"));
}

void FilePathsOperationsTest::moveFolderNeverReplaces_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("name");
    QTest::newRow("an empty folder is there") << "src"
                                              << "dest"
                                              << "empty";
    QTest::newRow("a full folder is there") << "src"
                                            << "dest"
                                            << "full";
    QTest::newRow("a file is there") << "src"
                                     << "dest/full"
                                     << "a";
    QTest::newRow("a link is there") << "src"
                                     << "dest"
                                     << "dangling";
    QTest::newRow("into itself") << "src"
                                 << "src"
                                 << "inner";
    QTest::newRow("no such source") << "missing"
                                    << "dest"
                                    << "new";
    QTest::newRow("a file as source") << "dest/full/a"
                                      << "dest"
                                      << "new";
    QTest::newRow("no such target folder") << "src"
                                           << "missing"
                                           << "new";
    QTest::newRow("no name") << "src"
                             << "dest"
                             << "";
    QTest::newRow("a level up") << "src"
                                << "dest"
                                << "../escaped";
    QTest::newRow("a level up on the way") << "src"
                                           << "dest"
                                           << "full/../../escaped";
    QTest::newRow("a level up through a link") << "src"
                                               << "dest"
                                               << "outside/../escaped";
    QTest::newRow("the level up itself") << "src"
                                         << "dest/missing"
                                         << "..";
}

void FilePathsOperationsTest::moveFolderNeverReplaces()
{
    QFETCH(QString, source);
    QFETCH(QString, target);
    QFETCH(QString, name);
    for (char const* const folder : {"src", "dest/empty", "dest/full"}) {
        QVERIFY(QDir(m_dir->path()).mkpath(QLatin1String(folder)));
    }
    QVERIFY(write(path(QStringLiteral("src/b")), "kept"));
    QVERIFY(write(path(QStringLiteral("dest/full/a")), "kept"));
    QVERIFY(QDir(m_dir->path()).mkpath(QStringLiteral("elsewhere/inner")));
    QVERIFY(TestFiles::link(path(QStringLiteral("nowhere")), path(QStringLiteral("dest/dangling"))));
    QVERIFY(TestFiles::link(path(QStringLiteral("elsewhere/inner")), path(QStringLiteral("dest/outside"))));
    QVERIFY(!FilePaths::moveFolder(path(source), path(target), name));
    QCOMPARE(read(path(QStringLiteral("src/b"))), QByteArray("kept"));
    QCOMPARE(read(path(QStringLiteral("dest/full/a"))), QByteArray("kept"));
    QVERIFY(isThere(path(QStringLiteral("dest/dangling"))));
}

void FilePathsOperationsTest::moveFolderTakesNoAbsoluteName()
{
    for (char const* const folder : {"src", "dest"}) {
        QVERIFY(QDir(m_dir->path()).mkdir(QLatin1String(folder)));
    }
    QSet<QString> const before = names(m_dir->path());
    QVERIFY(!FilePaths::moveFolder(path(QStringLiteral("src")), path(QStringLiteral("dest")),
                                   path(QStringLiteral("escaped"))));
    QCOMPARE(names(m_dir->path()), before);
}

void FilePathsOperationsTest::writesText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QString() << QByteArray("");
    QTest::newRow("line ends stay") << QStringLiteral("a\nb\r\n") << QByteArray("a\nb\r\n");
    QTest::newRow("non-ASCII is UTF-8")
        << QStringLiteral("\u00e8 \U0001f4de") << QByteArray("\xc3\xa8 \xf0\x9f\x93\x9e");
    QTest::newRow("long") << QString(100'000, QLatin1Char('x')) << QByteArray(100'000, 'x');
}

void FilePathsOperationsTest::writesText()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, bytes);
    for (QString const& name : awkwardNames()) {
        QVERIFY(write(path(name), "what was there before"));
        QVERIFY(FilePaths::writeFileContent(path(name), text));
        QCOMPARE(read(path(name)), bytes);
    }
}

void FilePathsOperationsTest::writeFileContentTellsWhetherItOpened_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("opens");
    QTest::newRow("a folder") << QStringLiteral("/tmp") << false;
    QTest::newRow("no such folder") << QStringLiteral("/nowhere/at/all") << false;
#ifdef __linux__
    QTest::newRow("a device that is always full") << QStringLiteral("/dev/full") << true;
#endif
}

void FilePathsOperationsTest::writeFileContentTellsWhetherItOpened()
{
    QFETCH(QString, name);
    QTEST(FilePaths::writeFileContent(name, QString(100'000, QLatin1Char('x'))), "opens");
}

void FilePathsOperationsTest::readsAcceptableText_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("mimeType");
    QTest::addColumn<QString>("text");
    QTest::newRow("plain") << "a.txt" << QByteArray("abc") << "text/plain"
                           << "abc";
    QTest::newRow("upper-case suffix") << "A.TXT" << QByteArray("abc") << "text/plain"
                                       << "abc";
    QTest::newRow("several dots") << "a.b.txt" << QByteArray("abc") << "text/plain"
                                  << "abc";
    QTest::newRow("leading dot") << ".txt" << QByteArray("abc") << "text/plain"
                                 << "abc";
    QTest::newRow("inherits from plain text") << "a.csv" << QByteArray("a,b") << "text/plain"
                                              << "a,b";
    QTest::newRow("everything is bytes") << "a.txt" << QByteArray("abc") << "application/octet-stream"
                                         << "abc";
    QTest::newRow("carriage returns go") << "a.txt" << QByteArray("a\r\nb\rc\n") << "text/plain"
                                         << "a\nbc\n";
    QTest::newRow("UTF-8") << "a.txt" << QByteArray("\xc3\xa8") << "text/plain" << QStringLiteral("\u00e8");
    QTest::newRow("UTF-8 with a mark") << "a.txt" << QByteArray("\xef\xbb\xbfx") << "text/plain"
                                       << "x";
    QTest::newRow("UTF-16, little end first")
        << "a.txt" << QByteArray("\xff\xfe\xe8\x00", 4) << "text/plain" << QStringLiteral("\u00e8");
    QTest::newRow("UTF-16, big end first")
        << "a.txt" << QByteArray("\xfe\xff\x00\xe8", 4) << "text/plain" << QStringLiteral("\u00e8");
    QTest::newRow("broken UTF-8") << "a.txt" << QByteArray("a\xff") << "text/plain"
                                  << QStringLiteral("a\ufffd");
    QTest::newRow("empty") << "a.txt" << QByteArray() << "text/plain" << QString();
    QTest::newRow("exactly the size allowed")
        << "a.txt" << QByteArray(1000, 'x') << "text/plain" << QString(1000, QLatin1Char('x'));
}

void FilePathsOperationsTest::readsAcceptableText()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, mimeType);
    QFETCH(QString, text);
    QVERIFY(write(path(name), bytes));
    QString suffix;
    std::vector<QString> const suffixes = {QStringLiteral("csv"), QStringLiteral("txt")};
    QCOMPARE(FilePaths::readFileContent(path(name), mimeType, suffixes, 1000, suffix), text);
    QCOMPARE(suffix, QFileInfo(name).suffix().toLower());
    constexpr unsigned int greatest = std::numeric_limits<unsigned int>::max();
    QCOMPARE(FilePaths::readFileContent(path(name), mimeType, suffixes, greatest, suffix), text);
}

void FilePathsOperationsTest::readFileContentRejects_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("mimeType");
    QTest::addColumn<unsigned int>("maxSize");
    QTest::addColumn<QString>("suffix");
    QTest::newRow("missing") << "missing.txt"
                             << "text/plain" << 100U << "untouched";
    QTest::newRow("other suffix") << "a.dat"
                                  << "text/plain" << 100U << "untouched";
    QTest::newRow("no suffix") << "txt"
                               << "text/plain" << 100U << "untouched";
    QTest::newRow("suffix listed in upper case") << "a.up"
                                                 << "application/octet-stream" << 100U << "untouched";
    QTest::newRow("other type") << "a.txt"
                                << "text/csv" << 100U << "txt";
    QTest::newRow("no type") << "a.txt"
                             << "" << 100U << "txt";
    QTest::newRow("one byte too long") << "a.txt"
                                       << "text/plain" << 9U << "txt";
    QTest::newRow("nothing allowed") << "a.txt"
                                     << "text/plain" << 0U << "txt";
    QTest::newRow("a folder") << "folder.txt"
                              << "inode/directory" << 100U << "txt";
}

void FilePathsOperationsTest::readFileContentRejects()
{
    QFETCH(QString, name);
    QFETCH(QString, mimeType);
    QFETCH(unsigned int, maxSize);
    for (char const* const file : {"a.txt", "a.dat", "txt", "a.up"}) {
        QVERIFY(write(path(QLatin1String(file)), "ten bytes!"));
    }
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("folder.txt")));
    QString suffix = QStringLiteral("untouched");
    std::vector<QString> const suffixes = {QStringLiteral("txt"), QStringLiteral("UP")};
    QCOMPARE(FilePaths::readFileContent(path(name), mimeType, suffixes, maxSize, suffix), QString());
    QTEST(suffix, "suffix");
}

void FilePathsOperationsTest::readFileContentStoresTheSuffixBeforeTheFurtherChecks()
{
    QVERIFY(write(path(QStringLiteral("a.TXT")), "x"));
    QString suffix;
    QCOMPARE(FilePaths::readFileContent(path(QStringLiteral("a.TXT")), QStringLiteral("image/png"),
                                        {QStringLiteral("txt")}, 0, suffix),
             QString());
    QCOMPARE(suffix, QStringLiteral("txt"));
}

void FilePathsOperationsTest::readFileContentDoesNotWaitAtAPipe()
{
    QString const pipe = path(QStringLiteral("pipe.txt"));
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QString suffix;
    QCOMPARE(
        FilePaths::readFileContent(pipe, QStringLiteral("inode/fifo"), {QStringLiteral("txt")}, 10, suffix),
        QString());
    QCOMPARE(FilePaths::getFileMimeType(pipe), QStringLiteral("inode/fifo"));
}

void FilePathsOperationsTest::findsTheNewestFileByBaseName()
{
    struct Row
    {
        char const* name;
        qint64 age;
    };
    for (Row const& row : {Row{"rec.wav", 300}, Row{"rec.mp3", 100}, Row{"rec.ogg", 200}, Row{"rec", 150},
                           Row{"rec.tar.gz", 1}, Row{"Rec.wav", 2}, Row{"record.wav", 3}}) {
        QVERIFY(write(path(QLatin1String(row.name)), "x"));
        QVERIFY(TestFiles::setAge(path(QLatin1String(row.name)), row.age));
    }
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("rec.dir")));
    auto const find = [&](char const* name) {
        return FilePaths::getFileByBaseName(m_dir->path(), QLatin1String(name));
    };
    QCOMPARE(find("rec"), path(QStringLiteral("rec.mp3")));
    QCOMPARE(find("rec.tar"), path(QStringLiteral("rec.tar.gz")));
    QCOMPARE(find("Rec"), path(QStringLiteral("Rec.wav")));
    QVERIFY(TestFiles::setAge(path(QStringLiteral("rec")), -100));
    QCOMPARE(find("rec"), path(QStringLiteral("rec")));
}

void FilePathsOperationsTest::findsNoFileByBaseName_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("baseName");
    QTest::newRow("no such name") << "/"
                                  << "no such file";
    QTest::newRow("no such folder") << "/nowhere/at/all"
                                    << "a";
    QTest::newRow("no folder") << ""
                               << "a";
    QTest::newRow("wildcards are letters") << "/etc"
                                           << "*";
}

void FilePathsOperationsTest::findsNoFileByBaseName()
{
    QFETCH(QString, folder);
    QFETCH(QString, baseName);
    QCOMPARE(FilePaths::getFileByBaseName(folder, baseName), QString());
}

void FilePathsOperationsTest::filesEquallyNewGoByName()
{
    timespec const then{1'600'000'000, 5};
    for (char const* const name : {"a.z", "a.b", "a.c"}) {
        QVERIFY(write(path(QLatin1String(name)), "x"));
        QVERIFY(TestFiles::setModified(path(QLatin1String(name)), then));
    }
    QCOMPARE(FilePaths::getFileByBaseName(m_dir->path(), QStringLiteral("a")), path(QStringLiteral("a.b")));
    QVERIFY(TestFiles::setModified(path(QStringLiteral("a.z")), {then.tv_sec, 6}));
    QCOMPARE(FilePaths::getFileByBaseName(m_dir->path(), QStringLiteral("a")), path(QStringLiteral("a.z")));
}

void FilePathsOperationsTest::findsAwkwardNames_data()
{
    addAwkwardNames();
}

void FilePathsOperationsTest::findsAwkwardNames()
{
    QFETCH(QString, name);
    QVERIFY(write(path(name), "x"));
    QCOMPARE(FilePaths::getFileByBaseName(m_dir->path(), QFileInfo(name).completeBaseName()), path(name));
}

void FilePathsOperationsTest::takesTheExtension_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("extension");
    QTest::newRow("one dot") << "a.txt"
                             << "txt";
    QTest::newRow("several dots") << "/d.e/a.tar.gz"
                                  << "gz";
    QTest::newRow("no dot") << "/d.e/a"
                            << "";
    QTest::newRow("leading dot") << ".rc"
                                 << "rc";
    QTest::newRow("dot at the end") << "a."
                                    << "";
    QTest::newRow("case stays") << "a.TXT"
                                << "TXT";
    QTest::newRow("nothing") << ""
                             << "";
}

void FilePathsOperationsTest::takesTheExtension()
{
    QFETCH(QString, name);
    QTEST(FilePaths::getExtensionFromFileName(name), "extension");
}

void FilePathsOperationsTest::appendsToFileName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QString>("result");
    QTest::newRow("no extension") << "/d/rec.wav"
                                  << "2"
                                  << ""
                                  << "rec_2.wav";
    QTest::newRow("its own extension") << "/d/rec.wav"
                                       << "2"
                                       << "wav"
                                       << "rec_2.wav";
    QTest::newRow("another extension") << "/d/rec.wav"
                                       << "2"
                                       << "mp3"
                                       << "rec_2.wav.mp3";
    QTest::newRow("case makes another") << "rec.wav"
                                        << "2"
                                        << "WAV"
                                        << "rec_2.wav.WAV";
    QTest::newRow("several dots, last suffix") << "a.tar.gz"
                                               << "x"
                                               << "gz"
                                               << "a_x.tar.gz";
    QTest::newRow("several dots, complete suffix") << "a.tar.gz"
                                                   << "x"
                                                   << "tar.gz"
                                                   << "a_x.tar.gz.tar.gz";
    QTest::newRow("no suffix") << "/d/notes"
                               << "2"
                               << ""
                               << "notes_2.";
    QTest::newRow("no suffix, with extension") << "/d/notes"
                                               << "2"
                                               << "txt"
                                               << "notes_2..txt";
    QTest::newRow("leading dot") << ".rc"
                                 << "2"
                                 << ""
                                 << "_2.rc";
    QTest::newRow("placeholders") << "%1.%2"
                                  << "%3"
                                  << "%4"
                                  << "%1_%3.%2.%4";
    QTest::newRow("nothing") << ""
                             << ""
                             << ""
                             << "_.";
}

void FilePathsOperationsTest::appendsToFileName()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    QFETCH(QString, extension);
    QTEST(FilePaths::appendToFileName(name, text, extension), "result");
}

void FilePathsOperationsTest::changesTheExtension_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QString>("result");
    QTest::newRow("with a dot") << "/d/a.wav"
                                << ".mp3"
                                << "/d/a.mp3";
    QTest::newRow("without a dot") << "/d/a.wav"
                                   << "mp3"
                                   << "/d/a.mp3";
    QTest::newRow("one dot of two") << "/d/a.wav"
                                    << "..mp3"
                                    << "/d/a..mp3";
    QTest::newRow("several dots") << "/d/a.b.wav"
                                  << "mp3"
                                  << "/d/a.b.mp3";
    QTest::newRow("no suffix") << "/d/notes"
                               << "txt"
                               << "/d/notes.txt";
    QTest::newRow("leading dot") << "/d/.rc"
                                 << "txt"
                                 << "/d/.txt";
    QTest::newRow("no extension") << "/d/a.wav"
                                  << ""
                                  << "/d/a.";
    QTest::newRow("placeholders") << "/%1/%1.%2"
                                  << "%2"
                                  << "/%1/%1.%2";
    QTest::newRow("placeholder as base name") << "/d/%2.wav"
                                              << "%1"
                                              << "/d/%2.%1";
    QTest::newRow("top folder") << "/a.wav"
                                << "mp3"
                                << "/a.mp3";
    QTest::newRow("nothing") << ""
                             << "mp3"
                             << "";
}

void FilePathsOperationsTest::changesTheExtension()
{
    QFETCH(QString, name);
    QFETCH(QString, extension);
    QTEST(FilePaths::changeFileExtension(name, extension), "result");
}

void FilePathsOperationsTest::changeFileExtensionLeavesFoldersAlone()
{
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("a.wav")));
    QCOMPARE(FilePaths::changeFileExtension(path(QStringLiteral("a.wav")), QStringLiteral("mp3")),
             path(QStringLiteral("a.wav")));
    QCOMPARE(FilePaths::changeFileExtension(path(QStringLiteral("a.wav/")), QStringLiteral("mp3")),
             path(QStringLiteral("a.wav/")));
    QVERIFY(FilePaths::areSameFilePath(
        FilePaths::changeFileExtension(QStringLiteral("rel.wav"), QStringLiteral("mp3")),
        QStringLiteral("rel.mp3")));
}

void FilePathsOperationsTest::handlesTheFileScheme()
{
    QString const file = path(QStringLiteral("a %1 b%20c.txt"));
    QVERIFY(write(file, "x"));
    QCOMPARE(FilePaths::handleFileScheme(file), QStringLiteral("file:///") + file);
    QCOMPARE(FilePaths::handleFileScheme(QUrl::fromLocalFile(file).toString(QUrl::FullyEncoded)),
             QStringLiteral("file:///") + file);
    QCOMPARE(FilePaths::handleFileScheme(QLatin1Char('/') + file), QStringLiteral("file:/") + file);
}

void FilePathsOperationsTest::handleFileSchemeLeavesOtherTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << QString();
    QTest::newRow("missing file") << QStringLiteral("/nowhere/at/all.txt");
    QTest::newRow("web address") << QStringLiteral("https://host.example/etc/passwd");
    QTest::newRow("bare host") << QStringLiteral("host.example");
    QTest::newRow("relative path") << QStringLiteral("a.txt");
    QTest::newRow("words") << QStringLiteral("call me at %1");
    QTest::newRow("embedded NUL") << QStringLiteral("/tmp\0").left(5);
}

void FilePathsOperationsTest::handleFileSchemeLeavesOtherTexts()
{
    QFETCH(QString, text);
    QCOMPARE(FilePaths::handleFileScheme(text), text);
}

void FilePathsOperationsTest::tellsTheMimeType_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("type");
    QTest::newRow("by name") << "a.png" << QByteArray("no picture") << "image/png";
    QTest::newRow("by content") << "picture" << QByteArray("\x89PNG\r\n\x1a\n") << "image/png";
    QTest::newRow("text by content") << "words" << QByteArray("words\n") << "text/plain";
    QTest::newRow("missing, by name") << "missing.pdf" << QByteArray() << "application/pdf";
    QTest::newRow("nothing known") << "missing" << QByteArray() << "application/octet-stream";
}

void FilePathsOperationsTest::tellsTheMimeType()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QVERIFY(content.isEmpty() || write(path(name), content));
    QTEST(FilePaths::getFileMimeType(path(name)), "type");
    QCOMPARE(FilePaths::getFileMimeType(QString()), QStringLiteral("application/octet-stream"));
    QCOMPARE(FilePaths::getFileMimeType(m_dir->path()), QStringLiteral("inode/directory"));
}

void FilePathsOperationsTest::comparesPaths_data()
{
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<bool>("same");
    QTest::newRow("equal") << "/d/a.txt"
                           << "/d/a.txt" << true;
    QTest::newRow("up again") << "/d/x/../a.txt"
                              << "/d/a.txt" << true;
    QTest::newRow("dots and slashes") << "/d/.//a.txt"
                                      << "/d/a.txt" << true;
    QTest::newRow("slash at the end") << "/d/a/"
                                      << "/d/a" << true;
    QTest::newRow("relative") << "a.txt" << QDir::currentPath() + QStringLiteral("/a.txt") << true;
    QTest::newRow("case") << "/d/A.txt"
                          << "/d/a.txt" << false;
    QTest::newRow("different") << "/d/a.txt"
                               << "/d/b.txt" << false;
    QTest::newRow("nothing") << ""
                             << "" << true;
    QTest::newRow("nothing is not the current folder") << ""
                                                       << "." << false;
}

void FilePathsOperationsTest::comparesPaths()
{
    QFETCH(QString, a);
    QFETCH(QString, b);
    QTEST(FilePaths::areSameFilePath(a, b), "same");
    QTEST(FilePaths::areSameFilePath(b, a), "same");
}

void FilePathsOperationsTest::buildsDownloadPaths()
{
    QString const folder = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    QCOMPARE(FilePaths::buildDownloadFilePath(QStringLiteral("/x/%1 report.pdf")),
             QDir(folder).absoluteFilePath(QStringLiteral("%1 report.pdf")));
    // Names are numbered after those in the current folder.
    QVERIFY(write(path(QStringLiteral("report.pdf")), "x"));
    QVERIFY(QDir::setCurrent(m_dir->path()));
    QCOMPARE(FilePaths::buildDownloadFilePath(QStringLiteral("report.pdf")),
             QDir(folder).absoluteFilePath(QStringLiteral("report(1).pdf")));
    QDir::setCurrent(QDir::rootPath());
}

void FilePathsOperationsTest::passesOverNamesThatNoFileCanHave_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("nothing") << QString();
    QTest::newRow("an embedded NUL") << QStringLiteral("FOLDER/a\0b");
    QTest::newRow("a NUL after an existing name") << QStringLiteral("FOLDER\0");
}

void FilePathsOperationsTest::passesOverNamesThatNoFileCanHave()
{
    QFETCH(QString, name);
    // Should one of them be taken for another name after all, it is that of a folder which can be spared.
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("folder")));
    QVERIFY(QDir::setCurrent(path(QStringLiteral("folder"))));
    QVERIFY(write(QStringLiteral("kept"), "kept"));
    name.replace(QStringLiteral("FOLDER"), path(QStringLiteral("folder")));
    QString const file = path(QStringLiteral("a.txt"));
    QVERIFY(write(file, "kept"));
    QString const fresh = path(QStringLiteral("fresh"));
    MessageRecorder recorder;
    QVERIFY(FilePaths::removeFile(name));
    QVERIFY(!FilePaths::createFile(name));
    QCOMPARE(FilePaths::createBinaryDataFile(name, "x"), QString());
    QString target = fresh;
    QVERIFY(!FilePaths::copyFile(name, target));
    QVERIFY(!FilePaths::moveFile(name, target));
    target = name;
    QVERIFY(!FilePaths::copyFile(file, target));
    QVERIFY(!FilePaths::moveFile(file, target));
    QVERIFY(!FilePaths::createFileCopyInSameFolder(name, QStringLiteral("bk")));
    QVERIFY(!FilePaths::renameFile(name, fresh));
    QVERIFY(!FilePaths::renameFile(file, name));
    QVERIFY(!FilePaths::moveFolder(name, m_dir->path(), QStringLiteral("fresh")));
    QVERIFY(!FilePaths::moveFolder(m_dir->path(), name, QStringLiteral("fresh")));
    QVERIFY(FilePaths::removeFolder(name));
    QVERIFY(!FilePaths::cleanFolder(name));
    FilePaths::removeOldFiles(name, 0, true);
    QCOMPARE(FilePaths::getFileByBaseName(name, QStringLiteral("a")), QString());
    FilePaths::removeAllFilesByBaseName(name, QStringLiteral("a"));
    FilePaths::removeOtherFilesByBaseName(name, QStringLiteral("a"));
    FilePaths::removeExtensionFilesFromFolder(name, QStringLiteral("txt"));
    QVERIFY(!FilePaths::writeFileContent(name, QStringLiteral("x")));
    QString suffix = QStringLiteral("untouched");
    QCOMPARE(FilePaths::readFileContent(name, QStringLiteral("text/plain"), {QString()}, 10, suffix),
             QString());
    QCOMPARE(suffix, QStringLiteral("untouched"));
    QCOMPARE(FilePaths::changeFileExtension(QString(), name), QString());
    QCOMPARE(FilePaths::handleFileScheme(name), name);
    QCOMPARE(FilePaths::getFileMimeType(name), QStringLiteral("application/octet-stream"));
    QVERIFY(FilePaths::areSameFilePath(name, name));
    QVERIFY(!FilePaths::areSameFilePath(name, file));
    QCOMPARE(recorder.messages(), QStringList());
    QCOMPARE(read(file), QByteArray("kept"));
    QCOMPARE(read(path(QStringLiteral("folder/kept"))), QByteArray("kept"));
    QVERIFY(!isThere(fresh));
    QDir::setCurrent(QDir::rootPath());
}

int main(int argc, char** argv)
{
    return runTest<FilePathsOperationsTest>(argc, argv);
}

#include "FilePathsOperationsTest.moc"
