#pragma once
// Resolves the names of a parsed SELECT statement against a database and checks the types
// of its comparisons.
//
// Result codes:
//   kInvalidTable    a table of the FROM list is not in the database;
//   kBadQuerySyntax  an unknown or ambiguous column, a table listed twice, a comparison of
//                    text with an integer literal (or the reverse), a comparison that reads
//                    a binary column (only IS NULL / IS NOT NULL apply to those), a
//                    comparison of two constants.

#include "msi/engine/Database.h"
#include "msi/query/Plan.h"
#include "msi/query/Syntax.h"

namespace odlex::query {

// Most tables one query may name in its FROM list.
constexpr std::size_t kMaxTables = 8;

bool bindStatement(engine::Database& database, const SelectStatement& statement, Plan& plan,
                   engine::Error& error);

}  // namespace odlex::query
