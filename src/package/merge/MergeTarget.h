#pragma once
// The rows a merge will add to a package, collected before anything is written: each row is
// checked against the package's row with the same key and against the rows collected before
// it, and fitted to the package's columns. apply() then writes them all at once, so that a
// merge that stops on the way leaves the package untouched.

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "msi/engine/Database.h"
#include "package/merge/MergeLog.h"
#include "package/merge/TableRows.h"

namespace odlex::merge {

class MergeTarget {
 public:
  // How a row whose key the package already holds with other values is reported.
  enum class Conflicts { kReport, kKeepQuietly };

  MergeTarget(engine::Database& package, const engine::Database& module, MergeLog& log);

  // The package's rows of `table` as they are before the merge; null when it has no such table.
  const TableRows* packageTable(std::u16string_view table);
  // The package's rows of `table` with the rows collected so far for it.
  std::vector<const Row*> currentRows(std::u16string_view table);

  // Collects `row`, laid out as `columns`, for `table`. A row whose key the package (or an
  // earlier collected row) holds with the same values is dropped; with other values it is
  // dropped and reported as a conflict (the package's row stays). Stops the merge (code 54) when
  // the row does not fit the package's columns. Binary cells name a stream of the module.
  void add(const std::u16string& table, const std::vector<engine::Column>& columns, Row row,
           Conflicts conflicts = Conflicts::kReport);

  // A new stream of the package, with the contents of `source`.
  void addStream(std::u16string name, std::shared_ptr<const storage::StreamSource> source) {
    newStreams_.emplace_back(std::move(name), std::move(source));
  }
  // Whether the package, or a stream added before, has a stream called `name`.
  bool hasStream(const std::u16string& name) const;

  // Rows collected, per table, in the order the tables were first given rows.
  std::vector<std::pair<std::u16string, std::size_t>> counts() const;
  // Writes every collected row into the package: missing tables made, binary cells' streams
  // taken from the module file, which they stay in until the package is saved (they are copied
  // then, a piece at a time).
  void apply();

 private:
  struct Planned {
    TableRows rows;                         // the package's columns, the collected rows
    bool create = false;                    // the package has no such table yet
    std::map<std::u16string, Row> byKey;    // collected rows by key
    std::map<std::u16string, Row> package;  // the package's rows by key (built on first use)
    bool packageIndexed = false;
  };

  Planned& planned(const std::u16string& table, const std::vector<engine::Column>& columns);
  // `row` (laid out as `columns`) laid out as the package's columns of `plan`.
  Row conform(const Planned& plan, const std::vector<engine::Column>& columns, const Row& row,
              const TableRows& moduleLayout);
  // Whether two rows with one key hold the same values (binary cells by their data): `existing`
  // of the package or, when `existingCollected`, collected from the module like `incoming`.
  bool sameRow(const Row& existing, bool existingCollected, const Row& incoming) const;
  // The stream `name` of `db` (the module or the package, as `which` says); stops the merge
  // (code 54) when it cannot be read.
  std::shared_ptr<const storage::StreamSource> stream(const engine::Database& db,
                                                      const std::u16string& name,
                                                      const char16_t* which) const;
  // Whether two streams hold the same bytes, compared a piece at a time.
  bool sameBytes(const storage::StreamSource& a, const storage::StreamSource& b,
                 const std::u16string& name) const;

  engine::Database& package_;
  const engine::Database& module_;
  MergeLog& log_;
  std::map<std::u16string, std::unique_ptr<TableRows>, std::less<>> packageTables_;
  std::map<std::u16string, Planned, std::less<>> planned_;
  std::vector<std::u16string> order_;
  std::vector<std::pair<std::u16string, std::shared_ptr<const storage::StreamSource>>> newStreams_;
};

}  // namespace odlex::merge
