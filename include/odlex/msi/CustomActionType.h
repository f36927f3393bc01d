#pragma once
// The bits of a custom action's Type column, with the installer's names and values. The low six
// bits say what the action runs and where its code comes from; the rest how it is scheduled and
// how its result is handled.

enum msidbCustomActionType {
  // What the action runs.
  msidbCustomActionTypeDll = 0x0001,
  msidbCustomActionTypeExe = 0x0002,
  msidbCustomActionTypeTextData = 0x0003,
  msidbCustomActionTypeJScript = 0x0005,
  msidbCustomActionTypeVBScript = 0x0006,
  msidbCustomActionTypeInstall = 0x0007,
  // Where its code is: a Binary row (0), an installed file, a folder, a property.
  msidbCustomActionTypeBinaryData = 0x0000,
  msidbCustomActionTypeSourceFile = 0x0010,
  msidbCustomActionTypeDirectory = 0x0020,
  msidbCustomActionTypeProperty = 0x0030,
  // Result handling.
  msidbCustomActionTypeContinue = 0x0040,
  msidbCustomActionTypeAsync = 0x0080,
  // Scheduling.
  msidbCustomActionTypeFirstSequence = 0x0100,
  msidbCustomActionTypeOncePerProcess = 0x0200,
  msidbCustomActionTypeClientRepeat = 0x0300,
  msidbCustomActionTypeInScript = 0x0400,
  msidbCustomActionTypeRollback = 0x0100,
  msidbCustomActionTypeCommit = 0x0200,
  // Execution.
  msidbCustomActionTypeNoImpersonate = 0x0800,
  msidbCustomActionTypeTSAware = 0x4000,
  msidbCustomActionType64BitScript = 0x1000,
  msidbCustomActionTypeHideTarget = 0x2000,
  msidbCustomActionTypePatchUninstall = 0x8000,
};
