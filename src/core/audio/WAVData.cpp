#include "WAVData.h"

#include "../Boundary_p.h"
#include "Riff_p.h"
#include "wav.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <optional>
#include <system_error>
#include <utility>

namespace {

using Bytes = std::vector<unsigned char>;
using Field = std::array<unsigned char, 4>;

constexpr std::uint32_t listTypeLength = 4;
constexpr std::size_t bodyStep = 0x10000;
constexpr std::size_t copyBlock = 0x400000;

/// The next four bytes; those that the stream does not have are 0, so that a cut id is never one that came
/// before.
Field readField(std::istream& stream)
{
    Field field = {};
    stream.read(reinterpret_cast<char*>(field.data()), field.size());
    return field;
}

/// The next \a size bytes. The vector grows with what the stream gives, whatever \a size claims. Without
/// memory for them the stream fails, so that the rest of the body is not taken for the next chunk.
Bytes readBody(std::istream& stream, std::uint32_t size)
{
    Bytes body;
    bool const hasRoom = guarded([&] {
        while (body.size() < size && stream) {
            std::size_t const filled = body.size();
            body.resize(filled + std::min<std::size_t>(size - filled, bodyStep));
            stream.read(reinterpret_cast<char*>(body.data() + filled),
                        static_cast<std::streamsize>(body.size() - filled));
        }
        return true;
    });
    if (!hasRoom) {
        stream.setstate(std::ios::failbit);
    }
    return body;
}

void write(std::ostream& stream, Field const& field)
{
    stream.write(reinterpret_cast<char const*>(field.data()), static_cast<std::streamsize>(field.size()));
}

void write(std::ostream& stream, Bytes const& bytes)
{
    stream.write(reinterpret_cast<char const*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
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
    m_hasHeader = guarded([&] {
        std::ifstream stream = openSource(m_path);
        return stream.is_open() && parseHeader(stream);
    });
    return m_hasHeader;
}

bool WAVData::parseHeader(std::ifstream& stream)
{
    return guarded([&] {
        if (!parseHeaderInfo(stream)) {
            return false;
        }
        m_headerLength = riff::fileHeaderLength;
        return parseChunks(stream);
    });
}

bool WAVData::parseChunks(std::ifstream& stream)
{
    for (;;) {
        Field const id = readField(stream);
        switch (wav::byteArrayToUInt32BE(id.data())) {
        case riff::formatId:
            if (!addToHeaderLength(parseHeaderFormat(id.data(), stream))) {
                return false;
            }
            break;
        case riff::listId:
            if (!addToHeaderLength(parseHeaderExtraParam(id.data(), stream))) {
                return false;
            }
            break;
        case riff::dataId:
            return addToHeaderLength(parseHeaderData(id.data(), stream));
        default:
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
    return guarded([&] {
        m_riff.id = readField(stream);
        m_riff.size = readField(stream);
        m_riff.formType = readField(stream);
        return wav::byteArrayToUInt32BE(m_riff.id.data()) == riff::riffId &&
               wav::byteArrayToUInt32BE(m_riff.formType.data()) == riff::waveType;
    });
}

unsigned int WAVData::parseHeaderFormat(unsigned char const* id, std::ifstream& stream)
{
    return guarded([&] {
        std::copy_n(id, m_format.id.size(), m_format.id.begin());
        m_format.size = readField(stream);
        std::uint32_t const size = wav::byteArrayToUInt32LE(m_format.size.data());
        m_format.body = readBody(stream, size);
        return size + riff::chunkHeaderLength;
    });
}

unsigned int WAVData::parseHeaderExtraParam(unsigned char const* id, std::ifstream& stream)
{
    return guarded([&] {
        std::copy_n(id, m_list.id.size(), m_list.id.begin());
        m_list.size = readField(stream);
        m_list.listType = readField(stream);
        std::uint32_t const size = wav::byteArrayToUInt32LE(m_list.size.data());
        if (size < listTypeLength) {
            m_list.body.clear();
            stream.setstate(std::ios::failbit);
        } else {
            m_list.body = readBody(stream, size - listTypeLength);
        }
        return size + riff::chunkHeaderLength;
    });
}

unsigned int WAVData::parseHeaderData(unsigned char const* id, std::ifstream& stream)
{
    return guarded([&] {
        std::copy_n(id, m_data.id.size(), m_data.id.begin());
        m_data.size = readField(stream);
        return static_cast<unsigned int>(m_data.id.size());
    });
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
    guarded([&] {
        write(stream, m_riff.id);
        write(stream, m_riff.size);
        write(stream, m_riff.formType);
    });
}

void WAVData::writeHeaderFormatToFile(std::ofstream& stream) const
{
    guarded([&] {
        write(stream, m_format.id);
        write(stream, m_format.size);
        write(stream, m_format.body);
    });
}

void WAVData::writeHeaderExtraParamToFile(std::ofstream& stream) const
{
    if (m_list.body.empty()) {
        return;
    }
    guarded([&] {
        write(stream, m_list.id);
        write(stream, m_list.size);
        write(stream, m_list.listType);
        write(stream, m_list.body);
    });
}

void WAVData::writeHeaderDataToFile(std::ofstream& stream) const
{
    guarded([&] {
        write(stream, m_data.id);
        write(stream, m_data.size);
    });
}

bool WAVData::writeHeaderToFile(std::string const& path) const
{
    return guarded([&] {
        std::ofstream stream = openTarget(path);
        if (!stream.is_open()) {
            return false;
        }
        writeHeaderToFile(stream);
        return closed(stream);
    });
}

bool WAVData::writePayloadToFile(std::string const& path) const
{
    return guarded([&] {
        std::ofstream stream = openTarget(path);
        return stream.is_open() && writePayloadToFile(stream) && closed(stream);
    });
}

bool WAVData::writePayloadToFile(std::ofstream& out) const
{
    return guarded([&] {
        std::ifstream in = openSource(m_path);
        if (!in.is_open()) {
            return false;
        }
        in.seekg(m_headerLength);
        return writeBuffer(in, out);
    });
}

bool WAVData::writeBuffer(std::ifstream& in, std::ofstream& out) const
{
    return guarded([&] {
        std::vector<char> block(copyBlock);
        do {
            in.read(block.data(), static_cast<std::streamsize>(block.size()));
            out.write(block.data(), in.gcount());
        } while (in && out);
        return true;
    });
}

std::uint32_t WAVData::riffSize() const
{
    return wav::byteArrayToUInt32LE(m_riff.size.data());
}

std::uint32_t WAVData::dataSize() const
{
    return wav::byteArrayToUInt32LE(m_data.size.data());
}
