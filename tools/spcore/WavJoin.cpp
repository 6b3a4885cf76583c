#include "WavJoin.h"

#include "BlockCopy.h"
#include "FileName.h"
#include "Reason.h"
#include "WavLayout.h"

#include <QFileInfo>
#include <QtEndian>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using Error = std::optional<QString>;

constexpr std::size_t blockSize = 0x40000; // the progress is shown after each
constexpr std::size_t comparedFormat = 16;
constexpr std::size_t listTypeLength = 4;
constexpr quint64 largestSize = std::numeric_limits<quint32>::max();

Error cancelled()
{
    return QStringLiteral("cancelled");
}

Error problem(QString const& what, QString const& reason)
{
    return what + QStringLiteral(": ") + reason;
}

Error cannotWrite(QString const& name, int error)
{
    return problem(QStringLiteral("cannot write ") + name, Reason::ofError(error));
}

/// An open file; closed with this object.
class Descriptor
{
public:
    explicit Descriptor(int number)
        : m_number(number)
    {
    }
    ~Descriptor() { close(); }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    [[nodiscard]] bool isOpen() const { return m_number >= 0; }
    [[nodiscard]] int number() const { return m_number; }

    bool close()
    {
        int const number = std::exchange(m_number, -1);
        return number >= 0 && ::close(number) == 0;
    }

private:
    int m_number;
};

/// What is written beside its target, and removed again unless it takes the target's place.
class PartFile
{
public:
    explicit PartFile(QString const& output)
        : m_output(output)
        , m_target(resolved(FileName::toNative(output)))
        , m_part(m_target + ".part")
        , m_file(::open(m_part.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666))
        , m_isOurs(m_file.isOpen())
    {
        struct stat old = {};
        if (m_isOurs && ::stat(m_target.constData(), &old) == 0) {
            ::fchmod(m_file.number(), old.st_mode & 07777);
        }
    }

    ~PartFile()
    {
        if (m_isOurs) {
            ::unlink(m_part.constData());
        }
    }
    PartFile(PartFile const&) = delete;
    PartFile& operator=(PartFile const&) = delete;

    /// False, with errno, when it could not be made; also where there is one, which may be another join's.
    [[nodiscard]] bool isOpen() const { return m_isOurs; }
    [[nodiscard]] QString const& output() const { return m_output; }
    [[nodiscard]] QString name() const { return FileName::fromNative(m_part); }
    [[nodiscard]] int descriptor() const { return m_file.number(); }

    bool takePlace()
    {
        // Some file systems tell only here that they had no room.
        bool const done = m_file.close() && std::rename(m_part.constData(), m_target.constData()) == 0;
        m_isOurs = m_isOurs && !done;
        return done;
    }

private:
    /// What the file or link \a name leads to; \a name itself when there is none.
    static QByteArray resolved(QByteArray const& name)
    {
        std::unique_ptr<char, decltype(&std::free)> const path(::realpath(name.constData(), nullptr),
                                                               &std::free);
        return path ? QByteArray(path.get()) : name;
    }

    QString m_output; ///< as the user has named it
    QByteArray m_target;
    QByteArray m_part;
    Descriptor m_file;
    bool m_isOurs;
};

bool soundsAlike(WavLayout const& first, WavLayout const& second)
{
    // Players of plain samples need nothing but the first 16 bytes.
    bool const isPlain = WavFormat::of(first.format)->isSampleBySample() && first.format[0] != 0xFE &&
                         second.format.size() >= comparedFormat;
    return isPlain ? std::ranges::equal(std::span(first.format).first(comparedFormat),
                                        std::span(second.format).first(comparedFormat))
                   : first.format == second.format;
}

void append32(QByteArray& bytes, quint64 number)
{
    quint32 const field = qToLittleEndian(static_cast<quint32>(std::min(number, largestSize)));
    bytes.append(reinterpret_cast<char const*>(&field), sizeof(field));
}

void append64(QByteArray& bytes, quint64 number)
{
    quint64 const field = qToLittleEndian(number);
    bytes.append(reinterpret_cast<char const*>(&field), sizeof(field));
}

void appendChunk(QByteArray& bytes, char const* id, std::span<unsigned char const> body)
{
    bytes.append(id);
    append32(bytes, body.size());
    bytes.append(reinterpret_cast<char const*>(body.data()), static_cast<qsizetype>(body.size()));
    bytes.append(qsizetype(body.size() % 2), '\0');
}

class Join
{
public:
    explicit Join(WavJoinHooks const& hooks)
        : m_hooks(hooks)
    {
    }

    Error add(WavSource const& source);
    Error write(QString const& output);

private:
    /// A file whose samples are to be copied.
    struct Part
    {
        WavSource source;
        WavLayout layout;
        quint64 length; ///< of the samples, in whole frames
    };

    Error writeTo(PartFile const& file);
    Error copySamples(Part const& part, PartFile const& file);

    WavJoinHooks const& m_hooks;
    std::vector<Part> m_parts;
    quint64 m_total = 0;
    quint64 m_done = 0;
};

Error Join::add(WavSource const& source)
{
    WavLayout layout = WavLayout::read(source.path);
    if (QString const reason = notJoinable(layout); !reason.isEmpty()) {
        return problem(source.name, reason);
    }
    if (!m_parts.empty() && !soundsAlike(m_parts.front().layout, layout)) {
        return problem(source.name,
                       QStringLiteral("its format is not that of ") + m_parts.front().source.name);
    }
    quint64 const frame = std::max<quint64>(WavFormat::of(layout.format)->frameSize, 1);
    quint64 const length = layout.dataSize / frame * frame;
    m_total += length;
    m_parts.push_back({source, std::move(layout), length});
    return std::nullopt;
}

Error Join::write(QString const& output)
{
    if (QString const reason = Reason::notWritable(output, static_cast<qint64>(m_total)); !reason.isEmpty()) {
        return problem(QStringLiteral("cannot write ") + output, reason);
    }
    PartFile file(output);
    if (!file.isOpen()) {
        return cannotWrite(file.name(), errno);
    }
    if (Error error = writeTo(file)) {
        return error;
    }
    if (m_hooks.isCancelled()) {
        return cancelled();
    }
    return file.takePlace() ? std::nullopt : cannotWrite(output, errno);
}

Error Join::writeTo(PartFile const& file)
{
    auto const write = [&file](QByteArray const& bytes) {
        return ::write(file.descriptor(), bytes.constData(), static_cast<std::size_t>(bytes.size())) ==
               bytes.size();
    };
    if (!write(wavHeader(m_parts.front().layout, m_total))) {
        return cannotWrite(file.output(), errno);
    }
    for (Part const& part : m_parts) {
        if (Error error = copySamples(part, file)) {
            return error;
        }
    }
    QByteArray const pad(qsizetype(m_total % 2), '\0');
    return write(pad) ? std::nullopt : cannotWrite(file.output(), errno);
}

Error Join::copySamples(Part const& part, PartFile const& file)
{
    Descriptor const in(::open(FileName::toNative(part.source.path).constData(), O_RDONLY | O_CLOEXEC));
    if (!in.isOpen() || ::lseek(in.number(), static_cast<off_t>(part.layout.dataOffset), SEEK_SET) < 0) {
        return problem(QStringLiteral("cannot read ") + part.source.name, Reason::ofError(errno));
    }
    for (quint64 left = part.length; left > 0;) {
        if (m_hooks.isCancelled()) {
            return cancelled();
        }
        std::size_t const size = std::min<quint64>(left, blockSize);
        errno = 0;
        switch (copyBlock(in.number(), file.descriptor(), size)) {
        case BlockCopy::NotRead:
            return problem(QStringLiteral("cannot read ") + part.source.name,
                           errno == 0 ? QStringLiteral("it has become shorter") : Reason::ofError(errno));
        case BlockCopy::NotWritten:
            return cannotWrite(file.output(), errno);
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

QString notJoinable(WavLayout const& layout)
{
    std::optional<WavFormat> const format = WavFormat::of(layout.format);
    if (!layout.problem.isEmpty()) {
        return layout.problem;
    }
    if (!format) {
        return QStringLiteral("it has no whole chunk \"fmt \" before its samples");
    }
    if (!layout.tailIsSound) {
        return QStringLiteral("its header does not fit the file; see spcore wav repair");
    }
    if (layout.factSamples && !format->isSampleBySample()) {
        return QStringLiteral("its samples stand in blocks, the last of which may be filled up");
    }
    return QString();
}

QByteArray wavHeader(WavLayout const& first, quint64 length)
{
    quint64 const frame = std::max<quint64>(WavFormat::of(first.format)->frameSize, 1);
    QByteArray chunks;
    appendChunk(chunks, "fmt ", first.format);
    if (first.factSamples) {
        QByteArray count;
        append32(count, length / frame);
        appendChunk(chunks, "fact",
                    std::span(reinterpret_cast<unsigned char const*>(count.constData()), sizeof(quint32)));
    }
    if (first.list.size() > listTypeLength) {
        appendChunk(chunks, "LIST", first.list);
    }
    chunks.append("data");
    append32(chunks, length);

    // "WAVE", the chunks, the samples and the pad byte of an odd number of them
    quint64 riffSize = 4 + static_cast<quint64>(chunks.size()) + length + length % 2;
    QByteArray sizes;
    if (riffSize > largestSize) {
        constexpr quint32 sizesLength = 28;
        riffSize += 8 + sizesLength;
        sizes.append("ds64");
        append32(sizes, sizesLength);
        append64(sizes, riffSize);
        append64(sizes, length);
        append64(sizes, length / frame);
        append32(sizes, 0); // no other chunk is that large
        // Where a size is given in 64 bits, the field of 32 holds the largest number, also if it would do.
        chunks.replace(chunks.size() - 4, 4, QByteArray(4, '\xFF'));
    }
    QByteArray header(sizes.isEmpty() ? "RIFF" : "RF64");
    append32(header, riffSize);
    return header + "WAVE" + sizes + chunks;
}

std::optional<QString> joinWavFiles(QString const& output, std::span<WavSource const> sources,
                                    WavJoinHooks const& hooks)
{
    Join join(hooks);
    for (WavSource const& source : sources) {
        if (Error error = join.add(source)) {
            return error;
        }
    }
    return join.write(output);
}
