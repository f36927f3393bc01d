// PE headers as the Authenticode digest needs them.

#include "signature/PeImage.h"

#include <algorithm>
#include <memory>

namespace odlex::signature {
namespace {

constexpr std::uint16_t kPe32 = 0x10b;
constexpr std::uint16_t kPe32Plus = 0x20b;
constexpr std::size_t kCertificateDirectory = 4;  // index of the certificate table entry
constexpr std::uint16_t kPkcsSignedData = 2;      // WIN_CERTIFICATE type

std::uint32_t le(std::span<const unsigned char> bytes, std::size_t at, std::size_t width) {
  return peLittleEndian(bytes, at, width);
}

}  // namespace

std::uint32_t peLittleEndian(std::span<const unsigned char> bytes, std::size_t at,
                             std::size_t width) {
  std::uint32_t value = 0;
  for (std::size_t i = width; i-- > 0;)
    value = value << 8 | bytes[at + i];
  return value;
}

std::optional<PeHeaders> peHeaders(std::span<const unsigned char> image) {
  if (image.size() < 0x40 || image[0] != 'M' || image[1] != 'Z')
    return std::nullopt;
  const std::size_t pe = le(image, 0x3c, 4);
  if (pe > image.size() || image.size() - pe < 24 || le(image, pe, 4) != 0x00004550)
    return std::nullopt;
  const std::size_t coff = pe + 4;
  PeHeaders headers;
  headers.optionalSize = le(image, coff + 16, 2);
  headers.optionalHeader = coff + 20;
  if (image.size() - headers.optionalHeader < headers.optionalSize || headers.optionalSize < 2)
    return std::nullopt;
  const std::uint16_t magic = static_cast<std::uint16_t>(le(image, headers.optionalHeader, 2));
  if (magic != kPe32 && magic != kPe32Plus)
    return std::nullopt;
  const std::size_t optionalEnd = headers.optionalHeader + headers.optionalSize;
  headers.directories = headers.optionalHeader + (magic == kPe32 ? 96 : 112);
  if (headers.directories <= optionalEnd) {
    const std::size_t declared = le(image, headers.directories - 4, 4);
    headers.directoryCount = std::min(declared, (optionalEnd - headers.directories) / 8);
  }
  headers.sections = optionalEnd;
  headers.sectionCount = le(image, coff + 2, 2);
  return headers;
}

std::optional<PeSignatureLayout> peSignatureLayout(std::span<const unsigned char> image) {
  const std::optional<PeHeaders> headers = peHeaders(image);
  if (!headers || headers->directoryCount <= kCertificateDirectory)
    return std::nullopt;
  PeSignatureLayout layout;
  layout.checksumOffset = headers->optionalHeader + 64;
  layout.certificateEntryOffset = headers->directories + 8 * kCertificateDirectory;
  layout.tableOffset = le(image, layout.certificateEntryOffset, 4);
  layout.tableSize = le(image, layout.certificateEntryOffset + 4, 4);
  if (layout.tableOffset == 0 || layout.tableSize == 0) {
    layout.tableOffset = layout.tableSize = 0;
  } else if (layout.tableOffset < layout.certificateEntryOffset + 8 ||
             layout.tableOffset > image.size() ||
             layout.tableSize > image.size() - layout.tableOffset) {
    return std::nullopt;
  }
  return layout;
}

std::span<const unsigned char> pePkcs7(std::span<const unsigned char> image,
                                       const PeSignatureLayout& layout) {
  if (layout.tableSize < 8)
    return {};
  const std::span<const unsigned char> table = image.subspan(layout.tableOffset, layout.tableSize);
  const std::size_t length = le(table, 0, 4);
  if (length < 8 || length > table.size() || le(table, 6, 2) != kPkcsSignedData)
    return {};
  return table.subspan(8, length - 8);
}

std::vector<unsigned char> peDigest(std::span<const unsigned char> image,
                                    const PeSignatureLayout& layout, const EVP_MD* type) {
  std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                  EVP_MD_CTX_free);
  const std::size_t tableEnd = layout.tableOffset + layout.tableSize;
  const std::size_t end = layout.tableSize == 0 ? image.size() : layout.tableOffset;
  const std::span<const unsigned char> parts[] = {
      image.subspan(0, layout.checksumOffset),
      image.subspan(layout.checksumOffset + 4,
                    layout.certificateEntryOffset - layout.checksumOffset - 4),
      image.subspan(layout.certificateEntryOffset + 8, end - layout.certificateEntryOffset - 8),
      layout.tableSize == 0 ? std::span<const unsigned char>() : image.subspan(tableEnd),
  };
  std::vector<unsigned char> digest(EVP_MAX_MD_SIZE);
  unsigned int length = 0;
  if (!context || EVP_DigestInit_ex(context.get(), type, nullptr) != 1)
    return {};
  for (const auto& part : parts)
    EVP_DigestUpdate(context.get(), part.data(), part.size());
  if (EVP_DigestFinal_ex(context.get(), digest.data(), &length) != 1)
    return {};
  digest.resize(length);
  return digest;
}

}  // namespace odlex::signature
