#pragma once
// MsiDigitalSignatureInfo: what a certificate file says about its owner, for the
// MsiDigitalCertificate table. The certificate is read from the file that holds the binary
// value (MSIBinary::GetBinaryFile); a value with no file (one read from a package) gives its
// bytes instead. DER and PEM files are accepted.
//
// A file that cannot be read, an empty file and bytes that are no certificate leave the record
// invalid, with empty subject and issuer and a status in GetError(): the file's status (2 no
// such file, 3 a folder of the path missing, 5 not readable or a folder, 30 read failure),
// 38 for an empty file, 223 for a file over 16 MiB, 13 for bytes that are no certificate.
// Nothing is thrown.

#include <odlex/msi/MSIBinary.h>
#include <odlex/support/TalString.h>

#include <vector>

class MsiDigitalSignatureInfo {
 public:
  // Largest certificate file read.
  static constexpr unsigned long kMaxCertificateSize = 16ul << 20;

  explicit MsiDigitalSignatureInfo(MSIBinary& certificate);
  ~MsiDigitalSignatureInfo() = default;

  bool IsValid() const { return valid_; }
  unsigned long GetError() const { return error_; }
  // "CN=Name; O=Organisation; C=DE", in the certificate's order (see nameToString in the
  // signature code); empty when the record is invalid.
  TalString GetSubject() { return subject_; }
  TalString GetIssuer() { return issuer_; }
  // Beyond the installer's record, for showing a certificate: the validity period as UTC
  // "YYYY-MM-DDTHH:MM:SSZ", and the SHA-1 thumbprint of the encoded certificate in upper-case
  // hex; empty when the record is invalid.
  TalString GetValidFrom() const { return validFrom_; }
  TalString GetValidTo() const { return validTo_; }
  TalString GetThumbprint() const { return thumbprint_; }

 protected:
  // Reads the whole file at `path` into the record's bytes; false (with the status in the
  // error) when it cannot be read or is empty.
  bool ReadCert(const TalString& path);

 private:
  bool valid_ = false;
  unsigned long error_ = 0;
  TalString subject_;
  TalString issuer_;
  TalString validFrom_;
  TalString validTo_;
  TalString thumbprint_;
  std::vector<unsigned char> bytes_;
};
