#include <files/FilePaths.h>
#include <files/ImageUtils.h>
#include <files/UrlHelpers.h>

#include <ChildProcess.h>
#include <QDir>
#include <QImage>
#include <RunTest.h>
#include <TestFiles.h>

/// What is left when a name as large as the machine's memory is handed over. In a test of its own, because
/// the sanitizers need memory too.
class FilesShortOfMemoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingComesBackAndNothingIsTouched_data();
    void nothingComesBackAndNothingIsTouched();
};

namespace {

/// Whether an operation fails with the name \a large as it should; \a file is one that exists.
using Check = bool (*)(QString const& large, QString const& file);

QString const a = QStringLiteral("a");

bool answersNo(QString const& large, QString const&)
{
    return !FilePaths::fileExists(large) && !FilePaths::dirExists(large) && !FilePaths::isDirectory(large) &&
           FilePaths::getFileSize(large) == -1 && !UrlHelpers::isValidFile(large);
}

bool buildsNoPath(QString const& large, QString const&)
{
    return FilePaths::getFileName(large, true).isEmpty() &&
           FilePaths::buildAbsoluteFilePath(large, a).isEmpty() &&
           FilePaths::buildAbsoluteFilePath(QStringLiteral("/"), large).isEmpty() &&
           FilePaths::buildAbsoluteFilePath(large, a, a, true).isEmpty() &&
           FilePaths::buildAbsoluteDirPath(large, a).isEmpty() &&
           FilePaths::absoluteFilePath(large, a).isEmpty() &&
           FilePaths::absoluteDirPath(large, a).isEmpty() &&
           FilePaths::buildRelativeFilePath(large, a).isEmpty() &&
           FilePaths::getAbsolutePath(large).isEmpty() && FilePaths::buildDownloadFilePath(large).isEmpty();
}

bool takesNoPathApart(QString const& large, QString const&)
{
    return FilePaths::getFolderNameFromFolderPath(large).isEmpty() &&
           FilePaths::getFileNameFromUrl(large).isEmpty() && FilePaths::getFileExtension(large).isEmpty() &&
           FilePaths::getExtensionFromFileName(large).isEmpty() && UrlHelpers::getFileName(large).isEmpty();
}

bool changesNoPath(QString const& large, QString const&)
{
    return FilePaths::prependFileProtocolToPath(large).isEmpty() &&
           FilePaths::prependStringToFilename(large, a).isEmpty() &&
           FilePaths::removePrefixFromFilename(large, QStringLiteral("b")).isEmpty() &&
           FilePaths::appendSuffix(large, a).isEmpty() &&
           FilePaths::cleanFromSubFolder(large, large).isEmpty() &&
           FilePaths::appendToFileName(large, a, a).isEmpty() &&
           FilePaths::changeFileExtension(large, a).isEmpty() &&
           FilePaths::handleFileScheme(large).isEmpty() && !FilePaths::areSameFilePath(large, a);
}

bool findsNothing(QString const& large, QString const&)
{
    return FilePaths::getFilePathInSubfolder(large, a).isEmpty() &&
           FilePaths::getFileByBaseName(large, a).isEmpty();
}

bool makesNothing(QString const& large, QString const& file)
{
    QString target = large;
    bool const copied = FilePaths::copyFile(file, target) || FilePaths::moveFile(file, target);
    return !copied && !FilePaths::createFoldersIteratively(large) && !FilePaths::createSubdir(large) &&
           !FilePaths::createFile(large) && FilePaths::createBinaryDataFile(large, "x").isEmpty() &&
           !FilePaths::writeFileContent(large, a) &&
           !FilePaths::createFileCopyInSameFolder(file + QStringLiteral(".x"), large) &&
           !FilePaths::renameFile(file, large) &&
           !FilePaths::moveFolder(QStringLiteral("."), QStringLiteral("/"), large) &&
           !ImageUtils::renameFile(file, large);
}

bool removesNothing(QString const& large, QString const&)
{
    FilePaths::removeOldFiles(large, 0, true);
    FilePaths::removeAllFilesByBaseName(large, a);
    FilePaths::removeOtherFilesByBaseName(QStringLiteral("."), large);
    FilePaths::removeExtensionFilesFromFolder(large, a);
    return !FilePaths::removeFile(large) && !FilePaths::removeFolder(large) &&
           !FilePaths::cleanFolder(large) && !FilePaths::setFileBirthTimeToNow(large) &&
           !ImageUtils::removeFile(large);
}

bool showsNothing(QString const& large, QString const&)
{
    FilePaths::showFileInFolder(large);
    return true;
}

bool readsNothing(QString const& large, QString const&)
{
    QString suffix = QStringLiteral("untouched");
    return FilePaths::readFileContent(large, a, {a}, 10, suffix).isEmpty() &&
           suffix == QStringLiteral("untouched") && FilePaths::getFileMimeType(large).isEmpty() &&
           ImageUtils::getByteArrayFromPath(large).first.isEmpty() &&
           ImageUtils::getFileFormat(large).isEmpty();
}

bool namesNoPicture(QString const& large, QString const&)
{
    QString path = a;
    QString backupPath = a;
    QString format;
    return !ImageUtils::buildFilePaths(large, QString(), QStringLiteral("/"), path, backupPath, format) &&
           !ImageUtils::buildFilePaths(a, QString(), large, path, backupPath, format) && path == a &&
           backupPath == a;
}

bool convertsNoPicture(QString const& large, QString const& file)
{
    QImage const image(1, 1, QImage::Format_RGB32);
    return ImageUtils::convertByteArray2Image("GIF89a", large).isNull() &&
           ImageUtils::convertImage2ByteArray(image, large).isEmpty() &&
           !ImageUtils::saveImageFromByteArray("GIF89a", large, file);
}

} // namespace

void FilesShortOfMemoryTest::nothingComesBackAndNothingIsTouched_data()
{
    QTest::addColumn<Check>("check");
    QTest::newRow("existence and size") << Check(answersNo);
    QTest::newRow("building") << Check(buildsNoPath);
    QTest::newRow("taking apart") << Check(takesNoPathApart);
    QTest::newRow("changing") << Check(changesNoPath);
    QTest::newRow("finding") << Check(findsNothing);
    QTest::newRow("making") << Check(makesNothing);
    QTest::newRow("removing") << Check(removesNothing);
    QTest::newRow("showing") << Check(showsNothing);
    QTest::newRow("reading") << Check(readsNothing);
    QTest::newRow("names of pictures") << Check(namesNoPicture);
    QTest::newRow("pictures") << Check(convertsNoPicture);
}

void FilesShortOfMemoryTest::nothingComesBackAndNothingIsTouched()
{
    QFETCH(Check, check);
    QTemporaryDir const dir;
    QVERIFY(QDir::setCurrent(dir.path()));
    QString const file = dir.filePath(QStringLiteral("file"));
    QVERIFY(TestFiles::write(file, "kept"));
    // Larger than what the allocator may have set aside for further threads.
    QString const large = QStringLiteral("/tmp/b.") + QString(70'000'000, QLatin1Char('n'));
    int const exitCode =
        inChildProcess([&] { return limitResource(RLIMIT_AS, 0) && check(large, file) ? 0 : 1; });
    QCOMPARE(exitCode, 0);
    QCOMPARE(TestFiles::names(dir.path()), QSet<QString>{QStringLiteral("file")});
    QCOMPARE(TestFiles::read(file), QByteArray("kept"));
}

int main(int argc, char** argv)
{
    return runTest<FilesShortOfMemoryTest>(argc, argv);
}

#include "FilesShortOfMemoryTest.moc"
