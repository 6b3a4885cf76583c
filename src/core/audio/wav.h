#pragma once

#include <softphonecore_export.h>

#include <QString>
#include <cstdint>
#include <filesystem>

/// Bytes and headers of RIFF/WAVE files.
///
/// WAVData holds one file's header in memory; here are the readers of its numbers, and the repair of headers
/// that a recorder could not finish:
///
/// \code
/// wav::RepairResult const result = wav::tryToRepairWavHeaderIfNeeded("recording.wav");
/// bool const playable = result.message.isEmpty();
/// \endcode
///
/// Nothing is thrown. Any thread, one file on one thread at a time.
namespace wav {

/// \name Numbers in raw bytes
/// Each reads as many bytes from \a bytes as its result has; the caller makes sure that they are there. The
/// big-endian readers serve the chunk ids: "RIFF" is 0x52494646.
/// @{

/// The unsigned little-endian 32-bit number at \a bytes.
[[nodiscard]] SOFTPHONECORE_EXPORT std::uint32_t byteArrayToUInt32LE(unsigned char const* bytes);
/// The unsigned big-endian 32-bit number at \a bytes.
[[nodiscard]] SOFTPHONECORE_EXPORT std::uint32_t byteArrayToUInt32BE(unsigned char const* bytes);
/// The unsigned little-endian 16-bit number at \a bytes.
[[nodiscard]] SOFTPHONECORE_EXPORT std::uint16_t byteArrayToUInt16LE(unsigned char const* bytes);
/// The unsigned big-endian 16-bit number at \a bytes.
[[nodiscard]] SOFTPHONECORE_EXPORT std::uint16_t byteArrayToUInt16BE(unsigned char const* bytes);
/// The signed little-endian 32-bit number at \a bytes.
[[nodiscard]] SOFTPHONECORE_EXPORT std::int32_t byteArrayToInt32LE(unsigned char const* bytes);
/// The signed big-endian 32-bit number at \a bytes.
[[nodiscard]] SOFTPHONECORE_EXPORT std::int32_t byteArrayToInt32BE(unsigned char const* bytes);
/// The signed little-endian 16-bit number at \a bytes.
[[nodiscard]] SOFTPHONECORE_EXPORT std::int16_t byteArrayToInt16LE(unsigned char const* bytes);
/// The signed big-endian 16-bit number at \a bytes.
[[nodiscard]] SOFTPHONECORE_EXPORT std::int16_t byteArrayToInt16BE(unsigned char const* bytes);
/// @}

/// Writes \a value to the four bytes at \a out, low byte first. An unsigned value is passed as the int of the
/// same bits.
SOFTPHONECORE_EXPORT void uInt32ToByteArrayLE(int value, unsigned char* out);

/// How a repair ended.
enum class RepairStatus : int {
    NotNeeded = 0,    ///< both sizes were right; nothing was written
    Repaired = 1,     ///< both sizes were rewritten
    WriteFailed = 2,  ///< a size could not be written
    InvalidFile = 3,  ///< the file could not be opened, or is no WAV file
    FileNotFound = 4, ///< there is no such file
};

/// How a repair ended, and what went wrong.
struct RepairResult
{
    /// How it ended.
    RepairStatus status = RepairStatus::NotNeeded;
    /// One fixed English sentence for each thing that can go wrong; empty for NotNeeded and Repaired.
    QString message;
};

/// Makes the RIFF size and the data size of the WAV file at \a path fit its length, as they do not after a
/// recorder was killed.
///
/// Walks from chunk to chunk, stepping over the pad byte after odd sizes, and never looks for names among the
/// samples. Only the eight bytes of the two sizes are ever written, and those only when one of them is wrong;
/// a file that is right is left alone, its modification time included. Everything from the data chunk's
/// first byte to the end of the file counts as samples; chunks or a pad byte after the samples become part
/// of them. The samples themselves are not touched, so a repair that was interrupted between its two
/// writes is completed by the next. Lengths count modulo 4 GiB, as the fields do.
///
/// \param path  followed when it is a symbolic link
/// \return the status, and with it as message:
///   - InvalidFile: "Failed to open WAV file." when the file cannot be opened for reading and writing or is
///     no regular file (a pipe would block, a device has no end), "Invalid source file format." when it is no
///     WAV file or, with a right RIFF size, has no data chunk, "Failed to find data chunk offset." when it
///     has no data chunk and a wrong RIFF size
///   - WriteFailed: "Failed to write RIFF chunk size." when nothing was written, "Failed to write data chunk
///     size." when the RIFF size already was
///   - FileNotFound: "WAV file does not exist", also when the path cannot be examined at all
///
/// Reads no samples; time grows with the number of chunks before the data chunk.
SOFTPHONECORE_EXPORT RepairResult tryToRepairWavHeaderIfNeeded(std::filesystem::path const& path);

} // namespace wav
