#pragma once
// Merging a merge module into a package, on the package's engine database: every step reads
// the module and the package and collects what to add; only when every step has passed is
// anything written, so a merge that stops leaves the package as it was.

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "msi/engine/Database.h"
#include "package/merge/Configuration.h"
#include "package/merge/MergeLog.h"

namespace odlex::merge {

struct MergeRequest {
  std::u16string feature;    // the Feature the module's components join
  std::u16string directory;  // the Directory that takes the place of the module's root
  ConfigurationValues configuration;
  // The conflicts between the module's folders and the package's, one text each; empty when
  // there are none. Not set: not checked.
  std::function<std::u16string()> directoryConflicts;
};

struct MergeResult {
  std::vector<std::pair<std::u16string, std::size_t>> rowsPerTable;
  std::size_t files = 0;
  int mediaDiskId = 0;
};

// Merges `module` into `package` (see ODLEXDatabase::MergeModule for the steps and the codes
// they stop with). Problems go to `log`.
MergeResult mergeModule(engine::Database& package, const engine::Database& module,
                        const MergeRequest& request, MergeLog& log);

}  // namespace odlex::merge
