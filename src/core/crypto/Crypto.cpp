#include "Crypto.h"

#include "../FileName_p.h"
#include "Digest_p.h"
#include "Inflate_p.h"
#include "Message_p.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <optional>

namespace {

constexpr qsizetype keyLength = 8;
constexpr int compressionLevel = 9;
constexpr qsizetype readSize = 0x20000;

/// The compressed form of \a data where it is shorter, else an empty array.
QByteArray shorterForm(QByteArray const& data)
{
    if (data.isEmpty()) {
        return QByteArray();
    }
    QByteArray compressed = qCompress(data, compressionLevel);
    return compressed.size() < data.size() ? compressed : QByteArray();
}

unsigned char randomByte()
{
    return static_cast<unsigned char>(QRandomGenerator64::global()->generate());
}

QString digestOf(QString const& filePath)
{
    if (!isPossibleName(filePath)) {
        return QString();
    }
    // Asked first, because opening a pipe waits for its other end.
    QFile file(filePath);
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return QString();
    }
    Digest digest(DigestAlgorithm::Sha256);
    QByteArray block(readSize, Qt::Uninitialized);
    qint64 size = 0;
    while ((size = file.read(block.data(), block.size())) > 0) {
        digest.update(QByteArrayView(block.constData(), size));
    }
    return size < 0 ? QString() : QString::fromLatin1(digest.finish().toHex());
}

} // namespace

std::vector<unsigned char> Crypto::getKey(unsigned long long key)
{
    std::vector<unsigned char> schedule(keyLength, 0);
    schedule.front() = static_cast<unsigned char>(key);
    return schedule;
}

Crypto::CryptoFlag Crypto::addFlag(CryptoFlag first, CryptoFlag second)
{
    return static_cast<CryptoFlag>(static_cast<unsigned char>(first) | static_cast<unsigned char>(second));
}

QByteArray Crypto::encrypt(QByteArray const& data, unsigned long long key, ProtectionMode mode)
{
    QByteArray const compressed = shorterForm(data);
    return compressed.isEmpty()
               ? Message::sealed(data, CryptoFlag::None, key, mode, randomByte())
               : Message::sealed(compressed, CryptoFlag::Compressed, key, mode, randomByte());
}

QByteArray Crypto::decrypt(QByteArray const& data, unsigned long long key)
{
    std::optional<QByteArray> payload = Message::opened(data, key);
    if (!payload) {
        return QByteArray();
    }
    bool const compressed =
        Message::hasFlag(static_cast<unsigned char>(data.front()), CryptoFlag::Compressed);
    return compressed ? inflated(*payload) : *std::move(payload);
}

QString Crypto::computeSHA256(QString const& filePath)
{
    return digestOf(filePath);
}
