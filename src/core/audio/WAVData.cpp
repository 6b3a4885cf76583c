#include "WAVData.h"

#include "Riff_p.h"
#include "wav.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <system_error>
#include <utility>

namespace {

using riff::Bytes;
using riff::Field;

constexpr std::uint32_t listTypeLength = 4;
constexpr std::size_t copyBlock = 0x400000;

void write(std::ostream& stream, std::span<unsigned char const> bytes)
{
    try {
        stream.write(reinterpret_cast<char const*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    } catch (std::ios_base::failure const&) {
        return; // The caller told the stream to throw; its state says the same.
    }
}

void add(Field& sum, Field const& size)
{
    std::uint32_t const total = wav::byteArrayToUInt32LE(sum.data()) + wav::byteArrayToUInt32LE(size.data());
    wav::uInt32ToByteArrayLE(static_cast<int>(total), sum.data());
}

std::optional<std::uint16_t> formatTag(Bytes const& formatBody)
{
    return formatBody.size() < 2 ? std::nullopt : std::optional(wav::byteArrayToUInt16LE(formatBody.data()));
}

/// Opens the file at \a path if it is a regular one; opening a pipe would wait for its other end.
std::ifstream openSource(std::filesystem::path const& path)
{
    std::error_code ignored;
    std::ifstream stream;
    if (std::filesystem::is_regular_file(path, ignored)) {
        stream.open(path, std::ios::binary);
    }
    return stream;
}

std::ofstream openTarget(std::string const& path)
{
    std::error_code ignored;
    std::ofstream stream;
    if (!std::filesystem::is_fifo(path, ignored)) {
        stream.open(path, std::ios::binary);
    }
    return stream;
}

/// Closing writes what the buffer still holds, so only then does the state tell whether all was written.
bool closed(std::ofstream& stream)
{
    stream.close();
    return !stream.fail();
}

} // namespace

/// The chunk at which a walk stands, to be stored in the header's fields. Each function answers how many
/// bytes it adds to the header's length.
struct WAVData::FoundChunk
{
    WAVData& header;
    riff::ChunkWalk& walk;

    [[nodiscard]] unsigned int takeFormat() const
    {
        header.m_format = {walk.chunk().idField, walk.chunk().sizeField, walk.body()};
        return walk.chunk().size() + riff::chunkHeaderLength;
    }

    [[nodiscard]] unsigned int takeList() const
    {
        header.m_list = {walk.chunk().idField, walk.chunk().sizeField, {}, {}};
        Bytes const type = walk.body(listTypeLength);
        if (type.size() == listTypeLength) {
            std::ranges::copy(type, header.m_list.listType.begin());
            header.m_list.body = walk.body();
        } else {
            walk.fail();
        }
        return walk.chunk().size() + riff::chunkHeaderLength;
    }

    [[nodiscard]] unsigned int takeData() const
    {
        header.m_data = {walk.chunk().idField, walk.chunk().sizeField, {}};
        // Only the id is counted: callers know the header's length as ending before this chunk's size field.
        return static_cast<unsigned int>(walk.chunk().idField.size());
    }
};

WAVData::WAVData(std::filesystem::path path)
    : m_path(std::move(path))
{
    parseFile();
}

bool WAVData::parseFile()
{
    m_riff = {};
    m_format = {};
    m_data = {};
    m_list = {};
    m_headerLength = 0;
    std::ifstream stream = openSource(m_path);
    m_hasHeader = stream.is_open() && parseHeader(stream);
    return m_hasHeader;
}

bool WAVData::parseHeader(std::ifstream& stream)
{
    if (!parseHeaderInfo(stream)) {
        return false;
    }
    m_headerLength = riff::fileHeaderLength;
    return parseChunks(stream);
}

bool WAVData::parseChunks(std::ifstream& stream)
{
    riff::ChunkWalk walk(stream, riff::PadByte::None);
    for (FoundChunk chunk{*this, walk};;) {
        std::uint32_t added = 0;
        switch (walk.next().id()) {
        case riff::formatId:
            added = chunk.takeFormat();
            break;
        case riff::listId:
            added = chunk.takeList();
            break;
        case riff::dataId:
            return addToHeaderLength(chunk.takeData());
        default:
            return false;
        }
        if (!addToHeaderLength(added)) {
            return false;
        }
    }
}

/// Fails where the sum would not fit: no offset of a RIFF file is that large.
bool WAVData::addToHeaderLength(unsigned int length)
{
    if (length > std::numeric_limits<std::uint32_t>::max() - m_headerLength) {
        return false;
    }
    m_headerLength += length;
    return true;
}

bool WAVData::parseHeaderInfo(std::ifstream& stream)
{
    m_riff.id = riff::readField(stream);
    m_riff.size = riff::readField(stream);
    m_riff.formType = riff::readField(stream);
    return wav::byteArrayToUInt32BE(m_riff.id.data()) == riff::riffId &&
           wav::byteArrayToUInt32BE(m_riff.formType.data()) == riff::waveType;
}

unsigned int WAVData::parseHeaderFormat(unsigned char const* id, std::ifstream& stream)
{
    riff::ChunkWalk walk(stream, riff::PadByte::None, id);
    return FoundChunk{*this, walk}.takeFormat();
}

unsigned int WAVData::parseHeaderExtraParam(unsigned char const* id, std::ifstream& stream)
{
    riff::ChunkWalk walk(stream, riff::PadByte::None, id);
    return FoundChunk{*this, walk}.takeList();
}

unsigned int WAVData::parseHeaderData(unsigned char const* id, std::ifstream& stream)
{
    riff::ChunkWalk walk(stream, riff::PadByte::None, id);
    return FoundChunk{*this, walk}.takeData();
}

bool WAVData::isCompatible(WAVData const& other) const
{
    return formatTag(m_format.body) == formatTag(other.m_format.body);
}

bool WAVData::append(WAVData const& other)
{
    if (!isCompatible(other)) {
        return false;
    }
    // The sums wrap around as the fields do; a file of that length has no right ones.
    add(m_riff.size, other.m_data.size);
    add(m_data.size, other.m_data.size);
    return true;
}

void WAVData::writeHeaderToFile(std::ofstream& stream) const
{
    writeHeaderInfoToFile(stream);
    writeHeaderFormatToFile(stream);
    writeHeaderExtraParamToFile(stream);
    writeHeaderDataToFile(stream);
}

void WAVData::writeHeaderInfoToFile(std::ofstream& stream) const
{
    write(stream, m_riff.id);
    write(stream, m_riff.size);
    write(stream, m_riff.formType);
}

void WAVData::writeHeaderFormatToFile(std::ofstream& stream) const
{
    write(stream, m_format.id);
    write(stream, m_format.size);
    write(stream, m_format.body);
}

void WAVData::writeHeaderExtraParamToFile(std::ofstream& stream) const
{
    if (m_list.body.empty()) {
        return;
    }
    write(stream, m_list.id);
    write(stream, m_list.size);
    write(stream, m_list.listType);
    write(stream, m_list.body);
}

void WAVData::writeHeaderDataToFile(std::ofstream& stream) const
{
    write(stream, m_data.id);
    write(stream, m_data.size);
}

bool WAVData::writeHeaderToFile(std::string const& path) const
{
    std::ofstream stream = openTarget(path);
    if (!stream.is_open()) {
        return false;
    }
    writeHeaderToFile(stream);
    return closed(stream);
}

bool WAVData::writePayloadToFile(std::string const& path) const
{
    std::ofstream stream = openTarget(path);
    return stream.is_open() && writePayloadToFile(stream) && closed(stream);
}

bool WAVData::writePayloadToFile(std::ofstream& out) const
{
    std::ifstream in = openSource(m_path);
    if (!in.is_open()) {
        return false;
    }
    // Everything up to the end of the file, further chunks included: the claimed size of a recording that was
    // cut off cannot be trusted.
    in.seekg(m_headerLength);
    return writeBuffer(in, out);
}

bool WAVData::writeBuffer(std::ifstream& in, std::ofstream& out) const
{
    std::unique_ptr<unsigned char[]> const block(new (std::nothrow) unsigned char[copyBlock]);
    if (!block) {
        return false;
    }
    do {
        write(out, {block.get(), riff::read(in, block.get(), copyBlock)});
    } while (in && out);
    return true;
}

std::uint32_t WAVData::riffSize() const
{
    return wav::byteArrayToUInt32LE(m_riff.size.data());
}

std::uint32_t WAVData::dataSize() const
{
    return wav::byteArrayToUInt32LE(m_data.size.data());
}

std::optional<std::chrono::milliseconds> WAVData::duration() const
{
    constexpr std::size_t bytesPerSecondOffset = 8;
    if (!m_hasHeader || m_format.body.size() < bytesPerSecondOffset + sizeof(std::uint32_t)) {
        return std::nullopt;
    }
    std::uint32_t const bytesPerSecond = wav::byteArrayToUInt32LE(&m_format.body[bytesPerSecondOffset]);
    if (bytesPerSecond == 0) {
        return std::nullopt;
    }
    return std::chrono::milliseconds(std::int64_t(dataSize()) * 1000 / bytesPerSecond);
}
