#pragma once
// The difference of two packages: every table row by key and column by column, the streams
// outside the tables by content, the code page and the summary information property by
// property. Tables whose columns changed show as dropped and added again.

#include <cstdint>
#include <string>
#include <vector>

#include "msi/engine/Result.h"
#include "msi/transform/Difference.h"

namespace odlex::engine {
class Database;
}

namespace odlex::package {

struct SummaryChange {
  std::uint32_t property = 0;  // the property id
  std::u16string before;       // empty when absent
  std::u16string after;
};

struct PackageDifference {
  transform::Difference tables;
  std::uint32_t codePageBefore = 0;
  std::uint32_t codePageAfter = 0;
  std::vector<SummaryChange> summary;  // in property order
  bool empty() const {
    return tables.empty() && summary.empty() && codePageBefore == codePageAfter;
  }
};

// The name of a summary property as the tool shows it ("Title", "RevisionNumber", ...).
std::string summaryPropertyName(std::uint32_t property);

// What changed from `a` to `b`. False with the read error of a stream.
bool diffPackages(const engine::Database& a, const engine::Database& b, PackageDifference& out,
                  engine::Error& error);

}  // namespace odlex::package
