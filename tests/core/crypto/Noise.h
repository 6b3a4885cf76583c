#pragma once

#include <QByteArray>
#include <random>

/// \a size bytes that do not compress, the same for the same \a seed.
inline QByteArray noise(qsizetype size, unsigned seed = 1)
{
    std::mt19937_64 engine(seed);
    QByteArray bytes(size, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(engine() >> 24);
    }
    return bytes;
}
