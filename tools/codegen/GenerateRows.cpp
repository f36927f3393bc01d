// Build-time generator of the per-table row and table classes. For every table of the schema
// catalog (except the tables the database keeps about itself, other than _Validation, whose
// behaviour is not that of plain rows) it writes
//   class MSIE<Table> : public MSIEntry   - a typed getter and setter per column
//   class MSIT<Table> : public MSITable   - Add/Find by key values, FindBy<Accessor> per column
// and odlex::rows::createGeneratedTable(name), the factory of these table classes.
//
// Rows of the sequence tables derive from MSISequenceEntry (or MSIModuleSequenceEntry), which
// already give their columns' accessors.
//
// A class that needs more than the catalog says (Directory paths, generated keys, ...) has a
// hand-written members file, <extensions>/<Class>.inc, included in the class's public part;
// the members are defined in src/msi/rows/tables.
//
// Usage: GenerateRows <header to write> <source to write> <extensions folder>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "msi/schema/Schema.h"

namespace {

using odlex::schema::ColumnSchema;
using odlex::schema::TableSchema;

std::string ascii(std::u16string_view text) {
  return std::string(text.begin(), text.end());
}

bool generated(const TableSchema& table) {
  return !table.system() || table.name == u"_Validation";
}

enum class Kind { kText, kShort, kNullableShort, kLong, kNullableLong, kBinary };

Kind kindOf(const ColumnSchema& column) {
  const odlex::engine::Column engine = column.engineColumn();
  if (engine.isBinary())
    return Kind::kBinary;
  if (engine.isString())
    return Kind::kText;
  if (engine.integerSize() == 2)
    return engine.nullable() ? Kind::kNullableShort : Kind::kShort;
  return engine.nullable() ? Kind::kNullableLong : Kind::kLong;
}

struct Field {
  std::string accessor;
  std::size_t index;
  Kind kind;

  std::string type() const {
    switch (kind) {
      case Kind::kText:
        return "TalString";
      case Kind::kShort:
        return "short";
      case Kind::kNullableShort:
        return "NullableSignedShort";
      case Kind::kLong:
        return "long";
      case Kind::kNullableLong:
        return "NullableLong";
      case Kind::kBinary:
        return "MSIBinary";
    }
    return {};
  }
  // The type as a parameter.
  std::string parameter() const {
    return kind == Kind::kShort || kind == Kind::kLong ? type() : "const " + type() + "&";
  }
  std::string getter() const {
    const std::string at = "(" + std::to_string(index) + ")";
    switch (kind) {
      case Kind::kText:
        return "TextAt" + at;
      case Kind::kShort:
        return "ShortAt" + at;
      case Kind::kNullableShort:
        return "NullableShortAt" + at;
      case Kind::kLong:
        return "IntegerAt" + at;
      case Kind::kNullableLong:
        return "NullableLongAt" + at;
      case Kind::kBinary:
        return "BinaryAt" + at;
    }
    return {};
  }
  std::string setter(const std::string& value) const {
    const std::string at = std::to_string(index) + ", " + value;
    switch (kind) {
      case Kind::kText:
        return "SetTextAt(" + at + ")";
      case Kind::kShort:
        return "SetIntegerAt(" + at + ")";
      case Kind::kLong:
        return "SetIntegerAt(" + std::to_string(index) + ", static_cast<std::int32_t>(" + value +
               "))";
      case Kind::kNullableShort:
      case Kind::kNullableLong:
        return "SetNullableAt(" + at + ")";
      case Kind::kBinary:
        return "SetBinaryAt(" + at + ")";
    }
    return {};
  }
  // The value as a cell, for index lookups.
  std::string cell(const std::string& value) const {
    switch (kind) {
      case Kind::kText:
        return "MSIRecordColumn::String(" + value + ")";
      case Kind::kShort:
      case Kind::kLong:
        return "MSIRecordColumn::Integer(static_cast<int>(" + value + "))";
      case Kind::kNullableShort:
      case Kind::kNullableLong:
        return value + ".IsNull() ? MSIRecordColumn() : MSIRecordColumn::Integer(" + value +
               ".Get())";
      case Kind::kBinary:
        break;
    }
    return {};
  }
};

std::vector<Field> fieldsOf(const TableSchema& table) {
  std::vector<Field> fields;
  for (std::size_t i = 0; i < table.columns.size(); ++i)
    fields.push_back({ascii(table.columns[i].accessor), i, kindOf(table.columns[i])});
  return fields;
}

// The hand-written members files, found in this folder.
std::filesystem::path extensionsFolder;

void includeExtension(std::ostream& out, const std::string& className) {
  if (std::filesystem::exists(extensionsFolder / (className + ".inc")))
    out << "\n#include \"odlex/msi/rows/" << className << ".inc\"\n";
}

std::vector<std::u16string> columnNames(const TableSchema& table) {
  std::vector<std::u16string> names;
  for (const ColumnSchema& column : table.columns)
    names.emplace_back(column.name);
  return names;
}

// The base class of a table's rows: the sequence tables share theirs.
std::string entryBaseOf(const TableSchema& table) {
  const auto names = columnNames(table);
  if (names == std::vector<std::u16string>{u"Action", u"Condition", u"Sequence"})
    return "MSISequenceEntry";
  if (names ==
      std::vector<std::u16string>{u"Action", u"Sequence", u"BaseAction", u"After", u"Condition"})
    return "MSIModuleSequenceEntry";
  return "MSIEntry";
}

// The name of the table class's add-by-key operation. Directory's Add takes a folder path (a
// hand-written member), so adding by key is AddKey there.
std::string addByKeyName(const TableSchema& table) {
  return table.name == u"Directory" ? "AddKey" : "Add";
}

std::size_t keyCount(const TableSchema& table) {
  std::size_t count = 0;
  while (count < table.columns.size() && table.columns[count].key())
    ++count;
  return count;
}

// "const TalString& keyA, short keyB" and "keyA, keyB" for the key columns.
std::string keyParameters(const std::vector<Field>& fields, std::size_t keys) {
  std::string text;
  for (std::size_t i = 0; i < keys; ++i)
    text += (i ? ", " : "") + fields[i].parameter() + " key" + fields[i].accessor;
  return text;
}

std::string keyArguments(const std::vector<Field>& fields, std::size_t keys) {
  std::string text;
  for (std::size_t i = 0; i < keys; ++i)
    text += (i ? ", key" : "key") + fields[i].accessor;
  return text;
}

void declare(std::ostream& out, const TableSchema& table) {
  const std::string name = ascii(table.name);
  const std::string entry = "MSIE" + name;
  const auto fields = fieldsOf(table);
  const std::size_t keys = keyCount(table);
  const std::string base = entryBaseOf(table);
  out << "class " << entry << " : public " << base << " {\n public:\n  " << entry << "();\n";
  if (keys > 0)
    out << "  " << (keys == 1 ? "explicit " : "") << entry << "(" << keyParameters(fields, keys)
        << ");\n";
  out << "  using MSIEntry::GetBinary;\n  using MSIEntry::GetColumn;\n"
         "  using MSIEntry::SetBinary;\n  using MSIEntry::SetColumn;\n\n";
  for (const Field& field : fields) {
    if (base != "MSIEntry")
      break;
    out << "  " << field.type() << " Get" << field.accessor << "() const { return "
        << field.getter() << "; }\n";
    // Setters report whether the value was taken: a key another row holds, or a number the
    // column cannot hold, is refused.
    if (field.kind == Kind::kBinary)
      out << "  void Set" << field.accessor << "(" << field.parameter() << " value) { "
          << field.setter("value") << "; }\n";
    else
      out << "  bool Set" << field.accessor << "(" << field.parameter() << " value) { return "
          << field.setter("value") << "; }\n";
  }
  includeExtension(out, entry);
  out << "};\n\n";

  const std::string tableClass = "MSIT" + name;
  out << "class " << tableClass << " : public MSITable {\n public:\n  " << tableClass << "();\n";
  if (keys > 0) {
    out << "  // Null when a live row already has this key.\n";
    out << "  " << entry << "* " << addByKeyName(table) << "(" << keyParameters(fields, keys)
        << ");\n";
    out << "  " << entry << "* Find(" << keyParameters(fields, keys) << ") const;\n";
  }
  for (const Field& field : fields) {
    if (field.kind != Kind::kBinary)
      out << "  " << entry << "* FindBy" << field.accessor << "(" << field.parameter()
          << " value) const;\n";
  }
  includeExtension(out, tableClass);
  out << "\n protected:\n  std::unique_ptr<MSIEntry> NewEntry() const override;\n};\n\n";
}

void define(std::ostream& out, const TableSchema& table) {
  const std::string name = ascii(table.name);
  const std::string entry = "MSIE" + name;
  const std::string tableClass = "MSIT" + name;
  const auto fields = fieldsOf(table);
  const std::size_t keys = keyCount(table);
  out << "// " << name << "\n\n";
  out << entry << "::" << entry << "() : " << entryBaseOf(table) << "(schemaOf(u\"" << name
      << "\")) {}\n\n";
  if (keys > 0) {
    out << entry << "::" << entry << "(" << keyParameters(fields, keys) << ") : " << entry
        << "() {\n";
    for (std::size_t i = 0; i < keys; ++i)
      out << "  Set" << fields[i].accessor << "(key" << fields[i].accessor << ");\n";
    out << "}\n\n";
  }
  out << tableClass << "::" << tableClass << "() : MSITable(schemaOf(u\"" << name << "\")) {}\n\n";
  out << "std::unique_ptr<MSIEntry> " << tableClass
      << "::NewEntry() const {\n  return std::make_unique<" << entry << ">();\n}\n\n";
  if (keys > 0) {
    out << entry << "* " << tableClass << "::" << addByKeyName(table) << "("
        << keyParameters(fields, keys) << ") {\n"
        << "  return static_cast<" << entry << "*>(AddEntry(std::make_unique<" << entry << ">("
        << keyArguments(fields, keys) << ")));\n}\n\n";
    out << entry << "* " << tableClass << "::Find(" << keyParameters(fields, keys)
        << ") const {\n  const " << entry << " probe(" << keyArguments(fields, keys) << ");\n"
        << "  return static_cast<" << entry << "*>(FindEntry(probe));\n}\n\n";
  }
  for (const Field& field : fields) {
    if (field.kind == Kind::kBinary)
      continue;
    out << entry << "* " << tableClass << "::FindBy" << field.accessor << "(" << field.parameter()
        << " value) const {\n  return static_cast<" << entry << "*>(FindEntryBy(" << field.index
        << ", " << field.cell("value") << "));\n}\n\n";
  }
}

void writeHeader(std::ostream& out) {
  out << "#pragma once\n"
         "// The row class MSIE<Table> and table class MSIT<Table> of every table of the schema\n"
         "// catalog. Generated at build time by tools/codegen/GenerateRows.cpp; do not edit.\n\n"
         "#include <cstdint>\n#include <memory>\n\n"
         "#include \"odlex/msi/MSIEntry.h\"\n#include \"odlex/msi/MSISequenceEntry.h\"\n"
         "#include \"odlex/msi/MSITable.h\"\n#include \"odlex/msi/rows/Extensions.h\"\n\n";
  for (const TableSchema& table : odlex::schema::allTables()) {
    if (generated(table))
      declare(out, table);
  }
  out << "// A new, empty table object for the table `name` (exact case): every catalog table,\n"
         "// the tables the database keeps about itself included; null for any other name.\n"
         "std::unique_ptr<MSITable> createTableObject(const TalString& name);\n";
}

void writeSource(std::ostream& out) {
  out << "// Generated at build time by tools/codegen/GenerateRows.cpp; do not edit.\n\n"
         "#include \"odlex/msi/MSIRows.h\"\n\n#include <map>\n#include <string_view>\n\n"
         "#include \"msi/rows/GeneratedTables.h\"\n#include \"msi/schema/Schema.h\"\n\n"
         "namespace {\n\nconst odlex::schema::TableSchema& schemaOf(std::u16string_view name) {\n"
         "  return *odlex::schema::findTable(name);\n}\n\n}  // namespace\n\n";
  for (const TableSchema& table : odlex::schema::allTables()) {
    if (generated(table))
      define(out, table);
  }
  out << "std::unique_ptr<MSITable> odlex::rows::createGeneratedTable(const TalString& name) {\n"
         "  using Maker = std::unique_ptr<MSITable> (*)();\n"
         "  static const std::map<std::u16string_view, Maker> makers = {\n";
  for (const TableSchema& table : odlex::schema::allTables()) {
    if (generated(table))
      out << "      {u\"" << ascii(table.name)
          << "\", [] { return std::unique_ptr<MSITable>(new MSIT" << ascii(table.name)
          << "); }},\n";
  }
  out << "  };\n  auto found = makers.find(name.u16());\n"
         "  return found == makers.end() ? nullptr : found->second();\n}\n";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: GenerateRows <header> <source> <extensions folder>\n";
    return 2;
  }
  extensionsFolder = argv[3];
  std::ofstream header(argv[1]);
  std::ofstream source(argv[2]);
  writeHeader(header);
  writeSource(source);
  header.close();
  source.close();
  if (!header || !source) {
    std::cerr << "GenerateRows: cannot write the output files\n";
    return 1;
  }
  return 0;
}
