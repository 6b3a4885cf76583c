#include "Digest_p.h"

QtDigest::QtDigest(DigestAlgorithm algorithm)
    : m_hash(std::make_unique<QCryptographicHash>(
          algorithm == DigestAlgorithm::Sha1 ? QCryptographicHash::Sha1 : QCryptographicHash::Sha256))
{
}

void QtDigest::update(QByteArrayView bytes)
{
    m_hash->addData(bytes);
}

QByteArray QtDigest::finish()
{
    return m_hash->result();
}

#ifdef SOFTPHONECORE_HAS_OPENSSL

#include <array>
#include <openssl/evp.h>

void OpenSslDigest::Deleter::operator()(EVP_MD_CTX* context) const
{
    EVP_MD_CTX_free(context);
}

OpenSslDigest::OpenSslDigest(DigestAlgorithm algorithm)
    : m_context(EVP_MD_CTX_new())
{
    EVP_MD const* const type = algorithm == DigestAlgorithm::Sha1 ? EVP_sha1() : EVP_sha256();
    if (m_context && EVP_DigestInit_ex(m_context.get(), type, nullptr) != 1) {
        m_context.reset();
    }
}

void OpenSslDigest::update(QByteArrayView bytes)
{
    if (m_context &&
        EVP_DigestUpdate(m_context.get(), bytes.data(), static_cast<std::size_t>(bytes.size())) != 1) {
        m_context.reset();
    }
}

QByteArray OpenSslDigest::finish()
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest;
    unsigned int size = 0;
    if (!m_context || EVP_DigestFinal_ex(m_context.get(), digest.data(), &size) != 1) {
        return QByteArray();
    }
    return QByteArray(reinterpret_cast<char const*>(digest.data()), static_cast<qsizetype>(size));
}

#endif
