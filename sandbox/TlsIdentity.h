#pragma once

#include <string>

namespace kovena::sandbox {

// What an HTTPS sandbox presents: a certificate and its private key, both PEM. Made at run time
// and kept in memory; only the certificate is ever meant to leave the process (for a client to
// trust it).
struct TlsIdentity
{
    std::string certificatePem;
    std::string privateKeyPem;

    // A fresh P-256 key and a certificate signed by that key for 127.0.0.1 and localhost, valid
    // from an hour ago for two days. Empty strings if OpenSSL fails.
    static TlsIdentity selfSigned();
};

} // namespace kovena::sandbox
