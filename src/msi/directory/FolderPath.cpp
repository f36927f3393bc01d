#include "msi/directory/FolderPath.h"

#include "msi/directory/DirectoryKey.h"
#include "msi/directory/FolderName.h"

namespace odlex::directory {

Result<FolderPath> parseFolderPath(std::u16string_view path) {
  FolderPath out;
  if (path.starts_with(u'[')) {
    const auto close = path.find(u']');
    if (close == std::u16string_view::npos) {
      return Error{u"unclosed '[' in folder path"};
    }
    out.property = path.substr(1, close - 1);
    if (!isIdentifier(out.property)) {
      return Error{u"\"" + out.property + u"\" is not a property name"};
    }
    path.remove_prefix(close + 1);
  }
  while (!path.empty()) {
    const auto end = path.find_first_of(u"\\/");
    const auto name = path.substr(0, end);
    path.remove_prefix(end == std::u16string_view::npos ? path.size() : end + 1);
    if (name.empty() || name == u".") {
      continue;
    }
    if (!isValidLongName(name)) {
      return Error{u"\"" + std::u16string(name) + u"\" is not a valid folder name"};
    }
    if (out.folders.size() == kMaxDepth) {
      return Error{u"folder path has more than 256 names"};
    }
    out.folders.emplace_back(name);
  }
  return out;
}

}  // namespace odlex::directory
