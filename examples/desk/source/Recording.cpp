#include "Recording.h"

#include <audio/WAVData.h>
#include <audio/wav.h>

#include <QFile>
#include <chrono>

using namespace std::chrono_literals;

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
    auto const duration = WAVData(path().toStdString()).duration().value_or(0ms);
    return static_cast<int>(duration / 1s);
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
