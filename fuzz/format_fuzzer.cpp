// Fuzz target: the input is formatted text, read as UTF-16 (two bytes a unit), formatted
// against a few variables whose values hold references, escapes and brackets themselves, and
// then put back into references. Neither may crash, hang or cost more than a small multiple of
// the input, however the brackets nest.

#include <cstddef>
#include <cstdint>
#include <string>

#include "odlex/msi/MSITranslate.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::u16string text;
  text.reserve(size / 2);
  for (std::size_t at = 0; at + 1 < size; at += 2)
    text += static_cast<char16_t>(data[at] | (data[at + 1] << 8));

  static const MSITranslate variables = [] {
    MSITranslate translate;
    translate.SetVariable(u"A", u"[B]");
    translate.SetVariable(u"B", u"b[\\[]");
    translate.SetVariable(u"AB", u"[");
    translate.SetVariable(u"Folder", u"C:\\Folder\\");
    return translate;
  }();
  const TalString formatted = variables.Translate(TalString(text));
  variables.UnFormat(formatted);
  return 0;
}
