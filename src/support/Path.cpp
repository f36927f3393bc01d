#include "odlex/support/Path.h"

namespace odlex::path {

bool IsSeparator(char16_t c) {
  return c == u'\\' || c == u'/';
}

std::size_t LastSeparator(const RWWString& path) {
  const std::size_t found = path.u16().find_last_of(u"\\/");
  return found == std::u16string::npos ? RW_NPOS : found;
}

TalString Directory(const RWWString& path) {
  const std::size_t separator = LastSeparator(path);
  return separator == RW_NPOS ? TalString() : TalString(path.subString(0, separator));
}

TalString FileName(const RWWString& path) {
  const std::size_t separator = LastSeparator(path);
  return separator == RW_NPOS ? TalString(path) : TalString(path.subString(separator + 1));
}

TalString Extension(const RWWString& path) {
  const TalString name = FileName(path);
  const std::size_t dot = name.last(u'.');
  return dot == RW_NPOS ? TalString() : TalString(name.subString(dot + 1));
}

TalString Join(const RWWString& directory, const RWWString& name) {
  if (directory.isNull()) {
    return name;
  }
  TalString joined(directory);
  if (!name.isNull()) {
    if (!IsSeparator(directory[directory.length() - 1])) {
      const bool backslashes =
          directory.first(u'\\') != RW_NPOS && directory.first(u'/') == RW_NPOS;
      joined.append(backslashes ? u'\\' : u'/');
    }
    joined.append(name);
  }
  return joined;
}

std::filesystem::path ToFilesystem(const RWWString& path) {
  return std::filesystem::path(path.ToUtf8());
}

TalString FromFilesystem(const std::filesystem::path& path) {
  return TalString::FromUtf8(path.native());
}

}  // namespace odlex::path
