#pragma once
// The error records the table objects and the database object throw, by value, for failures
// they detect themselves. A record holds only a number (eCodeMeaning): hosts map the numbers to
// their own texts. ODLEXDatabaseErrorWithEntry adds the row and table concerned;
// ODLEXDatabaseErrorWithErrorCode a status returned by an installer or lower-layer call.

#include "odlex/tables/ODLEXTObject.h"

class MSIEntry;

class ODLEXDatabaseError {
 public:
  // The reasons, by number. The numbers are fixed: hosts compare with them.
  enum eCodeMeaning : int {
    eNoPendingError = 0,              // GetTalError found no lower-layer error
    eNoProgressSink = 1,              // no single or dual progress sink is set
    eDatabaseNotOpen = 2,             // no open database has that file path
    eDatabaseOpenFailed = 3,          // the database could not be opened, copied or read
    eNoFactory = 4,                   // no collectable factory at start-up
    ePropertyNotFound = 5,            // no Property row with that name
    eUserCancelled = 7,               // the host's permission callback refused to go on
    eTypeLibVersionFailed = 8,        // a TypeLib version could not be read
    eFileAddFailed = 9,               // a File row could not be added
    eKeyPathNotFound = 10,            // a component's key path row does not exist
    eRootFeatureNotFound = 11,        // no root feature
    eCreateFolderNotFound = 12,       // no such CreateFolder row
    eDefaultVerbNotFound = 13,        // an extension has no default verb
    eIconNotFound = 14,               // no such Icon row
    eClassNotFound = 15,              // no such Class row
    eFontNotFound = 16,               // no such Font row
    eSelfRegNotFound = 17,            // no such SelfReg row
    eDirectoryNotFound = 18,          // no such Directory row
    eRegistryNotFound = 19,           // no such Registry row
    eFileNotFound = 20,               // no such File row
    eComponentNotFound = 21,          // no such Component row
    eFeatureNotFound = 22,            // no such Feature row
    eDataSourceNotFound = 23,         // no such ODBCDataSource row
    eSignatureNotFound = 24,          // no row with that signature
    eShortcutNotFound = 25,           // no such Shortcut row
    eMIMENotFound = 26,               // no such MIME row
    eMediaNotFound = 27,              // no such Media row
    eCustomActionNotFound = 28,       // no such CustomAction row
    eBinaryNotFound = 29,             // no such Binary row
    eNoAdjacentAction = 30,           // no next or previous action in a sequence
    eActionNotFound = 31,             // no action with that name in a sequence
    eTableNotFound = 32,              // no such table
    eBindImageNotFound = 33,          // no such BindImage row
    eDuplicateFileNotFound = 34,      // no DuplicateFile row
    eMoveFileNotFound = 35,           // no such MoveFile row
    eSummaryInformationMissing = 36,  // no summary information entry
    eModuleIgnoreTableNotFound = 37,  // no such ModuleIgnoreTable row
    eTransformViewNotFound = 38,      // no such transform-view row
    eFileVersionFailed = 39,          // a file's version could not be shown
    eStorageNotFound = 40,            // no such storage
    eCannotCreateTransform = 41,      // a transform cannot be created on this database
    eGenerateTransformFailed = 42,
    eTransformServiceFailed = 43,  // generating the transform failed (with a status)
    eApplyTransformFailed = 44,
    ePropertyFetchFailed = 45,    // reading a property: no row fetched
    ePropertyExecuteFailed = 46,  // reading a property: the query did not run
    ePropertyViewFailed = 47,     // reading a property: the query did not open
    eMergeStep48 = 48,            // the successive steps of merging a module
    eMergeStep49 = 49,
    eMergeStep50 = 50,
    eFileHashFailed = 50,  // a file hash could not be computed (with a status)
    eMergeStep51 = 51,
    eMergeStep53 = 53,
    eMergeStep54 = 54,
    eMergeStep57 = 57,
    eMergeStep58 = 58,
    eFileSFPCatalogNotFound = 59,  // no such FileSFPCatalog row
    eTableNotInSchema = 60,        // the table cannot exist in this database's schema
    eMsiAssemblyNotFound = 61,
    eMsiAssemblyNameNotFound = 62,
    eCertificateNotFound = 63,
    eFileHashNotFound = 64,
    eKeywordNotFound = 65,
    eDigitalSignatureNotFound = 66,
    eLaunchConditionNotFound = 67,
    eExternalFilesNotFound = 68,
    eImageFamiliesNotFound = 69,
    eTargetImagesNotFound = 70,
    ePropertiesNotFound = 71,
    eUpgradedImagesNotFound = 72,
    eFamilyFileRangesNotFound = 73,
    eTargetFilesOptionalDataNotFound = 74,
    eUpgradedFilesOptionalDataNotFound = 75,
    eUpgradedFilesToIgnoreNotFound = 76,
    eInternalFailure = 77,
    eComplusNotFound = 78,     // a component has no Complus row
    eChangeLogNotFound = 80,   // no such change-log row
    eStorageFileRefused = 81,  // making a file of a storage is not supported
  };

  ODLEXDatabaseError() = default;
  ODLEXDatabaseError(eCodeMeaning code) : code_(code) {}
  ODLEXDatabaseError(const ODLEXDatabaseError&) = default;
  ODLEXDatabaseError& operator=(const ODLEXDatabaseError&) = default;
  ODLEXDatabaseError& operator=(eCodeMeaning code) {
    code_ = code;
    return *this;
  }
  virtual ~ODLEXDatabaseError() = default;

  operator eCodeMeaning() const { return code_; }
  bool operator==(eCodeMeaning code) const { return code_ == code; }
  bool operator!=(eCodeMeaning code) const { return code_ != code; }

 private:
  eCodeMeaning code_ = eNoPendingError;
};

// A failure about one row: the row (held by reference: it must outlive the record, as rows of
// a loaded table do) and the table it belongs to.
class ODLEXDatabaseErrorWithEntry : public ODLEXDatabaseError {
 public:
  ODLEXDatabaseErrorWithEntry(ODLEXTObject::typeID type, const MSIEntry& entry, eCodeMeaning code)
      : ODLEXDatabaseError(code), type_(type), entry_(&entry) {}
  ODLEXDatabaseErrorWithEntry(const ODLEXDatabaseErrorWithEntry&) = default;
  ODLEXDatabaseErrorWithEntry& operator=(const ODLEXDatabaseErrorWithEntry&) = default;
  using ODLEXDatabaseError::operator=;
  ~ODLEXDatabaseErrorWithEntry() override = default;

  operator const MSIEntry&() const { return *entry_; }
  ODLEXTObject::typeID GetType() const { return type_; }

 private:
  ODLEXTObject::typeID type_;
  const MSIEntry* entry_;
};

// A failure with the status an installer or lower-layer call returned.
class ODLEXDatabaseErrorWithErrorCode : public ODLEXDatabaseError {
 public:
  ODLEXDatabaseErrorWithErrorCode(eCodeMeaning code, unsigned int status)
      : ODLEXDatabaseError(code), status_(status) {}
  ODLEXDatabaseErrorWithErrorCode(const ODLEXDatabaseErrorWithErrorCode&) = default;
  ODLEXDatabaseErrorWithErrorCode& operator=(const ODLEXDatabaseErrorWithErrorCode&) = default;
  using ODLEXDatabaseError::operator=;
  ~ODLEXDatabaseErrorWithErrorCode() override = default;

  operator unsigned int() const { return status_; }

 private:
  unsigned int status_;
};
