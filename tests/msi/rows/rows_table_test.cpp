// Table objects without a file: key order, Add/Find/FindBy, key changes, deletion, generic
// column access and the component key; and rows the tables make themselves: generated keys, rows
// from files, free-standing entries (templates, copies) handed to a table.

#include <gtest/gtest.h>

#include <odlex/msi/MSIRows.h>

#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "common/Oracle.h"
#include "common/RowText.h"
#include "common/TempDir.h"

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

TEST(RowsMadeKeys, ComponentKeysSkipEveryHeldKeyAndFollowTheFlags) {
  MSITComponent components;
  components.Add(u"Component1");
  components.Add(u"Component2")->Delete();  // a deleted row's key is not reused either
  MSIEComponent* first =
      components.Add(u"{11111111-2222-4333-8444-555555555555}", u"INSTALLDIR", false, false);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(rowText(*first),
            "Component3\t{11111111-2222-4333-8444-555555555555}\tINSTALLDIR\t0\t\t");
  EXPECT_EQ(components.Find(u"Component3"), first) << "made rows are the table's, and persist";

  MSIEComponent* second = components.Add(u"ignored", u"INSTALLDIR", true, true);
  ASSERT_NE(second, nullptr);
  // A new GUID (its form is the Guid test's).
  EXPECT_EQ(second->GetComponentGUID().length(), 38u);
  EXPECT_EQ(rowText(*second),
            "Component4\t" + second->GetComponentGUID().ToUtf8() + "\tINSTALLDIR\t256\t\t");

  EXPECT_EQ(components.Add(u"", u"", false, false), nullptr) << "a component needs a folder";
  EXPECT_FALSE(components.GetLastError().u16().empty());
}

TEST(RowsMadeKeys, ChangeLogEntriesSortInTheOrderTheyWereMade) {
  MSITZrChangeLog log;
  for (int i = 0; i < 12; ++i)
    ASSERT_NE(log.Add(13, 1000 + i, TalString::FromUtf8("message " + std::to_string(i))), nullptr);
  unsigned long expected = 1000;
  for (RWCollectable* item : log.GetTable())
    EXPECT_EQ(static_cast<MSIEZrChangeLog*>(item)->GetMessageId(), expected++);
  MSIEZrChangeLog* entry = log.Find(u"Entry00000001");
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->GetKind(), 13);
  EXPECT_EQ(entry->GetMessage(), u"message 0");
  EXPECT_TRUE(std::regex_match(entry->GetTime().ToUtf8(),
                               std::regex("\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ")));
  EXPECT_FALSE(entry->GetAuthor().u16().empty());
  entry->SetTable(u"File");
  EXPECT_EQ(entry->GetTable(), u"File");

  EXPECT_EQ(log.Add(13, 2147483648ul, u"too large"), nullptr);
  EXPECT_EQ(log.Add(40000, 1, u"too large"), nullptr);
}

TEST(RowsMadeKeys, CertificatesAreStoredOnce) {
  MSITMsiDigitalCertificate certificates;
  MSIEMsiDigitalCertificate* first = certificates.Add(bytes("certificate A"));
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->GetDigitalCertificate(), u"Certificate1");
  EXPECT_EQ(certificates.Add(bytes("certificate A")), first);
  EXPECT_EQ(certificates.Add(bytes("certificate B"))->GetDigitalCertificate(), u"Certificate2");
  EXPECT_EQ(certificates.Add(MSIBinary()), nullptr);
}

TEST(RowsMadeKeys, BinaryRowsReadTheirFile) {
  TempDir dir;
  writeFileBytes(dir / "icon.bin", "icon bytes");
  writeFileBytes(dir / "empty.bin", "");
  const auto path = [&](const char* name) { return TalString::FromUtf8((dir / name).string()); };

  MSITBinary binary;
  MSIEBinary* row = binary.Add(u"Icon", path("icon.bin"), false);
  ASSERT_NE(row, nullptr);
  EXPECT_EQ(row->GetData(), bytes("icon bytes"));
  EXPECT_EQ(binary.Add(u"Icon", path("icon.bin"), false), nullptr) << "held, and no replace";

  writeFileBytes(dir / "icon.bin", "new icon");
  EXPECT_EQ(binary.Add(u"Icon", path("icon.bin"), true), row);
  EXPECT_EQ(row->GetData(), bytes("new icon"));

  EXPECT_EQ(binary.Add(u"Missing", path("missing.bin"), false), nullptr);
  EXPECT_EQ(binary.Add(u"Empty", path("empty.bin"), false), nullptr);
  EXPECT_EQ(binary.Find(u"Missing"), nullptr);
  EXPECT_EQ(binary.Find(u"Empty"), nullptr);

  MSIEBinary* named = binary.Add(path("icon.bin"), path("icon.bin"), false);
  ASSERT_NE(named, nullptr);
  EXPECT_EQ(named->GetName(), u"icon.bin") << "a path names the row by its file name";
}

TEST(RowsFreeEntries, CopiesAreDetachedAndCarryTheirData) {
  MSITBinary binary;
  MSIEBinary* held = binary.Add(u"Logo");
  held->SetData(bytes("logo"));
  MSIEBinary copy(*held);
  copy.SetName(u"Other");  // a detached copy's key change touches no table
  EXPECT_EQ(binary.Find(u"Logo"), held);
  EXPECT_EQ(binary.Find(u"Other"), nullptr);
  EXPECT_EQ(copy.GetData(), bytes("logo"));

  const MSIEComponent templateRow(u"Main", u"{GUID}", u"INSTALLDIR");
  MSITComponent components;
  MSIEComponent* added = static_cast<MSIEComponent*>(components.AddCopy(templateRow));
  ASSERT_NE(added, nullptr);
  EXPECT_EQ(added->GetDirectoryID(), u"INSTALLDIR");
  EXPECT_EQ(components.Find(u"Main"), added);
}

}  // namespace
}  // namespace odlex::test
