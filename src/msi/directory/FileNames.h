#pragma once
// Names of new files in a folder of a package, as an authoring tool gives them: the File key
// made from the file's name, and its FileName value, with a short name free among the names of
// the folder's other files.

#include <functional>
#include <set>
#include <string>
#include <string_view>

#include "msi/directory/Result.h"

namespace odlex::directory {

// The File key for a file named `name`: identifierFrom(name) cut to 66 characters, or, when
// `taken` says that key is used, the first of it followed by "_2", "_3", ... that is not.
std::u16string makeFileKey(std::u16string_view name,
                           const std::function<bool(std::u16string_view)>& taken);

// The file names of one folder, compared as Windows compares them (without regard to case), and
// the FileName values of new files chosen free among them.
class FolderFileNames {
 public:
  // Records a file already in the folder by its FileName value ("short|long", or one name that
  // is both).
  void add(std::u16string_view fileName);

  // The FileName value for a new file of the folder named `longName`, recorded as taken: the
  // name alone when it is a valid short name (ShortName.h), else "SHORT|long" with a short name
  // made as Windows makes them, free among the folder's names. An error when `longName` is no
  // valid long name (FolderName.h), when a file of the folder already has it as its short or
  // long name, or when no short name is free.
  Result<std::u16string> addNew(std::u16string_view longName);

 private:
  bool contains(std::u16string_view name) const;
  void insert(std::u16string_view name);

  std::set<std::u16string> folded_;
};

}  // namespace odlex::directory
