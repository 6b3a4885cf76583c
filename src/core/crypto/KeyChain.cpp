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

/// Two words that the processor works on at once.
using WordPair [[gnu::vector_size(2 * wordSize)]] = std::uint64_t;

WordPair loadPair(unsigned char const* bytes)
{
    WordPair pair;
    qFromLittleEndian<quint64>(bytes, 2, &pair);
    return pair;
}

void storePair(WordPair pair, unsigned char* bytes)
{
    qToLittleEndian<quint64>(&pair, 2, bytes);
}

/// Each byte of the result is the XOR of the byte there and all lower ones of the same word.
WordPair accumulated(WordPair pair)
{
    pair ^= pair << 8;
    pair ^= pair << 16;
    pair ^= pair << 32;
    return pair;
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
    constexpr std::size_t step = sizeof(WordPair);
    for (; size >= step; size -= step, in += step, out += step) {
        // Only the XORs on "last" wait for the words before.
        WordPair const pair = accumulated(loadPair(in) ^ m_key);
        std::uint64_t const between = last ^ pair[0] >> topByteShift;
        WordPair const carried = {last * everyByte, between * everyByte};
        storePair(pair ^ carried, out);
        last = between ^ pair[1] >> topByteShift;
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
