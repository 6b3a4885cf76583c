#pragma once

#include <QString>
#include <QStringList>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

/// The numbers of a format chunk's body.
struct WavFormat
{
    quint16 tag = 0; ///< what the samples are; of an extensible format, what it says inside
    quint16 channels = 0;
    quint32 rate = 0;
    quint32 bytesPerSecond = 0;
    quint16 frameSize = 0; ///< bytes of one sample of every channel
    quint16 bits = 0;

    /// Nothing when \a body is too short to be one.
    static std::optional<WavFormat> of(std::span<unsigned char const> body);

    /// "PCM, 2 channels, 44100 Hz, 16 bits".
    [[nodiscard]] QString text() const;

    /// The coding as ffprobe names it, "pcm_s16le"; "unknown" for others.
    [[nodiscard]] QString codecName() const;

    /// Whether a frame is one sample of every channel, and not a block of many that belong together.
    [[nodiscard]] bool isSampleBySample() const;
};

/// Where things lie in a WAV file, as its chunks say.
///
/// Reads more than WAVData does: any kind of chunk, with the pad byte after odd sizes, what follows the
/// samples, and RF64, whose sizes have 64 bits.
struct WavLayout
{
    QString problem; ///< why this is no WAV file, as Reason has it; then the rest is not to be used
    quint64 fileLength = 0;
    bool isRf64 = false;
    quint64 riffSize = 0;
    QStringList chunks;                ///< the names up to and including "data", fit to be shown
    std::vector<unsigned char> format; ///< the body of "fmt "
    std::vector<unsigned char>
        list; ///< the body of the last "LIST" before the samples, if it is of some size
    std::optional<quint32> factSamples;
    quint64 dataOffset = 0; ///< of the first sample
    quint64 dataSize = 0;
    bool tailIsSound = false; ///< whether the claimed samples end with the file, or whole chunks follow them
    QStringList chunksAfter;  ///< those whole chunks
    QString nameAfter;        ///< what the bytes after the claimed samples begin with, if it could be a name

    /// Whether both sizes agree with the file. Unlike the repair, this lets chunks and a pad byte follow the
    /// samples.
    [[nodiscard]] bool isIntact() const { return riffSize + 8 == fileLength && tailIsSound; }

    /// The samples that are there, whatever the header claims: all up to the end of the file, unless the
    /// claim is sound.
    [[nodiscard]] quint64 samplesLength() const { return tailIsSound ? dataSize : fileLength - dataOffset; }

    /// How many bytes after the claimed samples a repair would make samples of.
    [[nodiscard]] quint64 bytesAfter() const
    {
        quint64 const all = fileLength - dataOffset;
        return dataSize < all ? all - dataSize : 0;
    }

    /// The layout of the file at \a path, which is a regular one.
    static WavLayout read(QString const& path);
};

/// \a path as the library's audio functions take it.
std::filesystem::path nativePath(QString const& path);
