#pragma once
// MsiDigitalFileSignatureInfo: the Authenticode signature of a signed file, for the
// MsiDigitalSignature table. The file is a PE file (its certificate table holds PKCS#7 signed
// data) or an installer package (its "\005DigitalSignature" stream does). The signature is
// checked as the installer checks it with an invalid hash fatal: the file's digest is computed
// (for a package over its streams and storages, and, when it has a
// "\005MsiDigitalSignatureEx" stream, over the entries' names, sizes, class ids, state bits
// and times too, which that stream must match) and compared with the signed one, and the
// signer's signature over it must hold. Whether the signer's certificate is trusted is not
// asked: there is no certificate store here.
//
// GetResult() says how the check went: 0 the signature holds; 0x800B0100 the file carries no
// signature (also a file that is neither a PE file nor a package); 0x80096010 the digest differs
// or the signer's signature does not hold; 0x8009200D the signature data is damaged;
// 0x8007xxxx the file could not be read (xxxx the file status, 2 no such file, ...).
// When the signature data could be read, the signer's subject, issuer and encoded certificate
// and the signed digest are kept whatever the result, so that a caller can show what the file
// claims; IsSigned() is true only when the result is 0.

#include <odlex/msi/MSIBinary.h>
#include <odlex/support/TalString.h>

class MsiDigitalFileSignatureInfo {
 public:
  // Largest PE file read whole to be checked (packages are read a stream at a time).
  static constexpr unsigned long long kMaxFileSize = 1ull << 30;

  MsiDigitalFileSignatureInfo(TalString file, TalString diskID);
  // Copies every field: the record owns no resource beyond its values.
  MsiDigitalFileSignatureInfo(const MsiDigitalFileSignatureInfo&) = default;
  MsiDigitalFileSignatureInfo& operator=(const MsiDigitalFileSignatureInfo&) = default;
  ~MsiDigitalFileSignatureInfo() = default;

  bool IsSigned() const { return signed_; }
  unsigned long GetResult() const { return result_; }
  TalString GetFile() const { return file_; }
  TalString GetDiskID() { return diskID_; }
  TalString GetSubject() { return subject_; }
  TalString GetIssuer() { return issuer_; }
  // The signer's certificate, DER; empty when no signature was read.
  MSIBinary& GetCertData() { return certData_; }
  // The file's digest as signed; empty when no signature was read.
  MSIBinary& GetHash() { return hash_; }

  // The record the library keeps for a signature check running beside the host's thread. The
  // library runs none (checks run in the constructor, on the caller's thread), so this is
  // always null.
  static MsiDigitalFileSignatureInfo* GetThread() { return nullptr; }

 private:
  TalString file_;
  TalString diskID_;
  bool signed_ = false;
  unsigned long result_ = 0;
  TalString subject_;
  TalString issuer_;
  MSIBinary certData_;
  MSIBinary hash_;
};
