#pragma once

#include "Crypto.h"

#include <QByteArrayView>
#include <optional>

/// The outside of a message: flags, random byte, tag and scrambling, round a payload that is not looked into.
namespace Message {

[[nodiscard]] constexpr bool hasFlag(unsigned char flags, Crypto::CryptoFlag flag)
{
    return (flags & static_cast<unsigned char>(flag)) != 0;
}

/// The message of \a payload with \a flags (and that of the tag), and \a salt as its random byte.
QByteArray sealed(QByteArrayView payload, Crypto::CryptoFlag flags, unsigned long long key,
                  Crypto::ProtectionMode mode, unsigned char salt);

/// The payload of \a message as stored; nothing when the message is cut short or its tag does not match.
std::optional<QByteArray> opened(QByteArrayView message, unsigned long long key);

} // namespace Message
