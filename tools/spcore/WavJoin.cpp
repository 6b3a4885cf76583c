#include "WavJoin.h"

#include "BlockCopy.h"
#include "WavLayout.h"

#include <audio/WAVData.h>
#include <audio/wav.h>

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <array>
#include <cstdio>
#include <fcntl.h>
#include <iterator>
#include <limits>
#include <span>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using Error = std::optional<QString>;

constexpr std::size_t blockSize = 0x40000; // the progress is shown after each
constexpr off_t riffSizeOffset = 4;
constexpr int sizeFieldLength = 4;
constexpr std::size_t comparedFormat = 16;

/// Formats whose samples need nothing but the first 16 bytes of the format chunk to be played.
constexpr std::array plainTags = {quint16(1), quint16(3), quint16(6), quint16(7)};

Error cancelled()
{
    return QStringLiteral("cancelled");
}

Error cannotWrite(QString const& name)
{
    return QStringLiteral("cannot write ") + name;
}

bool soundsAlike(std::span<unsigned char const> first, std::span<unsigned char const> second)
{
    std::optional<WavFormat> const format = WavFormat::of(first);
    bool const plain =
        format && std::find(plainTags.begin(), plainTags.end(), format->tag) != plainTags.end();
    if (!plain || second.size() < comparedFormat) {
        return std::ranges::equal(first, second);
    }
    return std::ranges::equal(first.first(comparedFormat), second.first(comparedFormat));
}

/// One file whose samples are to be copied.
struct Source
{
    QString name;
    WAVData header;
    std::uint64_t start = 0;  ///< the offset of the first sample
    std::uint64_t length = 0; ///< of the samples, in whole frames
};

/// What is written beside its target, and removed again unless it takes the target's place.
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
        close();
        if (m_isOurs) {
            QFile::remove(m_part);
        }
    }
    PartFile(PartFile const&) = delete;
    PartFile& operator=(PartFile const&) = delete;

    [[nodiscard]] QString name() const { return m_part; }
    [[nodiscard]] int descriptor() const { return m_descriptor; }

    /// Makes the file; fails when there is one, which may be another join's.
    bool make()
    {
        m_descriptor =
            ::open(QFile::encodeName(m_part).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        m_isOurs = m_descriptor >= 0;
        if (m_isOurs && QFile::exists(m_target)) {
            QFile::setPermissions(m_part, QFile::permissions(m_target));
        }
        return m_isOurs;
    }

    bool takePlace()
    {
        // Some file systems tell only here that they had no room.
        bool const done = close() && std::rename(QFile::encodeName(m_part).constData(),
                                                 QFile::encodeName(m_target).constData()) == 0;
        m_isOurs = m_isOurs && !done;
        return done;
    }

private:
    bool close()
    {
        int const descriptor = std::exchange(m_descriptor, -1);
        return descriptor >= 0 && ::close(descriptor) == 0;
    }

    QString m_target;
    QString m_part;
    int m_descriptor = -1;
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
    Error writeTo(PartFile const& part);
    Error copySamples(Source const& source, PartFile const& part);

    WavJoinHooks const& m_hooks;
    std::vector<Source> m_sources;
    std::uint64_t m_total = 0;
    std::uint64_t m_done = 0;
};

Error Join::add(QString const& path)
{
    Source source{path, WAVData(nativePath(path))};
    std::optional<WavLayout> const layout = WavLayout::read(path);
    if (!source.header.hasHeader() || !layout || source.header.formatBody().size() < comparedFormat) {
        return path + QStringLiteral(": no WAV file with \"fmt \" and \"LIST\" alone before its samples");
    }
    // The header's length ends before the size of the data; the samples begin after it.
    source.start = std::uint64_t(source.header.headerLength()) + sizeFieldLength;
    if (layout->dataOffset != source.start || !layout->tailIsSound) {
        return path + QStringLiteral(": the header does not fit the file; see spcore wav repair");
    }
    if (!m_sources.empty() &&
        !soundsAlike(m_sources.front().header.formatBody(), source.header.formatBody())) {
        return path + QStringLiteral(": another format than ") + m_sources.front().name;
    }
    std::uint64_t const frame =
        std::max<std::uint64_t>(WavFormat::of(source.header.formatBody())->frameSize, 1);
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
    if (!part.make()) {
        return cannotWrite(part.name());
    }
    if (Error error = writeTo(part)) {
        return error;
    }
    if (m_hooks.isCancelled()) {
        return cancelled();
    }
    return part.takePlace() ? std::nullopt : cannotWrite(output);
}

bool writeAt(off_t offset, std::span<unsigned char const> bytes, PartFile const& part)
{
    return ::pwrite(part.descriptor(), bytes.data(), bytes.size(), offset) == std::ssize(bytes);
}

bool writeSizeAt(off_t offset, std::uint64_t size, PartFile const& part)
{
    std::array<unsigned char, sizeFieldLength> bytes;
    wav::uInt32ToByteArrayLE(static_cast<int>(size), bytes.data());
    return writeAt(offset, bytes, part);
}

Error Join::writeTo(PartFile const& part)
{
    if (!m_sources.front().header.writeHeaderToFile(nativePath(part.name()).string())) {
        return cannotWrite(part.name());
    }
    off_t const start = ::lseek(part.descriptor(), 0, SEEK_END);
    std::uint64_t const length = static_cast<std::uint64_t>(start) + m_total + m_total % 2;
    if (length - 8 > std::numeric_limits<std::uint32_t>::max()) {
        return QStringLiteral("the files together are larger than a WAV file can be (4 GiB)");
    }
    for (Source const& source : m_sources) {
        if (Error error = copySamples(source, part)) {
            return error;
        }
    }
    static constexpr std::array<unsigned char, 1> pad = {}; // of a chunk of odd size
    bool const isPadded = m_total % 2 == 0 || writeAt(start + static_cast<off_t>(m_total), pad, part);
    bool const isWhole = isPadded && writeSizeAt(riffSizeOffset, length - 8, part) &&
                         writeSizeAt(start - sizeFieldLength, m_total, part);
    return isWhole ? std::nullopt : cannotWrite(part.name());
}

Error Join::copySamples(Source const& source, PartFile const& part)
{
    QFile in(source.name);
    if (!in.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ||
        !in.seek(static_cast<qint64>(source.start))) {
        return QStringLiteral("cannot read ") + source.name;
    }
    for (std::uint64_t left = source.length; left > 0;) {
        if (m_hooks.isCancelled()) {
            return cancelled();
        }
        std::size_t const size = std::min<std::uint64_t>(left, blockSize);
        switch (copyBlock(in.handle(), part.descriptor(), size)) {
        case BlockCopy::NotRead:
            return QStringLiteral("cannot read ") + source.name;
        case BlockCopy::NotWritten:
            return QStringLiteral("no room to join ") + source.name;
        case BlockCopy::Done:
            break;
        }
        left -= size;
        m_done += size;
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
