#include <audio/WAVData.h>

#include "WavFiles.h"

#include <ChildProcess.h>
#include <QTemporaryDir>
#include <RunTest.h>
#include <fstream>

/// A WAV file decides how much memory its header asks for, so there may be too little. In a test of its own,
/// because the sanitizers need memory too.
class WavShortOfMemoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aBodyBeyondTheMemoryEndsTheParse_data();
    void aBodyBeyondTheMemoryEndsTheParse();
    void aCopyWithoutMemoryForItsBlockFails();

private:
    QTemporaryDir m_folder;
    QString m_path = m_folder.filePath(QStringLiteral("sound.wav"));
};

namespace {

/// The address space that this process has taken, in bytes.
rlim_t addressSpace()
{
    std::ifstream statm("/proc/self/statm");
    rlim_t pages = 0;
    statm >> pages;
    return pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE));
}

} // namespace

void WavShortOfMemoryTest::aBodyBeyondTheMemoryEndsTheParse_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("format") << QByteArray("fmt ");
    QTest::newRow("list") << QByteArray("LIST");
}

/// The body has all that it claims, and goes on as a header would: a reader that has no memory for all of it
/// must not take the rest for the next chunk.
void WavShortOfMemoryTest::aBodyBeyondTheMemoryEndsTheParse()
{
    QFETCH(QByteArray, name);
    constexpr quint32 bodySize = 0x4000000;
    QByteArray const start = riff({claimingChunk(name.constData(), bodySize, QByteArray())});
    QByteArray const end = chunk("data", "ssss");
    QVERIFY(writeSparseFile(m_path, start, start.size() + bodySize));
    QFile file(m_path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    for (qint64 offset = start.size(); offset < file.size(); offset += 0x10000) {
        QVERIFY(file.seek(offset) && file.write(end) == end.size());
    }
    QVERIFY(file.seek(file.size()) && file.write(end) == end.size());
    file.close();
    auto const parses = [&] { return WAVData(nativePath(m_path)).hasHeader(); };
    QVERIFY(parses());
    int const exitCode = inChildProcess([&] {
        if (!limitResource(RLIMIT_AS, addressSpace() + bodySize / 2)) {
            return 2;
        }
        return parses() ? 1 : 0;
    });
    QCOMPARE(exitCode, 0);
}

void WavShortOfMemoryTest::aCopyWithoutMemoryForItsBlockFails()
{
    QVERIFY(TestFiles::write(m_path, plainWav("samples!")));
    int const exitCode = inChildProcess([&] {
        WAVData const data(nativePath(m_path));
        std::ifstream in(nativePath(m_path), std::ios::binary);
        std::ofstream out("/dev/null", std::ios::binary);
        return takeAllMemory() && !data.writeBuffer(in, out) ? 0 : 1;
    });
    QCOMPARE(exitCode, 0);
}

int main(int argc, char** argv)
{
    return runTest<WavShortOfMemoryTest>(argc, argv);
}

#include "WavShortOfMemoryTest.moc"
