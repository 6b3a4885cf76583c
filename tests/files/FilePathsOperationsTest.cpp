#include <files/FilePaths.h>

#include <RunTest.h>

class FilePathsOperationsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void removeFileLeavesNothing();
};

void FilePathsOperationsTest::removeFileLeavesNothing()
{
    QTemporaryDir const dir;
    QString const path = dir.filePath(QStringLiteral("a.txt"));
    QVERIFY(FilePaths::removeFile(path));
    QVERIFY(FilePaths::createFile(path));
    QVERIFY(QFile::exists(path));
    QVERIFY(FilePaths::removeFile(path));
    QVERIFY(!QFile::exists(path));
}

int main(int argc, char** argv)
{
    return runTest<FilePathsOperationsTest>(argc, argv);
}

#include "FilePathsOperationsTest.moc"
