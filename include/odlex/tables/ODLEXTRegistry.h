#pragma once
// The Registry table object: registry values by key, by component, as the text an installer
// author reads ("HKLM\Software\Vendor\Name"), and as the tree of keys an editor shows.

#include <map>
#include <string>
#include <vector>

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

  // The LockPermissions rows that secure `row` (Table "Registry", LockObject the row's key).
  RWBTree& GetPermissions(RWBTree& out, const MSIERegistry& row);
  // Makes the row's permissions those of `permissions`, as
  // ODLEXTLockPermissions::SetLockPermissions does.
  void SetPermissions(const MSIERegistry& row, const RWBTree& permissions);

  // The registry as a tree of keys. A key's path is its root's name (GetRootText) and its
  // key's parts, joined by '\' ("HKLM\Software\Vendor"); the tree's top, the empty path, has
  // the roots as children. Paths compare ignoring case, as the registry does, and ignore
  // empty parts (doubled or trailing separators); a key is spelled as the first row in key
  // order that names it spells it.
  //
  // StartTreeFill builds the tree from the live rows and closes every open iterator; the tree
  // is not updated by later edits (fill it again) nor by SetCurrentUserBaseKey.
  void StartTreeFill();
  // Inserts into `out` the live rows whose values live directly in the key `keyPath` (their
  // root and key name it); returns `out`. Reads the rows, not the filled tree.
  RWBTree& GetTreeEntries(RWBTree& out, const TalString& keyPath);
  // Opens an iterator over the children of `keyPath` in the filled tree, in order ignoring
  // case; -1 when the tree has no such key.
  int OpenTreeChildIterator(const TalString& keyPath);
  // Sets `child` to the path of the iterator's next child and returns true; false at the end
  // and for a handle that is not open.
  bool GetNextTreeChild(int iterator, TalString& child);
  // Closes the iterator; nothing for a handle that is not open.
  void CloseTreeChildIterator(int iterator);

 private:
  struct TreeKey {
    std::u16string path;                   // as first spelled
    std::vector<std::u16string> children;  // folded paths, ordered
  };
  struct ChildIterator {
    std::u16string key;  // folded path of the key whose children are walked
    std::size_t next = 0;
  };

  // The path of `keyPath` with empty parts dropped, as spelled and folded.
  static std::pair<std::u16string, std::u16string> normalPath(const std::u16string& keyPath);
  // The path of the key that holds `row`'s value.
  std::u16string keyPathOf(const MSIERegistry& row) const;

  TalString currentUserBaseName = u"HKCU/HKLM";
  std::map<std::u16string, TreeKey> tree_;  // by folded path
  std::map<int, ChildIterator> iterators_;
  int nextIterator_ = 0;
};
