// Views: prepared statements; a SELECT's rows are read into records.

#include <odlex/msi/MSIView.h>

#include <string>
#include <vector>

#include "msi/query/Query.h"

namespace engine = odlex::engine;
namespace query = odlex::query;

namespace {

query::Field toField(const MSIRecordColumn& column) {
  switch (column.GetKind()) {
    case MSIRecordColumn::kindInteger:
      return query::Field::ofInteger(column.GetInteger());
    case MSIRecordColumn::kindString:
      return query::Field::ofString(column.GetString().u16());
    case MSIRecordColumn::kindStream:
      return query::Field::ofStream(column.GetStreamName().u16());
    case MSIRecordColumn::kindNull:
      break;
  }
  return query::Field::null();
}

MSIRecordColumn fromField(query::Field field) {
  switch (field.kind) {
    case query::Field::Kind::kInteger:
      return MSIRecordColumn::Integer(field.integer);
    case query::Field::Kind::kString:
      return MSIRecordColumn::String(TalString(std::move(field.text)));
    case query::Field::Kind::kStream:
      return MSIRecordColumn::Stream(TalString(std::move(field.text)));
    case query::Field::Kind::kNull:
      break;
  }
  return MSIRecordColumn();
}

}  // namespace

MSIView::MSIView(MSIDatabase& database) : database_(database) {}

MSIView::~MSIView() = default;

unsigned MSIView::Open(const TalString& sql, bool recordErrors) {
  Close();
  engine::Database* db = database_.engineDatabase();
  if (!db)
    return report(engine::kInvalidHandle, "the database is not open", recordErrors);
  engine::Error error;
  query_ = query::Query::prepare(*db, sql.u16(), error);
  if (!query_)
    return report(error.code, error.text + " (in: " + sql.ToUtf8() + ")", recordErrors);
  generation_ = database_.generation();
  return engine::kSuccess;
}

unsigned MSIView::Execute(MSIRecord* params, bool recordErrors) {
  if (!current())
    return report(engine::kInvalidHandleState, "the view is not open on the open database",
                  recordErrors);
  std::vector<query::Field> fields;
  if (params)
    for (unsigned i = 1; i <= params->GetFieldCount(); ++i)
      fields.push_back(toField(params->GetColumn(i)));
  engine::Error error;
  if (query_->execute(fields, error) != engine::kSuccess)
    return report(error.code, error.text, recordErrors);
  return engine::kSuccess;
}

unsigned MSIView::Fetch(MSIRecord& record) {
  if (!current())
    return engine::kInvalidHandleState;
  query::Record row;
  const std::uint32_t result = query_->fetch(row);
  if (result != engine::kSuccess)
    return result;
  std::vector<MSIRecordColumn> fields;
  fields.reserve(row.size());
  for (query::Field& field : row)
    fields.push_back(fromField(std::move(field)));
  record.AssignFetched(std::move(fields), database_);
  return engine::kSuccess;
}

void MSIView::Close() {
  query_.reset();
}

bool MSIView::current() const {
  return query_ && generation_ == database_.generation();
}

unsigned MSIView::report(unsigned code, const std::string& text, bool record) {
  if (record)
    database_.AddError(TalError(code, u"MSIView: " + TalString::FromUtf8(text), u"MSIView"));
  return code;
}
