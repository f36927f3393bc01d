#pragma once
// A view on an installer database: one statement of the installer's query language (see
// Parser.h for the grammar), prepared once and executed any number of times. A SELECT gives
// rows to fetch; the other statements change the database (see Change.h for their rules and
// result codes) and give no rows.
//
// Keywords are case-insensitive, names case-sensitive; a name that clashes with a keyword
// goes in back quotes (`Order`), a column may be qualified (`File`.`Component_`). Strings
// are in single quotes with no escape for a quote inside; integers are decimal, optionally
// negative, within +-2147483647. Conditions compare a column with a column, a literal or a
// `?` parameter using = <> < > <= >=, test a column with IS NULL / IS NOT NULL, and combine
// with AND (binding tighter) and OR and parentheses (at most 32 deep). A `?` may stand
// wherever a value goes: in conditions, VALUES and SET; execute takes the parameters in the
// order the `?` appear in the text.
//
// Values: '' is the null string, so `Col = ''` finds the rows where a text column is null,
// like `Col IS NULL`, and `SET Col = ''` clears it. = and <> treat null as a value; < > <= >=
// are false when either side is null. Text compares exactly (case-sensitive); < > order text
// by its UTF-16 code units. A binary column can only be tested with IS NULL / IS NOT NULL.
//
// Several tables in FROM join them: every combination of their rows that satisfies the
// condition (`FROM Component, FeatureComponents WHERE Component.Component =
// FeatureComponents.Component_`). A column name found in more than one of them must be
// qualified.
//
// Catalog tables (_Tables, _Columns, _Streams, _Storages) are queried like any other
// table, as of the moment of execute; the Data cell of _Streams/_Storages rows comes back as
// a stream field named by the row's Name. Statements cannot change them.
//
// Result codes of prepare:
//   kBadQuerySyntax (1615)  malformed text (the message gives line, column and the token),
//                           an unknown or ambiguous column, an integer literal compared with
//                           or stored in a text column or a string literal with an integer
//                           column;
//   kInvalidTable (1628)    a table that is not in the database.
// Result codes of execute:
//   kInvalidField (1616)    fewer parameter fields than `?` in the query (extra ones are
//                           ignored);
//   kDatatypeMismatch (1629) a parameter that does not fit its column: a string for an
//                           integer column, an integer for a text column, a stream anywhere
//                           but as the value of a binary column (a null field fits every
//                           column);
//   kInvalidTable, kFunctionFailed  a table was dropped or changed since prepare;
//   and those of the changing statements (Change.h).
// fetch gives kSuccess, kNoMoreItems after the last row, kInvalidHandleState before any
// successful execute.
//
// A query keeps a reference to its database, which must outlive it. The rows of an execute
// are copied out when it runs: edits made to the tables afterwards do not show in the rows
// still to be fetched.

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "msi/engine/Column.h"
#include "msi/engine/Database.h"
#include "msi/engine/Result.h"
#include "msi/query/Change.h"
#include "msi/query/Field.h"
#include "msi/query/Plan.h"
#include "msi/query/ResultSet.h"

namespace odlex::query {

class Query {
 public:
  // Parses `text` and resolves its names; null with `error` set on failure.
  static std::unique_ptr<Query> prepare(engine::Database& database, std::u16string_view text,
                                        engine::Error& error);

  // The selected columns, in the order of the returned fields; none for a change.
  const std::vector<engine::Column>& columns() const { return plan_.outputColumns; }
  // Number of `?` in the query; execute takes their values in this order.
  std::uint32_t parameterCount() const {
    return change_ ? change_->parameterCount() : plan_.parameterCount;
  }
  // Whether the statement changes the database (anything but SELECT).
  bool changes() const { return change_ != nullptr; }

  // Runs the query, replacing the rows of any earlier execute.
  std::uint32_t execute(std::span<const Field> parameters, engine::Error& error);
  std::uint32_t execute(engine::Error& error) { return execute({}, error); }

  // Reads the next row into `record`.
  std::uint32_t fetch(Record& record);
  // Rows of the last execute, fetched or not.
  std::size_t rowCount() const { return result_.rowCount(); }

 private:
  Query(engine::Database& database, Plan plan, std::unique_ptr<Change> change)
      : database_(database), plan_(std::move(plan)), change_(std::move(change)) {}

  engine::Database& database_;
  Plan plan_;
  std::unique_ptr<Change> change_;
  ResultSet result_;
  bool executed_ = false;
  std::size_t next_ = 0;
};

}  // namespace odlex::query
