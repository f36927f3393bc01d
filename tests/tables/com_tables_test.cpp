// The operations of the Class, ProgId, TypeLib, Extension, MIME and Verb table objects, on a
// copy of the idt package (components MainExe, Docs, GermanDocs and Helpers), which has
// none of these tables: each test adds the rows it needs.

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

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

class ComTablesTest : public DatabaseTest {};

// TypeLib and Extension collect a component's rows through the same shared collector as Class.
TEST_F(ComTablesTest, RowsOfAComponentLeaveOutDeletedRows) {
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
TEST_F(ComTablesTest, ProgIdFollowsItsClassOrParentAndIcon) {
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

TEST_F(ComTablesTest, TypeLibVersionIsMajorAboveTheLowByteAndMinorInIt) {
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

TEST_F(ComTablesTest, MIMEsAndVerbsBelongToTheExtensionsText) {
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

TEST_F(ComTablesTest, AddedMIMEsAndVerbsBecomeTheExtensionsAndTheTempEntries) {
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

TEST_F(ComTablesTest, ChangedMIMEsAndVerbsReplaceTheExtensionsSet) {
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
