#pragma once
// The Authenticode parts of an installer package (a compound file): the signature in its
// "\005DigitalSignature" stream and the digest of its content.

#include <openssl/evp.h>

#include <span>
#include <string>
#include <vector>

#include "storage/CompoundFile.h"

namespace odlex::signature {

// The root stream names of the signature data, which the digest leaves out.
inline constexpr std::u16string_view kDigitalSignatureStream =
    u"\x0005"
    u"DigitalSignature";
inline constexpr std::u16string_view kDigitalSignatureExStream =
    u"\x0005"
    u"MsiDigitalSignatureEx";

// The index of the root's child stream `name`, or nothing.
std::optional<std::uint32_t> rootStream(const storage::CompoundFileReader& package,
                                        std::u16string_view name);

// The digest of the package's content with `type`: `metadataDigest` (empty, or the
// packageMetadataDigest when the package has a "\005MsiDigitalSignatureEx" stream), then the
// streams of each storage in the order of their names' UTF-16LE bytes (a name that is the
// start of another first), a storage's content where its name falls, then the storage's class
// id; the root's signature streams are left out. False with the reason when a stream cannot
// be read.
bool packageDigest(const storage::CompoundFileReader& package, const EVP_MD* type,
                   std::span<const unsigned char> metadataDigest,
                   std::vector<unsigned char>& digest, std::string& error);

// The digest of what describes the package's entries (names, sizes, class ids, state bits and
// times), in the same order, which "\005MsiDigitalSignatureEx" holds.
bool packageMetadataDigest(const storage::CompoundFileReader& package, const EVP_MD* type,
                           std::vector<unsigned char>& digest, std::string& error);

}  // namespace odlex::signature
