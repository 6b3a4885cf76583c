#pragma once

#include <softphonecore_export.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

/// The header of one RIFF/WAVE file: read from it, compared, extended, and written out with the samples.
///
/// Meant for joining recordings. The first file's header takes in the sizes of the others with append() and
/// is written to the target; the samples of every file follow:
///
/// \code
/// WAVData first("a.wav");
/// WAVData second("b.wav");
/// if (first.hasHeader() && second.hasHeader() && first.append(second)) {
///     std::ofstream out("joined.wav", std::ios::binary);
///     first.writeHeaderToFile(out);
///     for (WAVData const& part : {first, second}) {
///         std::ifstream in(part.path(), std::ios::binary);
///         in.seekg(std::streamoff(part.headerLength()) + 4);
///         part.writeBuffer(in, out);
///     }
/// }
/// \endcode
///
/// The 4 is needed because headerLength() ends before the data chunk's size field, which
/// writePayloadToFile() therefore copies as well; see there. Everything up to the end of each file is copied,
/// so the example is for files that end with their samples, as those of a recorder do.
///
/// The chunks read are "fmt " and "LIST" in any order and number, up to the first other one, which must be
/// "data". A chunk of odd size is taken to be followed by the next at once, without a pad byte. Sizes in a
/// file are its claims: they cost no memory beyond what the file really holds.
///
/// Nothing is thrown. One object belongs to one thread at a time.
class SOFTPHONECORE_EXPORT WAVData
{
public:
    /// Reads the header of the file at \a path; hasHeader() tells whether that went well.
    explicit WAVData(std::filesystem::path path);

    /// Reads the header again; what was read before is forgotten.
    ///
    /// \return the result of parseHeader(); false when the file cannot be opened or is no regular file (a
    ///         pipe would block)
    bool parseFile();

    /// Reads a header from \a stream, which stands at its first byte, up to and including the data chunk's
    /// size field.
    ///
    /// \return whether that is a RIFF/WAVE header whose chunks before "data" are all "fmt " or "LIST". After
    ///         false the fields hold what was read until then. A chunk that is repeated replaces the earlier
    ///         one. A data size that is cut short counts as read, its missing bytes 0.
    bool parseHeader(std::ifstream& stream);

    /// Reads the 12 bytes that begin the file; whether they are those of RIFF/WAVE.
    bool parseHeaderInfo(std::ifstream& stream);

    /// Reads size and body of the format chunk whose four bytes of \a id were just read.
    ///
    /// \return the length that the chunk claims to have: its size + 8, modulo 2^32. A body that the file
    ///         cuts short keeps what was read, followed by at most 64 KiB of zeroes. Without memory for all
    ///         of it the stream is put into a failed state, so that the parse ends there.
    unsigned int parseHeaderFormat(unsigned char const* id, std::ifstream& stream);

    /// Reads size, list type and body of the "LIST" chunk whose four bytes of \a id were just read.
    ///
    /// \return as parseHeaderFormat(). A size below 4, which leaves no room for the list type, makes the
    ///         stream fail as well.
    unsigned int parseHeaderExtraParam(unsigned char const* id, std::ifstream& stream);

    /// Reads the size of the data chunk whose four bytes of \a id were just read.
    ///
    /// \return 4: the id counts in headerLength(), the size field does not
    unsigned int parseHeaderData(unsigned char const* id, std::ifstream& stream);

    /// Whether \a other has the same audio format tag (the first two bytes of the format body), or neither
    /// has one. Channels, rate and sample size are not compared.
    [[nodiscard]] bool isCompatible(WAVData const& other) const;

    /// Adds \a other's data size to the RIFF size and the data size, modulo 2^32. Only this header in memory
    /// changes.
    ///
    /// \return false, and nothing changed, when \a other is not compatible
    bool append(WAVData const& other);

    /// Writes the header: RIFF, "fmt ", "LIST" if its body is not empty, and id and size of "data", in this
    /// order, whatever the order in the source was. The state of \a stream tells whether it was written.
    void writeHeaderToFile(std::ofstream& stream) const;

    /// The 12 bytes that begin the file, to \a stream.
    void writeHeaderInfoToFile(std::ofstream& stream) const;

    /// The format chunk, to \a stream.
    void writeHeaderFormatToFile(std::ofstream& stream) const;

    /// The "LIST" chunk, to \a stream; nothing when its body is empty.
    void writeHeaderExtraParamToFile(std::ofstream& stream) const;

    /// Id and size of the data chunk, to \a stream.
    void writeHeaderDataToFile(std::ofstream& stream) const;

    /// Makes the file at \a path, or empties it, and writes the header to it.
    ///
    /// \return false when the file cannot be opened, is a pipe, or does not take all of the header
    bool writeHeaderToFile(std::string const& path) const;

    /// Makes the file at \a path, or empties it, and copies the payload to it. Since the file is emptied, a
    /// header that was there is gone; to write both, pass one stream to the stream overloads.
    ///
    /// \return false when this object's file or the one at \a path cannot be opened, \a path is a pipe, or
    ///         it does not take all of the payload
    bool writePayloadToFile(std::string const& path) const;

    /// Copies this object's file from headerLength() to its end to \a out, in blocks of 4 MiB.
    ///
    /// The copy begins with the four bytes of the data size field, and takes in the chunks after the
    /// samples; callers that know these bytes skip them, so both stay. After writeHeaderToFile() they would
    /// lie between header and samples: either seek \a out four bytes back first and afterwards write the
    /// four bytes again that stood there (for the first file the new header's data size, for the others the
    /// last four bytes of the samples before), or copy from headerLength() + 4 with writeBuffer().
    ///
    /// \return false when this object's file cannot be opened or is no regular file, else true; the state of
    ///         \a out tells whether everything was written
    bool writePayloadToFile(std::ofstream& out) const;

    /// Copies \a in from where it stands to its end to \a out, in blocks of 4 MiB; ends early when \a out
    /// takes no more.
    ///
    /// \return true, or false when there is no memory for the block; the state of \a out tells whether
    ///         everything was written
    bool writeBuffer(std::ifstream& in, std::ofstream& out) const;

    /// The file that the constructor was given.
    [[nodiscard]] std::filesystem::path const& path() const { return m_path; }

    /// Whether the last parse of the file, at first the constructor's, succeeded.
    [[nodiscard]] bool hasHeader() const { return m_hasHeader; }

    /// The size field after "RIFF": what the file claims to hold after that field.
    [[nodiscard]] std::uint32_t riffSize() const;

    /// The size field of the data chunk: what the file claims to hold of samples, in bytes.
    [[nodiscard]] std::uint32_t dataSize() const;

    /// How long the samples take to play, as the header tells: dataSize() at the format's bytes per second,
    /// rounded down. Nothing when the header could not be read or does not tell the pace. While a recorder is
    /// at work its data size is mostly 0, and so is this; see wav::tryToRepairWavHeaderIfNeeded().
    [[nodiscard]] std::optional<std::chrono::milliseconds> duration() const;

    /// Where the payload copy starts: the offset of the data chunk's size field, 40 for the plainest header.
    /// 0 when the file is no RIFF/WAVE file.
    [[nodiscard]] std::uint32_t headerLength() const { return m_headerLength; }

    /// The format chunk without its id and size.
    [[nodiscard]] std::vector<unsigned char> const& formatBody() const { return m_format.body; }

    /// The "LIST" chunk without its id, size and list type.
    [[nodiscard]] std::vector<unsigned char> const& listBody() const { return m_list.body; }

private:
    using Field = std::array<unsigned char, 4>;

    struct RiffHeader
    {
        Field id = {};
        Field size = {};
        Field formType = {};
    };

    struct Chunk
    {
        Field id = {};
        Field size = {};
        std::vector<unsigned char> body;
    };

    struct ListChunk
    {
        Field id = {};
        Field size = {};
        Field listType = {};
        std::vector<unsigned char> body;
    };

    struct FoundChunk;

    bool parseChunks(std::ifstream& stream);
    bool addToHeaderLength(unsigned int length);

    RiffHeader m_riff;
    Chunk m_format;
    Chunk m_data;
    ListChunk m_list;
    std::uint32_t m_headerLength = 0;
    std::filesystem::path m_path;
    bool m_hasHeader = false;
};
