// Rows the tables make themselves: generated keys, rows from files, free-standing entries
// (sequence entries, templates, copies) handed to a table.

#include <gtest/gtest.h>

#include <odlex/msi/MSIRows.h>

#include <filesystem>
#include <regex>
#include <string>

#include "common/Oracle.h"
#include "common/RowText.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

MSIBinary bytes(const std::string& data) {
  return MSIBinary(reinterpret_cast<const unsigned char*>(data.data()),
                   static_cast<unsigned long>(data.size()));
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

TEST(RowsMadeKeys, CustomActionsByKeyOrWithAMadeKey) {
  MSITCustomAction actions;
  MSIECustomAction* named =
      actions.Add(u"SetPath", static_cast<msidbCustomActionType>(msidbCustomActionTypeProperty |
                                                                 msidbCustomActionTypeTextData));
  ASSERT_NE(named, nullptr);
  EXPECT_EQ(named->GetType(), 51);
  EXPECT_EQ(actions.Add(u"SetPath", msidbCustomActionTypeDll), nullptr);
  EXPECT_EQ(actions.Add(msidbCustomActionTypeExe)->GetActionID(), u"CustomAction1");
  EXPECT_EQ(actions.Add(msidbCustomActionTypeExe)->GetActionID(), u"CustomAction2");

  const MSIECustomAction value(u"Free", msidbCustomActionTypeJScript);
  EXPECT_EQ(value.GetType(), 5);
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

TEST(RowsFreeEntries, SequenceEntriesAreCopiedIntoAnySequenceTable) {
  MSISequenceEntry entry(u"CostInitialize");
  entry.SetSequence(NullableSignedShort(800));
  entry.SetCondition(u"NOT Installed");
  MSITInstallUISequence ui;
  const MSIEntry* row = ui.AddCopy(entry);
  ASSERT_NE(row, nullptr);
  EXPECT_EQ(rowText(*row), "CostInitialize\tNOT Installed\t800");
  EXPECT_EQ(ui.AddCopy(entry), nullptr) << "the key is held";

  MSIModuleSequenceEntry relative(u"MyAction");
  relative.SetBaseAction(u"InstallFiles");
  relative.SetAfter(NullableSignedShort(1));
  MSITModuleInstallExecuteSequence module;
  const MSIEntry* placed = module.AddCopy(relative);
  ASSERT_NE(placed, nullptr);
  EXPECT_EQ(rowText(*placed), "MyAction\t\tInstallFiles\t1\t");

  // An installation-sequence entry lacks BaseAction and After: they stay null.
  const MSIEntry* copied = module.AddCopy(entry);
  ASSERT_NE(copied, nullptr);
  EXPECT_EQ(rowText(*copied), "CostInitialize\t800\t\t\tNOT Installed");
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
