// Checking the Authenticode signature of a PE file or an installer package.

#include <odlex/signature/MsiDigitalFileSignatureInfo.h>

#include <algorithm>
#include <array>
#include <utility>

#include "msi/lower/PathText.h"
#include "signature/Authenticode.h"
#include "signature/PackageSignature.h"
#include "signature/PeImage.h"
#include "signature/SystemFile.h"
#include "storage/FileSystem.h"

using namespace odlex::signature;

namespace {

constexpr unsigned char kCompoundFileMagic[] = {0xd0, 0xcf, 0x11, 0xe0, 0xa1, 0xb1, 0x1a, 0xe1};

MSIBinary binaryOf(std::span<const unsigned char> bytes) {
  return MSIBinary(bytes.data(), static_cast<unsigned long>(bytes.size()));
}

}  // namespace

MsiDigitalFileSignatureInfo::MsiDigitalFileSignatureInfo(TalString file, TalString diskID)
    : file_(std::move(file)), diskID_(std::move(diskID)) {
  // A package is read through the compound-file reader, one stream at a time, so that its
  // cabinets are never held whole; a PE file is read whole, up to kMaxFileSize.
  const std::filesystem::path path = odlex::lower::toPath(file_);
  std::array<unsigned char, sizeof kCompoundFileMagic> start{};
  std::uint64_t size = 0;
  if (const unsigned long status = readFileStart(path, start, size); status != kSuccess) {
    result_ = status == kHandleEndOfFile ? kTrustNoSignature : fileStatusCode(status);
    return;
  }
  const bool isPackage = size >= start.size() &&
                         std::equal(start.begin(), start.end(), std::begin(kCompoundFileMagic));
  std::vector<unsigned char> bytes;
  if (!isPackage) {
    if (const unsigned long status = readWholeFile(path, kMaxFileSize, bytes); status != kSuccess) {
      result_ = status == kHandleEndOfFile ? kTrustNoSignature : fileStatusCode(status);
      return;
    }
  }
  std::span<const unsigned char> signature;
  std::vector<unsigned char> digest;
  std::unique_ptr<Authenticode> authenticode;
  const auto readSignature = [&]() -> bool {
    authenticode = Authenticode::parse(signature);
    if (!authenticode) {
      result_ = kBadMessage;
      return false;
    }
    subject_ = TalString(nameToString(X509_get_subject_name(authenticode->signer())));
    issuer_ = TalString(nameToString(X509_get_issuer_name(authenticode->signer())));
    certData_ = MSIBinary(encode(authenticode->signer()));
    hash_ = binaryOf(authenticode->signedDigest());
    return true;
  };

  if (isPackage) {
    std::string error;
    std::unique_ptr<odlex::storage::ReadableFile> file =
        odlex::storage::FileSystem::current().openRead(path, error);
    const auto package =
        file ? odlex::storage::CompoundFileReader::open(std::move(file), error) : nullptr;
    const auto stream = package ? rootStream(*package, kDigitalSignatureStream) : std::nullopt;
    std::vector<std::uint8_t> pkcs7;
    if (!stream) {
      result_ = kTrustNoSignature;
      return;
    }
    if (!package->readStream(*stream, pkcs7, error)) {
      result_ = kBadMessage;
      return;
    }
    signature = pkcs7;
    if (!readSignature())
      return;
    // With "\005MsiDigitalSignatureEx", the digest of the entries' descriptions it holds
    // must be the package's, and the content digest starts with it.
    std::vector<unsigned char> metadata;
    if (const auto ex = rootStream(*package, kDigitalSignatureExStream)) {
      std::vector<std::uint8_t> stored;
      if (!package->readStream(*ex, stored, error) ||
          !packageMetadataDigest(*package, authenticode->digestType(), metadata, error)) {
        result_ = kBadMessage;
        return;
      }
      if (stored != metadata) {
        result_ = kTrustBadDigest;
        return;
      }
    }
    if (!packageDigest(*package, authenticode->digestType(), metadata, digest, error)) {
      result_ = kBadMessage;
      return;
    }
  } else {
    const auto layout = peSignatureLayout(bytes);
    signature = layout ? pePkcs7(bytes, *layout) : std::span<const unsigned char>();
    if (signature.empty()) {
      result_ = kTrustNoSignature;
      return;
    }
    if (!readSignature())
      return;
    digest = peDigest(bytes, *layout, authenticode->digestType());
  }
  const bool holds = digest == authenticode->signedDigest() && authenticode->signatureHolds();
  result_ = holds ? kSuccess : kTrustBadDigest;
  signed_ = holds;
}
