#pragma once
// Helpers for the tests of table objects: adding rows through a table object, Directory rows
// with their folder names, reading what a collector gave, checking the error records that
// reference-following lookups throw, and table-driven checks of found-or-throw lookups.

#include <gtest/gtest.h>

#include <odlex/tables/ODLEXTables.h>

#include <functional>
#include <set>
#include <span>

#include "common/DatabaseTest.h"

namespace odlex::test {

// Adds `values` through `table`'s Add and gives the row the table now holds for it.
template <class Table, class Row>
Row& addRow(Table& table, const Row& values) {
  table.Add(values);
  RWBTree& added = table.GetTempEntries();
  EXPECT_EQ(added.entries(), 1u) << "the table refused the row";
  return static_cast<Row&>(**added.begin());
}

// A Directory row with its parent and default folder names.
inline MSIEDirectory folder(const char16_t* key, const char16_t* parent,
                            const char16_t* defaultDir) {
  MSIEDirectory row(key);
  row.SetDirectoryParent(parent);
  row.SetDefaultDir(defaultDir);
  return row;
}

// The items of a tree, to compare with the rows a collector should have given.
inline std::set<RWCollectable*> itemsOf(const RWBTree& tree) {
  return {tree.begin(), tree.end()};
}

// Checks that `lookup` throws ODLEXDatabaseErrorWithEntry with `code`, naming `entry` of the
// table `type`.
template <class Lookup>
void expectErrorWithEntry(Lookup lookup, ODLEXDatabaseError::eCodeMeaning code,
                          ODLEXTObject::typeID type, const MSIEntry& entry) {
  try {
    lookup();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const ODLEXDatabaseErrorWithEntry& error) {
    EXPECT_EQ(static_cast<ODLEXDatabaseError::eCodeMeaning>(error), code);
    EXPECT_EQ(error.GetType(), type);
    EXPECT_EQ(&static_cast<const MSIEntry&>(error), &entry);
  }
}

// A lookup called once for a row that exists (giving that row) and once for one that does not,
// and the code the second call must throw.
struct Lookup {
  std::function<const void*()> found;
  std::function<void()> missing;
  int code;
  const void* row = nullptr;  // the row `found` must give; any row when null
  // When set, the second call throws ODLEXDatabaseErrorWithEntry naming this row of `table`.
  const MSIEntry* named = nullptr;
  ODLEXTObject::typeID table = ODLEXTObject::eNoTable;
};

inline void expectLookups(std::span<const Lookup> lookups) {
  for (std::size_t i = 0; i < lookups.size(); ++i) {
    SCOPED_TRACE(testing::Message() << "lookup #" << i << " code " << lookups[i].code);
    const void* found = nullptr;
    EXPECT_EQ(thrownCode([&] { found = lookups[i].found(); }), -1);
    if (lookups[i].row != nullptr) {
      EXPECT_EQ(found, lookups[i].row);
    }
    if (lookups[i].named != nullptr) {
      expectErrorWithEntry(lookups[i].missing,
                           static_cast<ODLEXDatabaseError::eCodeMeaning>(lookups[i].code),
                           lookups[i].table, *lookups[i].named);
    } else {
      EXPECT_EQ(thrownCode(lookups[i].missing), lookups[i].code);
    }
  }
}

// A collector of the rows of one owner, called on an empty tree, and the rows it must give:
// the owner's live rows, not its deleted ones nor those of other owners.
struct Collector {
  std::function<void(RWBTree&)> collect;
  std::set<RWCollectable*> rows;
};

inline void expectCollectors(std::span<const Collector> collectors) {
  for (std::size_t i = 0; i < collectors.size(); ++i) {
    SCOPED_TRACE(testing::Message() << "collector #" << i);
    RWBTree tree;
    collectors[i].collect(tree);
    EXPECT_EQ(itemsOf(tree), collectors[i].rows);
  }
}

}  // namespace odlex::test
