#pragma once
// The Authenticode parts of a PE file (executable, DLL, driver): where its certificate table
// is and its digest without the parts the signature changes.

#include <openssl/evp.h>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace odlex::signature {

// Where the headers of a PE file lie (offsets into the file).
struct PeHeaders {
  std::size_t optionalHeader = 0;
  std::size_t optionalSize = 0;
  std::size_t directories = 0;     // the data directory
  std::size_t directoryCount = 0;  // its entries that lie inside the optional header
  std::size_t sections = 0;        // the section table (not checked against the file's size)
  std::size_t sectionCount = 0;
};

// The headers of `image`; nothing when it is no PE file (no "MZ" and "PE\0\0" headers, an
// optional header of unknown kind or outside the file).
std::optional<PeHeaders> peHeaders(std::span<const unsigned char> image);

// The little-endian number of `width` bytes at `at`. REQUIRES: the bytes lie inside `bytes`.
std::uint32_t peLittleEndian(std::span<const unsigned char> bytes, std::size_t at,
                             std::size_t width);

struct PeSignatureLayout {
  std::size_t checksumOffset = 0;          // the optional header's CheckSum field
  std::size_t certificateEntryOffset = 0;  // the certificate table's data-directory entry
  std::size_t tableOffset = 0;             // the certificate table (0 when there is none)
  std::size_t tableSize = 0;
};

// The layout of the PE file `image`; nothing when it is no PE file (no "MZ" and "PE\0\0"
// headers, an optional header of unknown kind or too short for the certificate entry) or its
// certificate table lies outside the file.
std::optional<PeSignatureLayout> peSignatureLayout(std::span<const unsigned char> image);

// The PKCS#7 signed data of the first certificate of the table (a WIN_CERTIFICATE of type
// PKCS_SIGNED_DATA); empty when there is none.
std::span<const unsigned char> pePkcs7(std::span<const unsigned char> image,
                                       const PeSignatureLayout& layout);

// The Authenticode digest of `image` with `type`: every byte except the CheckSum field, the
// certificate entry and the certificate table.
std::vector<unsigned char> peDigest(std::span<const unsigned char> image,
                                    const PeSignatureLayout& layout, const EVP_MD* type);

}  // namespace odlex::signature
