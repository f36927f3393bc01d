#pragma once
// MSIRecord: the fields of one row fetched from a view, or the parameters given to a view's
// Execute. Fields are numbered from 1, as the installer numbers them; field 0 and fields past
// the end read as null. Setters grow the record as needed.
//
// A field (MSIRecordColumn) is null, an integer, a string or a stream. The empty string is the
// null string: setting "" makes the field null. A stream field comes from a binary cell; its
// data stays in the database until GetStream reads it, which needs the database to be still
// open as it was when the row was fetched.

#include <cstdint>
#include <memory>
#include <vector>

#include "odlex/msi/MSIBinary.h"
#include "odlex/support/TalString.h"

class MSIDatabase;
namespace odlex::rows {
struct CellText;
}

class MSIRecordColumn {
 public:
  enum eKind { kindNull, kindInteger, kindString, kindStream };

  MSIRecordColumn() = default;
  static MSIRecordColumn Integer(int value);
  // An empty text gives a null field.
  static MSIRecordColumn String(TalString text);
  // A binary cell whose data is the database stream `streamName`.
  static MSIRecordColumn Stream(TalString streamName);

  eKind GetKind() const { return kind_; }
  bool IsNull() const { return kind_ == kindNull; }
  // Integer fields: the value. String fields that spell a decimal integer in 32 bits: that
  // number. Everything else: MSIRecord::NullInteger.
  int GetInteger() const;
  // String fields: the text; integer fields: the number in decimal; null and stream: empty.
  TalString GetString() const;
  operator TalString() const { return GetString(); }
  // The name of the database stream of a stream field; empty for other fields.
  const TalString& GetStreamName() const;

  friend bool operator==(const MSIRecordColumn&, const MSIRecordColumn&) = default;

 private:
  // The row layer compares, hashes and stores cells by their text without copying it.
  friend struct odlex::rows::CellText;

  eKind kind_ = kindNull;
  int integer_ = 0;
  TalString text_;  // the text, or the stream name
};

class MSIRecord {
 public:
  // What GetInteger returns for a field that holds no integer (the installer's null integer).
  static constexpr int NullInteger = INT32_MIN;
  // Most fields a record takes, as in the installer's records.
  static constexpr unsigned MaxFields = 65535;

  MSIRecord() = default;
  explicit MSIRecord(unsigned fieldCount) : fields_(fieldCount) {}

  unsigned GetFieldCount() const { return static_cast<unsigned>(fields_.size()); }
  const MSIRecordColumn& GetColumn(unsigned field) const;
  const MSIRecordColumn& operator[](unsigned field) const { return GetColumn(field); }

  bool IsNull(unsigned field) const { return GetColumn(field).IsNull(); }
  bool IsStream(unsigned field) const {
    return GetColumn(field).GetKind() == MSIRecordColumn::kindStream;
  }
  int GetInteger(unsigned field) const { return GetColumn(field).GetInteger(); }
  TalString GetString(unsigned field) const { return GetColumn(field).GetString(); }
  // Reads the data of a stream field. 0 on success; 1629 (datatype mismatch) for a field that
  // is not a stream; 1609 (invalid handle state) when the record was not fetched from a
  // database that is still open as it was; otherwise the database's read error.
  unsigned GetStream(unsigned field, MSIBinary& out) const;

  // Setters for parameters (and for rows the table classes build). Each returns 0, or 87
  // (invalid parameter) for field 0 or a field beyond MaxFields, leaving the record unchanged.
  unsigned SetColumn(unsigned field, MSIRecordColumn value);
  unsigned SetInteger(unsigned field, int value) {
    return SetColumn(field, MSIRecordColumn::Integer(value));
  }
  unsigned SetString(unsigned field, const TalString& text) {
    return SetColumn(field, MSIRecordColumn::String(text));
  }
  unsigned SetNull(unsigned field) { return SetColumn(field, MSIRecordColumn()); }
  // Empties the record and forgets its database.
  void Clear();

  // Used by MSIView::Fetch: the record's fields come from `database`.
  void AssignFetched(std::vector<MSIRecordColumn> fields, MSIDatabase& database);

 private:
  std::vector<MSIRecordColumn> fields_;
  MSIDatabase* database_ = nullptr;
  // Expires with the database object, which may go before the record.
  std::weak_ptr<const void> databaseLifetime_;
  std::uint64_t generation_ = 0;
};
