// MsiDigitalSignatureInfo on certificate files made by openssl, and on files that are none.

#include <gtest/gtest.h>

#include <odlex/signature/MsiDigitalSignatureInfo.h>

#include <fstream>

#include "common/Oracle.h"
#include "common/TempDir.h"
#include "common/TestCertificates.h"

namespace odlex::test {
namespace {

struct Expected {
  std::filesystem::path file;
  bool valid;
  unsigned long error;
  std::u16string subject;
  std::u16string issuer;
};

TEST(CertificateInfo, SubjectIssuerOrError) {
  TempDir dir;
  const TestCertificate ca = makeCertificate(dir.path(), "ca", "/C=DE/O=Example CA/CN=Root");
  const TestCertificate leaf = makeCertificate(
      dir.path(), "leaf", "/C=DE/O=Example, Inc./OU= Tools/CN=Signer \"One\"/CN=#2", &ca);
  std::ofstream(dir / "empty.cer").close();
  std::ofstream(dir / "garbage.cer") << "not a certificate\n";
  std::filesystem::create_directory(dir / "folder.cer");
  const std::u16string root = u"C=DE; O=Example CA; CN=Root";
  const std::u16string signer =
      u"C=DE; O=\"Example, Inc.\"; OU=\" Tools\"; CN=\"Signer \"\"One\"\"\"; CN=\"#2\"";

  const Expected cases[] = {
      {ca.der, true, 0, root, root},
      {leaf.der, true, 0, signer, root},
      {leaf.pem, true, 0, signer, root},
      {dir / "empty.cer", false, 38, u"", u""},
      {dir / "garbage.cer", false, 13, u"", u""},
      {dir / "missing.cer", false, 2, u"", u""},
      {dir / "folder.cer", false, 5, u"", u""},
  };
  for (const Expected& expected : cases) {
    SCOPED_TRACE(expected.file.filename().string());
    MSIBinary file(TalString::FromUtf8(expected.file.string()));
    MsiDigitalSignatureInfo info(file);
    EXPECT_EQ(info.IsValid(), expected.valid);
    EXPECT_EQ(info.GetError(), expected.error);
    EXPECT_EQ(info.GetSubject().u16(), expected.subject);
    EXPECT_EQ(info.GetIssuer().u16(), expected.issuer);
    EXPECT_EQ(info.GetThumbprint().u16().size(), expected.valid ? 40u : 0u);
  }
}

// A value read from a package has no file: its bytes are the certificate. Its thumbprint is the
// SHA-1 fingerprint openssl gives.
TEST(CertificateInfo, BytesOfAValueWithoutFile) {
  TempDir dir;
  const TestCertificate ca = makeCertificate(dir.path(), "ca", "/CN=Root");
  MSIBinary fromFile(TalString::FromUtf8(ca.der.string()));
  MSIBinary bytes(fromFile.GetData(), fromFile.GetSize());
  MsiDigitalSignatureInfo info(bytes);
  EXPECT_TRUE(info.IsValid());
  EXPECT_EQ(info.GetSubject().u16(), u"CN=Root");
  const ProcessResult fingerprint =
      runProcess({"openssl", "x509", "-noout", "-fingerprint", "-sha1", "-in", ca.pem.string()});
  std::string expected = fingerprint.out.substr(fingerprint.out.find('=') + 1);
  std::erase(expected, ':');
  std::erase(expected, '\n');
  EXPECT_EQ(info.GetThumbprint().ToUtf8(), expected);
}

}  // namespace
}  // namespace odlex::test
