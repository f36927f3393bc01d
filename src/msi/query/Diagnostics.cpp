#include "msi/query/Diagnostics.h"

#include <odlex/support/Utf8.h>

namespace odlex::query {
namespace {

constexpr std::size_t kMaxQuotedLength = 40;

bool isLowSurrogate(char16_t c) {
  return c >= 0xDC00 && c <= 0xDFFF;
}

}  // namespace

std::string quoteText(std::u16string_view text) {
  if (text.size() <= kMaxQuotedLength)
    return "'" + Utf16ToUtf8(text) + "'";
  std::size_t cut = kMaxQuotedLength;
  if (isLowSurrogate(text[cut]))
    --cut;  // keep a surrogate pair whole
  return "'" + Utf16ToUtf8(text.substr(0, cut)) + "...'";
}

bool fail(engine::Error& error, std::uint32_t code, Position at, std::string_view message) {
  error.code = code;
  error.text = "line " + std::to_string(at.line) + ", column " + std::to_string(at.column) + ": " +
               std::string(message);
  return false;
}

bool failWith(engine::Error& error, std::uint32_t code, std::string text) {
  error = engine::Error{code, std::move(text)};
  return false;
}

}  // namespace odlex::query
