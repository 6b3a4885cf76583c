// Pictures put together from pieces: chunks with their checksums, segments with their lengths, frames of
// codes. What only changes bytes never gets past a checksum. Whatever comes out is decoded within two seconds
// of processor time; memory is what the fuzzer allows.

#include <files/ImageUtils.h>

#include <PictureGenerators.h>
#include <QImageReader>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace {

void ignoreMessage(QtMsgType, QMessageLogContext const&, QString const&) {}

constexpr qsizetype mostBytes = 1'000'000;

/// Takes what the input says off its front; zeros once it is empty.
class Input
{
public:
    explicit Input(QByteArrayView bytes)
        : m_rest(bytes)
    {
    }

    [[nodiscard]] bool isEmpty() const { return m_rest.isEmpty(); }

    quint8 byte()
    {
        QByteArray const taken = bytes(1);
        return taken.isEmpty() ? 0 : static_cast<quint8>(taken[0]);
    }

    quint16 number()
    {
        quint8 const high = byte();
        return static_cast<quint16>(high << 8 | byte());
    }

    QByteArray bytes(qsizetype most)
    {
        qsizetype const size = std::min(most, m_rest.size());
        QByteArray const taken = m_rest.first(size).toByteArray();
        m_rest = m_rest.sliced(size);
        return taken;
    }

    /// Bytes as they stand, their deflated form, or what inflates to very many.
    QByteArray data()
    {
        switch (byte() % 8) {
        case 0:
            return Pictures::deflated(bytes(byte()));
        case 1:
            return QByteArray("k\0\0", 3) + Pictures::deflated(QByteArray(number() * 100, 'x'));
        case 2:
            return QByteArray("k\0\0", 3) + Pictures::bomb(number());
        case 3:
            return Pictures::bomb(number());
        case 4:
            return QByteArray(number(), static_cast<char>(byte()));
        default:
            return bytes(byte());
        }
    }

private:
    QByteArrayView m_rest;
};

QByteArray repeatedPiece(QByteArray const& piece, Input& input)
{
    int const times = input.byte() % 4 == 0 ? 1 << input.byte() % 14 : 1;
    return piece.size() * times < mostBytes ? Pictures::repeated(piece, times) : piece;
}

QByteArray pngFrom(Input& input)
{
    static constexpr std::array types = {"IDAT", "PLTE", "tRNS", "gAMA", "cHRM", "sRGB",
                                         "iCCP", "pHYs", "oFFs", "sBIT", "tEXt", "zTXt",
                                         "iTXt", "sPLT", "abCd", "IHDR", "IEND", "eXIf"};
    QByteArray png =
        "\x89PNG\r\n\x1a\n" +
        Pictures::chunk("IHDR", Pictures::bigEndian(quint32(input.number())) +
                                    Pictures::bigEndian(quint32(input.number())) + input.bytes(5));
    while (!input.isEmpty() && png.size() < mostBytes) {
        char const* const type = types[input.byte() % types.size()];
        png += repeatedPiece(Pictures::chunk(type, input.data()), input);
    }
    return png + Pictures::chunk("IEND", {});
}

QByteArray jpegFrom(Input& input)
{
    QByteArray jpeg = "\xFF\xD8" + Pictures::segment(0xDB, '\0' + QByteArray(64, '\1'));
    QByteArray const oneCode = '\1' + QByteArray(16, '\0');
    jpeg += Pictures::segment(0xC4, '\0' + oneCode) + Pictures::segment(0xC4, '\x10' + oneCode);
    while (!input.isEmpty() && jpeg.size() < mostBytes) {
        QByteArray piece;
        switch (input.byte() % 4) {
        case 0:
            piece =
                Pictures::segment(static_cast<quint8>(0xC0 + input.byte() % 64), input.bytes(input.byte()));
            break;
        case 1: {
            quint8 const components = input.byte() % 2 == 0 ? 1 : 3;
            QByteArray frame = '\x08' + Pictures::bigEndian(input.number()) +
                               Pictures::bigEndian(input.number()) + static_cast<char>(components);
            for (int i = 1; i <= components; ++i) {
                frame += static_cast<char>(i) + input.bytes(1) + '\0';
            }
            piece = Pictures::segment(static_cast<quint8>(0xC0 + input.byte() % 3), frame);
            break;
        }
        case 2:
            piece = Pictures::scan(input.byte() % 64, input.byte() % 64);
            break;
        default:
            piece = input.data();
        }
        jpeg += repeatedPiece(piece, input);
    }
    return jpeg;
}

QByteArray gifFrom(Input& input)
{
    quint16 const width = input.number();
    quint16 const height = input.number();
    Pictures::GifFrame const frame{input.number(), input.number(), static_cast<char>(input.byte())};
    QByteArray const codes =
        input.byte() % 2 == 0 ? Pictures::longestRuns(16 * input.number()) : input.bytes(mostBytes);
    return Pictures::gif(width, height, frame, codes);
}

QByteArray iconFrom(Input& input)
{
    quint8 const width = input.byte();
    quint8 const height = input.byte();
    quint32 const size = input.number();
    bool const isPng = input.byte() % 2 == 0;
    QByteArray const bitmap =
        isPng ? pngFrom(input)
              : Pictures::bitmapHeader(input.number(), input.number(), input.byte(), input.byte()) +
                    input.bytes(mostBytes);
    return Pictures::icon(width, height, size, bitmap);
}

QByteArray bmpFrom(Input& input)
{
    qint32 const width = input.number();
    qint32 const height = input.number();
    quint16 const bits = static_cast<quint16>(1U << (input.byte() % 6U));
    quint32 const compression = input.byte() % 4;
    return Pictures::bmp(width, height, bits, compression, repeatedPiece(input.data(), input));
}

double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static QtMessageHandler const previous = qInstallMessageHandler(ignoreMessage);
    static_cast<void>(previous);
    // In megabytes: pictures of so many pixels take their time honestly.
    QImageReader::setAllocationLimit(32);
    static constexpr std::array makers = {pngFrom, jpegFrom, gifFrom, iconFrom, bmpFrom};
    Input input(QByteArrayView(reinterpret_cast<char const*>(data), static_cast<qsizetype>(size)));
    auto const make = makers[input.byte() % makers.size()];
    QByteArray const picture = make(input);
    if (picture.size() > mostBytes) {
        return 0;
    }
    double const start = processorSeconds();
    QImage const image = ImageUtils::convertByteArray2Image(picture, QString());
    if (processorSeconds() - start > 2 || image.sizeInBytes() > 32 * 1024 * 1024) {
        std::abort();
    }
    return 0;
}
