#include "SpcoreProcess.h"

#include <ChildProcess.h>
#include <Faults.h>
#include <RunTest.h>
#include <TestFiles.h>

using TestFiles::isThere;
using TestFiles::names;
using TestFiles::read;
using TestFiles::write;

namespace {

constexpr qint64 day = 24 * 3600;

} // namespace

class FileCommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void copiesToAFreeName();
    void copiesIntoAFolder();
    void copyFailsWithOneLine_data();
    void copyFailsWithOneLine();
    void tellsThatTheDiskIsFull_data();
    void tellsThatTheDiskIsFull();
    void movesToAFreeName();
    void pruneListsFirst_data();
    void pruneListsFirst();
    void pruneReportsWhatStays();
    void pruneFailsWithOneLine_data();
    void pruneFailsWithOneLine();
    void findsTheNewest();
    void findFailsWithOneLine();

private:
    QString path(QString const& name) const { return m_dir->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void FileCommandsTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
}

void FileCommandsTest::copiesToAFreeName()
{
    QVERIFY(write(path(QStringLiteral("%1 \u00e8.wav")), "content"));
    QStringList const arguments = {QStringLiteral("file"), QStringLiteral("copy"),
                                   path(QStringLiteral("%1 \u00e8.wav")), path(QStringLiteral("to.wav"))};
    for (char const* const used : {"to.wav", "to(1).wav", "to(2).wav"}) {
        SpcoreResult const result = runSpcore(arguments);
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.err, QByteArray());
        QCOMPARE(result.out, path(QLatin1String(used)).toUtf8() + '\n');
        QCOMPARE(read(path(QLatin1String(used))), QByteArray("content"));
    }
}

void FileCommandsTest::copiesIntoAFolder()
{
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("d")));
    QVERIFY(write(path(QStringLiteral("a.wav")), "content"));
    SpcoreResult const result = runSpcore({QStringLiteral("file"), QStringLiteral("copy"),
                                           path(QStringLiteral("a.wav")), path(QStringLiteral("d"))});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(read(path(QStringLiteral("d/a.wav"))), QByteArray("content"));
}

void FileCommandsTest::copyFailsWithOneLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("reason");
    auto const row = [](char const* tag, char const* words, int exitCode, char const* reason) {
        QTest::newRow(tag) << QString::fromLatin1(words).split(QLatin1Char(' ')) << exitCode
                           << QByteArray(reason);
    };
    row("missing source", "file copy /nowhere/a /tmp/b", 1,
        "cannot copy /nowhere/a to /tmp/b: no such file or directory\n");
    row("missing folder", "file copy /etc/passwd /nowhere/b", 1,
        "cannot copy /etc/passwd to /nowhere/b: the folder /nowhere: no such file or directory\n");
    row("folder as source", "file copy /etc /nowhere/b", 1, ": it is a folder\n");
    row("a device as source", "file copy /dev/null /tmp/b", 1, ": it is no regular file\n");
    row("a file as folder", "file copy /etc/passwd /etc/passwd/b", 1, ": not a directory\n");
    row("a name that is too long",
        qPrintable(QStringLiteral("file copy /etc/passwd /tmp/") + QString(300, QLatin1Char('n'))), 1,
        ": file name too long\n");
    row("standard input to a folder", "file copy - /tmp", 2, "needs a name");
    row("standard input to move", "file move - /tmp/x", 2, "copied and not moved");
    row("one argument", "file copy /etc/passwd", 2, "DESTINATION is missing");
    row("three arguments", "file move a b c", 2, "\"c\" is one argument too many");
    row("unknown option", "file copy --force a b", 2, "no option --force");
}

void FileCommandsTest::copyFailsWithOneLine()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QByteArray, reason);
    SpcoreResult const result = runSpcore(arguments);
    QVERIFY(result.failedWithOneLine(exitCode));
    QVERIFY2(result.err.contains(reason), result.err.constData());
}

void FileCommandsTest::tellsThatTheDiskIsFull_data()
{
    QTest::addColumn<int>("taken"); // bytes of the disk
    QTest::addColumn<int>("size");  // of what is copied there
    QTest::newRow("smaller than the file") << 0 << 2'000'000;
    QTest::newRow("not enough left") << 600'000 << 700'000;
}

void FileCommandsTest::tellsThatTheDiskIsFull()
{
    QFETCH(int, taken);
    QFETCH(int, size);
    if (!canBecomeSmallDisk()) {
        QSKIP("this system gives tests no small disk");
    }
    QVERIFY(write(path(QStringLiteral("large.wav")), QByteArray(size, 'x')));
    QString const disk = path(QStringLiteral("disk"));
    QVERIFY(QDir().mkdir(disk));
    int const failed = inChildProcess([&] {
        if (!becomeSmallDisk(disk, 1'000'000) ||
            !write(disk + QStringLiteral("/taken"), QByteArray(taken, 'x'))) {
            return 99;
        }
        SpcoreResult const result = runSpcore(
            {QStringLiteral("file"), QStringLiteral("copy"), path(QStringLiteral("large.wav")), disk});
        return result.failedWithOneLine(1) && result.err.contains(": no space left on " + disk.toUtf8()) ? 0
                                                                                                         : 1;
    });
    QCOMPARE(failed, 0);
}

void FileCommandsTest::movesToAFreeName()
{
    QVERIFY(write(path(QStringLiteral("a.wav")), "content"));
    QVERIFY(write(path(QStringLiteral("b.wav")), "kept"));
    SpcoreResult const result = runSpcore({QStringLiteral("file"), QStringLiteral("move"),
                                           path(QStringLiteral("a.wav")), path(QStringLiteral("b.wav"))});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, path(QStringLiteral("b(1).wav")).toUtf8() + '\n');
    QCOMPARE(names(m_dir->path()), (QSet<QString>{QStringLiteral("b.wav"), QStringLiteral("b(1).wav")}));
    QCOMPARE(read(path(QStringLiteral("b.wav"))), QByteArray("kept"));
}

void FileCommandsTest::pruneListsFirst_data()
{
    QTest::addColumn<bool>("recursive");
    QTest::addColumn<QString>("days");
    QTest::addColumn<QString>("removed"); // names in order, with a space between them
    QTest::newRow("one folder") << false << "7"
                                << ".hidden a.wav b.wav";
    QTest::newRow("all folders") << true << "7"
                                 << ".hidden a.wav b.wav sub/c.wav";
    QTest::newRow("nothing so old") << true << "100"
                                    << "";
    QTest::newRow("any age") << false << "0"
                             << ".hidden a.wav b.wav new.wav";
}

void FileCommandsTest::pruneListsFirst()
{
    QFETCH(bool, recursive);
    QFETCH(QString, days);
    QFETCH(QString, removed);
    QVERIFY(QDir(m_dir->path()).mkpath(QStringLiteral("folder/sub")));
    QVERIFY(QDir(m_dir->path()).mkpath(QStringLiteral("outside")));
    for (char const* const name :
         {"a.wav", "b.wav", ".hidden", "sub/c.wav", "new.wav", "future.wav", "../outside/x"}) {
        QString const file = path(QStringLiteral("folder/") + QLatin1String(name));
        QVERIFY(write(file, "x"));
        QVERIFY(TestFiles::setAge(file, 8 * day));
    }
    QVERIFY(TestFiles::setAge(path(QStringLiteral("folder/new.wav")), 100));
    QVERIFY(TestFiles::setAge(path(QStringLiteral("folder/future.wav")), -day));
    QVERIFY(TestFiles::link(path(QStringLiteral("outside")), path(QStringLiteral("folder/sub/link"))));

    QStringList arguments = {QStringLiteral("file"), QStringLiteral("prune"), QStringLiteral("--days"), days,
                             path(QStringLiteral("folder"))};
    if (recursive) {
        arguments.append(QStringLiteral("--recursive"));
    }
    QByteArray expected;
    for (QString const& name : removed.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        expected += path(QStringLiteral("folder/") + name).toUtf8() + '\n';
    }
    SpcoreResult const list = runSpcore(arguments + QStringList(QStringLiteral("--dry-run")));
    QCOMPARE(list.exitCode, 0);
    QCOMPARE(list.out, expected);
    QVERIFY(isThere(path(QStringLiteral("folder/a.wav"))) &&
            isThere(path(QStringLiteral("folder/sub/c.wav"))));

    SpcoreResult const pruned = runSpcore(arguments);
    QCOMPARE(pruned.exitCode, 0);
    QCOMPARE(pruned.out, expected);
    for (QString const& name : removed.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        QVERIFY(!isThere(path(QStringLiteral("folder/") + name)));
    }
    QVERIFY(isThere(path(QStringLiteral("folder/future.wav"))) && isThere(path(QStringLiteral("outside/x"))));
    QCOMPARE(runSpcore(arguments).out, QByteArray());
}

void FileCommandsTest::pruneReportsWhatStays()
{
    QString const folder = path(QStringLiteral("folder"));
    QVERIFY(QDir().mkdir(folder));
    QVERIFY(write(path(QStringLiteral("folder/a.wav")), "kept"));
    QVERIFY(TestFiles::setAge(path(QStringLiteral("folder/a.wav")), 8 * day));
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner);
    int const failed = inChildProcess([&] {
        if (!obeyPermissions()) {
            return 99;
        }
        SpcoreResult const result = runSpcore({QStringLiteral("file"), QStringLiteral("prune"),
                                               QStringLiteral("--days"), QStringLiteral("1"), folder});
        return result.failedWithOneLine(1) && result.err.contains(": permission denied\n") ? 0 : 1;
    });
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QCOMPARE(failed, 0);
    QCOMPARE(read(path(QStringLiteral("folder/a.wav"))), QByteArray("kept"));
}

void FileCommandsTest::pruneFailsWithOneLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    auto const row = [](char const* tag, char const* words, int exitCode) {
        QTest::newRow(tag) << QString::fromLatin1(words).split(QLatin1Char(' ')) << exitCode;
    };
    row("missing folder", "file prune --days 1 /nowhere/at/all", 1);
    row("a file", "file prune --days 1 /etc/passwd", 1);
    row("no age", "file prune /nowhere/at/all", 2);
    row("negative age", "file prune --days -1 /nowhere/at/all", 2);
    row("no number", "file prune --days week /nowhere/at/all", 2);
    row("part of a day", "file prune --days 1.5 /nowhere/at/all", 2);
    row("too many days", "file prune --days 99999999999 /nowhere/at/all", 2);
    row("no folder", "file prune --days 1", 2);
}

void FileCommandsTest::pruneFailsWithOneLine()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QVERIFY(runSpcore(arguments).failedWithOneLine(exitCode));
}

void FileCommandsTest::findsTheNewest()
{
    QVERIFY(write(path(QStringLiteral("rec.1.wav")), "x"));
    QVERIFY(write(path(QStringLiteral("rec.1.mp3")), "x"));
    QVERIFY(TestFiles::setAge(path(QStringLiteral("rec.1.wav")), 100));
    SpcoreResult const result =
        runSpcore({QStringLiteral("file"), QStringLiteral("find"), m_dir->path(), QStringLiteral("rec.1")});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, path(QStringLiteral("rec.1.mp3")).toUtf8() + '\n');
}

void FileCommandsTest::findFailsWithOneLine()
{
    QVERIFY(runSpcore({QStringLiteral("file"), QStringLiteral("find"), m_dir->path(), QStringLiteral("rec")})
                .failedWithOneLine(1));
    QVERIFY(runSpcore({QStringLiteral("file"), QStringLiteral("find"), m_dir->path()}).failedWithOneLine(2));
}

int main(int argc, char** argv)
{
    return runTest<FileCommandsTest>(argc, argv);
}

#include "FileCommandsTest.moc"
