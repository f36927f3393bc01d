// Stepping through the twelve sequence tables and finding free numbers next to an action, on a
// copy of the idt package.

#include "common/DatabaseTest.h"

namespace odlex::test {
namespace {

class SequenceTablesTest : public DatabaseTest {};

constexpr ODLEXTObject::typeID kSequenceTables[] = {
    ODLEXTObject::eInstallExecuteSequence,       ODLEXTObject::eInstallUISequence,
    ODLEXTObject::eAdminExecuteSequence,         ODLEXTObject::eAdminUISequence,
    ODLEXTObject::eAdvtExecuteSequence,          ODLEXTObject::eAdvtUISequence,
    ODLEXTObject::eModuleInstallExecuteSequence, ODLEXTObject::eModuleInstallUISequence,
    ODLEXTObject::eModuleAdminExecuteSequence,   ODLEXTObject::eModuleAdminUISequence,
    ODLEXTObject::eModuleAdvtExecuteSequence,    ODLEXTObject::eModuleAdvtUISequence,
};

// Empties `table` and fills it with `rows` (action, number).
void fill(ODLEXSequence& table, std::initializer_list<std::pair<const char16_t*, short>> rows) {
  for (RWCollectable* row : table.GetEntries())
    static_cast<MSIEntry*>(row)->Delete();
  for (const auto& [action, number] : rows) {
    MSISequenceEntry entry(action);
    entry.SetSequence(number);
    table.Add(entry);
    ASSERT_EQ(table.GetTempEntries().entries(), 1u) << "refused";
  }
}

TEST_F(SequenceTablesTest, NeighboursAndFreeNumbers) {
  ODLEXDatabase& db = openPackage();
  for (ODLEXTObject::typeID type : kSequenceTables) {
    SCOPED_TRACE(type);
    auto& table = dynamic_cast<ODLEXSequence&>(db.GetTableObject(type));
    EXPECT_EQ(table.isA(), static_cast<RWClassID>(type));
    // Tie1 and Tie2 share a number; Tie1 comes first in the table's (key) order.
    fill(table, {{u"Early", 10},
                 {u"P", 98},
                 {u"Q", 99},
                 {u"A", 100},
                 {u"B", 101},
                 {u"C", 102},
                 {u"Tie2", 150},
                 {u"Tie1", 150},
                 {u"D", 200}});
    const auto action = [&](const char16_t* name) -> MSISequenceEntry& {
      return table.GetSequenceWithID(name);
    };
    EXPECT_EQ(table.GetNextSequence(action(u"C")).GetAction(), u"Tie1");
    EXPECT_EQ(table.GetPrevSequence(action(u"D")).GetAction(), u"Tie1");
    EXPECT_EQ(table.GetNextSequence(action(u"Tie1")).GetAction(), u"D");

    const struct {
      const char16_t* action;
      short after, before;
    } free[] = {
        {u"A", 103, 97},    // runs 98..102 on both sides
        {u"Q", 103, 97},    //
        {u"D", 0, 199},     // the last action has no number after it
        {u"Early", 11, 0},  // nor the first one before it
        {u"Missing", 0, 0},
    };
    for (const auto& c : free) {
      EXPECT_EQ(table.GetGoodSequenceAfter(c.action), c.after) << TalString(c.action).ToUtf8();
      EXPECT_EQ(table.GetGoodSequenceBefore(c.action), c.before) << TalString(c.action).ToUtf8();
    }
    EXPECT_EQ(thrownCode([&] { table.GetSequenceWithID(u"Missing"); }), 31);
    EXPECT_EQ(thrownCode([&] { table.GetNextSequence(action(u"D")); }), 30);
    EXPECT_EQ(thrownCode([&] { table.GetPrevSequence(action(u"Early")); }), 30);

    // A deleted row is never returned, and its number is free.
    table.Delete(action(u"C"));
    EXPECT_EQ(thrownCode([&] { table.GetSequenceWithID(u"C"); }), 31);
    EXPECT_EQ(table.GetNextSequence(action(u"B")).GetAction(), u"Tie1");
    EXPECT_EQ(table.GetGoodSequenceAfter(u"A"), 102);
    EXPECT_TRUE(table.IsModified());
  }
}

// Numbers compare as signed 16-bit values: negative numbers (the UI sequences' exit dialogs)
// come before every positive one.
TEST_F(SequenceTablesTest, NumbersAreSigned16Bit) {
  ODLEXDatabase& db = openPackage();
  ODLEXTInstallUISequence& table = db.GetInstallUISequence();
  fill(table, {{u"Exit", -1}, {u"Welcome", 32766}, {u"Last", 32767}, {u"Early", -32767}});
  EXPECT_EQ(thrownCode([&] { table.GetNextSequence(table.GetSequenceWithID(u"Last")); }), 30);
  EXPECT_EQ(table.GetNextSequence(table.GetSequenceWithID(u"Early")).GetAction(), u"Exit");
  EXPECT_EQ(table.GetGoodSequenceBefore(u"Exit"), -2);
  EXPECT_EQ(table.GetGoodSequenceAfter(u"Welcome"), 0) << "the run reaches the last action";
}

// Change takes a free-standing entry's columns by name, into a module table too.
TEST_F(SequenceTablesTest, ChangeByFreeStandingEntry) {
  ODLEXDatabase& db = openPackage();
  ODLEXTModuleInstallExecuteSequence& table = db.GetModuleInstallExecuteSequence();
  fill(table, {{u"A", 100}});
  MSISequenceEntry values(u"A");
  values.SetSequence(100);
  EXPECT_FALSE(table.Change(table.GetSequenceWithID(u"A"), values));
  values.SetCondition(u"NOT Installed");
  EXPECT_TRUE(table.Change(table.GetSequenceWithID(u"A"), values));
  EXPECT_EQ(table.GetSequenceWithID(u"A").GetCondition(), u"NOT Installed");
  values.SetAction(u"B");
  EXPECT_TRUE(table.Change(table.GetSequenceWithID(u"A"), values));
  EXPECT_EQ(thrownCode([&] { table.GetSequenceWithID(u"A"); }), 31);
  EXPECT_EQ(table.GetSequenceWithID(u"B").GetSequence(), 100);
}

}  // namespace
}  // namespace odlex::test
