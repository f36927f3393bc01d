// Fuzz target: the input is a signed file, a PE file or an installer package, or the PKCS#7
// signed data alone. Its signature is read and checked and its digest computed as for a
// signature check. Damage must be refused, never crash, hang or allocate beyond the input.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "signature/Authenticode.h"
#include "signature/PackageSignature.h"
#include "signature/PeImage.h"

using namespace odlex::signature;

namespace {

void check(std::span<const unsigned char> pkcs7) {
  if (const auto authenticode = Authenticode::parse(pkcs7))
    authenticode->signatureHolds();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const unsigned char> bytes(data, size);
  check(bytes);
  if (const auto layout = peSignatureLayout(bytes)) {
    check(pePkcs7(bytes, *layout));
    peDigest(bytes, *layout, EVP_sha256());
  }
  std::string error;
  const auto package = odlex::storage::CompoundFileReader::openBytes(
      std::vector<std::uint8_t>(bytes.begin(), bytes.end()), error);
  if (package) {
    std::vector<unsigned char> digest;
    std::vector<unsigned char> metadata;
    packageMetadataDigest(*package, EVP_sha256(), metadata, error);
    packageDigest(*package, EVP_sha256(), metadata, digest, error);
    if (const auto stream = rootStream(*package, kDigitalSignatureStream)) {
      std::vector<std::uint8_t> pkcs7;
      if (package->readStream(*stream, pkcs7, error))
        check(pkcs7);
    }
  }
  return 0;
}
