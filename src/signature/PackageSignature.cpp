// The digest of a package's streams and storages.

#include "signature/PackageSignature.h"

#include <algorithm>
#include <memory>

namespace odlex::signature {
namespace {

using storage::CompoundEntry;
using storage::CompoundFileReader;

// A name's bytes as the digest orders them: UTF-16LE, with the terminating zero.
std::vector<unsigned char> orderBytes(const std::u16string& name) {
  std::vector<unsigned char> bytes;
  for (char16_t c : name) {
    bytes.push_back(static_cast<unsigned char>(c & 0xff));
    bytes.push_back(static_cast<unsigned char>(c >> 8));
  }
  bytes.insert(bytes.end(), {0, 0});
  return bytes;
}

bool isSignatureStream(const std::u16string& name) {
  return name == kDigitalSignatureStream || name == kDigitalSignatureExStream;
}

class Digester {
 public:
  Digester(const CompoundFileReader& package, EVP_MD_CTX* context)
      : package_(package), context_(context) {}

  // Adds storage `index` and everything under it; `depth` bounds a damaged tree that loops.
  bool addStorage(std::uint32_t index, std::size_t depth, std::string& error) {
    const std::vector<CompoundEntry>& entries = package_.entries();
    if (depth > kMaxDepth) {
      error = "the storages are nested too deep";
      return false;
    }
    std::vector<std::uint32_t> children;
    for (std::uint32_t child : entries[index].children) {
      if (child < entries.size() && !(index == 0 && isSignatureStream(entries[child].name)))
        children.push_back(child);
    }
    std::sort(children.begin(), children.end(), [&](std::uint32_t a, std::uint32_t b) {
      return orderBytes(entries[a].name) < orderBytes(entries[b].name);
    });
    for (std::uint32_t child : children) {
      if (entries[child].isStorage ? !addStorage(child, depth + 1, error)
                                   : !addStream(child, error))
        return false;
    }
    EVP_DigestUpdate(context_, entries[index].clsid.data(), entries[index].clsid.size());
    return true;
  }

 private:
  static constexpr std::size_t kMaxDepth = 64;

  bool addStream(std::uint32_t index, std::string& error) {
    const std::shared_ptr<const storage::StreamSource> source = package_.streamSource(index);
    std::unique_ptr<storage::StreamReader> reader = source ? source->open(error) : nullptr;
    if (!reader)
      return false;
    std::vector<std::uint8_t> block(64 * 1024);
    for (std::uint64_t left = source->size(); left > 0;) {
      const std::size_t length =
          static_cast<std::size_t>(std::min<std::uint64_t>(left, block.size()));
      if (!reader->read(block.data(), length, error))
        return false;
      EVP_DigestUpdate(context_, block.data(), length);
      left -= length;
    }
    return true;
  }

  const CompoundFileReader& package_;
  EVP_MD_CTX* context_;
};

}  // namespace

std::optional<std::uint32_t> rootStream(const CompoundFileReader& package,
                                        std::u16string_view name) {
  const std::vector<CompoundEntry>& entries = package.entries();
  for (std::uint32_t child : entries.at(0).children) {
    if (child < entries.size() && !entries[child].isStorage && entries[child].name == name)
      return child;
  }
  return std::nullopt;
}

bool packageDigest(const CompoundFileReader& package, const EVP_MD* type,
                   std::vector<unsigned char>& digest, std::string& error) {
  std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                  EVP_MD_CTX_free);
  if (!context || EVP_DigestInit_ex(context.get(), type, nullptr) != 1) {
    error = "the digest is not available";
    return false;
  }
  if (!Digester(package, context.get()).addStorage(0, 0, error))
    return false;
  digest.resize(EVP_MAX_MD_SIZE);
  unsigned int length = 0;
  EVP_DigestFinal_ex(context.get(), digest.data(), &length);
  digest.resize(length);
  return true;
}

}  // namespace odlex::signature
