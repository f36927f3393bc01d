#include "msi/idt/TextEscape.h"

#include <array>
#include <utility>

namespace odlex::idt {
namespace {

// Pairs of (character in the value, character in the file).
constexpr std::array<std::pair<char16_t, char16_t>, 6> kTranslations{{
    {u'\0', u'\x15'},
    {u'\b', u'\x1B'},
    {u'\t', u'\x10'},
    {u'\n', u'\x19'},
    {u'\f', u'\x18'},
    {u'\r', u'\x11'},
}};

template <bool kToFile>
std::u16string translate(std::u16string_view text) {
  std::u16string out(text);
  for (char16_t& c : out) {
    if (c >= 0x20)
      continue;
    for (const auto& [inValue, inFile] : kTranslations) {
      if (c == (kToFile ? inValue : inFile)) {
        c = kToFile ? inFile : inValue;
        break;
      }
    }
  }
  return out;
}

}  // namespace

std::u16string escapeValue(std::u16string_view value) {
  return translate<true>(value);
}

std::u16string unescapeValue(std::u16string_view field) {
  return translate<false>(field);
}

}  // namespace odlex::idt
