// The schema catalog on its own: it holds every table the table objects stand for, lookups find
// exactly the named table, every table is well formed, and references between tables point at
// columns that exist.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "msi/engine/Text.h"
#include "msi/schema/Schema.h"

namespace odlex::schema {
namespace {

using engine::toUtf8;

// The installer tables of the 116 table-object classes.
// clang-format off
constexpr std::u16string_view kTableObjectTables[] = {
    u"CustomAction", u"Binary", u"ModuleAdminExecuteSequence", u"ModuleAdminUISequence",
    u"ModuleAdvtExecuteSequence", u"ModuleAdvtUISequence", u"ModuleInstallExecuteSequence",
    u"ModuleInstallUISequence", u"AdminExecuteSequence", u"AdvtExecuteSequence",
    u"InstallExecuteSequence", u"_SummaryInformation", u"Class", u"Component", u"Complus",
    u"CreateFolder", u"Directory", u"Environment", u"Extension", u"FamilyFileRanges", u"Feature",
    u"FeatureComponents", u"File", u"FileSFPCatalog", u"Font", u"Icon", u"ImageFamilies",
    u"IniFile", u"IsolatedComponent", u"LockPermissions", u"Media", u"MIME", u"MsiAssembly",
    u"MsiAssemblyName", u"MsiDigitalCertificate", u"MsiDigitalSignature", u"MsiFileHash", u"ProgId",
    u"Properties", u"Property", u"Registry", u"RemoveFile", u"RemoveIniFile", u"RemoveRegistry",
    u"SelfReg", u"ServiceControl", u"ServiceInstall", u"Shortcut", u"TypeLib", u"TargetImages",
    u"Upgrade", u"UpgradedImages", u"Verb", u"_Streams", u"ODBCAttribute", u"ODBCDataSource",
    u"ODBCDriver", u"ODBCSourceAttribute", u"ODBCTranslator", u"AppSearch", u"Signature",
    u"SFPCatalog", u"RegLocator", u"IniLocator", u"CompLocator", u"DrLocator", u"CCPSearch",
    u"MoveFile", u"DuplicateFile", u"ActionText", u"AppId", u"BBControl", u"Billboard",
    u"BindImage", u"CheckBox", u"ComboBox", u"Condition", u"Control", u"ControlCondition",
    u"ControlEvent", u"Dialog", u"Error", u"EventMapping", u"ExternalFiles", u"LaunchCondition",
    u"ListBox", u"ListView", u"Patch", u"PatchPackage", u"PublishComponent", u"RadioButton",
    u"ReserveCost", u"TargetFiles_OptionalData", u"TextStyle", u"_Validation", u"UIText",
    u"UpgradedFilesToIgnore", u"UpgradedFiles_OptionalData", u"AdminUISequence", u"AdvtUISequence",
    u"InstallUISequence", u"_Columns", u"_ZrActionInformation", u"_ZrPropertyInformation",
    u"ModuleComponents", u"ModuleDependency", u"ModuleExclusion", u"ModuleIgnoreTable",
    u"ModuleSignature", u"ZrChangeLog", u"ZrKeyword", u"ZrTextFile", u"ZrRemoveTextFile",
    u"_Tables", u"_Storages", u"_TransformView",
};
// clang-format on

std::vector<std::u16string_view> splitList(std::u16string_view list) {
  std::vector<std::u16string_view> parts;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(u';'), list.size());
    parts.push_back(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return parts;
}

bool isIdentifier(std::u16string_view text) {
  if (text.empty() || (text[0] >= u'0' && text[0] <= u'9'))
    return false;
  return std::all_of(text.begin(), text.end(), [](char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
           c == u'_';
  });
}

TEST(Catalog, HoldsTheTableOfEveryTableObject) {
  ASSERT_EQ(std::size(kTableObjectTables), 116u);
  for (std::u16string_view name : kTableObjectTables) {
    const TableSchema* table = findTable(name);
    ASSERT_NE(table, nullptr) << toUtf8(name) << " is missing";
    EXPECT_EQ(table->name, name);
  }
}

TEST(Catalog, LookupIsExactAndFindsEveryEntry) {
  for (const TableSchema& table : allTables())
    EXPECT_EQ(findTable(table.name), &table);
  EXPECT_EQ(findTable(u"component"), nullptr);
  EXPECT_EQ(findTable(u"Component "), nullptr);
  EXPECT_EQ(findTable(u""), nullptr);
  EXPECT_EQ(findTable(u"NoSuchTable"), nullptr);
  const TableSchema& component = *findTable(u"Component");
  EXPECT_EQ(component.findColumn(u"KeyPath"), &component.columns[5]);
  EXPECT_EQ(component.findColumn(u"keypath"), nullptr);
}

// What the database and _Validation can hold: 1 to 32 columns with the keys first, names that
// fit _Validation's 32-character Table and Column cells, texts that fit its 255-character cells,
// and accessors that make distinct C++ names.
TEST(Catalog, EveryTableIsWellFormed) {
  for (const TableSchema& table : allTables()) {
    SCOPED_TRACE(toUtf8(table.name));
    EXPECT_LE(table.name.size(), 32u);
    ASSERT_FALSE(table.columns.empty());
    EXPECT_LE(table.columns.size(), 32u);
    EXPECT_TRUE(table.columns.front().key());
    std::set<std::u16string_view> names;
    std::set<std::u16string_view> accessors;
    bool keysEnded = false;
    for (const ColumnSchema& column : table.columns) {
      SCOPED_TRACE(toUtf8(column.name));
      EXPECT_TRUE(names.insert(column.name).second) << "duplicate column";
      EXPECT_TRUE(accessors.insert(column.accessor).second) << "duplicate accessor";
      EXPECT_TRUE(isIdentifier(column.accessor));
      EXPECT_FALSE(column.key() && keysEnded) << "key column after a non-key column";
      keysEnded = !column.key();
      EXPECT_LE(column.name.size(), 32u);
      EXPECT_FALSE(column.description.empty());
      EXPECT_LE(column.description.size(), 255u);
      EXPECT_LE(column.set.size(), 255u);
      EXPECT_LE(column.keyTable.size(), 255u);
      EXPECT_LE(column.category.size(), 32u);
      if (!column.engineColumn().isInteger()) {
        EXPECT_FALSE(column.minValue || column.maxValue) << "bounds on a non-integer column";
      }
      if (column.minValue && column.maxValue) {
        EXPECT_LE(*column.minValue, *column.maxValue);
      }
    }
  }
}

// A reference names tables of the catalog and a key column of each of them that holds the same
// kind of value (text or integer) as the referring column.
TEST(Catalog, ForeignKeysNameKeyColumnsOfCatalogTables) {
  for (const TableSchema& table : allTables()) {
    for (const ColumnSchema& column : table.columns) {
      SCOPED_TRACE(toUtf8(table.name) + "." + toUtf8(column.name));
      EXPECT_EQ(column.keyTable.empty(), column.keyColumn == 0);
      for (std::u16string_view target : splitList(column.keyTable)) {
        const TableSchema* referred = findTable(target);
        ASSERT_NE(referred, nullptr) << toUtf8(target) << " is not in the catalog";
        ASSERT_GE(column.keyColumn, 1);
        ASSERT_LE(static_cast<std::size_t>(column.keyColumn), referred->columns.size());
        const ColumnSchema& key = referred->columns[column.keyColumn - 1];
        EXPECT_TRUE(key.key()) << toUtf8(target) << "." << toUtf8(key.name) << " is not a key";
        EXPECT_EQ(key.engineColumn().isInteger(), column.engineColumn().isInteger());
      }
    }
  }
}

// The flags and schema versions that decide where a table may exist.
TEST(Catalog, FlagsAndSchemaVersionsMarkWhereATableBelongs) {
  const std::set<std::u16string_view> system = {u"_Tables",       u"_Columns",
                                                u"_Validation",   u"_Streams",
                                                u"_Storages",     u"_SummaryInformation",
                                                u"_TransformView"};
  for (const TableSchema& table : allTables()) {
    EXPECT_EQ(table.system(), system.contains(table.name)) << toUtf8(table.name);
    if (table.name.starts_with(u"Module") && table.name.ends_with(u"Sequence")) {
      EXPECT_TRUE(table.mergeModuleOnly()) << toUtf8(table.name);
    }
  }
  EXPECT_TRUE(findTable(u"_TransformView")->temporary());
  EXPECT_FALSE(findTable(u"ModuleSignature")->mergeModuleOnly());
  for (auto name : {u"ExternalFiles", u"FamilyFileRanges", u"ImageFamilies", u"Properties",
                    u"TargetFiles_OptionalData", u"TargetImages", u"UpgradedFilesToIgnore",
                    u"UpgradedFiles_OptionalData", u"UpgradedImages"}) {
    EXPECT_TRUE(findTable(name)->pcpOnly()) << toUtf8(name);
  }
  for (auto name : {u"Complus", u"IsolatedComponent", u"Upgrade"})
    EXPECT_EQ(findTable(name)->sinceSchema, 110) << toUtf8(name);
  for (auto name : {u"FileSFPCatalog", u"SFPCatalog"})
    EXPECT_EQ(findTable(name)->sinceSchema, 120) << toUtf8(name);
  for (auto name : {u"MsiAssembly", u"MsiAssemblyName", u"MsiDigitalCertificate",
                    u"MsiDigitalSignature", u"MsiFileHash"}) {
    EXPECT_EQ(findTable(name)->sinceSchema, 200) << toUtf8(name);
  }
  EXPECT_EQ(findTable(u"Component")->sinceSchema, 100);
}

// The row accessors the table objects call by name.
TEST(Catalog, AccessorsCarryTheNamesTheTableObjectsUse) {
  const std::pair<std::u16string_view, std::u16string_view> used[] = {
      {u"Component", u"ComponentID"},
      {u"Component", u"ComponentGUID"},
      {u"Component", u"DirectoryID"},
      {u"Component", u"KeyPath"},
      {u"File", u"FileID"},
      {u"Registry", u"RegistryID"},
      {u"CustomAction", u"ActionID"},
      {u"CustomAction", u"Type"},
      {u"ModuleSignature", u"ModuleID"},
      {u"ModuleSignature", u"Language"},
      {u"Binary", u"Name"},
      {u"Directory", u"Directory"},
      {u"Directory", u"DefaultDir"},
      {u"Dialog", u"Dialog"},
      {u"Control", u"Dialog"},
      {u"ControlEvent", u"Dialog"},
      {u"ActionText", u"Template"},
      {u"MsiFileHash", u"HashPart4"},
      {u"ZrKeyword", u"Value"},
      {u"ZrTextFile", u"Action"},
      {u"ZrChangeLog", u"Table"},
      {u"_ZrActionInformation", u"VerFirst"},
      {u"_ZrActionInformation", u"VerLast"},
      {u"_ZrPropertyInformation", u"VerLast"}};
  for (const auto& [tableName, accessor] : used) {
    const TableSchema& table = *findTable(tableName);
    EXPECT_TRUE(
        std::any_of(table.columns.begin(), table.columns.end(),
                    [&](const ColumnSchema& column) { return column.accessor == accessor; }))
        << toUtf8(tableName) << " has no accessor " << toUtf8(accessor);
  }
}

}  // namespace
}  // namespace odlex::schema
