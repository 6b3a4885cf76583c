#include "HostileAnswers.h"

#include <QtGlobal>
#include <algorithm>
#include <zlib.h>

using namespace std::chrono_literals;

namespace {

using Connection = ScriptedServer::Connection;

/// Bytes packed as gzip packs them, piece by piece.
class Gzip
{
public:
    Gzip()
    {
        constexpr int gzipWindow = MAX_WBITS + 16;
        if (deflateInit2(&m_stream, Z_BEST_COMPRESSION, Z_DEFLATED, gzipWindow, 8, Z_DEFAULT_STRATEGY) !=
            Z_OK) {
            qFatal("zlib gives no stream");
        }
    }
    ~Gzip() { deflateEnd(&m_stream); }
    Gzip(Gzip const&) = delete;
    Gzip& operator=(Gzip const&) = delete;

    void add(QByteArray const& bytes) { pack(bytes, Z_NO_FLUSH); }

    QByteArray finish()
    {
        pack(QByteArray(), Z_FINISH);
        return m_packed;
    }

private:
    void pack(QByteArray bytes, int flush)
    {
        QByteArray block(64 * 1024, Qt::Uninitialized);
        m_stream.next_in = reinterpret_cast<Bytef*>(bytes.data());
        m_stream.avail_in = static_cast<uInt>(bytes.size());
        do {
            m_stream.next_out = reinterpret_cast<Bytef*>(block.data());
            m_stream.avail_out = static_cast<uInt>(block.size());
            deflate(&m_stream, flush);
            m_packed.append(block.constData(), block.size() - static_cast<qsizetype>(m_stream.avail_out));
        } while (m_stream.avail_out == 0);
    }

    z_stream m_stream = {};
    QByteArray m_packed;
};

/// \a unit over and over up to \a size bytes, packed.
void addRepeated(Gzip& gzip, QByteArray const& unit, qint64 size)
{
    QByteArray const block = unit.repeated(std::max<qsizetype>(1, 1024 * 1024 / unit.size()));
    for (; size > 0; size -= block.size()) {
        gzip.add(block.left(static_cast<qsizetype>(std::min<qint64>(size, block.size()))));
    }
}

QByteArray packed(QByteArray const& bytes)
{
    Gzip gzip;
    gzip.add(bytes);
    return gzip.finish();
}

HostileAnswers::Script coded(QByteArray const& codings, QByteArray const& body)
{
    return ScriptedServer::answer("HTTP/1.1 200 OK\r\nTransfer-Encoding: " + codings +
                                  "\r\nConnection: close\r\n\r\n" + body);
}

/// \a before, then \a unit over and over up to \a bytes, then \a after.
HostileAnswers::Script repeating(QByteArray const& before, QByteArray const& unit, qint64 bytes,
                                 QByteArray const& after)
{
    return [=](Connection& connection) {
        connection.readRequest();
        QByteArray const block = unit.repeated(std::max<qsizetype>(1, 16 * 1024 / unit.size()));
        bool open = connection.send(before);
        for (qint64 rest = bytes / unit.size() * unit.size(); open && rest > 0; rest -= block.size()) {
            open = connection.send(block.left(static_cast<qsizetype>(std::min<qint64>(rest, block.size()))));
        }
        connection.send(after);
    };
}

/// A header line of 64 bytes, the least that one counts.
QByteArray paddingLine()
{
    return "X-Padding: " + QByteArray(51, '0') + "\r\n";
}

} // namespace

HostileAnswers::Script HostileAnswers::expanding(QByteArray const& start, qint64 zeros, int layers)
{
    Gzip gzip;
    gzip.add(start);
    addRepeated(gzip, QByteArray(1, '\0'), zeros);
    QByteArray body = gzip.finish();
    QByteArray codings = "gzip";
    for (int layer = 1; layer < layers; ++layer) {
        body = packed(body);
        codings += ", gzip";
    }
    return coded(codings, body);
}

HostileAnswers::Script HostileAnswers::expandingToNothing(qint64 blocks)
{
    // The header of a zlib stream, stored blocks of length 0, the last one, and the check sum of no bytes.
    QByteArray const head("\x78\x9c", 2);
    QByteArray const block("\0\0\0\xff\xff", 5);
    QByteArray const tail("\1\0\0\xff\xff\0\0\0\1", 9);
    Gzip gzip;
    gzip.add(head);
    addRepeated(gzip, block, blocks * block.size());
    gzip.add(tail);
    return coded("deflate, gzip", gzip.finish());
}

HostileAnswers::Script HostileAnswers::manyHeaders(qint64 bytes)
{
    return repeating("HTTP/1.1 200 OK\r\n", paddingLine(), bytes, "Content-Length: 4\r\n\r\nbody");
}

HostileAnswers::Script HostileAnswers::manyTrailers(qint64 bytes)
{
    return repeating("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nbody\r\n0\r\n", paddingLine(),
                     bytes, "\r\n");
}

HostileAnswers::Script HostileAnswers::foldedTrailer(qint64 bytes)
{
    return repeating("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nbody\r\n0\r\nX-Folded: x\r\n",
                     " x\r\n", bytes, "\r\n");
}

HostileAnswers::Script HostileAnswers::manyInterimAnswers(qint64 bytes)
{
    return repeating(QByteArray(), "HTTP/1.1 103 Early Hints\r\n\r\n", bytes,
                     "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nbody");
}

HostileAnswers::Script HostileAnswers::longChunkExtension(qint64 bytes)
{
    return repeating("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4;", "x", bytes,
                     "\r\nbody\r\n0\r\n\r\n");
}

HostileAnswers::Script HostileAnswers::silence()
{
    return [](Connection& connection) {
        connection.readRequest();
        connection.pause(60s);
    };
}
