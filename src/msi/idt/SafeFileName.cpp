#include "msi/idt/SafeFileName.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace odlex::idt {
namespace {

constexpr std::size_t kMaxNameLength = 120;
constexpr std::string_view kAllowedPunctuation = " !#$%&'()+,-.;=@[]^_{}~";

std::string lowerAscii(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

// True when the part before the first '.' is a reserved device name.
bool isDeviceName(std::string_view name) {
  static constexpr std::array<std::string_view, 4> kPlain{"con", "prn", "aux", "nul"};
  const std::string base = lowerAscii(name.substr(0, name.find('.')));
  if (std::find(kPlain.begin(), kPlain.end(), base) != kPlain.end())
    return true;
  return base.size() == 4 && (base.starts_with("com") || base.starts_with("lpt")) &&
         base[3] >= '1' && base[3] <= '9';
}

bool isAllowed(char16_t c) {
  if (c >= 0x80)
    return false;
  const char ascii = static_cast<char>(c);
  return std::isalnum(static_cast<unsigned char>(ascii)) != 0 ||
         kAllowedPunctuation.find(ascii) != std::string_view::npos;
}

}  // namespace

std::string safeFileName(std::u16string_view name) {
  std::string out;
  out.reserve(std::min(name.size(), kMaxNameLength));
  for (char16_t c : name) {
    if (out.size() == kMaxNameLength)
      break;
    out += isAllowed(c) ? static_cast<char>(c) : '_';
  }
  if (!out.empty() && (out.back() == '.' || out.back() == ' '))
    out.back() = '_';
  const bool allDots = out.find_first_not_of('.') == std::string::npos;
  if (allDots || isDeviceName(out))
    out.insert(out.begin(), '_');
  return out;
}

bool isPlainFileName(std::u16string_view name) {
  if (name.empty() || name == u"." || name == u"..")
    return false;
  std::string ascii;
  for (char16_t c : name) {
    if (c < 0x20 || c == 0x7F || c == u'/' || c == u'\\' || c == u':')
      return false;
    ascii += c < 0x80 ? static_cast<char>(c) : '_';
  }
  return !isDeviceName(ascii);
}

std::string UniqueNames::claim(std::string name) {
  const std::size_t dot = name.rfind('.');
  const std::string stem = dot == std::string::npos ? name : name.substr(0, dot);
  const std::string extension = dot == std::string::npos ? "" : name.substr(dot);
  std::string candidate = name;
  for (unsigned suffix = 2; !taken_.insert(lowerAscii(candidate)).second; ++suffix) {
    candidate = stem + "~" + std::to_string(suffix) + extension;
  }
  return candidate;
}

}  // namespace odlex::idt
