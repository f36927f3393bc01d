#include "storage/CodePageIconv.h"

#include <iconv.h>

#include <cerrno>
#include <map>
#include <memory>
#include <utility>

#include "storage/CodePageErrors.h"

namespace odlex::storage {
namespace {

constexpr const char* kUtf16 = "UTF-16LE";

struct IconvCloser {
  void operator()(void* handle) const { iconv_close(static_cast<iconv_t>(handle)); }
};
using IconvHandle = std::unique_ptr<void, IconvCloser>;

enum class Direction { kToUtf16, kFromUtf16 };

// The converter for `codePage` in `direction`, opened once per thread and reset to its
// initial state; (iconv_t)-1 when the C library lacks it.
iconv_t converter(std::uint32_t codePage, const char* converterName, Direction direction) {
  thread_local std::map<std::pair<std::uint32_t, Direction>, IconvHandle> handles;
  auto [it, inserted] = handles.try_emplace({codePage, direction});
  if (inserted) {
    const iconv_t handle = direction == Direction::kToUtf16 ? iconv_open(kUtf16, converterName)
                                                            : iconv_open(converterName, kUtf16);
    if (handle != reinterpret_cast<iconv_t>(-1))
      it->second.reset(handle);
  }
  if (!it->second)
    return reinterpret_cast<iconv_t>(-1);
  iconv(static_cast<iconv_t>(it->second.get()), nullptr, nullptr, nullptr, nullptr);
  return static_cast<iconv_t>(it->second.get());
}

// Runs the whole input through `handle` into `out`, which is sized for the worst case by
// the caller. Returns the input offset of the first failure, or npos on success.
std::size_t convert(iconv_t handle, std::string_view input, std::string& out) {
  char* in = const_cast<char*>(input.data());
  std::size_t inLeft = input.size();
  char* outPtr = out.data();
  std::size_t outLeft = out.size();
  const bool ok =
      iconv(handle, &in, &inLeft, &outPtr, &outLeft) != static_cast<std::size_t>(-1) &&
      iconv(handle, nullptr, nullptr, &outPtr, &outLeft) != static_cast<std::size_t>(-1);
  out.resize(out.size() - outLeft);
  return ok ? std::string::npos : input.size() - inLeft;
}

std::u16string fromUtf16Le(std::string_view bytes) {
  std::u16string text(bytes.size() / 2, u'\0');
  for (std::size_t i = 0; i < text.size(); ++i) {
    text[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                    static_cast<unsigned char>(bytes[2 * i + 1]) << 8);
  }
  return text;
}

std::string toUtf16Le(std::u16string_view text) {
  std::string bytes(text.size() * 2, '\0');
  for (std::size_t i = 0; i < text.size(); ++i) {
    bytes[2 * i] = static_cast<char>(text[i] & 0xFF);
    bytes[2 * i + 1] = static_cast<char>(text[i] >> 8);
  }
  return bytes;
}

// Encodes `text` and checks that it reads back unchanged.
bool roundTrips(std::uint32_t codePage, const char* converterName, std::u16string_view text,
                std::string& bytes) {
  const iconv_t handle = converter(codePage, converterName, Direction::kFromUtf16);
  bytes.assign(text.size() * 4 + 8, '\0');  // at most four bytes per UTF-16 unit
  if (convert(handle, toUtf16Le(text), bytes) != std::string::npos)
    return false;
  std::u16string back;
  std::string ignored;
  return iconvDecode(codePage, converterName, bytes, back, ignored) && back == text;
}

}  // namespace

bool checkConverter(std::uint32_t codePage, const char* converterName, std::string& error) {
  if (converter(codePage, converterName, Direction::kToUtf16) != reinterpret_cast<iconv_t>(-1) &&
      converter(codePage, converterName, Direction::kFromUtf16) != reinterpret_cast<iconv_t>(-1)) {
    return true;
  }
  error = "code page " + std::to_string(codePage) + " is not available: the C library has no '" +
          converterName + "' converter";
  return false;
}

bool iconvDecode(std::uint32_t codePage, const char* converterName, std::string_view bytes,
                 std::u16string& out, std::string& error) {
  if (!checkConverter(codePage, converterName, error))
    return false;
  const iconv_t handle = converter(codePage, converterName, Direction::kToUtf16);
  std::string utf16(bytes.size() * 4 + 8, '\0');  // at most a surrogate pair per byte
  if (const std::size_t failure = convert(handle, bytes, utf16); failure != std::string::npos) {
    error = invalidByteMessage(codePage, bytes, failure);
    return false;
  }
  out = fromUtf16Le(utf16);
  return true;
}

bool iconvEncode(std::uint32_t codePage, const char* converterName, std::u16string_view text,
                 std::string& out, std::string& error) {
  if (!checkConverter(codePage, converterName, error))
    return false;
  if (roundTrips(codePage, converterName, text, out))
    return true;
  // Find the first character that does not survive on its own, to name it.
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool pair = text[i] >= 0xD800 && text[i] < 0xDC00 && i + 1 < text.size();
    std::string ignored;
    if (!roundTrips(codePage, converterName, text.substr(i, pair ? 2 : 1), ignored)) {
      error = unencodableMessage(codePage, text, i);
      return false;
    }
    if (pair)
      ++i;
  }
  error = "text cannot be stored in code page " + std::to_string(codePage);
  return false;
}

}  // namespace odlex::storage
