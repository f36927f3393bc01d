#pragma once
// The DefaultDir column of a Directory row: the folder's name on the target machine and,
// optionally, in the source image, written "target" or "target:source". Each side is one name,
// "long", or a pair "short|long" where "short" is the 8.3 name used on volumes (or with the
// SHORTFILENAMES property) that need short names. The name "." means the folder is its parent
// folder: the row adds no step to the path. A root row (no parent, or itself as parent) names
// the source root, by convention "SourceDir"; its target location comes from the property named
// by its key (TARGETDIR).
//
// Parsing keeps the text exactly as written, so formatting a parsed value gives the input back.

#include <string>
#include <string_view>

#include "msi/directory/Result.h"

namespace odlex::directory {

// The conventional DefaultDir of the root row TARGETDIR.
inline constexpr std::u16string_view kSourceDirName = u"SourceDir";
// The DefaultDir name of a folder that is its parent folder.
inline constexpr std::u16string_view kParentName = u".";

// One side of a DefaultDir value.
class FolderNames {
 public:
  FolderNames() = default;
  // `shortName` empty: the value names the folder once, as `longName`.
  explicit FolderNames(std::u16string longName, std::u16string shortName = {});

  // "short|long" or "name"; an empty part, or more than one '|', is an error.
  static Result<FolderNames> parse(std::u16string_view text);
  std::u16string format() const;

  const std::u16string& longName() const { return long_; }
  // The short name, or the only name when just one was written.
  const std::u16string& shortName() const { return short_.empty() ? long_ : short_; }
  bool hasSeparateShortName() const { return !short_.empty(); }
  // Sets the short name; a short name equal to the long one (or empty) leaves just one name.
  void setShortName(std::u16string shortName);

  // "." : this side adds no folder to the path.
  bool isParent() const { return long_ == kParentName; }

 private:
  std::u16string long_;
  std::u16string short_;
};

class DefaultDir {
 public:
  DefaultDir() = default;
  explicit DefaultDir(FolderNames target);
  DefaultDir(FolderNames target, FolderNames source);

  // "target" or "target:source"; more than one ':' or a malformed side is an error.
  static Result<DefaultDir> parse(std::u16string_view text);
  std::u16string format() const;

  FolderNames& target() { return target_; }
  const FolderNames& target() const { return target_; }
  // The source side: the target side when the value has none of its own.
  const FolderNames& source() const { return hasSource_ ? source_ : target_; }
  // Gives the value its own source side (a copy of the target side when it had none).
  FolderNames& source();
  bool hasSource() const { return hasSource_; }

 private:
  FolderNames target_;
  FolderNames source_;
  bool hasSource_ = false;
};

}  // namespace odlex::directory
