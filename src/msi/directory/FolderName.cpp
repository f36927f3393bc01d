#include "msi/directory/FolderName.h"

#include "odlex/support/CaseMapping.h"

namespace odlex::directory {

bool sameFolderName(std::u16string_view a, std::u16string_view b) {
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (FoldCaseChar(a[i]) != FoldCaseChar(b[i])) {
      return false;
    }
  }
  return true;
}

bool isValidLongName(std::u16string_view name) {
  constexpr std::size_t kMaxNameLength = 255;
  if (name.empty() || name.size() > kMaxNameLength || name == u"." || name == u"..") {
    return false;
  }
  for (char16_t c : name) {
    if (c < 0x20 || std::u16string_view(u"\\/?|><:*\"").find(c) != std::u16string_view::npos) {
      return false;
    }
  }
  return true;
}

}  // namespace odlex::directory
