// The Registry table object: lookups and the text of a registry value.

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"
#include "tables/RowQueries.h"

MSIERegistry& ODLEXTRegistry::GetRegistryWithID(const TalString& id) {
  return FindOrThrow(GetTable().Find(id), ODLEXDatabaseError::eRegistryNotFound);
}

MSIEComponent& ODLEXTRegistry::GetComponent(const MSIERegistry& row) {
  return odlex::tables::followReference(GetDatabase().GetComponent().Lookup(row.GetComponent()),
                                        kType, row, ODLEXDatabaseError::eComponentNotFound);
}

RWBTree& ODLEXTRegistry::GetRegistries(RWBTree& out, const MSIEComponent& component) {
  return odlex::tables::collectRowsOfComponent(GetEntries(), out, component);
}

TalString ODLEXTRegistry::GetRootText(short root) const {
  static const char16_t* const kRoots[] = {u"HKCR", u"HKCU", u"HKLM", u"HKU"};
  if (root == -1)
    return currentUserBaseName;
  return root >= 0 && root <= 3 ? TalString(kRoots[root]) : TalString();
}

TalString ODLEXTRegistry::GetRegistryString(const MSIERegistry& row) const {
  std::u16string text = GetRootText(row.GetRoot()).u16();
  text += u'\\';
  text += row.GetKey().u16();
  text += u'\\';
  text += row.GetName().u16().empty() ? std::u16string(u"(Default)") : row.GetName().u16();
  return TalString(text);
}

TalString ODLEXTRegistry::GetKeyPath(const TalString& id) {
  return GetRegistryString(GetRegistryWithID(id));
}

bool ODLEXTRegistry::IsRegistryInComponentKeyPath(const MSIERegistry& row) {
  const MSIEComponent* component = GetDatabase().GetComponent().Lookup(row.GetComponent());
  return component && component->GetKeyPath() == row.GetRegistryID() &&
         (component->GetAttributes() & msidbComponentAttributesRegistryKeyPath) != 0;
}
