// Reading a certificate file into its subject and issuer texts.

#include <odlex/signature/MsiDigitalSignatureInfo.h>

#include "msi/lower/PathText.h"
#include "signature/Certificate.h"
#include "signature/SystemFile.h"

using namespace odlex::signature;

MsiDigitalSignatureInfo::MsiDigitalSignatureInfo(MSIBinary& certificate) {
  if (!certificate.GetBinaryFile().isNull()) {
    if (!ReadCert(certificate.GetBinaryFile()))
      return;
  } else {
    bytes_.assign(certificate.GetData(), certificate.GetData() + certificate.GetSize());
  }
  const Certificate parsed = parseCertificate(bytes_);
  if (!parsed) {
    error_ = bytes_.empty() ? kHandleEndOfFile : kInvalidData;
    return;
  }
  subject_ = TalString(nameToString(X509_get_subject_name(parsed.get())));
  issuer_ = TalString(nameToString(X509_get_issuer_name(parsed.get())));
  validFrom_ = TalString(timeText(X509_get0_notBefore(parsed.get())));
  validTo_ = TalString(timeText(X509_get0_notAfter(parsed.get())));
  thumbprint_ = TalString(thumbprint(parsed.get()));
  valid_ = true;
}

bool MsiDigitalSignatureInfo::ReadCert(const TalString& path) {
  error_ = readWholeFile(odlex::lower::toPath(path), kMaxCertificateSize, bytes_);
  return error_ == kSuccess;
}
