#include "msi/directory/FileNames.h"

#include "msi/directory/DirectoryKey.h"
#include "msi/directory/FolderName.h"
#include "msi/directory/ShortName.h"
#include "odlex/support/CaseMapping.h"

namespace odlex::directory {
namespace {

// Room for a "_N" suffix within the key length.
constexpr std::size_t kFileKeyBase = kMaxKeyLength - 6;

std::u16string folded(std::u16string_view name) {
  std::u16string out(name);
  for (char16_t& c : out) {
    c = FoldCaseChar(c);
  }
  return out;
}

}  // namespace

std::u16string makeFileKey(std::u16string_view name,
                           const std::function<bool(std::u16string_view)>& taken) {
  const std::u16string base = identifierFrom(name).substr(0, kFileKeyBase);
  std::u16string key = base;
  // Finitely many keys are taken, so some number is free.
  for (unsigned long n = 2; taken(key); ++n) {
    key = base + u'_';
    for (const char c : std::to_string(n)) {
      key += static_cast<char16_t>(c);
    }
  }
  return key;
}

void FolderFileNames::add(std::u16string_view fileName) {
  const std::size_t bar = fileName.find(u'|');
  insert(fileName.substr(0, bar));
  if (bar != std::u16string_view::npos) {
    insert(fileName.substr(bar + 1));
  }
}

Result<std::u16string> FolderFileNames::addNew(std::u16string_view longName) {
  if (!isValidLongName(longName)) {
    return Error{u"not a name a file can have"};
  }
  if (contains(longName)) {
    return Error{u"the folder already has a file of that name"};
  }
  std::u16string fileName(longName);
  if (!isValidShortName(longName)) {
    const Result<std::u16string> shortName =
        makeShortName(longName, [this](std::u16string_view name) { return contains(name); });
    if (!shortName) {
      return shortName;
    }
    insert(*shortName);
    fileName = *shortName + u"|" + fileName;
  }
  insert(longName);
  return fileName;
}

bool FolderFileNames::contains(std::u16string_view name) const {
  return folded_.count(folded(name)) > 0;
}

void FolderFileNames::insert(std::u16string_view name) {
  folded_.insert(folded(name));
}

}  // namespace odlex::directory
