#pragma once
// Table objects of the COM registration and file-association tables: Class, ProgId, TypeLib,
// Extension, MIME and Verb. A Class row registers a COM server (CLSID) of a component; a ProgId
// names a class; a TypeLib row registers a type library of a component. An Extension row
// associates a file-name extension with a component's program; the MIME and Verb rows of an
// extension refer to it by the extension's text (their Extension_ column), so they belong to
// every Extension row of that text.

#include "odlex/tables/ODLEXTRowTable.h"

class ODLEXTClass : public ODLEXTRowTable<ODLEXTClass, ODLEXTObject::eClass> {
 public:
  // The first live row (in key order: context, then component) of the class `clsid`; code 15
  // when the class is not registered.
  MSIEClass& GetClassWithID(const TalString& clsid);
  // The same row, or null: the lookup other tables use to follow a class reference.
  MSIEClass* LookupWithID(const TalString& clsid);
  // Inserts the live Class rows of `component` into `out`; returns `out`.
  RWBTree& GetClasses(RWBTree& out, const MSIEComponent& component);
};

class ODLEXTProgId : public ODLEXTRowTable<ODLEXTProgId, ODLEXTObject::eProgId> {
 public:
  // The Class row of the program identifier's class (the first, as GetClassWithID gives it).
  // A version-independent program identifier (ProgId_Parent set, Class_ null) is registered
  // under its parent's class, found through the chain of parents.
  // ODLEXDatabaseErrorWithEntry (this table, `row`, code 15) when neither the row nor a parent
  // names a class, a parent is missing, or the class named is not registered.
  MSIEClass& GetClass(const MSIEProgId& row);
  // The Icon row of the program identifier; ODLEXDatabaseErrorWithEntry (this table, `row`,
  // code 14) when the row names no icon or one that does not exist.
  MSIEIcon& GetIcon(const MSIEProgId& row);
};

class ODLEXTTypeLib : public ODLEXTRowTable<ODLEXTTypeLib, ODLEXTObject::eTypeLib> {
 public:
  // The largest value the Version column can encode: major 0xFFFF, minor 0xFF.
  static constexpr long kMaxVersion = 0xFFFFFF;

  // Inserts the live TypeLib rows of `component` into `out`; returns `out`.
  RWBTree& GetTypeLibs(RWBTree& out, const MSIEComponent& component);
  // The row's Version column: the major version times 256 plus the minor version, or null when
  // the row has none (the column may be null). Code 8 for a value that encodes no version
  // (negative or above kMaxVersion).
  NullableLong GetVersionNullable(const MSIETypeLib& row);
  // The version as "major.minor" in decimal (the major version in the bits above the low byte,
  // the minor version in the low byte): 0x0102 gives "1.2"; empty for a null version. Code 8 as
  // GetVersionNullable.
  TalString GetVersionString(const MSIETypeLib& row);
};

class ODLEXTMIME : public ODLEXTRowTable<ODLEXTMIME, ODLEXTObject::eMIME> {
 public:
  // The row of the content type `contentType`; code 26 when there is none.
  MSIEMIME& GetMIMEWithID(const TalString& contentType);
  // Inserts the live MIME rows of `extension` into `out`; returns `out`.
  RWBTree& GetMIMEs(RWBTree& out, const MSIEExtension& extension);
};

class ODLEXTVerb : public ODLEXTRowTable<ODLEXTVerb, ODLEXTObject::eVerb> {
 public:
  // The default verb of `extension`: of its live verbs that have a Sequence, the one with the
  // lowest (the first in key order among equals); verbs without a Sequence are never the
  // default. ODLEXDatabaseErrorWithEntry (the Extension table, `extension`, code 13) when there
  // is none.
  MSIEVerb& GetDefaultVerb(const MSIEExtension& extension);
  // Inserts the live Verb rows of `extension` into `out`; returns `out`.
  RWBTree& GetVerbs(RWBTree& out, const MSIEExtension& extension);
};

// Besides its own rows, the Extension table object edits the MIME and Verb rows of an extension
// as a whole, through the common edits of the MIME and Verb table objects. The rows handed in
// are taken as values: each is given the extension's text as its Extension_ column; rows of
// other tables in the tree are ignored. Afterwards the MIME (Verb) table object's temp entries
// hold the rows that the edit left in place for the values handed in (GetTempMIMEs,
// GetTempVerbs), instead of only the last one.
class ODLEXTExtension : public ODLEXTRowTable<ODLEXTExtension, ODLEXTObject::eExtension> {
 public:
  // Inserts the live Extension rows of `component` into `out`; returns `out`.
  RWBTree& GetExtensions(RWBTree& out, const MSIEComponent& component);
  // ODLEXTMIME::GetMIMEs and ODLEXTVerb::GetVerbs of the database.
  RWBTree& GetMIMEs(RWBTree& out, const MSIEExtension& extension);
  RWBTree& GetVerbs(RWBTree& out, const MSIEExtension& extension);

  // Adds each row of `mimes` (`verbs`) as a row of `extension`. A row whose key a live row
  // already has is refused, as by Add, and is not among the temp entries.
  void AddMIMEs(const MSIEExtension& extension, const RWBTree& mimes);
  void AddVerbs(const MSIEExtension& extension, const RWBTree& verbs);
  // Makes the rows of `mimes` (`verbs`) the MIME (Verb) rows of `extension`: a row whose key a
  // live row has changes that row (Change), another is added, and the extension's live rows
  // that the tree does not name are deleted. True when anything changed.
  bool ChangeMIMEs(const MSIEExtension& extension, const RWBTree& mimes);
  bool ChangeVerbs(const MSIEExtension& extension, const RWBTree& verbs);

  // The temp entries of the database's MIME (Verb) table object.
  RWBTree& GetTempMIMEs();
  RWBTree& GetTempVerbs();
};
