// MsiDigitalSignatureInfo on certificate files made by openssl, and on files that are none;
// MsiDigitalFileSignatureInfo on a PE file and on an installer package signed in the test by
// osslsigncode, on vendor-signed PE files, on copies with one byte changed after signing, and
// on unsigned files.

#include <gtest/gtest.h>

#include <odlex/signature/MsiDigitalFileSignatureInfo.h>
#include <odlex/signature/MsiDigitalSignatureInfo.h>

#include <algorithm>
#include <fstream>
#include <tuple>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"
#include "common/TestCertificates.h"

namespace odlex::test {
namespace {

struct CertificateExpected {
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

  const CertificateExpected cases[] = {
      {ca.der, true, 0, root, root},
      {leaf.der, true, 0, signer, root},
      {leaf.pem, true, 0, signer, root},
      {dir / "empty.cer", false, 38, u"", u""},
      {dir / "garbage.cer", false, 13, u"", u""},
      {dir / "missing.cer", false, 2, u"", u""},
      {dir / "folder.cer", false, 5, u"", u""},
  };
  for (const CertificateExpected& expected : cases) {
    SCOPED_TRACE(expected.file.filename().string());
    MSIBinary file(TalString::FromUtf8(expected.file.string()));
    MsiDigitalSignatureInfo info(file);
    EXPECT_EQ(info.IsValid(), expected.valid);
    EXPECT_EQ(info.GetError(), expected.error);
    EXPECT_EQ(info.GetSubject().u16(), expected.subject);
    EXPECT_EQ(info.GetIssuer().u16(), expected.issuer);
    EXPECT_EQ(info.GetThumbprint().u16().size(), expected.valid ? 40u : 0u);
    // The validity times as 2026-01-31T12:00:00Z.
    EXPECT_EQ(info.GetValidFrom().u16().size(), expected.valid ? 20u : 0u);
    EXPECT_EQ(info.GetValidTo().u16().size(), expected.valid ? 20u : 0u);
  }

  // A value read from a package has no file: its bytes are the certificate. Its thumbprint is
  // the SHA-1 fingerprint openssl gives.
  MSIBinary fromFile(TalString::FromUtf8(ca.der.string()));
  MSIBinary bytes(fromFile.GetData(), fromFile.GetSize());
  MsiDigitalSignatureInfo info(bytes);
  EXPECT_EQ(info.GetSubject().u16(), root);
  const ProcessResult fingerprint =
      runProcess({"openssl", "x509", "-noout", "-fingerprint", "-sha1", "-in", ca.pem.string()});
  std::string thumbprint = fingerprint.out.substr(fingerprint.out.find('=') + 1);
  std::erase(thumbprint, ':');
  std::erase(thumbprint, '\n');
  EXPECT_EQ(info.GetThumbprint().ToUtf8(), thumbprint);
}

void put(std::string& bytes, std::size_t at, std::uint32_t value, std::size_t width) {
  for (std::size_t i = 0; i < width; ++i)
    bytes[at + i] = static_cast<char>(value >> (8 * i));
}

// The smallest PE32 file osslsigncode signs: headers with 16 data directories, no sections, and
// 512 bytes of body.
std::string minimalPeFile() {
  std::string image(1024, '\0');
  image[0] = 'M';
  image[1] = 'Z';
  put(image, 0x3c, 0x40, 4);
  put(image, 0x40, 0x00004550, 4);  // "PE\0\0"
  put(image, 0x44, 0x14c, 2);       // machine: i386
  put(image, 0x54, 224, 2);         // size of the optional header
  put(image, 0x56, 0x0102, 2);      // characteristics: executable, 32-bit
  const std::size_t optional = 0x58;
  put(image, optional, 0x10b, 2);       // PE32
  put(image, optional + 56, 0x400, 4);  // size of image
  put(image, optional + 60, 0x200, 4);  // size of headers
  put(image, optional + 92, 16, 4);     // data directories
  for (std::size_t i = 0x200; i < image.size(); ++i)
    image[i] = static_cast<char>(i);
  return image;
}

// A copy of `from` with the byte at `at` changed.
std::filesystem::path withByteChanged(const std::filesystem::path& from, std::size_t at) {
  std::string bytes = readFileBytes(from);
  bytes.at(at) ^= 0x01;
  const std::filesystem::path changed = from.string() + "." + std::to_string(at);
  writeFileBytes(changed, bytes);
  return changed;
}

// The same at the first byte of the first occurrence of `text`.
std::filesystem::path withByteChanged(const std::filesystem::path& from, std::string_view text) {
  const std::size_t at = readFileBytes(from).find(text);
  EXPECT_NE(at, std::string::npos) << text;
  return withByteChanged(from, at);
}

// The value osslsigncode shows after the first of `labels` it prints for `file`, upper-case
// hex; its whole output when it prints none.
std::string osslsigncodeValue(const std::filesystem::path& file,
                              std::initializer_list<std::string_view> labels) {
  const ProcessResult verify = runProcess({"osslsigncode", "verify", "-in", file.string()});
  for (std::string_view label : labels) {
    const std::size_t at = verify.out.find(label);
    if (at == std::string::npos)
      continue;
    const std::size_t start = verify.out.find(": ", at) + 2;
    return verify.out.substr(start, verify.out.find_first_of(" \n", start) - start);
  }
  return verify.out;
}

// The signed digest osslsigncode reads from a package or a PE file.
std::string signedDigestByOsslsigncode(const std::filesystem::path& file) {
  return osslsigncodeValue(file, {"Current DigitalSignature", "Current message digest"});
}

std::string bytesOfHex(const std::string& hex) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  return bytes;
}

std::string hex(const MSIBinary& bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (unsigned long i = 0; i < bytes.GetSize(); ++i) {
    text += kDigits[bytes.GetData()[i] >> 4];
    text += kDigits[bytes.GetData()[i] & 15];
  }
  return text;
}

struct Expected {
  std::filesystem::path file;
  unsigned long result;
  bool certificateRead;
};

TEST(FileSignature, SignedChangedAndUnsignedFiles) {
  TempDir dir;
  const TestCertificate signer = makeCertificate(dir.path(), "signer", "/O=Example/CN=Signer");
  writeFileBytes(dir / "app.exe", minimalPeFile());
  const BuiltPackage& wixl = testPackage(PackageKind::kWixl);
  ASSERT_FALSE(wixl.file.empty()) << wixl.error;
  // The package also with "\005MsiDigitalSignatureEx" (-add-msi-dse).
  const std::tuple<std::filesystem::path, std::filesystem::path, bool> signings[] = {
      {dir / "app.exe", dir / "signed.exe", false},
      {wixl.file, dir / "signed.msi", false},
      {wixl.file, dir / "signed-ex.msi", true},
  };
  for (const auto& [in, out, withEx] : signings) {
    std::vector<std::string> argv = {
        "osslsigncode", "sign",      "-certs", signer.pem.string(), "-key", signer.key.string(),
        "-in",          in.string(), "-out",   out.string()};
    if (withEx)
      argv.push_back("-add-msi-dse");
    const ProcessResult sign = runProcess(argv);
    ASSERT_TRUE(sign.ok()) << sign.describe();
  }
  // A byte of the PE body, and one of the package's string pool (a file name).
  const std::filesystem::path changedExe =
      withByteChanged(dir / "signed.exe", std::string_view("\x10\x11\x12\x13", 4));
  const std::filesystem::path changedMsi = withByteChanged(dir / "signed.msi", "Zeichenketten");
  const std::filesystem::path changedExMsi =
      withByteChanged(dir / "signed-ex.msi", "Zeichenketten");
  // The description digest that "\005MsiDigitalSignatureEx" holds, changed.
  const std::filesystem::path changedExStream = withByteChanged(
      dir / "signed-ex.msi",
      bytesOfHex(osslsigncodeValue(dir / "signed-ex.msi", {"Current MsiDigitalSignatureEx"})));
  // A byte of the signer's signature value, the last field of the signed data (osslsigncode
  // pads the table to 8 bytes after it): the digest still matches, the signature does not.
  const std::filesystem::path forgedExe =
      withByteChanged(dir / "signed.exe", std::filesystem::file_size(dir / "signed.exe") - 20);

  const Expected cases[] = {
      {dir / "signed.exe", 0, true},        {dir / "signed.msi", 0, true},
      {changedExe, 0x80096010, true},       {changedMsi, 0x80096010, true},
      {forgedExe, 0x80096010, true},        {dir / "signed-ex.msi", 0, true},
      {changedExMsi, 0x80096010, true},     {changedExStream, 0x80096010, true},
      {dir / "app.exe", 0x800B0100, false}, {wixl.file, 0x800B0100, false},
      {signer.der, 0x800B0100, false},      {dir / "missing.exe", 0x80070002, false},
  };
  for (const Expected& expected : cases) {
    SCOPED_TRACE(expected.file.filename().string());
    MsiDigitalFileSignatureInfo info(TalString::FromUtf8(expected.file.string()), u"1");
    EXPECT_EQ(info.GetResult(), expected.result);
    EXPECT_EQ(info.IsSigned(), expected.result == 0);
    EXPECT_EQ(info.GetDiskID().u16(), u"1");
    EXPECT_EQ(info.GetSubject().u16(), expected.certificateRead ? u"O=Example; CN=Signer" : u"");
    EXPECT_EQ(info.GetIssuer().u16(), expected.certificateRead ? u"O=Example; CN=Signer" : u"");
    EXPECT_EQ(info.GetCertData().GetSize() > 0, expected.certificateRead);
    if (expected.certificateRead) {
      EXPECT_EQ(hex(info.GetHash()), signedDigestByOsslsigncode(expected.file));
    }
  }
}

// Files signed by their vendor with a certificate chain of its own: Debian's signed boot
// helpers (scripts/setup.sh installs them), and a copy of one changed in its middle.
TEST(FileSignature, VendorSignedPeFiles) {
  TempDir dir;
  const std::filesystem::path shim = "/usr/lib/shim";
  ASSERT_TRUE(std::filesystem::exists(shim / "mmx64.efi.signed")) << "run scripts/setup.sh";
  std::filesystem::copy_file(shim / "mmx64.efi.signed", dir / "mmx64.efi");
  const std::filesystem::path changed =
      withByteChanged(dir / "mmx64.efi", std::filesystem::file_size(dir / "mmx64.efi") / 2);
  for (const auto& file : {shim / "mmx64.efi.signed", shim / "fbx64.efi.signed", changed}) {
    SCOPED_TRACE(file.string());
    MsiDigitalFileSignatureInfo info(TalString::FromUtf8(file.string()), TalString());
    EXPECT_EQ(info.GetResult(), file == changed ? 0x80096010 : 0u);
    EXPECT_TRUE(info.GetSubject().u16().starts_with(u"CN=Debian Secure Boot Signer"));
    EXPECT_EQ(info.GetIssuer().u16(), u"CN=Debian Secure Boot CA");
    EXPECT_EQ(hex(info.GetHash()), signedDigestByOsslsigncode(file));
  }
}

}  // namespace
}  // namespace odlex::test
