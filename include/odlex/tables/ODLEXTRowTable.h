#pragma once
// ODLEXTRowTable: the pattern every table class shares, written once. A table class derives
// from ODLEXTRowTable<itself, its typeID> and adds only its own operations; a family of tables
// whose operations are declared by an abstract base of its own (the sequence tables' ODLEXSequence)
// names that base, derived from ODLEXTObject, as the third argument. The template gives
//   - the collectable plumbing: newSpecies, copy, isA/classIsA (the typeID);
//   - construction with a new, empty MSIT<Table> and the table's attributes, and Unload that
//     makes a fresh empty one so the object can be loaded again;
//   - GetTable(), the lower-layer table as its concrete class;
//   - GetTableSet(): the file-search set for AppSearch, Signature and the locator tables;
//   - the common row edits Add, Change and Delete, for the classes that have them (and, as
//     AddEntry, ChangeEntry and DeleteEntry, for classes whose edits take rows of a base class);
//   - Lookup(keys...), the live row with a key or null, for other table objects;
//   - Delete(component), the component cascade's step on this table (ODLEXComponentCascade.h);
//   - FindOrThrow, the "Get<Row>With<Key>" lookup shape: a row or the table's not-found error.
//
// The edits, step by step:
//   Add(row)       asks the lower layer for a row with row's key (refused, without an error,
//                  when a live row has it); the temp entries then hold exactly the new row (or
//                  nothing); a new row is revived (not deleted), marked modified, the table is
//                  marked modified, and row's other fields are copied into it.
//   Delete(row)    marks the row modified and deleted (it stays in the lower-layer table until
//                  the table is written) and the table modified.
//   Change(row, v) when a key field of v differs from row's (exact comparison: a change of
//                  case is a key change), deletes row and adds v: the changed row is a new row
//                  object, found in the temp entries; returns true. When another live row
//                  already holds v's key, nothing is changed (row stays as it was, where the
//                  installer library would delete it and then fail to add v), the temp entries
//                  are emptied and the result is false. Otherwise copies the fields
//                  of v that differ into row; the temp entries hold row; when something changed
//                  row is revived and marked modified and the table modified. Returns whether
//                  anything changed.

#include <memory>
#include <type_traits>

#include "odlex/tables/ODLEXComponentCascade.h"
#include "odlex/tables/ODLEXDatabaseError.h"
#include "odlex/tables/ODLEXTableTraits.h"

// A Base with row edits of its own (ODLEXSequence's Add, Delete and Change over any sequence
// row) has them overridden by the concrete class; the row-typed edits here hide them until then,
// which clang reports.
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Woverloaded-virtual"
#endif
template <class Derived, ODLEXTObject::typeID type, class Base = ODLEXTObject>
class ODLEXTRowTable : public Base {
 public:
  using Traits = ODLEXTableTraits<type>;
  using LowerTable = typename Traits::LowerTable;
  using Entry = typename Traits::Entry;
  static constexpr ODLEXTObject::typeID kType = type;

  ODLEXTRowTable() {
    this->SetLowerTable(std::make_unique<LowerTable>());
    this->Attributes() = Traits::kAttributes;
  }

  RWCollectable* newSpecies() const override { return new (std::nothrow) Derived(); }
  RWCollectable* copy() const override {
    return new (std::nothrow) Derived(static_cast<const Derived&>(*this));
  }
  RWClassID isA() const override { return kType; }
  static RWClassID classIsA() { return kType; }
  static const char* className() { return Traits::kClassName; }

  eTableSets GetTableSet() override { return tableSetOf(kType); }

  void Unload() override {
    Base::Unload();
    this->SetLowerTable(std::make_unique<LowerTable>());
  }

  void Add(const Entry& row) requires((Traits::kEdits & kAddEdit) != 0) { AddEntry(row); }

  void Delete(Entry& row) requires((Traits::kEdits & kDeleteEdit) != 0) { DeleteEntry(row); }

  bool Change(Entry& row, const Entry& values) requires((Traits::kEdits & kChangeEdit) != 0) {
    return ChangeEntry(row, values);
  }

  // Marks deleted the live rows of this table that belong to `component`, and what hangs off
  // them (ODLEXComponentCascade.h). The Component table's own Delete is the whole cascade.
  void Delete(const MSIEComponent& component) requires(!std::is_same_v<Entry, MSIEComponent>) {
    odlex::tables::deleteRowsOfComponent(*this, component);
  }

  // The live row with these key values, or null: the lookup other table objects use to follow
  // a reference into this table.
  template <class... Keys>
  Entry* Lookup(const Keys&... keys) {
    return GetTable().Find(keys...);
  }

 protected:
  LowerTable& GetTable() { return static_cast<LowerTable&>(*this->GetLowerTable()); }

  // A row found by a lookup of the lower-layer table, or the error `notFound`.
  template <class Row>
  static Row& FindOrThrow(Row* row, ODLEXDatabaseError::eCodeMeaning notFound) {
    if (!row)
      throw ODLEXDatabaseError(notFound);
    return *row;
  }

  // The common edits on rows of this table (`row`) and values of a row of the table (`values`).
  void AddEntry(const MSIEntry& values) {
    MSIEntry* added = GetTable().AddCopy(values);
    this->SetTempEntries(added);
    if (added)
      Revive(*added);
  }

  void DeleteEntry(MSIEntry& row) {
    row.Modify();
    row.Delete();
    this->Modify(true);
  }

  bool ChangeEntry(MSIEntry& row, const MSIEntry& values) {
    if (!row.HasSameKey(values)) {
      if (GetTable().FindEntry(values)) {
        this->SetTempEntries(nullptr);
        return false;
      }
      DeleteEntry(row);
      AddEntry(values);
      return true;
    }
    const bool changed = row.CopyFields(values);
    this->SetTempEntries(&row);
    if (changed)
      Revive(row);
    return changed;
  }

  // A row just added or changed: live, modified, and its table modified.
  void Revive(MSIEntry& row) {
    row.SetDeleted(false);
    row.Modify();
    this->Modify(true);
  }
};
#if defined(__clang__)
#pragma clang diagnostic pop
#endif
