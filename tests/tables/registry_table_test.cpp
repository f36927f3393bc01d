// The Registry table object on the wixl package: MainExecutable writes three HKLM values, and
// ProgramMenuDir one HKCU value that is its key path.

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

class RegistryTableTest : public DatabaseTest {};

TEST_F(RegistryTableTest, RootsTextsAndKeyPaths) {
  const BuiltPackage& built = testPackage(PackageKind::kWixl);
  ASSERT_FALSE(built.file.empty()) << built.error;
  std::filesystem::copy_file(built.file, file("wixl.msi"));
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(file("wixl.msi")));
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

}  // namespace
}  // namespace odlex::test
