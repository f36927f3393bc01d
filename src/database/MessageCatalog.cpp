// Reading message catalogs and formatting their messages.

#include "database/MessageCatalog.h"

#include <fstream>

#include "odlex/support/Utf8.h"
#include "signature/PeMessageTable.h"

namespace odlex::database {
namespace {

bool isSpace(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

std::string_view trim(std::string_view text) {
  while (!text.empty() && isSpace(text.front()))
    text.remove_prefix(1);
  while (!text.empty() && isSpace(text.back()))
    text.remove_suffix(1);
  return text;
}

// A decimal or "0x" hexadecimal number of at most 32 bits.
std::optional<std::uint32_t> parseId(std::string_view text) {
  unsigned base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    base = 16;
    text.remove_prefix(2);
  }
  if (text.empty())
    return std::nullopt;
  std::uint64_t value = 0;
  for (const char c : text) {
    unsigned digit = 0;
    if (c >= '0' && c <= '9')
      digit = static_cast<unsigned>(c - '0');
    else if (base == 16 && c >= 'a' && c <= 'f')
      digit = static_cast<unsigned>(c - 'a' + 10);
    else if (base == 16 && c >= 'A' && c <= 'F')
      digit = static_cast<unsigned>(c - 'A' + 10);
    else
      return std::nullopt;
    value = value * base + digit;
    if (value > UINT32_MAX)
      return std::nullopt;
  }
  return static_cast<std::uint32_t>(value);
}

std::u16string withoutTrailingBreaks(std::u16string text) {
  while (!text.empty() && (text.back() == u'\n' || text.back() == u'\r'))
    text.pop_back();
  return text;
}

// The number of an insert at text[at] (one or two digits, 1 to 99), and how many digits it has.
std::size_t insertNumber(std::u16string_view text, std::size_t at, std::size_t& digits) {
  std::size_t number = 0;
  digits = 0;
  while (digits < 2 && at + digits < text.size() && text[at + digits] >= u'0' &&
         text[at + digits] <= u'9') {
    number = number * 10 + static_cast<std::size_t>(text[at + digits] - u'0');
    ++digits;
  }
  return number;
}

constexpr std::streamoff kLargestCatalog = 16 << 20;

}  // namespace

std::optional<std::string> readCatalogFile(const TalString& path, std::string& why) {
  std::ifstream file(path.ToUtf8(), std::ios::binary | std::ios::ate);
  if (!file) {
    why = "cannot be opened";
    return std::nullopt;
  }
  const std::streamoff size = file.tellg();
  if (size < 0 || size > kLargestCatalog) {
    why = size < 0 ? "cannot be read" : "is larger than any message catalog";
    return std::nullopt;
  }
  std::string bytes(static_cast<std::size_t>(size), '\0');
  file.seekg(0);
  if (!file.read(bytes.data(), size)) {
    why = "cannot be read";
    return std::nullopt;
  }
  return bytes;
}

std::optional<MessageCatalog> MessageCatalog::Parse(std::span<const unsigned char> bytes,
                                                    std::string& why) {
  if (bytes.size() >= 2 && bytes[0] == 'M' && bytes[1] == 'Z')
    return ParseModule(bytes, why);
  return ParseText(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()),
                   why);
}

std::optional<MessageCatalog> MessageCatalog::ParseText(std::string_view text, std::string& why) {
  if (text.starts_with("\xEF\xBB\xBF"))
    text.remove_prefix(3);
  MessageCatalog catalog;
  std::size_t lineNumber = 0;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    const std::string_view line = trim(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    ++lineNumber;
    if (line.empty() || line.front() == '#')
      continue;
    const std::size_t equals = line.find('=');
    const std::optional<std::uint32_t> id =
        equals == std::string_view::npos ? std::nullopt : parseId(trim(line.substr(0, equals)));
    if (!id) {
      why = "line " + std::to_string(lineNumber) + " is not \"ID = text\"";
      return std::nullopt;
    }
    const auto [at, added] =
        catalog.messages_.emplace(*id, Utf8ToUtf16(trim(line.substr(equals + 1))));
    if (!added) {
      why = "line " + std::to_string(lineNumber) + " repeats message " + std::to_string(*id);
      return std::nullopt;
    }
  }
  return catalog;
}

std::optional<MessageCatalog> MessageCatalog::ParseModule(std::span<const unsigned char> image,
                                                          std::string& why) {
  std::optional<std::map<std::uint32_t, std::u16string>> messages =
      signature::peMessageTable(image, why);
  if (!messages)
    return std::nullopt;
  MessageCatalog catalog;
  for (auto& [id, text] : *messages)
    catalog.messages_.emplace(id, withoutTrailingBreaks(std::move(text)));
  return catalog;
}

std::optional<std::u16string> MessageCatalog::Format(
    std::uint32_t id, std::span<const std::u16string> inserts) const {
  const auto found = messages_.find(id);
  if (found == messages_.end())
    return std::nullopt;
  return FormatMessageText(found->second, inserts);
}

std::u16string FormatMessageText(std::u16string_view text,
                                 std::span<const std::u16string> inserts) {
  std::u16string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != u'%') {
      out += text[i];
      continue;
    }
    if (++i == text.size())
      break;
    if (text[i] == u'0')
      break;
    std::size_t digits = 0;
    const std::size_t number = insertNumber(text, i, digits);
    if (digits == 0) {
      switch (text[i]) {
        case u'n':
          out += u"\r\n";
          break;
        case u'r':
          out += u'\r';
          break;
        case u't':
          out += u'\t';
          break;
        default:
          out += text[i];
      }
      continue;
    }
    const std::size_t after = i + digits;
    if (number > inserts.size()) {
      out += u'%';
      out += text.substr(i, digits);
      i = after - 1;
      continue;
    }
    out += inserts[number - 1];
    i = after - 1;
    // A printf conversion "!...!" after the insert is dropped; an unclosed one stays as text.
    if (after < text.size() && text[after] == u'!') {
      const std::size_t close = text.find(u'!', after + 1);
      if (close != std::u16string_view::npos)
        i = close;
    }
  }
  return out;
}

}  // namespace odlex::database
