#include "Message_p.h"

#include "Crc16_p.h"
#include "Digest_p.h"
#include "KeyChain_p.h"

#include <QtEndian>
#include <algorithm>
#include <array>

namespace {

using Flag = Crypto::CryptoFlag;
using Mode = Crypto::ProtectionMode;

constexpr qsizetype checksumSize = 2;
constexpr qsizetype hashSize = 20;
constexpr qsizetype blockSize = 0x8000; // one block's two passes stay in the processor's nearest cache

unsigned char const* bytesOf(QByteArrayView view)
{
    return reinterpret_cast<unsigned char const*>(view.data());
}

Flag tagFlag(Mode mode)
{
    switch (mode) {
    case Mode::Checksum:
        return Flag::Checksum;
    case Mode::Hash:
        return Flag::Hash;
    case Mode::None:
        break;
    }
    return Flag::None;
}

Mode tagMode(unsigned char flags)
{
    if (Message::hasFlag(flags, Flag::Checksum)) {
        return Mode::Checksum;
    }
    return Message::hasFlag(flags, Flag::Hash) ? Mode::Hash : Mode::None;
}

qsizetype tagSize(Mode mode)
{
    switch (mode) {
    case Mode::Checksum:
        return checksumSize;
    case Mode::Hash:
        return hashSize;
    case Mode::None:
        break;
    }
    return 0;
}

/// Computes the tag of a payload that comes in pieces.
class Tag
{
public:
    explicit Tag(Mode mode)
        : m_mode(mode)
    {
        if (mode == Mode::Hash) {
            m_hash.emplace(DigestAlgorithm::Sha1);
        }
    }

    void update(QByteArrayView piece)
    {
        if (m_mode == Mode::Checksum) {
            m_checksum.update(bytesOf(piece), static_cast<std::size_t>(piece.size()));
        } else if (m_hash) {
            m_hash->update(piece);
        }
    }

    /// The tag as a message holds it.
    QByteArray finish()
    {
        if (m_mode == Mode::Checksum) {
            QByteArray stored(checksumSize, Qt::Uninitialized);
            qToBigEndian<quint16>(m_checksum.value(), stored.data());
            return stored;
        }
        return m_hash ? m_hash->finish() : QByteArray();
    }

private:
    Mode m_mode;
    Crc16 m_checksum;
    std::optional<Digest> m_hash;
};

/// Writes scrambled pieces one after the other.
class Writer
{
public:
    Writer(unsigned long long key, char* out)
        : m_chain(Crypto::getKey(key))
        , m_out(reinterpret_cast<unsigned char*>(out))
    {
    }

    void write(QByteArrayView piece)
    {
        auto const size = static_cast<std::size_t>(piece.size());
        m_chain.scramble(bytesOf(piece), m_out, size);
        m_out += size;
    }

private:
    KeyChain m_chain;
    unsigned char* m_out;
};

/// Reads plain pieces one after the other.
class Reader
{
public:
    Reader(unsigned long long key, QByteArrayView body)
        : m_chain(Crypto::getKey(key))
        , m_rest(body)
    {
    }

    [[nodiscard]] qsizetype left() const { return m_rest.size(); }

    void read(char* out, qsizetype size)
    {
        m_chain.unscramble(bytesOf(m_rest), reinterpret_cast<unsigned char*>(out),
                           static_cast<std::size_t>(size));
        m_rest = m_rest.sliced(size);
    }

private:
    KeyChain m_chain;
    QByteArrayView m_rest;
};

} // namespace

QByteArray Message::sealed(QByteArrayView payload, Flag flags, unsigned long long key, Mode mode,
                           unsigned char salt)
{
    Tag tag(mode);
    tag.update(payload);
    QByteArray const stored = tag.finish();
    if (stored.size() != tagSize(mode)) {
        return QByteArray();
    }
    QByteArray message(2 + tagSize(mode) + payload.size(), Qt::Uninitialized);
    message[0] = static_cast<char>(Crypto::addFlag(flags, tagFlag(mode)));
    char const saltByte = static_cast<char>(salt);
    Writer body(key, message.data() + 1);
    body.write(QByteArrayView(&saltByte, 1));
    body.write(stored);
    body.write(payload);
    return message;
}

std::optional<QByteArray> Message::opened(QByteArrayView message, unsigned long long key)
{
    if (message.size() < 2) {
        return std::nullopt;
    }
    Mode const mode = tagMode(static_cast<unsigned char>(message.front()));
    Reader body(key, message.sliced(1));
    char salt;
    body.read(&salt, 1);
    if (body.left() < tagSize(mode)) {
        return std::nullopt;
    }
    QByteArray stored(tagSize(mode), Qt::Uninitialized);
    body.read(stored.data(), stored.size());

    Tag tag(mode);
    QByteArray payload(body.left(), Qt::Uninitialized);
    for (char* out = payload.data(); body.left() > 0;) {
        qsizetype const size = std::min(body.left(), blockSize);
        body.read(out, size);
        tag.update(QByteArrayView(out, size));
        out += size;
    }
    if (tag.finish() != stored) {
        return std::nullopt;
    }
    return payload;
}
