// Decoding a picture, which is looked through first, beside Qt's decoder alone.

#include <files/ImageUtils.h>

#include <QBuffer>
#include <QImage>
#include <benchmark/benchmark.h>

namespace {

QImage photo(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            int const grain = (x * 7919 ^ y * 104729) >> 3 & 15;
            image.setPixel(x, y, qRgb((x >> 4) + grain, (y >> 4) + grain, (x + y) >> 5));
        }
    }
    return image;
}

QByteArray encoded(QImage const& image, char const* format)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return buffer.data();
}

template <typename Decode>
void measure(benchmark::State& state, QByteArray const& data, Decode decode)
{
    for (auto _ : state) {
        QImage image = decode(data);
        if (image.isNull()) {
            state.SkipWithError("nothing is decoded");
        }
        benchmark::DoNotOptimize(image);
    }
    state.SetBytesProcessed(state.iterations() * data.size());
}

[[maybe_unused]] bool const registered = [] {
    struct Picture
    {
        std::string name;
        QByteArray data;
    };
    for (Picture const& picture :
         {Picture{"decode a PNG of 128 × 128", encoded(photo(128, 128), "png")},
          Picture{"decode a JPEG of 128 × 128", encoded(photo(128, 128), "jpg")},
          Picture{"decode a PNG of 12 megapixels", encoded(photo(4000, 3000), "png")},
          Picture{"decode a JPEG of 12 megapixels", encoded(photo(4000, 3000), "jpg")}}) {
        benchmark::RegisterBenchmark((picture.name + "|ours").c_str(), [picture](auto& state) {
            measure(state, picture.data, [](QByteArray const& data) {
                return ImageUtils::convertByteArray2Image(data, QString());
            });
        });
        benchmark::RegisterBenchmark((picture.name + "|`QImage::fromData`").c_str(), [picture](auto& state) {
            measure(state, picture.data, [](QByteArray const& data) { return QImage::fromData(data); });
        });
    }
    return true;
}();

} // namespace
