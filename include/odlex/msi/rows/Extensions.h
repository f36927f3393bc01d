#pragma once
// What the hand-written members of the generated row and table classes (the .inc files beside
// this header) need declared before the classes. A members file is laid out as it reads inside
// its class; clang-format, which does not see the class, is not run on them.

#include <string>

#include "odlex/msi/CustomActionType.h"
#include "odlex/msi/MSIBinary.h"
#include "odlex/msi/MSITranslate.h"
#include "odlex/support/TalString.h"

class MSITProperty;

namespace odlex::directory {
template <typename T>
class Result;
}
