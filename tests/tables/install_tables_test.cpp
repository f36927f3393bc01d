// The install tables that hold their own logic. The Component table object: deleting a component
// removes exactly its rows and what hangs off them; adding, validity, change, the attribute record
// and the schema gates. Complus, ReserveCost, CreateFolder's permissions and ServiceInstall, the
// certificate, signature and file-hash tables (on a copy of the idt package, whose components are
// MainExe, Docs, GermanDocs (key files) and Helpers (registry key path, none set), with, for
// hashes, a source image laid out in the test). The Registry table on the wixl package, where
// MainExecutable writes three HKLM values and ProgramMenuDir one HKCU value that is its key path.

#include <algorithm>
#include <utility>

#include "common/IdtText.h"
#include "common/RowText.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

class InstallTablesTest : public DatabaseTest {};

// The first cell of each row of `table` in `package`, sorted; none when the table is not there.
std::vector<std::string> firstCells(const std::filesystem::path& package, const std::string& table,
                                    const std::vector<std::string>& tables) {
  std::vector<std::string> cells;
  if (std::ranges::count(tables, table) == 0)
    return cells;
  for (const std::string& line : msiinfoRows(package, table))
    cells.push_back(splitCells(line).front());
  std::ranges::sort(cells);
  return cells;
}

// The package of tests/oracle/fixtures/cascade, built by msibuild: components App (files AppExe
// and AppDll), Docs (DocFile) and Tools (ToolExe), each with rows in the tables of the cascade
// and rows hanging off those; App is in features Main and Manuals. Deleting App leaves exactly
// the rows of the others, which the saved file shows to msiinfo. A copy of AppExe that Docs
// makes goes with the file; App's FeatureComponents rows stay. Of the permissions, those of
// App's files, registry rows and of the folder AppData that only App creates go; AppDir's stay
// (Tools creates it too), and so does the Registry row's lock that shares a file's key.
TEST_F(InstallTablesTest, DeleteRemovesExactlyTheComponentsRows) {
  const std::filesystem::path package = file("cascade.msi");
  ASSERT_TRUE(msibuildImport(package, idtFilesIn(fixturePath("cascade"))));
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package));
  ODLEXTComponent& components = db.GetComponent();
  components.Delete(components.GetComponentWithID(u"App"));
  ASSERT_TRUE(db.SaveChanges());

  using Keys = std::vector<std::string>;
  const std::pair<std::string, Keys> survivors[] = {
      {"Component", {"Docs", "Tools"}},
      {"File", {"DocFile", "ToolExe"}},
      {"Registry", {"DocReg", "ToolReg"}},
      {"Shortcut", {"DocShortcut"}},
      {"ServiceInstall", {"DocSvc"}},
      {"ServiceControl", {}},
      {"Environment", {"DocEnv", "ToolEnv"}},
      {"IniFile", {"DocIni"}},
      {"RemoveIniFile", {}},
      {"ODBCDriver", {}},
      {"ODBCAttribute", {}},
      {"ODBCDataSource", {"DocDS"}},
      {"ODBCSourceAttribute", {"DocDS"}},
      {"ODBCTranslator", {}},
      {"Class", {"{BBBBBBBB-0000-4000-8000-000000000002}"}},
      {"ProgId", {"Doc.File"}},
      {"Extension", {"docx"}},
      {"Verb", {"docx"}},
      {"MIME", {}},
      {"TypeLib", {"{BBBBBBBB-2222-4222-8222-222222222222}"}},
      {"SelfReg", {}},
      {"Font", {}},
      {"MsiFileHash", {"DocFile"}},
      {"BindImage", {}},
      {"DuplicateFile", {"DocCopy"}},
      {"MoveFile", {}},
      {"CreateFolder", {"AppDir", "DocDir"}},
      {"LockPermissions", {"AppDir", "AppExe", "DocDir", "DocFile", "ToolReg"}},
      {"PublishComponent", {"{F0000000-0000-4000-8000-000000000002}"}},
      {"RemoveFile", {}},
      {"RemoveRegistry", {}},
      {"ReserveCost", {}},
      {"FeatureComponents", {"Main", "Main", "Manuals", "Manuals"}},
  };
  const std::vector<std::string> tables = msiinfoPersistentTables(package);
  for (const auto& [table, keys] : survivors)
    EXPECT_EQ(firstCells(package, table, tables), keys) << table;
}

TEST_F(InstallTablesTest, AddSeveralIntoADirectory) {
  ODLEXDatabase& db = openPackage();
  ODLEXTComponent& components = db.GetComponent();
  MSIEDirectory& dir = *db.GetDirectory().Lookup(TalString(u"INSTALLDIR"));
  components.Add(3, dir);
  std::set<std::u16string> keys, guids;
  for (RWCollectable* item : components.GetTempEntries()) {
    const auto& row = static_cast<const MSIEComponent&>(*item);
    keys.insert(row.GetComponentID().u16());
    guids.insert(row.GetComponentGUID().u16());
    EXPECT_EQ(row.GetDirectoryID(), TalString(u"INSTALLDIR"));
    unsigned int code = 99;
    EXPECT_TRUE(components.IsValid(row, code)) << code;
  }
  EXPECT_EQ(keys.size(), 3u);
  EXPECT_EQ(guids.size(), 3u);
  EXPECT_FALSE(keys.contains(u"littleBunny"));

  MSIEDirectory missing(u"NoSuchDir");
  components.Add(MSIEComponent(u"x", ODLEXTObject::GenerateGUID(), u""), missing);
  EXPECT_EQ(components.GetTempEntries().entries(), 0u);
}

// Validity codes, and the key path that names no row.
TEST_F(InstallTablesTest, ValidityCodes) {
  ODLEXDatabase& db = openPackage();
  ODLEXTComponent& components = db.GetComponent();
  MSIEComponent row(components.GetComponentWithID(u"Docs"));
  struct Case {
    const char16_t* guid;
    const char16_t* keyPath;
    unsigned int code;
  };
  const Case cases[] = {
      {u"", u"", 5},
      {u"{2a1d9d3f-8c75-4d3e-9f6b-3c0e4a5b7d12}", u"", 4},
      {u"{2A1D9D3F-8C75-4D3E-9F6B-3C0E4A5B7D12}", u"Readme", 0},
  };
  for (const Case& c : cases) {
    row.SetComponentGUID(c.guid);
    row.SetKeyPath(c.keyPath);
    unsigned int code = 99;
    EXPECT_EQ(components.IsValid(row, code), c.code == 0);
    EXPECT_EQ(code, c.code) << TalString(c.guid).ToUtf8();
  }
  row.SetKeyPath(u"NoSuchFile");
  unsigned int code = 0;
  EXPECT_EQ(thrownCode([&] { components.IsValid(row, code); }), 20);
  EXPECT_EQ(thrownCode([&] { components.GetComponentWithID(u"NoSuch"); }), 21);
}

// Change revives a deleted row only when something differs; the record rebuilds the
// attributes and does not assign registryKeyPath.
TEST_F(InstallTablesTest, ChangeAndTheAttributeRecord) {
  ODLEXDatabase& db = openPackage();
  ODLEXTComponent& components = db.GetComponent();
  MSIEComponent& row = components.GetComponentWithID(u"Docs");
  row.Delete();
  EXPECT_FALSE(components.Change(row, MSIEComponent(row)));
  EXPECT_TRUE(row.IsDeleted());
  MSIEComponent values(row);
  values.SetCondition(u"VersionNT");
  EXPECT_TRUE(components.Change(row, values));
  EXPECT_FALSE(row.IsDeleted());

  row.SetAttributes(256 | msidbComponentAttributesPermanent);
  ODLEXComponentInfo info(row);
  EXPECT_TRUE(info.permanent);
  components.SetToComponentInfo(row, info);
  EXPECT_EQ(row.GetAttributes(), 256 | msidbComponentAttributesPermanent);
  info.transitive = true;
  components.SetToComponentInfo(row, info);
  EXPECT_EQ(row.GetAttributes(),
            msidbComponentAttributesPermanent | msidbComponentAttributesTransitive);

  ODLEXComponentInfo registry(components.GetComponentWithID(u"Helpers"));
  EXPECT_TRUE(registry.registryKeyPath);
  info = registry;
  EXPECT_FALSE(info.registryKeyPath);
  EXPECT_TRUE(components.IsKeyPathForFiles(MSIEComponent(u"k", u"", u"")));
}

// The tables of newer schemas are reached only by databases that can hold them (a reach beyond
// throws code 60), and ModuleComponents only in a merge module.
TEST_F(InstallTablesTest, VersionAndMergeModuleGates) {
  const struct {
    eSchemaVersion version;
    bool mergeModule;
    bool isolatedGoes;
    bool assemblyGoes;
    bool moduleRowGoes;
  } cases[] = {
      {eSchema100, false, false, false, false},
      {eSchema150, false, true, false, false},
      {eSchema200, false, true, true, false},
      {eSchema200, true, true, true, true},
  };
  int n = 0;
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.version) + (c.mergeModule ? " module" : ""));
    ODLEXDatabase& db = openNewDatabase("gate" + std::to_string(n++) + ".msi", c.version);
    db.SetMergeModule(c.mergeModule);
    // MsiFileHash came with schema 200; schemas up to 120 hold only the tables they had, later
    // ones every table.
    EXPECT_EQ(thrownCode([&] { db.GetMsiFileHash(); }),
              c.version > eSchema120 ? -1 : int{ODLEXDatabaseError::eTableNotInSchema});
    MSIEComponent& main = addRow(db.GetComponent(), MSIEComponent(u"", u"", u"TARGETDIR"));
    const TalString key = main.GetComponentID();
    MSIEntry* isolated = c.version >= eSchema110
                             ? &addRow(db.GetIsolatedComponent(), MSIEIsolatedComponent(key, key))
                             : nullptr;
    MSIEntry* assembly =
        c.version >= eSchema200 ? &addRow(db.GetMsiAssembly(), MSIEMsiAssembly(key)) : nullptr;
    MSIEntry* moduleRow =
        c.version >= eSchema200
            ? &addRow(db.GetModuleComponents(), MSIEModuleComponents(key, u"Module.GUID", 1033))
            : nullptr;
    db.GetComponent().Delete(main);
    EXPECT_TRUE(main.IsDeleted());
    EXPECT_EQ(isolated && isolated->IsDeleted(), c.isolatedGoes);
    EXPECT_EQ(assembly && assembly->IsDeleted(), c.assemblyGoes);
    EXPECT_EQ(moduleRow && moduleRow->IsDeleted(), c.moduleRowGoes);
  }
}

MSIELockPermissions grant(const char16_t* domain, const char16_t* user, int permission) {
  MSIELockPermissions row(u"ignored", u"ignored", domain, user);
  row.SetPermission(permission);
  return row;
}

MSIEReserveCost reserveCostOf(const char16_t* key, const char16_t* component,
                              const char16_t* folder) {
  MSIEReserveCost row(key);
  row.SetComponent(component);
  row.SetReserveFolder(folder);
  return row;
}

// The Complus table object cannot add rows: the package gets one by import.
TEST_F(InstallTablesTest, ComplusEntryOfAComponentOrTheComponentInTheError) {
  importTable(package(), "Component_\tExpType\ns72\tI2\nComplus\tComponent_\tExpType\nDocs\t1\n");
  ODLEXDatabase& db = openPackage();

  ODLEXTComplus& complus = db.GetComplus();
  MSIEComponent& docs = *db.GetComponent().Lookup(u"Docs");
  MSIEComponent& mainExe = *db.GetComponent().Lookup(u"MainExe");
  EXPECT_EQ(complus.GetEntry(docs).GetExpType(), NullableSignedShort(1));
  expectErrorWithEntry([&] { complus.GetEntry(mainExe); }, ODLEXDatabaseError::eComplusNotFound,
                       ODLEXTObject::eComponent, mainExe);
  complus.Delete(complus.GetEntry(docs));
  expectErrorWithEntry([&] { complus.GetEntry(docs); }, ODLEXDatabaseError::eComplusNotFound,
                       ODLEXTObject::eComponent, docs);
}

TEST_F(InstallTablesTest, ReserveCostFollowsItsComponentAndFolder) {
  ODLEXDatabase& db = openPackage();
  ODLEXTReserveCost& costs = db.GetReserveCost();
  MSIEReserveCost& inComponentDir = addRow(costs, reserveCostOf(u"R1", u"MainExe", u""));
  MSIEReserveCost& inOwnFolder = addRow(costs, reserveCostOf(u"R2", u"MainExe", u"DocDir"));
  MSIEReserveCost& noComponent = addRow(costs, reserveCostOf(u"R3", u"Gone", u""));
  MSIEReserveCost& propertyFolder = addRow(costs, reserveCostOf(u"R4", u"Docs", u"DATAPATH"));

  EXPECT_EQ(costs.GetComponent(inComponentDir).GetComponentID(), TalString(u"MainExe"));
  EXPECT_EQ(costs.GetDirectory(inComponentDir).GetDirectory(), TalString(u"BinDir"));
  EXPECT_EQ(costs.GetDirectory(inOwnFolder).GetDirectory(), TalString(u"DocDir"));
  expectErrorWithEntry([&] { costs.GetComponent(noComponent); },
                       ODLEXDatabaseError::eComponentNotFound, ODLEXTObject::eReserveCost,
                       noComponent);
  expectErrorWithEntry([&] { costs.GetDirectory(noComponent); },
                       ODLEXDatabaseError::eComponentNotFound, ODLEXTObject::eReserveCost,
                       noComponent);
  expectErrorWithEntry([&] { costs.GetDirectory(propertyFolder); },
                       ODLEXDatabaseError::eDirectoryNotFound, ODLEXTObject::eReserveCost,
                       propertyFolder);
}

TEST_F(InstallTablesTest, FolderPermissionsAreReplacedAsAWhole) {
  ODLEXDatabase& db = openPackage();
  ODLEXTCreateFolder& folders = db.GetCreateFolder();
  ODLEXTLockPermissions& permissions = db.GetLockPermissions();
  MSIECreateFolder& folder = addRow(folders, MSIECreateFolder(u"BinDir", u"MainExe"));
  MSIELockPermissions& fileGrant =
      addRow(permissions, MSIELockPermissions(u"BinDir", u"File", u"", u"Alice"));

  RWBTree first;
  MSIELockPermissions alice = grant(u"CORP", u"Alice", 1);
  MSIELockPermissions bob = grant(u"", u"Bob", 2);
  first.insert(&alice);
  first.insert(&bob);
  folders.SetPermissions(folder, first);
  RWBTree granted;
  folders.GetPermissions(granted, folder);
  ASSERT_EQ(granted.entries(), 2u);
  for (RWCollectable* item : granted) {
    EXPECT_EQ(static_cast<MSIELockPermissions*>(item)->GetLockObject(), TalString(u"BinDir"));
    EXPECT_EQ(static_cast<MSIELockPermissions*>(item)->GetTable(), TalString(u"CreateFolder"));
  }
  MSIELockPermissions& bobRow = *permissions.Lookup(u"BinDir", u"CreateFolder", u"", u"Bob");
  MSIELockPermissions& aliceRow =
      *permissions.Lookup(u"BinDir", u"CreateFolder", u"CORP", u"Alice");

  RWBTree second;
  MSIELockPermissions bobAgain = grant(u"", u"Bob", 3);
  MSIELockPermissions carol = grant(u"", u"Carol", 4);
  second.insert(&bobAgain);
  second.insert(&carol);
  folders.SetPermissions(folder, second);

  EXPECT_TRUE(aliceRow.IsDeleted());
  EXPECT_EQ(bobRow.GetPermission(), NullableLong(3));
  RWBTree replaced;
  folders.GetPermissions(replaced, folder);
  EXPECT_EQ(itemsOf(replaced),
            (std::set<RWCollectable*>{
                &bobRow, permissions.Lookup(u"BinDir", u"CreateFolder", u"", u"Carol")}));
  EXPECT_FALSE(fileGrant.IsDeleted());
}

TEST_F(InstallTablesTest, ServicesNeedAComponentWhoseKeyPathIsAnExistingFile) {
  ODLEXDatabase& db = openPackage();
  MSIEComponent broken(u"Broken", u"", u"BinDir");
  broken.SetAttributes(0);
  broken.SetKeyPath(u"NoSuchFile");
  db.GetComponent().Add(broken);

  RWBTree valid;
  db.GetServiceInstall().GetValidComponents(valid);
  ODLEXTComponent& components = db.GetComponent();
  EXPECT_EQ(itemsOf(valid),
            (std::set<RWCollectable*>{components.Lookup(u"MainExe"), components.Lookup(u"Docs"),
                                      components.Lookup(u"GermanDocs")}));
}

MSIEMsiDigitalCertificate certificateOf(const TalString& key, const std::string& bytes) {
  MSIEMsiDigitalCertificate row(key);
  row.SetCertData(MSIBinary(reinterpret_cast<const unsigned char*>(bytes.data()),
                            static_cast<unsigned long>(bytes.size())));
  return row;
}

MSIEMsiDigitalSignature signatureOf(const TalString& disk, const TalString& certificate) {
  MSIEMsiDigitalSignature row(u"Media", disk);
  row.SetDigitalCertificate(certificate);
  return row;
}

// Deleting a certificate deletes exactly the live signature rows that name it (a certificate
// whose key differs only in case is another certificate); lookups and their codes; a certificate
// is stored once.
TEST_F(InstallTablesTest, CertificatesAndTheirSignatures) {
  ODLEXDatabase& db = openPackage();
  ODLEXTMsiDigitalCertificate& certificates = db.GetMsiDigitalCertificate();
  ODLEXTMsiDigitalSignature& signatures = db.GetMsiDigitalSignature();
  MSIEMsiDigitalCertificate& first = addRow(certificates, certificateOf(u"Cert", "one"));
  MSIEMsiDigitalCertificate& other = addRow(certificates, certificateOf(u"cert", "two"));
  MSIEMsiDigitalSignature& disk1 = addRow(signatures, signatureOf(u"1", u"Cert"));
  MSIEMsiDigitalSignature& disk2 = addRow(signatures, signatureOf(u"2", u"Cert"));
  MSIEMsiDigitalSignature& disk3 = addRow(signatures, signatureOf(u"3", u"cert"));
  MSIEMsiDigitalSignature& gone = addRow(signatures, signatureOf(u"4", u"Cert"));
  signatures.Delete(gone);

  const Lookup lookups[] = {
      {[&] { return &certificates.GetWithDigitalCertificate(u"Cert"); },
       [&] { certificates.GetWithDigitalCertificate(u"CERT"); }, 63, &first},
      {[&] { return &signatures.GetSignatureWithSignedObject(u"Media", u"3"); },
       [&] { signatures.GetSignatureWithSignedObject(u"Media", u"4"); }, 66, &disk3},
      {[&] { return &db.GetMsiFileHash().GetEntryWithFileID(u"Readme"); },
       [&] { db.GetMsiFileHash().GetEntryWithFileID(u"MainExe"); }, 64},
  };
  db.GetMsiFileHash().Add(MSIEMsiFileHash(u"Readme"));
  expectLookups(lookups);
  RWBTree named;
  EXPECT_EQ(itemsOf(signatures.GetEntries(named, first)),
            (std::set<RWCollectable*>{&disk1, &disk2}));

  certificates.Delete(first);
  EXPECT_TRUE(first.IsDeleted());
  EXPECT_TRUE(disk1.IsDeleted());
  EXPECT_TRUE(disk2.IsDeleted());
  EXPECT_FALSE(disk3.IsDeleted());
  EXPECT_FALSE(other.IsDeleted());

  // A certificate added without a key gets one from the table, and the same bytes added again
  // give the same row.
  MSIEMsiDigitalCertificate& added = addRow(certificates, certificateOf(TalString(), "der"));
  EXPECT_EQ(added.GetDigitalCertificate().u16(), u"Certificate1");
  EXPECT_EQ(&addRow(certificates, certificateOf(TalString(), "der")), &added);
  EXPECT_NE(&addRow(certificates, certificateOf(TalString(), "other")), &added);
}

// Added when missing, with the file's MD5; changed only when the file changed; a file that cannot
// be read gives code 50 with its status and changes nothing.
TEST_F(InstallTablesTest, FileHashRefreshAddsThenChangesOnlyWhenTheFileChanged) {
  ODLEXDatabase& db = openPackage();
  db.SetSourceRoot(text(dir_ / "source"));
  ODLEXTMsiFileHash& hashes = db.GetMsiFileHash();
  const MSIEFile& readme = *db.GetFile().Lookup(u"Readme");
  const std::string source = hashes.GetSourceFile(readme).ToUtf8();
  writeFileBytes(source, "added text");
  hashes.RefreshFileHash(readme);
  // MD5 (md5sum: 9eababe8701fda9d8ac0304d4af095d1) as four little-endian signed parts.
  EXPECT_EQ(rowText(hashes.GetEntry(readme)),
            "Readme\t0\t-391402594\t-1646649488\t1295040650\t-778702774");
  ASSERT_TRUE(db.SaveChanges());
  db.SetModified(false);

  hashes.RefreshFileHash(readme);
  EXPECT_FALSE(db.IsModified());
  writeFileBytes(source, "second");
  hashes.RefreshFileHash(readme);
  EXPECT_TRUE(db.IsModified());
  EXPECT_NE(hashes.GetEntry(readme).GetHashPart1(), -391402594);

  std::filesystem::remove(source);
  try {
    hashes.RefreshFileHash(readme);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const ODLEXDatabaseErrorWithErrorCode& error) {
    EXPECT_EQ(static_cast<ODLEXDatabaseError::eCodeMeaning>(error), 50);
    EXPECT_EQ(static_cast<unsigned int>(error), 2u);
  }
}

TEST_F(InstallTablesTest, RootsTextsAndKeyPaths) {
  ODLEXDatabase& db = openWixl();
  ODLEXTRegistry& registry = db.GetRegistry();

  const std::pair<short, const char*> roots[] = {{0, "HKCR"}, {1, "HKCU"},       {2, "HKLM"},
                                                 {3, "HKU"},  {-1, "HKCU/HKLM"}, {4, ""}};
  for (const auto& [root, name] : roots)
    EXPECT_EQ(registry.GetRootText(root).ToUtf8(), name) << root;
  registry.SetCurrentUserBaseKey(u"HKCU");
  EXPECT_EQ(registry.GetRootText(-1).ToUtf8(), "HKCU");

  ODLEXTComponent& components = db.GetComponent();
  MSIEComponent& menu = components.GetComponentWithID(u"ProgramMenuDir");
  RWBTree rows;
  ASSERT_EQ(registry.GetRegistries(rows, menu).entries(), 1u);
  const auto& value = static_cast<const MSIERegistry&>(**rows.begin());
  EXPECT_TRUE(registry.IsRegistryInComponentKeyPath(value));
  EXPECT_EQ(&registry.GetComponent(value), &menu);
  EXPECT_EQ(components.GetKeyPathString(menu).ToUtf8(),
            "HKCU\\Software\\Odlex\\Test\\MenuInstalled");
  RWBTree main;
  registry.GetRegistries(main, components.GetComponentWithID(u"MainExecutable"));
  EXPECT_EQ(main.entries(), 3u);
  for (RWCollectable* item : main)
    EXPECT_FALSE(registry.IsRegistryInComponentKeyPath(static_cast<const MSIERegistry&>(*item)));
  EXPECT_EQ(thrownCode([&] { registry.GetRegistryWithID(u"NoSuchValue"); }),
            ODLEXDatabaseError::eRegistryNotFound);
}

// The tree of keys: children in order ignoring case, one key however its rows spell it, the
// rows of one key, and iterators that end or were never opened.
TEST_F(InstallTablesTest, TreeOfKeys) {
  ODLEXTRegistry& registry = openWixl().GetRegistry();
  MSIERegistry other(u"Other");
  other.SetRoot(2);
  other.SetKey(u"SOFTWARE\\odlex\\\\Test\\Sub\\");
  other.SetComponent(u"MainExecutable");
  addRow(registry, other);
  registry.StartTreeFill();

  const std::pair<const char16_t*, std::vector<std::string>> children[] = {
      {u"", {"HKCU", "HKLM"}},
      {u"hklm\\software", {"HKLM\\SOFTWARE\\odlex"}},
      {u"HKLM\\SOFTWARE\\odlex\\Test\\", {"HKLM\\SOFTWARE\\odlex\\Test\\Sub"}},
      {u"HKLM\\SOFTWARE\\odlex\\Test\\Sub", {}},
  };
  for (const auto& [key, expected] : children) {
    const int iterator = registry.OpenTreeChildIterator(key);
    ASSERT_GE(iterator, 0) << TalString(key).ToUtf8();
    std::vector<std::string> found;
    for (TalString child; registry.GetNextTreeChild(iterator, child);)
      found.push_back(child.ToUtf8());
    EXPECT_EQ(found, expected) << TalString(key).ToUtf8();
    registry.CloseTreeChildIterator(iterator);
    TalString child;
    EXPECT_FALSE(registry.GetNextTreeChild(iterator, child)) << "closed";
  }
  EXPECT_EQ(registry.OpenTreeChildIterator(u"HKU"), -1);

  const std::pair<const char16_t*, std::size_t> values[] = {
      {u"hklm\\software\\odlex\\test", 3},
      {u"HKLM\\Software\\Odlex\\Test\\Sub", 1},
      {u"HKLM\\Software", 0}};
  for (const auto& [key, count] : values) {
    RWBTree rows;
    EXPECT_EQ(registry.GetTreeEntries(rows, key).entries(), count) << TalString(key).ToUtf8();
  }

  MSIELockPermissions grant(u"x", u"x", u"", u"Users");
  RWBTree grants;
  grants.insert(&grant);
  MSIERegistry& added = registry.GetRegistryWithID(u"Other");
  registry.SetPermissions(added, grants);
  RWBTree held;
  ASSERT_EQ(registry.GetPermissions(held, added).entries(), 1u);
  EXPECT_EQ(static_cast<MSIELockPermissions*>(*held.begin())->GetTable().ToUtf8(), "Registry");
}

}  // namespace
}  // namespace odlex::test
