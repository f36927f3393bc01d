#pragma once
// The same operations as LibmsiPeer, done by the odlex engine.

#include <filesystem>
#include <string>
#include <vector>

#include "ReadTotals.h"

namespace odlex::bench::odlex_subject {

// Opens `package` read-only and reads every cell of every table, text through the pool.
ReadTotals readAll(const std::filesystem::path& package);
// Opens `source` and saves a complete copy to `target`.
void rewrite(const std::filesystem::path& source, const std::filesystem::path& target);
// Opens `source` through the class library to be saved as `target`, deletes the components
// `components` (the Component table object's cascade: their files, registry values,
// shortcuts and every other row of theirs) and saves.
void deleteComponents(const std::filesystem::path& source, const std::filesystem::path& target,
                      const std::vector<std::string>& components);

}  // namespace odlex::bench::odlex_subject
