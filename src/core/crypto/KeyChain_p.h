#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// The chained XOR of a message's body, eight bytes at a time.
///
/// Byte i of the scrambled body is byte i of the plain body XOR key[i mod 8] XOR the scrambled byte before
/// it (0 before the first). One object runs over one body from its start, in pieces of any length.
class KeyChain
{
public:
    explicit KeyChain(std::span<unsigned char const> key);

    /// Scrambles \a size bytes from \a in to \a out, which may be the same place.
    void scramble(unsigned char const* in, unsigned char* out, std::size_t size);

    /// Unscrambles \a size bytes from \a in to \a out, which may be the same place.
    void unscramble(unsigned char const* in, unsigned char* out, std::size_t size);

private:
    unsigned char nextKeyByte();

    std::uint64_t m_key = 0; ///< the low byte meets the next byte of the body
    unsigned char m_last = 0;
};
