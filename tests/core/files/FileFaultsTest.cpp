#include <files/FilePaths.h>
#include <files/ImageUtils.h>

#include <ChildProcess.h>
#include <Faults.h>
#include <QFileInfo>
#include <RunTest.h>
#include <TestFiles.h>
#include <atomic>
#include <csignal>
#include <sys/stat.h>
#include <thread>

using TestFiles::isThere;
using TestFiles::names;
using TestFiles::read;
using TestFiles::write;

namespace {

constexpr qint64 smallSize = 256 * 1024;
constexpr qint64 largeSize = 1024 * 1024;

/// The steps of a child process: it ends with the number of the first step that is not as it should be.
class Steps
{
public:
    void expect(bool fulfilled)
    {
        ++m_step;
        if (!fulfilled && m_failed == 0) {
            m_failed = m_step;
        }
    }

    [[nodiscard]] int result() const { return m_failed; }

private:
    int m_step = 0;
    int m_failed = 0;
};

/// Runs \a body in a child where \a folder has no room for a large file.
int onFullDisk(bool byFileSystem, QString const& folder, std::function<int()> const& body)
{
    return inChildProcess([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        bool const ready = byFileSystem ? becomeSmallDisk(folder, smallSize)
                                        : limitResource(RLIMIT_FSIZE, static_cast<rlim_t>(smallSize));
        return ready ? body() : 99;
    });
}

/// Runs \a body in a child that file permissions bind.
int asOrdinaryUser(std::function<int()> const& body)
{
    return inChildProcess([&] { return becomeOrdinaryUser() ? body() : 99; });
}

} // namespace

class FileFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aFullDiskLosesNothing_data();
    void aFullDiskLosesNothing();

    void readOnlyFoldersStayAsTheyAre();
    void readOnlyFilesStayAsTheyAre();
    void foldersThatCannotBeReadStay();

    void aKilledWriterLeavesOneOfTheTwo();
    void aKilledCopyLeavesNoHalfFile();
    void aKilledMoveLosesNothing();

    void aFileThatGrowsIsReadWithinTheLimit();
    void aFolderSwappedForALinkIsNotFollowed();
    void filesThatGoMeanwhileAreNoError();
    void aFolderThatFillsMeanwhileIsLeftOrGone();
    void aFolderMovedMeanwhileDoesNotLeadTheWalkAstray();
};

void FileFaultsTest::aFullDiskLosesNothing_data()
{
    QTest::addColumn<bool>("byFileSystem");
    QTest::newRow("limited size of files") << false;
    if (canBecomeSmallDisk()) {
        QTest::newRow("full file system") << true;
    }
}

void FileFaultsTest::aFullDiskLosesNothing()
{
    QFETCH(bool, byFileSystem);
    QTemporaryDir const source;
    QTemporaryDir const disk;
    QString const large = source.filePath(QStringLiteral("large.bin"));
    QVERIFY(write(large, QByteArray(largeSize, 'x')));
    int const failedStep = onFullDisk(byFileSystem, disk.path(), [&] {
        Steps steps;
        QString const file = disk.filePath(QStringLiteral("file.txt"));
        steps.expect(write(file, "kept"));

        steps.expect(FilePaths::createBinaryDataFile(file, QByteArray(largeSize, 'x')).isEmpty());
        steps.expect(read(file) == "kept");

        QString dst = file;
        steps.expect(!FilePaths::copyFile(large, dst));
        steps.expect(dst == disk.filePath(QStringLiteral("file(1).txt")) && !isThere(dst));
        steps.expect(!FilePaths::moveFile(large, dst));
        steps.expect(QFileInfo(large).size() == largeSize);

        // Only another file system has to be written to for a new name.
        steps.expect(!byFileSystem || !FilePaths::renameFile(large, file));
        steps.expect(!byFileSystem || !ImageUtils::renameFile(large, disk.filePath(QStringLiteral("new"))));
        steps.expect(read(file) == "kept");
        steps.expect(QFileInfo(large).size() == largeSize);
        steps.expect(names(disk.path()) == QSet<QString>{QStringLiteral("file.txt")});

        // There is room again for what is small.
        steps.expect(FilePaths::createBinaryDataFile(file, "new") == file);
        steps.expect(read(file) == "new");

        // Whether the text fits is not asked.
        steps.expect(FilePaths::writeFileContent(file, QString(largeSize, QLatin1Char('x'))));
        steps.expect(QFileInfo(file).size() <= smallSize);
        return steps.result();
    });
    QCOMPARE(failedStep, 0);
}

void FileFaultsTest::readOnlyFoldersStayAsTheyAre()
{
    OrdinaryUserFolder const dir;
    QString const folder = dir.filePath(QStringLiteral("folder"));
    QVERIFY(QDir().mkpath(folder + QStringLiteral("/inner")));
    for (char const* const name : {"a.wav", "b.wav", "inner/c.wav"}) {
        QVERIFY(write(folder + QLatin1Char('/') + QLatin1String(name), "kept"));
        TestFiles::setAge(folder + QLatin1Char('/') + QLatin1String(name), 1'000'000);
        dir.give(QStringLiteral("folder/") + QLatin1String(name));
    }
    dir.give(QStringLiteral("folder/inner"));
    dir.give(QStringLiteral("folder"));
    ::chmod(QFile::encodeName(folder).constData(), 0555);
    QSet<QString> const before = names(folder);

    int const failedStep = asOrdinaryUser([&] {
        Steps steps;
        QString const a = folder + QStringLiteral("/a.wav");
        QString const b = folder + QStringLiteral("/b.wav");
        steps.expect(!FilePaths::removeFile(a));
        steps.expect(!FilePaths::createFile(folder + QStringLiteral("/new")));
        steps.expect(FilePaths::createBinaryDataFile(a, "new").isEmpty());
        QString dst = folder + QStringLiteral("/new");
        steps.expect(!FilePaths::copyFile(a, dst));
        steps.expect(!FilePaths::moveFile(a, dst));
        steps.expect(!FilePaths::renameFile(a, b));
        steps.expect(!ImageUtils::renameFile(a, dst));
        steps.expect(
            !FilePaths::moveFolder(folder + QStringLiteral("/inner"), dir.path(), QStringLiteral("new")));
        FilePaths::removeAllFilesByBaseName(folder, QStringLiteral("a"));
        FilePaths::removeOldFiles(folder, 1, false);
        steps.expect(read(a) == "kept" && read(b) == "kept");
        // A copy out of it succeeds; a move has then made the copy and cannot take the source away.
        QString out = dir.filePath(QStringLiteral("out.wav"));
        steps.expect(!FilePaths::moveFile(a, out));
        steps.expect(read(a) == "kept" && read(out) == "kept");
        // What may not be read is not there to be read.
        QString const closed = dir.filePath(QStringLiteral("closed.txt"));
        QString suffix;
        steps.expect(write(closed, "kept") && ::chmod(QFile::encodeName(closed).constData(), 0) == 0);
        steps.expect(FilePaths::readFileContent(closed, QStringLiteral("text/plain"), {QStringLiteral("txt")},
                                                10, suffix)
                         .isEmpty());
        steps.expect(ImageUtils::getByteArrayFromPath(closed) == std::pair<QByteArray, QString>());
        // What lies below and may be removed goes, the rest stays.
        steps.expect(!FilePaths::cleanFolder(folder));
        steps.expect(!FilePaths::removeFolder(folder));
        steps.expect(read(a) == "kept" && read(b) == "kept");
        return steps.result();
    });
    QCOMPARE(failedStep, 0);
    QCOMPARE(names(folder), before);
    ::chmod(QFile::encodeName(folder).constData(), 0755);
}

void FileFaultsTest::readOnlyFilesStayAsTheyAre()
{
    OrdinaryUserFolder const dir;
    QString const file = dir.filePath(QStringLiteral("file.txt"));
    QVERIFY(write(file, "kept"));
    dir.give(QStringLiteral("file.txt"));
    ::chmod(QFile::encodeName(file).constData(), 0444);
    int const failedStep = asOrdinaryUser([&] {
        Steps steps;
        steps.expect(!FilePaths::createFile(file));
        steps.expect(!FilePaths::writeFileContent(file, QStringLiteral("new")));
        steps.expect(FilePaths::createBinaryDataFile(file, "new").isEmpty());
        steps.expect(read(file) == "kept");
        // The folder may be written to, and it is the folder that names and forgets files.
        QString copy = file;
        steps.expect(FilePaths::copyFile(file, copy));
        steps.expect(copy == dir.filePath(QStringLiteral("file(1).txt")) && read(copy) == "kept");
        steps.expect(FilePaths::removeFile(copy));
        steps.expect(FilePaths::renameFile(file, dir.filePath(QStringLiteral("renamed"))));
        return steps.result();
    });
    QCOMPARE(failedStep, 0);
    QCOMPARE(names(dir.path()), QSet<QString>{QStringLiteral("renamed")});
}

void FileFaultsTest::foldersThatCannotBeReadStay()
{
    OrdinaryUserFolder const dir;
    for (char const* const name : {"top", "top/closed", "top/unsearchable", "top/open", "top/empty"}) {
        QVERIFY(QDir(dir.path()).mkdir(QLatin1String(name)));
    }
    for (char const* const name : {"top/closed/a", "top/unsearchable/a", "top/open/a"}) {
        QVERIFY(write(dir.filePath(QLatin1String(name)), "kept"));
        TestFiles::setAge(dir.filePath(QLatin1String(name)), 1'000'000);
    }
    for (char const* const name : {"top/closed", "top/unsearchable", "top/open", "top/empty", "top"}) {
        dir.give(QLatin1String(name));
    }
    ::chmod(QFile::encodeName(dir.filePath(QStringLiteral("top/closed"))).constData(), 0000);
    ::chmod(QFile::encodeName(dir.filePath(QStringLiteral("top/unsearchable"))).constData(), 0600);
    ::chmod(QFile::encodeName(dir.filePath(QStringLiteral("top/empty"))).constData(), 0000);

    int const failedStep = asOrdinaryUser([&] {
        Steps steps;
        FilePaths::removeOldFiles(dir.filePath(QStringLiteral("top")), 1, true);
        steps.expect(names(dir.filePath(QStringLiteral("top/open"))).isEmpty());
        steps.expect(!FilePaths::removeFolder(dir.filePath(QStringLiteral("top"))));
        // Nobody can say what is in a closed folder, so it stays; an empty one goes unread.
        steps.expect(names(dir.filePath(QStringLiteral("top"))) ==
                     (QSet<QString>{QStringLiteral("closed"), QStringLiteral("unsearchable")}));
        return steps.result();
    });
    QCOMPARE(failedStep, 0);
    ::chmod(QFile::encodeName(dir.filePath(QStringLiteral("top/closed"))).constData(), 0700);
    ::chmod(QFile::encodeName(dir.filePath(QStringLiteral("top/unsearchable"))).constData(), 0700);
    QCOMPARE(read(dir.filePath(QStringLiteral("top/closed/a"))), QByteArray("kept"));
    QCOMPARE(read(dir.filePath(QStringLiteral("top/unsearchable/a"))), QByteArray("kept"));
}

void FileFaultsTest::aKilledWriterLeavesOneOfTheTwo()
{
    QTemporaryDir const dir;
    QString const file = dir.filePath(QStringLiteral("file.bin"));
    QByteArray const one(largeSize, '1');
    QByteArray const two(largeSize, '2');
    QVERIFY(write(file, one));
    for (unsigned int round = 0; round < 25; ++round) {
        QVERIFY(killDuring(
            [&] {
                for (;;) {
                    FilePaths::createBinaryDataFile(file, two);
                    FilePaths::createBinaryDataFile(file, one);
                }
            },
            round * 700));
        QByteArray const found = read(file);
        QVERIFY(found == one || found == two);
    }
    // What is left beside it are the temporary files of the killed, none of which has another's name.
    for (QString const& name : names(dir.path())) {
        QVERIFY(name.startsWith(QStringLiteral("file.bin")));
    }
    QCOMPARE(FilePaths::createBinaryDataFile(file, "new"), file);
    QCOMPARE(read(file), QByteArray("new"));
}

void FileFaultsTest::aKilledCopyLeavesNoHalfFile()
{
    QTemporaryDir const dir;
    QByteArray const content(largeSize, 'x');
    QString const source = dir.filePath(QStringLiteral("source"));
    QVERIFY(write(source, content));
    for (unsigned int round = 0; round < 25; ++round) {
        QVERIFY(killDuring(
            [&] {
                for (;;) {
                    QString dst = dir.filePath(QStringLiteral("copy.bin"));
                    FilePaths::copyFile(source, dst);
                }
            },
            round * 700));
        for (QString const& name : names(dir.path())) {
            if (name.startsWith(QStringLiteral("copy"))) {
                QCOMPARE(read(dir.filePath(name)), content);
                QVERIFY(QFile::remove(dir.filePath(name)));
            }
        }
        QCOMPARE(QFileInfo(source).size(), largeSize);
    }
}

void FileFaultsTest::aKilledMoveLosesNothing()
{
    QByteArray const content(largeSize, 'x');
    for (unsigned int round = 0; round < 20; ++round) {
        QTemporaryDir const dir;
        QString const here = dir.filePath(QStringLiteral("here"));
        QString const there = dir.filePath(QStringLiteral("there"));
        QVERIFY(write(here, content));
        QVERIFY(killDuring(
            [&] {
                for (;;) {
                    QString dst = there;
                    FilePaths::moveFile(here, dst);
                    FilePaths::renameFile(there, here);
                }
            },
            round * 700));
        QVERIFY(read(here) == content || read(there) == content);
    }
}

void FileFaultsTest::aFileThatGrowsIsReadWithinTheLimit()
{
    QTemporaryDir const dir;
    QString const file = dir.filePath(QStringLiteral("log.txt"));
    constexpr qsizetype line = 64;
    constexpr unsigned int limit = 64 * 1024;
    std::atomic<bool> done = false;
    std::thread writer([&] {
        QByteArray const text(line, 'x');
        while (!done) {
            QFile out(file);
            if (out.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
                for (int i = 0; i < 3'000 && !done; ++i) {
                    out.write(text);
                }
            }
        }
    });
    bool within = true;
    for (int i = 0; i < 2'000; ++i) {
        QString suffix;
        QString const text = FilePaths::readFileContent(file, QStringLiteral("text/plain"),
                                                        {QStringLiteral("txt")}, limit, suffix);
        within = within && text.size() <= qsizetype(limit);
    }
    done = true;
    writer.join();
    QVERIFY(within);
}

void FileFaultsTest::aFolderSwappedForALinkIsNotFollowed()
{
    QTemporaryDir const dir;
    QString const outside = dir.filePath(QStringLiteral("outside"));
    QVERIFY(QDir().mkdir(outside));
    QVERIFY(write(outside + QStringLiteral("/kept"), "kept"));
    TestFiles::setAge(outside + QStringLiteral("/kept"), 1'000'000);
    QByteArray const inner = QFile::encodeName(dir.filePath(QStringLiteral("top/inner")));
    QByteArray const aside = QFile::encodeName(dir.filePath(QStringLiteral("aside")));
    QByteArray const target = QFile::encodeName(outside);
    std::atomic<bool> done = false;
    std::thread swapper([&] {
        while (!done) {
            ::rename(inner.constData(), aside.constData());
            ::symlink(target.constData(), inner.constData());
            ::unlink(inner.constData());
            ::rename(aside.constData(), inner.constData());
        }
    });
    for (int round = 0; round < 200; ++round) {
        QDir(dir.path()).mkpath(QStringLiteral("top/inner/deep"));
        FilePaths::removeOldFiles(dir.filePath(QStringLiteral("top")), 0, true);
        FilePaths::removeFolder(dir.filePath(QStringLiteral("top")));
    }
    done = true;
    swapper.join();
    QCOMPARE(read(outside + QStringLiteral("/kept")), QByteArray("kept"));
}

void FileFaultsTest::filesThatGoMeanwhileAreNoError()
{
    QTemporaryDir const dir;
    for (int round = 0; round < 20; ++round) {
        QString const folder = dir.filePath(QString::number(round));
        QVERIFY(QDir().mkpath(folder + QStringLiteral("/inner")));
        for (int i = 0; i < 200; ++i) {
            QVERIFY(write(folder + QStringLiteral("/inner/") + QString::number(i), "x"));
        }
        std::atomic<int> gone = 0;
        auto const remove = [&] { gone += FilePaths::removeFolder(folder) ? 1 : 0; };
        std::thread other(remove);
        remove();
        other.join();
        QVERIFY(gone > 0);
        QVERIFY(!isThere(folder));
        QString const file = dir.filePath(QStringLiteral("file"));
        QVERIFY(write(file, "x"));
        std::atomic<int> removed = 0;
        auto const removeOne = [&] { removed += FilePaths::removeFile(file) ? 1 : 0; };
        std::thread second(removeOne);
        removeOne();
        second.join();
        QCOMPARE(removed.load(), 2);
    }
}

void FileFaultsTest::aFolderThatFillsMeanwhileIsLeftOrGone()
{
    QTemporaryDir const dir;
    QString const folder = dir.filePath(QStringLiteral("folder"));
    std::atomic<bool> done = false;
    std::thread filler([&] {
        for (int i = 0; !done; ++i) {
            write(folder + QLatin1Char('/') + QString::number(i), "x");
        }
    });
    bool consistent = true;
    for (int round = 0; round < 300; ++round) {
        QDir().mkdir(folder);
        bool const gone = FilePaths::removeFolder(folder);
        consistent = consistent && gone == !isThere(folder);
    }
    done = true;
    filler.join();
    QVERIFY(consistent);
}

void FileFaultsTest::aFolderMovedMeanwhileDoesNotLeadTheWalkAstray()
{
    QTemporaryDir const dir;
    QString const elsewhere = dir.filePath(QStringLiteral("elsewhere"));
    QVERIFY(QDir().mkpath(elsewhere + QStringLiteral("/sibling")));
    QVERIFY(write(elsewhere + QStringLiteral("/sibling/kept"), "kept"));
    QByteArray const from = QFile::encodeName(dir.filePath(QStringLiteral("top/inner")));
    QByteArray const to = QFile::encodeName(elsewhere + QStringLiteral("/inner"));
    std::atomic<bool> done = false;
    std::thread mover([&] {
        while (!done) {
            ::rename(from.constData(), to.constData());
            ::rename(to.constData(), from.constData());
        }
    });
    for (int round = 0; round < 200; ++round) {
        QDir(dir.path()).mkpath(QStringLiteral("top/inner/a/b/c"));
        QDir(dir.path()).mkpath(QStringLiteral("top/sibling"));
        FilePaths::removeFolder(dir.filePath(QStringLiteral("top")));
    }
    done = true;
    mover.join();
    QCOMPARE(read(elsewhere + QStringLiteral("/sibling/kept")), QByteArray("kept"));
}

int main(int argc, char** argv)
{
    return runTest<FileFaultsTest>(argc, argv);
}

#include "FileFaultsTest.moc"
