#include "Riff_p.h"

#include <algorithm>
#include <new>

namespace riff {

namespace {

constexpr std::size_t bodyStep = 0x10000;
constexpr std::uint64_t skippedByReading = 0x10000;

/// Steps over \a distance bytes. A short step reads on in the stream's buffer, which seeking would throw
/// away.
void skip(std::istream& stream, std::uint64_t distance)
{
    if (distance <= skippedByReading) {
        stream.ignore(static_cast<std::streamsize>(distance));
    } else {
        stream.seekg(static_cast<std::streamoff>(distance), std::ios::cur);
    }
}

void setFailed(std::istream& stream)
{
    try {
        stream.setstate(std::ios::failbit);
    } catch (std::ios_base::failure const&) {
        return; // as in read()
    }
}

} // namespace

Field readField(std::istream& stream)
{
    Field field = {};
    read(stream, field.data(), field.size());
    return field;
}

std::size_t read(std::istream& stream, unsigned char* out, std::size_t size)
{
    try {
        stream.read(reinterpret_cast<char*>(out), static_cast<std::streamsize>(size));
    } catch (std::ios_base::failure const&) {
        // The owner of the stream may have told it to throw. Its state says the same, and gcount() is right.
    }
    return static_cast<std::size_t>(stream.gcount());
}

Bytes readBody(std::istream& stream, std::uint32_t size)
{
    Bytes body;
    try {
        while (body.size() < size && stream) {
            std::size_t const filled = body.size();
            body.resize(filled + std::min<std::size_t>(size - filled, bodyStep));
            read(stream, body.data() + filled, body.size() - filled);
        }
    } catch (std::bad_alloc const&) {
        // The file decides how much is asked for, so this is a failed read and not the end of the program.
        setFailed(stream);
    }
    return body;
}

ChunkWalk::ChunkWalk(std::istream& stream, PadByte padByte)
    : m_stream(stream)
    , m_padByte(padByte)
{
}

ChunkWalk::ChunkWalk(std::istream& stream, PadByte padByte, unsigned char const* id)
    : ChunkWalk(stream, padByte)
{
    enter({id[0], id[1], id[2], id[3]});
}

Chunk const& ChunkWalk::next()
{
    if (end() > m_position) {
        skip(m_stream, end() - m_position);
    }
    enter(readField(m_stream));
    return m_chunk;
}

void ChunkWalk::enter(Field const& id)
{
    m_position = end() + chunkHeaderLength;
    m_chunk.idField = id;
    m_chunk.sizeField = readField(m_stream);
    m_chunk.offset = m_position;
    m_chunk.isWhole = !m_stream.fail();
    m_left = m_chunk.size();
    m_pad = m_padByte == PadByte::Expected ? m_left % 2 : 0;
}

void ChunkWalk::fail()
{
    setFailed(m_stream);
}

Bytes ChunkWalk::body(std::uint32_t most)
{
    std::uint32_t const size = std::min(m_left, most);
    m_position += size;
    m_left -= size;
    return readBody(m_stream, size);
}

} // namespace riff
