#pragma once
// ODLEXDatabaseInfo: the product facts of a database that an authoring interface shows on one
// page, read from the Property table and the summary information when the database is opened
// (ODLEXDatabase::GetDatabaseInfo) and written back by ODLEXDatabase::SetDatabaseInfo.

#include "odlex/support/TalString.h"

class ODLEXDatabaseInfo {
 public:
  // When a save gives the package a new package code. Reading a database gives 1 when its
  // ZrKeyword row AutoUpdateMsiPackageCode is "TRUE" (any case), else 0; ask-the-host (2) is
  // only ever set by the host, through SetDatabaseInfo, and lasts while the database is open.
  enum ePackageCodePolicy : int {
    ePackageCodeNever = 0,
    ePackageCodeAlways = 1,
    ePackageCodeAskHost = 2,
  };

  int packageCodePolicy = ePackageCodeNever;  // ZrKeyword AutoUpdateMsiPackageCode = TRUE: 1
  TalString productName;                      // ProductName
  TalString contact;                          // ARPCONTACT
  TalString productVersion;                   // PRODUCTVERSION
  TalString productCode;         // ProductCode (a merge module's ModuleID); else the package code
  TalString packageCode;         // the summary information's revision number
  TalString productID;           // ProductID
  int estimatedSize = 0;         // ARPSIZE, in kilobytes: 0 when absent or not a number
  TalString productIcon;         // ARPPRODUCTICON
  TalString manufacturer;        // Manufacturer
  TalString aboutURL;            // ARPURLINFOABOUT
  TalString helpLink;            // ARPHELPLINK
  TalString helpTelephone;       // ARPHELPTELEPHONE
  TalString readme;              // ARPREADME
  TalString updateURL;           // ARPURLUPDATEINFO
  TalString comments;            // ARPCOMMENTS
  int allUsers = 0;              // ALLUSERS: empty 0, "1" 1, "2" 2
  bool systemComponent = false;  // ARPSYSTEMCOMPONENT = "1"
  bool noRemove = false;         // ARPNOREMOVE = "1"
  bool noModify = false;         // ARPNOMODIFY = "1"
  bool noRepair = false;         // ARPNOREPAIR = "1"
  bool noUserName = false;       // NOUSERNAME = "1"
  bool noCompanyName = false;    // NOCOMPANYNAME = "1"
  TalString userName;            // USERNAME
  TalString companyName;         // COMPANYNAME
  TalString upgradeCode;         // UpgradeCode
  bool packageCodeChanged = false;  // SetDatabaseInfo changed the package code since opening

  bool operator==(const ODLEXDatabaseInfo&) const = default;
};
