#include "SpcoreProcess.h"

#include <QFile>
#include <QTemporaryDir>
#include <RunTest.h>
#include <sys/stat.h>

namespace {

QStringList words(char const* line)
{
    return QString::fromLatin1(line).split(QLatin1Char(' '));
}

} // namespace

class CryptCommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void restoresWhatItScrambled_data();
    void restoresWhatItScrambled();
    void worksOnFiles();
    void leavesTheOutputAloneWhenItFails();
    void refusesWhatItCannotDecrypt_data();
    void refusesWhatItCannotDecrypt();
    void refusesWrongOptions_data();
    void refusesWrongOptions();
    void reportsWhatItCannotReadOrWrite();
    void replacesNothingButFiles();
    void hashesFiles();
    void goesOnAfterAFileThatCannotBeRead();
};

void CryptCommandsTest::restoresWhatItScrambled_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QByteArray>("data");
    for (char const* const mode : {"none", "checksum", "hash"}) {
        QTest::addRow("nothing, %s", mode) << QString::fromLatin1(mode) << QByteArray();
        QTest::addRow("text, %s", mode) << QString::fromLatin1(mode) << QByteArray("some text\nand more\n");
        QTest::addRow("binary, %s", mode) << QString::fromLatin1(mode) << QByteArray("\0\xFF\r\n%1", 6);
        QTest::addRow("compressible, %s", mode) << QString::fromLatin1(mode) << QByteArray(100'000, 'x');
    }
}

void CryptCommandsTest::restoresWhatItScrambled()
{
    QFETCH(QString, mode);
    QFETCH(QByteArray, data);
    SpcoreResult const scrambled = runSpcore(words("crypt encrypt --key 0x2A --mode") << mode, data);
    QCOMPARE(scrambled.exitCode, 0);
    QVERIFY(scrambled.out.size() >= 2 && scrambled.out != data);
    SpcoreResult const restored = runSpcore(words("crypt decrypt -k 42 -"), scrambled.out);
    QCOMPARE(restored.exitCode, 0);
    QCOMPARE(restored.out, data);
    QCOMPARE(restored.err, QByteArray());
}

void CryptCommandsTest::worksOnFiles()
{
    QTemporaryDir const folder;
    QString const plain = folder.filePath(QStringLiteral("plain %1"));
    QString const scrambled = folder.filePath(QStringLiteral("scrambled"));
    QString const restored = folder.filePath(QStringLiteral("restored"));
    QFile file(plain);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("some text");
    file.close();
    QCOMPARE(runSpcore(words("crypt encrypt -k 7 -o") << scrambled << plain).exitCode, 0);
    SpcoreResult const result =
        runSpcore(words("crypt decrypt -k 7") << scrambled << QStringLiteral("-o") << restored);
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, QByteArray());
    QFile output(restored);
    QVERIFY(output.open(QIODevice::ReadOnly));
    QCOMPARE(output.readAll(), QByteArray("some text"));
}

void CryptCommandsTest::leavesTheOutputAloneWhenItFails()
{
    QTemporaryDir const folder;
    QFile file(folder.filePath(QStringLiteral("output")));
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.write("old");
    file.flush();
    SpcoreResult const result = runSpcore(words("crypt decrypt -k 7 -o") << file.fileName(), "\4garbage");
    QVERIFY2(result.failedWithOneLine(1), result.err.constData());
    file.seek(0);
    QCOMPARE(file.readAll(), QByteArray("old"));
}

void CryptCommandsTest::refusesWhatItCannotDecrypt_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("one byte") << QByteArray(1, '\0');
    QTest::newRow("a wrong checksum") << QByteArray("\2sabcdef");
    QTest::newRow("a wrong checksum of nothing") << QByteArray("\2sab");
    QTest::newRow("a wrong hash of nothing") << "\4s" + QByteArray(20, 'h');
    QTest::newRow("no stream") << QByteArray("\1sabcdefghi");
}

void CryptCommandsTest::refusesWhatItCannotDecrypt()
{
    QFETCH(QByteArray, message);
    SpcoreResult const result = runSpcore(words("crypt decrypt -k 7"), message);
    QVERIFY2(result.failedWithOneLine(1), result.err.constData());
}

void CryptCommandsTest::refusesWrongOptions_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("encrypt without a key") << words("crypt encrypt");
    QTest::newRow("encrypt with a word as key") << words("crypt encrypt -k secret");
    QTest::newRow("encrypt with a negative key") << words("crypt encrypt -k -1");
    QTest::newRow("decrypt without a key") << words("crypt decrypt");
    QTest::newRow("an unknown mode") << words("crypt encrypt -k 1 -m md5");
    QTest::newRow("two files") << words("crypt encrypt -k 1 a b");
    QTest::newRow("sha256 of no file") << words("crypt sha256");
}

void CryptCommandsTest::refusesWrongOptions()
{
    QFETCH(QStringList, arguments);
    SpcoreResult const result = runSpcore(arguments);
    QVERIFY2(result.failedWithOneLine(2), result.err.constData());
}

void CryptCommandsTest::reportsWhatItCannotReadOrWrite()
{
    SpcoreResult const missing = runSpcore(words("crypt decrypt -k 1 /no/such/file"));
    QVERIFY2(missing.failedWithOneLine(1), missing.err.constData());
    SpcoreResult const noFolder = runSpcore(words("crypt encrypt -k 1 -o /no/such/file"), "data");
    QVERIFY2(noFolder.failedWithOneLine(1), noFolder.err.constData());

    QProcess shell;
    shell.start(QStringLiteral("sh"),
                {QStringLiteral("-c"), QStringLiteral("echo data | \"$0\" crypt encrypt -k 1 >/dev/full"),
                 QStringLiteral(SPCORE_PROGRAM)});
    QVERIFY(shell.waitForFinished());
    QCOMPARE(shell.exitCode(), 1);
    QCOMPARE(shell.readAllStandardError(),
             QByteArray("spcore: cannot write standard output: no space left on device\n"));
}

void CryptCommandsTest::replacesNothingButFiles()
{
    QTemporaryDir const folder;
    QString const pipe = folder.filePath(QStringLiteral("pipe"));
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    SpcoreResult const result = runSpcore(words("crypt encrypt -k 1 -o") << pipe, "data");
    QVERIFY2(result.failedWithOneLine(1), result.err.constData());
    struct stat status = {};
    QCOMPARE(stat(QFile::encodeName(pipe).constData(), &status), 0);
    QVERIFY(S_ISFIFO(status.st_mode));
}

void CryptCommandsTest::hashesFiles()
{
    QTemporaryDir const folder;
    QFile file(folder.filePath(QStringLiteral("abc")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("abc");
    file.close();
    SpcoreResult const result = runSpcore(words("crypt sha256") << file.fileName());
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad  " +
                             QFile::encodeName(file.fileName()) + '\n');
}

void CryptCommandsTest::goesOnAfterAFileThatCannotBeRead()
{
    QTemporaryDir const folder;
    QFile file(folder.filePath(QStringLiteral("abc")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    SpcoreResult const result = runSpcore(words("crypt sha256 /no/such/file") << file.fileName());
    QCOMPARE(result.exitCode, 1);
    QVERIFY(result.out.startsWith("e3b0c442"));
    QCOMPARE(result.err, QByteArray("spcore: cannot read /no/such/file: no such file or directory\n"));
}

int main(int argc, char** argv)
{
    return runTest<CryptCommandsTest>(argc, argv);
}

#include "CryptCommandsTest.moc"
