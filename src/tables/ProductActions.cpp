// The product's own custom actions: their CustomAction rows, the Binary row of their DLL, and
// their place in the execute sequence of a package or a merge module (ODLEXTCustomAction.h).

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/support/Path.h"
#include "odlex/tables/ODLEXTables.h"

// One product action and how it is added and scheduled.
struct ODLEXProductAction {
  const char16_t* key;
  unsigned short type;
  const char16_t* entryPoint;
  bool afterInstallInitialize;  // else before InstallFinalize
  bool textFileChanges;         // ZrTextFileInitialize is taken out first and put back after
  bool reporting;               // needs ZrInstallInitialize; its anchor is never added
};

namespace {

constexpr const char16_t* kTextFileInitialize = u"ZrTextFileInitialize";
// The number a merge module's missing anchor action is added at.
constexpr short kModuleAnchorSequence = 1500;

constexpr ODLEXProductAction kInstallInitialize{
    u"ZrInstallInitialize", 0x0001, u"InstallInitialize", true, false, false};
constexpr ODLEXProductAction kTextInitialize{
    kTextFileInitialize, 0x0001, u"TextFileInitialize", false, false, false};
constexpr ODLEXProductAction kTextChanges{
    u"ZrTextFileInstallChanges", 0x0401, u"TextFileInstallChanges", false, true, false};
constexpr ODLEXProductAction kRemoveTextChanges{
    u"ZrRemoveTextFileInstallChanges", 0x0401, u"RemoveTextFileInstallChanges", false, true, false};
constexpr ODLEXProductAction kReportSuccess{
    u"ZrReportInstallSuccess", 0x0401, u"ReportInstallSuccess", false, false, true};
constexpr ODLEXProductAction kReportFailure{
    u"ZrReportInstallFailure", 0x0501, u"ReportInstallFailure", false, false, true};

const char16_t* anchorOf(const ODLEXProductAction& action) {
  return action.afterInstallInitialize ? u"InstallInitialize" : u"InstallFinalize";
}

// Whether `action` is in `sequence`: the lookup's not-found error means no.
bool isScheduled(ODLEXSequence& sequence, const TalString& action) {
  try {
    sequence.GetSequenceWithID(action);
    return true;
  } catch (const ODLEXDatabaseError&) {
    return false;
  }
}

}  // namespace

MSIEBinary& ODLEXTBinary::GetOrvaneCustomAction() {
  const TalString path = ODLEXDatabase::GetOrvaneCustomActionDLL();
  if (path.u16().empty() || odlex::path::LastSeparator(path) == RW_NPOS)
    throw ODLEXDatabaseError(ODLEXDatabaseError::eBinaryNotFound);
  if (MSIEBinary* held = GetTable().Find(odlex::path::FileName(path)))
    return *held;
  // The lower layer names the row by the path's file name and reads the file's bytes.
  MSIEBinary* added = GetTable().Add(path, path, false);
  if (!added)
    throw ODLEXDatabaseError(ODLEXDatabaseError::eBinaryNotFound);
  SetTempEntries(added);
  Revive(*added);
  return *added;
}

void ODLEXTCustomAction::AddProductAction(const ODLEXProductAction& action) {
  MSIECustomAction row(action.key, static_cast<msidbCustomActionType>(action.type));
  const MSIEBinary* binary = nullptr;
  try {
    binary = &GetDatabase().GetBinary().GetOrvaneCustomAction();
  } catch (const ODLEXDatabaseError&) {
    return;
  }
  if (action.textFileChanges) {
    ODLEXTInstallExecuteSequence& sequence = GetDatabase().GetInstallExecuteSequence();
    try {
      sequence.Delete(sequence.GetSequenceWithID(kTextFileInitialize));
    } catch (const ODLEXDatabaseError&) {
      // Not scheduled: nothing to take out.
    }
  }
  row.SetSource(binary->GetName());
  row.SetTarget(action.entryPoint);
  Add(row);
  if (action.reporting)
    AddZrInstallInitialize();
  if (GetDatabase().IsMergeModule())
    ScheduleInModule(action);
  else
    ScheduleInPackage(action);
}

void ODLEXTCustomAction::ScheduleInPackage(const ODLEXProductAction& action) {
  ODLEXTInstallExecuteSequence& sequence = GetDatabase().GetInstallExecuteSequence();
  if (isScheduled(sequence, action.key))
    return;
  const short number = action.afterInstallInitialize
                           ? sequence.GetGoodSequenceAfter(anchorOf(action))
                           : sequence.GetGoodSequenceBefore(anchorOf(action));
  if (number == 0)
    return;
  MSISequenceEntry entry(action.key);
  entry.SetSequence(number);
  sequence.Add(entry);
  if (action.textFileChanges)
    AddTextFileInitialize();
}

void ODLEXTCustomAction::ScheduleInModule(const ODLEXProductAction& action) {
  ODLEXTModuleInstallExecuteSequence& sequence = GetDatabase().GetModuleInstallExecuteSequence();
  const TalString anchor(anchorOf(action));
  if (!action.reporting && !isScheduled(sequence, anchor)) {
    MSIModuleSequenceEntry entry(anchor);
    entry.SetSequence(kModuleAnchorSequence);
    sequence.Add(entry);
  }
  if (isScheduled(sequence, action.key))
    return;
  MSIModuleSequenceEntry entry(action.key);
  entry.SetBaseAction(anchor);
  entry.SetAfter(action.afterInstallInitialize ? 1 : 0);
  sequence.Add(entry);
}

void ODLEXTCustomAction::AddZrInstallInitialize() {
  AddProductAction(kInstallInitialize);
}

void ODLEXTCustomAction::AddTextFileInitialize() {
  AddProductAction(kTextInitialize);
}

void ODLEXTCustomAction::AddTextFileInstallChanges() {
  AddProductAction(kTextChanges);
}

void ODLEXTCustomAction::AddRemoveTextFileInstallChanges() {
  AddProductAction(kRemoveTextChanges);
}

void ODLEXTCustomAction::AddReportInstallSuccess() {
  AddProductAction(kReportSuccess);
}

void ODLEXTCustomAction::AddReportInstallFailure() {
  AddProductAction(kReportFailure);
}
