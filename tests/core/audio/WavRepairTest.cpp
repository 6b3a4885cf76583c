#include <audio/wav.h>

#include "WavFiles.h"

#include <ChildProcess.h>
#include <KilledChild.h>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <RunTest.h>
#include <TestFiles.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>

using TestFiles::read;
using TestFiles::write;

using wav::RepairStatus;

Q_DECLARE_METATYPE(wav::RepairStatus)

namespace {

wav::RepairResult repairOf(QString const& path)
{
    return wav::tryToRepairWavHeaderIfNeeded(nativePath(path));
}

/// For a child process, which has only its exit code to tell.
bool failsWith(QString const& path, RepairStatus status, QString const& message)
{
    wav::RepairResult const result = repairOf(path);
    return result.status == status && result.message == message;
}

/// What a recorder leaves that was killed: both sizes 0.
QByteArray unfinished(QByteArray const& bytes, qsizetype dataOffset = 44)
{
    return withSizeAt(withSizeAt(bytes, 4, 0), dataOffset - 4, 0);
}

/// The sample count that soxi reads, -1 when it reads none.
long long soxiCount(QString const& path)
{
    QProcess soxi;
    soxi.start(QStringLiteral("soxi"), {QStringLiteral("-s"), path});
    bool const ended = soxi.waitForFinished() && soxi.exitCode() == 0;
    return ended ? soxi.readAllStandardOutput().trimmed().toLongLong() : -1;
}

/// Lets a file of this process grow no further than \a length, without a signal when it tries.
bool limitFileSize(rlim_t length)
{
    return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && limitResource(RLIMIT_FSIZE, length);
}

/// A file whose "data" id ends one page of the file system and whose data size begins the next, in a hole.
QByteArray headUpToPageEnd(qsizetype page)
{
    QByteArray const start = QByteArray("RIFF") + littleEndian(1) + "WAVE";
    qsizetype const filler = page - start.size() - 8 - 4;
    return start + chunk("junk", QByteArray(filler, 'j')) + "data";
}

} // namespace

class WavRepairTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void readsNumbers_data();
    void readsNumbers();
    void writesNumbers_data();
    void writesNumbers();
    void repairs_data();
    void repairs();
    void everyTruncationEndsInAnAnswer();
    void aFileThatNeedsNothingIsNotWrittenTo();
    void whatIsNoRegularFile_data();
    void whatIsNoRegularFile();
    void repairsWhatALinkPointsTo();
    void largeFiles_data();
    void largeFiles();
    void chunksBehindTheFirst4GiBAreNotReached();
    void readsThroughManyTinyChunks();
    void repairsRecordings_data();
    void repairsRecordings();
    void repairsTheRecordingOfAKilledRecorder();
    void aReadOnlyFileIsLeftAlone();
    void aFailedWriteIsReported_data();
    void aFailedWriteIsReported();
    void aFullFileSystemIsReported();
    void aKilledRepairIsCompletedByTheNext_data();
    void aKilledRepairIsCompletedByTheNext();
    void aFileThatIsCutMeanwhileIsInvalid_data();
    void aFileThatIsCutMeanwhileIsInvalid();
    void aFileThatGrowsMeanwhileKeepsItsSamples();

private:
    QString m_path;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void WavRepairTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_path = m_folder->filePath(QStringLiteral("recording.wav"));
}

void WavRepairTest::readsNumbers_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<quint32>("little32");
    QTest::addColumn<quint32>("big32");
    QTest::addColumn<quint16>("little16");
    QTest::addColumn<quint16>("big16");
    QTest::newRow("zeroes") << QByteArray(4, '\0') << 0U << 0U << quint16(0) << quint16(0);
    QTest::newRow("RIFF") << QByteArray("RIFF") << 0x46464952U << 0x52494646U << quint16(0x4952)
                          << quint16(0x5249);
    QTest::newRow("every bit") << QByteArray(4, '\xFF') << 0xFFFFFFFFU << 0xFFFFFFFFU << quint16(0xFFFF)
                               << quint16(0xFFFF);
    QTest::newRow("the top bit of each end") << QByteArray::fromHex("80017f80") << 0x807F0180U << 0x80017F80U
                                             << quint16(0x0180) << quint16(0x8001);
}

void WavRepairTest::readsNumbers()
{
    QFETCH(QByteArray, bytes);
    QFETCH(quint32, little32);
    QFETCH(quint32, big32);
    QFETCH(quint16, little16);
    QFETCH(quint16, big16);
    // One byte further in, so that nothing relies on alignment.
    QByteArray const shifted = '\0' + bytes;
    auto const* const raw = reinterpret_cast<unsigned char const*>(shifted.constData()) + 1;
    QCOMPARE(wav::byteArrayToUInt32LE(raw), little32);
    QCOMPARE(wav::byteArrayToUInt32BE(raw), big32);
    QCOMPARE(wav::byteArrayToInt32LE(raw), static_cast<qint32>(little32));
    QCOMPARE(wav::byteArrayToInt32BE(raw), static_cast<qint32>(big32));
    QCOMPARE(wav::byteArrayToUInt16LE(raw), little16);
    QCOMPARE(wav::byteArrayToUInt16BE(raw), big16);
    QCOMPARE(wav::byteArrayToInt16LE(raw), static_cast<qint16>(little16));
    QCOMPARE(wav::byteArrayToInt16BE(raw), static_cast<qint16>(big16));
}

void WavRepairTest::writesNumbers_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("zero") << 0 << QByteArray(4, '\0');
    QTest::newRow("one") << 1 << QByteArray::fromHex("01000000");
    QTest::newRow("four different bytes") << 0x12345678 << QByteArray::fromHex("78563412");
    QTest::newRow("negative") << -2 << QByteArray::fromHex("feffffff");
}

void WavRepairTest::writesNumbers()
{
    QFETCH(int, value);
    QFETCH(QByteArray, bytes);
    QByteArray out(6, 'g');
    wav::uInt32ToByteArrayLE(value, reinterpret_cast<unsigned char*>(out.data()) + 1);
    QCOMPARE(out, 'g' + bytes + 'g');
}

void WavRepairTest::repairs_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<RepairStatus>("status");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QByteArray>("after");

    QString const invalid = QStringLiteral("Invalid source file format.");
    QString const noData = QStringLiteral("Failed to find data chunk offset.");
    auto const addRow = [](char const* tag, QByteArray const& before, RepairStatus status,
                           QString const& message, QByteArray const& after) {
        QTest::newRow(tag) << before << status << message << after;
    };
    auto const needsNothing = [&addRow](char const* tag, QByteArray const& bytes) {
        addRow(tag, bytes, RepairStatus::NotNeeded, QString(), bytes);
    };
    auto const isRepaired = [&addRow](char const* tag, QByteArray const& before, QByteArray const& after) {
        addRow(tag, before, RepairStatus::Repaired, QString(), after);
    };
    auto const isRefused = [&addRow](char const* tag, QByteArray const& bytes, QString const& message) {
        addRow(tag, bytes, RepairStatus::InvalidFile, message, bytes);
    };

    QByteArray const right = plainWav(QByteArray(100, 's'));
    needsNothing("a right file", right);
    needsNothing("a right file without samples", plainWav(QByteArray()));
    needsNothing("an odd number of samples", plainWav(QByteArray(7, 's')));
    needsNothing("the shortest file with data", riff({chunk("data", QByteArray())}));
    needsNothing("no format chunk at all", riff({chunk("data", QByteArray(5, 's'))}));
    isRepaired("both sizes 0", unfinished(right), right);
    isRepaired("only the RIFF size wrong", withSizeAt(right, 4, 7), right);
    isRepaired("only the data size wrong", withSizeAt(right, 40, 7), right);
    isRepaired("both sizes the largest", withSizeAt(withSizeAt(right, 4, 0xFFFFFFFF), 40, 0xFFFFFFFF), right);
    isRepaired("cut off in the samples", right.left(71), plainWav(QByteArray(71 - 44, 's')));
    isRepaired("cut off before the first sample", right.left(44), plainWav(QByteArray()));
    isRepaired("grown", right + "more", plainWav(QByteArray(100, 's') + "more"));

    QByteArray const odd = chunk("LIST", "odd") + '\0';
    QByteArray const withOdd = riff({chunk("fmt ", pcmFormat()), odd, chunk("data", "ssss")});
    needsNothing("an odd chunk and its pad byte", withOdd);
    isRepaired("an odd chunk and its pad byte, unfinished", unfinished(withOdd, withOdd.size() - 4), withOdd);
    QByteArray const fake = chunk("data", "ab");
    QByteArray const named = riff({chunk("LIST", fake), chunk("data", "s" + fake + "s")});
    isRepaired("names among the samples", unfinished(named, 12 + 8 + fake.size() + 8), named);
    QByteArray const twoData = riff({chunk("data", "ssss"), chunk("data", "tttt")});
    isRepaired("chunks after the samples become samples", twoData,
               riff({chunk("data", "ssss" + chunk("data", "tttt"))}));
    QByteArray const unpadded = riff({chunk("LIST", "odd"), chunk("data", "ssss")});
    isRefused("an odd chunk without a pad byte", unpadded, invalid);

    isRefused("nothing", QByteArray(), invalid);
    isRefused("eleven bytes", right.left(11), invalid);
    isRefused("twelve bytes, the RIFF size right", riff({}), invalid);
    isRefused("twelve bytes, the RIFF size wrong", right.left(12), noData);
    isRefused("nineteen bytes", right.left(19), noData);
    isRefused("not RIFF", QByteArray(right).replace("RIFF", "RIFX"), invalid);
    isRefused("not WAVE", QByteArray(right).replace("WAVE", "AVI "), invalid);
    isRefused("no data chunk, the RIFF size right", riff({chunk("fmt ", pcmFormat())}), invalid);
    isRefused("no data chunk, the RIFF size wrong", withSizeAt(riff({chunk("fmt ", pcmFormat())}), 4, 0),
              noData);
    isRefused("the file ends in the data chunk's size", riff({chunk("fmt ", pcmFormat()), "data\1\2\3"}),
              invalid);
    // Claims that would lead a 32-bit offset back to itself, to the start, or past the end.
    for (quint32 const claim : {0xFFFFFFF8U, 0xFFFFFFF4U, 0xFFFFFFECU, 0xFFFFFFFFU, 0x80000000U, 1000U}) {
        QByteArray const bytes = riff({claimingChunk("junk", claim, "body"), chunk("data", "ssss")});
        QByteArray const tag = "a chunk claims " + QByteArray::number(claim);
        isRefused(tag.constData(), bytes, invalid);
        QByteArray const followed = riff({claimingChunk("junk", claim, QByteArray()), chunk("data", "ssss")});
        isRefused((tag + ", with data right behind").constData(), followed, invalid);
    }
}

void WavRepairTest::repairs()
{
    QFETCH(QByteArray, before);
    QFETCH(RepairStatus, status);
    QVERIFY(write(m_path, before));
    wav::RepairResult const result = repairOf(m_path);
    QTEST(result.message, "message");
    QCOMPARE(result.status, status);
    QTEST(read(m_path), "after");
    if (status == RepairStatus::Repaired) {
        QCOMPARE(repairOf(m_path).status, RepairStatus::NotNeeded);
    }
}

void WavRepairTest::everyTruncationEndsInAnAnswer()
{
    QByteArray const whole =
        riff({chunk("fmt ", pcmFormat()), chunk("LIST", "INFOabc") + '\0', chunk("data", "ssss")});
    qsizetype const dataOffset = whole.size() - 4;
    for (qsizetype size = 0; size < whole.size(); ++size) {
        QVERIFY(write(m_path, whole.left(size)));
        RepairStatus const status = repairOf(m_path).status;
        QCOMPARE(status, size < dataOffset ? RepairStatus::InvalidFile : RepairStatus::Repaired);
        QByteArray const after = read(m_path);
        QCOMPARE(after.size(), size);
        if (status == RepairStatus::Repaired) {
            QCOMPARE(sizeAt(after, 4), static_cast<quint32>(size - 8));
            QCOMPARE(sizeAt(after, dataOffset - 4), static_cast<quint32>(size - dataOffset));
        } else {
            QCOMPARE(after, whole.left(size));
        }
    }
}

void WavRepairTest::aFileThatNeedsNothingIsNotWrittenTo()
{
    QByteArray const bytes = plainWav(QByteArray(100, 's'));
    QVERIFY(write(m_path, bytes));
    QDateTime const longAgo = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    QFile file(m_path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(longAgo, QFileDevice::FileModificationTime));
    file.close();
    QCOMPARE(repairOf(m_path).status, RepairStatus::NotNeeded);
    QCOMPARE(QFileInfo(m_path).lastModified(), longAgo);
    QCOMPARE(read(m_path), bytes);
}

void WavRepairTest::whatIsNoRegularFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<RepairStatus>("status");
    QString const noFile = QStringLiteral("WAV file does not exist");
    QTest::newRow("no such file") << QStringLiteral("missing") << RepairStatus::FileNotFound;
    QTest::newRow("no such folder") << QStringLiteral("missing/file") << RepairStatus::FileNotFound;
    QTest::newRow("a file in place of the folder")
        << QStringLiteral("file/file") << RepairStatus::FileNotFound;
    QTest::newRow("a link to nothing") << QStringLiteral("dangling") << RepairStatus::FileNotFound;
    QTest::newRow("a link to itself") << QStringLiteral("loop") << RepairStatus::FileNotFound;
    QTest::newRow("a name that is too long") << QString(300, QLatin1Char('n')) << RepairStatus::FileNotFound;
    QTest::newRow("a folder") << QStringLiteral("folder") << RepairStatus::InvalidFile;
    QTest::newRow("a pipe") << QStringLiteral("pipe") << RepairStatus::InvalidFile;
    QTest::newRow("a link to a pipe") << QStringLiteral("to pipe") << RepairStatus::InvalidFile;
    QTest::newRow("a device that swallows") << QStringLiteral("/dev/null") << RepairStatus::InvalidFile;
    QTest::newRow("a device without an end") << QStringLiteral("/dev/zero") << RepairStatus::InvalidFile;
}

void WavRepairTest::whatIsNoRegularFile()
{
    QFETCH(QString, name);
    QFETCH(RepairStatus, status);
    QDir const folder(m_folder->path());
    QVERIFY(folder.mkdir(QStringLiteral("folder")));
    QVERIFY(write(folder.filePath(QStringLiteral("file")), "x"));
    QVERIFY(
        QFile::link(folder.filePath(QStringLiteral("missing")), folder.filePath(QStringLiteral("dangling"))));
    QVERIFY(QFile::link(folder.filePath(QStringLiteral("loop")), folder.filePath(QStringLiteral("loop"))));
    QCOMPARE(mkfifo(QFile::encodeName(folder.filePath(QStringLiteral("pipe"))).constData(), 0600), 0);
    QVERIFY(QFile::link(folder.filePath(QStringLiteral("pipe")), folder.filePath(QStringLiteral("to pipe"))));
    wav::RepairResult const result = repairOf(folder.filePath(name));
    QCOMPARE(result.status, status);
    QCOMPARE(result.message, status == RepairStatus::FileNotFound
                                 ? QStringLiteral("WAV file does not exist")
                                 : QStringLiteral("Failed to open WAV file."));
}

void WavRepairTest::repairsWhatALinkPointsTo()
{
    QByteArray const right = plainWav("samples!");
    QVERIFY(write(m_path, unfinished(right)));
    QString const link = m_folder->filePath(QStringLiteral("link"));
    QVERIFY(QFile::link(m_path, link));
    QCOMPARE(repairOf(link).status, RepairStatus::Repaired);
    QCOMPARE(read(m_path), right);
    QVERIFY(QFileInfo(link).isSymLink());
}

void WavRepairTest::largeFiles_data()
{
    QTest::addColumn<qint64>("length");
    QTest::addColumn<RepairStatus>("status");
    constexpr qint64 gibibyte = 0x40000000;
    QTest::newRow("just over 2 GiB") << 2 * gibibyte + 2 << RepairStatus::Repaired;
    QTest::newRow("3 GiB") << 3 * gibibyte << RepairStatus::Repaired;
    QTest::newRow("one byte below 4 GiB") << 4 * gibibyte - 1 << RepairStatus::Repaired;
    // Beyond, the fields hold the length modulo 4 GiB.
    QTest::newRow("4 GiB") << 4 * gibibyte << RepairStatus::InvalidFile;
    QTest::newRow("4 GiB and less than the header") << 4 * gibibyte + 40 << RepairStatus::InvalidFile;
    QTest::newRow("4 GiB and 100 bytes") << 4 * gibibyte + 100 << RepairStatus::Repaired;
}

void WavRepairTest::largeFiles()
{
    QFETCH(qint64, length);
    QFETCH(RepairStatus, status);
    QVERIFY(writeSparseFile(m_path, unfinished(plainWav("start")), length));
    QCOMPARE(repairOf(m_path).status, status);
    QCOMPARE(QFileInfo(m_path).size(), length);
    if (status == RepairStatus::Repaired) {
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QByteArray const head = file.read(49);
        QCOMPARE(sizeAt(head, 4), static_cast<quint32>(length - 8));
        QCOMPARE(sizeAt(head, 40), static_cast<quint32>(length - 44));
        QVERIFY(head.endsWith("start"));
        QCOMPARE(repairOf(m_path).status, RepairStatus::NotNeeded);
    }
}

void WavRepairTest::chunksBehindTheFirst4GiBAreNotReached()
{
    // The claim would lead a 32-bit offset back to the chunk itself, whose place a data chunk seems to take.
    QByteArray const head = riff({claimingChunk("junk", 0xFFFFFFF8, QByteArray())});
    QVERIFY(writeSparseFile(m_path, head, 0x100000000 + 12));
    QFile file(m_path);
    QVERIFY(file.open(QIODevice::Append));
    QVERIFY(file.write(chunk("data", QByteArray(100, 's'))) > 0);
    file.close();
    QCOMPARE(repairOf(m_path).message, QStringLiteral("Failed to find data chunk offset."));
}

void WavRepairTest::readsThroughManyTinyChunks()
{
    QByteArray const right = riff({chunk("junk", "jj").repeated(1'000'000), chunk("data", "ssss")});
    QVERIFY(write(m_path, unfinished(right, right.size() - 4)));
    QCOMPARE(repairOf(m_path).status, RepairStatus::Repaired);
    QCOMPARE(read(m_path), right);
}

void WavRepairTest::repairsRecordings_data()
{
    QTest::addColumn<QStringList>("format");
    QTest::newRow("16 bits, one channel") << QStringList{QStringLiteral("-b16"), QStringLiteral("-c1")};
    QTest::newRow("16 bits, two channels") << QStringList{QStringLiteral("-b16"), QStringLiteral("-c2")};
    QTest::newRow("24 bits, extensible") << QStringList{QStringLiteral("-b24"), QStringLiteral("-c2")};
    QTest::newRow("mu-law") << QStringList{QStringLiteral("-e"), QStringLiteral("mu-law"),
                                           QStringLiteral("-c1")};
    QTest::newRow("A-law") << QStringList{QStringLiteral("-e"), QStringLiteral("a-law"),
                                          QStringLiteral("-c2")};
    QTest::newRow("float") << QStringList{QStringLiteral("-e"), QStringLiteral("float"),
                                          QStringLiteral("-c1")};
}

void WavRepairTest::repairsRecordings()
{
    QFETCH(QStringList, format);
    QProcess sox;
    sox.start(QStringLiteral("sox"),
              QStringList{QStringLiteral("-r8000"), QStringLiteral("-n")} + format +
                  QStringList{m_path, QStringLiteral("synth"), QStringLiteral("20000s"),
                              QStringLiteral("sine"), QStringLiteral("440")});
    QVERIFY(sox.waitForFinished());
    QCOMPARE(sox.exitCode(), 0);
    QCOMPARE(soxiCount(m_path), 20000);
    QByteArray const recording = read(m_path);
    QCOMPARE(repairOf(m_path).status, RepairStatus::NotNeeded);
    QCOMPARE(read(m_path), recording);

    qsizetype const dataOffset = recording.indexOf("data") + 8;
    QVERIFY(write(m_path, unfinished(recording, dataOffset)));
    QVERIFY(soxiCount(m_path) != 20000);
    QCOMPARE(repairOf(m_path).status, RepairStatus::Repaired);
    QCOMPARE(read(m_path), recording);

    qsizetype const frame = (recording.size() - dataOffset) / 20000;
    QVERIFY(write(m_path, recording.left(dataOffset + 12345 * frame)));
    QCOMPARE(repairOf(m_path).status, RepairStatus::Repaired);
    // For encodings that have a "fact" chunk soxi goes by the data size, too.
    QCOMPARE(soxiCount(m_path), 12345);
}

void WavRepairTest::repairsTheRecordingOfAKilledRecorder()
{
    QProcess sox;
    sox.start(QStringLiteral("sox"),
              {QStringLiteral("-n"), QStringLiteral("-r8000"), QStringLiteral("-b16"), QStringLiteral("-c1"),
               m_path, QStringLiteral("synth"), QStringLiteral("100000"), QStringLiteral("sine"),
               QStringLiteral("440")});
    QTRY_VERIFY(QFileInfo(m_path).size() > 100'000);
    sox.kill();
    QVERIFY(sox.waitForFinished());
    long long const frames = (QFileInfo(m_path).size() - 44) / 2;
    QVERIFY(soxiCount(m_path) != frames);
    QCOMPARE(repairOf(m_path).status, RepairStatus::Repaired);
    QCOMPARE(soxiCount(m_path), frames);
    QCOMPARE(repairOf(m_path).status, RepairStatus::NotNeeded);
}

void WavRepairTest::aReadOnlyFileIsLeftAlone()
{
    QByteArray const broken = unfinished(plainWav("samples!"));
    QVERIFY(write(m_path, broken));
    QVERIFY(QFile::setPermissions(m_path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
    QVERIFY(QFile::setPermissions(m_folder->path(), QFile::Permissions(0x7755)));
    int const exitCode = inChildProcess([&] {
        if (chdir(QFile::encodeName(m_folder->path()).constData()) != 0 || !becomeOrdinaryUser()) {
            return 1;
        }
        return failsWith(QStringLiteral("recording.wav"), RepairStatus::InvalidFile,
                         QStringLiteral("Failed to open WAV file."))
                   ? 0
                   : 2;
    });
    QCOMPARE(exitCode, 0);
    QCOMPARE(read(m_path), broken);
}

void WavRepairTest::aFailedWriteIsReported_data()
{
    QTest::addColumn<int>("limit");
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("riffSizeIsWritten");
    QTest::newRow("the first write") << 2 << QStringLiteral("Failed to write RIFF chunk size.") << false;
    QTest::newRow("the second write") << 8 << QStringLiteral("Failed to write data chunk size.") << true;
}

void WavRepairTest::aFailedWriteIsReported()
{
    QFETCH(int, limit);
    QFETCH(QString, message);
    QFETCH(bool, riffSizeIsWritten);
    QByteArray const right = plainWav("samples!");
    QVERIFY(write(m_path, unfinished(right)));
    int const exitCode = inChildProcess([&] {
        if (!limitFileSize(static_cast<rlim_t>(limit))) {
            return 1;
        }
        return failsWith(m_path, RepairStatus::WriteFailed, message) ? 0 : 2;
    });
    QCOMPARE(exitCode, 0);
    QCOMPARE(read(m_path), withSizeAt(withSizeAt(right, 4, riffSizeIsWritten ? 44 : 0), 40, 0));
    QCOMPARE(repairOf(m_path).status, RepairStatus::Repaired);
    QCOMPARE(read(m_path), right);
}

void WavRepairTest::aFullFileSystemIsReported()
{
    qsizetype const page = sysconf(_SC_PAGESIZE);
    QByteArray const head = headUpToPageEnd(page);
    QByteArray const folder = QFile::encodeName(m_folder->path());
    int const exitCode = inChildProcess([&] {
        bool const mounted = unshare(CLONE_NEWNS) == 0 &&
                             mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                             mount("small", folder.constData(), "tmpfs", 0, "size=64k") == 0;
        if (!writeSparseFile(m_path, head, 2 * page)) {
            return 1;
        }
        if (mounted) {
            write(m_folder->filePath(QStringLiteral("filler")), QByteArray(0x20000, 'f'));
        } else if (!limitFileSize(static_cast<rlim_t>(page))) { // no mounts allowed here
            return 2;
        }
        bool const reported =
            failsWith(m_path, RepairStatus::WriteFailed, QStringLiteral("Failed to write data chunk size."));
        QByteArray const expected =
            withSizeAt(head, 4, static_cast<quint32>(2 * page - 8)) + QByteArray(page, '\0');
        return reported && read(m_path) == expected ? 0 : 3;
    });
    QCOMPARE(exitCode, 0);
}

void WavRepairTest::aKilledRepairIsCompletedByTheNext_data()
{
    QTest::addColumn<int>("nthWrite");
    QTest::addColumn<quint32>("riffSize");
    QTest::newRow("before the first write") << 1 << 0U;
    QTest::newRow("between the two writes") << 2 << 44U;
}

void WavRepairTest::aKilledRepairIsCompletedByTheNext()
{
    QFETCH(int, nthWrite);
    QFETCH(quint32, riffSize);
    QByteArray const right = plainWav("samples!");
    QVERIFY(write(m_path, unfinished(right)));
    QVERIFY(killBeforeCall({SYS_write, SYS_writev, SYS_pwrite64}, nthWrite, [&] { repairOf(m_path); }));
    QCOMPARE(read(m_path), withSizeAt(withSizeAt(right, 4, riffSize), 40, 0));
    QCOMPARE(repairOf(m_path).status, RepairStatus::Repaired);
    QCOMPARE(read(m_path), right);
}

void WavRepairTest::aFileThatIsCutMeanwhileIsInvalid_data()
{
    QTest::addColumn<int>("nthRead");
    QTest::addColumn<int>("length");
    QTest::newRow("before its header is read") << 1 << 0;
    QTest::newRow("before the search for the data chunk") << 2 << 12;
    QTest::newRow("behind the first chunk") << 3 << 50'000;
    QTest::newRow("before the data size is read") << 4 << 50'000;
}

void WavRepairTest::aFileThatIsCutMeanwhileIsInvalid()
{
    QFETCH(int, nthRead);
    QFETCH(int, length);
    // The first chunk is longer than what one read takes in, so that each step reads again.
    QByteArray const right = riff({chunk("LIST", QByteArray(100'000, 'l')), chunk("data", "ssss")});
    QVERIFY(write(m_path, right));
    auto const status = interveneBeforeCall(
        {SYS_read, SYS_readv}, nthRead, [&](pid_t) { QFile::resize(m_path, length); },
        [&] {
            return failsWith(m_path, RepairStatus::InvalidFile, QStringLiteral("Invalid source file format."))
                       ? 0
                       : 1;
        });
    QVERIFY(status.has_value());
    QCOMPARE(*status, 0);
    QCOMPARE(read(m_path), right.left(length));
}

void WavRepairTest::aFileThatGrowsMeanwhileKeepsItsSamples()
{
    constexpr qsizetype pieces = 2000;
    QVERIFY(write(m_path, unfinished(plainWav(QByteArray()))));
    pid_t const recorder = fork();
    if (recorder == 0) {
        int const file = open(QFile::encodeName(m_path).constData(), O_WRONLY | O_APPEND);
        bool written = file >= 0;
        for (qsizetype i = 0; i < pieces; ++i) {
            written = written && write(file, "sample", 6) == 6;
        }
        _exit(written ? 0 : 1);
    }
    int status = -1;
    while (waitpid(recorder, &status, WNOHANG) == 0) {
        RepairStatus const answer = repairOf(m_path).status;
        QVERIFY(answer == RepairStatus::Repaired || answer == RepairStatus::NotNeeded);
    }
    QCOMPARE(status, 0);
    QByteArray const right = plainWav(QByteArray("sample").repeated(pieces));
    QCOMPARE(read(m_path).mid(44), right.mid(44));
    repairOf(m_path);
    QCOMPARE(read(m_path), right);
}

int main(int argc, char** argv)
{
    return runTest<WavRepairTest>(argc, argv);
}

#include "WavRepairTest.moc"
