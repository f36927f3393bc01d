#pragma once
// MSISchemaColumn: what a column of a table is (its name, kind of value, size, whether it is
// part of the primary key, whether it refers to another table, whether it may be null), as the
// search-and-replace checkers and the table classes need to know it.
//
// Columns are described from the built-in schema catalog when it knows the table and the
// column, and otherwise from the database's own column definitions. A column the catalog does
// not know counts as a foreign key when its name ends in '_', the installer's naming rule
// for columns that refer to another table (Component_, Directory_Parent excepted: only the
// trailing underscore counts).

#include <cstdint>
#include <vector>

#include "odlex/support/TalString.h"

class MSIDatabase;

class MSISchemaColumn {
 public:
  // Kinds of column value. Text columns (localizable or not) are 1.
  enum eType { typeString = 1, typeShort = 2, typeLong = 3, typeBinary = 4 };

  MSISchemaColumn() = default;
  // Describes column `column` of `table` from its engine type word (see engine/Column.h for
  // the bits), taking key-table and validation data from the schema catalog when it has them.
  MSISchemaColumn(const TalString& table, const TalString& column, std::uint16_t typeWord);

  // Every column of `table` in `database`, in table order. 1628 when the table does not exist,
  // 6 when the database is not open, each with an error added to the database's list.
  static unsigned GetTableColumns(MSIDatabase& database, const TalString& table,
                                  std::vector<MSISchemaColumn>& out);

  const TalString& GetTable() const { return table_; }
  const TalString& GetName() const { return name_; }
  eType Type() const { return type_; }
  bool IsKey() const { return key_; }
  bool IsForeignKey() const { return !keyTable_.isNull() || foreignByName_; }
  bool IsNullable() const { return nullable_; }
  bool IsLocalizable() const { return localizable_; }
  // Text: the length limit (0 = unlimited); integers: 2 or 4 bytes; binary: 0.
  unsigned GetSize() const { return size_; }
  // The tables (';'-separated) and the 1-based column a foreign key refers to, from the
  // catalog; empty and 0 when unknown.
  const TalString& GetKeyTable() const { return keyTable_; }
  int GetKeyColumn() const { return keyColumn_; }
  // The catalog's validation category ("Identifier", "Formatted", ...); empty when unknown.
  const TalString& GetCategory() const { return category_; }

 private:
  TalString table_;
  TalString name_;
  eType type_ = typeString;
  bool key_ = false;
  bool nullable_ = false;
  bool localizable_ = false;
  bool foreignByName_ = false;
  unsigned size_ = 0;
  TalString keyTable_;
  int keyColumn_ = 0;
  TalString category_;
};
