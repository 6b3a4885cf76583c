#include "CurlSeam.h"

#include <network/NetworkUtils.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <RunTest.h>
#include <TestFiles.h>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <type_traits>

using Callback = unsigned long (*)(void*, unsigned long, unsigned long, void*);
static_assert(std::is_same_v<decltype(&NetworkUtils::writeData), Callback>);
static_assert(std::is_same_v<decltype(&NetworkUtils::writeMemoryData), Callback>);
static_assert(std::is_same_v<decltype(&NetworkUtils::readData), Callback>);
static_assert(std::is_same_v<decltype(&NetworkUtils::headerCallback),
                             unsigned long (*)(char*, unsigned long, unsigned long, void*)>);
static_assert(std::is_same_v<decltype(&NetworkUtils::staticProgress),
                             int (*)(void*, unsigned long, unsigned long, unsigned long, unsigned long)>);

namespace {

QString const address = QStringLiteral("http://127.0.0.1:1/a?b=%c3%a4");

QStringList const progressOptions = {QStringLiteral("XFERINFOFUNCTION"), QStringLiteral("XFERINFODATA"),
                                     QStringLiteral("NOPROGRESS=0")};
QStringList const receiverOptions = {QStringLiteral("WRITEFUNCTION"), QStringLiteral("WRITEDATA")};
QStringList const bufferOption = {QStringLiteral("BUFFERSIZE=65536")};

QStringList const headerOptions = {QStringLiteral("HEADERFUNCTION"), QStringLiteral("HEADERDATA")};

/// Set for every transfer, after its own.
QStringList const lastOptions = {QStringLiteral("PROTOCOLS_STR=http,https,ftp,ftps,file"),
                                 QStringLiteral("QUICK_EXIT=1")};
QStringList const commonOptions = headerOptions + lastOptions;

} // namespace

/// What holds without a server: the parts of forms, the callbacks, the options handed to libcurl, and what
/// becomes of each of its results.
class NetworkUtilsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void startsAndStopsTheLibrary();
    void givesTheJsonHeader();
    void buildsTextParts_data();
    void buildsTextParts();
    void buildsFileParts_data();
    void buildsFileParts();

    void setsDownloadOptions_data();
    void setsDownloadOptions();
    void setsMemoryDownloadOptions();
    void setsFileSizeOptions();
    void setsUploadOptions_data();
    void setsUploadOptions();
    void setsPostOptions();
    void postsWithoutHeaders();
    void passesTextAsUtf8();

    void mapsDownloadResults_data();
    void mapsDownloadResults();
    void mapsFileSizeResults_data();
    void mapsFileSizeResults();
    void mapsUploadResults_data();
    void mapsUploadResults();
    void mapsPostResults_data();
    void mapsPostResults();

    void failsWithoutAHandleOrAnAddress_data();
    void failsWithoutAHandleOrAnAddress();
    void dialsNothingWithoutTheLimitOfSchemes();
    void freesTheHeadersWhenMemoryRunsOut_data();
    void freesTheHeadersWhenMemoryRunsOut();
    void opensFilesBeforeAnythingElse_data();
    void opensFilesBeforeAnythingElse();

    void writesToAFile();
    void refusesBytesForAClosedFile();
    void refusesBytesForAFullDisk();
    void appendsToMemory();
    void refusesBytesBeyondMemory();
    void readsAFile();
    void readsNothingFromAClosedFile();

    void findsTheSizeHeader_data();
    void findsTheSizeHeader();
    void keepsTheLastSizeHeader();

    void operatorsAreEmptyAtFirst();
    void reportsProgress_data();
    void reportsProgress();
    void endsATransferWhenCancelled_data();
    void endsATransferWhenCancelled();
    void endsATransferWhenAHookThrows_data();
    void endsATransferWhenAHookThrows();

private:
    [[nodiscard]] QString path(QString const& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void NetworkUtilsTest::initTestCase()
{
    NetworkUtils::start();
}

void NetworkUtilsTest::init()
{
    CurlSeam::reset();
    CurlSeam::instance().result = CURLE_OK;
}

void NetworkUtilsTest::cleanup()
{
    QCOMPARE(CurlSeam::instance().handles, 0);
    QCOMPARE(CurlSeam::instance().lists, 0);
}

void NetworkUtilsTest::startsAndStopsTheLibrary()
{
    NetworkUtils::start();
    QCOMPARE(CurlSeam::instance().globalInits, QList<long>{3});
    QCOMPARE(CurlSeam::instance().globalCleanups, 0);
    NetworkUtils::stop();
    QCOMPARE(CurlSeam::instance().globalCleanups, 1);
}

void NetworkUtilsTest::givesTheJsonHeader()
{
    QCOMPARE(NetworkUtils::getJSONContentTypeSpec(), QStringLiteral("Content-Type: application/json"));
}

void NetworkUtilsTest::buildsTextParts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("disposition");
    auto const row = [](char const* tag, char const* name, char const* disposition) {
        QTest::newRow(tag) << QString::fromUtf8(name) << QByteArray(disposition);
    };
    row("plain", "avatar", "form-data; name=\"avatar\"");
    row("empty", "", "form-data; name=\"\"");
    row("outside ASCII", "città €", "form-data; name=\"città €\"");
    row("double quote", "a\"; filename=\"b", "form-data; name=\"a%22; filename=%22b\"");
    row("line feed", "a\nb", "form-data; name=\"a%0Ab\"");
    row("carriage return", "a\rb", "form-data; name=\"a%0Db\"");
    row("header injection", "a\r\nX: y", "form-data; name=\"a%0D%0AX: y\"");
    row("already encoded stays", "a%22b", "form-data; name=\"a%22b\"");
    row("place marker", "%1 %2", "form-data; name=\"%1 %2\"");
    row("backslash and semicolon", "a\\;b", "form-data; name=\"a\\;b\"");
}

void NetworkUtilsTest::buildsTextParts()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, disposition);
    QHttpPart expected;
    expected.setRawHeader("Content-Disposition", disposition);
    expected.setBody("the\r\nbody");
    QVERIFY(NetworkUtils::getHttpTextPart(name, "the\r\nbody") == expected);
    QVERIFY(NetworkUtils::getHttpTextPart(name, "another body") != expected);
}

void NetworkUtilsTest::buildsFileParts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QByteArray>("disposition");
    auto const row = [](char const* tag, char const* name, char const* fileName, char const* disposition) {
        QTest::newRow(tag) << QString::fromUtf8(name) << QString::fromUtf8(fileName)
                           << QByteArray(disposition);
    };
    row("plain", "file", "a.wav", "form-data; name=\"file\"; filename=\"a.wav\"");
    row("quotes in both", "f\"", "\".wav", "form-data; name=\"f%22\"; filename=\"%22.wav\"");
    row("line breaks in both", "f\r\n", "\r\na", "form-data; name=\"f%0D%0A\"; filename=\"%0D%0Aa\"");
    row("place marker of the other", "%2", "%1", "form-data; name=\"%2\"; filename=\"%1\"");
    row("outside ASCII", "è", "ü.wav", "form-data; name=\"è\"; filename=\"ü.wav\"");
}

void NetworkUtilsTest::buildsFileParts()
{
    QFETCH(QString, name);
    QFETCH(QString, fileName);
    QFETCH(QByteArray, disposition);
    QFile file(path(QStringLiteral("part")));
    QHttpPart expected;
    expected.setRawHeader("Content-Type", "audio/wav");
    expected.setRawHeader("Content-Disposition", disposition);
    expected.setBodyDevice(&file);
    QVERIFY(NetworkUtils::getHttpFilePart(name, fileName, QStringLiteral("audio/wav"), file) == expected);
    QFile other(path(QStringLiteral("other")));
    QVERIFY(NetworkUtils::getHttpFilePart(name, fileName, QStringLiteral("audio/wav"), other) != expected);
}

void NetworkUtilsTest::setsDownloadOptions_data()
{
    QTest::addColumn<bool>("hasOperator");
    QTest::addColumn<QStringList>("options");
    QStringList const plain = QStringList{QStringLiteral("URL=") + address} + receiverOptions;
    QTest::newRow("without an operator") << false << plain + bufferOption + commonOptions;
    QTest::newRow("with an operator") << true << plain + progressOptions + bufferOption + commonOptions;
}

void NetworkUtilsTest::setsDownloadOptions()
{
    QFETCH(bool, hasOperator);
    NetworkUtils::Operator op;
    NetworkUtils::downloadFile(address, path(QStringLiteral("down")), hasOperator ? &op : nullptr);
    QTEST(CurlSeam::instance().optionTexts(), "options");
    QCOMPARE(CurlSeam::instance().pointer(CURLOPT_XFERINFODATA), hasOperator ? &op : nullptr);
    QCOMPARE(CurlSeam::instance().performed, 1);
}

void NetworkUtilsTest::setsMemoryDownloadOptions()
{
    std::vector<char> memory;
    NetworkUtils::Operator op;
    NetworkUtils::downloadToMemory(address, memory, &op);
    QCOMPARE(CurlSeam::instance().optionTexts(), QStringList{QStringLiteral("URL=") + address} +
                                                     receiverOptions + progressOptions + bufferOption +
                                                     commonOptions);
}

void NetworkUtilsTest::setsFileSizeOptions()
{
    long long atFirst = -2;
    CurlSeam::instance().onPerform = [&](CurlSeam& seam) {
        auto& size = *static_cast<long long*>(seam.pointer(CURLOPT_HEADERDATA));
        atFirst = std::exchange(size, 1LL << 40);
    };
    QCOMPARE(NetworkUtils::getFileSize(address), 1LL << 40);
    QCOMPARE(atFirst, 0);
    QStringList const own =
        QStringList{QStringLiteral("URL=") + address, QStringLiteral("NOBODY=1")} + headerOptions;
    QCOMPARE(CurlSeam::instance().optionTexts(), own + receiverOptions + lastOptions);

    CurlSeam::instance().options.clear();
    NetworkUtils::Operator op;
    QCOMPARE(NetworkUtils::getFileSize(address, &op), 1LL << 40);
    QCOMPARE(CurlSeam::instance().optionTexts(), own + progressOptions + receiverOptions + lastOptions);
    QCOMPARE(CurlSeam::instance().pointer(CURLOPT_XFERINFODATA), &op);
}

void NetworkUtilsTest::setsUploadOptions_data()
{
    QTest::addColumn<bool>("hasOperator");
    QTest::addColumn<long long>("size");
    QTest::addColumn<QString>("sizeOption");
    QTest::newRow("without an operator") << false << 5LL << QStringLiteral("INFILESIZE_LARGE=5");
    QTest::newRow("with an operator") << true << 5LL << QStringLiteral("INFILESIZE_LARGE=5");
    QTest::newRow("size beyond 32 bits")
        << false << (1LL << 40) << QStringLiteral("INFILESIZE_LARGE=1099511627776");
    QTest::newRow("unknown size") << false << -1LL << QStringLiteral("INFILESIZE_LARGE=-1");
}

void NetworkUtilsTest::setsUploadOptions()
{
    QFETCH(bool, hasOperator);
    QFETCH(long long, size);
    QFETCH(QString, sizeOption);
    QString const file = path(QStringLiteral("up"));
    QVERIFY(QFile(file).open(QIODevice::WriteOnly));
    NetworkUtils::Operator op;
    NetworkUtils::putFile(address, file, size, hasOperator ? &op : nullptr);
    QStringList expected = {QStringLiteral("URL=") + address,
                            QStringLiteral("HEADER=0"),
                            QStringLiteral("FAILONERROR=1"),
                            QStringLiteral("READFUNCTION"),
                            QStringLiteral("READDATA"),
                            QStringLiteral("UPLOAD=1"),
                            sizeOption};
    if (hasOperator) {
        expected += progressOptions;
    }
    // The answer's body must go somewhere else than to standard output.
    QCOMPARE(CurlSeam::instance().optionTexts(), expected + receiverOptions + commonOptions);
}

void NetworkUtilsTest::setsPostOptions()
{
    QVERIFY(NetworkUtils::post(
        address,
        {NetworkUtils::getJSONContentTypeSpec(), QStringLiteral("X-Città: 1"), QStringLiteral("Accept:")},
        QStringLiteral("{\"a\":\"è\"}")));
    CurlSeam& seam = CurlSeam::instance();
    QStringList const own = {
        QStringLiteral("SSLVERSION=6"),
        QStringLiteral("URL=") + address,
        QStringLiteral("CUSTOMREQUEST=POST"),
        QStringLiteral("HTTPHEADER"),
        QStringLiteral("POSTFIELDS={\"a\":\"è\"}"),
    };
    QCOMPARE(seam.optionTexts(), own + receiverOptions + commonOptions);
    QCOMPARE(seam.headers, (QStringList{QStringLiteral("Content-Type: application/json"),
                                        QStringLiteral("X-Città: 1"), QStringLiteral("Accept:")}));

    seam.options.clear();
    NetworkUtils::Operator op;
    QVERIFY(NetworkUtils::post(address, {}, QStringLiteral("{\"a\":\"è\"}"), &op));
    QCOMPARE(seam.optionTexts(), own + receiverOptions + progressOptions + commonOptions);
    QCOMPARE(seam.pointer(CURLOPT_XFERINFODATA), &op);
}

void NetworkUtilsTest::postsWithoutHeaders()
{
    QVERIFY(NetworkUtils::post(address, {}, QString()));
    QVERIFY(CurlSeam::instance().optionTexts().contains(QStringLiteral("HTTPHEADER")));
    QVERIFY(CurlSeam::instance().optionTexts().contains(QStringLiteral("POSTFIELDS=")));
    QCOMPARE(CurlSeam::instance().headers, QStringList());
}

void NetworkUtilsTest::passesTextAsUtf8()
{
    QString const international = QStringLiteral("http://127.0.0.1/città/%1");
    QCOMPARE(NetworkUtils::getFileSize(international), 0);
    QCOMPARE(CurlSeam::instance().optionTexts().constFirst(), QStringLiteral("URL=") + international);
}

void NetworkUtilsTest::mapsDownloadResults_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<bool>("remoteError");
    QTest::newRow("done") << int(CURLE_OK) << 200 << true << false;
    QTest::newRow("done, an error page") << int(CURLE_OK) << 500 << true << false;
    QTest::newRow("done, status 78") << int(CURLE_OK) << 78 << true << false;
    QTest::newRow("malformed address") << int(CURLE_URL_MALFORMAT) << 0 << false << false;
    QTest::newRow("malformed address, status 78") << int(CURLE_URL_MALFORMAT) << 78 << false << false;
    QTest::newRow("cancelled") << int(CURLE_ABORTED_BY_CALLBACK) << 200 << false << false;
    QTest::newRow("cancelled, status 78") << int(CURLE_ABORTED_BY_CALLBACK) << 78 << false << false;
    QTest::newRow("cut off") << int(CURLE_PARTIAL_FILE) << 200 << false << false;
    QTest::newRow("cut off, status 78") << int(CURLE_PARTIAL_FILE) << 78 << false << true;
    QTest::newRow("refused, status 78") << int(CURLE_COULDNT_CONNECT) << 78 << false << true;
    QTest::newRow("result 78 is another number space")
        << int(CURLE_REMOTE_FILE_NOT_FOUND) << 404 << false << false;
}

void NetworkUtilsTest::mapsDownloadResults()
{
    QFETCH(int, code);
    QFETCH(int, status);
    QFETCH(bool, ok);
    CurlSeam::instance().result = static_cast<CURLcode>(code);
    CurlSeam::instance().responseCode = status;
    QString const file = path(QStringLiteral("mapped"));
    NetworkUtils::TransferResult const toFile = NetworkUtils::downloadFile(address, file, nullptr);
    QCOMPARE(toFile.ok, ok);
    QTEST(toFile.remoteError, "remoteError");
    QCOMPARE(QFile::exists(file), ok);

    std::vector<char> memory;
    NetworkUtils::TransferResult const toMemory = NetworkUtils::downloadToMemory(address, memory, nullptr);
    QCOMPARE(toMemory.ok, ok);
    QTEST(toMemory.remoteError, "remoteError");
}

void NetworkUtilsTest::mapsFileSizeResults_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("status");
    QTest::addColumn<long long>("size");
    QTest::newRow("done") << int(CURLE_OK) << 200 << 7LL;
    QTest::newRow("done, an error page") << int(CURLE_OK) << 404 << 7LL;
    QTest::newRow("done, status 78") << int(CURLE_OK) << 78 << 7LL;
    QTest::newRow("refused") << int(CURLE_COULDNT_CONNECT) << 0 << -1LL;
    QTest::newRow("cut off after the header") << int(CURLE_RECV_ERROR) << 200 << -1LL;
    QTest::newRow("cut off, status 78") << int(CURLE_RECV_ERROR) << 78 << 0LL;
    QTest::newRow("result 78 is another number space") << int(CURLE_REMOTE_FILE_NOT_FOUND) << 404 << -1LL;
}

void NetworkUtilsTest::mapsFileSizeResults()
{
    QFETCH(int, code);
    QFETCH(int, status);
    CurlSeam::instance().result = static_cast<CURLcode>(code);
    CurlSeam::instance().responseCode = status;
    CurlSeam::instance().onPerform = [](CurlSeam& seam) {
        *static_cast<long long*>(seam.pointer(CURLOPT_HEADERDATA)) = 7;
    };
    QTEST(NetworkUtils::getFileSize(address), "size");
}

void NetworkUtilsTest::mapsUploadResults_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<bool>("remoteError");
    QTest::newRow("done") << int(CURLE_OK) << true << false;
    QTest::newRow("status of 400 or more") << int(CURLE_HTTP_RETURNED_ERROR) << false << true;
    QTest::newRow("cancelled") << int(CURLE_ABORTED_BY_CALLBACK) << false << false;
    QTest::newRow("refused") << int(CURLE_COULDNT_CONNECT) << false << false;
    QTest::newRow("result 78") << int(CURLE_REMOTE_FILE_NOT_FOUND) << false << false;
}

void NetworkUtilsTest::mapsUploadResults()
{
    QFETCH(int, code);
    CurlSeam::instance().result = static_cast<CURLcode>(code);
    CurlSeam::instance().responseCode = 78;
    QString const file = path(QStringLiteral("up"));
    QVERIFY(QFile(file).open(QIODevice::WriteOnly));
    NetworkUtils::TransferResult const result = NetworkUtils::putFile(address, file, 0, nullptr);
    QTEST(result.ok, "ok");
    QTEST(result.remoteError, "remoteError");
    QVERIFY(QFile::exists(file));
}

void NetworkUtilsTest::mapsPostResults_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("ok");
    QTest::newRow("done") << int(CURLE_OK) << true;
    QTest::newRow("refused") << int(CURLE_COULDNT_CONNECT) << false;
    QTest::newRow("no answer") << int(CURLE_GOT_NOTHING) << false;
}

void NetworkUtilsTest::mapsPostResults()
{
    QFETCH(int, code);
    CurlSeam::instance().result = static_cast<CURLcode>(code);
    QTEST(NetworkUtils::post(address, {QStringLiteral("A: b")}, QStringLiteral("body")), "ok");
}

void NetworkUtilsTest::failsWithoutAHandleOrAnAddress_data()
{
    QTest::addColumn<bool>("hasHandle");
    QTest::newRow("no handle") << false;
    QTest::newRow("no room for the address") << true;
}

void NetworkUtilsTest::failsWithoutAHandleOrAnAddress()
{
    QFETCH(bool, hasHandle);
    CurlSeam::instance().failInit = !hasHandle;
    CurlSeam::instance().failOption = CURLOPT_URL;
    QString const file = path(QStringLiteral("without"));
    std::vector<char> memory;
    NetworkUtils::TransferResult const results[] = {
        NetworkUtils::downloadFile(address, file, nullptr),
        NetworkUtils::downloadToMemory(address, memory, nullptr),
        NetworkUtils::putFile(address, QCoreApplication::applicationFilePath(), 10, nullptr),
    };
    for (NetworkUtils::TransferResult const& result : results) {
        QVERIFY(!result.ok);
        QVERIFY(!result.remoteError);
    }
    QVERIFY(!QFile::exists(file));
    QCOMPARE(NetworkUtils::getFileSize(address), -1);
    QCOMPARE(CurlSeam::instance().performed, 0);
    // Posting leaves it to the transfer to fail, as there is no address.
    CurlSeam::instance().result = CURLE_URL_MALFORMAT;
    QVERIFY(!NetworkUtils::post(address, {QStringLiteral("A: b")}, QString()));
    QCOMPARE(CurlSeam::instance().performed, hasHandle ? 1 : 0);
}

void NetworkUtilsTest::dialsNothingWithoutTheLimitOfSchemes()
{
    CurlSeam::instance().failOption = CURLOPT_PROTOCOLS_STR;
    std::vector<char> memory;
    QVERIFY(!NetworkUtils::downloadToMemory(address, memory, nullptr).ok);
    QCOMPARE(NetworkUtils::getFileSize(address), -1);
    QVERIFY(!NetworkUtils::putFile(address, QCoreApplication::applicationFilePath(), 10, nullptr).ok);
    QVERIFY(!NetworkUtils::post(address, {}, QString()));
    QCOMPARE(CurlSeam::instance().performed, 0);
}

void NetworkUtilsTest::freesTheHeadersWhenMemoryRunsOut_data()
{
    QTest::addColumn<int>("append");
    QTest::newRow("first header") << 0;
    QTest::newRow("second header") << 1;
    QTest::newRow("last header") << 2;
}

void NetworkUtilsTest::freesTheHeadersWhenMemoryRunsOut()
{
    QFETCH(int, append);
    CurlSeam::instance().failAppend = append;
    QVERIFY(!NetworkUtils::post(
        address, {QStringLiteral("A: 1"), QStringLiteral("B: 2"), QStringLiteral("C: 3")}, QString()));
    QCOMPARE(CurlSeam::instance().performed, 0);
}

void NetworkUtilsTest::opensFilesBeforeAnythingElse_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("missing folder") << path(QStringLiteral("no/such/file"));
    QTest::newRow("no path") << QString();
    QTest::newRow("path with U+0000") << path(QStringLiteral("cut")) + QChar(u'\0') + QStringLiteral("off");
}

void NetworkUtilsTest::opensFilesBeforeAnythingElse()
{
    QFETCH(QString, file);
    QVERIFY(QFile(path(QStringLiteral("cut"))).open(QIODevice::WriteOnly));
    NetworkUtils::TransferResult const down = NetworkUtils::downloadFile(address, file, nullptr);
    QVERIFY(!down.ok);
    QVERIFY(!down.remoteError);
    NetworkUtils::TransferResult const up = NetworkUtils::putFile(address, file, 0, nullptr);
    QVERIFY(!up.ok);
    QVERIFY(!up.remoteError);
    QCOMPARE(CurlSeam::instance().performed, 0);
    QVERIFY(QFile::exists(path(QStringLiteral("cut"))));
}

void NetworkUtilsTest::writesToAFile()
{
    QString const file = path(QStringLiteral("written"));
    std::ofstream stream(QFile::encodeName(file).constData(), std::ios::binary);
    char bytes[] = {'a', '\0', '\n', '\r', '\x1a', '\xff'};
    QCOMPARE(NetworkUtils::writeData(bytes, 2, 3, &stream), 6UL);
    QCOMPARE(NetworkUtils::writeData(bytes, 1, 0, &stream), 0UL);
    QCOMPARE(NetworkUtils::writeData(bytes, 1, 1, &stream), 1UL);
    stream.close();
    QCOMPARE(TestFiles::read(file), QByteArray(bytes, 6) + 'a');
}

void NetworkUtilsTest::refusesBytesForAClosedFile()
{
    std::ofstream stream;
    char bytes[] = "abc";
    QCOMPARE(NetworkUtils::writeData(bytes, 1, 3, &stream), 0UL);
}

void NetworkUtilsTest::refusesBytesForAFullDisk()
{
    std::ofstream stream("/dev/full", std::ios::binary);
    std::vector<char> bytes(64 * 1024);
    QCOMPARE(NetworkUtils::writeData(bytes.data(), 1, bytes.size(), &stream), 0UL);
    std::ofstream throwing("/dev/full", std::ios::binary);
    throwing.exceptions(std::ios::badbit | std::ios::failbit);
    QCOMPARE(NetworkUtils::writeData(bytes.data(), 1, bytes.size(), &throwing), 0UL);
}

void NetworkUtilsTest::appendsToMemory()
{
    std::vector<char> memory = {'x'};
    char bytes[] = {'a', '\0', 'b', 'c'};
    QCOMPARE(NetworkUtils::writeMemoryData(bytes, 2, 2, &memory), 4UL);
    QCOMPARE(NetworkUtils::writeMemoryData(bytes, 4, 0, &memory), 0UL);
    QCOMPARE(memory, (std::vector<char>{'x', 'a', '\0', 'b', 'c'}));
}

void NetworkUtilsTest::refusesBytesBeyondMemory()
{
    std::vector<char> memory = {'x'};
    char byte = 'a';
    auto const tooMany = static_cast<unsigned long>(std::numeric_limits<std::ptrdiff_t>::max());
    QCOMPARE(NetworkUtils::writeMemoryData(&byte, 1, tooMany, &memory), 0UL);
    QCOMPARE(memory, std::vector<char>{'x'});
}

void NetworkUtilsTest::readsAFile()
{
    QString const name = path(QStringLiteral("read"));
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray("0123\0\n89", 8));
    file.close();
    std::ifstream stream(QFile::encodeName(name).constData(), std::ios::binary);
    std::vector<char> buffer(6, '.');
    QCOMPARE(NetworkUtils::readData(buffer.data(), 1, 5, &stream), 5UL);
    QCOMPARE(QByteArray(buffer.data(), 6), QByteArray("0123\0.", 6));
    QCOMPARE(NetworkUtils::readData(buffer.data(), 2, 3, &stream), 3UL);
    QCOMPARE(QByteArray(buffer.data(), 3), QByteArray("\n89"));
    QCOMPARE(NetworkUtils::readData(buffer.data(), 2, 3, &stream), 0UL);
}

void NetworkUtilsTest::readsNothingFromAClosedFile()
{
    std::ifstream stream;
    char byte = 'a';
    QCOMPARE(NetworkUtils::readData(&byte, 1, 1, &stream), 0UL);
    std::ifstream throwing;
    throwing.exceptions(std::ios::badbit);
    QCOMPARE(NetworkUtils::readData(&byte, 1, 1, &throwing), 0UL);
}

void NetworkUtilsTest::findsTheSizeHeader_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<long long>("size");
    constexpr long long untouched = -7;
    auto const row = [](char const* tag, QByteArray const& line, long long size) {
        QTest::newRow(tag) << line << size;
    };
    row("plain", "Content-Length: 1234\r\n", 1234);
    row("no space", "Content-Length:1234\r\n", 1234);
    row("white space of every kind", "Content-Length: \t\v\f\n 1234\r\n", 1234);
    row("not terminated", "Content-Length: 12", 12);
    row("zero", "Content-Length: 0\r\n", 0);
    row("plus sign", "Content-Length: +5\r\n", 5);
    row("minus sign", "Content-Length: -5\r\n", -5);
    row("number, then other text", "Content-Length: 5, 5\r\n", 5);
    row("decimal only", "Content-Length: 0x1f\r\n", 0);
    row("leading zeros", "Content-Length: 0010\r\n", 10);
    row("beyond 32 bits", "Content-Length: 1099511627776\r\n", 1099511627776LL);
    row("largest", "Content-Length: 9223372036854775807\r\n", 9223372036854775807LL);
    row("too large stops at the largest", "Content-Length: 99999999999999999999\r\n", 9223372036854775807LL);
    row("too low stops at the lowest", "Content-Length: -99999999999999999999\r\n",
        std::numeric_limits<long long>::min());
    row("a thousand zeros", "Content-Length: " + QByteArray(1000, '0') + "8\r\n", 8);
    row("no number", "Content-Length:\r\n", untouched);
    row("nothing after the colon", "Content-Length:", untouched);
    row("a word", "Content-Length: many\r\n", untouched);
    row("sign alone", "Content-Length: -\r\n", untouched);
    row("space after the sign", "Content-Length: - 5\r\n", untouched);
    row("U+0000 before the number", QByteArray("Content-Length: \0005\r\n", 20), untouched);
    row("lower case", "content-length: 1234\r\n", untouched);
    row("upper case", "CONTENT-LENGTH: 1234\r\n", untouched);
    row("space before the colon", "Content-Length : 1234\r\n", untouched);
    row("space before the name", " Content-Length: 1234\r\n", untouched);
    row("another header", "Content-Type: 1234\r\n", untouched);
    row("longer name", "X-Content-Length: 1234\r\n", untouched);
    row("cut before the colon", "Content-Length", untouched);
    row("end of the header", "\r\n", untouched);
    row("empty", QByteArray(), untouched);
}

void NetworkUtilsTest::findsTheSizeHeader()
{
    QFETCH(QByteArray, line);
    // Exactly as many bytes as there are, so that a read past the end is one past the allocation.
    std::vector<char> exact(line.begin(), line.end());
    long long size = -7;
    QCOMPARE(NetworkUtils::headerCallback(exact.data(), 1, exact.size(), &size), exact.size());
    QTEST(size, "size");
    if (exact.size() % 2 == 0) {
        size = -7;
        QCOMPARE(NetworkUtils::headerCallback(exact.data(), 2, exact.size() / 2, &size), exact.size());
        QTEST(size, "size");
    }
}

void NetworkUtilsTest::keepsTheLastSizeHeader()
{
    long long size = 0;
    for (QByteArray line : {"Content-Length: 42\r\n", "Content-Length: 43\r\n", "content-length: 44\r\n",
                            "Content-Length: none\r\n"}) {
        auto const length = static_cast<unsigned long>(line.size());
        QCOMPARE(NetworkUtils::headerCallback(line.data(), length, 1, &size), length);
    }
    QCOMPARE(size, 43);
}

void NetworkUtilsTest::operatorsAreEmptyAtFirst()
{
    NetworkUtils::Operator op;
    QVERIFY(op.isDownload);
    QVERIFY(!op.progress);
    QVERIFY(!op.isCancelled);
    QVERIFY(op.progressImpl(1, 2));
    QCOMPARE(NetworkUtils::staticProgress(&op, 1, 2, 3, 4), 0);
    QCOMPARE(NetworkUtils::staticProgress(nullptr, 1, 2, 3, 4), 0);
    NetworkUtils::TransferResult const result;
    QVERIFY(!result.ok);
    QVERIFY(!result.remoteError);
}

void NetworkUtilsTest::reportsProgress_data()
{
    QTest::addColumn<bool>("isDownload");
    QTest::addColumn<bool>("hasPredicate");
    QTest::addColumn<long long>("now");
    QTest::addColumn<long long>("total");
    QTest::newRow("download") << true << false << 2LL << 1LL;
    QTest::newRow("upload") << false << false << 4LL << 3LL;
    QTest::newRow("download that may be cancelled") << true << true << 2LL << 1LL;
    QTest::newRow("upload that may be cancelled") << false << true << 4LL << 3LL;
}

void NetworkUtilsTest::reportsProgress()
{
    QFETCH(bool, isDownload);
    QFETCH(bool, hasPredicate);
    QFETCH(long long, now);
    QFETCH(long long, total);
    QList<std::pair<long long, long long>> reports;
    NetworkUtils::Operator op;
    op.isDownload = isDownload;
    op.progress = [&](long long done, long long all) { reports.append({done, all}); };
    if (hasPredicate) {
        op.isCancelled = [] { return false; };
    }
    QCOMPARE(NetworkUtils::staticProgress(&op, 1, 2, 3, 4), 0);
    QCOMPARE(reports, (QList<std::pair<long long, long long>>{{now, total}}));

    QVERIFY(op.progressImpl(1UL << 40, 1UL << 41));
    QCOMPARE(reports.constLast(), (std::pair<long long, long long>(1LL << 40, 1LL << 41)));
}

void NetworkUtilsTest::endsATransferWhenCancelled_data()
{
    QTest::addColumn<bool>("isDownload");
    QTest::newRow("download") << true;
    QTest::newRow("upload") << false;
}

void NetworkUtilsTest::endsATransferWhenCancelled()
{
    QFETCH(bool, isDownload);
    int reports = 0;
    NetworkUtils::Operator op;
    op.isDownload = isDownload;
    op.progress = [&](long long, long long) { ++reports; };
    op.isCancelled = [] { return true; };
    QCOMPARE(NetworkUtils::staticProgress(&op, 1, 2, 3, 4), 1);
    QVERIFY(!op.progressImpl(1, 2));
    QCOMPARE(reports, 0);
}

void NetworkUtilsTest::endsATransferWhenAHookThrows_data()
{
    QTest::addColumn<bool>("inPredicate");
    QTest::newRow("progress") << false;
    QTest::newRow("cancellation") << true;
}

void NetworkUtilsTest::endsATransferWhenAHookThrows()
{
    QFETCH(bool, inPredicate);
    NetworkUtils::Operator op;
    if (inPredicate) {
        op.isCancelled = []() -> bool { throw std::runtime_error("asked"); };
    } else {
        op.progress = [](long long, long long) { throw 5; };
    }
    QCOMPARE(NetworkUtils::staticProgress(&op, 1, 2, 3, 4), 1);
    QVERIFY(!op.progressImpl(1, 2));
}

int main(int argc, char** argv)
{
    return runTest<NetworkUtilsTest>(argc, argv);
}

#include "NetworkUtilsTest.moc"
