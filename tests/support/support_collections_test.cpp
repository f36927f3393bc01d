#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "odlex/support/RWBTree.h"
#include "odlex/support/RWFactory.h"
#include "odlex/support/RWOrdered.h"
#include "odlex/support/TalCollectableString.h"

namespace {

// Counts live objects so that the *AndDestroy operations can be checked.
class Item : public TalCollectableString {
 public:
  explicit Item(const char16_t* text, int* live = nullptr)
      : TalCollectableString(text), live_(live) {
    if (live_)
      ++*live_;
  }
  ~Item() override {
    if (live_)
      --*live_;
  }

 private:
  int* live_;
};

std::vector<TalString> Texts(const RWBTree& tree) {
  std::vector<TalString> out;
  for (RWCollectable* item : tree) {
    out.push_back(*static_cast<TalCollectableString*>(item));
  }
  return out;
}

// Insert, and append (insert made cheap for items in order), keep items in compareTo order:
// out of order or equal, append does as insert. A copy made on the way keeps what it held.
TEST(RWBTree, KeepsItemsInCompareToOrderAndRefusesEqualOnes) {
  for (auto add : {&RWBTree::insert, &RWBTree::append}) {
    SCOPED_TRACE(add == &RWBTree::insert ? "insert" : "append");
    Item b(u"b"), d(u"d"), a(u"a"), c(u"c"), otherD(u"d"), otherB(u"b");
    RWBTree tree;
    EXPECT_EQ((tree.*add)(&b), &b);
    EXPECT_EQ((tree.*add)(&d), &d);
    EXPECT_EQ((tree.*add)(&a), &a);
    // An equal item is not added; the one already held is returned.
    EXPECT_EQ((tree.*add)(&otherD), &d);
    EXPECT_EQ((tree.*add)(nullptr), nullptr);
    const RWBTree shared = tree;
    EXPECT_EQ((tree.*add)(&c), &c);
    EXPECT_EQ((tree.*add)(&otherB), &b);
    EXPECT_EQ(tree.entries(), 4u);
    EXPECT_EQ(Texts(tree), (std::vector<TalString>{u"a", u"b", u"c", u"d"}));
    EXPECT_EQ(Texts(shared), (std::vector<TalString>{u"a", u"b", u"d"}));

    const TalCollectableString probe(u"b");
    EXPECT_EQ(tree.find(&probe), &b);
    EXPECT_TRUE(tree.contains(&probe));
    EXPECT_EQ(tree.remove(&probe), &b);
    EXPECT_FALSE(tree.contains(&probe));
    EXPECT_EQ(tree.remove(&probe), nullptr);
    tree.clear();
    EXPECT_TRUE(tree.isEmpty());
  }
}

TEST(RWBTree, DestroyingOperationsDeleteAndPlainOnesDoNot) {
  int live = 0;
  RWBTree tree;
  for (const char16_t* text : {u"x", u"y", u"z"}) {
    tree.insert(new Item(text, &live));
  }
  const TalCollectableString y(u"y");
  tree.removeAndDestroy(&y);
  EXPECT_EQ(live, 2);
  const TalCollectableString x(u"x");
  const std::unique_ptr<RWCollectable> kept(tree.remove(&x));
  EXPECT_EQ(live, 2);  // removed, not deleted
  tree.clearAndDestroy();
  EXPECT_EQ(live, 1);
  EXPECT_TRUE(tree.isEmpty());
}

TEST(RWBTreeIterator, WalksInOrderResetsAndToleratesRemovingTheCurrentItem) {
  Item a(u"a"), b(u"b"), c(u"c");
  RWBTree tree;
  tree.insert(&b);
  tree.insert(&c);
  tree.insert(&a);
  RWBTreeIterator it(tree);
  EXPECT_EQ(it.key(), nullptr);
  EXPECT_EQ(it(), &a);
  EXPECT_EQ(it.key(), &a);
  tree.remove(&a);
  EXPECT_EQ(it(), &b);
  EXPECT_EQ(it(), &c);
  EXPECT_EQ(it(), nullptr);
  EXPECT_EQ(it.key(), nullptr);
  EXPECT_EQ(it(), nullptr);
  it.reset();
  EXPECT_EQ(it(), &b);
}

TEST(RWBTree, MixedClassesHaveAConsistentOrder) {
  RWCollectable plain;
  TalCollectableString text(u"t");
  RWBTree tree;
  tree.insert(&text);
  tree.insert(&plain);
  EXPECT_EQ(tree.entries(), 2u);
  EXPECT_EQ(tree.find(&plain), &plain);
  EXPECT_EQ(tree.find(&text), &text);
}

TEST(RWOrdered, KeepsInsertionOrderAndMatchesWithIsEqual) {
  Item b(u"b"), a(u"a"), b2(u"b");
  RWOrdered list;
  list.insert(&b);
  list.append(&a);
  list.prepend(&b2);
  list.insertAt(99, &a);  // the same pointer twice is allowed
  EXPECT_EQ(list.entries(), 4u);
  EXPECT_EQ(list.first(), &b2);
  EXPECT_EQ(list.last(), &a);
  EXPECT_EQ(list.at(1), &b);
  EXPECT_EQ(list.at(4), nullptr);

  const TalCollectableString probe(u"b");
  EXPECT_EQ(list.index(&probe), 0u);
  EXPECT_EQ(list.find(&probe), &b2);
  EXPECT_EQ(list.remove(&probe), &b2);
  EXPECT_EQ(list.find(&probe), &b);
  EXPECT_EQ(list.removeAt(9), nullptr);
  EXPECT_EQ(list.removeAt(0), &b);
  std::vector<RWCollectable*> seen(list.begin(), list.end());
  EXPECT_EQ(seen, (std::vector<RWCollectable*>{&a, &a}));
}

TEST(RWOrdered, ClearAndDestroyDeletesARepeatedPointerOnce) {
  int live = 0;
  RWOrdered list;
  RWCollectable* item = new Item(u"x", &live);
  list.append(item);
  list.append(item);
  list.append(new Item(u"y", &live));
  list.clearAndDestroy();
  EXPECT_EQ(live, 0);
  EXPECT_TRUE(list.isEmpty());
}

constexpr RWClassID kWidgetID = 4147;

class Widget : public RWCollectable {
 public:
  RWClassID isA() const override { return kWidgetID; }
};

RWCollectable* CreateNothing() {
  return nullptr;
}

TEST(RWFactory, CreatesByIdAndByNameUntilRemoved) {
  RWFactory factory;
  factory.addFunction(&odlex::CreateDefault<Widget>, kWidgetID, "Widget");
  EXPECT_EQ(factory.entries(), 1u);
  EXPECT_EQ(factory.classID("Widget"), kWidgetID);
  EXPECT_EQ(factory.stringID(kWidgetID), RWStringID("Widget"));

  const std::unique_ptr<RWCollectable> byId(factory.create(kWidgetID));
  ASSERT_NE(byId, nullptr);
  EXPECT_EQ(byId->isA(), kWidgetID);
  const std::unique_ptr<RWCollectable> byName(factory.create(RWStringID("Widget")));
  ASSERT_NE(byName, nullptr);
  EXPECT_NE(byName, byId);

  factory.removeFunction(kWidgetID);
  EXPECT_EQ(factory.create(kWidgetID), nullptr);
  EXPECT_EQ(factory.create(RWStringID("Widget")), nullptr);  // the name went with the id
  EXPECT_EQ(factory.classID("Widget"), RWUnknownClassID);
  factory.removeFunction("Widget");  // removing twice is harmless
  EXPECT_EQ(factory.entries(), 0u);
}

TEST(RWFactory, ReRegistrationReplacesAndUnknownIdsGiveNull) {
  RWFactory factory;
  factory.addFunction(&CreateNothing, 7, "Old");
  factory.addFunction(&odlex::CreateDefault<Widget>, 7, "New");
  EXPECT_EQ(factory.classID("Old"), RWUnknownClassID);
  EXPECT_EQ(factory.getFunction(RWStringID("New")), &odlex::CreateDefault<Widget>);
  delete factory.create(7);
  EXPECT_EQ(factory.create(8), nullptr);
  EXPECT_EQ(factory.stringID(8), RWStringID());
  factory.resize(factory.buckets() * 4);
  EXPECT_EQ(factory.entries(), 1u);
  EXPECT_EQ(factory.getFunction(7), &odlex::CreateDefault<Widget>);
}

TEST(RWFactory, RegistrarsAndFreeFunctionsActOnTheProcessWideFactory) {
  RWFactory* factory = getRWFactory();
  ASSERT_NE(factory, nullptr);
  EXPECT_EQ(factory, getRWFactory());
  {
    const odlex::FactoryRegistration registration(&odlex::CreateDefault<Widget>, kWidgetID,
                                                  "Widget");
    const std::unique_ptr<RWCollectable> made(factory->create(RWStringID("Widget")));
    EXPECT_NE(made, nullptr);
  }
  EXPECT_EQ(factory->create(kWidgetID), nullptr);
  EXPECT_EQ(factory->classID("Widget"), RWUnknownClassID);

  rwAddToFactory(&odlex::CreateDefault<Widget>, 500, "W500");
  EXPECT_EQ(getRWFactory()->classID("W500"), 500);
  rwRemoveFromFactory(RWStringID("W500"));
  EXPECT_EQ(getRWFactory()->getFunction(500), nullptr);
}

}  // namespace
