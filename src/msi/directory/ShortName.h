#pragma once
// Short (8.3) folder names, the form the installer needs next to every long name that is not
// itself a valid short name (a DefaultDir side "short|long").
//
// A valid short name: 1 to 8 characters, optionally a '.' and 1 to 3 more; printable ASCII
// only, and none of space \ / ? | > < : * " + , ; = [ ]. Lower case is accepted as written.
//
// A short name made for a long name (the way Windows makes them):
// - spaces and leading dots are dropped; the last remaining '.' starts the extension and the
//   other dots are dropped;
// - letters are upper-cased; every character not allowed in short names (non-ASCII included)
//   becomes '_';
// - the extension keeps its first 3 characters; the base keeps its first 6 (fewer when N has
//   more digits) and gets "~N", with N = 1, 2, ... the first number whose name is not taken.
// A long name that is already a valid short name is its own short name and stays unchanged.

#include <functional>
#include <string>
#include <string_view>

#include "msi/directory/Result.h"

namespace odlex::directory {

bool isValidShortName(std::u16string_view name);

// `taken` tells whether a candidate is already used (by a sibling folder); the caller decides
// how names compare (the installer's folders compare case-insensitively). An error when every
// number up to 999999 is taken.
Result<std::u16string> makeShortName(std::u16string_view longName,
                                     const std::function<bool(std::u16string_view)>& taken);

}  // namespace odlex::directory
