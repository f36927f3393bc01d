// Lookups and collectors of the Class, ProgId, TypeLib, MIME and Verb table objects, and the
// Extension table object's edits of an extension's MIME and Verb rows.

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"
#include "tables/RowQueries.h"

using odlex::tables::collectRowsOfComponent;
using odlex::tables::collectRowsWithValue;
using odlex::tables::followReference;

namespace {

// The live rows of `entries` (MIME or Verb rows) that belong to `extension`.
template <class Row>
RWBTree& collectRowsOfExtension(const RWBTree& entries, RWBTree& out,
                                const MSIEExtension& extension) {
  return collectRowsWithValue<Row>(entries, out, &Row::GetExtension, extension.GetExtension());
}

// A free-standing copy of `row` that belongs to the extension `name`.
template <class Row>
Row rowOfExtension(const Row& row, const TalString& name) {
  Row copy(row);
  copy.SetExtension(name);
  return copy;
}

// The live row of `table` with the key of `values`, or null.
template <class Table>
typename Table::Entry* liveRowWithKey(Table& table, const typename Table::Entry& values) {
  auto* row = static_cast<typename Table::Entry*>(table.GetEntries().find(&values));
  return row && !row->IsDeleted() ? row : nullptr;
}

// Calls `edit(values)` for each row of `rows` that is a row of `table`, as a row of `extension`,
// and collects into `kept` what the edit left in the temp entries of `table`.
template <class Table, class Edit>
void forEachRowOfExtension(Table& table, const MSIEExtension& extension, const RWBTree& rows,
                           RWBTree& kept, Edit edit) {
  using Row = typename Table::Entry;
  const TalString name = extension.GetExtension();
  const RWBTree values = rows;  // the caller's tree may be the table's own
  for (RWCollectable* item : values) {
    const auto* row = dynamic_cast<const Row*>(item);
    if (!row)
      continue;
    edit(rowOfExtension(*row, name));
    for (RWCollectable* left : table.GetTempEntries())
      kept.insert(left);
  }
}

template <class Table>
void addRowsOfExtension(Table& table, const MSIEExtension& extension, const RWBTree& rows) {
  RWBTree added;
  forEachRowOfExtension(table, extension, rows, added,
                        [&](const typename Table::Entry& values) { table.Add(values); });
  table.SetTempEntries(added);
}

template <class Table>
bool changeRowsOfExtension(Table& table, const MSIEExtension& extension, const RWBTree& rows) {
  using Row = typename Table::Entry;
  RWBTree before;
  collectRowsOfExtension<Row>(table.GetEntries(), before, extension);
  bool changed = false;
  RWBTree kept;
  forEachRowOfExtension(table, extension, rows, kept, [&](const Row& values) {
    if (Row* existing = liveRowWithKey(table, values)) {
      changed = table.Change(*existing, values) || changed;
    } else {
      table.Add(values);
      changed = table.GetTempEntries().entries() != 0 || changed;
    }
  });
  for (RWCollectable* item : before) {
    if (!kept.find(item)) {
      table.Delete(*static_cast<Row*>(item));
      changed = true;
    }
  }
  table.SetTempEntries(kept);
  return changed;
}

}  // namespace

MSIEClass& ODLEXTClass::GetClassWithID(const TalString& clsid) {
  return FindOrThrow(LookupWithID(clsid), ODLEXDatabaseError::eClassNotFound);
}

MSIEClass* ODLEXTClass::LookupWithID(const TalString& clsid) {
  return GetTable().FindByCLSID(clsid);
}

RWBTree& ODLEXTClass::GetClasses(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

// A version-independent ProgId names no class of its own: it is registered under the class of
// its parent, which may itself name its parent. The chain is followed as far as the table has
// rows, and never round a cycle.
MSIEClass& ODLEXTProgId::GetClass(const MSIEProgId& row) {
  const MSIEProgId* current = &row;
  for (std::size_t step = 0; current && step <= GetEntries().entries(); ++step) {
    if (!current->GetClass().isNull())
      return followReference(GetDatabase().GetClass().LookupWithID(current->GetClass()), kType, row,
                             ODLEXDatabaseError::eClassNotFound);
    if (current->GetProgIdParent().isNull())
      break;
    current = Lookup(current->GetProgIdParent());
  }
  throw ODLEXDatabaseErrorWithEntry(kType, row, ODLEXDatabaseError::eClassNotFound);
}

MSIEIcon& ODLEXTProgId::GetIcon(const MSIEProgId& row) {
  return followReference(GetDatabase().GetIcon().Lookup(row.GetIcon()), kType, row,
                         ODLEXDatabaseError::eIconNotFound);
}

RWBTree& ODLEXTTypeLib::GetTypeLibs(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

NullableLong ODLEXTTypeLib::GetVersionNullable(const MSIETypeLib& row) {
  const NullableLong version = row.GetVersion();
  if (!version.IsNull() && (version.Get() < 0 || version.Get() > kMaxVersion))
    throw ODLEXDatabaseError(ODLEXDatabaseError::eTypeLibVersionFailed);
  return version;
}

TalString ODLEXTTypeLib::GetVersionString(const MSIETypeLib& row) {
  const NullableLong version = GetVersionNullable(row);
  if (version.IsNull())
    return TalString();
  return TalString::Format(u"%d.%d", version.Get() >> 8, version.Get() & 0xFF);
}

MSIEMIME& ODLEXTMIME::GetMIMEWithID(const TalString& contentType) {
  return FindOrThrow(GetTable().Find(contentType), ODLEXDatabaseError::eMIMENotFound);
}

RWBTree& ODLEXTMIME::GetMIMEs(RWBTree& out, const MSIEExtension& extension) {
  return collectRowsOfExtension<MSIEMIME>(GetEntries(), out, extension);
}

MSIEVerb& ODLEXTVerb::GetDefaultVerb(const MSIEExtension& extension) {
  RWBTree verbs;
  MSIEVerb* best = nullptr;
  for (RWCollectable* item : GetVerbs(verbs, extension)) {
    auto* verb = static_cast<MSIEVerb*>(item);
    if (!verb->GetSequence().IsNull() && (!best || verb->GetSequence() < best->GetSequence()))
      best = verb;
  }
  if (!best)
    throw ODLEXDatabaseErrorWithEntry(ODLEXTObject::eExtension, extension,
                                      ODLEXDatabaseError::eDefaultVerbNotFound);
  return *best;
}

RWBTree& ODLEXTVerb::GetVerbs(RWBTree& out, const MSIEExtension& extension) {
  return collectRowsOfExtension<MSIEVerb>(GetEntries(), out, extension);
}

RWBTree& ODLEXTExtension::GetExtensions(RWBTree& out, const MSIEComponent& component) {
  return collectRowsOfComponent(GetEntries(), out, component);
}

RWBTree& ODLEXTExtension::GetMIMEs(RWBTree& out, const MSIEExtension& extension) {
  return GetDatabase().GetMIME().GetMIMEs(out, extension);
}

RWBTree& ODLEXTExtension::GetVerbs(RWBTree& out, const MSIEExtension& extension) {
  return GetDatabase().GetVerb().GetVerbs(out, extension);
}

void ODLEXTExtension::AddMIMEs(const MSIEExtension& extension, const RWBTree& mimes) {
  addRowsOfExtension(GetDatabase().GetMIME(), extension, mimes);
}

void ODLEXTExtension::AddVerbs(const MSIEExtension& extension, const RWBTree& verbs) {
  addRowsOfExtension(GetDatabase().GetVerb(), extension, verbs);
}

bool ODLEXTExtension::ChangeMIMEs(const MSIEExtension& extension, const RWBTree& mimes) {
  return changeRowsOfExtension(GetDatabase().GetMIME(), extension, mimes);
}

bool ODLEXTExtension::ChangeVerbs(const MSIEExtension& extension, const RWBTree& verbs) {
  return changeRowsOfExtension(GetDatabase().GetVerb(), extension, verbs);
}

RWBTree& ODLEXTExtension::GetTempMIMEs() {
  return GetDatabase().GetMIME().GetTempEntries();
}

RWBTree& ODLEXTExtension::GetTempVerbs() {
  return GetDatabase().GetVerb().GetTempEntries();
}
