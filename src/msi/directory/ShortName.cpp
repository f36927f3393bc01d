#include "msi/directory/ShortName.h"

#include <algorithm>

namespace odlex::directory {
namespace {

constexpr std::size_t kMaxBase = 8;
constexpr std::size_t kMaxExtension = 3;
constexpr unsigned kMaxNumber = 999999;

bool isShortNameChar(char16_t c) {
  return c > 0x20 && c < 0x7F &&
         std::u16string_view(u"\\/?|><:*\"+,;=[]").find(c) == std::u16string_view::npos;
}

// Upper case for ASCII letters, '_' for anything a short name cannot hold.
std::u16string cleaned(std::u16string_view part) {
  std::u16string out;
  out.reserve(part.size());
  for (char16_t c : part) {
    if (c >= u'a' && c <= u'z') {
      out += static_cast<char16_t>(c - u'a' + u'A');
    } else {
      out += isShortNameChar(c) ? c : u'_';
    }
  }
  return out;
}

}  // namespace

bool isValidShortName(std::u16string_view name) {
  if (!std::all_of(name.begin(), name.end(),
                   [](char16_t c) { return c == u'.' || isShortNameChar(c); })) {
    return false;
  }
  const auto dot = name.find(u'.');
  const auto base = name.substr(0, dot);
  if (base.empty() || base.size() > kMaxBase) {
    return false;
  }
  if (dot == std::u16string_view::npos) {
    return true;
  }
  const auto extension = name.substr(dot + 1);
  return !extension.empty() && extension.size() <= kMaxExtension &&
         extension.find(u'.') == std::u16string_view::npos;
}

Result<std::u16string> makeShortName(std::u16string_view longName,
                                     const std::function<bool(std::u16string_view)>& taken) {
  if (isValidShortName(longName)) {
    return std::u16string(longName);
  }
  std::u16string text;
  for (char16_t c : longName) {
    if (c != u' ' && !(c == u'.' && text.empty())) {
      text += c;
    }
  }
  const auto lastDot = text.rfind(u'.');
  std::u16string base = text.substr(0, lastDot);
  std::erase(base, u'.');
  base = cleaned(base);
  if (base.empty()) {
    base = u"_";
  }
  std::u16string extension;
  if (lastDot != std::u16string::npos) {
    extension = cleaned(std::u16string_view(text).substr(lastDot + 1, kMaxExtension));
  }
  const std::u16string dottedExtension = extension.empty() ? u"" : u"." + extension;

  for (unsigned n = 1; n <= kMaxNumber; ++n) {
    std::u16string suffix = u"~";
    for (char c : std::to_string(n)) {
      suffix += static_cast<char16_t>(c);
    }
    const std::size_t keep = std::min<std::size_t>(kMaxBase - suffix.size(), 6);
    std::u16string candidate = base.substr(0, keep) + suffix + dottedExtension;
    if (!taken(candidate)) {
      return candidate;
    }
  }
  return Error{u"no free short name for \"" + std::u16string(longName) + u"\""};
}

}  // namespace odlex::directory
