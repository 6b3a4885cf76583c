// The input is the key's low byte, the mode, and bytes that are once a message
// and once data.

#include <crypto/Crypto.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size < 2) {
        return 0;
    }
    unsigned long long const key = data[0];
    auto const mode = static_cast<Crypto::ProtectionMode>(data[1] % 4);
    QByteArray const bytes(reinterpret_cast<char const*>(data + 2), static_cast<qsizetype>(size - 2));

    QByteArray const decrypted = Crypto::decrypt(bytes, key);
    // No stream expands more than 1032-fold.
    if (decrypted.size() > 1032 * bytes.size()) {
        std::abort();
    }
    if (Crypto::decrypt(Crypto::encrypt(bytes, key, mode), key) != bytes) {
        std::abort();
    }
    return 0;
}
