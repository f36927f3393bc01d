#pragma once
// New GUIDs for package, product and component codes.

#include "odlex/support/TalString.h"

namespace odlex {

// A random (version 4) GUID in the installer's text form: braced, upper case,
// "{XXXXXXXX-XXXX-4XXX-YXXX-XXXXXXXXXXXX}" with Y one of 8, 9, A, B. The random numbers come
// from a 64-bit engine seeded once per process from the system's random source.
TalString GenerateGuid();

}  // namespace odlex
