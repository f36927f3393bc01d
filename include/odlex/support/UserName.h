#pragma once
// The name of the user running the process, for the author fields the library stamps.

#include "odlex/support/TalString.h"

namespace odlex {

// The login name of the process's user (the password database, then $USER, $LOGNAME); "odlex"
// when none can be found.
TalString CurrentUserName();

}  // namespace odlex
