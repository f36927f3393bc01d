#pragma once
// MSIView: a statement of the installer's query language on an MSIDatabase, opened once and
// executed any number of times. A SELECT's rows are read one at a time into an MSIRecord; the
// other statements (INSERT, UPDATE, DELETE, CREATE TABLE, DROP TABLE, ALTER TABLE) change the
// database when executed, and saving the database keeps their changes.
//
//   MSIView view(db);
//   MSIRecord params;
//   params.SetString(1, u"ProductName");
//   if (view.Open(u"SELECT `Value` FROM `Property` WHERE `Property` = ?", true) == 0 &&
//       view.Execute(&params, true) == 0)
//     for (MSIRecord row; view.Fetch(row) == 0;)
//       use(row.GetString(1));
//
//   MSIRecord row;
//   row.SetString(1, u"NewProperty");
//   row.SetString(2, u"value");
//   view.Open(u"INSERT INTO `Property` (`Property`, `Value`) VALUES (?, ?)");
//   view.Execute(&row);
//
// The language: SELECT [DISTINCT] with joins of several tables, WHERE (comparisons, IS [NOT]
// NULL, AND, OR, parentheses) and ORDER BY; INSERT INTO ... VALUES [TEMPORARY]; UPDATE ... SET
// ... [WHERE]; DELETE FROM ... [WHERE]; CREATE TABLE with CHAR(n), CHARACTER(n), LONGCHAR,
// SHORT, INT, INTEGER, LONG and OBJECT columns, NOT NULL, TEMPORARY, LOCALIZABLE and PRIMARY
// KEY, [HOLD]; DROP TABLE; ALTER TABLE ... ADD column [HOLD], ALTER TABLE ... HOLD | FREE. A
// `?` stands for a field of Execute's record wherever a value goes; an OBJECT column takes a
// stream field (as a fetched record holds one: a stream of this database), whose data the row
// gets a copy of, and '' clears it. Temporary rows, columns
// and tables live until the database is closed (or their table's last hold is freed) and are
// never saved. Statements change the engine's tables directly: table objects of this layer
// that are loaded and edited at the same time keep their own rows and overwrite the table
// when persisted.
//
// The bool of Open and Execute says whether a failure is also added to the database's error
// list (true) or only returned (false, for queries that are allowed to fail, such as probing
// for a table that may be missing).
//
// Result codes: Open 1615 (bad syntax or unknown column), 1628 (unknown table), 6 (database not
// open); Execute 1616 (too few parameters), 1629 (parameter of the wrong type), 1609 (not
// opened, or the database was closed or re-opened since), 1627 (a changing statement the
// database refuses: a duplicate key, a NOT NULL column left null, a read-only database, ...),
// 183 (CREATE TABLE of an existing table); Fetch 259 when no row is left (at once after a
// changing statement), 1609 before a successful Execute. A view refers to its database,
// which must outlive it.

#include <cstdint>
#include <memory>
#include <string>

#include "odlex/msi/MSIDatabase.h"
#include "odlex/msi/MSIRecord.h"

namespace odlex::query {
class Query;
}

class MSIView {
 public:
  explicit MSIView(MSIDatabase& database);
  ~MSIView();
  MSIView(const MSIView&) = delete;
  MSIView& operator=(const MSIView&) = delete;

  unsigned Open(const TalString& sql, bool recordErrors = true);
  // Runs the query with the fields of `params` (null: no parameters) as the values of its `?`.
  unsigned Execute(MSIRecord* params = nullptr, bool recordErrors = true);
  unsigned Fetch(MSIRecord& record);
  // Drops the query; the view can be opened again.
  void Close();

 private:
  // The code of a failure, added to the database's error list when `record` is true.
  unsigned report(unsigned code, const std::string& text, bool record);
  bool current() const;

  MSIDatabase& database_;
  std::unique_ptr<odlex::query::Query> query_;
  std::uint64_t generation_ = 0;
};
