#pragma once

#include <QByteArrayView>
#include <QCryptographicHash>
#include <memory>

#ifdef SOFTPHONECORE_HAS_OPENSSL
typedef struct evp_md_ctx_st EVP_MD_CTX;
#endif

enum class DigestAlgorithm { Sha1, Sha256 };

/// A digest computed by Qt, on every platform.
class QtDigest
{
public:
    explicit QtDigest(DigestAlgorithm algorithm);

    void update(QByteArrayView bytes);

    /// The digest of everything given so far; called once.
    [[nodiscard]] QByteArray finish();

private:
    // A pointer, because the hash itself can be neither copied nor, before Qt 6.5, moved.
    std::unique_ptr<QCryptographicHash> m_hash;
};

#ifdef SOFTPHONECORE_HAS_OPENSSL

/// The same computed by libcrypto, which uses what the processor offers for it. Its configuration can forbid
/// an algorithm; finish() then gives an empty array.
class OpenSslDigest
{
public:
    explicit OpenSslDigest(DigestAlgorithm algorithm);

    void update(QByteArrayView bytes);

    [[nodiscard]] QByteArray finish();

private:
    struct Deleter
    {
        void operator()(EVP_MD_CTX* context) const;
    };

    std::unique_ptr<EVP_MD_CTX, Deleter> m_context; ///< null once libcrypto has refused
};

using Digest = OpenSslDigest;

#else

using Digest = QtDigest;

#endif
