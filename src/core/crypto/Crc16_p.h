#pragma once

#include <cstddef>
#include <cstdint>

/// The CRC-16 of ISO 3309 that qChecksum computes, sixteen bytes at a time.
class Crc16
{
public:
    void update(unsigned char const* bytes, std::size_t size);

    [[nodiscard]] std::uint16_t value() const { return static_cast<std::uint16_t>(~m_remainder); }

private:
    std::uint16_t m_remainder = 0xFFFF;
};
