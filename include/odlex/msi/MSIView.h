#pragma once
// MSIView: a SELECT query on an MSIDatabase, opened once and executed any number of times,
// with its rows read one at a time into an MSIRecord.
//
//   MSIView view(db);
//   MSIRecord params;
//   params.SetString(1, u"ProductName");
//   if (view.Open(u"SELECT `Value` FROM `Property` WHERE `Property` = ?", true) == 0 &&
//       view.Execute(&params, true) == 0)
//     for (MSIRecord row; view.Fetch(row) == 0;)
//       use(row.GetString(1));
//
// The query language is the engine's SELECT subset (columns or *, several tables, WHERE with
// comparisons, IS [NOT] NULL, AND, OR, parentheses, ? parameters, ORDER BY, DISTINCT).
//
// The bool of Open and Execute says whether a failure is also added to the database's error
// list (true) or only returned (false, for queries that are allowed to fail, such as probing
// for a table that may be missing).
//
// Result codes: Open 1615 (bad syntax or unknown column), 1628 (unknown table), 6 (database not
// open); Execute 1616 (too few parameters), 1629 (parameter of the wrong type), 1609 (not
// opened, or the database was closed or re-opened since); Fetch 259 when no row is left, 1609
// before a successful Execute. A view refers to its database, which must outlive it.

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
