#include "wav.h"

#include "Riff_p.h"

#include <QtEndian>
#include <array>
#include <fstream>
#include <optional>
#include <system_error>

namespace {

using wav::RepairResult;
using wav::RepairStatus;

constexpr std::uint64_t riffSizeOffset = 4;

template <std::size_t size>
using Bytes = std::array<unsigned char, size>;

template <std::size_t size>
std::optional<Bytes<size>> readAt(std::istream& stream, std::uint64_t offset)
{
    Bytes<size> bytes;
    stream.seekg(static_cast<std::streamoff>(offset));
    return riff::read(stream, bytes.data(), size) == size ? std::optional(bytes) : std::nullopt;
}

std::optional<std::uint32_t> readSizeAt(std::istream& stream, std::uint64_t offset)
{
    auto const bytes = readAt<4>(stream, offset);
    return bytes ? std::optional(wav::byteArrayToUInt32LE(bytes->data())) : std::nullopt;
}

bool writeSizeAt(std::ostream& stream, std::uint64_t offset, std::uint32_t size)
{
    Bytes<4> bytes;
    wav::uInt32ToByteArrayLE(static_cast<int>(size), bytes.data());
    stream.seekp(static_cast<std::streamoff>(offset));
    stream.write(reinterpret_cast<char const*>(bytes.data()), bytes.size());
    // The bytes stay in the stream's buffer until here; only now does the disk answer.
    return static_cast<bool>(stream.flush());
}

/// The low 32 bits of the file's length, all that the header's fields can hold.
std::uint32_t lengthOf(std::istream& stream)
{
    stream.seekg(0, std::ios::end);
    return static_cast<std::uint32_t>(static_cast<std::streamoff>(stream.tellg()));
}

/// The offset of the first byte of the data chunk's body.
std::optional<std::uint32_t> findData(std::istream& stream)
{
    std::uint32_t const length = lengthOf(stream);
    stream.seekg(riff::fileHeaderLength);
    riff::ChunkWalk walk(stream, riff::PadByte::Expected);
    while (walk.next().isWhole && walk.chunk().offset <= length) {
        if (walk.chunk().id() == riff::dataId) {
            return static_cast<std::uint32_t>(walk.chunk().offset);
        }
    }
    return std::nullopt;
}

bool isWave(Bytes<riff::fileHeaderLength> const& header)
{
    return wav::byteArrayToUInt32BE(header.data()) == riff::riffId &&
           wav::byteArrayToUInt32BE(header.data() + 8) == riff::waveType;
}

RepairResult failure(RepairStatus status, QString const& message)
{
    return RepairResult{status, message};
}

RepairResult invalidFormat()
{
    return failure(RepairStatus::InvalidFile, QStringLiteral("Invalid source file format."));
}

RepairResult rewriteSizes(std::iostream& stream)
{
    std::optional<std::uint32_t> const dataOffset = findData(stream);
    if (!dataOffset) {
        return failure(RepairStatus::InvalidFile, QStringLiteral("Failed to find data chunk offset."));
    }
    std::uint32_t const length = lengthOf(stream);
    if (!writeSizeAt(stream, riffSizeOffset, length - 8)) {
        return failure(RepairStatus::WriteFailed, QStringLiteral("Failed to write RIFF chunk size."));
    }
    if (!writeSizeAt(stream, *dataOffset - 4, length - *dataOffset)) {
        return failure(RepairStatus::WriteFailed, QStringLiteral("Failed to write data chunk size."));
    }
    return RepairResult{RepairStatus::Repaired, QString()};
}

RepairResult repair(std::iostream& stream)
{
    std::uint32_t const length = lengthOf(stream);
    if (length < riff::fileHeaderLength) {
        return invalidFormat();
    }
    auto const header = readAt<riff::fileHeaderLength>(stream, 0);
    if (!header || !isWave(*header)) {
        return invalidFormat();
    }
    if (wav::byteArrayToUInt32LE(header->data() + riffSizeOffset) == length - 8) {
        std::optional<std::uint32_t> const dataOffset = findData(stream);
        std::optional<std::uint32_t> const dataSize =
            dataOffset ? readSizeAt(stream, *dataOffset - 4) : std::nullopt;
        if (!dataSize) {
            return invalidFormat();
        }
        if (*dataSize == length - *dataOffset) {
            return RepairResult{RepairStatus::NotNeeded, QString()};
        }
    }
    return rewriteSizes(stream);
}

} // namespace

std::uint32_t wav::byteArrayToUInt32LE(unsigned char const* bytes)
{
    return qFromLittleEndian<quint32>(bytes);
}

std::uint32_t wav::byteArrayToUInt32BE(unsigned char const* bytes)
{
    return qFromBigEndian<quint32>(bytes);
}

std::uint16_t wav::byteArrayToUInt16LE(unsigned char const* bytes)
{
    return qFromLittleEndian<quint16>(bytes);
}

std::uint16_t wav::byteArrayToUInt16BE(unsigned char const* bytes)
{
    return qFromBigEndian<quint16>(bytes);
}

std::int32_t wav::byteArrayToInt32LE(unsigned char const* bytes)
{
    return qFromLittleEndian<qint32>(bytes);
}

std::int32_t wav::byteArrayToInt32BE(unsigned char const* bytes)
{
    return qFromBigEndian<qint32>(bytes);
}

std::int16_t wav::byteArrayToInt16LE(unsigned char const* bytes)
{
    return qFromLittleEndian<qint16>(bytes);
}

std::int16_t wav::byteArrayToInt16BE(unsigned char const* bytes)
{
    return qFromBigEndian<qint16>(bytes);
}

void wav::uInt32ToByteArrayLE(int value, unsigned char* out)
{
    qToLittleEndian<qint32>(value, out);
}

wav::RepairResult wav::tryToRepairWavHeaderIfNeeded(std::filesystem::path const& path)
{
    namespace fs = std::filesystem;
    std::error_code ignored;
    fs::file_type const type = fs::status(path, ignored).type();
    if (type == fs::file_type::not_found || type == fs::file_type::none) {
        return failure(RepairStatus::FileNotFound, QStringLiteral("WAV file does not exist"));
    }
    // Only a regular file is opened: a pipe would block, and a device has no length.
    std::fstream stream;
    if (type == fs::file_type::regular) {
        stream.open(path, std::ios::in | std::ios::out | std::ios::binary);
    }
    if (!stream.is_open()) {
        return failure(RepairStatus::InvalidFile, QStringLiteral("Failed to open WAV file."));
    }
    return repair(stream);
}
