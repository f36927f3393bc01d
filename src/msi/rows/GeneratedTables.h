#pragma once
// The factory of the generated table classes (written by tools/codegen with the classes).

#include <memory>

#include "odlex/msi/MSITable.h"

namespace odlex::rows {

// A new table object of the generated class for `name` (exact case), or null.
std::unique_ptr<MSITable> createGeneratedTable(const TalString& name);

}  // namespace odlex::rows
