// One row of an installer table: cells by catalog column, key ordering and state.

#include "odlex/msi/MSIEntry.h"

#include <functional>

#include "msi/engine/Result.h"
#include "msi/rows/CellOrder.h"
#include "msi/schema/Schema.h"
#include "odlex/msi/MSITable.h"
#include "odlex/support/Utf8.h"

namespace {

// The column's shape without its name (no copy of the name is made).
odlex::engine::Column shapeOf(const odlex::schema::ColumnSchema& column) {
  return odlex::engine::Column{std::u16string(), column.type};
}

// Rows of tables without binary columns hold no slots for binary data.
std::size_t binarySlots(const odlex::schema::TableSchema& schema) {
  for (const auto& column : schema.columns) {
    if (shapeOf(column).isBinary())
      return schema.columns.size();
  }
  return 0;
}

}  // namespace

MSIEntry::MSIEntry(const odlex::schema::TableSchema& schema)
    : schema_(&schema), values_(schema.columns.size()), binaries_(binarySlots(schema)) {}

MSIEntry::MSIEntry(const MSIEntry& other)
    : RWCollectable(other),
      schema_(other.schema_),
      values_(other.values_),
      binaries_(other.binaries_.size()),
      deleted_(other.deleted_),
      modified_(other.modified_) {
  for (std::size_t column = 0; column < values_.size(); ++column) {
    if (isBinaryColumn(column) && !other.cellIsNull(column))
      binaries_[column] = std::make_shared<MSIBinary>(other.BinaryAt(column));
  }
}

MSIEntry::~MSIEntry() = default;

TalString MSIEntry::GetTableName() const {
  return TalString(std::u16string(schema_->name));
}

int MSIEntry::GetColumnIndex(const TalString& name) const {
  const auto* column = schema_->findColumn(name.u16());
  return column ? static_cast<int>(column - schema_->columns.data()) : -1;
}

bool MSIEntry::isBinaryColumn(std::size_t column) const {
  return shapeOf(schema_->columns[column]).isBinary();
}

bool MSIEntry::isIntegerColumn(std::size_t column) const {
  return shapeOf(schema_->columns[column]).isInteger();
}

bool MSIEntry::isKeyColumn(std::size_t column) const {
  return schema_->columns[column].key();
}

bool MSIEntry::cellIsNull(std::size_t column) const {
  return values_[column].IsNull() && (column >= binaries_.size() || !binaries_[column]);
}

bool MSIEntry::GetColumn(const TalString& name, MSIRecordColumn& value) const {
  const int column = GetColumnIndex(name);
  if (column < 0)
    return false;
  if (isBinaryColumn(column) && !cellIsNull(column))
    value = MSIRecordColumn::Stream(odlex::rows::streamNameOf(*this));
  else
    value = values_[column];
  return true;
}

bool MSIEntry::SetColumn(const TalString& name, const MSIRecordColumn& value) {
  const int column = GetColumnIndex(name);
  if (column < 0)
    return false;
  if (value.IsNull()) {
    if (isBinaryColumn(column))
      binaries_[column].reset();
    return store(column, MSIRecordColumn());
  }
  if (isBinaryColumn(column) || value.GetKind() == MSIRecordColumn::kindStream)
    return false;
  if (isIntegerColumn(column)) {
    const int number = value.GetInteger();
    return number != MSIRecord::NullInteger && SetIntegerAt(column, number);
  }
  return store(column, MSIRecordColumn::String(value.GetString()));
}

bool MSIEntry::GetBinary(const TalString& name, MSIBinary& value) const {
  const int column = GetColumnIndex(name);
  if (column < 0 || !isBinaryColumn(column))
    return false;
  value = BinaryAt(column);
  return true;
}

TalString MSIEntry::GetBinarySourceFile(const TalString& name) const {
  const int column = GetColumnIndex(name);
  if (column < 0 || !isBinaryColumn(column) || !binaries_[column])
    return TalString();
  return binaries_[column]->GetBinaryFile();
}

bool MSIEntry::SetBinary(const TalString& name, const MSIBinary& value) {
  const int column = GetColumnIndex(name);
  if (column < 0 || !isBinaryColumn(column))
    return false;
  SetBinaryAt(column, value);
  return true;
}

void MSIEntry::SetDeleted(bool deleted) {
  deleted_ = deleted;
  changed();
}

void MSIEntry::Modify() {
  modified_ = true;
  changed();
}

void MSIEntry::Delete() {
  deleted_ = true;
  Modify();
}

void MSIEntry::changed() {
  if (owner_)
    owner_->rowMarked();
}

void MSIEntry::valueChanged() {
  if (owner_)
    owner_->rowChanged();
}

bool MSIEntry::CopyFields(const MSIEntry& other) {
  if (other.schema_ != schema_)
    return false;
  bool changed = false;
  for (std::size_t column = 0; column < values_.size(); ++column) {
    if (isKeyColumn(column))
      continue;
    if (isBinaryColumn(column)) {
      const MSIBinary data = other.BinaryAt(column);
      if (data == BinaryAt(column))
        continue;
      SetBinaryAt(column, data);
    } else {
      if (other.values_[column] == values_[column])
        continue;
      store(column, other.values_[column]);
    }
    changed = true;
  }
  return changed;
}

TalString MSIEntry::GetComponentKey() const {
  if (schema_->name == u"Component")
    return TextAt(0);
  for (std::size_t i = 0; i < schema_->columns.size(); ++i) {
    const auto& column = schema_->columns[i];
    if (column.keyColumn == 1 && column.keyTable == u"Component")
      return TextAt(i);
  }
  return TalString();
}

int MSIEntry::compareTo(const RWCollectable* other) const {
  const auto* row = dynamic_cast<const MSIEntry*>(other);
  if (!row)
    return RWCollectable::compareTo(other);
  // Rows of different tables order by table, so a tree may hold rows of several tables.
  if (row->schema_ != schema_) {
    if (const int order = schema_->name.compare(row->schema_->name))
      return order < 0 ? -1 : 1;
    return std::less<const void*>()(schema_, row->schema_) ? -1 : 1;
  }
  for (std::size_t i = 0; i < values_.size() && isKeyColumn(i); ++i) {
    if (const int order = odlex::rows::compareCells(values_[i], row->values_[i]))
      return order;
  }
  return 0;
}

bool MSIEntry::isEqual(const RWCollectable* other) const {
  return compareTo(other) == 0;
}

unsigned MSIEntry::hash() const {
  std::size_t seed = 0;
  for (std::size_t i = 0; i < values_.size() && isKeyColumn(i); ++i)
    seed = seed * 31 + odlex::rows::hashCell(values_[i]);
  return static_cast<unsigned>(seed);
}

TalString MSIEntry::TextAt(std::size_t column) const {
  return values_[column].GetString();
}

bool MSIEntry::SetTextAt(std::size_t column, const TalString& text) {
  return store(column, MSIRecordColumn::String(text));
}

std::int32_t MSIEntry::IntegerAt(std::size_t column) const {
  return values_[column].GetInteger();
}

short MSIEntry::ShortAt(std::size_t column) const {
  return NullableShortAt(column).Get();
}

NullableSignedShort MSIEntry::NullableShortAt(std::size_t column) const {
  if (values_[column].IsNull())
    return NullableSignedShort();
  return NullableSignedShort(static_cast<std::int16_t>(values_[column].GetInteger()));
}

NullableLong MSIEntry::NullableLongAt(std::size_t column) const {
  if (values_[column].IsNull())
    return NullableLong();
  return NullableLong(values_[column].GetInteger());
}

bool MSIEntry::SetIntegerAt(std::size_t column, std::int32_t value) {
  if (value == MSIRecord::NullInteger)
    return store(column, MSIRecordColumn());
  const auto shape = shapeOf(schema_->columns[column]);
  if (!shape.holdsInteger(value)) {
    if (owner_) {
      const std::string where = odlex::Utf16ToUtf8(schema_->name) + "." +
                                odlex::Utf16ToUtf8(schema_->columns[column].name);
      owner_->ReportError(
          odlex::engine::kInvalidData,
          TalString::FromUtf8(where + ": " + std::to_string(value) + " is out of range for a " +
                              std::to_string(shape.integerSize() * 8) + "-bit integer column"));
    }
    return false;
  }
  return store(column, MSIRecordColumn::Integer(value));
}

bool MSIEntry::SetNullAt(std::size_t column) {
  return store(column, MSIRecordColumn());
}

std::shared_ptr<MSIBinary>& MSIEntry::binarySlot(std::size_t column) const {
  // A file may give a column of another kind stream data.
  if (binaries_.empty())
    binaries_.resize(values_.size());
  return binaries_[column];
}

MSIBinary MSIEntry::BinaryAt(std::size_t column) const {
  std::shared_ptr<MSIBinary>& slot = binarySlot(column);
  if (!slot) {
    if (values_[column].IsNull() || !owner_)
      return MSIBinary();
    slot = std::make_shared<MSIBinary>(owner_->ReadStream(values_[column].GetStreamName()));
  }
  return *slot;
}

void MSIEntry::SetStreamAt(std::size_t column, const TalString& stream) {
  storedRow_ = kNoRow;
  values_[column] = MSIRecordColumn::Stream(stream);
  binarySlot(column).reset();
}

void MSIEntry::SetBinaryAt(std::size_t column, const MSIBinary& value) {
  storedRow_ = kNoRow;
  if (value.GetSize() == 0) {
    binarySlot(column).reset();
    values_[column] = MSIRecordColumn();
  } else {
    binarySlot(column) = std::make_shared<MSIBinary>(value);
  }
  valueChanged();
  Modify();
}

bool MSIEntry::store(std::size_t column, MSIRecordColumn value) {
  storedRow_ = kNoRow;
  if (owner_ && isKeyColumn(column) && !(value == values_[column])) {
    if (!owner_->rekey(*this, column, value))
      return false;
  } else {
    values_[column] = std::move(value);
  }
  valueChanged();
  Modify();
  return true;
}
