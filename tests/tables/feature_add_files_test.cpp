// Adding host files to a feature of the wixl package (folder INSTALLDIR holds app.exe and
// readme.txt; DataDir holds config.ini; five files on disk 1).

#include <map>

#include "common/DatabaseTest.h"
#include "common/PeModule.h"
#include "common/RowText.h"
#include "common/VersionResource.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

using FeatureAddFilesTest = DatabaseTest;

// The tables `package` has, and the rows of those the files are added to.
std::map<std::string, std::vector<std::string>> snapshot(const fs::path& package) {
  const ProcessResult tables = msiinfoTables(package);
  std::map<std::string, std::vector<std::string>> rows = {{"", splitLines(tables.out)}};
  for (const char* table : {"Component", "File", "FeatureComponents", "Media", "MsiFileHash"}) {
    if (tables.out.find(std::string(table) + "\n") != std::string::npos)
      rows[table] = msiinfoRows(package, table);
  }
  return rows;
}

std::vector<TalString> hostPaths(const std::vector<fs::path>& files) {
  std::vector<TalString> paths;
  for (const fs::path& file : files)
    paths.push_back(TalString::FromUtf8(file.string()));
  return paths;
}

// Keys, GUIDs and component keys are made; the rest is what the rows must hold. Only
// INSTALLDIR's names are taken for the new files' names (config.ini is DataDir's); a key is
// taken wherever it is (Readme is readme.txt's key).
TEST_F(FeatureAddFilesTest, EachFileGetsAComponentAFileRowAHashAndALink) {
  const struct {
    std::string name, bytes, key, fileName, version, language;
  } files[] = {
      {"A Long Name.txt", "added text", "A_Long_Name.txt", "ALONGN~1.TXT|A Long Name.txt", "", ""},
      {"lib.dll", peModuleWith(16, versionResource(0x00030000, 7, {0x04B00407})), "lib.dll",
       "lib.dll", "3.0.0.7", "1031"},
      {"config.ini", "another folder's name", "config.ini", "config.ini", "", ""},
      {"Readme", "another file's key", "Readme_2", "Readme", "", ""},
  };
  std::vector<fs::path> hosts;
  for (const auto& added : files) {
    hosts.push_back(file("new") / added.name);
    writeFileBytes(hosts.back(), added.bytes);
  }
  ODLEXDatabase& db = openWixl();
  const std::vector<TalString> keys =
      db.GetFeature().AddFiles(u"Documentation", u"INSTALLDIR", hostPaths(hosts));
  ASSERT_TRUE(db.SaveChanges());

  ASSERT_EQ(keys.size(), std::size(files));
  std::set<std::u16string> components;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    SCOPED_TRACE(files[i].name);
    EXPECT_EQ(keys[i].ToUtf8(), files[i].key);
    const MSIEFile& row = db.GetFile().GetFileWithID(keys[i]);
    const TalString component = row.GetComponent();
    components.insert(component.u16());
    EXPECT_EQ(rowText(row), files[i].key + "\t" + component.ToUtf8() + "\t" + files[i].fileName +
                                "\t" + std::to_string(files[i].bytes.size()) + "\t" +
                                files[i].version + "\t" + files[i].language + "\t8192\t" +
                                std::to_string(6 + i));
    const MSIEComponent& owner = db.GetComponent().GetComponentWithID(component);
    EXPECT_EQ(owner.GetComponentGUID().length(), 38u) << "a GUID";
    EXPECT_EQ(rowText(owner), component.ToUtf8() + "\t" + owner.GetComponentGUID().ToUtf8() +
                                  "\tINSTALLDIR\t0\t\t" + files[i].key);
    EXPECT_NE(db.GetFeatureComponents().Lookup(TalString(u"Documentation"), component), nullptr);
    EXPECT_EQ(db.GetMsiFileHash().Lookup(keys[i]) != nullptr, files[i].version.empty());
  }
  EXPECT_EQ(components.size(), std::size(files));
  // MD5 of "added text" (md5sum: 9eababe8701fda9d8ac0304d4af095d1), four little-endian parts.
  EXPECT_EQ(rowText(*db.GetMsiFileHash().Lookup(TalString(u"A_Long_Name.txt"))),
            "A_Long_Name.txt\t0\t-391402594\t-1646649488\t1295040650\t-778702774");
  EXPECT_EQ(msiinfoRows(file("wixl.msi"), "Media"),
            (std::vector<std::string>{"1\t5\t\t#product.cab\t\t", "2\t9\t\t\t\t"}));
}

// Every refusal names its reason and leaves every table as it was.
TEST_F(FeatureAddFilesTest, RefusalsChangeNothing) {
  writeFileBytes(file("fresh.txt"), "fresh");
  writeFileBytes(file("one/Twin.txt"), "one");
  writeFileBytes(file("two/TWIN.TXT"), "two");
  writeFileBytes(file("README.TXT"), "the folder has readme.txt");
  writeFileBytes(file("a|b.txt"), "a bar splits short from long names");
  writeFileBytes(file("huge.bin"), "");
  fs::resize_file(file("huge.bin"), std::uintmax_t{1} << 31);  // sparse: one byte too many
  const auto lastSequence = [](short last) {
    return [last](ODLEXDatabase& db) {
      MSIEMedia& disk = db.GetMedia().GetMediaWithDiskID(1);
      MSIEMedia values(disk);
      values.SetLastSequence(last);
      db.GetMedia().Change(disk, values);
    };
  };
  const struct {
    const char16_t* feature;
    const char16_t* directory;
    std::vector<fs::path> files;
    std::function<void(ODLEXDatabase&)> prepare;
    int code;
    unsigned status;
  } cases[] = {
      {u"NoSuchFeature", u"INSTALLDIR", {file("fresh.txt")}, nullptr, 22, 87},
      {u"Documentation", u"NoSuchDir", {file("fresh.txt")}, nullptr, 18, 87},
      {u"Documentation", u"INSTALLDIR", {file("fresh.txt"), file("missing.txt")}, nullptr, 9, 2},
      {u"Documentation",
       u"INSTALLDIR",
       {file("one/Twin.txt"), file("two/TWIN.TXT")},
       nullptr,
       9,
       87},
      {u"Documentation", u"INSTALLDIR", {file("README.TXT")}, nullptr, 9, 87},
      {u"Documentation", u"INSTALLDIR", {file("a|b.txt")}, nullptr, 9, 87},
      {u"Documentation", u"INSTALLDIR", {file("huge.bin")}, nullptr, 9, 1627},
      {u"Documentation",
       u"INSTALLDIR",
       {file("fresh.txt"), file("one/Twin.txt")},
       lastSequence(32766),
       9,
       1627},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(testing::Message() << "case #" << i);
    ODLEXDatabase& db = openWixl();
    if (cases[i].prepare)
      cases[i].prepare(db);
    ASSERT_TRUE(db.SaveChanges());
    const auto before = snapshot(file("wixl.msi"));
    try {
      db.GetFeature().AddFiles(cases[i].feature, cases[i].directory, hostPaths(cases[i].files));
      ADD_FAILURE() << "nothing was thrown";
    } catch (const ODLEXDatabaseErrorWithErrorCode& error) {
      EXPECT_EQ(static_cast<ODLEXDatabaseError::eCodeMeaning>(error), cases[i].code);
      EXPECT_EQ(static_cast<unsigned>(error), cases[i].status);
      EXPECT_EQ(db.GetTalError().GetCode(), cases[i].status);
    }
    ASSERT_TRUE(db.SaveChanges());
    EXPECT_EQ(snapshot(file("wixl.msi")), before);
    ODLEXDatabase::KillDatabaseList();
  }
}

}  // namespace
}  // namespace odlex::test
