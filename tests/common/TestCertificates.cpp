// Test certificates through the openssl command.

#include "common/TestCertificates.h"

#include <gtest/gtest.h>

#include "common/Oracle.h"

namespace odlex::test {
namespace {

bool run(const std::vector<std::string>& argv) {
  const ProcessResult result = runProcess(argv);
  EXPECT_TRUE(result.ok()) << argv[1] << ": " << result.describe();
  return result.ok();
}

}  // namespace

TestCertificate makeCertificate(const std::filesystem::path& folder, const std::string& name,
                                const std::string& subject, const TestCertificate* issuer) {
  const TestCertificate made{folder / (name + ".key"), folder / (name + ".pem"),
                             folder / (name + ".der")};
  const std::vector<std::string> newKey = {"-newkey",         "rsa:2048", "-nodes", "-keyout",
                                           made.key.string(), "-subj",    subject};
  bool ok;
  if (issuer == nullptr) {
    std::vector<std::string> argv = {"openssl", "req",  "-x509",          "-days",
                                     "30",      "-out", made.pem.string()};
    argv.insert(argv.end(), newKey.begin(), newKey.end());
    ok = run(argv);
  } else {
    const std::string request = (folder / (name + ".csr")).string();
    std::vector<std::string> argv = {"openssl", "req", "-new", "-out", request};
    argv.insert(argv.end(), newKey.begin(), newKey.end());
    ok = run(argv) &&
         run({"openssl", "x509", "-req", "-in", request, "-CA", issuer->pem.string(), "-CAkey",
              issuer->key.string(), "-set_serial", "2", "-days", "30", "-out", made.pem.string()});
  }
  if (!ok || !run({"openssl", "x509", "-in", made.pem.string(), "-outform", "DER", "-out",
                   made.der.string()}))
    return {};
  return made;
}

}  // namespace odlex::test
