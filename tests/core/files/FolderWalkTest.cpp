#include <files/FolderWalk_p.h>

#include <QTemporaryDir>
#include <RunTest.h>
#include <TestFiles.h>

namespace {

/// What a walk visits, in the order in which it does.
QStringList visitsIn(QString const& folder, FolderWalk::Depth depth = FolderWalk::Depth::WholeTree,
                     std::function<void(QString const& name)> const& atEntry = {})
{
    QStringList visits;
    FolderWalk::Visitor const visitor{
        [&](int, char const* name) {
            visits << QString::fromUtf8(name);
            if (atEntry) {
                atEntry(visits.back());
            }
        },
        [&](int, char const* name) { visits << QString::fromUtf8(name) + QStringLiteral("/"); }};
    FolderWalk::walk(QFile::encodeName(folder), depth, visitor);
    return visits;
}

} // namespace

class FolderWalkTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void visitsEachEntryOnce();
    void visitsOneFolder();
    void followsNoLink();
    void endsWhereItsFolderWasMovedAway();
    void passesOverAFolderThatBecameALink();
    void keepsNoDescriptor();

private:
    QString path(char const* name) const { return m_dir->filePath(QString::fromLatin1(name)); }
    bool makeFile(char const* name) const
    {
        return QDir().mkpath(QFileInfo(path(name)).path()) && TestFiles::write(path(name), "x");
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void FolderWalkTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
}

void FolderWalkTest::visitsEachEntryOnce()
{
    QVERIFY(makeFile("top/middle/bottom/file") && makeFile("top/middle/.hidden") && makeFile("top/first"));
    QCOMPARE(visitsIn(path("top")),
             QStringList({QStringLiteral("first"), QStringLiteral(".hidden"), QStringLiteral("file"),
                          QStringLiteral("bottom/"), QStringLiteral("middle/")}));
}

void FolderWalkTest::visitsOneFolder()
{
    QVERIFY(makeFile("top/folder/file") && makeFile("top/first"));
    QCOMPARE(visitsIn(path("top"), FolderWalk::Depth::OneFolder), QStringList(QStringLiteral("first")));
}

void FolderWalkTest::followsNoLink()
{
    QVERIFY(makeFile("outside/kept") && makeFile("top/file"));
    QVERIFY(TestFiles::link(path("outside"), path("link")));
    QCOMPARE(visitsIn(path("link")), QStringList());
    QVERIFY(QFile::remove(path("top/file")));
    QVERIFY(QFile::rename(path("link"), path("top/link")));
    QCOMPARE(visitsIn(path("top")), QStringList(QStringLiteral("link")));
}

void FolderWalkTest::endsWhereItsFolderWasMovedAway()
{
    // Which one comes first is the file system's choice; the others must not be looked for elsewhere.
    for (char const* const name : {"top/a/file", "top/b/file", "top/c/file"}) {
        QVERIFY(makeFile(name));
    }
    QVERIFY(QDir().mkpath(path("elsewhere")));
    QStringList const visits = visitsIn(path("top"), FolderWalk::Depth::WholeTree, [&](QString const&) {
        for (char const* const name : {"a", "b", "c"}) {
            QString const folder = QString::fromLatin1(name);
            QFile::rename(path("top/") + folder, path("elsewhere/") + folder);
        }
    });
    QCOMPARE(visits, QStringList(QStringLiteral("file")));
}

void FolderWalkTest::passesOverAFolderThatBecameALink()
{
    QVERIFY(makeFile("outside/kept") && makeFile("top/first") && makeFile("top/folder/file"));
    QStringList const visits = visitsIn(path("top"), FolderWalk::Depth::WholeTree, [&](QString const&) {
        QFile::rename(path("top/folder"), path("moved"));
        TestFiles::link(path("outside"), path("top/folder"));
    });
    QCOMPARE(visits, QStringList({QStringLiteral("first"), QStringLiteral("folder/")}));
}

void FolderWalkTest::keepsNoDescriptor()
{
    QVERIFY(makeFile("top/middle/bottom/file") && makeFile("top/other/file"));
    qsizetype const before = TestFiles::openDescriptors();
    QCOMPARE(visitsIn(path("top")).size(), 5);
    QCOMPARE(visitsIn(path("missing")).size(), 0);
    QCOMPARE(TestFiles::openDescriptors(), before);
}

int main(int argc, char** argv)
{
    return runTest<FolderWalkTest>(argc, argv);
}

#include "FolderWalkTest.moc"
