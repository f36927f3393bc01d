#pragma once
// Certificates and keys made for a test with the openssl command, to sign files with and to
// read back.

#include <filesystem>
#include <string>

namespace odlex::test {

struct TestCertificate {
  std::filesystem::path key;  // the private key, PEM
  std::filesystem::path pem;  // the certificate, PEM
  std::filesystem::path der;  // the same certificate, DER
};

// A certificate named `name` (the files' stem) in `folder` for the subject `subject`, written
// as openssl's -subj takes it ("/C=DE/O=Example/CN=Signer"): self-signed, or signed by
// `issuer`. Fails the test (and gives empty paths) when openssl fails.
TestCertificate makeCertificate(const std::filesystem::path& folder, const std::string& name,
                                const std::string& subject,
                                const TestCertificate* issuer = nullptr);

}  // namespace odlex::test
