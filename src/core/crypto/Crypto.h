#pragma once

#include <softphonecore_export.h>

#include <QByteArray>
#include <QString>
#include <vector>

/// Scrambles byte arrays under a key of the caller, and hashes files.
///
/// The scrambling keeps data from being read at a glance; it is a chained XOR and no cipher. A message can
/// carry a tag by which decrypt() tells damage and, with luck, a wrong key.
///
/// A message is laid out as follows; everything but the first byte is scrambled:
///
/// | offset       | bytes      | content                                                       |
/// |--------------|------------|---------------------------------------------------------------|
/// | 0            | 1          | flags: CryptoFlag values, or-ed                               |
/// | 1            | 1          | a random byte, by which equal data gives different messages   |
/// | 2            | 0, 2 or 20 | the tag of the payload: CRC-16, high byte first, or SHA-1     |
/// | 2 + tag size | the rest   | the payload: the data, or its qCompress form when that is shorter |
///
/// \code
/// constexpr unsigned long long key = 0x2A;
/// QByteArray const message = Crypto::encrypt(text, key, Crypto::ProtectionMode::Hash);
/// bool const whole = Crypto::decrypt(message, key) == text;
/// \endcode
///
/// Any thread; nothing is kept between calls. Nothing is logged, failures are empty results.
class SOFTPHONECORE_EXPORT Crypto
{
public:
    /// The tag that encrypt() puts in front of the payload.
    enum class ProtectionMode : int {
        None = 0,     ///< no tag: damage goes unnoticed
        Checksum = 1, ///< CRC-16 of ISO 3309, 2 bytes: finds accidents
        Hash = 2,     ///< SHA-1, 20 bytes
    };

    /// The bits of a message's first byte.
    enum class CryptoFlag : unsigned char {
        None = 0,
        Compressed = 1, ///< the payload is qCompress output
        Checksum = 2,   ///< a CRC-16 precedes the payload
        Hash = 4,       ///< a SHA-1 digest precedes the payload
    };

    Crypto() = delete;

    /// The eight bytes that \a key contributes to the scrambling, one after the other, over and over.
    ///
    /// The first is the low byte of \a key and the other seven are 0: stored messages were made this way, so
    /// two keys with the same low byte read each other's messages.
    [[nodiscard]] static std::vector<unsigned char> getKey(unsigned long long key);

    /// \a first and \a second or-ed.
    [[nodiscard]] static CryptoFlag addFlag(CryptoFlag first, CryptoFlag second);

    /// Packs \a data into a message under \a key.
    ///
    /// \param data  may be empty; compressed (zlib, level 9) when that makes it shorter
    /// \param key   only its low byte takes part, see getKey()
    /// \param mode  the tag; a value outside the enumeration counts as ProtectionMode::None
    /// \return the message, at least 2 bytes, different on every call; empty when libcrypto refuses SHA-1
    [[nodiscard]] static QByteArray encrypt(QByteArray const& data, unsigned long long key,
                                            ProtectionMode mode);

    /// Unpacks the message \a data under \a key.
    ///
    /// The tag is checked before anything is decompressed. When the flags name both tags the message holds
    /// the checksum only, and other flag bits mean nothing.
    ///
    /// A compressed payload gives what qUncompress gives: the content of the complete zlib stream after the
    /// four-byte size; that size is a claim which changes neither the result nor the memory used, and bytes
    /// after the stream are ignored. A stream that is damaged or cut short gives an empty array. Memory
    /// stays within a small multiple of \a data and of what its stream really holds.
    ///
    /// \return the data; an empty array when the message is cut short, its tag does not match its payload
    ///         or its payload cannot be decompressed or needs more memory than there is. Without a tag a
    ///         wrong key gives garbage.
    [[nodiscard]] static QByteArray decrypt(QByteArray const& data, unsigned long long key);

    /// The SHA-256 digest (FIPS 180-4) of the content of the file at \a filePath.
    ///
    /// Reads the file to its end on the caller's thread, in small blocks. Symbolic links are followed. Only
    /// regular files are hashed: a pipe or a device might never end.
    ///
    /// \return 64 lowercase hexadecimal digits; an empty string when there is no such regular file, it cannot
    ///         be opened, reading it fails before its end, or libcrypto refuses SHA-256
    [[nodiscard]] static QString computeSHA256(QString const& filePath);
};
