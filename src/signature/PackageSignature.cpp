// The digest of a package's streams and storages.

#include "signature/PackageSignature.h"

#include <algorithm>
#include <array>
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

void addNumber(EVP_MD_CTX* context, std::uint64_t value, std::size_t width) {
  std::array<unsigned char, 8> bytes{};
  for (std::size_t i = 0; i < width; ++i)
    bytes[i] = static_cast<unsigned char>(value >> (8 * i));
  EVP_DigestUpdate(context, bytes.data(), width);
}

// The children of storage `index` in digest order, without the root's signature streams.
std::vector<std::uint32_t> childrenInOrder(const CompoundFileReader& package, std::uint32_t index) {
  const std::vector<CompoundEntry>& entries = package.entries();
  std::vector<std::uint32_t> children;
  for (std::uint32_t child : entries[index].children) {
    if (child < entries.size() && !(index == 0 && isSignatureStream(entries[child].name)))
      children.push_back(child);
  }
  std::sort(children.begin(), children.end(), [&](std::uint32_t a, std::uint32_t b) {
    return orderBytes(entries[a].name) < orderBytes(entries[b].name);
  });
  return children;
}

class Digester {
 public:
  Digester(const CompoundFileReader& package, EVP_MD_CTX* context)
      : package_(package), context_(context) {}

  // Adds what describes storage `index` and everything under it: for each entry its name
  // (UTF-16LE, no terminator; not for the root), then for a storage its class id, for a stream
  // its size (32 bits), then its state bits and (not for the root) its creation and
  // modification times; a storage's own description comes before its children's.
  bool addMetadata(std::uint32_t index, std::size_t depth, std::string& error) {
    const std::vector<CompoundEntry>& entries = package_.entries();
    if (depth > kMaxDepth) {
      error = "the storages are nested too deep";
      return false;
    }
    describe(entries[index], index == 0);
    for (std::uint32_t child : childrenInOrder(package_, index)) {
      if (!entries[child].isStorage)
        describe(entries[child], false);
      else if (!addMetadata(child, depth + 1, error))
        return false;
    }
    return true;
  }

  // Adds storage `index` and everything under it; `depth` bounds a damaged tree that loops.
  bool addStorage(std::uint32_t index, std::size_t depth, std::string& error) {
    const std::vector<CompoundEntry>& entries = package_.entries();
    if (depth > kMaxDepth) {
      error = "the storages are nested too deep";
      return false;
    }
    for (std::uint32_t child : childrenInOrder(package_, index)) {
      if (entries[child].isStorage ? !addStorage(child, depth + 1, error)
                                   : !addStream(child, error))
        return false;
    }
    EVP_DigestUpdate(context_, entries[index].clsid.data(), entries[index].clsid.size());
    return true;
  }

 private:
  static constexpr std::size_t kMaxDepth = 64;

  void describe(const CompoundEntry& entry, bool root) {
    if (!root) {
      const std::vector<unsigned char> name = orderBytes(entry.name);
      EVP_DigestUpdate(context_, name.data(), name.size() - 2);
    }
    if (entry.isStorage)
      EVP_DigestUpdate(context_, entry.clsid.data(), entry.clsid.size());
    else
      addNumber(context_, entry.size, 4);
    addNumber(context_, entry.stateBits, 4);
    if (!root) {
      addNumber(context_, entry.created, 8);
      addNumber(context_, entry.modified, 8);
    }
  }

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

namespace {

using Context = std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)>;

Context newContext(const EVP_MD* type) {
  Context context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
  if (context && EVP_DigestInit_ex(context.get(), type, nullptr) != 1)
    context.reset();
  return context;
}

std::vector<unsigned char> finish(EVP_MD_CTX* context) {
  std::vector<unsigned char> digest(EVP_MAX_MD_SIZE);
  unsigned int length = 0;
  EVP_DigestFinal_ex(context, digest.data(), &length);
  digest.resize(length);
  return digest;
}

}  // namespace

bool packageMetadataDigest(const CompoundFileReader& package, const EVP_MD* type,
                           std::vector<unsigned char>& digest, std::string& error) {
  const Context context = newContext(type);
  if (!context) {
    error = "the digest is not available";
    return false;
  }
  if (!Digester(package, context.get()).addMetadata(0, 0, error))
    return false;
  digest = finish(context.get());
  return true;
}

bool packageDigest(const CompoundFileReader& package, const EVP_MD* type,
                   std::span<const unsigned char> metadataDigest,
                   std::vector<unsigned char>& digest, std::string& error) {
  const Context context = newContext(type);
  if (!context) {
    error = "the digest is not available";
    return false;
  }
  EVP_DigestUpdate(context.get(), metadataDigest.data(), metadataDigest.size());
  if (!Digester(package, context.get()).addStorage(0, 0, error))
    return false;
  digest = finish(context.get());
  return true;
}

}  // namespace odlex::signature
