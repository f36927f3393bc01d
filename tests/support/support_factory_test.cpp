#include <gtest/gtest.h>

#include <memory>

#include "odlex/support/RWFactory.h"

namespace {

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
