#pragma once
// Statements that change the database: bound to it when the query is prepared (names looked
// up, literals checked against their columns) and applied by every execute. An execute that
// fails changes nothing.
//
// Result codes of prepare:
//   kInvalidTable    the table is not in the database (catalog tables cannot be changed);
//   kBadQuerySyntax  an unknown or repeated column, a literal of the wrong kind for its
//                    column, a PRIMARY KEY naming a column the table does not declare.
// Result codes of execute:
//   kInvalidTable     the table was dropped since prepare;
//   kFunctionFailed   the database is open read-only; the table's columns changed since
//                     prepare; a row with the same key exists (INSERT); a value that breaks
//                     NOT NULL or does not fit a 16-bit column; a key column set by UPDATE;
//                     a stream parameter naming no stream of the database;
//                     a table or column the database refuses (reserved name, 33rd column);
//                     FREE of a table that is not held;
//   kAlreadyExists    CREATE TABLE of a table that exists;
//   kDatatypeMismatch a parameter of the wrong kind for its column (a binary column takes
//                     only a stream, which is copied, or null).

#include <cstdint>
#include <memory>
#include <span>

#include "msi/engine/Database.h"
#include "msi/query/Field.h"
#include "msi/query/Syntax.h"

namespace odlex::query {

class Change {
 public:
  virtual ~Change() = default;
  virtual std::uint32_t parameterCount() const { return 0; }
  // `parameters` holds at least parameterCount() fields.
  virtual bool run(engine::Database& database, std::span<const Field> parameters,
                   engine::Error& error) = 0;
};

// A `Kind` bound to `statement` by its bind(database, statement, error); null when that fails.
template <typename Kind, typename StatementKind>
std::unique_ptr<Change> bindAs(engine::Database& database, const StatementKind& statement,
                               engine::Error& error) {
  auto change = std::make_unique<Kind>();
  if (!change->bind(database, statement, error))
    return nullptr;
  return change;
}

std::unique_ptr<Change> bindInsert(engine::Database& database, const InsertStatement& statement,
                                   engine::Error& error);
std::unique_ptr<Change> bindUpdate(engine::Database& database, const UpdateStatement& statement,
                                   engine::Error& error);
std::unique_ptr<Change> bindDelete(engine::Database& database, const DeleteStatement& statement,
                                   engine::Error& error);
std::unique_ptr<Change> bindCreate(engine::Database& database, const CreateStatement& statement,
                                   engine::Error& error);
std::unique_ptr<Change> bindDrop(engine::Database& database, const DropStatement& statement,
                                 engine::Error& error);
std::unique_ptr<Change> bindAlter(engine::Database& database, const AlterStatement& statement,
                                  engine::Error& error);

}  // namespace odlex::query
