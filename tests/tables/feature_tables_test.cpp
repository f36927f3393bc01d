// The feature tree of the wixl package (Complete > Documentation, Data; Complete installs
// MainExecutable and ProgramMenuDir, Documentation ReadmeDoc and GermanStrings, Data DataFiles):
// walks, the links to components, unlinking, and the host's refusal.

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

using FeatureTablesTest = DatabaseTest;

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

TEST_F(FeatureTablesTest, WalksLinksAndUnlinking) {
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

}  // namespace
}  // namespace odlex::test
