#pragma once

#include <QByteArray>
#include <QCryptographicHash>
#include <optional>

/// Messages made and read one byte after the other with Qt's own tags: the oracle of the tests, and the peer
/// of the benchmarks.
namespace PlainMessage {

constexpr int compressed = 1;
constexpr int checksum = 2;
constexpr int hash = 4;

inline int keyByte(unsigned long long key, qsizetype position)
{
    return position % 8 == 0 ? static_cast<int>(key & 0xFF) : 0;
}

inline QByteArray scrambled(QByteArray body, unsigned long long key)
{
    int last = 0;
    for (qsizetype i = 0; i < body.size(); ++i) {
        last = (static_cast<unsigned char>(body[i]) ^ last ^ keyByte(key, i)) & 0xFF;
        body[i] = static_cast<char>(last);
    }
    return body;
}

inline QByteArray unscrambled(QByteArray body, unsigned long long key)
{
    int last = 0;
    for (qsizetype i = 0; i < body.size(); ++i) {
        int const input = static_cast<unsigned char>(body[i]);
        body[i] = static_cast<char>(input ^ last ^ keyByte(key, i));
        last = input;
    }
    return body;
}

inline QByteArray checksumOf(QByteArrayView payload)
{
    quint16 const value = qChecksum(payload, Qt::ChecksumIso3309);
    return QByteArray(1, static_cast<char>(value >> 8)) + static_cast<char>(value & 0xFF);
}

inline QByteArray hashOf(QByteArrayView payload)
{
    QCryptographicHash digest(QCryptographicHash::Sha1);
    digest.addData(payload);
    return digest.result();
}

/// A message of \a payload as it is, with the tag that \a flags ask for.
inline QByteArray sealed(QByteArray const& payload, int flags, unsigned long long key, char salt)
{
    QByteArray tag;
    if ((flags & checksum) != 0) {
        tag = checksumOf(payload);
    } else if ((flags & hash) != 0) {
        tag = hashOf(payload);
    }
    return static_cast<char>(flags) + scrambled(salt + tag + payload, key);
}

/// The payload of \a message as stored, if it is whole.
inline std::optional<QByteArray> opened(QByteArray const& message, unsigned long long key)
{
    if (message.size() < 2) {
        return std::nullopt;
    }
    int const flags = message[0];
    QByteArray const body = unscrambled(message.mid(1), key).mid(1);
    if ((flags & checksum) != 0) {
        return body.size() >= 2 && checksumOf(body.mid(2)) == body.left(2) ? std::optional(body.mid(2))
                                                                           : std::nullopt;
    }
    if ((flags & hash) != 0) {
        return body.size() >= 20 && hashOf(body.mid(20)) == body.left(20) ? std::optional(body.mid(20))
                                                                          : std::nullopt;
    }
    return body;
}

} // namespace PlainMessage
