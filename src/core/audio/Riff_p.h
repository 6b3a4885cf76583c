#pragma once

#include <cstdint>

/// What every RIFF/WAVE file begins with, and how long the pieces are.
namespace riff {

/// Chunk ids and the form type as big-endian numbers, see wav::byteArrayToUInt32BE().
inline constexpr std::uint32_t riffId = 0x52494646;   // "RIFF"
inline constexpr std::uint32_t waveType = 0x57415645; // "WAVE"
inline constexpr std::uint32_t formatId = 0x666D7420; // "fmt "
inline constexpr std::uint32_t listId = 0x4C495354;   // "LIST"
inline constexpr std::uint32_t dataId = 0x64617461;   // "data"

inline constexpr std::uint32_t fileHeaderLength = 12; ///< "RIFF", size, "WAVE"
inline constexpr std::uint32_t chunkHeaderLength = 8; ///< id, size

} // namespace riff
