// Any bytes as a picture, under every accepted format: the first byte chooses, the rest is the data. What is
// decoded can be encoded and decoded again at the same size.

#include <files/ImageUtils.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

void ignoreMessage(QtMsgType, QMessageLogContext const&, QString const&) {}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static QtMessageHandler const previous = qInstallMessageHandler(ignoreMessage);
    static_cast<void>(previous);
    if (size == 0) {
        return 0;
    }
    static char const* const formats[] = {"png", "jpg", "jpeg", "gif", "", "bmp", "PNG", "no format"};
    QString const format = QString::fromLatin1(formats[data[0] % std::size(formats)]);
    QByteArray const bytes(reinterpret_cast<char const*>(data + 1), static_cast<qsizetype>(size - 1));
    QImage const image = ImageUtils::convertByteArray2Image(bytes, format);
    constexpr qsizetype smallEnough = 64 * 64 * 4;
    if (!image.isNull() && image.sizeInBytes() <= smallEnough) {
        QByteArray const again = ImageUtils::convertImage2ByteArray(image, QStringLiteral("png"));
        require(!again.isEmpty());
        require(ImageUtils::convertByteArray2Image(again, QStringLiteral("png")).size() == image.size());
    }
    return 0;
}
