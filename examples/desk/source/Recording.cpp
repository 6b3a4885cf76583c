#include "Recording.h"

#include <audio/WAVData.h>
#include <audio/wav.h>

#include <QFile>

namespace {

constexpr int rate = 8'000; // samples and, at one byte each, bytes a second
constexpr int length = 154; // s

} // namespace

Recording::Recording(QObject* parent)
    : QObject(parent)
{
    QByteArray const unknown(4, '\0');
    QByteArray const format("\x10\0\0\0\x01\0\x01\0\x40\x1f\0\0\x40\x1f\0\0\x01\0\x08\0", 20);
    QFile file(path());
    if (file.open(QIODevice::WriteOnly)) {
        file.write("RIFF" + unknown + "WAVEfmt " + format + "data" + unknown);
        file.write(QByteArray(length * rate, '\x80'));
    }
}

int Recording::seconds() const
{
    WAVData const header(path().toStdString());
    constexpr std::size_t rateOffset = 8;
    std::vector<unsigned char> const& format = header.formatBody();
    if (!header.hasHeader() || header.dataSize() == 0 || format.size() < rateOffset + 4) {
        return -1;
    }
    std::uint32_t const bytesPerSecond = wav::byteArrayToUInt32LE(&format[rateOffset]);
    return bytesPerSecond == 0 ? -1 : static_cast<int>(header.dataSize() / bytesPerSecond);
}

void Recording::repair()
{
    wav::tryToRepairWavHeaderIfNeeded(path().toStdString());
    Q_EMIT changed();
}

QString Recording::path() const
{
    return m_folder.filePath(QStringLiteral("recording.wav"));
}
