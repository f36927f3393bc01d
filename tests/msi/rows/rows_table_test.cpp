// Table objects without a file: key order, Add/Find/FindBy, key changes, deletion, generic
// column access and the component key.

#include <gtest/gtest.h>

#include <odlex/msi/MSIRows.h>

#include <string>
#include <vector>

#include "common/RowText.h"

namespace odlex::test {
namespace {

std::vector<std::string> keysOf(const MSITable& table, const char16_t* column) {
  std::vector<std::string> keys;
  for (RWCollectable* item : table.GetTable()) {
    MSIRecordColumn value;
    static_cast<MSIEntry*>(item)->GetColumn(column, value);
    keys.push_back(value.GetString().ToUtf8());
  }
  return keys;
}

TEST(RowsTable, RowsOrderByKeyIntegersByValueTextByCodeUnits) {
  MSITMedia media;
  for (short disk : {10, 2, -1, 300})
    ASSERT_NE(media.Add(disk), nullptr);
  EXPECT_EQ(keysOf(media, u"DiskId"), (std::vector<std::string>{"-1", "2", "10", "300"}));

  MSITProperty property;
  for (const char16_t* name : {u"b", u"B", u"a", u"_", u"\u00e9"})
    ASSERT_NE(property.Add(name), nullptr);
  EXPECT_EQ(keysOf(property, u"Property"),
            (std::vector<std::string>{"B", "_", "a", "b", "\xc3\xa9"}));

  // Two key columns: the first decides, then the second.
  MSITFeatureComponents links;
  links.Add(u"F2", u"A");
  links.Add(u"F1", u"Z");
  links.Add(u"F1", u"B");
  EXPECT_EQ(keysOf(links, u"Component_"), (std::vector<std::string>{"B", "Z", "A"}));

  // A null integer key sorts first.
  MSIEMedia nullKey;
  EXPECT_LT(nullKey.compareTo(media.Find(-1)), 0);
  const MSIEMedia probe(2);
  EXPECT_TRUE(media.Find(2)->isEqual(&probe));
  EXPECT_FALSE(media.Find(10)->isEqual(&probe));
  EXPECT_EQ(media.Find(2)->hash(), probe.hash());
}

TEST(RowsTable, AddRefusesALiveKeyAndFindSkipsDeletedRows) {
  MSITComponent components;
  MSIEComponent* main = components.Add(u"Main");
  ASSERT_NE(main, nullptr);
  EXPECT_TRUE(main->IsModified());
  EXPECT_TRUE(components.IsDirty());
  EXPECT_EQ(components.Add(u"Main"), nullptr);
  EXPECT_EQ(components.Add(u"main")->GetComponentID(), u"main") << "keys are case-sensitive";
  EXPECT_EQ(components.Find(u"Main"), main);
  EXPECT_EQ(components.Find(u"Other"), nullptr);

  main->Delete();
  EXPECT_TRUE(main->IsDeleted());
  EXPECT_EQ(components.Find(u"Main"), nullptr);
  MSIEComponent* again = components.Add(u"Main");
  ASSERT_NE(again, nullptr);
  EXPECT_NE(again->IsDeleted(), true);
  EXPECT_EQ(components.Find(u"Main"), again);
  EXPECT_EQ(components.GetTable().entries(), 2u);
}

TEST(RowsTable, FindByFollowsEditsAndKeyChangesRefileTheRow) {
  MSITFile files;
  MSIEFile* a = files.Add(u"a");
  MSIEFile* b = files.Add(u"b");
  a->SetComponent(u"Comp1");
  b->SetComponent(u"Comp2");
  a->SetSequence(5);
  EXPECT_EQ(files.FindByComponent(u"Comp2"), b);
  EXPECT_EQ(files.FindBySequence(5), a);

  // The index sees later changes.
  b->SetComponent(u"Comp1");
  a->SetComponent(u"Comp3");
  EXPECT_EQ(files.FindByComponent(u"Comp1"), b);
  EXPECT_EQ(files.FindByComponent(u"Comp2"), nullptr);
  EXPECT_EQ(files.FindByComponent(u"Comp3"), a);

  // Equal values: the first row in key order.
  a->SetComponent(u"Comp1");
  EXPECT_EQ(files.FindByComponent(u"Comp1"), a);
  // Deleted rows are not found.
  a->Delete();
  EXPECT_EQ(files.FindByComponent(u"Comp1"), b);
  // Every live row with the value; marks keep the index, so a revived row is found again.
  const MSIRecordColumn comp1 = MSIRecordColumn::String(u"Comp1");
  EXPECT_EQ(files.FindEntriesBy(1, comp1), std::vector<MSIEntry*>{b});
  a->SetDeleted(false);
  EXPECT_EQ(files.FindEntriesBy(1, comp1), (std::vector<MSIEntry*>{a, b}));
  a->Delete();

  // Changing the key moves the row; a key another live row has is refused.
  b->SetFileID(u"c");
  EXPECT_EQ(files.Find(u"b"), nullptr);
  EXPECT_EQ(files.Find(u"c"), b);
  MSIEFile* d = files.Add(u"d");
  d->SetFileID(u"c");
  EXPECT_EQ(d->GetFileID(), u"d");
  EXPECT_EQ(files.Find(u"d"), d);
  // A deleted row's key can be taken.
  d->SetFileID(u"a");
  EXPECT_EQ(files.Find(u"a"), d);
}

TEST(RowsTable, TypedAndGenericAccessAgree) {
  MSIEFile file(u"f");
  EXPECT_TRUE(file.GetAttributes().IsNull());
  file.SetAttributes(NullableSignedShort(512));
  file.SetFileSize(123456789);
  file.SetSequence(-3);
  file.SetVersion(u"1.0");

  EXPECT_EQ(rowText(file), "f\t\t\t123456789\t1.0\t\t512\t-3");
  MSIRecordColumn value;
  EXPECT_FALSE(file.GetColumn(u"NoSuchColumn", value));
  EXPECT_FALSE(file.SetColumn(u"NoSuchColumn", MSIRecordColumn::Integer(1)));

  EXPECT_TRUE(file.SetColumn(u"Sequence", MSIRecordColumn::String(u"42")));
  EXPECT_EQ(file.GetSequence(), 42);
  EXPECT_FALSE(file.SetColumn(u"Sequence", MSIRecordColumn::String(u"forty")));
  EXPECT_EQ(file.GetSequence(), 42);
  EXPECT_TRUE(file.SetColumn(u"Version", MSIRecordColumn()));
  EXPECT_EQ(file.GetVersion(), u"");
  EXPECT_TRUE(file.SetColumn(u"Attributes", MSIRecordColumn()));
  EXPECT_TRUE(file.GetAttributes().IsNull());

  MSIEBinary binary(u"Icon");
  const unsigned char data[] = {0, 1, 2, 255};
  EXPECT_TRUE(binary.SetBinary(u"Data", MSIBinary(data, 4)));
  EXPECT_EQ(binary.GetData(), MSIBinary(data, 4));
  ASSERT_TRUE(binary.GetColumn(u"Data", value));
  EXPECT_EQ(value.GetStreamName(), u"Binary.Icon");
  EXPECT_FALSE(binary.SetColumn(u"Data", MSIRecordColumn::String(u"text")));
  EXPECT_FALSE(file.SetBinary(u"Version", MSIBinary(data, 4)));

  // Copying the fields of a row copies its binary data; a row of another table copies nothing.
  MSIEBinary other(u"Other");
  EXPECT_TRUE(other.CopyFields(binary));
  EXPECT_EQ(other.GetData(), MSIBinary(data, 4));
  EXPECT_FALSE(other.CopyFields(binary)) << "nothing left to change";
  EXPECT_FALSE(other.CopyFields(file));
  EXPECT_TRUE(other.SetColumn(u"Data", MSIRecordColumn()));
  EXPECT_EQ(other.GetData().GetSize(), 0u);
}

TEST(RowsTable, IntegersAColumnCannotHoldAreRefused) {
  MSITFeature features;
  MSIEFeature* feature = features.Add(u"F");
  feature->SetDisplay(NullableSignedShort(7));
  feature->SetLevel(1);
  struct Case {
    const char16_t* column;
    int value;
  };
  // -32768 is how a 16-bit cell is written as null, so it is no number such a column holds.
  for (const Case& c : {Case{u"Display", 40000}, Case{u"Display", -32768}, Case{u"Level", 32768},
                        Case{u"Level", -40000}}) {
    SCOPED_TRACE(c.value);
    EXPECT_FALSE(feature->SetColumn(c.column, MSIRecordColumn::Integer(c.value)));
    EXPECT_NE(features.GetLastError().ToUtf8().find("out of range for a 16-bit integer column"),
              std::string::npos)
        << features.GetLastError().ToUtf8();
  }
  feature->SetDisplay(NullableSignedShort(-32768));
  EXPECT_EQ(feature->GetDisplay().Get(), 7);
  EXPECT_EQ(feature->GetLevel(), 1);
  EXPECT_TRUE(feature->SetColumn(u"Level", MSIRecordColumn::Integer(-32767)));
  EXPECT_EQ(feature->GetLevel(), -32767);
}

TEST(RowsTable, ComponentKeyComesFromTheColumnReferringToComponent) {
  MSIEFeatureComponents link(u"Feature", u"Comp");
  EXPECT_EQ(link.GetComponentKey(), u"Comp");
  MSIEComponent component(u"Self");
  EXPECT_EQ(component.GetComponentKey(), u"Self");
  MSIEProperty property(u"P");
  EXPECT_EQ(property.GetComponentKey(), u"");
}

TEST(RowsTable, FactoryKnowsCatalogTablesOnly) {
  EXPECT_NE(createTableObject(u"Registry"), nullptr);
  EXPECT_EQ(createTableObject(u"Registry")->GetName(), u"Registry");
  EXPECT_NE(createTableObject(u"_Validation"), nullptr);
  EXPECT_NE(createTableObject(u"_Streams"), nullptr);
  EXPECT_EQ(createTableObject(u"registry"), nullptr);
  EXPECT_EQ(createTableObject(u"NoSuchTable"), nullptr);
}

}  // namespace
}  // namespace odlex::test
