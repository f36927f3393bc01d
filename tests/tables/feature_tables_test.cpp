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

// An edit of a feature's attributes never breaks the tree; IsValid names what a damaged row
// breaks.
TEST_F(FeatureTablesTest, InfoEditsAndValidity) {
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

}  // namespace
}  // namespace odlex::test
