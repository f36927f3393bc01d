#pragma once
// X.509 certificates through OpenSSL: parsing untrusted bytes, and the texts shown for them.

#include <openssl/x509.h>

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace odlex::signature {

struct X509Free {
  void operator()(X509* certificate) const { X509_free(certificate); }
};
using Certificate = std::unique_ptr<X509, X509Free>;

// The certificate held by `bytes`: DER, or PEM ("-----BEGIN CERTIFICATE-----" armour, text
// before it allowed). Null when the bytes are neither, or when DER data is followed by
// anything (a certificate is the whole value).
Certificate parseCertificate(std::span<const unsigned char> bytes);

// A distinguished name as text, in the order the certificate encodes it: "CN=Name; O=Org",
// attributes by their usual short names (CN, O, OU, L, S, C, E, ...; other types by dotted
// number), separated by "; " (also within a multi-valued name part). A value is put in double
// quotes (with quotes inside doubled) when it is empty, starts or ends with a space, or holds
// one of , + = " ; < > # or a line break; a value that is not text is shown as '#' and the hex
// of its encoding.
std::u16string nameToString(const X509_NAME* name);

// A certificate time as UTC "YYYY-MM-DDTHH:MM:SSZ"; empty when it does not parse.
std::u16string timeText(const ASN1_TIME* time);

// The SHA-1 digest of the certificate's encoding in upper-case hex, as Windows shows a
// certificate's thumbprint; empty when it cannot be computed.
std::u16string thumbprint(const X509* certificate);

// The DER encoding of `certificate`; empty when it cannot be encoded.
std::vector<unsigned char> encode(const X509* certificate);

}  // namespace odlex::signature
