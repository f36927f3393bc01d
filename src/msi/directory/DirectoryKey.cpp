#include "msi/directory/DirectoryKey.h"

#include <algorithm>
#include <string>

#include "msi/directory/SystemFolders.h"

namespace odlex::directory {
namespace {

bool isLetter(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}
bool isDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}
bool isKeyChar(char16_t c) {
  return isLetter(c) || isDigit(c) || c == u'_' || c == u'.';
}

std::u16string decimal(unsigned long n) {
  std::u16string out;
  for (char c : std::to_string(n)) {
    out += static_cast<char16_t>(c);
  }
  return out;
}

bool isTaken(const DirectoryModel& model, const std::u16string& key) {
  return key == kTargetDir || key == kSourceDirProperty || key == u"SOURCEDIR" ||
         isSystemFolder(key) || model.find(key).has_value();
}

}  // namespace

bool isIdentifier(std::u16string_view text) {
  if (text.empty() || text.size() > kMaxKeyLength || !(isLetter(text[0]) || text[0] == u'_')) {
    return false;
  }
  for (char16_t c : text) {
    if (!isKeyChar(c)) {
      return false;
    }
  }
  return true;
}

std::u16string identifierFrom(std::u16string_view name) {
  std::u16string base;
  for (char16_t c : name.substr(0, kMaxKeyLength)) {
    base += isKeyChar(c) ? c : u'_';
  }
  if (base.empty() || !(isLetter(base[0]) || base[0] == u'_')) {
    base.insert(0, u"_");
  }
  base.resize(std::min(base.size(), kMaxKeyLength));
  return base;
}

std::u16string makeDirectoryKey(const DirectoryModel& model, std::u16string_view folderName) {
  const std::u16string base = identifierFrom(folderName);
  if (!isTaken(model, base)) {
    return base;
  }
  // A model holds finitely many keys, so some number is free.
  for (unsigned long n = 1;; ++n) {
    const std::u16string suffix = decimal(n);
    std::u16string candidate = base.substr(0, kMaxKeyLength - suffix.size()) + suffix;
    if (!isTaken(model, candidate)) {
      return candidate;
    }
  }
}

}  // namespace odlex::directory
