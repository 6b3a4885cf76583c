#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QtEndian>
#include <TestFiles.h>
#include <filesystem>
#include <initializer_list>
#include <utility>

/// WAV files made byte by byte.

inline QByteArray littleEndian(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

inline quint32 sizeAt(QByteArray const& bytes, qsizetype offset)
{
    return qFromLittleEndian<quint32>(bytes.constData() + offset);
}

inline QByteArray withSizeAt(QByteArray bytes, qsizetype offset, quint32 size)
{
    return bytes.replace(offset, 4, littleEndian(size));
}

/// A chunk that claims \a size, and has no pad byte.
inline QByteArray claimingChunk(char const* name, quint32 size, QByteArray const& body)
{
    return QByteArray(name, 4) + littleEndian(size) + body;
}

inline QByteArray chunk(char const* name, QByteArray const& body)
{
    return claimingChunk(name, static_cast<quint32>(body.size()), body);
}

inline QByteArray riff(std::initializer_list<QByteArray> chunks)
{
    QByteArray body("WAVE");
    for (QByteArray const& one : chunks) {
        body += one;
    }
    return chunk("RIFF", body);
}

/// The format chunk's body of \a bits PCM.
inline QByteArray pcmFormat(quint16 channels = 1, quint32 rate = 8000, quint16 bits = 16)
{
    auto const frame = static_cast<quint16>(channels * bits / 8);
    QByteArray body(16, '\0');
    qToLittleEndian<quint16>(1, body.data());
    qToLittleEndian<quint16>(channels, body.data() + 2);
    qToLittleEndian<quint32>(rate, body.data() + 4);
    qToLittleEndian<quint32>(rate * frame, body.data() + 8);
    qToLittleEndian<quint16>(frame, body.data() + 12);
    qToLittleEndian<quint16>(bits, body.data() + 14);
    return body;
}

/// The plainest WAV file: a header of 44 bytes, and \a samples.
inline QByteArray plainWav(QByteArray const& samples)
{
    return riff({chunk("fmt ", pcmFormat()), chunk("data", samples)});
}

/// Makes a file that begins with \a start and is \a length long, the rest a hole.
inline bool writeSparseFile(QString const& path, QByteArray const& start, qint64 length)
{
    return TestFiles::write(path, start) && QFile::resize(path, length);
}

inline std::filesystem::path nativePath(QString const& path)
{
    return std::filesystem::path(QFile::encodeName(path).toStdString());
}
