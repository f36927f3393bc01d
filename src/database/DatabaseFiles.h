#pragma once
// The files under open databases. Databases in the list are told apart by the files themselves,
// not by how their paths are spelled: a relative and an absolute path, a path through a link and
// a hard link all name one file, and names that differ only in letter case name two (as on
// Linux).

#include "odlex/support/TalString.h"

namespace odlex::database {

// True when `a` and `b` name the same file: the same device and inode when both exist, the
// same canonical path when neither does (a file not created yet); false when only one exists.
bool isSameFile(const TalString& a, const TalString& b);

// `path` made absolute, with links and "." and ".." resolved as far as the path exists: one
// spelling per file, for ordering the list.
TalString canonicalPathOf(const TalString& path);

// Deletes the file `path`, ignoring a failure: for working copies the library made.
void removeQuietly(const TalString& path);

// Replaces `to` with a copy of `from` (written beside it and renamed into place, so a failure
// leaves `to` as it was); false when the copy failed.
bool copyReplacing(const TalString& from, const TalString& to);

}  // namespace odlex::database
