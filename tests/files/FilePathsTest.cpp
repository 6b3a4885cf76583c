#include <files/FilePaths.h>

#include <QDir>
#include <RunTest.h>

class FilePathsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsTheApplicationsFolders();
    void createsFoldersFromTheSecondLevel();
};

void FilePathsTest::findsTheApplicationsFolders()
{
    QCOMPARE(FilePaths::getAppPath(), QCoreApplication::applicationDirPath());
    QCOMPARE(FilePaths::getAppFilename(), QStringLiteral("filepathstest"));
}

void FilePathsTest::createsFoldersFromTheSecondLevel()
{
    QTemporaryDir const root;
    QString const deep = root.filePath(QStringLiteral("a/b %1/c"));
    QVERIFY(FilePaths::createFoldersIteratively(deep));
    QVERIFY(QDir(deep).exists());
    QVERIFY(!FilePaths::createFoldersIteratively(QStringLiteral("/tmp")));
}

int main(int argc, char** argv)
{
    return runTest<FilePathsTest>(argc, argv);
}

#include "FilePathsTest.moc"
