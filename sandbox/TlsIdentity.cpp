#include "sandbox/TlsIdentity.h"

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>

namespace kovena::sandbox {

namespace {

template<class T, void (*Free)(T *)> struct Deleter
{
    void operator()(T *p) const { Free(p); }
};
using KeyPtr = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY, EVP_PKEY_free>>;
using CertPtr = std::unique_ptr<X509, Deleter<X509, X509_free>>;
using BioPtr = std::unique_ptr<BIO, Deleter<BIO, BIO_free_all>>;
using ExtPtr = std::unique_ptr<X509_EXTENSION, Deleter<X509_EXTENSION, X509_EXTENSION_free>>;

bool addExtension(X509 *cert, int nid, const char *value)
{
    X509V3_CTX ctx;
    X509V3_set_ctx_nodb(&ctx);
    X509V3_set_ctx(&ctx, cert, cert, nullptr, nullptr, 0);
    ExtPtr extension(X509V3_EXT_conf_nid(nullptr, &ctx, nid, value));
    return extension && X509_add_ext(cert, extension.get(), -1) == 1;
}

bool addName(X509_NAME *name, const char *field, const char *value)
{
    return X509_NAME_add_entry_by_txt(
               name, field, MBSTRING_UTF8, reinterpret_cast<const unsigned char *>(value), -1, -1, 0)
        == 1;
}

std::string drain(BIO *bio)
{
    char *data = nullptr;
    const long size = BIO_get_mem_data(bio, &data);
    return size > 0 ? std::string(data, static_cast<std::size_t>(size)) : std::string();
}

} // namespace

TlsIdentity TlsIdentity::selfSigned()
{
    KeyPtr key(EVP_EC_gen("P-256"));
    CertPtr cert(X509_new());
    if (!key || !cert)
        return {};

    // Random serial numbers: a client that saw an earlier run's certificate must not take
    // this one for it.
    unsigned char serial[16];
    if (RAND_bytes(serial, sizeof(serial)) != 1)
        return {};
    serial[0] &= 0x7f;
    BIGNUM *number = BN_bin2bn(serial, sizeof(serial), nullptr);
    const bool serialSet = number && BN_to_ASN1_INTEGER(number, X509_get_serialNumber(cert.get()));
    BN_free(number);

    X509_NAME *name = X509_get_subject_name(cert.get());
    const bool ok = serialSet && X509_set_version(cert.get(), 2) == 1
        && X509_gmtime_adj(X509_getm_notBefore(cert.get()), -3600)
        && X509_gmtime_adj(X509_getm_notAfter(cert.get()), 2 * 24 * 3600)
        && addName(name, "O", "Kovena sandbox") && addName(name, "CN", "127.0.0.1")
        && X509_set_issuer_name(cert.get(), name) == 1 && X509_set_pubkey(cert.get(), key.get()) == 1
        && addExtension(cert.get(), NID_basic_constraints, "critical,CA:TRUE")
        && addExtension(cert.get(), NID_subject_key_identifier, "hash")
        && addExtension(cert.get(), NID_subject_alt_name, "IP:127.0.0.1,DNS:localhost")
        && X509_sign(cert.get(), key.get(), EVP_sha256()) > 0;
    if (!ok)
        return {};

    BioPtr certificate(BIO_new(BIO_s_mem()));
    BioPtr privateKey(BIO_new(BIO_s_mem()));
    if (!certificate || !privateKey || PEM_write_bio_X509(certificate.get(), cert.get()) != 1
        || PEM_write_bio_PrivateKey(privateKey.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) != 1)
        return {};
    return { drain(certificate.get()), drain(privateKey.get()) };
}

} // namespace kovena::sandbox
