// The operations of the ControlEvent and RadioButton table objects.

#include "common/DatabaseTest.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

class UITablesTest : public DatabaseTest {};

MSIERadioButton buttonOf(const char16_t* property, short order) {
  MSIERadioButton row(property, order);
  row.SetValue(TalString::FromInt(order));
  return row;
}

TEST_F(UITablesTest, EventsOfAControlWithOneArgumentAndOfADialog) {
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

TEST_F(UITablesTest, RadioGroupChangedUntilWrittenWhenAButtonIsAddedOrDeleted) {
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

}  // namespace
}  // namespace odlex::test
