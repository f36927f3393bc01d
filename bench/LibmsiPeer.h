#pragma once
// The peer the engine is measured against: libmsi (from msitools), driven through its
// public C API the way a host program would use it.

#include <filesystem>
#include <string>
#include <vector>

#include "NewComponents.h"
#include "ReadTotals.h"

namespace odlex::bench::libmsi_peer {

// Opens `package` read-only and reads every field of every row of every table.
ReadTotals readAll(const std::filesystem::path& package);
// Opens `source` and commits the whole database to `target`.
void rewrite(const std::filesystem::path& source, const std::filesystem::path& target);
// Opens `source` to be saved as `target`, deletes the components `components` with their
// files, registry values and shortcuts by SQL (one DELETE per table and component), and
// commits.
void deleteComponents(const std::filesystem::path& source, const std::filesystem::path& target,
                      const std::vector<std::string>& components);
// Opens `source` to be saved as `target`, inserts `added`'s Component, File and
// FeatureComponents rows (one INSERT each) and commits.
void addComponents(const std::filesystem::path& source, const std::filesystem::path& target,
                   const NewComponents& added);
// Exports every table of `package` and its summary information as .idt files into `directory`.
void exportAll(const std::filesystem::path& package, const std::filesystem::path& directory);
// Opens `source` to be saved as `target`, SELECTs every table and replaces `find` by `replace`
// in each text cell outside the primary key that holds it (one UPDATE by key per cell), and
// commits; returns how many rows changed.
unsigned searchAndReplace(const std::filesystem::path& source, const std::filesystem::path& target,
                          const std::string& find, const std::string& replace);

}  // namespace odlex::bench::libmsi_peer
