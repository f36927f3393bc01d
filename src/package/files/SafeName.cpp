#include "package/files/SafeName.h"

#include <string>

namespace odlex::package {

namespace {

bool isDeviceName(std::u16string_view name) {
  // Windows sees the device in the part before the first dot, trailing spaces ignored.
  std::u16string_view base = name.substr(0, name.find(u'.'));
  while (!base.empty() && base.back() == u' ')
    base.remove_suffix(1);
  std::u16string upper;
  for (char16_t c : base)
    upper.push_back(c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - u'a' + u'A') : c);
  for (std::u16string_view device : {u"CON", u"PRN", u"AUX", u"NUL", u"CONIN$", u"CONOUT$"}) {
    if (upper == device)
      return true;
  }
  return upper.size() == 4 && (upper.starts_with(u"COM") || upper.starts_with(u"LPT")) &&
         upper[3] >= u'1' && upper[3] <= u'9';
}

}  // namespace

bool isSafeName(std::u16string_view name) {
  if (name.empty() || name == u"." || name == u"..")
    return false;
  for (char16_t c : name) {
    if (c < 0x20 || c == 0x7F ||
        std::u16string_view(u"/\\:*?\"<>|").find(c) != std::u16string_view::npos)
      return false;
  }
  return !isDeviceName(name);
}

}  // namespace odlex::package
