#pragma once
// The relations between a module and the modules already merged into a package: the modules
// it needs (ModuleDependency) and those it cannot live with (ModuleExclusion), checked against
// the package's ModuleSignature rows.

#include <string_view>

#include "package/merge/MergeLog.h"
#include "package/merge/TableRows.h"

namespace odlex::merge {

// Compares dotted versions ("1.2.10" > "1.2.9") part by part as numbers; a missing part counts
// as 0, and a part that is not a number as 0.
int compareVersions(std::u16string_view a, std::u16string_view b);

// Whether `language` is one that a dependency or exclusion naming `wanted` covers: 0 (or null)
// covers every language, a positive one only itself, a negative one every language but its
// opposite.
bool languageMatches(int wanted, int language);

// The module's own signature (ModuleID, Language, Version of its one ModuleSignature row).
struct ModuleIdentity {
  std::u16string id;
  int language = 0;
  std::u16string version;
};

// Records each dependency of the module (its ModuleDependency rows, may be null) that no row of
// `merged` (the package's ModuleSignature, may be null) satisfies; the merge goes on.
void checkDependencies(const TableRows* dependencies, const TableRows* merged, MergeLog& log);

// Stops the merge (code 50) when the module excludes a merged module, or a merged module's
// exclusion (the package's ModuleExclusion rows) names this one.
void checkExclusions(const ModuleIdentity& module, const TableRows* moduleExclusions,
                     const TableRows* merged, const TableRows* packageExclusions, MergeLog& log);

}  // namespace odlex::merge
