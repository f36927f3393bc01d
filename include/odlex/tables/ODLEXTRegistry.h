#pragma once
// The Registry table object: registry values by key, by component, and as the text an
// installer author reads ("HKLM\Software\Vendor\Name").

#include "odlex/tables/ODLEXTRowTable.h"

class ODLEXTRegistry : public ODLEXTRowTable<ODLEXTRegistry, ODLEXTObject::eRegistry> {
 public:
  // The row `id`; code 19 when there is none.
  MSIERegistry& GetRegistryWithID(const TalString& id);
  // The component of `row`; ODLEXDatabaseErrorWithEntry(Registry, row, 21) when it is missing.
  MSIEComponent& GetComponent(const MSIERegistry& row);
  // Inserts the live rows of `component` into `out`; returns `out`.
  RWBTree& GetRegistries(RWBTree& out, const MSIEComponent& component);
  // The name of a Root value: HKCR, HKCU, HKLM or HKU for 0 to 3; for -1 (the current user
  // of a per-user installation, the machine of a per-machine one) the name set by
  // SetCurrentUserBaseKey, "HKCU/HKLM" until then; empty for any other value.
  TalString GetRootText(short root) const;
  // The name GetRootText gives root -1, for a host that knows how the package installs.
  void SetCurrentUserBaseKey(const TalString& name) { currentUserBaseName = name; }
  // "ROOT\Key\Name" of `row`, the name "(Default)" when null; the text of the row `id` (code 19
  // when there is none).
  TalString GetRegistryString(const MSIERegistry& row) const;
  TalString GetKeyPath(const TalString& id);
  // Whether `row` is the key path of its component.
  bool IsRegistryInComponentKeyPath(const MSIERegistry& row);

 private:
  TalString currentUserBaseName = u"HKCU/HKLM";
};
