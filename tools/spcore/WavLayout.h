#pragma once

#include <QString>
#include <QStringList>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

/// Where things lie in a WAV file, as its chunks say.
///
/// Reads more than WAVData does: any kind of chunk, with the pad byte after odd sizes, and what follows the
/// samples.
struct WavLayout
{
    quint64 fileLength = 0;
    quint32 riffSize = 0;
    QStringList chunks;                ///< the names up to and including "data", fit to be shown
    std::vector<unsigned char> format; ///< the body of "fmt "
    quint64 dataOffset = 0;            ///< of the first sample
    quint32 dataSize = 0;
    bool tailIsSound = false; ///< whether the claimed samples end with the file, or whole chunks follow them

    /// Whether both sizes agree with the file. Unlike the repair, this lets chunks and a pad byte follow the
    /// samples.
    [[nodiscard]] bool isIntact() const { return riffSize + quint64(8) == fileLength && tailIsSound; }

    /// The samples that are there, whatever the header claims: all up to the end of the file, unless the
    /// claim is sound.
    [[nodiscard]] quint64 samplesLength() const { return tailIsSound ? dataSize : fileLength - dataOffset; }

    /// The layout of the file at \a path; nothing when it cannot be read or has no data chunk.
    static std::optional<WavLayout> read(QString const& path);
};

/// The numbers of a format chunk's body.
struct WavFormat
{
    quint16 tag = 0;
    quint16 channels = 0;
    quint32 rate = 0;
    quint32 bytesPerSecond = 0;
    quint16 frameSize = 0; ///< bytes of one sample of every channel
    quint16 bits = 0;

    /// Nothing when \a body is too short to be one.
    static std::optional<WavFormat> of(std::span<unsigned char const> body);

    /// "PCM, 2 channels, 44100 Hz, 16 bits".
    [[nodiscard]] QString text() const;
};

/// \a path as the library's audio functions take it.
std::filesystem::path nativePath(QString const& path);
