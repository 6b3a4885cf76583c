#include "SpcoreProcess.h"
#include "Terminal.h"

#include "../core/audio/WavFiles.h"

#include <WavJoin.h>
#include <WavLayout.h>

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtEndian>
#include <RunTest.h>
#include <SendSignal.h>
#include <TestFiles.h>
#include <csignal>
#include <optional>
#include <sys/stat.h>
#include <sys/types.h>

using TestFiles::read;
using TestFiles::write;

namespace {

QByteArray soxi(char const* option, QString const& path)
{
    QProcess process;
    process.start(QStringLiteral("soxi"), {QString::fromLatin1(option), path});
    process.waitForFinished();
    return process.readAllStandardOutput().trimmed();
}

QStringList join(QString const& out, QString const& in)
{
    return {QStringLiteral("wav"), QStringLiteral("join"), out, in};
}

QByteArray wav(quint16 channels, quint16 bits, QByteArray const& samples)
{
    return riff({chunk("fmt ", pcmFormat(channels, 8000, bits)), chunk("data", samples)});
}

/// The format chunk's body of one channel under another coding.
QByteArray codedFormat(quint16 tag)
{
    QByteArray body = pcmFormat(1, 8000, 8);
    qToLittleEndian(tag, body.data());
    return body + QByteArray(2, '\0');
}

QByteArray number64(quint64 number)
{
    QByteArray bytes(8, '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

constexpr quint64 rf64HeaderLength = 80;

/// An RF64 file with one chunk before its \a samples, whose size it gives as \a dataSize and its own as
/// \a riffSize, or as it is.
QByteArray rf64(QByteArray const& format, QByteArray const& samples, quint64 dataSize,
                std::optional<quint64> riffSize = std::nullopt)
{
    QByteArray const body = format + "data" + QByteArray(4, '\xFF') + samples;
    quint64 const ownSize = riffSize.value_or(4 + 36 + quint64(body.size()));
    QByteArray const sizes = number64(ownSize) + number64(dataSize) + number64(0) + QByteArray(4, '\0');
    return "RF64" + QByteArray(4, '\xFF') + "WAVE" + chunk("ds64", sizes) + body;
}

/// Whether \a process waits for something.
bool isAsleep(QProcess const& process)
{
    QByteArray const status = read(QStringLiteral("/proc/%1/stat").arg(process.processId()));
    return status.mid(status.lastIndexOf(')')).startsWith(") S");
}

} // namespace

class WavCommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void showsInfo();
    void showsNoControlCharacters();
    void checks_data();
    void checks();
    void answersForWhateverBytes();
    void repairsManyFiles();
    void repairSparesWhatFollowsTheSamples();
    void joins_data();
    void joins();
    void joinsRecordings();
    void joinsMoreThanOneBlock_data();
    void joinsMoreThanOneBlock();
    void joinPutsTheFileInPlaceOfTheOldOne();
    void refusesToJoin_data();
    void refusesToJoin();
    void refusesToJoinMoreThanTheDiskHolds();
    void joinsTelephoneRecordings_data();
    void joinsTelephoneRecordings();
    void joinsBeyondFourGigabytes();
    void readsStandardInput();
    void refusesATargetThatIsNoFile();
    void leavesAloneWhatAnotherJoinWrites();
    void leavesTheOldFileWhenTheDiskIsFull();
    void showsProgressOnATerminalOnly();
    void cleansUpWhenInterrupted_data();
    void cleansUpWhenInterrupted();
    void refusesWrongArguments_data();
    void refusesWrongArguments();

private:
    QString path(char const* name) const { return m_folder->filePath(QString::fromUtf8(name)); }
    SpcoreResult run(char const* command, QStringList const& files) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void WavCommandsTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

SpcoreResult WavCommandsTest::run(char const* command, QStringList const& files) const
{
    SpcoreProcess process;
    process.workingDirectory = m_folder->path();
    return process.run(QStringList{QStringLiteral("wav"), QString::fromLatin1(command)} + files);
}

void WavCommandsTest::showsInfo()
{
    QVERIFY(write(path("one.wav"), wav(2, 16, QByteArray(3200, 's'))));
    SpcoreResult const result = run("info", {QStringLiteral("one.wav")});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, QByteArray("one.wav\n"
                                    "  format    PCM, 2 channels, 8000 Hz, 16 bits\n"
                                    "  samples   3200 bytes from offset 44, 0.100 s\n"
                                    "  chunks    fmt data\n"
                                    "  sizes     right\n"
                                    "  joinable  yes\n"));
    QVERIFY(write(path("two.wav"), withSizeAt(riff({chunk("fact", "four"), chunk("data", "ss")}), 4, 0)));
    SpcoreResult const odd = run("info", {QStringLiteral("two.wav"), QStringLiteral("missing.wav")});
    QCOMPARE(odd.exitCode, 1);
    QVERIFY(odd.out.contains("format    unknown"));
    QVERIFY(odd.out.contains("joinable  no"));
    QVERIFY(odd.out.contains("RIFF size 0 instead of"));
    QCOMPARE(odd.err, QByteArray("spcore: missing.wav: no such file or directory\n"));
}

void WavCommandsTest::showsNoControlCharacters()
{
    QVERIFY(write(path("one.wav"), riff({chunk("\x1b[2J", "four"), chunk("data", "ss")})));
    SpcoreResult const result = run("info", {QStringLiteral("one.wav")});
    QCOMPARE(result.exitCode, 0);
    QVERIFY(!result.out.contains('\x1b'));
}

void WavCommandsTest::checks_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("out");
    QByteArray const right = plainWav("samples!");
    QTest::newRow("right") << right << 0 << QByteArray("x.wav: ok\n");
    QTest::newRow("unfinished") << withSizeAt(withSizeAt(right, 4, 0), 40, 0) << 1
                                << QByteArray("x.wav: RIFF size 0 instead of 44, data size 0 instead of 8; a "
                                              "repair would take the last 8 bytes for sound\n");
    QTest::newRow("the data size wrong")
        << withSizeAt(right, 40, 100) << 1 << QByteArray("x.wav: data size 100 instead of 8\n");
    QTest::newRow("a chunk behind the samples")
        << riff({chunk("data", "ssss"), chunk("LIST", "INFOab")}) << 0 << QByteArray("x.wav: ok\n");
    QTest::newRow("half a chunk behind the samples")
        << riff({chunk("data", "ssss"), "LIST"}) << 1
        << QByteArray("x.wav: data size 4 instead of 8; a repair would take the last 4 bytes for sound, "
                      "which begin with \"LIST\"\n");
    QTest::newRow("whole chunks behind the samples under a wrong size")
        << withSizeAt(riff({chunk("data", "ssss"), chunk("LIST", "INFOab"), chunk("id3 ", "tags")}), 4, 9)
        << 1
        << QByteArray("x.wav: RIFF size 9 instead of 42; a repair would turn 26 bytes after the samples "
                      "into sound: LIST id3\n");
    QTest::newRow("an unfinished RF64 file")
        << rf64(chunk("fmt ", pcmFormat()), "samples!", 0) << 1
        << QByteArray("x.wav: data size 0 instead of 8; an RF64 header cannot be repaired\n");
    QTest::newRow("RF64") << rf64(chunk("fmt ", pcmFormat()), "samples!", 8) << 0
                          << QByteArray("x.wav: ok\n");
    QTest::newRow("an odd size and a pad byte")
        << riff({chunk("data", "sss") + '\0'}) << 0 << QByteArray("x.wav: ok\n");
    QTest::newRow("an odd size without one")
        << riff({chunk("data", "sss")}) << 0 << QByteArray("x.wav: ok\n");
    QTest::newRow("no WAV file") << QByteArray("no WAV file at all") << 1 << QByteArray();
    QTest::newRow("a chunk that claims 4 GiB")
        << riff({claimingChunk("junk", 0xFFFFFFFF, "x")}) << 1 << QByteArray();
    QTest::newRow("thousands of chunks")
        << riff({chunk("junk", QByteArray()).repeated(5000), chunk("data", "s")}) << 1 << QByteArray();
}

void WavCommandsTest::checks()
{
    QFETCH(QByteArray, file);
    QVERIFY(write(path("x.wav"), file));
    SpcoreResult const result = run("check", {QStringLiteral("x.wav")});
    QTEST(result.out, "out");
    QTEST(result.exitCode, "exitCode");
    QCOMPARE(read(path("x.wav")), file);
}

void WavCommandsTest::answersForWhateverBytes()
{
    QByteArray const format = chunk("fmt ", codedFormat(6));
    QList<QByteArray> const whole{riff({format, chunk("fact", "four"), chunk("LIST", "INFOab"),
                                        chunk("data", "sample"), chunk("id3 ", "tags")}),
                                  rf64(format, "samples!", 8)};
    QRandomGenerator random(20261122);
    QStringList names;
    constexpr int count = 300;
    for (int i = 0; i < count; ++i) {
        QByteArray bytes = whole[i % 2];
        for (int change = random.bounded(1, 6); change > 0; --change) {
            qsizetype const place = random.bounded(int(bytes.size()) - 8);
            QByteArray const sizes[] = {QByteArray(4, '\xFF'), QByteArray(8, '\xFF'), QByteArray(4, '\0'),
                                        littleEndian(random.generate()), littleEndian(quint32(bytes.size()))};
            bytes.replace(place, sizes[change - 1].size(), sizes[change - 1]);
        }
        names << QString::number(i);
        QVERIFY(write(m_folder->filePath(names.last()),
                      i % 3 == 0 ? bytes.first(random.bounded(int(bytes.size()))) : bytes));
    }
    for (char const* const command : {"info", "check"}) {
        SpcoreResult const result = run(command, QStringList(QStringLiteral("--json")) + names);
        QVERIFY2(result.exitCode == 1, result.err.constData());
        QCOMPARE(result.out.count('\n'), count);
        QVERIFY(result.out.count("\"error\":") < count);
    }
}

void WavCommandsTest::repairsManyFiles()
{
    QByteArray const right = plainWav("samples!");
    QVERIFY(write(path("right %1.wav"), right));
    QVERIFY(write(path("broken.wav"), withSizeAt(withSizeAt(right, 4, 0), 40, 0)));
    QVERIFY(write(path("text.wav"), "no WAV file at all"));
    QCOMPARE(mkfifo(QFile::encodeName(path("pipe.wav")).constData(), 0600), 0);
    SpcoreResult const result =
        run("repair", {QStringLiteral("right %1.wav"), QStringLiteral("missing.wav"),
                       QStringLiteral("text.wav"), QStringLiteral("pipe.wav"), QStringLiteral("broken.wav")});
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.out, QByteArray("right %1.wav: ok\nbroken.wav: repaired\n"));
    QCOMPARE(result.err, QByteArray("spcore: missing.wav: no such file or directory\n"
                                    "spcore: text.wav: it does not begin as a WAV file does\n"
                                    "spcore: pipe.wav: it is no regular file\n"));
    QCOMPARE(read(path("broken.wav")), right);
    QCOMPARE(run("repair", {QStringLiteral("broken.wav")}).out, QByteArray("broken.wav: ok\n"));
}

void WavCommandsTest::repairSparesWhatFollowsTheSamples()
{
    QByteArray const tagged =
        riff({chunk("fmt ", pcmFormat()), chunk("data", "ssss"), chunk("LIST", "INFOab")});
    QVERIFY(write(path("tagged.wav"), tagged));
    SpcoreResult const result = run("repair", {QStringLiteral("tagged.wav")});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(read(path("tagged.wav")), tagged);
}

void WavCommandsTest::joins_data()
{
    QTest::addColumn<QList<QByteArray>>("files");
    QTest::addColumn<QByteArray>("joined");
    QByteArray const list = chunk("LIST", "INFOhello!");
    QByteArray const format = chunk("fmt ", pcmFormat());
    QTest::newRow("one file") << QList<QByteArray>{plainWav("only")} << plainWav("only");
    QTest::newRow("two files") << QList<QByteArray>{plainWav("first "), plainWav("second")}
                               << plainWav("first second");
    QTest::newRow("the same samples thrice") << QList<QByteArray>(3, plainWav("ab")) << plainWav("ababab");
    QTest::newRow("one of them empty")
        << QList<QByteArray>{plainWav("ab"), plainWav(QByteArray()), plainWav("cd")} << plainWav("abcd");
    QTest::newRow("all of them empty")
        << QList<QByteArray>(2, plainWav(QByteArray())) << plainWav(QByteArray());
    QTest::newRow("chunks behind the samples") << QList<QByteArray>{riff({format, chunk("data", "ab"), list}),
                                                                    riff({format, chunk("data", "cd"), list})}
                                               << plainWav("abcd");
    QTest::newRow("LIST before the samples of both")
        << QList<QByteArray>{riff({list, format, chunk("data", "ab")}),
                             riff({format, list, chunk("data", "cd")})}
        << riff({format, list, chunk("data", "abcd")});
    QTest::newRow("a LIST without content")
        << QList<QByteArray>{riff({chunk("LIST", "INFO"), format, chunk("data", "ab")})} << plainWav("ab");
    QTest::newRow("8 bits, odd, with pad bytes")
        << QList<QByteArray>(3, riff({chunk("fmt ", pcmFormat(1, 8000, 8)), chunk("data", "abc") + '\0'}))
        << riff({chunk("fmt ", pcmFormat(1, 8000, 8)), chunk("data", "abcabcabc") + '\0'});
    QTest::newRow("incomplete frames")
        << QList<QByteArray>{wav(2, 16, "abcdef"), wav(2, 16, "ghijk")} << wav(2, 16, "abcdghij");
    QByteArray const bext = chunk("bext", "made by");
    QTest::newRow("chunks that players do not need")
        << QList<QByteArray>{riff({bext + '\0', format, chunk("data", "ab"), chunk("cue ", "here")}),
                             plainWav("cd")}
        << plainWav("abcd");
    QByteArray const law = chunk("fmt ", codedFormat(6));
    QTest::newRow("A-law with a count of samples")
        << QList<QByteArray>{riff({law, chunk("fact", QByteArray("\4\0\0\0", 4)), chunk("data", "abcd")}),
                             riff({law, chunk("data", "ef"), list})}
        << riff({law, chunk("fact", QByteArray("\6\0\0\0", 4)), chunk("data", "abcdef")});
    QTest::newRow("RF64 that is short")
        << QList<QByteArray>{rf64(format, "abcd", 4), plainWav("ef")} << plainWav("abcdef");
    QTest::newRow("a format chunk with an extension of nothing")
        << QList<QByteArray>{riff({chunk("fmt ", pcmFormat() + QByteArray(2, '\0')), chunk("data", "ab")}),
                             plainWav("cd")}
        << riff({chunk("fmt ", pcmFormat() + QByteArray(2, '\0')), chunk("data", "abcd")});
}

void WavCommandsTest::joins()
{
    QFETCH(QList<QByteArray>, files);
    QFETCH(QByteArray, joined);
    QStringList names{QStringLiteral("joined.wav")};
    for (QByteArray const& file : files) {
        names << QStringLiteral("in %1.wav").arg(names.size());
        QVERIFY(write(m_folder->filePath(names.last()), file));
    }
    SpcoreResult const result = run("join", names);
    QCOMPARE(result.err, QByteArray());
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(read(path("joined.wav")), joined);
    QCOMPARE(run("check", {names.first()}).exitCode, 0);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).size(), names.size());
}

void WavCommandsTest::joinsRecordings()
{
    QStringList names{QStringLiteral("joined.wav")};
    for (int const count : {1001, 20000, 333}) {
        names << QString::number(count) + QStringLiteral(".wav");
        QProcess sox;
        sox.setWorkingDirectory(m_folder->path());
        sox.start(QStringLiteral("sox"),
                  {QStringLiteral("-r8000"), QStringLiteral("-n"), QStringLiteral("-b8"),
                   QStringLiteral("-c1"), names.last(), QStringLiteral("synth"),
                   QString::number(count) + QStringLiteral("s"), QStringLiteral("sine"),
                   QString::number(count)});
        QVERIFY(sox.waitForFinished());
        QCOMPARE(sox.exitCode(), 0);
    }
    QCOMPARE(run("join", names).exitCode, 0);
    QCOMPARE(soxi("-s", path("joined.wav")), QByteArray("21334"));
    QCOMPARE(soxi("-b", path("joined.wav")), QByteArray("8"));
    QProcess sox;
    sox.setWorkingDirectory(m_folder->path());
    sox.start(QStringLiteral("sox"), names.mid(1) + QStringList{QStringLiteral("expected.wav")});
    QVERIFY(sox.waitForFinished());
    QCOMPARE(read(path("joined.wav")), read(path("expected.wav")));
}

void WavCommandsTest::joinsTelephoneRecordings_data()
{
    QTest::addColumn<QString>("coding");
    for (char const* const coding : {"a-law", "mu-law", "floating-point", "signed-integer"}) {
        QTest::newRow(coding) << QString::fromLatin1(coding);
    }
}

void WavCommandsTest::joinsTelephoneRecordings()
{
    QFETCH(QString, coding);
    auto const sox = [this](QStringList const& arguments) {
        QProcess process;
        process.setWorkingDirectory(m_folder->path());
        process.start(QStringLiteral("sox"), arguments);
        process.waitForFinished();
        return process.exitCode();
    };
    QStringList const inputs{QStringLiteral("a.wav"), QStringLiteral("b.wav")};
    for (QString const& input : inputs) {
        QCOMPARE(sox({QStringLiteral("-r8000"), QStringLiteral("-n"), QStringLiteral("-c1"),
                      QStringLiteral("-e"), coding, input, QStringLiteral("synth"), QStringLiteral("801s"),
                      QStringLiteral("sine"), QStringLiteral("440")}),
                 0);
    }
    QCOMPARE(sox(inputs + QStringList{QStringLiteral("expected.wav")}), 0);
    SpcoreResult const result = run("join", QStringList(QStringLiteral("joined.wav")) + inputs);
    QVERIFY2(result.exitCode == 0, result.err.constData());
    QCOMPARE(read(path("joined.wav")), read(path("expected.wav")));
}

void WavCommandsTest::joinsBeyondFourGigabytes()
{
    QByteArray const format = pcmFormat(2, 8000, 16);
    WavLayout first;
    first.format.assign(format.begin(), format.end());
    constexpr quint64 most = 0xFFFFFFFF - 36 - 3; // of whole frames
    QByteArray const plain = wavHeader(first, most);
    QVERIFY(plain.startsWith("RIFF"));
    QCOMPARE(sizeAt(plain, 40), quint32(most));
    constexpr quint64 length = quint64(6) << 30;
    QVERIFY(write(path("large.wav"), wavHeader(first, length)));
    QVERIFY(QFile::resize(path("large.wav"), qint64(rf64HeaderLength + length)));
    QCOMPARE(run("check", {QStringLiteral("large.wav")}).out, QByteArray("large.wav: ok\n"));
    QByteArray const info = run("info", {QStringLiteral("--json"), QStringLiteral("large.wav")}).out;
    QVERIFY2(info.contains("\"data_size\":6442450944,") && info.contains("\"nb_samples\":1610612736,") &&
                 info.contains("\"format_name\":\"rf64\""),
             info.constData());
    QCOMPARE(wavHeader(first, length).mid(20, 24),
             number64(rf64HeaderLength + length - 8) + number64(length) + number64(length / 4));
}

void WavCommandsTest::readsStandardInput()
{
    QByteArray const file = plainWav("samples!");
    for (char const* const command : {"info", "check"}) {
        SpcoreResult const result =
            runSpcore({QStringLiteral("wav"), QString::fromLatin1(command), QStringLiteral("-")}, file);
        QVERIFY2(result.exitCode == 0, result.err.constData());
    }
    QVERIFY(write(path("a.wav"), plainWav("one ")));
    QStringList const arguments = join(path("out.wav"), path("a.wav")) + QStringList(QStringLiteral("-"));
    QCOMPARE(runSpcore(arguments, file).exitCode, 0);
    QCOMPARE(read(path("out.wav")), plainWav("one samples!"));
    SpcoreResult const text = runSpcore(arguments, "no sound");
    QCOMPARE(text.err, QByteArray("spcore: standard input: it does not begin as a WAV file does\n"));
    QCOMPARE(runSpcore({QStringLiteral("wav"), QStringLiteral("repair"), QStringLiteral("-")}, file).exitCode,
             2);
}

void WavCommandsTest::joinsMoreThanOneBlock_data()
{
    QTest::addColumn<QString>("folder");
    QTest::newRow("beside the sources") << QDir::tempPath();
    // Between two file systems the bytes go through the command's memory.
    QTest::newRow("onto another file system") << QStringLiteral("/dev/shm");
}

void WavCommandsTest::joinsMoreThanOneBlock()
{
    QFETCH(QString, folder);
    QByteArray samples(1'000'002, '\0');
    for (qsizetype i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<char>(i * 11 >> 2);
    }
    QVERIFY(write(path("a.wav"), plainWav(samples)));
    QVERIFY(write(path("b.wav"), plainWav(samples + "zz")));
    QTemporaryDir const target(folder + QStringLiteral("/spcore-XXXXXX"));
    QVERIFY(target.isValid());
    QString const out = target.filePath(QStringLiteral("out.wav"));
    QCOMPARE(run("join", {out, QStringLiteral("a.wav"), QStringLiteral("b.wav")}).exitCode, 0);
    QCOMPARE(read(out), plainWav(samples + samples + "zz"));
}

void WavCommandsTest::joinPutsTheFileInPlaceOfTheOldOne()
{
    QVERIFY(write(path("a.wav"), plainWav("ab")));
    QVERIFY(QFile::setPermissions(path("a.wav"), QFile::ReadOwner | QFile::WriteOwner));
    QVERIFY(QFile::link(path("a.wav"), path("link.wav")));
    // The target is one of the sources, and a link: both are what users do.
    QStringList const files{QStringLiteral("link.wav"), QStringLiteral("a.wav"), QStringLiteral("a.wav")};
    QCOMPARE(run("join", files).exitCode, 0);
    QCOMPARE(read(path("a.wav")), plainWav("abab"));
    QVERIFY(QFileInfo(path("link.wav")).isSymLink());
    QCOMPARE(QFile::permissions(path("a.wav")) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

void WavCommandsTest::refusesToJoin_data()
{
    QTest::addColumn<QByteArray>("second");
    QByteArray const right = plainWav("samples!");
    QTest::newRow("other channels") << wav(2, 16, "ssss");
    QTest::newRow("other bits") << wav(1, 8, "ssss");
    QTest::newRow("another rate") << riff({chunk("fmt ", pcmFormat(1, 44100)), chunk("data", "ssss")});
    QTest::newRow("another format") << QByteArray(right).replace(20, 1, "\3");
    QTest::newRow("no format") << riff({chunk("data", "ssss")});
    QTest::newRow("blocks of samples")
        << riff({chunk("fmt ", codedFormat(49)), chunk("fact", "four"), chunk("data", "ss")});
    QTest::newRow("no WAV file") << QByteArray("no WAV file at all");
    QTest::newRow("unfinished") << withSizeAt(right, 40, 0);
    QTest::newRow("cut off") << right.chopped(2);
    QTest::newRow("an odd LIST without pad byte, which players do not expect")
        << riff({chunk("LIST", "INFOa"), chunk("fmt ", pcmFormat()), chunk("data", "ss")});
}

void WavCommandsTest::refusesToJoin()
{
    QFETCH(QByteArray, second);
    QVERIFY(write(path("out.wav"), "old"));
    QVERIFY(write(path("a.wav"), plainWav("ab")));
    QVERIFY(write(path("b.wav"), second));
    SpcoreResult const result =
        run("join", {QStringLiteral("out.wav"), QStringLiteral("a.wav"), QStringLiteral("b.wav")});
    QVERIFY2(result.failedWithOneLine(1), result.err.constData());
    QVERIFY(result.err.startsWith("spcore: b.wav: "));
    QCOMPARE(read(path("out.wav")), QByteArray("old"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).size(), 3);
}

void WavCommandsTest::refusesToJoinMoreThanTheDiskHolds()
{
    constexpr qint64 length = qint64(1) << 43; // 8 TiB, of which nothing is on the disk
    QByteArray const head = rf64(chunk("fmt ", pcmFormat()), QByteArray(), quint64(length) - rf64HeaderLength,
                                 quint64(length) - 8);
    QVERIFY(writeSparseFile(path("a.wav"), head, length));
    QCOMPARE(run("check", {QStringLiteral("a.wav")}).out, QByteArray("a.wav: ok\n"));
    SpcoreResult const result =
        run("join", {QStringLiteral("out.wav"), QStringLiteral("a.wav"), QStringLiteral("a.wav")});
    QVERIFY2(result.failedWithOneLine(1), result.err.constData());
    QVERIFY2(result.err.startsWith("spcore: cannot write out.wav: no space left on /"),
             result.err.constData());
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList{QStringLiteral("a.wav")});
}

void WavCommandsTest::refusesATargetThatIsNoFile()
{
    QVERIFY(write(path("a.wav"), plainWav("ab")));
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("folder")));
    for (QString const& target :
         {QStringLiteral("/dev/null"), QStringLiteral("folder"), QStringLiteral("missing/out.wav")}) {
        SpcoreResult const result = run("join", {target, QStringLiteral("a.wav")});
        QVERIFY2(result.failedWithOneLine(1), result.err.constData());
    }
}

void WavCommandsTest::leavesAloneWhatAnotherJoinWrites()
{
    QVERIFY(write(path("a.wav"), plainWav("ab")));
    QVERIFY(write(path("out.wav.part"), "theirs"));
    SpcoreResult const result = run("join", {QStringLiteral("out.wav"), QStringLiteral("a.wav")});
    QVERIFY2(result.failedWithOneLine(1), result.err.constData());
    QCOMPARE(read(path("out.wav.part")), QByteArray("theirs"));
    QVERIFY(!QFile::exists(path("out.wav")));
}

void WavCommandsTest::leavesTheOldFileWhenTheDiskIsFull()
{
    QVERIFY(write(path("a.wav"), plainWav(QByteArray(100'000, 's'))));
    QVERIFY(write(path("out.wav"), "old"));
    QProcess shell;
    shell.setWorkingDirectory(m_folder->path());
    // The shell counts in blocks of 512 or 1024 bytes; either is too little.
    shell.start(QStringLiteral("sh"),
                {QStringLiteral("-c"), QStringLiteral("ulimit -f 50; exec \"$0\" wav join out.wav a.wav"),
                 QStringLiteral(SPCORE_PROGRAM)});
    QVERIFY(shell.waitForFinished());
    QCOMPARE(shell.exitCode(), 1);
    QCOMPARE(shell.readAllStandardError(), QByteArray("spcore: cannot write out.wav: file too large\n"));
    QCOMPARE(read(path("out.wav")), QByteArray("old"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).size(), 2);
}

void WavCommandsTest::showsProgressOnATerminalOnly()
{
    QVERIFY(write(path("a.wav"), plainWav(QByteArray(1000, 's'))));
    QCOMPARE(run("join", {QStringLiteral("out.wav"), QStringLiteral("a.wav")}).err, QByteArray());
    Terminal const terminal;
    QVERIFY(terminal.isOpen());
    QProcess process;
    process.setWorkingDirectory(m_folder->path());
    process.setStandardErrorFile(terminal.name());
    process.start(QStringLiteral(SPCORE_PROGRAM), join(QStringLiteral("out.wav"), QStringLiteral("a.wav")));
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(process.readAllStandardOutput(), QByteArray());
    QByteArray const shown = terminal.read();
    QVERIFY2(shown.contains("joining [") && shown.contains("100%"), shown.constData());
}

void WavCommandsTest::cleansUpWhenInterrupted_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<int>("samples");
    QTest::addColumn<bool>("copiedAll");
    QTest::addColumn<bool>("overOldFile");
    constexpr int manyBlocks = 1'000'000;
    constexpr int oneBlock = 100'000;
    QTest::newRow("Ctrl-C") << SIGINT << manyBlocks << false << false;
    QTest::newRow("Ctrl-C over an old file") << SIGINT << manyBlocks << false << true;
    QTest::newRow("Ctrl-C behind the last sample") << SIGINT << oneBlock << true << true;
    QTest::newRow("asked to end") << SIGTERM << manyBlocks << false << false;
}

void WavCommandsTest::cleansUpWhenInterrupted()
{
    QFETCH(int, signal);
    QFETCH(int, samples);
    QFETCH(bool, copiedAll);
    QFETCH(bool, overOldFile);
    QVERIFY(write(path("a.wav"), plainWav(QByteArray(samples, 's'))));
    QVERIFY(!overOldFile || write(path("out.wav"), "old"));
    // A terminal that takes nothing holds the join where it first draws its bar, after its first block.
    Terminal const terminal;
    QVERIFY(terminal.isOpen() && terminal.pauseOutput());
    QProcess process;
    process.setWorkingDirectory(m_folder->path());
    process.setStandardErrorFile(terminal.name());
    process.start(QStringLiteral(SPCORE_PROGRAM), join(QStringLiteral("out.wav"), QStringLiteral("a.wav")));
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(path("out.wav.part")).size() > 0 && isAsleep(process), 30'000);
    QVERIFY(sendSignal(process, signal));
    QVERIFY(terminal.resumeOutput());
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 128 + signal);
    QByteArray const shown = terminal.read();
    QVERIFY2(shown.endsWith("\r\nspcore: cancelled\r\n"), shown.constData());
    QCOMPARE(shown.contains("100%"), copiedAll);
    QVERIFY(!QFile::exists(path("out.wav.part")));
    QCOMPARE(QFile::exists(path("out.wav")), overOldFile);
    QVERIFY(!overOldFile || read(path("out.wav")) == "old");
}

void WavCommandsTest::refusesWrongArguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    for (char const* const command : {"info", "check", "repair", "join"}) {
        QTest::addRow("%s of nothing", command)
            << QStringList{QStringLiteral("wav"), QString::fromLatin1(command)};
    }
    QTest::newRow("join to a file from none")
        << QStringList{QStringLiteral("wav"), QStringLiteral("join"), QStringLiteral("out.wav")};
}

void WavCommandsTest::refusesWrongArguments()
{
    QFETCH(QStringList, arguments);
    SpcoreResult const result = runSpcore(arguments);
    QVERIFY2(result.failedWithOneLine(2), result.err.constData());
}

int main(int argc, char** argv)
{
    return runTest<WavCommandsTest>(argc, argv);
}

#include "WavCommandsTest.moc"
