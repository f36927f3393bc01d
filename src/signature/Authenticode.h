#pragma once
// The Authenticode signature of a file: PKCS#7 signed data whose content (SpcIndirectDataContent)
// carries the digest of the signed file, signed by the signer's certificate.

#include <openssl/evp.h>
#include <openssl/pkcs7.h>

#include <memory>
#include <span>
#include <vector>

#include "signature/Certificate.h"

namespace odlex::signature {

// Status codes of a signature check, as Windows' trust checks give them.
inline constexpr unsigned long kTrustNoSignature = 0x800B0100;  // the file carries none
inline constexpr unsigned long kTrustBadDigest = 0x80096010;    // digest or signature wrong
inline constexpr unsigned long kBadMessage = 0x8009200D;        // damaged signature data
// A file status as such a code.
inline unsigned long fileStatusCode(unsigned long status) {
  return 0x80070000ul | (status & 0xffff);
}

struct Pkcs7Free {
  void operator()(PKCS7* pkcs7) const { PKCS7_free(pkcs7); }
};

class Authenticode {
 public:
  // The signature in `der` (a PKCS#7 ContentInfo); null when it is not Authenticode signed
  // data with one signer whose certificate it holds.
  static std::unique_ptr<Authenticode> parse(std::span<const unsigned char> der);

  const X509* signer() const { return signer_; }
  const EVP_MD* digestType() const { return digestType_; }
  // The digest of the signed file, as signed.
  const std::vector<unsigned char>& signedDigest() const { return signedDigest_; }
  // Whether the signer's signature over the content (through its signed attributes) holds:
  // the message digest attribute matches the content and the signature verifies with the
  // signer certificate's key. Whether the certificate is trusted is not asked.
  bool signatureHolds() const;

 private:
  std::unique_ptr<PKCS7, Pkcs7Free> pkcs7_;
  const X509* signer_ = nullptr;
  const EVP_MD* digestType_ = nullptr;
  std::span<const unsigned char> content_;  // the content's value, inside pkcs7_
  std::vector<unsigned char> signedDigest_;
};

}  // namespace odlex::signature
