// The Component table object: adding, checking and changing components, their key paths,
// attributes, directory and features, and the deletion cascade.

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"

namespace {

bool hasBit(const MSIEComponent& c, int bit) {
  return (c.GetAttributes() & bit) != 0;
}

// A GUID as the installer takes one for a component: "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}"
// in upper-case hexadecimal.
bool isValidGuid(const TalString& guid) {
  const std::u16string& text = guid.u16();
  if (text.size() != 38 || text.front() != u'{' || text.back() != u'}')
    return false;
  for (std::size_t i = 1; i < 37; ++i) {
    const char16_t ch = text[i];
    if (i == 9 || i == 14 || i == 19 || i == 24) {
      if (ch != u'-')
        return false;
    } else if (!((ch >= u'0' && ch <= u'9') || (ch >= u'A' && ch <= u'F'))) {
      return false;
    }
  }
  return true;
}

}  // namespace

ODLEXComponentInfo::ODLEXComponentInfo(const MSIEComponent& row)
    : directoryID(row.GetDirectoryID()),
      keyPath(row.GetKeyPath()),
      componentGUID(row.GetComponentGUID()),
      condition(row.GetCondition()),
      runFrom(hasBit(row, msidbComponentAttributesSourceOnly) ? msidbComponentAttributesSourceOnly
              : hasBit(row, msidbComponentAttributesOptional) ? msidbComponentAttributesOptional
                                                              : msidbComponentAttributesLocalOnly),
      sharedDllRefCount(hasBit(row, msidbComponentAttributesSharedDllRefCount)),
      permanent(hasBit(row, msidbComponentAttributesPermanent)),
      neverOverwrite(hasBit(row, msidbComponentAttributesNeverOverwrite)),
      transitive(hasBit(row, msidbComponentAttributesTransitive)),
      odbcDataSource(hasBit(row, msidbComponentAttributesODBCDataSource)),
      registryKeyPath(hasBit(row, msidbComponentAttributesRegistryKeyPath)) {}

ODLEXComponentInfo::ODLEXComponentInfo(const ODLEXComponentInfo& other) {
  *this = other;
}

ODLEXComponentInfo& ODLEXComponentInfo::operator=(const ODLEXComponentInfo& other) {
  condition = other.condition;
  directoryID = other.directoryID;
  componentGUID = other.componentGUID;
  neverOverwrite = other.neverOverwrite;
  odbcDataSource = other.odbcDataSource;
  permanent = other.permanent;
  sharedDllRefCount = other.sharedDllRefCount;
  transitive = other.transitive;
  keyPath = other.keyPath;
  runFrom = other.runFrom;
  return *this;
}

ODLEXComponentInfo& ODLEXComponentInfo::operator=(const MSIEComponent& row) {
  return *this = ODLEXComponentInfo(row);
}

bool ODLEXComponentInfo::operator==(const ODLEXComponentInfo& other) const {
  return condition == other.condition && directoryID == other.directoryID &&
         componentGUID == other.componentGUID && neverOverwrite == other.neverOverwrite &&
         odbcDataSource == other.odbcDataSource && permanent == other.permanent &&
         sharedDllRefCount == other.sharedDllRefCount && transitive == other.transitive &&
         keyPath.u16() == other.keyPath.u16() && runFrom == other.runFrom &&
         registryKeyPath == other.registryKeyPath;
}

bool ODLEXComponentInfo::operator==(const MSIEComponent& row) const {
  return *this == ODLEXComponentInfo(row);
}

MSIEComponent& ODLEXTComponent::GetComponentWithID(const TalString& id) {
  return FindOrThrow(GetTable().FindByComponentID(id), ODLEXDatabaseError::eComponentNotFound);
}

void ODLEXTComponent::GetComponents(RWBTree& out) {
  out = GetTable().GetTable();
  FilterOutDeletedEntries(out, false);
}

void ODLEXTComponent::Add(const MSIEComponent& c) {
  MSIEComponent* row = GetTable().Add(c.GetComponentGUID(), c.GetDirectoryID(), false, false);
  SetTempEntries(row);
  if (!row)
    return;
  row->SetAttributes(c.GetAttributes());
  row->SetCondition(c.GetCondition());
  row->SetKeyPath(c.GetKeyPath());
  row->Modify();
  Modify(true);
  if (!IsMergeModule())
    return;
  for (RWCollectable* item : GetDatabase().GetModuleSignature().GetEntries()) {
    const auto& signature = static_cast<const MSIEModuleSignature&>(*item);
    if (signature.IsDeleted())
      continue;
    GetDatabase().GetModuleComponents().Add(MSIEModuleComponents(
        row->GetComponentID(), signature.GetModuleID(), signature.GetLanguage()));
    break;
  }
}

void ODLEXTComponent::Add(const MSIEComponent& c, const MSIEDirectory& dir) {
  ODLEXTDirectory& directories = GetDatabase().GetDirectory();
  if (!directories.Lookup(dir.GetDirectory())) {
    SetTempEntries(nullptr);
    return;
  }
  directories.Modify(true);
  MSIEComponent local(c);
  local.SetDirectoryID(dir.GetDirectory());
  Add(local);
}

void ODLEXTComponent::Add(unsigned int count, const MSIEDirectory& dir) {
  RWBTree made;
  for (unsigned int i = 0; i < count; ++i) {
    Add(MSIEComponent(u"littleBunny", GenerateGUID(), dir.GetDirectory()), dir);
    for (RWCollectable* row : GetTempEntries())
      made.insert(row);
  }
  SetTempEntries(made);
}

bool ODLEXTComponent::IsValid(const MSIEComponent& c, unsigned int& code) {
  code = 0;
  if (c.GetComponentGUID().u16().empty())
    code += 1;
  if (!isValidGuid(c.GetComponentGUID()))
    code += 4;
  if (HasKeyPath(c) && GetKeyPathString(c).u16().empty())
    code += 2;
  return code == 0;
}

bool ODLEXTComponent::Change(MSIEComponent& target, const MSIEComponent& values) {
  unsigned int code = 0;
  if (!IsValid(values, code))
    return false;
  bool changed = false;
  auto copy = [&](auto get, auto set) {
    if ((values.*get)() != (target.*get)()) {
      (target.*set)((values.*get)());
      changed = true;
    }
  };
  copy(&MSIEComponent::GetDirectoryID, &MSIEComponent::SetDirectoryID);
  copy(&MSIEComponent::GetComponentGUID, &MSIEComponent::SetComponentGUID);
  copy(&MSIEComponent::GetAttributes, &MSIEComponent::SetAttributes);
  copy(&MSIEComponent::GetCondition, &MSIEComponent::SetCondition);
  copy(&MSIEComponent::GetKeyPath, &MSIEComponent::SetKeyPath);
  SetTempEntries(&target);
  if (!changed)
    return false;
  target.Modify();
  target.SetDeleted(false);
  Modify(true);
  return true;
}

void ODLEXTComponent::Delete(MSIEComponent& c) {
  if (c.IsDeleted())
    return;
  ODLEXDatabase& db = GetDatabase();
  db.GetFile().Delete(c);
  db.GetRemoveFile().Delete(c);
  db.GetShortcut().Delete(c);
  db.GetRegistry().Delete(c);
  db.GetRemoveRegistry().Delete(c);
  db.GetServiceInstall().Delete(c);
  db.GetServiceControl().Delete(c);
  db.GetIniFile().Delete(c);
  db.GetRemoveIniFile().Delete(c);
  db.GetEnvironment().Delete(c);
  db.GetExtension().Delete(c);
  db.GetClass().Delete(c);
  db.GetTypeLib().Delete(c);
  db.GetODBCDriver().Delete(c);
  db.GetODBCDataSource().Delete(c);
  db.GetODBCTranslator().Delete(c);
  db.GetReserveCost().Delete(c);
  db.GetZrRemoveTextFile().Delete(c);
  db.GetZrTextFile().Delete(c);
  // A database that declares no schema holds only the tables of schema 100.
  const int version = db.GetVersion() == eSchemaNone ? eSchema100 : db.GetVersion();
  if (version >= eSchema110) {
    static_cast<ODLEXTComplus&>(db.GetTableObject(eComplus)).Delete(c);
    static_cast<ODLEXTIsolatedComponent&>(db.GetTableObject(eIsolatedComponent)).Delete(c);
  }
  if (version >= eSchema200) {
    db.GetMsiAssembly().Delete(c);
    db.GetMsiAssemblyName().Delete(c);
  }
  if (IsMergeModule())
    db.GetModuleComponents().Delete(c);
  c.Delete();
  c.Modify();
  Modify(true);
}

void ODLEXTComponent::Delete(const MSIEFeature& f, MSIEComponent& c) {
  GetDatabase().GetFeatureComponents().Delete(f, c);
}

bool ODLEXTComponent::HasKeyPath(const MSIEComponent& c) {
  return !c.GetKeyPath().u16().empty();
}

bool ODLEXTComponent::IsKeyPathForRegistry(const MSIEComponent& c) {
  return hasBit(c, msidbComponentAttributesRegistryKeyPath);
}

bool ODLEXTComponent::IsKeyPathForFiles(const MSIEComponent& c) {
  return !IsKeyPathForRegistry(c);
}

MSIEntry& ODLEXTComponent::GetKeyPath(const MSIEComponent& c) {
  if (IsKeyPathForFiles(c))
    return FindOrThrow(GetDatabase().GetFile().Lookup(c.GetKeyPath()),
                       ODLEXDatabaseError::eFileNotFound);
  return GetDatabase().GetRegistry().GetRegistryWithID(c.GetKeyPath());
}

TalString ODLEXTComponent::GetKeyPathString(const MSIEComponent& c) {
  if (!HasKeyPath(c))
    return TalString();
  try {
    if (IsKeyPathForFiles(c))
      return ODLEXTFile::GetLongFileName(static_cast<MSIEFile&>(GetKeyPath(c)).GetFileName());
    return GetDatabase().GetRegistry().GetKeyPath(c.GetKeyPath());
  } catch (const ODLEXDatabaseError& error) {
    throw ODLEXDatabaseErrorWithEntry(kType, c, error);
  }
}

void ODLEXTComponent::SetKeyPath(const MSIEFile& file, MSIEComponent& c) {
  c.SetKeyPath(file.GetFileID());
  setBit(c, msidbComponentAttributesRegistryKeyPath, false);
  c.Modify();
  Modify(true);
}

void ODLEXTComponent::SetKeyPath(const MSIERegistry& reg, MSIEComponent& c) {
  c.SetKeyPath(reg.GetRegistryID());
  setBit(c, msidbComponentAttributesRegistryKeyPath, true);
  c.Modify();
  Modify(true);
}

msidbComponentAttributes ODLEXTComponent::GetRunFrom(const MSIEComponent& c) {
  return ODLEXComponentInfo(c).runFrom;
}

bool ODLEXTComponent::IsSharedRefCount(const MSIEComponent& c) {
  return hasBit(c, msidbComponentAttributesSharedDllRefCount);
}
void ODLEXTComponent::SetSharedRefCount(MSIEComponent& c, bool on) {
  setBit(c, msidbComponentAttributesSharedDllRefCount, on);
}
bool ODLEXTComponent::IsPermanent(const MSIEComponent& c) {
  return hasBit(c, msidbComponentAttributesPermanent);
}
void ODLEXTComponent::SetPermanent(MSIEComponent& c, bool on) {
  setBit(c, msidbComponentAttributesPermanent, on);
}
bool ODLEXTComponent::IsNeverOverwrite(const MSIEComponent& c) {
  return hasBit(c, msidbComponentAttributesNeverOverwrite);
}
void ODLEXTComponent::SetNeverOverwrite(MSIEComponent& c, bool on) {
  setBit(c, msidbComponentAttributesNeverOverwrite, on);
}
bool ODLEXTComponent::IsTransitive(const MSIEComponent& c) {
  return hasBit(c, msidbComponentAttributesTransitive);
}
void ODLEXTComponent::SetTransitive(MSIEComponent& c, bool on) {
  setBit(c, msidbComponentAttributesTransitive, on);
}

void ODLEXTComponent::setBit(MSIEComponent& c, int bit, bool on) {
  const int value = c.GetAttributes();
  c.SetAttributes(static_cast<short>(on ? value | bit : value & ~bit));
}

MSIEDirectory& ODLEXTComponent::GetDirectory(const MSIEComponent& c) {
  MSIEDirectory* dir = GetDatabase().GetDirectory().Lookup(c.GetDirectoryID());
  if (!dir)
    throw ODLEXDatabaseErrorWithEntry(kType, c, ODLEXDatabaseError::eDirectoryNotFound);
  return *dir;
}

TalString ODLEXTComponent::GetTargetPath(const MSIEComponent& c) {
  return GetDirectory(c).GetTargetPath(false, true, false);
}

TalString ODLEXTComponent::GetSourcePath(const MSIEComponent& c) {
  return GetDirectory(c).GetSourcePath(false, true, false);
}

void ODLEXTComponent::GetFeatures(RWBTree& out, const MSIEComponent& c) {
  RWBTree linked;
  GetDatabase().GetFeatureComponents().GetFeatures(linked, c.GetComponentID(), false);
  for (RWCollectable* feature : linked)
    GetDatabase().GetFeature().GetParents(out, static_cast<const MSIEFeature&>(*feature), true);
}

void ODLEXTComponent::GetComponentsWithKeyFiles(RWBTree& out, const RWBTree& components) {
  for (RWCollectable* item : components) {
    auto* c = static_cast<MSIEComponent*>(item);
    if (c && HasKeyPath(*c) && IsKeyPathForFiles(*c))
      out.insert(c);
  }
}

void ODLEXTComponent::GetComponentsWithKeyRegistries(RWBTree& out, const RWBTree& components) {
  for (RWCollectable* item : components) {
    auto* c = static_cast<MSIEComponent*>(item);
    if (c && HasKeyPath(*c) && IsKeyPathForRegistry(*c))
      out.insert(c);
  }
}

bool ODLEXTComponent::DoesComponentHaveFiles(const MSIEComponent& c) {
  return GetDatabase().GetFile().DoesComponentHaveFiles(c);
}

void ODLEXTComponent::SetToComponentInfo(MSIEComponent& c, const ODLEXComponentInfo& info) {
  if (ODLEXComponentInfo(c) == info)
    return;
  Modify(true);
  c.SetComponentGUID(info.componentGUID);
  c.SetDirectoryID(info.directoryID);
  c.SetCondition(info.condition);
  c.SetKeyPath(info.keyPath);
  int bits = 0;
  bits |= info.neverOverwrite ? msidbComponentAttributesNeverOverwrite : 0;
  bits |= info.odbcDataSource ? msidbComponentAttributesODBCDataSource : 0;
  bits |= info.permanent ? msidbComponentAttributesPermanent : 0;
  bits |= info.sharedDllRefCount ? msidbComponentAttributesSharedDllRefCount : 0;
  bits |= info.transitive ? msidbComponentAttributesTransitive : 0;
  bits |= info.registryKeyPath ? msidbComponentAttributesRegistryKeyPath : 0;
  bits |= info.runFrom == msidbComponentAttributesSourceOnly ? msidbComponentAttributesSourceOnly
          : info.runFrom == msidbComponentAttributesOptional ? msidbComponentAttributesOptional
                                                             : 0;
  c.SetAttributes(static_cast<short>(bits));
  c.Modify();
}
