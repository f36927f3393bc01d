// The Registry table object on the wixl package: MainExecutable writes three HKLM values, and
// ProgramMenuDir one HKCU value that is its key path.

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

class RegistryTableTest : public DatabaseTest {};

TEST_F(RegistryTableTest, RootsTextsAndKeyPaths) {
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
TEST_F(RegistryTableTest, TreeOfKeys) {
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
