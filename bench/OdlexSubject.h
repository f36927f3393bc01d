#pragma once
// The same operations as LibmsiPeer, done by the odlex engine.

#include <filesystem>
#include <string>
#include <vector>

#include "NewComponents.h"
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
// Opens `source` through the class library to be saved as `target`, adds `added`'s components
// (the table makes their keys, stored back into `added`), a File row for each and the
// FeatureComponents row linking it to the feature, and saves.
void addComponents(const std::filesystem::path& source, const std::filesystem::path& target,
                   NewComponents& added);
// Writes every table of `package` and its summary information as .idt files into `directory`.
void exportAll(const std::filesystem::path& package, const std::filesystem::path& directory);
// Opens `source` to be saved as `target`, replaces `find` by `replace` in every table's text
// columns that are neither keys nor references, and saves; returns how many rows changed.
unsigned searchAndReplace(const std::filesystem::path& source, const std::filesystem::path& target,
                          const std::string& find, const std::string& replace);
// Writes to `transform` the transform from `base` to a copy of it with `components` deleted
// and ProductVersion changed; the edited copy is saved as `edited`.
void makeTransform(const std::filesystem::path& base, const std::filesystem::path& edited,
                   const std::vector<std::string>& components,
                   const std::filesystem::path& transform);
// Opens `source` to be saved as `target`, applies `transform` and saves.
void applyTransform(const std::filesystem::path& source, const std::filesystem::path& target,
                    const std::filesystem::path& transform);

}  // namespace odlex::bench::odlex_subject
