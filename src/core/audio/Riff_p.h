#pragma once

#include <QtEndian>
#include <array>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <limits>
#include <vector>

/// Reading RIFF/WAVE files from chunk to chunk.
namespace riff {

/// Chunk ids and the form type as big-endian numbers, see wav::byteArrayToUInt32BE().
inline constexpr std::uint32_t riffId = 0x52494646;   // "RIFF"
inline constexpr std::uint32_t waveType = 0x57415645; // "WAVE"
inline constexpr std::uint32_t formatId = 0x666D7420; // "fmt "
inline constexpr std::uint32_t listId = 0x4C495354;   // "LIST"
inline constexpr std::uint32_t dataId = 0x64617461;   // "data"

inline constexpr std::uint32_t fileHeaderLength = 12; ///< "RIFF", size, "WAVE"
inline constexpr std::uint32_t chunkHeaderLength = 8; ///< id, size

using Field = std::array<unsigned char, 4>;
using Bytes = std::vector<unsigned char>;

/// Reads up to \a size bytes to \a out and answers how many the stream had; the stream's state tells what was
/// missing. Nothing is thrown, even by a stream that its owner told to throw.
std::size_t read(std::istream& stream, unsigned char* out, std::size_t size);

/// The next \a size bytes. What the stream does not have is missing or, up to 64 KiB of it, zeroes: the
/// vector grows with what comes and not with what a file claims. Where there is no memory for them the result
/// is shorter and the stream fails, so that nobody takes the rest of the body for the next chunk.
Bytes readBody(std::istream& stream, std::uint32_t size);

/// The next four bytes; those that the stream does not have are 0, so that a cut id is never the one that
/// came before.
Field readField(std::istream& stream);

/// A chunk's header.
struct Chunk
{
    Field idField = {};
    Field sizeField = {};
    std::uint64_t offset = 0; ///< of the body's first byte, from the beginning of the file
    bool isWhole = false;     ///< whether the file has all of the header

    [[nodiscard]] std::uint32_t id() const { return qFromBigEndian<quint32>(idField.data()); }

    /// What the chunk claims to hold.
    [[nodiscard]] std::uint32_t size() const { return qFromLittleEndian<quint32>(sizeField.data()); }
};

/// Whether a chunk of odd size is followed by a byte that belongs to none.
enum class PadByte {
    Expected, ///< as files have it
    None,     ///< as WAVData reads them, whose callers know the lengths so
};

/// Steps through the chunks of a file.
///
/// Offsets count in 64 bits: in 32 a claim could lead back to where the walk has been, and it would not end.
/// A walk takes time in proportion to the number of chunks and to what is read of their bodies.
class ChunkWalk
{
public:
    /// \a stream stands at the first chunk, just after the header of the file.
    ChunkWalk(std::istream& stream, PadByte padByte);

    /// A walk that begins at a chunk whose four bytes of \a id have been read from \a stream already.
    ChunkWalk(std::istream& stream, PadByte padByte, unsigned char const* id);

    /// Steps over what is left of the current chunk and reads the header of the next.
    Chunk const& next();

    /// The current chunk; all of it is 0 before the first next().
    [[nodiscard]] Chunk const& chunk() const { return m_chunk; }

    /// The next bytes of the current chunk's body, \a most of them or all that are left, read by readBody().
    Bytes body(std::uint32_t most = std::numeric_limits<std::uint32_t>::max());

    /// Ends the walk at a chunk that makes no sense: puts the stream into a failed state.
    void fail();

    /// The offset at which the next chunk begins, if there is one.
    [[nodiscard]] std::uint64_t end() const { return m_position + m_left + m_pad; }

private:
    void enter(Field const& id);

    std::istream& m_stream;
    PadByte m_padByte;
    Chunk m_chunk;
    std::uint64_t m_position = fileHeaderLength;
    std::uint32_t m_left = 0; ///< of the current chunk's body
    std::uint32_t m_pad = 0;  ///< what follows the body
};

} // namespace riff
