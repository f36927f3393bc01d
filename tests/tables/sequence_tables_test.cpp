// The sequence tables and what is scheduled in them: stepping through them and finding free
// numbers next to an action (on a copy of the idt package); the CustomAction table object and the
// product's own actions, their rows, the Binary row of their DLL, and their scheduling in a
// package (wixl builds one) and in a merge module (msibuild builds one from .idt text).

#include <array>

#include "common/RowText.h"
#include "tables/TableTestSupport.h"

namespace odlex::test {
namespace {

class SequenceTablesTest : public DatabaseTest {};

// The twelve tables share one template: one table of a package and one of a merge module.
constexpr ODLEXTObject::typeID kSequenceTables[] = {ODLEXTObject::eInstallExecuteSequence,
                                                    ODLEXTObject::eModuleAdvtUISequence};

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
    // Numbers compare as signed 16-bit values: negative numbers (the UI sequences' exit dialogs)
    // come before every positive one. Tie1 and Tie2 share a number; Tie1 comes first in the
    // table's (key) order.
    fill(table, {{u"First", -32767},
                 {u"Exit", -1},
                 {u"Early", 10},
                 {u"P", 98},
                 {u"Q", 99},
                 {u"A", 100},
                 {u"B", 101},
                 {u"C", 102},
                 {u"Tie2", 150},
                 {u"Tie1", 150},
                 {u"D", 200},
                 {u"Welcome", 32766},
                 {u"Last", 32767}});
    const auto action = [&](const char16_t* name) -> MSISequenceEntry& {
      return table.GetSequenceWithID(name);
    };
    EXPECT_EQ(table.GetNextSequence(action(u"C")).GetAction(), u"Tie1");
    EXPECT_EQ(table.GetPrevSequence(action(u"D")).GetAction(), u"Tie1");
    EXPECT_EQ(table.GetNextSequence(action(u"Tie1")).GetAction(), u"D");
    EXPECT_EQ(table.GetPrevSequence(action(u"Early")).GetAction(), u"Exit");

    const struct {
      const char16_t* action;
      short after, before;
    } free[] = {
        {u"A", 103, 97},         // runs 98..102 on both sides
        {u"Q", 103, 97},         //
        {u"Exit", 0, -2},        // below -1, not 65534
        {u"Welcome", 0, 32765},  // the run reaches the last action
        {u"Last", 0, 32765},     // which has no number after it
        {u"First", -32766, 0},   // nor the first one before it
        {u"Missing", 0, 0},
    };
    for (const auto& c : free) {
      EXPECT_EQ(table.GetGoodSequenceAfter(c.action), c.after) << TalString(c.action).ToUtf8();
      EXPECT_EQ(table.GetGoodSequenceBefore(c.action), c.before) << TalString(c.action).ToUtf8();
    }
    EXPECT_EQ(thrownCode([&] { table.GetSequenceWithID(u"Missing"); }), 31);
    EXPECT_EQ(thrownCode([&] { table.GetNextSequence(action(u"Last")); }), 30);
    EXPECT_EQ(thrownCode([&] { table.GetPrevSequence(action(u"First")); }), 30);

    // A deleted row is never returned, and its number is free.
    table.Delete(action(u"C"));
    EXPECT_EQ(thrownCode([&] { table.GetSequenceWithID(u"C"); }), 31);
    EXPECT_EQ(table.GetNextSequence(action(u"B")).GetAction(), u"Tie1");
    EXPECT_EQ(table.GetGoodSequenceAfter(u"A"), 102);
    EXPECT_TRUE(table.IsModified());
  }
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

class ProductActionsTest : public DatabaseTest {
 protected:
  void SetUp() override {
    DatabaseTest::SetUp();
    dll_ = dir_ / "bin" / "zrca.dll";
    std::filesystem::create_directories(dll_.parent_path());
    writeFileBytes(dll_, "MZ dll bytes");
  }
  void TearDown() override {
    ODLEXDatabase::SetOrvaneCustomAction(TalString());
    DatabaseTest::TearDown();
  }

  void useDll() { ODLEXDatabase::SetOrvaneCustomAction(text(dll_)); }

  std::filesystem::path dll_;
};

// The sequence number of `action`, -1 when it is not scheduled.
int numberOf(ODLEXSequence& sequence, const char16_t* action) {
  try {
    return sequence.GetSequenceWithID(action).GetSequence();
  } catch (const ODLEXDatabaseError&) {
    return -1;
  }
}

TEST_F(ProductActionsTest, CustomActionEditsAndTypes) {
  ODLEXTCustomAction& actions = openPackage().GetCustomAction();
  MSIECustomAction values(u"", msidbCustomActionTypeExe);
  values.SetSource(u"Tool");
  values.SetTarget(u"/quiet");
  MSIECustomAction& made = addRow(actions, values);
  EXPECT_EQ(made.GetActionID(), u"CustomAction1") << "an empty key is made by the table";
  EXPECT_EQ(made.GetTarget(), u"/quiet");
  EXPECT_EQ(&actions.FindCustomActionWithID(u"CustomAction1"), &made);
  EXPECT_EQ(thrownCode([&] { actions.FindCustomActionWithID(u"customaction1"); }), 28);

  const struct {
    unsigned short type, executable, source, result, scheduling, noImpersonate;
  } types[] = {
      {0x0501, 1, 0, 0, 0x0500, 0},
      {0x0C62, 2, 0x20, 0x40, 0x0400, 0x0800},
      {0x7FFF, 7, 0x30, 0xC0, 0x0700, 0x0800},  // bits above 0x0800 are in none
  };
  for (const auto& t : types) {
    std::array<unsigned short, 5> parts{9, 9, 9, 9, 9};
    ODLEXTCustomAction::GetSeparateTypes(
        parts[0], parts[1], parts[2], parts[3], parts[4],
        MSIECustomAction(u"A", static_cast<msidbCustomActionType>(t.type)));
    EXPECT_EQ(parts, (std::array{t.executable, t.source, t.result, t.scheduling, t.noImpersonate}))
        << t.type;
  }
}

// Without a DLL path, or with one that has no separator, the operations add nothing anywhere.
// With a DLL but no free number next to the anchor the action row is made but stays unscheduled.
TEST_F(ProductActionsTest, NoDllNoActionsNoFreeNumberNoScheduling) {
  ODLEXDatabase& db = openPackage();
  for (const char* path : {"", "zrca.dll"}) {
    ODLEXDatabase::SetOrvaneCustomAction(TalString::FromUtf8(path));
    EXPECT_EQ(thrownCode([&] { db.GetBinary().GetOrvaneCustomAction(); }), 29) << path;
    db.GetCustomAction().AddTextFileInitialize();
    db.GetCustomAction().AddReportInstallFailure();
    EXPECT_TRUE(db.GetCustomAction().GetEntries().isEmpty()) << path;
    EXPECT_EQ(numberOf(db.GetInstallExecuteSequence(), u"ZrTextFileInitialize"), -1);
  }

  useDll();
  ODLEXTInstallExecuteSequence& sequence = db.GetInstallExecuteSequence();
  fill(sequence, {{u"InstallInitialize", 1}, {u"InstallFinalize", 2}});
  db.GetCustomAction().AddZrInstallInitialize();
  db.GetCustomAction().AddTextFileInitialize();
  for (const char16_t* action : {u"ZrInstallInitialize", u"ZrTextFileInitialize"}) {
    EXPECT_EQ(numberOf(sequence, action), -1);
    EXPECT_EQ(thrownCode([&] { db.GetCustomAction().FindCustomActionWithID(action); }), -1);
  }
}

TEST_F(ProductActionsTest, ScheduledBeforeInstallFinalizeInAPackage) {
  ODLEXDatabase& db = openWixl();
  useDll();
  ODLEXTCustomAction& actions = db.GetCustomAction();
  ODLEXTInstallExecuteSequence& sequence = db.GetInstallExecuteSequence();
  const int finalize = numberOf(sequence, u"InstallFinalize");
  const int initialize = numberOf(sequence, u"InstallInitialize");
  ASSERT_GT(finalize, 3);
  const auto expect = [&](std::initializer_list<std::pair<const char16_t*, int>> numbers) {
    for (const auto& [action, number] : numbers)
      EXPECT_EQ(numberOf(sequence, action), number) << TalString(action).ToUtf8();
  };

  actions.AddTextFileInitialize();
  expect({{u"ZrTextFileInitialize", finalize - 1}});
  // The changes action takes the initializer's place; the initializer goes before it again.
  actions.AddTextFileInstallChanges();
  expect({{u"ZrTextFileInstallChanges", finalize - 1}, {u"ZrTextFileInitialize", finalize - 2}});
  // Already scheduled: the initializer is taken out and not put back by this call.
  actions.AddTextFileInstallChanges();
  expect({{u"ZrTextFileInstallChanges", finalize - 1}, {u"ZrTextFileInitialize", -1}});
  actions.AddTextFileInitialize();
  actions.AddReportInstallFailure();
  actions.AddReportInstallFailure();
  expect({{u"ZrTextFileInstallChanges", finalize - 1},
          {u"ZrTextFileInitialize", finalize - 2},
          {u"ZrReportInstallFailure", finalize - 3},
          {u"ZrInstallInitialize", initialize + 1}});

  // Types 0x0001, 0x0401 and 0x0501: a DLL in the Binary table, deferred or on commit.
  const std::pair<const char16_t*, const char*> rows[] = {
      {u"ZrTextFileInitialize", "ZrTextFileInitialize\t1\tzrca.dll\tTextFileInitialize\t"},
      {u"ZrTextFileInstallChanges",
       "ZrTextFileInstallChanges\t1025\tzrca.dll\tTextFileInstallChanges\t"},
      {u"ZrReportInstallFailure", "ZrReportInstallFailure\t1281\tzrca.dll\tReportInstallFailure\t"},
      {u"ZrInstallInitialize", "ZrInstallInitialize\t1\tzrca.dll\tInstallInitialize\t"},
  };
  for (const auto& [action, row] : rows)
    EXPECT_EQ(rowText(actions.FindCustomActionWithID(action)), row);
  // The Binary row is made once, from the file, and not read again.
  writeFileBytes(dll_, "changed bytes");
  actions.AddRemoveTextFileInstallChanges();
  const std::string bytes = "MZ dll bytes";
  EXPECT_EQ(db.GetBinary().GetBinaryWithID(u"zrca.dll").GetData(),
            MSIBinary(std::vector<unsigned char>(bytes.begin(), bytes.end())));
}

// A merge module places the actions relative to their anchor, adding a missing anchor at 1500
// except for the reporting actions.
TEST_F(ProductActionsTest, PlacedByBaseActionInAMergeModule) {
  writeFileBytes(file("idt/ModuleInstallExecuteSequence.idt"),
                 "Action\tSequence\tBaseAction\tAfter\tCondition\r\n"
                 "s72\tI2\tS72\tI2\tS255\r\n"
                 "ModuleInstallExecuteSequence\tAction\r\n"
                 "InstallInitialize\t1400\t\t\t\r\n");
  ASSERT_TRUE(msibuildImport(file("module.msm"), idtFilesIn(file("idt"))));
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(file("module.msm")));
  ASSERT_TRUE(db.IsMergeModule());
  useDll();
  ODLEXTCustomAction& actions = db.GetCustomAction();
  ODLEXTModuleInstallExecuteSequence& sequence = db.GetModuleInstallExecuteSequence();

  actions.AddReportInstallSuccess();
  EXPECT_EQ(numberOf(sequence, u"InstallFinalize"), -1) << "reporting adds no anchor";
  actions.AddTextFileInitialize();
  actions.AddTextFileInstallChanges();

  // Action, Sequence, BaseAction, After, Condition; InstallInitialize was there and is left.
  std::vector<std::string> rows;
  for (RWCollectable* item : sequence.GetEntries())
    rows.push_back(rowText(static_cast<const MSIEntry&>(*item)));
  EXPECT_EQ(rows, (std::vector<std::string>{"InstallFinalize\t1500\t\t\t",
                                            "InstallInitialize\t1400\t\t\t",
                                            "ZrInstallInitialize\t\tInstallInitialize\t1\t",
                                            "ZrReportInstallSuccess\t\tInstallFinalize\t0\t",
                                            "ZrTextFileInitialize\t\tInstallFinalize\t0\t",
                                            "ZrTextFileInstallChanges\t\tInstallFinalize\t0\t"}));
}

// A text-file table that holds a live row schedules its actions when it is written; an empty
// one schedules nothing.
TEST_F(ProductActionsTest, TextFileTablesScheduleTheirActionsWhenWritten) {
  const struct {
    std::function<void(ODLEXDatabase&)> addRow;
    const char16_t* action;  // null: none scheduled
  } cases[] = {
      {[](ODLEXDatabase& db) { db.GetZrTextFile().Add(MSIEZrTextFile(u"Edit")); },
       u"ZrTextFileInstallChanges"},
      {[](ODLEXDatabase& db) { db.GetZrRemoveTextFile().Add(MSIEZrRemoveTextFile(u"Undo")); },
       u"ZrRemoveTextFileInstallChanges"},
      {[](ODLEXDatabase& db) {
         db.GetZrTextFile().Add(MSIEZrTextFile(u"Edit"));
         db.GetZrTextFile().Delete(*db.GetZrTextFile().Lookup(TalString(u"Edit")));
       },
       nullptr},
  };
  useDll();
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(testing::Message() << "case #" << i);
    ODLEXDatabase& db = openWixl("text" + std::to_string(i) + ".msi");
    cases[i].addRow(db);
    ASSERT_TRUE(db.SaveChanges());
    ODLEXTInstallExecuteSequence& sequence = db.GetInstallExecuteSequence();
    EXPECT_EQ(numberOf(sequence, u"ZrTextFileInitialize") > 0, cases[i].action != nullptr);
    if (cases[i].action) {
      EXPECT_GT(numberOf(sequence, cases[i].action), 0);
    }
  }
}

}  // namespace
}  // namespace odlex::test
