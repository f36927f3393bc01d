// Found-or-throw lookups and the collectors of an owner's live rows (deleted rows and those of
// other owners left out) of the COM (Class, ProgId, TypeLib, Extension, MIME, Verb), ODBC,
// file-search, assembly, merge-module, patch-creation and dialog table objects, on rows added to a
// copy of the idt package (files MainExe, Readme, Handbuch, HelperDll; components MainExe, Docs,
// GermanDocs, Helpers), which has none of these tables.

#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

class RowsByOwnerTest : public DatabaseTest {};

MSIEODBCDriver driverOf(const char16_t* key, const char16_t* file, const char16_t* setupFile) {
  MSIEODBCDriver row(key);
  row.SetComponent(u"Helpers");
  row.SetFile(file);
  row.SetFileSetup(setupFile);
  return row;
}

MSIEODBCDataSource dataSourceOf(const char16_t* key, const char16_t* name) {
  MSIEODBCDataSource row(key);
  row.SetComponent(u"Helpers");
  row.SetDescription(name);
  return row;
}

// A driver's files (a translator's follow theirs through the same shape), a data source by key, by
// name and from its attributes, and the live attributes of a driver and of a data source.
TEST_F(RowsByOwnerTest, ODBCRowsFollowTheirFilesDriversAndSources) {
  ODLEXDatabase& db = openPackage();
  ODLEXTODBCDriver& drivers = db.GetODBCDriver();
  ODLEXTODBCAttribute& driverAttributes = db.GetODBCAttribute();
  ODLEXTODBCDataSource& sources = db.GetODBCDataSource();
  ODLEXTODBCSourceAttribute& attributes = db.GetODBCSourceAttribute();
  MSIEODBCDriver& driver = addRow(drivers, driverOf(u"Driver", u"HelperDll", u""));
  addRow(drivers, driverOf(u"Other", u"HelperDll", u""));
  MSIEODBCAttribute& kept = addRow(driverAttributes, MSIEODBCAttribute(u"Driver", u"CPTimeout"));
  driverAttributes.Delete(addRow(driverAttributes, MSIEODBCAttribute(u"Driver", u"FileUsage")));
  addRow(driverAttributes, MSIEODBCAttribute(u"Other", u"CPTimeout"));
  MSIEODBCDataSource& source = addRow(sources, dataSourceOf(u"Orders", u"Order Database"));
  MSIEODBCSourceAttribute& server =
      addRow(attributes, MSIEODBCSourceAttribute(u"Orders", u"Server"));
  attributes.Delete(addRow(attributes, MSIEODBCSourceAttribute(u"Orders", u"Port")));
  MSIEODBCSourceAttribute& dangling =
      addRow(attributes, MSIEODBCSourceAttribute(u"Gone", u"Server"));
  const Lookup lookups[] = {
      {[&] { return &drivers.GetFile(driver); }, [&] { drivers.GetFileSetup(driver); }, 20,
       db.GetFile().Lookup(u"HelperDll"), &driver, ODLEXTObject::eODBCDriver},
      {[&] { return &sources.GetDataSourceWithID(u"Orders"); },
       [&] { sources.GetDataSourceWithID(u"Order Database"); }, 23, &source},
      {[&] { return &sources.GetDataSource(u"Order Database"); },
       [&] { sources.GetDataSource(u"Orders"); }, 23, &source},
      {[&] { return &attributes.GetDataSource(server); },
       [&] { attributes.GetDataSource(dangling); }, 23, &source, &dangling,
       ODLEXTObject::eODBCSourceAttribute},
  };
  expectLookups(lookups);
  const Collector collectors[] = {
      {[&](RWBTree& tree) { drivers.GetAttributes(tree, driver); }, {&kept}},
      {[&](RWBTree& tree) { attributes.GetSourceAttributes(tree, source); }, {&server}},
  };
  expectCollectors(collectors);
}

MSIEDrLocator drLocatorOf(const TalString& signature, const TalString& path) {
  return MSIEDrLocator(signature, u"", path);
}

// A row of a signature, or code 24, through the template the five tables share (on Signature and
// on DrLocator, whose first live row in key order is given); an AppSearch row follows its
// signature into the five tables (CCPSearch shares that template).
TEST_F(RowsByOwnerTest, FileSearchRowsBySignature) {
  ODLEXDatabase& db = openPackage();
  ODLEXTSignature& signatures = db.GetSignature();
  ODLEXTRegLocator& regs = db.GetRegLocator();
  ODLEXTDrLocator& dirs = db.GetDrLocator();
  MSIESignature& signature = addRow(signatures, MSIESignature(u"AppExe"));
  MSIERegLocator& reg = addRow(regs, MSIERegLocator(u"AppExe"));
  addRow(db.GetIniLocator(), MSIEIniLocator(u"AppIni"));
  addRow(db.GetCompLocator(), MSIECompLocator(u"AppComp"));
  dirs.Delete(addRow(dirs, drLocatorOf(u"AppDir", u"C:\\A")));
  MSIEDrLocator& second = addRow(dirs, drLocatorOf(u"AppDir", u"C:\\B"));
  addRow(dirs, drLocatorOf(u"AppDir", u"C:\\C"));
  MSIEDrLocator& dir = addRow(dirs, drLocatorOf(u"AppExe", u"C:\\A"));
  const Lookup lookups[] = {
      {[&] { return &signatures.GetWithSignature(u"AppExe"); },
       [&] { signatures.GetWithSignature(u"appexe"); }, 24, &signature},
      {[&] { return &dirs.GetWithSignature(u"AppDir"); },
       [&] { dirs.GetWithSignature(u"AppComp"); }, 24, &second},
  };
  expectLookups(lookups);

  ODLEXTAppSearch& appSearches = db.GetAppSearch();
  MSIEAppSearch& search = addRow(appSearches, MSIEAppSearch(u"APPEXE", u"AppExe"));
  EXPECT_EQ(&appSearches.GetSignature(search), &signature);
  EXPECT_EQ(&appSearches.GetRegLocator(search), &reg);
  EXPECT_EQ(&appSearches.GetDrLocator(search), &dir);
  EXPECT_EQ(appSearches.GetSignatureTypes(search),
            eSignatureInSignature | eSignatureInRegLocator | eSignatureInDrLocator);
  expectErrorWithEntry([&] { appSearches.GetIniLocator(search); },
                       ODLEXDatabaseError::eSignatureNotFound, ODLEXTObject::eAppSearch, search);
  expectErrorWithEntry([&] { appSearches.GetCompLocator(search); },
                       ODLEXDatabaseError::eSignatureNotFound, ODLEXTObject::eAppSearch, search);

  signatures.Delete(signature);
  dirs.Delete(dir);
  EXPECT_FALSE(appSearches.HasSignature(search));
  EXPECT_EQ(appSearches.GetSignatureTypes(search), eSignatureInRegLocator);
  expectErrorWithEntry([&] { appSearches.GetSignature(search); },
                       ODLEXDatabaseError::eSignatureNotFound, ODLEXTObject::eAppSearch, search);
  ODLEXTCCPSearch& ccpSearches = db.GetCCPSearch();
  EXPECT_EQ(ccpSearches.GetSignatureTypes(addRow(ccpSearches, MSIECCPSearch(u"Nowhere"))),
            eNoSignatureType);
}

// FileSFPCatalog, MsiAssembly, MsiAssemblyName and merge-module rows, one of each table deleted,
// the others of more than one owner; module rows belong to the module of the same ID and language
// (ModuleExclusion reads its language column as ModuleDependency does).
TEST_F(RowsByOwnerTest, AssemblyAndModuleRows) {
  ODLEXDatabase& db = openPackage();
  ODLEXTMsiAssembly& assemblies = db.GetMsiAssembly();
  ODLEXTMsiAssemblyName& names = db.GetMsiAssemblyName();
  ODLEXTFileSFPCatalog& catalogs = db.GetFileSFPCatalog();
  ODLEXTModuleIgnoreTable& ignored = db.GetModuleIgnoreTable();
  MSIEMsiAssembly& assembly = addRow(assemblies, MSIEMsiAssembly(u"MainExe"));
  MSIEMsiAssemblyName& name = addRow(names, MSIEMsiAssemblyName(u"MainExe", u"Name"));
  names.Delete(addRow(names, MSIEMsiAssemblyName(u"MainExe", u"Culture")));
  addRow(names, MSIEMsiAssemblyName(u"Docs", u"Name"));
  MSIEFileSFPCatalog& catalog = addRow(catalogs, MSIEFileSFPCatalog(u"MainExe", u"app.cat"));
  catalogs.Delete(addRow(catalogs, MSIEFileSFPCatalog(u"MainExe", u"old.cat")));
  addRow(catalogs, MSIEFileSFPCatalog(u"Readme", u"app.cat"));
  MSIEModuleComponents& component =
      addRow(db.GetModuleComponents(), MSIEModuleComponents(u"MainExe", u"Module.GUID", 1033));
  addRow(db.GetModuleComponents(), MSIEModuleComponents(u"Docs", u"Module.GUID", 1031));
  MSIEModuleDependency& dependency = addRow(
      db.GetModuleDependency(), MSIEModuleDependency(u"Module.GUID", 1033, u"Runtime.GUID", 0));
  addRow(db.GetModuleDependency(), MSIEModuleDependency(u"Other.GUID", 1033, u"Runtime.GUID", 0));
  MSIEModuleIgnoreTable& ignoredRow = addRow(ignored, MSIEModuleIgnoreTable(u"Registry"));
  MSIEComponent& main = *db.GetComponent().Lookup(u"MainExe");
  MSIEComponent& docs = *db.GetComponent().Lookup(u"Docs");
  const MSIEModuleSignature module(u"Module.GUID", 1033);

  const Lookup lookups[] = {
      {[&] { return &assemblies.GetEntry(main); }, [&] { assemblies.GetEntry(docs); }, 61,
       &assembly, &docs, ODLEXTObject::eComponent},
      {[&] { return &assemblies.GetWithComponentID(u"MainExe"); },
       [&] { assemblies.GetWithComponentID(u"Docs"); }, 61, &assembly},
      {[&] { return &names.GetWithCompIDAndName(u"MainExe", u"Name"); },
       [&] { names.GetWithCompIDAndName(u"MainExe", u"Culture"); }, 62, &name},
      {[&] { return &catalogs.GetEntry(u"MainExe", u"app.cat"); },
       [&] { catalogs.GetEntry(u"MainExe", u"old.cat"); }, 59, &catalog},
      {[&] { return &ignored.GetModuleIgnoreTableWithID(u"Registry"); },
       [&] { ignored.GetModuleIgnoreTableWithID(u"Shortcut"); }, 37, &ignoredRow},
  };
  expectLookups(lookups);

  const Collector collectors[] = {
      {[&](RWBTree& tree) { names.GetEntries(tree, main); }, {&name}},
      {[&](RWBTree& tree) { catalogs.GetEntries(tree, *db.GetFile().Lookup(u"MainExe")); },
       {&catalog}},
      {[&](RWBTree& tree) { db.GetModuleComponents().GetModuleComponents(tree, module); },
       {&component}},
      {[&](RWBTree& tree) { db.GetModuleDependency().GetModuleDependencies(tree, module); },
       {&dependency}},
  };
  expectCollectors(collectors);
}

MSIEUpgradedImages upgradedOf(const char16_t* key, const char16_t* family) {
  MSIEUpgradedImages row(key);
  row.SetFamily(family);
  return row;
}

MSIETargetImages targetOf(const char16_t* key, const char16_t* upgraded) {
  MSIETargetImages row(key);
  row.SetUpgraded(upgraded);
  return row;
}

// Families FAM and OTHER, upgraded images U1 (FAM) and U2 (OTHER), target image T1 (from U1). The
// wildcards of UpgradedFilesToIgnore are installer_rules_test's.
TEST_F(RowsByOwnerTest, PatchCreationRowsByKeyAndByImage) {
  ODLEXDatabase& db = openPackage();
  ODLEXTExternalFiles& external = db.GetExternalFiles();
  ODLEXTImageFamilies& families = db.GetImageFamilies();
  ODLEXTTargetImages& targets = db.GetTargetImages();
  ODLEXTUpgradedImages& upgraded = db.GetUpgradedImages();
  ODLEXTUpgradedFiles_OptionalData& upgradedFiles = db.GetUpgradedFiles_OptionalData();
  MSIEImageFamilies family(u"FAM");
  family.SetMediaSrcPropName(u"FAMSRC");
  MSIEImageFamilies& fam = addRow(families, family);
  addRow(families, MSIEImageFamilies(u"OTHER"));
  MSIEUpgradedImages& u1 = addRow(upgraded, upgradedOf(u"U1", u"FAM"));
  addRow(upgraded, upgradedOf(u"U2", u"OTHER"));
  MSIETargetImages& t1 = addRow(targets, targetOf(u"T1", u"U1"));
  addRow(external, MSIEExternalFiles(u"FAM", u"app", u"C:\\old\\app.exe"));
  addRow(upgradedFiles, MSIEUpgradedFiles_OptionalData(u"U1", u"app"));
  addRow(db.GetProperties(), MSIEProperties(u"PatchGUID"));

  // The shared found-or-throw shape on a key of three columns, a key of one, an index of another
  // column and a case-sensitive key; the other patch-creation lookups are the same one line.
  const Lookup lookups[] = {
      {[&] { return &external.GetEntry(u"FAM", u"app", u"C:\\old\\app.exe"); },
       [&] { external.GetEntry(u"FAM", u"app", u"C:\\app.exe"); }, 68},
      {[&] { return &families.GetWithMediaSrcPropName(u"FAMSRC"); },
       [&] { families.GetWithMediaSrcPropName(u"FAM"); }, 69, &fam},
      {[&] { return &targets.GetWithUpgraded(u"U1"); }, [&] { targets.GetWithUpgraded(u"T1"); }, 70,
       &t1},
      {[&] { return &upgradedFiles.GetEntry(u"U1", u"app"); },
       [&] { upgradedFiles.GetEntry(u"U1", u"App"); }, 75},
      {[&] { return &db.GetProperties().GetWithName(u"PatchGUID"); },
       [&] { db.GetProperties().GetWithName(u"PatchGuid"); }, 71},
  };
  expectLookups(lookups);

  upgraded.Delete(addRow(upgraded, upgradedOf(u"U3", u"FAM")));
  families.Delete(families.GetWithFamily(u"OTHER"));
  const Collector collectors[] = {
      {[&](RWBTree& tree) { upgraded.GetEntries(tree, fam); }, {&u1}},
      {[&](RWBTree& tree) { families.GetEntries(tree); }, {&fam}},
  };
  expectCollectors(collectors);
  EXPECT_EQ(upgraded.GetEntries().entries(), 3u) << "the table's own rows, deleted included";
}

MSIERadioButton buttonOf(const char16_t* property, short order) {
  MSIERadioButton row(property, order);
  row.SetValue(TalString::FromInt(order));
  return row;
}

TEST_F(RowsByOwnerTest, EventsOfAControlWithOneArgumentAndOfADialog) {
  ODLEXDatabase& db = openPackage();
  ODLEXTControlEvent& events = db.GetControlEvent();
  MSIEControlEvent& toLicense =
      addRow(events, MSIEControlEvent(u"Welcome", u"Next", u"NewDialog", u"License", u"1"));
  MSIEControlEvent& toLicenseAgain =
      addRow(events, MSIEControlEvent(u"Welcome", u"Next", u"NewDialog", u"License", u"Accepted"));
  MSIEControlEvent& toSetup =
      addRow(events, MSIEControlEvent(u"Welcome", u"Next", u"NewDialog", u"Setup", u"Custom"));
  MSIEControlEvent& cancel =
      addRow(events, MSIEControlEvent(u"Welcome", u"Cancel", u"SpawnDialog", u"License", u"1"));
  addRow(events, MSIEControlEvent(u"License", u"Back", u"NewDialog", u"Welcome", u"1"));
  events.Delete(toLicenseAgain);

  RWBTree ofNext;
  events.GetControlArgumentEntries(ofNext, MSIEControl(u"Welcome", u"Next"), u"License");
  EXPECT_EQ(itemsOf(ofNext), (std::set<RWCollectable*>{&toLicense}));

  RWBTree ofWelcome;
  events.GetDialogEntries(ofWelcome, MSIEDialog(u"Welcome"));
  EXPECT_EQ(itemsOf(ofWelcome), (std::set<RWCollectable*>{&toLicense, &toSetup, &cancel}));
}

TEST_F(RowsByOwnerTest, RadioGroupChangedUntilWrittenWhenAButtonIsAddedOrDeleted) {
  ODLEXDatabase& db = openPackage();
  ODLEXTRadioButton& buttons = db.GetRadioButton();
  buttons.Add(buttonOf(u"SETUPTYPE", 1));
  MSIERadioButton& second = addRow(buttons, buttonOf(u"SETUPTYPE", 2));
  buttons.Add(buttonOf(u"LICENSE", 1));
  EXPECT_TRUE(buttons.Changed(u"SETUPTYPE"));
  EXPECT_FALSE(buttons.Changed(u"UNKNOWN"));

  ASSERT_TRUE(db.SaveChanges());
  EXPECT_FALSE(buttons.Changed(u"SETUPTYPE"));
  EXPECT_FALSE(buttons.Changed(u"LICENSE"));

  buttons.Delete(second);
  EXPECT_TRUE(buttons.Changed(u"SETUPTYPE"));
  EXPECT_FALSE(buttons.Changed(u"LICENSE"));
}

constexpr const char16_t* kServer = u"{00000000-0000-0000-0000-00000000000A}";
constexpr const char16_t* kOtherServer = u"{00000000-0000-0000-0000-00000000000B}";

MSIEProgId progIdOf(const TalString& progId, const TalString& clsid, const TalString& icon) {
  MSIEProgId row(progId);
  row.SetClass(clsid);
  row.SetIcon(icon);
  return row;
}

MSIETypeLib typeLibOf(const TalString& component, const NullableLong& version) {
  MSIETypeLib row(kServer, 1033, component);
  row.SetVersion(version);
  return row;
}

MSIEMIME mimeOf(const TalString& contentType, const TalString& extension,
                const TalString& clsid = u"") {
  MSIEMIME row(contentType);
  row.SetExtension(extension);
  row.SetCLSID(clsid);
  return row;
}

MSIEVerb verbOf(const TalString& extension, const TalString& verb,
                const NullableSignedShort& sequence, const TalString& command = u"") {
  MSIEVerb row(extension, verb);
  row.SetSequence(sequence);
  row.SetCommand(command);
  return row;
}

// A tree of the free-standing rows `rows`.
template <class Row>
RWBTree treeOf(std::vector<Row>& rows) {
  RWBTree tree;
  for (Row& row : rows)
    tree.insert(&row);
  return tree;
}

// TypeLib and Extension collect a component's rows through the same shared collector as Class.
TEST_F(RowsByOwnerTest, RowsOfAComponentLeaveOutDeletedRows) {
  ODLEXDatabase& db = openPackage();
  ODLEXTClass& classes = db.GetClass();
  MSIEClass& local = addRow(classes, MSIEClass(kServer, u"LocalServer32", u"MainExe"));
  MSIEClass& inproc = addRow(classes, MSIEClass(kServer, u"InprocServer32", u"MainExe"));
  MSIEClass& helper = addRow(classes, MSIEClass(kOtherServer, u"InprocServer32", u"Helpers"));
  classes.Delete(addRow(classes, MSIEClass(kOtherServer, u"LocalServer32", u"MainExe")));

  EXPECT_EQ(&classes.GetClassWithID(kServer), &inproc) << "the first context in key order";
  EXPECT_EQ(thrownCode([&] { classes.GetClassWithID(u"{00000000-0000-0000-0000-00000000000C}"); }),
            15);

  const MSIEComponent& mainExe = *db.GetComponent().Lookup(u"MainExe");
  RWBTree found;
  found.insert(&helper);
  classes.GetClasses(found, mainExe);
  EXPECT_EQ(itemsOf(found), (std::set<RWCollectable*>{&local, &inproc, &helper}))
      << "what the tree held stays";
}

// A version-independent ProgId (one with a parent) has its parent's class.
TEST_F(RowsByOwnerTest, ProgIdFollowsItsClassOrParentAndIcon) {
  ODLEXDatabase& db = openPackage();
  MSIEClass& server = addRow(db.GetClass(), MSIEClass(kServer, u"LocalServer32", u"MainExe"));
  MSIEIcon& icon = addRow(db.GetIcon(), MSIEIcon(u"AppIcon"));
  ODLEXTProgId& progIds = db.GetProgId();
  const auto progId = [&](const char16_t* key, const char16_t* parent, const TalString& clsid,
                          const char16_t* icon) -> MSIEProgId& {
    MSIEProgId row = progIdOf(key, clsid, icon);
    row.SetProgIdParent(parent);
    return addRow(progIds, row);
  };
  MSIEProgId& complete = progId(u"Odlex.Document.1", u"", kServer, u"AppIcon");
  EXPECT_EQ(&progIds.GetClass(complete), &server);
  EXPECT_EQ(&progIds.GetIcon(complete), &icon);
  EXPECT_EQ(&progIds.GetClass(progId(u"Odlex.Document", u"Odlex.Document.1", u"", u"")), &server);
  EXPECT_EQ(&progIds.GetClass(progId(u"Odlex.Older", u"Odlex.Document", u"", u"")), &server);
  for (MSIEProgId* row :
       {&progId(u"Odlex.Bare", u"", u"", u""),
        &progId(u"Odlex.Gone", u"", kOtherServer, u"GoneIcon"),
        &progId(u"Loop.A", u"Loop.B", u"", u""), &progId(u"Loop.B", u"Loop.A", u"", u""),
        &progId(u"Orphan", u"Missing", u"", u"")}) {
    expectErrorWithEntry([&] { progIds.GetClass(*row); }, ODLEXDatabaseError::eClassNotFound,
                         ODLEXTObject::eProgId, *row);
    expectErrorWithEntry([&] { progIds.GetIcon(*row); }, ODLEXDatabaseError::eIconNotFound,
                         ODLEXTObject::eProgId, *row);
  }
}

TEST_F(RowsByOwnerTest, TypeLibVersionIsMajorAboveTheLowByteAndMinorInIt) {
  ODLEXDatabase& db = openPackage();
  ODLEXTTypeLib& typeLibs = db.GetTypeLib();
  MSIETypeLib& plain = addRow(typeLibs, typeLibOf(u"MainExe", 0x0102));
  MSIETypeLib& wide = addRow(typeLibs, typeLibOf(u"Docs", 0x10A0F));
  MSIETypeLib& largest = addRow(typeLibs, typeLibOf(u"GermanDocs", 0xFFFFFF));
  EXPECT_EQ(typeLibs.GetVersionNullable(plain), NullableLong(258));
  EXPECT_EQ(typeLibs.GetVersionString(plain), TalString(u"1.2"));
  EXPECT_EQ(typeLibs.GetVersionString(wide), TalString(u"266.15"));
  EXPECT_EQ(typeLibs.GetVersionString(largest), TalString(u"65535.255"));

  // A version may be null.
  MSIETypeLib& unversioned = addRow(typeLibs, MSIETypeLib(kOtherServer, 1033, u"MainExe"));
  EXPECT_TRUE(typeLibs.GetVersionNullable(unversioned).IsNull());
  EXPECT_EQ(typeLibs.GetVersionString(unversioned), u"");
  for (const NullableLong& unreadable :
       {NullableLong(-1), NullableLong(ODLEXTTypeLib::kMaxVersion + 1)}) {
    MSIETypeLib row = typeLibOf(u"Helpers", unreadable);
    EXPECT_EQ(thrownCode([&] { typeLibs.GetVersionNullable(row); }), 8);
    EXPECT_EQ(thrownCode([&] { typeLibs.GetVersionString(row); }), 8);
  }
}

TEST_F(RowsByOwnerTest, MIMEsAndVerbsBelongToTheExtensionsText) {
  ODLEXDatabase& db = openPackage();
  ODLEXTExtension& extensions = db.GetExtension();
  ODLEXTMIME& mimes = db.GetMIME();
  ODLEXTVerb& verbs = db.GetVerb();
  MSIEExtension& txt = addRow(extensions, MSIEExtension(u"txt", u"MainExe"));
  MSIEExtension& txtOfDocs = addRow(extensions, MSIEExtension(u"txt", u"Docs"));
  MSIEMIME& plain = addRow(mimes, mimeOf(u"text/plain", u"txt"));
  mimes.Delete(addRow(mimes, mimeOf(u"text/old", u"txt")));
  addRow(mimes, mimeOf(u"text/log", u"log"));
  MSIEVerb& print = addRow(verbs, verbOf(u"txt", u"print", 5));
  MSIEVerb& edit = addRow(verbs, verbOf(u"txt", u"edit", 2));
  MSIEVerb& open = addRow(verbs, verbOf(u"txt", u"open", NullableSignedShort()));
  verbs.Delete(addRow(verbs, verbOf(u"txt", u"view", 1)));
  addRow(verbs, verbOf(u"log", u"view", 1));

  EXPECT_EQ(&mimes.GetMIMEWithID(u"text/plain"), &plain);
  EXPECT_EQ(thrownCode([&] { mimes.GetMIMEWithID(u"text/old"); }), 26);
  for (MSIEExtension* extension : {&txt, &txtOfDocs}) {
    RWBTree found;
    extensions.GetMIMEs(found, *extension);
    EXPECT_EQ(itemsOf(found), (std::set<RWCollectable*>{&plain}));
    found.clear();
    extensions.GetVerbs(found, *extension);
    EXPECT_EQ(itemsOf(found), (std::set<RWCollectable*>{&print, &edit, &open}));
    EXPECT_EQ(&verbs.GetDefaultVerb(*extension), &edit) << "the lowest sequence";
  }

  MSIEExtension& doc = addRow(extensions, MSIEExtension(u"doc", u"Docs"));
  addRow(verbs, verbOf(u"doc", u"open", NullableSignedShort()));
  expectErrorWithEntry([&] { verbs.GetDefaultVerb(doc); }, ODLEXDatabaseError::eDefaultVerbNotFound,
                       ODLEXTObject::eExtension, doc);
}

TEST_F(RowsByOwnerTest, AddedMIMEsAndVerbsBecomeTheExtensionsAndTheTempEntries) {
  ODLEXDatabase& db = openPackage();
  ODLEXTExtension& extensions = db.GetExtension();
  MSIEExtension& txt = addRow(extensions, MSIEExtension(u"txt", u"MainExe"));
  MSIEMIME& taken = addRow(db.GetMIME(), mimeOf(u"text/taken", u"log"));

  std::vector<MSIEMIME> mimeValues{mimeOf(u"text/plain", u"other", kServer),
                                   mimeOf(u"text/rich", u""), mimeOf(u"text/taken", u"")};
  extensions.AddMIMEs(txt, treeOf(mimeValues));
  ASSERT_EQ(extensions.GetTempMIMEs().entries(), 2u) << "the taken content type is refused";
  for (RWCollectable* item : extensions.GetTempMIMEs()) {
    const auto& mime = static_cast<const MSIEMIME&>(*item);
    EXPECT_EQ(mime.GetExtension(), TalString(u"txt"));
    EXPECT_FALSE(mime.IsDeleted());
  }
  EXPECT_EQ(db.GetMIME().GetMIMEWithID(u"text/plain").GetCLSID(), TalString(kServer));
  EXPECT_EQ(taken.GetExtension(), TalString(u"log"));

  std::vector<MSIEVerb> verbValues{verbOf(u"", u"open", 1), verbOf(u"doc", u"print", 2)};
  extensions.AddVerbs(txt, treeOf(verbValues));
  RWBTree verbs;
  extensions.GetVerbs(verbs, txt);
  EXPECT_EQ(verbs.entries(), 2u);
  EXPECT_EQ(itemsOf(extensions.GetTempVerbs()), itemsOf(verbs));
  EXPECT_TRUE(db.GetVerb().IsModified());
}

TEST_F(RowsByOwnerTest, ChangedMIMEsAndVerbsReplaceTheExtensionsSet) {
  ODLEXDatabase& db = openPackage();
  ODLEXTExtension& extensions = db.GetExtension();
  ODLEXTMIME& mimes = db.GetMIME();
  MSIEExtension& txt = addRow(extensions, MSIEExtension(u"txt", u"MainExe"));
  MSIEMIME& plain = addRow(mimes, mimeOf(u"text/plain", u"txt", kServer));
  MSIEMIME& old = addRow(mimes, mimeOf(u"text/old", u"txt"));
  MSIEMIME& other = addRow(mimes, mimeOf(u"text/log", u"log"));
  MSIEVerb& open = addRow(db.GetVerb(), verbOf(u"txt", u"open", 1, u"&Open"));
  MSIEVerb& print = addRow(db.GetVerb(), verbOf(u"txt", u"print", 2));

  std::vector<MSIEMIME> mimeValues{mimeOf(u"text/plain", u"", kOtherServer),
                                   mimeOf(u"text/new", u"")};
  EXPECT_TRUE(extensions.ChangeMIMEs(txt, treeOf(mimeValues)));
  EXPECT_EQ(plain.GetCLSID(), TalString(kOtherServer)) << "changed in place";
  EXPECT_TRUE(old.IsDeleted());
  EXPECT_FALSE(other.IsDeleted()) << "rows of other extensions stay";
  MSIEMIME& added = mimes.GetMIMEWithID(u"text/new");
  EXPECT_EQ(added.GetExtension(), TalString(u"txt"));
  EXPECT_EQ(itemsOf(extensions.GetTempMIMEs()), (std::set<RWCollectable*>{&plain, &added}));
  EXPECT_FALSE(extensions.ChangeMIMEs(txt, treeOf(mimeValues))) << "the same set again";
  EXPECT_EQ(itemsOf(extensions.GetTempMIMEs()), (std::set<RWCollectable*>{&plain, &added}));

  std::vector<MSIEVerb> verbValues{verbOf(u"", u"open", 3, u"&Open"), verbOf(u"", u"edit", 1)};
  EXPECT_TRUE(extensions.ChangeVerbs(txt, treeOf(verbValues)));
  EXPECT_EQ(open.GetSequence(), NullableSignedShort(3));
  EXPECT_TRUE(print.IsDeleted());
  EXPECT_EQ(db.GetVerb().GetDefaultVerb(txt).GetVerb(), TalString(u"edit"));
  EXPECT_EQ(extensions.GetTempVerbs().entries(), 2u);
}

}  // namespace
}  // namespace odlex::test
