#include "WavJoin.h"

#include "WavLayout.h"

#include <audio/WAVData.h>
#include <audio/wav.h>

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <array>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <limits>
#include <unistd.h>
#include <vector>

namespace {

using Error = std::optional<QString>;

constexpr std::size_t copyBlock = 0x40000;
constexpr std::streamoff riffSizeOffset = 4;
constexpr int sizeFieldLength = 4;
constexpr qsizetype comparedFormat = 16;

/// Formats whose samples need nothing but the first 16 bytes of the format chunk to be played.
constexpr std::array plainTags = {quint16(1), quint16(3), quint16(6), quint16(7)};

Error cancelled()
{
    return QStringLiteral("cancelled");
}

QByteArrayView formatOf(WAVData const& header)
{
    return QByteArrayView(header.formatBody().data(), static_cast<qsizetype>(header.formatBody().size()));
}

bool soundsAlike(QByteArrayView first, QByteArrayView second)
{
    std::optional<WavFormat> const format = WavFormat::of(first);
    bool const plain =
        format && std::find(plainTags.begin(), plainTags.end(), format->tag) != plainTags.end();
    if (!plain || second.size() < comparedFormat) {
        return first == second;
    }
    return first.first(comparedFormat) == second.first(comparedFormat);
}

/// One file whose samples are to be copied.
struct Source
{
    QString name;
    WAVData header;
    std::uint64_t start = 0;  ///< the offset of the first sample
    std::uint64_t length = 0; ///< of the samples, in whole frames
};

/// A stream's target that is removed again unless it takes the place of the real one.
class PartFile
{
public:
    explicit PartFile(QString const& output)
        : m_target(QFileInfo(output).exists() ? QFileInfo(output).canonicalFilePath() : output)
        , m_part(m_target + QStringLiteral(".part"))
    {
    }

    ~PartFile()
    {
        if (m_isOurs) {
            QFile::remove(m_part);
        }
    }
    PartFile(PartFile const&) = delete;
    PartFile& operator=(PartFile const&) = delete;

    [[nodiscard]] QString name() const { return m_part; }

    /// Makes the file; fails when there is one, which may be another join's.
    bool open(std::ofstream& stream)
    {
        int const descriptor =
            ::open(QFile::encodeName(m_part).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor < 0) {
            return false;
        }
        ::close(descriptor);
        m_isOurs = true;
        if (QFile::exists(m_target)) {
            QFile::setPermissions(m_part, QFile::permissions(m_target));
        }
        stream.open(nativePath(m_part), std::ios::binary);
        return stream.is_open();
    }

    bool takePlace()
    {
        bool const done =
            std::rename(QFile::encodeName(m_part).constData(), QFile::encodeName(m_target).constData()) == 0;
        m_isOurs = m_isOurs && !done;
        return done;
    }

private:
    QString m_target;
    QString m_part;
    bool m_isOurs = false;
};

class Join
{
public:
    explicit Join(WavJoinHooks const& hooks)
        : m_hooks(hooks)
    {
    }

    Error add(QString const& path);
    Error write(QString const& output);

private:
    Error writeTo(std::ofstream& out);
    Error copySamples(Source const& source, std::ofstream& out);

    WavJoinHooks const& m_hooks;
    std::vector<Source> m_sources;
    std::uint64_t m_total = 0;
    std::uint64_t m_done = 0;
};

Error Join::add(QString const& path)
{
    Source source{path, WAVData(nativePath(path))};
    std::optional<WavLayout> const layout = WavLayout::read(path);
    if (!source.header.hasHeader() || !layout || formatOf(source.header).size() < comparedFormat) {
        return path + QStringLiteral(": no WAV file with \"fmt \" and \"LIST\" alone before its samples");
    }
    // The header's length ends before the size of the data; the samples begin behind it.
    source.start = std::uint64_t(source.header.headerLength()) + sizeFieldLength;
    if (layout->dataOffset != source.start || !layout->tailIsSound) {
        return path + QStringLiteral(": the header does not fit the file; see spcore wav repair");
    }
    if (!m_sources.empty() && !soundsAlike(formatOf(m_sources.front().header), formatOf(source.header))) {
        return path + QStringLiteral(": another format than ") + m_sources.front().name;
    }
    std::uint64_t const frame = std::max<std::uint64_t>(WavFormat::of(formatOf(source.header))->frameSize, 1);
    source.length = source.header.dataSize() / frame * frame;
    m_total += source.length;
    m_sources.push_back(std::move(source));
    return std::nullopt;
}

Error Join::write(QString const& output)
{
    QFileInfo const target(output);
    if (target.exists() && !target.isFile()) {
        return output + QStringLiteral(": no regular file");
    }
    PartFile part(output);
    std::ofstream out;
    if (!part.open(out)) {
        return QStringLiteral("cannot write ") + part.name();
    }
    if (Error error = writeTo(out)) {
        return error;
    }
    out.close();
    if (m_hooks.isCancelled()) {
        return cancelled();
    }
    if (out.fail() || !part.takePlace()) {
        return QStringLiteral("cannot write ") + output;
    }
    return std::nullopt;
}

void writeSizeAt(std::ofstream& out, std::streamoff offset, std::uint64_t size)
{
    std::array<unsigned char, 4> bytes;
    wav::uInt32ToByteArrayLE(static_cast<int>(size), bytes.data());
    out.seekp(offset);
    out.write(reinterpret_cast<char const*>(bytes.data()), bytes.size());
}

Error Join::writeTo(std::ofstream& out)
{
    m_sources.front().header.writeHeaderToFile(out);
    std::streamoff const start = out.tellp();
    std::uint64_t const length = static_cast<std::uint64_t>(start) + m_total + m_total % 2;
    if (length - 8 > std::numeric_limits<std::uint32_t>::max()) {
        return QStringLiteral("the files together are larger than a WAV file can be (4 GiB)");
    }
    for (Source const& source : m_sources) {
        if (Error error = copySamples(source, out)) {
            return error;
        }
    }
    if (m_total % 2 != 0) {
        out.put('\0'); // the pad byte of a chunk of odd size
    }
    writeSizeAt(out, riffSizeOffset, length - 8);
    writeSizeAt(out, start - sizeFieldLength, m_total);
    return std::nullopt;
}

Error Join::copySamples(Source const& source, std::ofstream& out)
{
    std::ifstream in(source.header.path(), std::ios::binary);
    in.seekg(static_cast<std::streamoff>(source.start));
    std::vector<char> block(copyBlock);
    for (std::uint64_t left = source.length; left > 0;) {
        auto const size = static_cast<std::streamsize>(std::min<std::uint64_t>(left, block.size()));
        if (m_hooks.isCancelled()) {
            return cancelled();
        }
        if (!in.read(block.data(), size)) {
            return QStringLiteral("cannot read ") + source.name;
        }
        if (!out.write(block.data(), size)) {
            return QStringLiteral("no room to join ") + source.name;
        }
        left -= static_cast<std::uint64_t>(size);
        m_done += static_cast<std::uint64_t>(size);
        m_hooks.progress(static_cast<long long>(m_done), static_cast<long long>(m_total));
    }
    return std::nullopt;
}

} // namespace

std::optional<QString> joinWavFiles(QString const& output, QStringList const& inputs,
                                    WavJoinHooks const& hooks)
{
    Join join(hooks);
    for (QString const& input : inputs) {
        if (Error error = join.add(input)) {
            return error;
        }
    }
    return join.write(output);
}
