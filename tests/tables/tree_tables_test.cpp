// The feature and folder trees of the wixl package. Features: Complete > Documentation, Data;
// Complete installs MainExecutable and ProgramMenuDir, Documentation ReadmeDoc and GermanStrings,
// Data DataFiles. Folders: TARGETDIR > ProgramFilesFolder > INSTALLDIR "Odlex Test" (app.exe,
// readme.txt) > DataDir "data" (config.ini) > LocaleDir "de", and ProgramMenuFolder >
// ProgramMenuDir; five files on disk 1. Walks, the links to components, unlinking, the host's
// refusal and adding host files to a feature; paths, folder properties and short names.

#include <odlex/support/TalCollectableString.h>

#include "common/PeModule.h"
#include "common/RowText.h"
#include "common/VersionResource.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

using TreeTablesTest = DatabaseTest;

// The keys of the rows of `rows`, in key order, joined by spaces.
std::string keysOf(const RWBTree& rows) {
  std::string keys;
  for (RWCollectable* item : rows) {
    MSIRecordColumn key;
    static_cast<const MSIEntry*>(item)->GetColumn(
        static_cast<const MSIEntry*>(item)->GetTableName() == TalString(u"Feature") ? u"Feature"
                                                                                    : u"Component",
        key);
    keys += (keys.empty() ? "" : " ") + key.GetString().ToUtf8();
  }
  return keys;
}

TEST_F(TreeTablesTest, WalksLinksAndUnlinking) {
  ODLEXDatabase& db = openWixl();
  ODLEXTFeature& features = db.GetFeature();
  ODLEXTComponent& components = db.GetComponent();
  MSIEFeature& complete = features.GetRoot();
  MSIEFeature& docs = features.GetFeatureWithID(u"Documentation");
  const std::vector<std::pair<std::function<RWBTree&(RWBTree&)>, std::string>> cases = {
      {[&](RWBTree& out) -> RWBTree& { return features.GetFeaturesDeep(out, complete); },
       "Data Documentation"},
      {[&](RWBTree& out) -> RWBTree& { return features.GetFeaturesShallow(out, docs); }, ""},
      {[&](RWBTree& out) -> RWBTree& { return features.GetComponentsShallow(out, complete); },
       "MainExecutable ProgramMenuDir"},
      {[&](RWBTree& out) -> RWBTree& { return features.GetComponentsDeep(out, complete); },
       "DataFiles GermanStrings MainExecutable ProgramMenuDir ReadmeDoc"},
      {[&](RWBTree& out) -> RWBTree& { return features.GetParents(out, docs, false); }, "Complete"},
      {[&](RWBTree& out) -> RWBTree& {
         components.GetFeatures(out, components.GetComponentWithID(u"ReadmeDoc"));
         return out;
       },
       "Complete Documentation"},
  };
  for (const auto& [collect, expected] : cases) {
    RWBTree out;
    EXPECT_EQ(keysOf(collect(out)), expected);
  }
  MSIEComponent& readme = components.GetComponentWithID(u"ReadmeDoc");
  components.Delete(docs, readme);
  RWBTree linked;
  components.GetFeatures(linked, readme);
  EXPECT_EQ(linked.entries(), 0u);
  EXPECT_FALSE(readme.IsDeleted());
  EXPECT_EQ(thrownCode([&] { features.GetFeatureWithID(u"NoSuchFeature"); }),
            ODLEXDatabaseError::eFeatureNotFound);

  ODLEXDatabase::SetUserPermitsFunction([] { return false; });
  RWBTree refused;
  EXPECT_EQ(thrownCode([&] { features.GetFeaturesDeep(refused, complete); }),
            ODLEXDatabaseError::eUserCancelled);
  ODLEXDatabase::SetUserPermitsFunction(nullptr);
}

// An edit of a feature's attributes never breaks the tree; IsValid names what a damaged row
// breaks.
TEST_F(TreeTablesTest, InfoEditsAndValidity) {
  ODLEXTFeature& features = openWixl().GetFeature();
  MSIEFeature& complete = features.GetRoot();
  MSIEFeature& docs = features.GetFeatureWithID(u"Documentation");
  ODLEXFeatureInfo info = features.GetFeatureInfoWithFeatureId(u"Documentation");
  EXPECT_EQ(info.parent.ToUtf8(), "Complete");
  EXPECT_FALSE(features.SetToFeatureInfo(docs, info)) << "nothing differs";
  for (const char16_t* parent : {u"Documentation", u"Complete", u"NoSuchFeature"}) {
    ODLEXFeatureInfo moved = features.GetFeatureInfo(complete);
    moved.parent = parent;
    EXPECT_FALSE(features.SetToFeatureInfo(complete, moved)) << TalString(parent).ToUtf8();
  }
  EXPECT_FALSE(complete.IsModified());
  info.parent = u"Data";
  info.title = u"Handbücher";
  ASSERT_TRUE(features.SetToFeatureInfo(docs, info));
  EXPECT_EQ(ODLEXFeatureInfo(docs), info);
  EXPECT_TRUE(docs.IsModified());
  EXPECT_EQ(thrownCode([&] { features.GetFeatureInfoWithFeatureId(u"NoSuchFeature"); }),
            ODLEXDatabaseError::eFeatureNotFound);

  MSIEFeature unknownParent(u"Loose");
  unknownParent.SetFeatureParent(u"NoSuchFeature");
  unknownParent.SetDirectory(u"NoSuchDir");
  MSIEFeature& circular = complete;
  circular.SetFeatureParent(u"Documentation");  // Documentation is below Data, below Complete
  const std::pair<const MSIEFeature*, unsigned int> codes[] = {
      {&unknownParent, 1 + 4}, {&circular, 2}, {&features.GetFeatureWithID(u"Data"), 2}};
  for (const auto& [feature, expected] : codes) {
    unsigned int code = 0;
    EXPECT_EQ(features.IsValid(*feature, code), expected == 0);
    EXPECT_EQ(code, expected) << feature->GetFeature().ToUtf8();
  }
}

namespace fs = std::filesystem;

std::vector<TalString> hostPaths(const std::vector<fs::path>& files) {
  std::vector<TalString> paths;
  for (const fs::path& file : files)
    paths.push_back(TalString::FromUtf8(file.string()));
  return paths;
}

// Keys, GUIDs and component keys are made; the rest is what the rows must hold. Only
// INSTALLDIR's names are taken for the new files' names (config.ini is DataDir's); a key is
// taken wherever it is (Readme is readme.txt's key).
TEST_F(TreeTablesTest, EachFileGetsAComponentAFileRowAHashAndALink) {
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

// Every refusal names its reason and leaves every table as it was: the save after it writes
// nothing.
TEST_F(TreeTablesTest, RefusalsChangeNothing) {
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
    const std::string before = readFileBytes(file("wixl.msi"));
    try {
      db.GetFeature().AddFiles(cases[i].feature, cases[i].directory, hostPaths(cases[i].files));
      ADD_FAILURE() << "nothing was thrown";
    } catch (const ODLEXDatabaseErrorWithErrorCode& error) {
      EXPECT_EQ(static_cast<ODLEXDatabaseError::eCodeMeaning>(error), cases[i].code);
      EXPECT_EQ(static_cast<unsigned>(error), cases[i].status);
      EXPECT_EQ(db.GetTalError().GetCode(), cases[i].status);
    }
    ASSERT_TRUE(db.SaveChanges());
    EXPECT_EQ(readFileBytes(file("wixl.msi")), before) << "nothing to write";
    ODLEXDatabase::KillDatabaseList();
  }
}

std::string utf8(const TalString& text) {
  return text.ToUtf8();
}

TEST_F(TreeTablesTest, SourcePathWithoutTheSourceRootProperty) {
  ODLEXDatabase& db = openWixl();
  ODLEXTDirectory& folders = db.GetDirectory();
  const std::pair<const char16_t*, const char*> cases[] = {
      {u"\\\\server\\share\\", "\\\\server\\share\\Odlex Test\\data"},
      {u"C:\\image\\\\", "C:\\image\\Odlex Test\\data"},
  };
  for (const auto& [source, expected] : cases) {
    db.SetSourceRoot(source);
    EXPECT_EQ(utf8(folders.GetLongSourceNoProperty(folders.GetDirectoryWithID(u"DataDir"))),
              expected);
  }
  EXPECT_EQ(thrownCode([&] { folders.GetDirectoryWithID(u"NoSuchDir"); }),
            ODLEXDatabaseError::eDirectoryNotFound);
}

TEST_F(TreeTablesTest, PropertyAtTheHeadOfAPath) {
  const std::pair<const char16_t*, const char*> cases[] = {
      {u"[ProgramFilesFolder]Vendor\\", "[ProgramFilesFolder]"},
      {u"[INSTALLDIR]", "[INSTALLDIR]"},
      {u"C:\\Program Files\\", ""},
      {u"]", "]"},
      {u"]Vendor", ""},
  };
  for (const auto& [path, property] : cases)
    EXPECT_EQ(utf8(ODLEXTDirectory::GetPropertyFromPath(path)), property) << utf8(path);
}

TEST_F(TreeTablesTest, FolderPropertiesOfferedToAnEditor) {
  ODLEXTDirectory& folders = openWixl().GetDirectory();
  RWBTree source = folders.GetDirectoryProperties(false);
  ASSERT_EQ(source.entries(), 1u);
  EXPECT_EQ(utf8(*static_cast<TalCollectableString*>(*source.begin())), "[SourceDir]");
  RWBTree target = folders.GetDirectoryProperties(true);
  // The 25 predefined ones, which include the two the package's target paths start with.
  EXPECT_EQ(target.entries(), 25u);
  target.clearAndDestroy();
  source.clearAndDestroy();
}

TEST_F(TreeTablesTest, AddedPathsWalksAndShortNames) {
  ODLEXTDirectory& folders = openWixl().GetDirectory();
  folders.Add(u"[INSTALLDIR]Application Files\\Plug In Modules\\");
  ASSERT_EQ(folders.GetTempEntries().entries(), 1u);
  auto& leaf = static_cast<MSIEDirectory&>(**folders.GetTempEntries().begin());
  EXPECT_EQ(utf8(folders.GetDefaultDirectoryID(u"[ProgramFilesFolder]odlex test\\application "
                                               u"files\\plug in modules")),
            utf8(leaf.GetDirectory()));
  RWBTree below;
  EXPECT_EQ(folders.GetDirectoriesDeep(folders.GetDirectoryWithID(u"INSTALLDIR"), below).entries(),
            5u);  // INSTALLDIR, DataDir, LocaleDir and the two new folders
  RWBTree all;
  EXPECT_EQ(folders.GetDirectoriesDeep(all).entries(), 9u);

  folders.SetShortPath(leaf, u"[ProgramFilesFolder]ODLEX\\APPFILES\\PLUGINS\\", true);
  EXPECT_EQ(utf8(folders.GetShortTarget(leaf)), "[ProgramFilesFolder]ODLEX\\APPFILES\\PLUGINS\\");
  folders.SetShortPath(leaf, u"MODULES", false);
  EXPECT_EQ(utf8(folders.GetShortTarget(leaf)), "[ProgramFilesFolder]ODLEX\\APPFILES\\MODULES\\");
  EXPECT_EQ(utf8(folders.GetLongTarget(leaf)),
            "[ProgramFilesFolder]Odlex Test\\Application Files\\Plug In Modules\\");

  EXPECT_FALSE(folders.Change(leaf, leaf));
  EXPECT_EQ(folders.GetTempEntries().entries(), 1u);
  EXPECT_TRUE(folders.Change(leaf, folders.GetDirectoryWithID(u"DataDir")));
  EXPECT_EQ(folders.GetTempEntries().entries(), 0u);
}

// The idt package (INSTALLDIR "IDTPROD|Idt Product" > BinDir "bin", DocDir
// "DOKUME~1|Dokumentation") against a copy of itself as a module, changed so that one key and
// one path conflict, beside changes that must not.
TEST_F(TreeTablesTest, ConflictsWithAModule) {
  ODLEXTDirectory& ours = openPackage().GetDirectory();
  ODLEXDatabase& module = ODLEXDatabase::AddDatabaseToList(text(copyPackage("module.msm")));
  EXPECT_EQ(utf8(ours.CheckDirectoryPaths(module, u"{DIR}")), "") << "the same folders";

  ODLEXTDirectory& theirs = module.GetDirectory();
  theirs.GetDirectoryWithID(u"BinDir").SetDefaultDir(u"binaries");
  theirs.GetDirectoryWithID(u"ProgramFilesFolder").SetDefaultDir(u"PFiles");
  theirs.Add(folder(u"ModDocs", u"INSTALLDIR", u"DOCUME~1|dokumentation"));
  theirs.Add(folder(u"SameDocs", u"INSTALLDIR", u"dokume~1|DOKUMENTATION"));
  std::vector<TalString> packageKeys, moduleKeys;
  EXPECT_TRUE(ours.CheckForConflictingPaths(module, packageKeys, moduleKeys));
  EXPECT_EQ(packageKeys, (std::vector<TalString>{u"BinDir", u"DocDir"}));
  EXPECT_EQ(moduleKeys, (std::vector<TalString>{u"BinDir", u"ModDocs"}));
  EXPECT_EQ(
      utf8(ours.CheckDirectoryPaths(module, u"{DIR} ({DEFAULT}) / {MOD_DIR} ({MOD_DEFAULT})")),
      "BinDir (bin) / BinDir (binaries)\n"
      "DocDir (DOKUME~1|Dokumentation) / ModDocs (DOCUME~1|dokumentation)");
}

}  // namespace
}  // namespace odlex::test
