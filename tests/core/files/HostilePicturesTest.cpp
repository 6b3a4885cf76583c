#include <files/FilePaths.h>
#include <files/ImageUtils.h>

#include "PictureGenerators.h"

#include <ChildProcess.h>
#include <QGuiApplication>
#include <QImageReader>
#include <RunTest.h>
#include <TestFiles.h>

using namespace Pictures;

/// Pictures, and a text, that ask for more than they are worth. In a test of its own, because it limits
/// memory, and the sanitizers need that.
class HostilePicturesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void takesLittleTimeAndMemory_data();
    void takesLittleTimeAndMemory();
    void aPictureThatDoesNotFitIntoMemoryIsNone();
    void aTextThatDoesNotFitIntoMemoryIsEmpty();
};

void HostilePicturesTest::initTestCase()
{
    // Plugins are loaded now, and not under a limit.
    QVERIFY(QImageReader::supportedImageFormats().contains("gif"));
    QVERIFY(bomb(10'000).contains(QByteArray(8'000, '\0')));
}

void HostilePicturesTest::takesLittleTimeAndMemory_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QSize>("size"); // of what is decoded
    QSize const small(8, 8);
    QSize const nothing(0, 0);

    QByteArray const text = deflated(QByteArray(7'900'000, 'A'));
    auto const texts = [&](char const* type, QByteArray const& keyword) {
        return smallPng(repeated(chunk(type, keyword + text), 120));
    };
    QTest::newRow("png: compressed texts") << texts("zTXt", QByteArray("key\0\0", 5)) << small;
    QTest::newRow("png: international texts") << texts("iTXt", QByteArray("key\0\1\0\0\0", 8)) << small;
    QTest::newRow("png: profiles") << texts("iCCP", QByteArray("key\0\0", 5)) << small;
    QTest::newRow("png: a large profile")
        << smallPng(chunk("iCCP", QByteArray("key\0\0", 5) + bomb(900'000))) << small;
    QTest::newRow("png: plain texts")
        << smallPng(repeated(chunk("tEXt", QByteArray("k\0v", 3)), 60'000)) << small;
    QTest::newRow("png: chunks that nobody knows") << smallPng(repeated(chunk("abCd", {}), 80'000)) << small;
    QTest::newRow("png: data for more pixels than there are") << png(8, 8, {}, bomb(900'000)) << nothing;
    QTest::newRow("png: sides that overflow") << png(0xFFFFFFFF, 0xFFFFFFFF, {}, bomb(10'000)) << nothing;

    QByteArray const emptyScan = scan(1, 63);
    QTest::newRow("jpeg: 5,000 empty scans")
        << jpeg(progressive, 5'700, 5'700, {}, scan(0, 0) + repeated(emptyScan, 5'000)) << nothing;
    QTest::newRow("jpeg: 4,000 empty scans of few pixels")
        << jpeg(progressive, 2'000, 2'000, {}, scan(0, 0) + repeated(emptyScan, 4'000)) << nothing;
    QTest::newRow("jpeg: few empty scans")
        << jpeg(progressive, 2'000, 2'000, {}, scan(0, 0) + repeated(emptyScan, 400)) << QSize(2'000, 2'000);
    QTest::newRow("jpeg: scans after fill bytes and restarts")
        << jpeg(progressive, 2'000, 2'000, {},
                repeated(scan(0, 0) + QByteArray("\0\xFF\0\xFF\xD0\xFF\xFF\xFF", 8), 3'000))
        << nothing;
    QTest::newRow("jpeg: scans after an even number of fill bytes")
        << jpeg(progressive, 2'000, 2'000, {}, repeated(scan(0, 0) + QByteArray("\0\xFF\0\xFF", 4), 3'000))
        << nothing;
    QTest::newRow("jpeg: comments") << jpeg(baseline, 8, 8, repeated(segment(0xFE, {}), 230'000),
                                            scan(0, 63) + '\0')
                                    << nothing;
    QTest::newRow("jpeg: parts of a profile")
        << jpeg(baseline, 8, 8, repeated(segment(0xE2, QByteArray("ICC_PROFILE\0\1\1", 14)), 50'000),
                scan(0, 63) + '\0')
        << nothing;
    QTest::newRow("jpeg: 2,730 pixels a byte")
        << jpeg(baseline, 5'700, 5'700, {}, scan(0, 63) + QByteArray(11'700, '\0')) << nothing;

    QTest::newRow("gif: runs of 2,800 million pixels in a small frame")
        << gif(8, 8, {8, 8}, longestRuns(950'000)) << nothing;
    QTest::newRow("gif: the same in a frame beyond its canvas")
        << gif(8, 8, {50'000, 50'000}, longestRuns(950'000)) << nothing;
    QTest::newRow("gif: the same on no canvas")
        << gif(0, 0, {50'000, 50'000}, longestRuns(950'000)) << nothing;
    QTest::newRow("gif: a frame of a size that the canvas hides")
        << gif(0, 0, {40'000, 40'000}, longestRuns(100)) << nothing;

    QTest::newRow("gif: codes of more bits than there are")
        << gif(8, 8, {8, 8}, QByteArray(1'000, '\xFF'), 12) << small;

    QByteArray const hostilePng = texts("zTXt", QByteArray("key\0\0", 5));
    QTest::newRow("ico: a hostile png")
        << icon(8, 8, static_cast<quint32>(hostilePng.size()), hostilePng) << small;
    QTest::newRow("ico: a bitmap larger than the directory can say")
        << icon(0, 0, 200, bitmapHeader(30'000, 60'000, 32, 0) + QByteArray(160, '\0')) << nothing;
    QTest::newRow("ico: a bitmap that is upside down")
        << icon(0, 0, 200, bitmapHeader(30'000, -60'000, 32, 0) + QByteArray(160, '\0')) << nothing;
    QTest::newRow("bmp: pixels that are not there")
        << bmp(5'700, 5'700, 24, 0, QByteArray(900'000, '\0')) << nothing;
    QTest::newRow("bmp: runs beyond the picture") << bmp(8, 8, 8, 1, repeated("\xFF\1", 480'000)) << small;
    QTest::newRow("ppm: pixels that are not there")
        << QByteArray("P6\n5700 5700\n255\n" + QByteArray(900'000, 'x')) << nothing;
    QTest::newRow("ppm: comments") << QByteArray("P6\n" + repeated("#\n", 450'000) + "8 8\n255\n" +
                                                 QByteArray(192, 'x'))
                                   << small;
    QTest::newRow("xpm: colours") << QByteArray("/* XPM */\nstatic char *a[] = {\n\"8 8 90000 1\",\n" +
                                                repeated("\"a c zzzz\",\n", 80'000))
                                  << nothing;
    QTest::newRow("xbm: an endless comment")
        << QByteArray("/*\n#define a_width 2000\n" + repeated("\n", 900'000)) << nothing;
    QTest::newRow("svg: not decoded at all")
        << QByteArray("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"8\" height=\"8\"/>") << nothing;
}

void HostilePicturesTest::takesLittleTimeAndMemory()
{
    QFETCH(QByteArray, data);
    QFETCH(QSize, size);
    QTemporaryDir const dir;
    QString const path = dir.filePath(QStringLiteral("picture.png"));
    QVERIFY(TestFiles::write(path, data));
    constexpr rlim_t seconds = 2;
    rlim_t const pixels = static_cast<rlim_t>(size.width()) * static_cast<rlim_t>(size.height());
    rlim_t const memory = (64U << 20U) + 16 * pixels;
    auto const inNarrowChild = [&](std::function<bool()> const& body) {
        return inChildProcess([&] {
            if (!limitFurtherMemory(memory) || !limitResource(RLIMIT_CPU, seconds)) {
                return 99;
            }
            return body() ? 0 : 1;
        });
    };
    QCOMPARE(
        inNarrowChild([&] { return ImageUtils::convertByteArray2Image(data, QString()).size() == size; }), 0);
    QCOMPARE(inNarrowChild(
                 [&] { return ImageUtils::getByteArrayFromPath(path).first.isEmpty() == size.isEmpty(); }),
             0);
}

void HostilePicturesTest::aPictureThatDoesNotFitIntoMemoryIsNone()
{
    QImage image(5'000, 4'000, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    for (char const* const format : {"png", "jpg", "bmp"}) {
        QByteArray const data = ImageUtils::convertImage2ByteArray(image, QLatin1String(format));
        int const exitCode = inChildProcess([&] {
            bool const isNone = limitFurtherMemory(20'000'000) &&
                                ImageUtils::convertByteArray2Image(data, QLatin1String(format)).isNull() &&
                                ImageUtils::convertImage2ByteArray(image, QStringLiteral("bmp")).isEmpty();
            return isNone ? 0 : 1;
        });
        QCOMPARE(exitCode, 0);
    }
}

void HostilePicturesTest::aTextThatDoesNotFitIntoMemoryIsEmpty()
{
    QTemporaryDir const dir;
    QString const path = dir.filePath(QStringLiteral("large.txt"));
    QVERIFY(TestFiles::write(path, QByteArray(100'000'000, 'x')));
    int const exitCode = inChildProcess([&] {
        QString suffix;
        bool const isEmpty = limitFurtherMemory(60'000'000) &&
                             FilePaths::readFileContent(path, QStringLiteral("text/plain"),
                                                        {QStringLiteral("txt")}, 1U << 30U, suffix)
                                 .isEmpty() &&
                             suffix == QStringLiteral("txt");
        return isEmpty ? 0 : 1;
    });
    QCOMPARE(exitCode, 0);
}

int main(int argc, char** argv)
{
    return runTest<HostilePicturesTest, QGuiApplication>(argc, argv);
}

#include "HostilePicturesTest.moc"
