#include <audio/WAVData.h>

#include "WavFiles.h"

#include <ChildProcess.h>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <RunTest.h>
#include <TestFiles.h>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <optional>
#include <sys/stat.h>
#include <thread>

using namespace std::chrono_literals;
using TestFiles::read;
using TestFiles::write;

namespace {

using Bytes = std::vector<unsigned char>;

Bytes bytesOf(QByteArray const& array)
{
    return Bytes(array.begin(), array.end());
}

WAVData parsed(QString const& path)
{
    return WAVData(nativePath(path));
}

/// The copy of \a part's payload after what \a out holds, as the header's doc comment says: four bytes back,
/// and the four bytes there written once more.
void appendPayload(WAVData const& part, std::ofstream& out, QByteArray const& fourBytesBefore)
{
    std::streamoff const end = out.tellp();
    out.seekp(end - 4);
    part.writePayloadToFile(out);
    std::streamoff const newEnd = out.tellp();
    out.seekp(end - 4);
    out.write(fourBytesBefore.constData(), 4);
    out.seekp(newEnd);
}

} // namespace

class WAVDataTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void readsThePlainestHeader();
    void parses_data();
    void parses();
    void tellsTheDuration_data();
    void tellsTheDuration();
    void everyTruncationOfTheHeader();
    void claimsCostNoMemory_data();
    void claimsCostNoMemory();
    void aShortBodyKeepsItsClaimedLength();
    void noTimeIsLostOnManyChunks();
    void whatIsNoRegularFile_data();
    void whatIsNoRegularFile();
    void parsingAnewForgetsWhatWasThere();
    void chunkReadersTellTheirLength();
    void aStreamThatThrowsIsNoDanger();
    void comparesFormatTags_data();
    void comparesFormatTags();
    void appendAddsSizes_data();
    void appendAddsSizes();
    void appendToItselfDoubles();
    void writesTheHeaderInItsOwnOrder();
    void writesThePiecesOfTheHeader();
    void payloadBeginsWithTheDataSize();
    void writingBothToOnePathLeavesThePayload();
    void joinsWithFourBytesBack();
    void joinsFromBehindTheSizeField();
    void copiesMoreThanOneBlock();
    void largeFiles_data();
    void largeFiles();
    void thePayloadIsNeverHeld();
    void aTargetThatCannotBeWritten_data();
    void aTargetThatCannotBeWritten();
    void aFullDiskIsReported();
    void aFailedWriteEndsTheCopy();
    void aSourceThatIsGone();
    void aSourceThatShrinksMeanwhileEndsTheCopy();

private:
    QString m_path;
    QString m_target;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void WAVDataTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_path = m_folder->filePath(QStringLiteral("recording.wav"));
    m_target = m_folder->filePath(QStringLiteral("target.wav"));
}

void WAVDataTest::readsThePlainestHeader()
{
    QVERIFY(write(m_path, plainWav("samples!")));
    WAVData const data = parsed(m_path);
    QVERIFY(data.hasHeader());
    QCOMPARE(data.riffSize(), 44U);
    QCOMPARE(data.dataSize(), 8U);
    QCOMPARE(data.headerLength(), 40U);
    QCOMPARE(data.formatBody(), bytesOf(pcmFormat()));
    QCOMPARE(data.listBody(), Bytes());
    QCOMPARE(data.path(), nativePath(m_path));
}

void WAVDataTest::parses_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<bool>("hasHeader");
    QTest::addColumn<QByteArray>("formatBody");
    QTest::addColumn<QByteArray>("listBody");
    QTest::addColumn<quint32>("headerLength");
    QByteArray const none;
    QByteArray const pcm = pcmFormat();
    QByteArray const format = chunk("fmt ", pcm);
    QByteArray const data = chunk("data", "ssss");
    QByteArray const list = chunk("LIST", "INFOhello!");
    QTest::newRow("LIST after fmt") << riff({format, list, data}) << true << pcm << QByteArray("hello!")
                                    << 58U;
    QTest::newRow("LIST before fmt") << riff({list, format, data}) << true << pcm << QByteArray("hello!")
                                     << 58U;
    QTest::newRow("no fmt") << riff({list, data}) << true << none << QByteArray("hello!") << 34U;
    QTest::newRow("only data") << riff({data}) << true << none << none << 16U;
    QTest::newRow("an empty fmt") << riff({chunk("fmt ", none), data}) << true << none << none << 24U;
    QTest::newRow("a long fmt") << riff({chunk("fmt ", pcm + QByteArray(100'000, 'x')), data}) << true
                                << pcm + QByteArray(100'000, 'x') << none << 100'040U;
    QTest::newRow("two fmt, the later counts")
        << riff({chunk("fmt ", "earlier"), format, data}) << true << pcm << none << 55U;
    QTest::newRow("two LIST, the later counts")
        << riff({format, list, chunk("LIST", "INFOb"), data}) << true << pcm << QByteArray("b") << 71U;
    QTest::newRow("a long LIST before a short one")
        << riff({chunk("LIST", QByteArray(70'000, 'x')), list, data}) << true << none << QByteArray("hello!")
        << 70'042U;
    QTest::newRow("an odd LIST without a pad byte")
        << riff({chunk("LIST", "INFOa"), format, data}) << true << pcm << QByteArray("a") << 53U;
    QTest::newRow("an odd LIST and a pad byte")
        << riff({chunk("LIST", "INFOa") + '\0', format, data}) << false << none << QByteArray("a") << 25U;
    QTest::newRow("a LIST with a type alone")
        << riff({format, chunk("LIST", "INFO"), data}) << true << pcm << none << 52U;
    for (quint32 size = 0; size < 4; ++size) {
        QByteArray const tag = "a LIST of size " + QByteArray::number(size);
        QTest::newRow(tag.constData()) << riff({format, claimingChunk("LIST", size, "INFO"), data}) << false
                                       << pcm << none << 36 + size + 8;
    }
    QTest::newRow("a LIST of size 3 after a whole one")
        << riff({list, claimingChunk("LIST", 3, "INFO"), data}) << false << none << none << 41U;
    QTest::newRow("fact before data")
        << riff({format, chunk("fact", "four"), data}) << false << pcm << none << 36U;
    QTest::newRow("a padding chunk") << riff({chunk("PAD ", "four"), format, data}) << false << none << none
                                     << 12U;
    QTest::newRow("no data") << riff({format}) << false << pcm << none << 36U;
    QTest::newRow("names in another case")
        << riff({chunk("FMT ", pcm), data}) << false << none << none << 12U;
    QTest::newRow("data in another case")
        << riff({format, chunk("DATA", "ssss")}) << false << pcm << none << 36U;
    QTest::newRow("not RIFF") << QByteArray("RIFX") + riff({format, data}).mid(4) << false << none << none
                              << 0U;
    QTest::newRow("not WAVE") << riff({format, data}).replace("WAVE", "AVI ") << false << none << none << 0U;
    QTest::newRow("an empty file") << none << false << none << none << 0U;
}

void WAVDataTest::parses()
{
    QFETCH(QByteArray, file);
    QFETCH(bool, hasHeader);
    QFETCH(QByteArray, formatBody);
    QFETCH(QByteArray, listBody);
    QVERIFY(write(m_path, file));
    WAVData data = parsed(m_path);
    QCOMPARE(data.hasHeader(), hasHeader);
    QCOMPARE(data.formatBody(), bytesOf(formatBody));
    QCOMPARE(data.listBody(), bytesOf(listBody));
    QTEST(data.headerLength(), "headerLength");
    QCOMPARE(data.parseFile(), hasHeader);
    QCOMPARE(read(m_path), file);
}

void WAVDataTest::tellsTheDuration_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<std::optional<std::chrono::milliseconds>>("duration");
    using Duration = std::optional<std::chrono::milliseconds>;
    auto const wav = [](QByteArray const& format, quint32 claimed) {
        return riff({chunk("fmt ", format), claimingChunk("data", claimed, "s")});
    };
    QByteArray const silent = withSizeAt(pcmFormat(), 8, 0);
    QTest::newRow("a second of telephone") << wav(pcmFormat(1, 8000, 16), 16'000) << Duration(1s);
    QTest::newRow("stereo") << wav(pcmFormat(2, 48'000, 24), 288'000) << Duration(1s);
    QTest::newRow("rounded down") << wav(pcmFormat(1, 8000, 8), 15) << Duration(1ms);
    QTest::newRow("no samples") << wav(pcmFormat(), 0) << Duration(0ms);
    QTest::newRow("as long as can be") << wav(pcmFormat(1, 1, 8), 0xffff'ffffU) << Duration(4'294'967'295s);
    QTest::newRow("the end of the format is missing") << wav(pcmFormat().first(11), 16'000) << Duration();
    QTest::newRow("a plain format without more") << wav(pcmFormat().first(12), 16'000) << Duration(1s);
    QTest::newRow("a pace of nothing") << wav(silent, 16'000) << Duration();
    QTest::newRow("no format") << riff({chunk("data", "s")}) << Duration();
    QTest::newRow("no recording") << QByteArray("text") << Duration();
}

void WAVDataTest::tellsTheDuration()
{
    QFETCH(QByteArray, file);
    QVERIFY(write(m_path, file));
    QTEST(parsed(m_path).duration(), "duration");
}

void WAVDataTest::everyTruncationOfTheHeader()
{
    QByteArray const whole =
        riff({chunk("fmt ", pcmFormat()), chunk("LIST", "INFOhello!"), chunk("data", "ssss")});
    qsizetype const dataSizeOffset = whole.size() - 8;
    for (qsizetype size = 0; size <= whole.size(); ++size) {
        QVERIFY(write(m_path, whole.left(size)));
        WAVData const data = parsed(m_path);
        QCOMPARE(data.hasHeader(), size >= dataSizeOffset);
        QByteArray const padded = whole.left(size) + QByteArray(whole.size() - size, '\0');
        QCOMPARE(data.riffSize(), sizeAt(padded, 4));
        QCOMPARE(data.dataSize(), size >= dataSizeOffset ? sizeAt(padded, dataSizeOffset) : 0);
        QVERIFY(data.headerLength() <= static_cast<quint32>(dataSizeOffset));
    }
}

void WAVDataTest::claimsCostNoMemory_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<quint32>("claim");
    for (char const* const name : {"fmt ", "LIST"}) {
        for (quint32 const claim : {0x7FFFFFFFU, 0x80000000U, 0xFFFFFFF4U, 0xFFFFFFF8U, 0xFFFFFFFFU}) {
            QTest::addRow("%s of %u bytes", name, claim) << QByteArray(name) << claim;
        }
    }
}

void WAVDataTest::claimsCostNoMemory()
{
    QFETCH(QByteArray, name);
    QFETCH(quint32, claim);
    QVERIFY(write(m_path, riff({claimingChunk(name.constData(), claim, QByteArray(1000, 'x'))})));
    int const exitCode = inChildProcess([&] {
        long const before = peakMemory();
        WAVData const data = parsed(m_path);
        if (data.hasHeader() || data.formatBody().size() + data.listBody().size() > 0x10000) {
            return 1;
        }
        return peakMemory() - before < 20'000 ? 0 : 2;
    });
    QCOMPARE(exitCode, 0);
    // A sum that went round would lead into the bytes that begin the file.
    QVERIFY(parsed(m_path).headerLength() >= 12U);
}

void WAVDataTest::aShortBodyKeepsItsClaimedLength()
{
    QVERIFY(write(m_path, riff({chunk("fmt ", pcmFormat())}).left(21)));
    WAVData const data = parsed(m_path);
    QVERIFY(!data.hasHeader());
    Bytes expected(16, 0);
    expected[0] = 1;
    QCOMPARE(data.formatBody(), expected);
}

void WAVDataTest::noTimeIsLostOnManyChunks()
{
    QByteArray const file = riff(
        {chunk("fmt ", QByteArray()).repeated(1'000'000), chunk("fmt ", pcmFormat()), chunk("data", "ssss")});
    QVERIFY(write(m_path, file));
    WAVData const data = parsed(m_path);
    QVERIFY(data.hasHeader());
    QCOMPARE(data.headerLength(), 8'000'040U);
}

void WAVDataTest::whatIsNoRegularFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("no such file") << QStringLiteral("missing");
    QTest::newRow("a folder") << QStringLiteral("folder");
    QTest::newRow("a pipe without a writer") << QStringLiteral("pipe");
    QTest::newRow("a link to itself") << QStringLiteral("loop");
    QTest::newRow("a name that is too long") << QString(300, QLatin1Char('n'));
    QTest::newRow("a device without an end") << QStringLiteral("/dev/zero");
}

void WAVDataTest::whatIsNoRegularFile()
{
    QFETCH(QString, name);
    QDir const folder(m_folder->path());
    QVERIFY(folder.mkdir(QStringLiteral("folder")));
    QVERIFY(QFile::link(folder.filePath(QStringLiteral("loop")), folder.filePath(QStringLiteral("loop"))));
    QCOMPARE(mkfifo(QFile::encodeName(folder.filePath(QStringLiteral("pipe"))).constData(), 0600), 0);
    WAVData data = parsed(folder.filePath(name));
    QVERIFY(!data.hasHeader());
    QVERIFY(!data.parseFile());
    QCOMPARE(data.headerLength(), 0U);
    QVERIFY(!data.writePayloadToFile(m_target.toStdString()));
}

void WAVDataTest::parsingAnewForgetsWhatWasThere()
{
    QVERIFY(
        write(m_path, riff({chunk("LIST", "INFOhello!"), chunk("fmt ", pcmFormat()), chunk("data", "s")})));
    WAVData data = parsed(m_path);
    QVERIFY(data.hasHeader());
    QVERIFY(write(m_path, plainWav("samples!")));
    QVERIFY(data.parseFile());
    QCOMPARE(data.listBody(), Bytes());
    QCOMPARE(data.headerLength(), 40U);
    QVERIFY(QFile::remove(m_path));
    QVERIFY(!data.parseFile());
    QVERIFY(!data.hasHeader());
    QCOMPARE(data.riffSize(), 0U);
    QCOMPARE(data.dataSize(), 0U);
    QCOMPARE(data.headerLength(), 0U);
    QCOMPARE(data.formatBody(), Bytes());
}

void WAVDataTest::chunkReadersTellTheirLength()
{
    QVERIFY(write(m_path, "\x03" + QByteArray(3, '\0') + "abc" + littleEndian(10) + "INFOhello!" +
                              littleEndian(77) + "RIFFsizeWAVE"));
    WAVData data = parsed(m_path);
    std::ifstream stream(nativePath(m_path), std::ios::binary);
    auto const id = [](char const* name) { return reinterpret_cast<unsigned char const*>(name); };
    QCOMPARE(data.parseHeaderFormat(id("fmt "), stream), 11U);
    QCOMPARE(data.formatBody(), bytesOf("abc"));
    QCOMPARE(data.parseHeaderExtraParam(id("LIST"), stream), 18U);
    QCOMPARE(data.listBody(), bytesOf("hello!"));
    QCOMPARE(data.parseHeaderData(id("data"), stream), 4U);
    QCOMPARE(data.dataSize(), 77U);
    QVERIFY(data.parseHeaderInfo(stream));
    QVERIFY(!data.parseHeaderInfo(stream));
    QVERIFY(!data.parseHeader(stream));
}

void WAVDataTest::aStreamThatThrowsIsNoDanger()
{
    QVERIFY(write(m_path, riff({claimingChunk("fmt ", 0xFFFFFFFF, "x")})));
    WAVData data = parsed(m_path);
    std::ifstream in(nativePath(m_path), std::ios::binary);
    in.exceptions(std::ios::failbit | std::ios::badbit | std::ios::eofbit);
    QVERIFY(!data.parseHeader(in));
    QVERIFY(!data.parseHeaderInfo(in));
    std::ofstream out; // not open, so that every write fails
    out.exceptions(std::ios::failbit | std::ios::badbit);
    data.writeHeaderToFile(out);
    data.writePayloadToFile(out);
    QVERIFY(!out.good());
}

void WAVDataTest::comparesFormatTags_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("second");
    QTest::addColumn<bool>("compatible");
    QByteArray const none;
    QTest::newRow("equal") << pcmFormat() << pcmFormat() << true;
    QTest::newRow("other channels, rate and bits") << pcmFormat() << pcmFormat(2, 48000, 24) << true;
    QTest::newRow("another tag") << pcmFormat() << '\x03' + pcmFormat().mid(1) << false;
    QTest::newRow("another high byte") << pcmFormat() << QByteArray("\x01\x01") << false;
    QTest::newRow("the tag alone") << pcmFormat() << QByteArray("\x01\0", 2) << true;
    QTest::newRow("neither has one") << none << none << true;
    QTest::newRow("one byte is none") << QByteArray("\x01") << none << true;
    QTest::newRow("two different single bytes") << QByteArray("\x01") << QByteArray("\x02") << true;
    QTest::newRow("only one has one") << pcmFormat() << QByteArray("\x01") << false;
}

void WAVDataTest::comparesFormatTags()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, second);
    QFETCH(bool, compatible);
    QVERIFY(write(m_path, riff({chunk("fmt ", first), chunk("data", "ssss")})));
    QVERIFY(write(m_target, riff({chunk("fmt ", second), chunk("data", "tttttt")})));
    WAVData one = parsed(m_path);
    WAVData other = parsed(m_target);
    QCOMPARE(one.isCompatible(other), compatible);
    QCOMPARE(other.isCompatible(one), compatible);
    quint32 const riffSize = one.riffSize();
    QCOMPARE(one.append(other), compatible);
    QCOMPARE(one.dataSize(), compatible ? 10U : 4U);
    QCOMPARE(one.riffSize(), compatible ? riffSize + 6 : riffSize);
}

void WAVDataTest::appendAddsSizes_data()
{
    QTest::addColumn<quint32>("riffSize");
    QTest::addColumn<quint32>("dataSize");
    QTest::addColumn<quint32>("otherDataSize");
    QTest::addColumn<quint32>("newRiffSize");
    QTest::addColumn<quint32>("newDataSize");
    QTest::newRow("small") << 136U << 100U << 50U << 186U << 150U;
    QTest::newRow("nothing") << 136U << 100U << 0U << 136U << 100U;
    QTest::newRow("past 2 GiB") << 0x70000024U << 0x70000000U << 0x70000000U << 0xE0000024U << 0xE0000000U;
    QTest::newRow("past 4 GiB wraps") << 0xFFFFFFF0U << 0xFFFFFF00U << 0x101U << 0xF1U << 1U;
}

void WAVDataTest::appendAddsSizes()
{
    QFETCH(quint32, riffSize);
    QFETCH(quint32, dataSize);
    QFETCH(quint32, otherDataSize);
    QByteArray const plain = plainWav(QByteArray());
    QVERIFY(write(m_path, withSizeAt(withSizeAt(plain, 4, riffSize), 40, dataSize)));
    QVERIFY(write(m_target, withSizeAt(plain, 40, otherDataSize)));
    WAVData data = parsed(m_path);
    QVERIFY(data.append(parsed(m_target)));
    QTEST(data.riffSize(), "newRiffSize");
    QTEST(data.dataSize(), "newDataSize");
}

void WAVDataTest::appendToItselfDoubles()
{
    QVERIFY(write(m_path, plainWav("samples!")));
    WAVData data = parsed(m_path);
    QVERIFY(data.append(data));
    QCOMPARE(data.dataSize(), 16U);
    QCOMPARE(data.riffSize(), 52U);
}

void WAVDataTest::writesTheHeaderInItsOwnOrder()
{
    QByteArray const list = chunk("LIST", "INFOhello!");
    QByteArray const format = chunk("fmt ", pcmFormat());
    QByteArray const data = chunk("data", "ssss");
    QVERIFY(write(m_path, riff({list, format, data})));
    QVERIFY(parsed(m_path).writeHeaderToFile(m_target.toStdString()));
    QCOMPARE(read(m_target), riff({format, list, data}).chopped(4));

    QVERIFY(write(m_path, riff({chunk("LIST", "INFO"), format, data})));
    QVERIFY(parsed(m_path).writeHeaderToFile(m_target.toStdString()));
    QCOMPARE(read(m_target), withSizeAt(riff({format, data}).chopped(4), 4, 52));
}

void WAVDataTest::writesThePiecesOfTheHeader()
{
    QVERIFY(write(m_path, riff({chunk("LIST", "INFOhello!"), chunk("fmt ", "abc"), chunk("data", "ssss")})));
    WAVData const data = parsed(m_path);
    std::ofstream out(nativePath(m_target), std::ios::binary);
    data.writeHeaderDataToFile(out);
    data.writeHeaderExtraParamToFile(out);
    data.writeHeaderFormatToFile(out);
    data.writeHeaderInfoToFile(out);
    out.close();
    QCOMPARE(read(m_target), "data" + littleEndian(4) + chunk("LIST", "INFOhello!") + chunk("fmt ", "abc") +
                                 "RIFF" + littleEndian(45) + "WAVE");
}

void WAVDataTest::payloadBeginsWithTheDataSize()
{
    QByteArray const file = plainWav("samples!") + chunk("LIST", "INFOx");
    QVERIFY(write(m_path, file));
    QVERIFY(parsed(m_path).writePayloadToFile(m_target.toStdString()));
    QCOMPARE(read(m_target), file.mid(40));
}

void WAVDataTest::writingBothToOnePathLeavesThePayload()
{
    QVERIFY(write(m_path, plainWav("samples!")));
    WAVData const data = parsed(m_path);
    QVERIFY(data.writeHeaderToFile(m_target.toStdString()));
    QCOMPARE(read(m_target), plainWav("samples!").left(44));
    QVERIFY(data.writePayloadToFile(m_target.toStdString()));
    QCOMPARE(read(m_target), littleEndian(8) + "samples!");
}

void WAVDataTest::joinsWithFourBytesBack()
{
    QVERIFY(write(m_path, plainWav("first samples ")));
    QString const second = m_folder->filePath(QStringLiteral("second.wav"));
    QVERIFY(write(second, plainWav("second samples")));
    WAVData header = parsed(m_path);
    QVERIFY(header.append(parsed(second)));
    std::ofstream out(nativePath(m_target), std::ios::binary);
    header.writeHeaderToFile(out);
    appendPayload(parsed(m_path), out, littleEndian(header.dataSize()));
    appendPayload(parsed(second), out, "les ");
    out.close();
    QVERIFY(out.good());
    QCOMPARE(read(m_target), plainWav("first samples second samples"));
}

void WAVDataTest::joinsFromBehindTheSizeField()
{
    QVERIFY(write(m_path, plainWav(QByteArray(2000, 'a'))));
    QString const second = m_folder->filePath(QStringLiteral("second.wav"));
    QVERIFY(write(second, plainWav(QByteArray(4000, 'b'))));
    WAVData header = parsed(m_path);
    WAVData const other = parsed(second);
    QVERIFY(header.append(other));
    std::ofstream out(nativePath(m_target), std::ios::binary);
    header.writeHeaderToFile(out);
    for (WAVData const* const part : {&std::as_const(header), &other}) {
        std::ifstream in(part->path(), std::ios::binary);
        in.seekg(std::streamoff(part->headerLength()) + 4);
        QVERIFY(part->writeBuffer(in, out));
    }
    out.close();
    QCOMPARE(read(m_target), plainWav(QByteArray(2000, 'a') + QByteArray(4000, 'b')));

    QProcess soxi;
    soxi.start(QStringLiteral("soxi"), {QStringLiteral("-s"), m_target});
    QVERIFY(soxi.waitForFinished());
    QCOMPARE(soxi.readAllStandardOutput().trimmed(), QByteArray("3000"));
}

void WAVDataTest::copiesMoreThanOneBlock()
{
    QByteArray samples(0x400000 * 2 + 17, '\0');
    for (qsizetype i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<char>(i * 7 >> 3);
    }
    QVERIFY(write(m_path, plainWav(samples)));
    QVERIFY(parsed(m_path).writePayloadToFile(m_target.toStdString()));
    QCOMPARE(read(m_target), littleEndian(static_cast<quint32>(samples.size())) + samples);
}

void WAVDataTest::largeFiles_data()
{
    QTest::addColumn<qint64>("length");
    constexpr qint64 gibibyte = 0x40000000;
    QTest::newRow("just over 2 GiB") << 2 * gibibyte + 2;
    QTest::newRow("one byte below 4 GiB") << 4 * gibibyte - 1;
}

void WAVDataTest::largeFiles()
{
    QFETCH(qint64, length);
    auto const dataSize = static_cast<quint32>(length - 44);
    QByteArray const head = withSizeAt(withSizeAt(plainWav(QByteArray()), 4, dataSize + 36), 40, dataSize);
    QVERIFY(writeSparseFile(m_path, head, length - 3));
    QFile file(m_path);
    QVERIFY(file.open(QIODevice::Append));
    QCOMPARE(file.write("end"), qint64(3));
    file.close();
    WAVData const data = parsed(m_path);
    QVERIFY(data.hasHeader());
    QCOMPARE(data.dataSize(), dataSize);
    std::ifstream in(nativePath(m_path), std::ios::binary);
    in.seekg(length - 10);
    std::ofstream out(nativePath(m_target), std::ios::binary);
    QVERIFY(data.writeBuffer(in, out));
    out.close();
    QCOMPARE(read(m_target), QByteArray(7, '\0') + "end");
}

void WAVDataTest::thePayloadIsNeverHeld()
{
    QVERIFY(writeSparseFile(m_path, plainWav(QByteArray()), 0x8000000));
    int const exitCode = inChildProcess([&] {
        long const before = peakMemory();
        return parsed(m_path).writePayloadToFile("/dev/null") && peakMemory() - before < 20'000 ? 0 : 1;
    });
    QCOMPARE(exitCode, 0);
}

void WAVDataTest::aTargetThatCannotBeWritten_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("a folder that does not exist") << QStringLiteral("missing/target.wav");
    QTest::newRow("a folder") << QStringLiteral("folder");
    QTest::newRow("a pipe without a reader") << QStringLiteral("pipe");
    QTest::newRow("a full device") << QStringLiteral("/dev/full");
    QTest::newRow("nothing") << QString();
}

void WAVDataTest::aTargetThatCannotBeWritten()
{
    QFETCH(QString, name);
    QDir const folder(m_folder->path());
    QVERIFY(folder.mkdir(QStringLiteral("folder")));
    QCOMPARE(mkfifo(QFile::encodeName(folder.filePath(QStringLiteral("pipe"))).constData(), 0600), 0);
    QVERIFY(write(m_path, plainWav("samples!")));
    WAVData const data = parsed(m_path);
    std::string const target = name.isEmpty() ? std::string() : folder.filePath(name).toStdString();
    QVERIFY(!data.writeHeaderToFile(target));
    QVERIFY(!data.writePayloadToFile(target));
}

void WAVDataTest::aFullDiskIsReported()
{
    QVERIFY(write(m_path, plainWav(QByteArray(100'000, 's'))));
    int const exitCode = inChildProcess([&] {
        if (std::signal(SIGXFSZ, SIG_IGN) == SIG_ERR || !limitResource(RLIMIT_FSIZE, 60'000)) {
            return 1;
        }
        return parsed(m_path).writePayloadToFile(m_target.toStdString()) ? 2 : 0;
    });
    QCOMPARE(exitCode, 0);
    QCOMPARE(read(m_target), plainWav(QByteArray(100'000, 's')).mid(40, 60'000));
}

void WAVDataTest::aFailedWriteEndsTheCopy()
{
    constexpr qint64 block = 0x400000;
    QVERIFY(writeSparseFile(m_path, plainWav(QByteArray()), 3 * block));
    WAVData const data = parsed(m_path);
    std::ifstream in(nativePath(m_path), std::ios::binary);
    std::ofstream full("/dev/full", std::ios::binary);
    QVERIFY(data.writeBuffer(in, full));
    QVERIFY(!full.good());
    QCOMPARE(static_cast<qint64>(in.tellg()), block);
}

void WAVDataTest::aSourceThatIsGone()
{
    QVERIFY(write(m_path, plainWav("samples!")));
    WAVData const data = parsed(m_path);
    QVERIFY(QFile::remove(m_path));
    QVERIFY(!data.writePayloadToFile(m_target.toStdString()));
    QVERIFY(data.writeHeaderToFile(m_target.toStdString()));
    QCOMPARE(read(m_target), plainWav("samples!").left(44));
}

void WAVDataTest::aSourceThatShrinksMeanwhileEndsTheCopy()
{
    constexpr qint64 newLength = 5 * 0x100000;
    QVERIFY(write(m_path, plainWav(QByteArray(10 * 0x100000, 's'))));
    QByteArray const pipe = QFile::encodeName(m_folder->filePath(QStringLiteral("pipe")));
    QCOMPARE(mkfifo(pipe.constData(), 0600), 0);
    bool copied = false;
    std::thread copier([&] {
        WAVData const data = parsed(m_path);
        std::ofstream out(pipe.constData(), std::ios::binary);
        copied = data.writePayloadToFile(out);
    });
    QFile reader(QFile::decodeName(pipe));
    bool const opened = reader.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    // With the first bytes here, the first block of 4 MiB has been read and waits for the pipe.
    QByteArray received = reader.read(1000);
    bool const shrunk = QFile::resize(m_path, newLength);
    for (QByteArray piece = reader.read(0x10000); !piece.isEmpty(); piece = reader.read(0x10000)) {
        received += piece;
    }
    copier.join();
    QVERIFY(opened && shrunk && copied);
    QCOMPARE(received.size(), newLength - 40);
}

int main(int argc, char** argv)
{
    return runTest<WAVDataTest>(argc, argv);
}

#include "WAVDataTest.moc"
