#include "Inflate_p.h"

#include <QByteArray>
#include <QtEndian>
#include <algorithm>
#include <limits>
#include <new>
#include <zlib.h>

namespace {

constexpr qsizetype sizeFieldLength = 4;
constexpr qsizetype firstStep = 0x10000;

/// Ends the stream's use on every way out.
class Inflater
{
public:
    explicit Inflater(QByteArrayView input)
        : m_next(input)
    {
        // A failure leaves the stream without a state, which inflate() refuses.
        inflateInit(&m_stream);
    }

    ~Inflater() { inflateEnd(&m_stream); }
    Inflater(Inflater const&) = delete;
    Inflater& operator=(Inflater const&) = delete;

    /// Fills \a room as far as the input goes; zlib's own result.
    int fill(char* room, qsizetype size)
    {
        m_stream.next_out = reinterpret_cast<Bytef*>(room);
        m_stream.avail_out = static_cast<uInt>(size);
        int result = Z_OK;
        while (result == Z_OK && m_stream.avail_out > 0) {
            feed();
            result = inflate(&m_stream, Z_NO_FLUSH);
        }
        return result;
    }

    [[nodiscard]] qsizetype unused() const { return m_stream.avail_out; }

private:
    // zlib counts in 32 bits, the input may be longer.
    void feed()
    {
        if (m_stream.avail_in > 0 || m_next.isEmpty()) {
            return;
        }
        qsizetype const length = std::min<qsizetype>(m_next.size(), 0x40000000);
        m_stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(m_next.data()));
        m_stream.avail_in = static_cast<uInt>(length);
        m_next = m_next.sliced(length);
    }

    z_stream m_stream = {};
    QByteArrayView m_next;
};

/// How long the output is to be next, after \a size bytes: doubled, but not past the claim while that
/// may still come true.
qsizetype nextSize(qsizetype size, qsizetype claim)
{
    constexpr qsizetype largestStep = std::numeric_limits<int>::max();
    qsizetype const grown = size + std::clamp(size, firstStep, largestStep);
    return claim > size ? std::min(grown, claim) : grown;
}

QByteArray contentOf(QByteArrayView compressed)
{
    if (compressed.size() <= sizeFieldLength) {
        return QByteArray();
    }
    qsizetype const claim = qFromBigEndian<quint32>(compressed.data());
    Inflater inflater(compressed.sliced(sizeFieldLength));
    QByteArray output;
    int result = Z_OK;
    while (result == Z_OK) {
        qsizetype const filled = output.size();
        // resize() alone would reserve for further growth as well.
        output.reserve(nextSize(filled, claim));
        output.resize(nextSize(filled, claim));
        result = inflater.fill(output.data() + filled, output.size() - filled);
    }
    if (result != Z_STREAM_END) {
        return QByteArray();
    }
    output.truncate(output.size() - inflater.unused());
    return output;
}

} // namespace

QByteArray inflated(QByteArrayView compressed)
{
    // How much memory this takes is up to whoever made the stream.
    try {
        return contentOf(compressed);
    } catch (std::bad_alloc const&) {
        return QByteArray();
    }
}
