#include <files/ImageUtils.h>

#include "PictureGenerators.h"

#include <ChildProcess.h>
#include <MessageRecorder.h>
#include <QBuffer>
#include <QColorSpace>
#include <QGuiApplication>
#include <QImageReader>
#include <QImageWriter>
#include <RunTest.h>
#include <TestFiles.h>
#include <sys/stat.h>
#include <thread>
#include <vector>

using TestFiles::isThere;
using TestFiles::names;
using TestFiles::read;
using TestFiles::write;

namespace {

/// A picture of which no two pixels in a row are equal, so that no part of it can be lost unseen.
QImage picture(int width = 40, int height = 30)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            image.setPixel(x, y, qRgb(x * 6, y * 8, (x + y) * 3));
        }
    }
    return image;
}

/// \a image encoded by Qt itself.
QByteArray encode(QImage const& image, char const* format)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return buffer.data();
}

/// A GIF of one pixel on a canvas of the given size.
QByteArray gif(quint16 width, quint16 height)
{
    return Pictures::gif(width, height, {1, 1}, Pictures::plainCodes("x"));
}

/// \a png with the size in its header replaced, the checksum with it.
QByteArray withSize(QByteArray png, quint32 width, quint32 height)
{
    QByteArray const header = Pictures::bigEndian(width) + Pictures::bigEndian(height) + png.mid(24, 5);
    png.replace(8, 25, Pictures::chunk("IHDR", header));
    return png;
}

} // namespace

class ImageUtilsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void decodesByHintOrContent_data();
    void decodesByHintOrContent();
    void takesDataForWhatItsHintSays_data();
    void takesDataForWhatItsHintSays();
    void decodesAsQtDoes_data();
    void decodesAsQtDoes();
    void refusesWhatIsNoPicture_data();
    void refusesWhatIsNoPicture();
    void survivesTruncationAnywhere_data();
    void survivesTruncationAnywhere();
    void survivesDamageAnywhere_data();
    void survivesDamageAnywhere();
    void refusesHugeClaims_data();
    void refusesHugeClaims();
    void decodesLargePicturesThatAreThere();
    void decodesHonestPicturesAsQtDoes_data();
    void decodesHonestPicturesAsQtDoes();
    void leavesTextsOut();

    void encodes_data();
    void encodes();
    void encodesNothingUnwritable_data();
    void encodesNothingUnwritable();

    void loadsAndEncodesAgain_data();
    void loadsAndEncodesAgain();
    void loadsNothing_data();
    void loadsNothing();
    void loadingDoesNotWaitAtAPipe();
    void tellsTheFileFormat();

    void saves_data();
    void saves();
    void savesNothing_data();
    void savesNothing();

    void removesFiles();
    void renamesFilesWithoutReplacing();
    void renameFileFails_data();
    void renameFileFails();
    void renamesAcrossFileSystemsWithoutReplacing();
    void oneOfRacingRenamesWins();

    void acceptsFormats_data();
    void acceptsFormats();
    void buildsFilePaths_data();
    void buildsFilePaths();
    void buildFilePathsTakesTheNameAsItIs();
    void buildFilePathsTakesOneTextTwice();
    void buildFilePathsLeavesPathsOfOtherFormats_data();
    void buildFilePathsLeavesPathsOfOtherFormats();

private:
    QString path(QString const& name) const { return m_dir->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void ImageUtilsTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
}

void ImageUtilsTest::decodesByHintOrContent_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("format");
    QByteArray const png = encode(picture(), "png");
    QByteArray const bmp = encode(picture(), "bmp");
    QTest::newRow("its format") << png << "png";
    QTest::newRow("upper case") << png << "PNG";
    QTest::newRow("no format") << png << "";
    QTest::newRow("unknown format") << png << "webp2";
    QTest::newRow("not Latin-1") << png << "\u4e2d";
    QTest::newRow("placeholder") << png << "%1";
    QTest::newRow("other data under no format") << bmp << "";
    QTest::newRow("other data under an unknown format") << bmp << "webp2";
}

void ImageUtilsTest::decodesByHintOrContent()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, format);
    QImage const image = ImageUtils::convertByteArray2Image(data, format);
    QCOMPARE(image.convertToFormat(QImage::Format_RGB32), picture());
}

void ImageUtilsTest::takesDataForWhatItsHintSays_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("format");
    QTest::newRow("bmp as png") << encode(picture(), "bmp") << "png";
    QTest::newRow("png as gif") << encode(picture(), "png") << "gif";
    QTest::newRow("bmp as jpeg") << encode(picture(), "bmp") << "jpeg";
}

void ImageUtilsTest::takesDataForWhatItsHintSays()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, format);
    QVERIFY(QImage::fromData(data, format.toLatin1().constData()).isNull());
    QVERIFY(ImageUtils::convertByteArray2Image(data, format).isNull());
}

void ImageUtilsTest::decodesAsQtDoes_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("format");
    for (char const* const format : {"png", "jpg", "jpeg", "bmp", "ppm", "xpm", "xbm", "ico"}) {
        QTest::newRow(format) << encode(picture(), format) << QString::fromLatin1(format);
    }
    QTest::newRow("gif") << gif(3, 2) << "gif";
    QTest::newRow("png of one bit a pixel")
        << encode(picture().convertToFormat(QImage::Format_Mono), "png") << "png";
    QTest::newRow("png with transparency")
        << encode(picture().convertToFormat(QImage::Format_ARGB32), "png") << "png";
}

void ImageUtilsTest::decodesAsQtDoes()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, format);
    QVERIFY(!data.isEmpty());
    QImage const expected = QImage::fromData(data, format.toLatin1().constData());
    QVERIFY(!expected.isNull());
    QCOMPARE(ImageUtils::convertByteArray2Image(data, format), expected);
}

void ImageUtilsTest::refusesWhatIsNoPicture_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("text") << QByteArray("no picture");
    QTest::newRow("zeros") << QByteArray(10'000, '\0');
    QTest::newRow("signature alone") << QByteArray("\x89PNG\r\n\x1a\n");
    QTest::newRow("another signature alone") << QByteArray("GIF89a");
}

void ImageUtilsTest::refusesWhatIsNoPicture()
{
    QFETCH(QByteArray, data);
    for (char const* const format : {"png", "jpg", "jpeg", "gif", "", "bmp"}) {
        QVERIFY(ImageUtils::convertByteArray2Image(data, QLatin1String(format)).isNull());
    }
}

void ImageUtilsTest::survivesTruncationAnywhere_data()
{
    decodesAsQtDoes_data();
}

void ImageUtilsTest::survivesTruncationAnywhere()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, format);
    qsizetype const step = std::max<qsizetype>(1, data.size() / 200);
    for (qsizetype size = 0; size < data.size(); size += step) {
        QByteArray const part = data.left(size);
        MessageRecorder recorder;
        QImage const image = ImageUtils::convertByteArray2Image(part, format);
        QVERIFY(recorder.messages().filter(QStringLiteral("seek")).isEmpty());
        // Where the data ends early, Qt leaves lines of some formats as they come from memory.
        QCOMPARE(image.size(), QImage::fromData(part, format.toLatin1().constData()).size());
        QVERIFY(image.isNull() || image.size() == picture().size() || image.size() == QSize(3, 2));
    }
}

void ImageUtilsTest::survivesDamageAnywhere_data()
{
    decodesAsQtDoes_data();
}

void ImageUtilsTest::survivesDamageAnywhere()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, format);
    qsizetype const step = std::max<qsizetype>(1, data.size() / 100);
    for (qsizetype at = 0; at < data.size(); at += step) {
        for (char const bits : {'\x01', '\x80', '\xFF'}) {
            QByteArray damaged = data;
            damaged[at] = static_cast<char>(damaged[at] ^ bits);
            QImage const image = ImageUtils::convertByteArray2Image(damaged, format);
            // What could be decoded is in proportion to the data, whatever the header says now.
            QVERIFY(image.sizeInBytes() <= 17 * 1024 * 1024);
        }
    }
}

void ImageUtilsTest::refusesHugeClaims_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("format");
    QByteArray const png = encode(picture(), "png");
    QTest::newRow("png beyond every limit") << withSize(png, 0x7FFFFFFF, 0x7FFFFFFF) << "png";
    QTest::newRow("png of 60,000 by 60,000") << withSize(png, 60'000, 60'000) << "png";
    QTest::newRow("png below Qt's limit") << withSize(png, 8'000, 8'000) << "png";
    QTest::newRow("png of one line") << withSize(png, 60'000'000, 1) << "png";
    QTest::newRow("gif canvas beyond Qt's limit") << gif(65'535, 65'535) << "gif";
    QTest::newRow("gif canvas of 95 MB") << gif(5'000, 5'000) << "gif";
    QTest::newRow("gif canvas below Qt's limit") << gif(8'000, 8'000) << "gif";
    QTest::newRow("gif canvas of one column") << gif(100, 60'000) << "gif";
    QTest::newRow("gif canvas beyond its padded data")
        << gif(5'000, 5'000) + QByteArray(3'000, '\0') << "gif";
    QTest::newRow("ppm") << QByteArray("P6\n8000 8000\n255\nxxx") << "ppm";
    QTest::newRow("pbm") << QByteArray("P4\n60000 60000\nxxx") << "pbm";
    QByteArray const bmp = encode(picture(), "bmp");
    QTest::newRow("bmp") << bmp.left(18) +
                                QByteArray::fromHex("401f0000"
                                                    "401f0000") +
                                bmp.mid(26)
                         << "bmp";
    QTest::newRow("xbm") << QByteArray("#define a_width 30000\n#define a_height 30000\n"
                                       "static char a_bits[] = { 0x00 };\n")
                         << "xbm";
}

void ImageUtilsTest::refusesHugeClaims()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, format);
    long const before = peakMemory();
    QVERIFY(ImageUtils::convertByteArray2Image(data, format).isNull());
    QVERIFY(ImageUtils::convertByteArray2Image(data, QString()).isNull());
    QVERIFY(write(path(QStringLiteral("claim.") + format), data));
    QVERIFY(ImageUtils::getByteArrayFromPath(path(QStringLiteral("claim.") + format)).first.isEmpty());
    QVERIFY(!ImageUtils::saveImageFromByteArray(data, format, path(QStringLiteral("saved.png"))));
    QVERIFY2(peakMemory() - before < 64 * 1024, "memory grew with the claim");
}

void ImageUtilsTest::decodesLargePicturesThatAreThere()
{
    QImage plain(5'000, 4'000, QImage::Format_RGB32);
    plain.fill(Qt::darkGreen);
    for (char const* const format : {"png", "bmp", "jpg"}) {
        QImage const image =
            ImageUtils::convertByteArray2Image(encode(plain, format), QString::fromLatin1(format));
        QCOMPARE(image.size(), plain.size());
    }
    QImage bits(5'000, 5'000, QImage::Format_Mono);
    bits.fill(0);
    QCOMPARE(ImageUtils::convertByteArray2Image(encode(bits, "png"), QStringLiteral("png")).size(),
             bits.size());
    QCOMPARE(ImageUtils::convertByteArray2Image(gif(2'000, 2'000), QStringLiteral("gif")).size(),
             QSize(2'000, 2'000));
}

void ImageUtilsTest::decodesHonestPicturesAsQtDoes_data()
{
    QTest::addColumn<QByteArray>("data");
    QImage photo(4'000, 3'000, QImage::Format_RGB32);
    for (int y = 0; y < photo.height(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(photo.scanLine(y));
        for (int x = 0; x < photo.width(); ++x) {
            int const grain = (x * 7919 ^ y * 104729) >> 3 & 15;
            line[x] = qRgb((x >> 4) + grain, (y >> 4) + grain, (x + y) >> 5);
        }
    }
    QTest::newRow("jpeg of 12 megapixels") << encode(photo, "jpg");
    QTest::newRow("png of 12 megapixels") << encode(photo, "png");
    QBuffer scans;
    QImageWriter writer(&scans, "jpeg");
    writer.setProgressiveScanWrite(true);
    QVERIFY(writer.write(photo));
    QCOMPARE(scans.data().count("\xFF\xDA"), 10);
    QTest::newRow("jpeg in ten scans") << scans.data();

    // What a profile says ends before the padding.
    QByteArray profile = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
    for (quint32 i = 0; profile.size() < 100'000; ++i) {
        profile += Pictures::bigEndian(i * 2654435761U);
    }
    profile.replace(0, 4, Pictures::bigEndian(static_cast<quint32>(profile.size())));
    QTest::newRow("png with a profile of 100 KB") << Pictures::smallPng(
        Pictures::chunk("iCCP", QByteArray("Adobe\0\0", 7) + Pictures::deflated(profile)));
    QByteArray const jpg = encode(picture(), "jpg");
    QByteArray const head("ICC_PROFILE");
    QTest::newRow("jpeg with a profile of 100 KB")
        << jpg.left(2) + Pictures::segment(0xE2, head + QByteArray("\0\1\2", 3) + profile.left(60'000)) +
               Pictures::segment(0xE2, head + QByteArray("\0\2\2", 3) + profile.mid(60'000)) + jpg.mid(2);

    QByteArray const first = Pictures::chunk("IHDR", Pictures::bigEndian(8U) + Pictures::bigEndian(8U) +
                                                         QByteArray("\x08\0\0\0\0", 5));
    QByteArray const signature("\x89PNG\r\n\x1a\n");
    QByteArray const lines = Pictures::deflated(Pictures::repeated(QByteArray("\0abcdefgh", 9), 8));
    QTest::newRow("png with its data in single bytes") << [&] {
        QByteArray data = signature + first;
        for (char const byte : lines) {
            data += Pictures::chunk("IDAT", QByteArray(1, byte));
        }
        return data + Pictures::chunk("IEND", {});
    }();
    QTest::newRow("png with some data too many")
        << Pictures::png(8, 8, {}, Pictures::deflated(QByteArray(8 * 9 + 1'000, '\0')));
    QTest::newRow("png without its last checksum") << Pictures::smallPng({}).chopped(4);
    QTest::newRow("png with all that a decoder looks at") << Pictures::smallPng(
        Pictures::chunk("gAMA", Pictures::bigEndian(50'000U)) +
        Pictures::chunk("pHYs", Pictures::bigEndian(2'835U) + Pictures::bigEndian(2'835U) + '\1') +
        Pictures::chunk("oFFs", Pictures::bigEndian(3U) + Pictures::bigEndian(4U) + '\0') +
        Pictures::chunk("tRNS", QByteArray("\0a", 2)));

    QByteArray pixels;
    for (int i = 0; i < 300 * 200; ++i) {
        pixels += static_cast<char>(i % 251 * 7 % 251);
    }
    QByteArray const codes = Pictures::plainCodes(pixels);
    QTest::newRow("gif") << Pictures::gif(300, 200, {300, 200}, codes);
    QTest::newRow("interlaced gif") << Pictures::gif(300, 200, {300, 200, '\x40'}, codes);
    QTest::newRow("gif with a frame beyond its canvas") << Pictures::gif(200, 100, {300, 200}, codes);
    QTest::newRow("gif with some data too many") << Pictures::gif(300, 190, {300, 190}, codes);
    QTest::newRow("gif with bytes after its last code")
        << Pictures::gif(300, 200, {300, 200}, codes + QByteArray(1'000, 'x'));
    QTest::newRow("gif of long runs")
        << Pictures::gif(3'000, 2'000, {3'000, 2'000}, Pictures::longestRuns(5'000));

    QByteArray const png = encode(picture(), "png");
    QTest::newRow("icon of a png") << Pictures::icon(40, 30, static_cast<quint32>(png.size()), png);
    QTest::newRow("bmp in runs") << Pictures::bmp(8, 2, 8, 1, QByteArray("\x08\1\0\0\x08\2\0\1", 8));
    QTest::newRow("bmp with the old header") << Pictures::oldBmp();
    QTest::newRow("xbm after a comment") << "/* made by hand */\n" + encode(picture(), "xbm");
    QTest::newRow("pbm in letters") << QByteArray("P1\n# made by hand\n3 2\n1 0 1\n0 1 0\n");
}

void ImageUtilsTest::decodesHonestPicturesAsQtDoes()
{
    QFETCH(QByteArray, data);
    QImage const expected = QImage::fromData(data);
    QVERIFY(!expected.isNull());
    QImage const image = ImageUtils::convertByteArray2Image(data, QString());
    QCOMPARE(image, expected);
    QCOMPARE(image.colorSpace(), expected.colorSpace());
    QCOMPARE(image.offset(), expected.offset());
    QCOMPARE(image.dotsPerMeterX(), expected.dotsPerMeterX());
    QVERIFY(write(path(QStringLiteral("picture.bmp")), data));
    // What a written line is padded with is left to chance.
    QByteArray const loaded = ImageUtils::getByteArrayFromPath(path(QStringLiteral("picture.bmp"))).first;
    QCOMPARE(QImage::fromData(loaded), QImage::fromData(encode(expected, "bmp")));
}

void ImageUtilsTest::leavesTextsOut()
{
    QByteArray const data = Pictures::smallPng(Pictures::chunk("tEXt", QByteArray("Comment\0hello", 13)));
    QCOMPARE(QImage::fromData(data).text(), QStringLiteral("Comment: hello"));
    QCOMPARE(ImageUtils::convertByteArray2Image(data, QString()).text(), QString());
}

void ImageUtilsTest::encodes_data()
{
    QTest::addColumn<QString>("format");
    for (char const* const format : {"png", "jpg", "jpeg", "PNG", "bmp"}) {
        QTest::newRow(format) << QString::fromLatin1(format);
    }
}

void ImageUtilsTest::encodes()
{
    QFETCH(QString, format);
    QByteArray const data = ImageUtils::convertImage2ByteArray(picture(), format);
    QVERIFY(!data.isEmpty());
    QCOMPARE(data, encode(picture(), format.toLatin1().constData()));
    QCOMPARE(ImageUtils::convertByteArray2Image(data, format).size(), picture().size());
}

void ImageUtilsTest::encodesNothingUnwritable_data()
{
    QTest::addColumn<QImage>("image");
    QTest::addColumn<QString>("format");
    QTest::newRow("null picture") << QImage() << "png";
    QTest::newRow("gif is only read") << picture() << "gif";
    QTest::newRow("unknown format") << picture() << "nothing";
    QTest::newRow("no format") << picture() << "";
    QTest::newRow("too wide for jpeg") << QImage(70'000, 1, QImage::Format_RGB32) << "jpg";
}

void ImageUtilsTest::encodesNothingUnwritable()
{
    QFETCH(QImage, image);
    QFETCH(QString, format);
    QCOMPARE(ImageUtils::convertImage2ByteArray(image, format), QByteArray());
}

void ImageUtilsTest::loadsAndEncodesAgain_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("content");
    QTest::addColumn<QString>("format");
    QTest::newRow("png") << "a.png"
                         << "png"
                         << "png";
    QTest::newRow("several dots") << "a.b.png"
                                  << "png"
                                  << "png";
    QTest::newRow("leading dot") << ".png"
                                 << "png"
                                 << "png";
    QTest::newRow("placeholder") << "%1.png"
                                 << "png"
                                 << "png";
    QTest::newRow("upper case stays") << "a.PNG"
                                      << "png"
                                      << "PNG";
    QTest::newRow("the suffix decides what is written") << "a.bmp"
                                                        << "png"
                                                        << "bmp";
}

void ImageUtilsTest::loadsAndEncodesAgain()
{
    QFETCH(QString, name);
    QFETCH(QString, content);
    QFETCH(QString, format);
    QVERIFY(write(path(name), encode(picture(), content.toLatin1().constData())));
    auto const [bytes, found] = ImageUtils::getByteArrayFromPath(path(name));
    QCOMPARE(found, format);
    QCOMPARE(bytes, encode(QImage::fromData(encode(picture(), content.toLatin1().constData())),
                           format.toLatin1().constData()));
    QCOMPARE(QImage::fromData(bytes).convertToFormat(QImage::Format_RGB32), picture());
}

void ImageUtilsTest::loadsNothing_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("format");
    QTest::newRow("no path") << ""
                             << "";
    QTest::newRow("missing") << "missing.png"
                             << "";
    QTest::newRow("missing, with a picture under a longer name") << "longer"
                                                                 << "";
    QTest::newRow("no picture") << "text.png"
                                << "";
    QTest::newRow("no suffix") << "picture"
                               << "";
    QTest::newRow("a folder") << "folder.png"
                              << "";
    QTest::newRow("not written by Qt") << "picture.gif"
                                       << "gif";
    QTest::newRow("unknown suffix") << "picture.unknown"
                                    << "unknown";
}

void ImageUtilsTest::loadsNothing()
{
    QFETCH(QString, name);
    QFETCH(QString, format);
    for (char const* const file : {"picture", "picture.gif", "picture.unknown", "longer.png"}) {
        QVERIFY(write(path(QLatin1String(file)), encode(picture(), "png")));
    }
    QVERIFY(write(path(QStringLiteral("text.png")), "no picture"));
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("folder.png")));
    auto const [bytes, found] = ImageUtils::getByteArrayFromPath(name.isEmpty() ? QString() : path(name));
    QCOMPARE(bytes, QByteArray());
    QCOMPARE(found, format);
}

void ImageUtilsTest::loadingDoesNotWaitAtAPipe()
{
    QString const pipe = path(QStringLiteral("pipe.png"));
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QCOMPARE(ImageUtils::getByteArrayFromPath(pipe), (std::pair<QByteArray, QString>()));
    QVERIFY(!ImageUtils::saveImageFromByteArray(encode(picture(), "png"), QStringLiteral("png"), pipe));
}

void ImageUtilsTest::tellsTheFileFormat()
{
    for (char const* const name : {"a.png", "b.tar.GIF", ".jpg", "none", "%1.%2"}) {
        QVERIFY(write(path(QLatin1String(name)), "no picture"));
    }
    QCOMPARE(ImageUtils::getFileFormat(path(QStringLiteral("a.png"))), QStringLiteral("png"));
    QCOMPARE(ImageUtils::getFileFormat(path(QStringLiteral("b.tar.GIF"))), QStringLiteral("GIF"));
    QCOMPARE(ImageUtils::getFileFormat(path(QStringLiteral(".jpg"))), QStringLiteral("jpg"));
    QCOMPARE(ImageUtils::getFileFormat(path(QStringLiteral("%1.%2"))), QStringLiteral("%2"));
    QCOMPARE(ImageUtils::getFileFormat(path(QStringLiteral("none"))), QString());
    QCOMPARE(ImageUtils::getFileFormat(path(QStringLiteral("missing.png"))), QString());
    QCOMPARE(ImageUtils::getFileFormat(QString()), QString());
}

void ImageUtilsTest::saves_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("written");
    QTest::newRow("png") << "a.png" << QByteArray("png");
    QTest::newRow("upper-case suffix") << "a.BMP" << QByteArray("bmp");
    QTest::newRow("jpg") << "%1 a.b.jpg" << QByteArray("jpeg");
}

void ImageUtilsTest::saves()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, written);
    QByteArray const data = encode(picture(), "png");
    QVERIFY(write(path(name), "before"));
    QVERIFY(ImageUtils::saveImageFromByteArray(data, QStringLiteral("png"), path(name)));
    QImageReader reader(path(name));
    reader.setDecideFormatFromContent(true);
    QCOMPARE(reader.format(), written);
    QCOMPARE(reader.read().size(), picture().size());
    QCOMPARE(names(m_dir->path()), QSet<QString>{name});
}

void ImageUtilsTest::savesNothing_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("name");
    QByteArray const png = encode(picture(), "png");
    QTest::newRow("no picture") << QByteArray("no picture") << "kept.png";
    QTest::newRow("half a picture") << png.left(png.size() / 2) << "kept.png";
    QTest::newRow("format not written") << png << "kept.gif";
    QTest::newRow("unknown format") << png << "kept.unknown";
    QTest::newRow("no format") << png << "kept";
    QTest::newRow("no such folder") << png << "nowhere/a.png";
}

void ImageUtilsTest::savesNothing()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, name);
    for (char const* const file : {"kept.png", "kept.gif", "kept.unknown", "kept"}) {
        QVERIFY(write(path(QLatin1String(file)), "kept"));
    }
    QSet<QString> const before = names(m_dir->path());
    QVERIFY(!ImageUtils::saveImageFromByteArray(data, QStringLiteral("png"), path(name)));
    QVERIFY(!ImageUtils::saveImageFromByteArray(data, QStringLiteral("png"), QString()));
    QCOMPARE(names(m_dir->path()), before);
    for (QString const& file : before) {
        QCOMPARE(read(path(file)), QByteArray("kept"));
    }
}

void ImageUtilsTest::removesFiles()
{
    QVERIFY(ImageUtils::removeFile(path(QStringLiteral("a.png"))));
    QVERIFY(write(path(QStringLiteral("a.png")), "x"));
    QVERIFY(ImageUtils::removeFile(path(QStringLiteral("a.png"))));
    QVERIFY(!isThere(path(QStringLiteral("a.png"))));
    QVERIFY(!ImageUtils::removeFile(m_dir->path()));
}

void ImageUtilsTest::renamesFilesWithoutReplacing()
{
    QString const from = path(QStringLiteral("%1 from"));
    QString const to = path(QStringLiteral("%2 to"));
    QVERIFY(write(from, "content"));
    QVERIFY(ImageUtils::renameFile(from, to));
    QCOMPARE(names(m_dir->path()), QSet<QString>{QStringLiteral("%2 to")});
    QVERIFY(write(from, "second"));
    QVERIFY(!ImageUtils::renameFile(from, to));
    QCOMPARE(read(to), QByteArray("content"));
    QCOMPARE(read(from), QByteArray("second"));
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("folder")));
    QVERIFY(ImageUtils::renameFile(path(QStringLiteral("folder")), path(QStringLiteral("renamed"))));
    QVERIFY(QFileInfo(path(QStringLiteral("renamed"))).isDir());
}

void ImageUtilsTest::renameFileFails_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::newRow("missing") << "missing"
                             << "new";
    QTest::newRow("onto itself") << "file"
                                 << "file";
    QTest::newRow("onto a file") << "file"
                                 << "other";
    QTest::newRow("onto a folder") << "file"
                                   << "folder";
    QTest::newRow("onto a link that leads nowhere") << "file"
                                                    << "dangling";
    QTest::newRow("no such folder") << "file"
                                    << "nowhere/new";
    QTest::newRow("name too long") << "file" << QString(300, QLatin1Char('x'));
    QTest::newRow("embedded NUL") << "file" << QStringLiteral("new\0x");
}

void ImageUtilsTest::renameFileFails()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    QVERIFY(write(path(QStringLiteral("file")), "kept"));
    QVERIFY(write(path(QStringLiteral("other")), "kept"));
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("folder")));
    QVERIFY(TestFiles::link(path(QStringLiteral("nowhere-yet")), path(QStringLiteral("dangling"))));
    QSet<QString> const before = names(m_dir->path());
    QVERIFY(!ImageUtils::renameFile(path(from), path(to)));
    QVERIFY(!ImageUtils::renameFile(path(from), QString()));
    QVERIFY(!ImageUtils::renameFile(QString(), path(to)));
    QCOMPARE(names(m_dir->path()), before);
    QCOMPARE(read(path(QStringLiteral("file"))), QByteArray("kept"));
    QCOMPARE(read(path(QStringLiteral("other"))), QByteArray("kept"));
}

void ImageUtilsTest::renamesAcrossFileSystemsWithoutReplacing()
{
    QTemporaryDir const other(QStringLiteral("/dev/shm/spcore-test-XXXXXX"));
    QString const from = other.filePath(QStringLiteral("from"));
    QVERIFY(write(from, "content"));
    QVERIFY(write(path(QStringLiteral("taken")), "kept"));
    QVERIFY(!ImageUtils::renameFile(from, path(QStringLiteral("taken"))));
    QCOMPARE(read(path(QStringLiteral("taken"))), QByteArray("kept"));
    QVERIFY(ImageUtils::renameFile(from, path(QStringLiteral("new"))));
    QCOMPARE(read(path(QStringLiteral("new"))), QByteArray("content"));
    QVERIFY(!isThere(from));
}

void ImageUtilsTest::oneOfRacingRenamesWins()
{
    constexpr int callers = 8;
    for (int round = 0; round < 20; ++round) {
        QDir const folder(path(QString::number(round)));
        QVERIFY(folder.mkpath(QStringLiteral(".")));
        for (int i = 0; i < callers; ++i) {
            QVERIFY(write(folder.filePath(QString::number(i)), QByteArray::number(i)));
        }
        std::atomic<int> won = 0;
        std::vector<std::thread> threads;
        for (int i = 0; i < callers; ++i) {
            threads.emplace_back([&, i] {
                won += ImageUtils::renameFile(folder.filePath(QString::number(i)),
                                              folder.filePath(QStringLiteral("to")))
                           ? 1
                           : 0;
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        QCOMPARE(won.load(), 1);
        QCOMPARE(names(folder.path()).size(), callers);
    }
}

void ImageUtilsTest::acceptsFormats_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<bool>("valid");
    for (char const* const format : {"png", "jpg", "jpeg", "gif"}) {
        QTest::newRow(format) << QString::fromLatin1(format) << true;
    }
    for (char const* const format : {"PNG", "JPG", "Jpeg", "webp", "bmp", "", "png ", ".png", "pn"}) {
        QTest::addRow("not \"%s\"", format) << QString::fromLatin1(format) << false;
    }
    QTest::newRow("not png and more") << QStringLiteral("png\0x") << false;
}

void ImageUtilsTest::acceptsFormats()
{
    QFETCH(QString, format);
    QTEST(ImageUtils::isFormatValid(format), "valid");
}

void ImageUtilsTest::buildsFilePaths_data()
{
    QTest::addColumn<QString>("baseName");
    QTest::addColumn<QString>("mimeType");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("backupPath");
    QTest::addColumn<QString>("format");
    QTest::newRow("jpeg") << "avatar"
                          << "image/jpeg"
                          << "/d/avatar.jpeg"
                          << "/d/avatar_bk.jpeg"
                          << "jpeg";
    QTest::newRow("no type") << "avatar"
                             << ""
                             << "/d/avatar.png"
                             << "/d/avatar_bk.png"
                             << "png";
    QTest::newRow("one part") << "avatar"
                              << "image"
                              << "/d/avatar.png"
                              << "/d/avatar_bk.png"
                              << "png";
    QTest::newRow("one part that is a format") << "avatar"
                                               << "gif"
                                               << "/d/avatar.png"
                                               << "/d/avatar_bk.png"
                                               << "png";
    QTest::newRow("three parts") << "avatar"
                                 << "image/gif/x"
                                 << "/d/avatar.gif"
                                 << "/d/avatar_bk.gif"
                                 << "gif";
    QTest::newRow("empty first part") << "avatar"
                                      << "/jpg"
                                      << "/d/avatar.jpg"
                                      << "/d/avatar_bk.jpg"
                                      << "jpg";
    QTest::newRow("placeholders") << "%2%1"
                                  << "image/png"
                                  << "/d/%2%1.png"
                                  << "/d/%2%1_bk.png"
                                  << "png";
    QTest::newRow("dots and spaces") << "a b.c"
                                     << "image/png"
                                     << "/d/a b.c.png"
                                     << "/d/a b.c_bk.png"
                                     << "png";
}

void ImageUtilsTest::buildsFilePaths()
{
    QFETCH(QString, baseName);
    QFETCH(QString, mimeType);
    QString path;
    QString backupPath;
    QString format;
    QVERIFY(ImageUtils::buildFilePaths(baseName, mimeType, QStringLiteral("/d"), path, backupPath, format));
    QTEST(path, "path");
    QTEST(backupPath, "backupPath");
    QTEST(format, "format");
}

void ImageUtilsTest::buildFilePathsTakesTheNameAsItIs()
{
    for (char const* const name : {"avatar.png", "avatar_bk.png"}) {
        QVERIFY(write(path(QLatin1String(name)), "x"));
    }
    QVERIFY(QDir::setCurrent(m_dir->path()));
    QString file;
    QString backup;
    QString format;
    QVERIFY(
        ImageUtils::buildFilePaths(QStringLiteral("avatar"), QString(), m_dir->path(), file, backup, format));
    QCOMPARE(file, path(QStringLiteral("avatar.png")));
    QCOMPARE(backup, path(QStringLiteral("avatar_bk.png")));
    QDir::setCurrent(QDir::rootPath());
}

void ImageUtilsTest::buildFilePathsTakesOneTextTwice()
{
    QString folder = QStringLiteral("/d");
    QString backupPath;
    QString type = QStringLiteral("image/gif");
    QVERIFY(ImageUtils::buildFilePaths(QStringLiteral("avatar"), type, folder, folder, backupPath, type));
    QCOMPARE(folder, QStringLiteral("/d/avatar.gif"));
    QCOMPARE(backupPath, QStringLiteral("/d/avatar_bk.gif"));
    QCOMPARE(type, QStringLiteral("gif"));
}

void ImageUtilsTest::buildFilePathsLeavesPathsOfOtherFormats_data()
{
    QTest::addColumn<QString>("mimeType");
    QTest::addColumn<QString>("format");
    QTest::newRow("webp") << "image/webp"
                          << "webp";
    QTest::newRow("upper case") << "image/PNG"
                                << "PNG";
    QTest::newRow("empty second part") << "image/"
                                       << "";
    QTest::newRow("slash alone") << "/"
                                 << "";
    QTest::newRow("empty second of three") << "image//png"
                                           << "";
    QTest::newRow("with a parameter") << "image/png;q=1"
                                      << "png;q=1";
}

void ImageUtilsTest::buildFilePathsLeavesPathsOfOtherFormats()
{
    QFETCH(QString, mimeType);
    QString path = QStringLiteral("path");
    QString backupPath = QStringLiteral("backup");
    QString format = QStringLiteral("before");
    QVERIFY(!ImageUtils::buildFilePaths(QStringLiteral("avatar"), mimeType, QStringLiteral("/d"), path,
                                        backupPath, format));
    QTEST(format, "format");
    QCOMPARE(path, QStringLiteral("path"));
    QCOMPARE(backupPath, QStringLiteral("backup"));
}

int main(int argc, char** argv)
{
    return runTest<ImageUtilsTest, QGuiApplication>(argc, argv);
}

#include "ImageUtilsTest.moc"
