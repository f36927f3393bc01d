// Fuzz target: the input is a certificate file, DER or PEM. It is parsed and, when it parses,
// its names, dates and thumbprint are turned into text. Damage must be refused (no
// certificate), never crash or hang.

#include <cstddef>
#include <cstdint>
#include <span>

#include "signature/Certificate.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const odlex::signature::Certificate certificate =
      odlex::signature::parseCertificate(std::span<const unsigned char>(data, size));
  if (certificate) {
    odlex::signature::nameToString(X509_get_subject_name(certificate.get()));
    odlex::signature::nameToString(X509_get_issuer_name(certificate.get()));
    odlex::signature::timeText(X509_get0_notAfter(certificate.get()));
    odlex::signature::thumbprint(certificate.get());
  }
  return 0;
}
