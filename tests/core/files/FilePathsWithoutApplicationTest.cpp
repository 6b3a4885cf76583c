#include <files/FilePaths.h>

#include <MessageRecorder.h>
#include <QDir>
#include <QTest>
#include <TestEnvironment.h>

/// Runs without an application object, as code does that is called before main() makes one.
class FilePathsWithoutApplicationTest : public QObject
{
    Q_OBJECT

public:
    explicit FilePathsWithoutApplicationTest(char const* program)
        : m_program(QFile::decodeName(program))
    {
    }

private Q_SLOTS:
    void knowsItsPlacesAllTheSame();

private:
    QFileInfo m_program;
};

void FilePathsWithoutApplicationTest::knowsItsPlacesAllTheSame()
{
    QVERIFY(QCoreApplication::instance() == nullptr);
    MessageRecorder recorder;
    QString const folder = m_program.canonicalPath();
    QCOMPARE(FilePaths::getAppPath(), folder);
    QCOMPARE(FilePaths::getAppFilename(), QStringLiteral("filepathswithoutapplicationtest"));
    QVERIFY(FilePaths::getResourcePath().startsWith(QFileInfo(folder).path()));
    QVERIFY(FilePaths::buildTempPath().startsWith(QDir::tempPath()));
    QCOMPARE(FilePaths::getAbsoluteFilePath(QStringLiteral("missing")), folder + QStringLiteral("/missing"));
    QCOMPARE(recorder.messages(), QStringList());
}

int main(int argc, char** argv)
{
    TestEnvironment const environment;
    FilePathsWithoutApplicationTest test(argv[0]);
    return QTest::qExec(&test, argc, argv);
}

#include "FilePathsWithoutApplicationTest.moc"
