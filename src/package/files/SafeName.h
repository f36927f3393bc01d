#pragma once
// Whether a name taken from a package may name a file or folder on disk: one plain name, so that
// joining it to a folder stays inside that folder, on Linux and on Windows alike.

#include <string_view>

namespace odlex::package {

// False for the empty name, "." and "..", a name holding a path separator ('/' or '\'), a drive
// or stream colon, a control character, or one of the characters Windows refuses in names
// (* ? " < > |), and for the device names (CON, PRN, AUX, NUL, COM1-COM9, LPT1-LPT9, CONIN$,
// CONOUT$, with or without an extension, in any case).
bool isSafeName(std::u16string_view name);

}  // namespace odlex::package
