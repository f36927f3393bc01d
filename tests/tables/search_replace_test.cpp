// Checkers, and search and replace in one table and across a package: only text columns that
// are neither keys nor references are ever matched or changed.

#include <odlex/tables/ODLEXCheckers.h>

#include "common/DatabaseTest.h"
#include "common/RowText.h"
#include "msi/schema/Schema.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

class SearchReplaceTest : public DatabaseTest {};

MSISchemaColumn columnOf(const char16_t* table, const char16_t* column) {
  const auto* schema = odlex::schema::findTable(table);
  return MSISchemaColumn(TalString(table), TalString(column), schema->findColumn(column)->type);
}

TEST(Checkers, MatchOnlyTextColumnsThatAreNoKeyOrReference) {
  const TalString m = u"m";
  const TalString value = u"Value";
  const RWWRegexp anything(u"x*");
  const RWWRegexp unclosed(u"(");
  const ODLEXStringChecker exact(value, 0, RWWString::exact);
  const ODLEXStringChecker folded(value, 0, RWWString::ignoreCase);
  const ODLEXStringChecker before(m, 1, RWWString::exact);
  const ODLEXStringChecker after(m, 7, RWWString::exact);
  const ODLEXRegExpChecker empty(anything);
  const ODLEXRegExpChecker bad(unclosed);
  const struct {
    const ODLEXBaseChecker& checker;
    const char16_t* table;
    const char16_t* column;
    const char16_t* value;
    bool matches;
  } cases[] = {
      {exact, u"Environment", u"Value", u"value", false},
      {folded, u"Environment", u"Value", u"value", true},
      {ODLEXStringChecker(folded), u"Environment", u"Value", u"VALUE", true},
      {folded, u"Environment", u"Value", u"Values", false},  // whole values only
      {before, u"Environment", u"Value", u"a", true},
      {before, u"Environment", u"Value", u"z", false},
      {after, u"Environment", u"Value", u"z", true},
      {after, u"Environment", u"Value", u"a", false},
      {exact, u"Environment", u"Environment", u"Value", false},  // key
      {exact, u"Environment", u"Component_", u"Value", false},   // reference
      {empty, u"Environment", u"Name", u"", true},
      {ODLEXRegExpChecker(empty), u"Environment", u"Name", u"abc", true},
      {empty, u"Environment", u"Environment", u"", false},
      {empty, u"Component", u"Attributes", u"4", false},  // not text
      {bad, u"Environment", u"Name", u"(", false},
      {ODLEXBaseChecker(), u"Environment", u"Name", u"", false},
  };
  TalString text = u"aaa";
  EXPECT_EQ(SubStringReplace(text, u"", u"b"), 0u) << "an empty text is found everywhere";
  EXPECT_EQ(ODLEXTObject().Search(exact), 0u) << "a table object of no table";
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(testing::Message() << "case #" << i);
    EXPECT_EQ(cases[i].checker(columnOf(cases[i].table, cases[i].column),
                               MSIRecordColumn::String(TalString(cases[i].value))),
              cases[i].matches);
  }
}

TEST_F(SearchReplaceTest, ReplacesInTextColumnsOnly) {
  const struct {
    const char16_t* find;
    const char16_t* replace;
    unsigned long flags;
    unsigned count;
    const char16_t* name;
    const char16_t* value;
  } cases[] = {
      {u"Contoso", u"Fabrikam", 0, 1, u"CONTOSO_HOME", u"C:\\Fabrikam\\contoso"},
      {u"contoso", u"x", eSearchIgnoreCase, 3, u"x_HOME", u"C:\\x\\x"},
      {u"o", u"oo", 0, 6, u"CONTOSO_HOME", u"C:\\Coontoosoo\\coontoosoo"},
      {u"C:\\Contoso\\contoso", u"D:", eSearchWholeValue, 1, u"CONTOSO_HOME", u"D:"},
      {u"contoso", u"y", eSearchWholeValue, 0, u"CONTOSO_HOME", u"C:\\Contoso\\contoso"},
      // Name cannot be empty: the replacement is not made.
      {u"CONTOSO_HOME", u"", eSearchWholeValue, 0, u"CONTOSO_HOME", u"C:\\Contoso\\contoso"},
      {u"", u"z", 0, 0, u"CONTOSO_HOME", u"C:\\Contoso\\contoso"},
  };
  ODLEXDatabase& db = openPackage();
  ODLEXTEnvironment& table = db.GetEnvironment();
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(testing::Message() << "case #" << i);
    MSIEEnvironment values(u"Contoso");
    values.SetName(u"CONTOSO_HOME");
    values.SetValue(u"C:\\Contoso\\contoso");
    values.SetComponent(u"Contoso");
    MSIEEnvironment& row = addRow(table, values);
    ASSERT_TRUE(db.SaveChanges());
    EXPECT_EQ(table.SearchAndReplace(cases[i].find, cases[i].replace, cases[i].flags),
              cases[i].count);
    EXPECT_EQ(rowText(row), "Contoso\t" + TalString(cases[i].name).ToUtf8() + "\t" +
                                TalString(cases[i].value).ToUtf8() + "\tContoso");
    EXPECT_EQ(row.IsModified(), cases[i].count > 0);
    table.Delete(row);
  }
}

TEST_F(SearchReplaceTest, PackageWideSearchAndReplaceKeepTheProductsIdentity) {
  ODLEXDatabase& db = openPackage();
  const TalString productCode = db.GetProperty().GetValue(u"ProductCode");
  const RWWRegexp oracle(u"Oracle");
  std::vector<ODLEXSearchMatch> matches;
  const auto found = db.Search(ODLEXRegExpChecker(oracle), &matches);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].table, u"Property");
  ASSERT_EQ(matches.size(), 1u);
  EXPECT_EQ(matches[0].column, u"Value");
  EXPECT_EQ(db.GetProperty().Search(ODLEXRegExpChecker(oracle)), 1u);

  const struct {
    TalString find;
    std::size_t tables;
  } cases[] = {{u"Oracle", 1}, {productCode.subString(1, 8), 0}};
  for (const auto& replace : cases) {
    SCOPED_TRACE(replace.find.ToUtf8());
    EXPECT_EQ(db.SearchAndReplace(replace.find, u"New", 0).size(), replace.tables);
  }
  EXPECT_EQ(db.GetProperty().GetValue(u"ProductCode"), productCode);
}

}  // namespace
}  // namespace odlex::test
