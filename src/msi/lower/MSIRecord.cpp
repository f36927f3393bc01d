// Record fields and the reading of stream fields.

#include <odlex/msi/MSIDatabase.h>
#include <odlex/msi/MSIRecord.h>

#include <limits>

#include "msi/engine/Database.h"

namespace engine = odlex::engine;

MSIRecordColumn MSIRecordColumn::Integer(int value) {
  MSIRecordColumn column;
  column.kind_ = kindInteger;
  column.integer_ = value;
  return column;
}

MSIRecordColumn MSIRecordColumn::String(TalString text) {
  MSIRecordColumn column;
  if (!text.isNull()) {
    column.kind_ = kindString;
    column.text_ = std::move(text);
  }
  return column;
}

MSIRecordColumn MSIRecordColumn::Stream(TalString streamName) {
  MSIRecordColumn column;
  column.kind_ = kindStream;
  column.text_ = std::move(streamName);
  return column;
}

int MSIRecordColumn::GetInteger() const {
  if (kind_ == kindInteger)
    return integer_;
  if (kind_ == kindString) {
    const std::optional<std::int64_t> number = text_.ToInt();
    if (number && *number > std::numeric_limits<int>::min() &&
        *number <= std::numeric_limits<int>::max())
      return static_cast<int>(*number);
  }
  return MSIRecord::NullInteger;
}

TalString MSIRecordColumn::GetString() const {
  switch (kind_) {
    case kindInteger:
      return TalString::FromInt(integer_);
    case kindString:
      return text_;
    case kindNull:
    case kindStream:
      break;
  }
  return TalString();
}

const TalString& MSIRecordColumn::GetStreamName() const {
  static const TalString none;
  return kind_ == kindStream ? text_ : none;
}

const MSIRecordColumn& MSIRecord::GetColumn(unsigned field) const {
  static const MSIRecordColumn null;
  return field >= 1 && field <= fields_.size() ? fields_[field - 1] : null;
}

unsigned MSIRecord::SetColumn(unsigned field, MSIRecordColumn value) {
  if (field == 0 || field > MaxFields)
    return engine::kInvalidParameter;
  if (field > fields_.size())
    fields_.resize(field);
  fields_[field - 1] = std::move(value);
  return engine::kSuccess;
}

void MSIRecord::Clear() {
  fields_.clear();
  database_ = nullptr;
  databaseLifetime_.reset();
  generation_ = 0;
}

void MSIRecord::AssignFetched(std::vector<MSIRecordColumn> fields, MSIDatabase& database) {
  fields_ = std::move(fields);
  database_ = &database;
  databaseLifetime_ = database.lifetime();
  generation_ = database.generation();
}

unsigned MSIRecord::GetStream(unsigned field, MSIBinary& out) const {
  const MSIRecordColumn& column = GetColumn(field);
  if (column.GetKind() != MSIRecordColumn::kindStream)
    return engine::kDatatypeMismatch;
  if (!database_ || databaseLifetime_.expired() || database_->generation() != generation_ ||
      !database_->engineDatabase())
    return engine::kInvalidHandleState;
  std::vector<std::uint8_t> data;
  engine::Error error;
  if (!database_->engineDatabase()->readStream(column.GetStreamName().u16(), data, error)) {
    database_->AddError(
        TalError(error.code, u"GetStream: " + TalString::FromUtf8(error.text), u"GetStream"));
    return error.code;
  }
  out = MSIBinary(std::move(data));
  return engine::kSuccess;
}
