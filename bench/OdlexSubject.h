#pragma once
// The same operations as LibmsiPeer, done by the odlex engine.

#include <filesystem>

#include "ReadTotals.h"

namespace odlex::bench::odlex_subject {

// Opens `package` read-only and reads every cell of every table, text through the pool.
ReadTotals readAll(const std::filesystem::path& package);
// Opens `source` and saves a complete copy to `target`.
void rewrite(const std::filesystem::path& source, const std::filesystem::path& target);

}  // namespace odlex::bench::odlex_subject
