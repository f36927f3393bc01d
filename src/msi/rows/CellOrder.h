#pragma once
// How row cells compare and hash as key values, and the stream name a row's binary data
// takes: the table name and the key values joined with '.', integers in decimal.

#include <cstddef>

#include "odlex/msi/MSIEntry.h"
#include "odlex/msi/MSIRecord.h"

namespace odlex::rows {

// The text a cell holds: a string field's text or a stream field's name, empty for null and
// integer fields; read in place, without the copy GetString makes.
struct CellText {
  static const std::u16string& of(const MSIRecordColumn& cell) { return cell.text_.u16(); }
};

// Null first, then integers by value, then text by UTF-16 code units (exact case).
int compareCells(const MSIRecordColumn& a, const MSIRecordColumn& b);
std::size_t hashCell(const MSIRecordColumn& cell);
TalString streamNameOf(const MSIEntry& row);

}  // namespace odlex::rows
