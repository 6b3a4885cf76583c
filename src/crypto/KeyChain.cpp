#include "KeyChain_p.h"

#include <QtEndian>
#include <bit>

namespace {

constexpr std::size_t wordSize = sizeof(std::uint64_t);
constexpr int topByteShift = 56;
constexpr std::uint64_t everyByte = 0x0101010101010101;

std::uint64_t load(unsigned char const* bytes)
{
    return qFromLittleEndian<quint64>(bytes);
}

void store(std::uint64_t word, unsigned char* bytes)
{
    qToLittleEndian<quint64>(word, bytes);
}

/// Each byte of the result is the XOR of the byte there and all lower ones.
std::uint64_t accumulated(std::uint64_t word)
{
    word ^= word << 8;
    word ^= word << 16;
    word ^= word << 32;
    return word;
}

} // namespace

KeyChain::KeyChain(std::span<unsigned char const> key)
    : m_key(load(key.first(wordSize).data()))
{
}

unsigned char KeyChain::nextKeyByte()
{
    auto const byte = static_cast<unsigned char>(m_key);
    m_key = std::rotr(m_key, 8);
    return byte;
}

void KeyChain::scramble(unsigned char const* in, unsigned char* out, std::size_t size)
{
    std::uint64_t last = m_last;
    for (; size >= wordSize; size -= wordSize, in += wordSize, out += wordSize) {
        // Only the one XOR on "last" waits for the word before.
        std::uint64_t const word = accumulated(load(in) ^ m_key);
        store(word ^ last * everyByte, out);
        last ^= word >> topByteShift;
    }
    m_last = static_cast<unsigned char>(last);
    for (; size > 0; --size, ++in, ++out) {
        m_last = static_cast<unsigned char>(*in ^ m_last ^ nextKeyByte());
        *out = m_last;
    }
}

void KeyChain::unscramble(unsigned char const* in, unsigned char* out, std::size_t size)
{
    std::uint64_t last = m_last;
    for (; size >= wordSize; size -= wordSize, in += wordSize, out += wordSize) {
        std::uint64_t const word = load(in);
        store(word ^ (word << 8 | last) ^ m_key, out);
        last = word >> topByteShift;
    }
    m_last = static_cast<unsigned char>(last);
    for (; size > 0; --size, ++in, ++out) {
        unsigned char const scrambled = *in;
        *out = static_cast<unsigned char>(scrambled ^ m_last ^ nextKeyByte());
        m_last = scrambled;
    }
}
