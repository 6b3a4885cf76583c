#include <crypto/Crypto.h>

#include "Noise.h"
#include "PlainMessage.h"

#include <ChildProcess.h>
#include <MessageRecorder.h>
#include <QTemporaryDir>
#include <QtEndian>
#include <RunTest.h>
#include <csignal>
#include <sys/stat.h>
#include <thread>
#include <vector>
#include <zlib.h>

using Flag = Crypto::CryptoFlag;
using Mode = Crypto::ProtectionMode;

namespace {

constexpr unsigned long long key = 0x11223344556677A5;
constexpr char salt = 'S';
constexpr std::array modes = {Mode::None, Mode::Checksum, Mode::Hash};

/// Sizes about the widths that the fast code works in: words, 16-byte strides, blocks.
QList<qsizetype> tellingSizes()
{
    QList<qsizetype> sizes;
    for (qsizetype size = 0; size <= 70; ++size) {
        sizes << size;
    }
    return sizes << 0x7FF0 << 0x7FFF << 0x8000 << 0x8001 << 0x10000 << 0x10003 << 100'001;
}

int flagsOf(Mode mode)
{
    switch (mode) {
    case Mode::Checksum:
        return PlainMessage::checksum;
    case Mode::Hash:
        return PlainMessage::hash;
    case Mode::None:
        break;
    }
    return 0;
}

QByteArray bigEndian(quint32 size)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(size, bytes.data());
    return bytes;
}

/// The zlib stream of \a data, without the size in front of it.
QByteArray streamOf(QByteArray const& data)
{
    return qCompress(data, 9).mid(4);
}

/// A zlib stream that can be read only with a dictionary that nobody has.
QByteArray streamWithDictionary()
{
    QByteArray const data("hello hello hello");
    QByteArray stream(200, '\0');
    z_stream deflater = {};
    deflateInit(&deflater, 9);
    deflateSetDictionary(&deflater, reinterpret_cast<Bytef const*>("hello"), 5);
    deflater.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    deflater.avail_in = static_cast<uInt>(data.size());
    deflater.next_out = reinterpret_cast<Bytef*>(stream.data());
    deflater.avail_out = static_cast<uInt>(stream.size());
    deflate(&deflater, Z_FINISH);
    stream.truncate(stream.size() - deflater.avail_out);
    deflateEnd(&deflater);
    return stream;
}

/// A message with \a payload as the compressed one.
QByteArray compressedMessage(QByteArray const& payload, int tag = 0)
{
    return PlainMessage::sealed(payload, PlainMessage::compressed | tag, key, salt);
}

} // namespace

class CryptoTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keyScheduleIsTheLowByteAndSevenZeroes_data();
    void keyScheduleIsTheLowByteAndSevenZeroes();
    void addFlagIsBitwiseOr();
    void readsStoredMessages_data();
    void readsStoredMessages();
    void encryptsAsThePlainVersionReads();
    void decryptsWhatThePlainVersionWrote();
    void onlyTheLowByteOfTheKeyTakesPart();
    void laysOutTheMessage_data();
    void laysOutTheMessage();
    void compressesOnlyWhatGetsShorter();
    void equalDataGivesDifferentMessages();
    void unknownModesGiveNoTag();
    void ignoresUnknownFlags();
    void withBothTagFlagsTheChecksumCounts();
    void everyTruncationIsNoticed_data();
    void everyTruncationIsNoticed();
    void everyChangedByteOfAHashedMessageIsNoticed();
    void inflatesAsQUncompressDoes_data();
    void inflatesAsQUncompressDoes();
    void everyTruncationOfAStreamGivesNothing();
    void everyChangedByteOfAStreamGivesWhatQUncompressGives();
    void memoryStaysInProportionToTheContent_data();
    void memoryStaysInProportionToTheContent();
    void theTagIsCheckedBeforeDecompression();
    void nothingIsLogged();
    void threadsDoNotDisturbEachOther();
    void hashesFiles_data();
    void hashesFiles();
    void hashesWhateverTheNameIs_data();
    void hashesWhateverTheNameIs();
    void hashesNothingButRegularFiles_data();
    void hashesNothingButRegularFiles();
    void hashesNothingThatCannotBeReadToItsEnd();
};

void CryptoTest::keyScheduleIsTheLowByteAndSevenZeroes_data()
{
    QTest::addColumn<unsigned long long>("anyKey");
    QTest::addColumn<int>("first");
    QTest::newRow("zero") << 0ULL << 0;
    QTest::newRow("one byte") << 0x7FULL << 0x7F;
    QTest::newRow("only higher bytes") << 0xFFFFFFFFFFFFFF00ULL << 0;
    QTest::newRow("all bytes") << 0x8877665544332211ULL << 0x11;
}

void CryptoTest::keyScheduleIsTheLowByteAndSevenZeroes()
{
    QFETCH(unsigned long long, anyKey);
    QFETCH(int, first);
    std::vector<unsigned char> const schedule = Crypto::getKey(anyKey);
    QCOMPARE(schedule, (std::vector<unsigned char>{static_cast<unsigned char>(first), 0, 0, 0, 0, 0, 0, 0}));
}

void CryptoTest::addFlagIsBitwiseOr()
{
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            QCOMPARE(static_cast<int>(Crypto::addFlag(static_cast<Flag>(first), static_cast<Flag>(second))),
                     first | second);
        }
    }
}

// Messages computed by a program in another language: the format on disk cannot change unnoticed.
void CryptoTest::readsStoredMessages_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("data");
    QByteArray const greeting("Hello, softphone!");
    QTest::newRow("no tag") << QByteArray("00ffb7d2bed2bd91b167086e1a6a026d03c3e2") << greeting;
    QTest::newRow("checksum") << QByteArray("02ffd82b63066a0669e0c0b3dcbacebed61c721736") << greeting;
    QTest::newRow("hash") << QByteArray(
                                 "04ff1c1be98b73e1ee254879c10dcfdb2277c49849145c39559cf3dfff8ce385f1244c23"
                                 "4d2809")
                          << greeting;
    QTest::newRow("checksum, compressed")
        << QByteArray("03a409292929294d354a61ab672c7b53f17978784c290d4c") << QByteArray("ring ").repeated(20);
}

void CryptoTest::readsStoredMessages()
{
    QFETCH(QByteArray, message);
    QTEST(Crypto::decrypt(QByteArray::fromHex(message), key), "data");
}

void CryptoTest::encryptsAsThePlainVersionReads()
{
    for (Mode const mode : modes) {
        for (qsizetype const size : tellingSizes()) {
            QByteArray const data = noise(size);
            QByteArray const message = Crypto::encrypt(data, key, mode);
            QCOMPARE(static_cast<int>(message[0]), flagsOf(mode));
            QCOMPARE(PlainMessage::opened(message, key), std::optional(data));
        }
    }
}

void CryptoTest::decryptsWhatThePlainVersionWrote()
{
    for (Mode const mode : modes) {
        for (qsizetype const size : tellingSizes()) {
            QByteArray const data = noise(size, 2);
            QCOMPARE(Crypto::decrypt(PlainMessage::sealed(data, flagsOf(mode), key, salt), key), data);
        }
    }
}

void CryptoTest::onlyTheLowByteOfTheKeyTakesPart()
{
    QByteArray const data = noise(100);
    for (unsigned low = 0; low < 256; ++low) {
        QByteArray const message = Crypto::encrypt(data, 0xABCDEF0000000000 | low, Mode::Hash);
        QCOMPARE(Crypto::decrypt(message, low), data);
        QCOMPARE(Crypto::decrypt(message, low ^ 1), QByteArray());
    }
}

void CryptoTest::laysOutTheMessage_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<Mode>("mode");
    QTest::addColumn<qsizetype>("size");
    QTest::newRow("nothing, no tag") << QByteArray() << Mode::None << qsizetype(2);
    QTest::newRow("nothing, checksum") << QByteArray() << Mode::Checksum << qsizetype(4);
    QTest::newRow("nothing, hash") << QByteArray() << Mode::Hash << qsizetype(22);
    QTest::newRow("ten bytes, no tag") << noise(10) << Mode::None << qsizetype(12);
    QTest::newRow("ten bytes, checksum") << noise(10) << Mode::Checksum << qsizetype(14);
    QTest::newRow("ten bytes, hash") << noise(10) << Mode::Hash << qsizetype(32);
    QByteArray const rings = QByteArray("ring ").repeated(200);
    qsizetype const shorter = qCompress(rings, 9).size();
    QTest::newRow("compressed, no tag") << rings << Mode::None << 2 + shorter;
    QTest::newRow("compressed, checksum") << rings << Mode::Checksum << 4 + shorter;
    QTest::newRow("compressed, hash") << rings << Mode::Hash << 22 + shorter;
}

void CryptoTest::laysOutTheMessage()
{
    QFETCH(QByteArray, data);
    QFETCH(Mode, mode);
    QByteArray const message = Crypto::encrypt(data, key, mode);
    QTEST(message.size(), "size");
    QCOMPARE(Crypto::decrypt(message, key), data);
}

void CryptoTest::compressesOnlyWhatGetsShorter()
{
    bool sawBoth[2] = {false, false};
    for (qsizetype size = 0; size < 40; ++size) {
        QByteArray const data(size, 'a');
        QByteArray const compressed = qCompress(data, 9);
        bool const shorter = compressed.size() < data.size();
        sawBoth[shorter ? 1 : 0] = true;
        QByteArray const message = Crypto::encrypt(data, key, Mode::None);
        QCOMPARE(message[0] == 1, shorter);
        QCOMPARE(PlainMessage::opened(message, key), std::optional(shorter ? compressed : data));
        QCOMPARE(Crypto::decrypt(message, key), data);
    }
    QVERIFY(sawBoth[0] && sawBoth[1]);
}

void CryptoTest::equalDataGivesDifferentMessages()
{
    QByteArray const data = noise(50);
    QByteArray const first = Crypto::encrypt(data, key, Mode::Hash);
    bool different = false;
    for (int i = 0; i < 20; ++i) {
        QByteArray const next = Crypto::encrypt(data, key, Mode::Hash);
        different = different || next != first;
        QCOMPARE(Crypto::decrypt(next, key), data);
    }
    QVERIFY(different);
}

void CryptoTest::unknownModesGiveNoTag()
{
    for (int const mode : {-1, 3, 4, 1000}) {
        QByteArray const message = Crypto::encrypt(noise(10), key, static_cast<Mode>(mode));
        QCOMPARE(message.size(), qsizetype(12));
        QCOMPARE(static_cast<int>(message[0]), 0);
        QCOMPARE(Crypto::decrypt(message, key), noise(10));
    }
}

void CryptoTest::ignoresUnknownFlags()
{
    for (Mode const mode : modes) {
        QByteArray message = Crypto::encrypt(noise(30), key, mode);
        message[0] = static_cast<char>(message[0] | 0xF8);
        QCOMPARE(Crypto::decrypt(message, key), noise(30));
    }
}

void CryptoTest::withBothTagFlagsTheChecksumCounts()
{
    QByteArray const data = noise(30);
    int const both = PlainMessage::checksum | PlainMessage::hash;
    QCOMPARE(Crypto::decrypt(PlainMessage::sealed(data, both, key, salt), key), data);

    QByteArray hashed = PlainMessage::sealed(data, PlainMessage::hash, key, salt);
    hashed[0] = static_cast<char>(both);
    QCOMPARE(Crypto::decrypt(hashed, key), QByteArray());
}

void CryptoTest::everyTruncationIsNoticed_data()
{
    QTest::addColumn<int>("flags");
    QTest::addColumn<qsizetype>("tagSize");
    QTest::newRow("no tag") << 0 << qsizetype(0);
    QTest::newRow("checksum") << PlainMessage::checksum << qsizetype(2);
    QTest::newRow("hash") << PlainMessage::hash << qsizetype(20);
}

void CryptoTest::everyTruncationIsNoticed()
{
    QFETCH(int, flags);
    QFETCH(qsizetype, tagSize);
    QByteArray const data = noise(30);
    QByteArray const message = PlainMessage::sealed(data, flags, key, salt);
    for (qsizetype size = 0; size < message.size(); ++size) {
        QByteArray const withoutTag = tagSize == 0 ? data.left(size - 2) : QByteArray();
        QCOMPARE(Crypto::decrypt(message.left(size), key), size < 2 ? QByteArray() : withoutTag);
    }
}

void CryptoTest::everyChangedByteOfAHashedMessageIsNoticed()
{
    QByteArray const message = Crypto::encrypt(noise(30), key, Mode::Hash);
    for (qsizetype i = 2; i < message.size(); ++i) {
        for (int bit = 0; bit < 8; ++bit) {
            QByteArray changed = message;
            changed[i] = static_cast<char>(changed[i] ^ (1 << bit));
            QCOMPARE(Crypto::decrypt(changed, key), QByteArray());
        }
    }
    // The random byte itself is not under the tag, but it chains into the first byte that is.
    QByteArray changed = message;
    changed[1] = static_cast<char>(changed[1] ^ 1);
    QCOMPARE(Crypto::decrypt(changed, key), QByteArray());
}

void CryptoTest::inflatesAsQUncompressDoes_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QByteArray>("data");
    QByteArray const data(1000, 'x');
    QByteArray const stream = streamOf(data);
    QByteArray const varied = noise(300'000) + QByteArray(300'000, 'y');
    QByteArray const none;
    QTest::newRow("nothing") << none << none;
    QTest::newRow("three bytes") << QByteArray(3, '\0') << none;
    QTest::newRow("only a size of 0") << bigEndian(0) << none;
    QTest::newRow("only a size of 16") << bigEndian(16) << none;
    QTest::newRow("the size fits") << bigEndian(1000) + stream << data;
    QTest::newRow("size 0") << bigEndian(0) + stream << data;
    QTest::newRow("size 1") << bigEndian(1) + stream << data;
    QTest::newRow("size 16") << bigEndian(16) + stream << data;
    QTest::newRow("one too small") << bigEndian(999) + stream << data;
    QTest::newRow("one too large") << bigEndian(1001) + stream << data;
    QTest::newRow("far too large") << bigEndian(10'000'000) + stream << data;
    QTest::newRow("several steps, the size fits") << bigEndian(600'000) + streamOf(varied) << varied;
    QTest::newRow("several steps, size 0") << bigEndian(0) + streamOf(varied) << varied;
    QTest::newRow("several steps, half the size") << bigEndian(300'000) + streamOf(varied) << varied;
    QTest::newRow("several steps, twice the size") << bigEndian(1'200'000) + streamOf(varied) << varied;
    QTest::newRow("exactly the first step") << bigEndian(0) + streamOf(noise(0x10000)) << noise(0x10000);
    QTest::newRow("garbage after the stream") << bigEndian(1000) + stream + "garbage" << data;
    QTest::newRow("a second stream after it") << bigEndian(1000) + stream + stream << data;
    QTest::newRow("a stream of nothing") << bigEndian(0) + streamOf(QByteArray("")) << none;
    QTest::newRow("a stream of nothing that claims to hold something")
        << bigEndian(77) + QByteArray::fromHex("789c030000000001") << none;
    QTest::newRow("no zlib stream") << bigEndian(10) + QByteArray("no zlib stream") << none;
    QTest::newRow("a stream that needs a dictionary") << bigEndian(17) + streamWithDictionary() << none;
    QByteArray wrongSum = stream;
    wrongSum.back() = static_cast<char>(wrongSum.back() ^ 1);
    QTest::newRow("a wrong sum at the end") << bigEndian(1000) + wrongSum << none;
}

void CryptoTest::inflatesAsQUncompressDoes()
{
    QFETCH(QByteArray, payload);
    QFETCH(QByteArray, data);
    {
        MessageRecorder const quiet; // Qt logs what it refuses
        QCOMPARE(qUncompress(payload), data);
    }
    for (Mode const mode : modes) {
        QCOMPARE(Crypto::decrypt(compressedMessage(payload, flagsOf(mode)), key), data);
    }
}

void CryptoTest::everyTruncationOfAStreamGivesNothing()
{
    QByteArray const payload = qCompress(QByteArray("a").repeated(100) + noise(100), 9);
    for (qsizetype size = 0; size < payload.size(); ++size) {
        QCOMPARE(Crypto::decrypt(compressedMessage(payload.left(size)), key), QByteArray());
    }
}

void CryptoTest::everyChangedByteOfAStreamGivesWhatQUncompressGives()
{
    MessageRecorder const quiet; // Qt logs what it refuses
    QByteArray const payload = bigEndian(150) + streamOf(QByteArray("ring ").repeated(20) + noise(50));
    for (qsizetype i = 4; i < payload.size(); ++i) {
        for (int bit = 0; bit < 8; ++bit) {
            QByteArray changed = payload;
            changed[i] = static_cast<char>(changed[i] ^ (1 << bit));
            QCOMPARE(Crypto::decrypt(compressedMessage(changed), key), qUncompress(changed));
        }
    }
}

void CryptoTest::memoryStaysInProportionToTheContent_data()
{
    QTest::addColumn<quint32>("claim");
    QTest::addColumn<qsizetype>("size");
    for (qsizetype const size : {qsizetype(0), qsizetype(1), qsizetype(65'537), qsizetype(3'000'000)}) {
        for (quint32 const claim : {0U, 1U, 16U, 100'000U, 4'000'000U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
            QTest::addRow("%u claimed, %lld held", claim, static_cast<long long>(size)) << claim << size;
        }
    }
}

void CryptoTest::memoryStaysInProportionToTheContent()
{
    QFETCH(quint32, claim);
    QFETCH(qsizetype, size);
    QByteArray const held(size, 'z');
    QByteArray const stream = size == 0 ? QByteArray::fromHex("789c030000000001") : streamOf(held);
    QByteArray const data = Crypto::decrypt(compressedMessage(bigEndian(claim) + stream), key);
    QCOMPARE(data, held);
    QVERIFY(data.capacity() <= 2 * size + 0x20000);
}

void CryptoTest::theTagIsCheckedBeforeDecompression()
{
    QByteArray const bomb = qCompress(QByteArray(150'000'000, '\0'), 9);
    QByteArray message = compressedMessage(bomb, PlainMessage::hash);
    message[5] = static_cast<char>(message[5] ^ 1);
    int const exitCode = inChildProcess([&] {
        long const before = peakMemory();
        if (!Crypto::decrypt(message, key).isEmpty()) {
            return 1;
        }
        return peakMemory() - before < 60'000 ? 0 : 2;
    });
    QCOMPARE(exitCode, 0);
}

void CryptoTest::nothingIsLogged()
{
    MessageRecorder log;
    QCOMPARE(Crypto::decrypt(compressedMessage(bigEndian(10) + QByteArray("no zlib stream")), key),
             QByteArray());
    QCOMPARE(Crypto::encrypt(QByteArray(), key, Mode::None).size(), qsizetype(2));
    QCOMPARE(Crypto::computeSHA256(QString()), QString());
    QCOMPARE(Crypto::computeSHA256(QString(QChar::Null)), QString());
    QCOMPARE(Crypto::computeSHA256(QStringLiteral("/no/such/file")), QString());
    QCOMPARE(log.messages(), QStringList());
}

void CryptoTest::threadsDoNotDisturbEachOther()
{
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (unsigned seed = 0; seed < 4; ++seed) {
        threads.emplace_back([seed, &wrong] {
            QByteArray const data = noise(500, seed) + QByteArray(500, 'c');
            for (int i = 0; i < 100; ++i) {
                QByteArray const message = Crypto::encrypt(data, seed, modes[static_cast<size_t>(i) % 3]);
                wrong += Crypto::decrypt(message, seed) == data ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(wrong.load(), 0);
}

void CryptoTest::hashesFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("digest");
    QTest::newRow("nothing") << QByteArray()
                             << QStringLiteral(
                                    "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    QTest::newRow("abc") << QByteArray("abc")
                         << QStringLiteral(
                                "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    QTest::newRow("a million a") << QByteArray(1'000'000, 'a')
                                 << QStringLiteral(
                                        "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
    for (qsizetype const size : {0x1FFFF, 0x20000, 0x20001, 0x40000, 8191, 8192, 8193}) {
        QByteArray const content = noise(size);
        QByteArray const digest = QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex();
        QTest::addRow("%lld bytes", static_cast<long long>(size)) << content << QString::fromLatin1(digest);
    }
}

void CryptoTest::hashesFiles()
{
    QFETCH(QByteArray, content);
    QTemporaryDir const folder;
    QFile file(folder.filePath(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();
    QTEST(Crypto::computeSHA256(file.fileName()), "digest");
}

void CryptoTest::hashesWhateverTheNameIs_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("spaces") << QStringLiteral("a b  c");
    QTest::newRow("a placeholder") << QStringLiteral("%1 %2");
    QTest::newRow("beyond ASCII") << QString::fromUtf8("città ☎ 電話");
    QTest::newRow("a line break") << QStringLiteral("a\nb");
}

void CryptoTest::hashesWhateverTheNameIs()
{
    QFETCH(QString, name);
    QTemporaryDir const folder;
    QFile file(folder.filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("abc");
    file.close();
    QString const digest = QStringLiteral("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    QCOMPARE(Crypto::computeSHA256(file.fileName()), digest);
    QString const link = folder.filePath(QStringLiteral("link"));
    QVERIFY(QFile::link(file.fileName(), link));
    QCOMPARE(Crypto::computeSHA256(link), digest);
}

void CryptoTest::hashesNothingButRegularFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("no name") << QString();
    QTest::newRow("no such file") << QStringLiteral("missing");
    QTest::newRow("a folder") << QStringLiteral("folder");
    QTest::newRow("a pipe without a writer") << QStringLiteral("pipe");
    QTest::newRow("a link to such a pipe") << QStringLiteral("link to pipe");
    QTest::newRow("a link to itself") << QStringLiteral("loop");
    QTest::newRow("a device without an end") << QStringLiteral("/dev/zero");
    QTest::newRow("a name that is too long") << QString(300, QLatin1Char('n'));
    QTest::newRow("a NUL in the name") << QStringLiteral("file") + QChar::Null + QStringLiteral("tail");
}

void CryptoTest::hashesNothingButRegularFiles()
{
    QFETCH(QString, name);
    QTemporaryDir const temporary;
    QDir const folder(temporary.path());
    QVERIFY(folder.mkdir(QStringLiteral("folder")));
    QCOMPARE(mkfifo(QFile::encodeName(folder.filePath(QStringLiteral("pipe"))).constData(), 0600), 0);
    QVERIFY(QFile::link(folder.filePath(QStringLiteral("pipe")),
                        folder.filePath(QStringLiteral("link to pipe"))));
    QVERIFY(QFile::link(folder.filePath(QStringLiteral("loop")), folder.filePath(QStringLiteral("loop"))));
    QFile file(folder.filePath(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(Crypto::computeSHA256(name.isEmpty() ? name : folder.filePath(name)), QString());
}

void CryptoTest::hashesNothingThatCannotBeReadToItsEnd()
{
    // Nothing is mapped at address 0, so that the first read of this regular file fails.
    QCOMPARE(Crypto::computeSHA256(QStringLiteral("/proc/self/mem")), QString());

    QTemporaryDir const folder;
    QVERIFY(QFile::setPermissions(folder.path(), QFile::Permissions(0x7755)));
    QFile file(folder.filePath(QStringLiteral("secret")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    QVERIFY(file.setPermissions(QFile::Permissions()));
    int const exitCode = inChildProcess([&] {
        if (chdir(QFile::encodeName(folder.path()).constData()) != 0 || !becomeOrdinaryUser()) {
            return 1;
        }
        return QFile::exists(QStringLiteral("secret")) &&
                       Crypto::computeSHA256(QStringLiteral("secret")).isEmpty()
                   ? 0
                   : 2;
    });
    QCOMPARE(exitCode, 0);
}

int main(int argc, char** argv)
{
    return runTest<CryptoTest>(argc, argv);
}

#include "CryptoTest.moc"
