#pragma once
// The files a merge takes from a module: read from the module's MergeModule.CABinet stream
// (MSZIP, LZX or stored) and written again as one MSZIP cabinet holding only the files new to
// the package, in the order of their new sequence numbers, as the package's Media row expects.
// The cabinet is made in a scratch file and handed to the package as a stream source: neither
// cabinet is ever held in memory.

#include <memory>
#include <string>
#include <vector>

#include "msi/engine/Database.h"
#include "package/merge/MergeLog.h"

namespace odlex::merge {

// Repacks the files `keys` (File keys, in their new order) of `module`. Stops the merge (code
// 58) when the module has no cabinet, the cabinet cannot be read or lacks one of the files, or
// the new cabinet cannot be written.
std::shared_ptr<const storage::StreamSource> repackFiles(const engine::Database& module,
                                                         const std::vector<std::u16string>& keys,
                                                         MergeLog& log);

}  // namespace odlex::merge
