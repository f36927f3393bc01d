#pragma once
// File names made from package data (table names, key values). Such names are never trusted:
// what is written must stay inside the folder the caller named, on every platform.

#include <set>
#include <string>
#include <string_view>

namespace odlex::idt {

// A plain file name for `name`: characters other than ASCII letters, digits and
// " !#$%&'()+,-.;=@[]^_{}~" become '_', a trailing dot or space becomes '_', names that are
// empty, all dots, or a device name (CON, PRN, AUX, NUL, COM1-9, LPT1-9, also with an
// extension) get a '_' in front, and the result is at most 120 characters. Equal for equal
// names, so the same table always gets the same file.
std::string safeFileName(std::u16string_view name);

// True when `name` is a plain file name that cannot leave its folder: not empty, not "." or
// "..", no '/', '\\', ':' or control character, not a device name.
bool isPlainFileName(std::u16string_view name);

// Hands out names that differ from every earlier one ignoring case (for case-insensitive file
// systems): a repeated name gets "~2", "~3", ... before its extension.
class UniqueNames {
 public:
  std::string claim(std::string name);

 private:
  std::set<std::string> taken_;  // lower-cased
};

}  // namespace odlex::idt
