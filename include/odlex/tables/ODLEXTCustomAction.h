#pragma once
// The CustomAction table object: the common edits, lookups, the split of an action's Type into
// its bit groups, and the product's own actions.
//
// The product's own actions are six entry points of one custom-action DLL, stored in the
// package's Binary table (ODLEXTBinary::GetOrvaneCustomAction) from the path the host sets once
// for the process (ODLEXDatabase::SetOrvaneCustomAction):
//
//   action                           Type    entry point                    placed
//   ZrInstallInitialize              0x0001  InstallInitialize              after InstallInitialize
//   ZrTextFileInitialize             0x0001  TextFileInitialize             before InstallFinalize
//   ZrTextFileInstallChanges         0x0401  TextFileInstallChanges         before InstallFinalize
//   ZrRemoveTextFileInstallChanges   0x0401  RemoveTextFileInstallChanges   before InstallFinalize
//   ZrReportInstallSuccess           0x0401  ReportInstallSuccess           before InstallFinalize
//   ZrReportInstallFailure           0x0501  ReportInstallFailure           before InstallFinalize
//
// Each Add<action>() operation, in this order:
//   1. gets the DLL's Binary row; when there is none to be had (no DLL path set, a path without
//      a separator, a DLL that cannot be read) it does nothing at all;
//   2. the two text-file change actions first take ZrTextFileInitialize out of
//      InstallExecuteSequence (it must run after them);
//   3. adds the CustomAction row (Source: the Binary row's name, Target: the entry point); a row
//      the table already holds stays as it is, and scheduling goes on regardless;
//   4. the two reporting actions add ZrInstallInitialize, which they depend on;
//   5. schedules the action, unless it is already in the table:
//      - a package, in InstallExecuteSequence, at GetGoodSequenceAfter("InstallInitialize") or
//        GetGoodSequenceBefore("InstallFinalize"); when that gives 0 (no free number next to the
//        anchor) the action stays unscheduled, silently. When one of the text-file change
//        actions was just scheduled, ZrTextFileInitialize is put back before InstallFinalize;
//      - a merge module, in ModuleInstallExecuteSequence, with no number, BaseAction the anchor
//        and After 1 (after InstallInitialize) or 0 (before InstallFinalize). For the first four
//        actions the anchor itself is added first, at 1500, when the table lacks it.
// Repeating an operation changes no sequence number.

#include "odlex/msi/CustomActionType.h"
#include "odlex/tables/ODLEXTRowTable.h"

struct ODLEXProductAction;

class ODLEXTCustomAction : public ODLEXTRowTable<ODLEXTCustomAction, ODLEXTObject::eCustomAction> {
 public:
  // Adds a row of `row`'s Action and Type (with an empty Action, under a key made by the table:
  // "CustomAction<n>") and copies its Source and Target. A key a live row holds is refused
  // without an error: the temp entries are then empty.
  void Add(const MSIECustomAction& row);

  // The row of `action`; code 28 when there is none.
  MSIECustomAction& FindCustomActionWithID(const TalString& action);

  // The bit groups of `row`'s Type, each masked in place (not shifted down): what it runs
  // (0x0007), where its code is (0x0030), how its result is handled (0x00C0), when it is
  // scheduled (0x0700) and whether it runs without impersonation (0x0800). Higher bits are in
  // none of them.
  static void GetSeparateTypes(unsigned short& executableType, unsigned short& sourceType,
                               unsigned short& returnProcessing, unsigned short& scheduling,
                               unsigned short& noImpersonate, const MSIECustomAction& row);

  // The product's own actions (see above).
  void AddZrInstallInitialize();
  void AddTextFileInitialize();
  void AddTextFileInstallChanges();
  void AddRemoveTextFileInstallChanges();
  void AddReportInstallSuccess();
  void AddReportInstallFailure();

 private:
  void AddProductAction(const ODLEXProductAction& action);
  void ScheduleInPackage(const ODLEXProductAction& action);
  void ScheduleInModule(const ODLEXProductAction& action);
};
