#pragma once
// Table objects of the file-search tables. A search is named by a signature: the Signature
// table describes a file to look for, and the four locator tables (RegLocator, IniLocator,
// DrLocator, CompLocator) say where to look. AppSearch sets a property to what a search finds;
// CCPSearch lists the searches that find a qualifying product. Both refer to a search by its
// signature, which any of the five tables may hold.

#include "odlex/tables/ODLEXTRowTable.h"

// A table of the search family whose rows are named by a signature (their Signature_ column).
template <class Derived, ODLEXTObject::typeID type>
class ODLEXTSignatureTable : public ODLEXTRowTable<Derived, type> {
  using Base = ODLEXTRowTable<Derived, type>;

 public:
  using typename Base::Entry;

  // The first live row with the signature `signature`; code 24 when there is none.
  Entry& GetWithSignature(const TalString& signature) {
    return Base::FindOrThrow(LookupWithSignature(signature),
                             ODLEXDatabaseError::eSignatureNotFound);
  }
  // The same row, or null: the lookup the referring tables use.
  Entry* LookupWithSignature(const TalString& signature) {
    return Base::GetTable().FindBySignature(signature);
  }
};

class ODLEXTSignature : public ODLEXTSignatureTable<ODLEXTSignature, ODLEXTObject::eSignature> {};
class ODLEXTRegLocator : public ODLEXTSignatureTable<ODLEXTRegLocator, ODLEXTObject::eRegLocator> {
};
class ODLEXTIniLocator : public ODLEXTSignatureTable<ODLEXTIniLocator, ODLEXTObject::eIniLocator> {
};
// A search may have several DrLocator rows (one per parent and path); GetWithSignature gives the
// first in key order. Its not-found code is that of the other tables named by a signature.
class ODLEXTDrLocator : public ODLEXTSignatureTable<ODLEXTDrLocator, ODLEXTObject::eDrLocator> {};
class ODLEXTCompLocator
    : public ODLEXTSignatureTable<ODLEXTCompLocator, ODLEXTObject::eCompLocator> {};

// Which of the five tables hold a signature: the bits that GetSignatureTypes adds up.
enum ODLEXSignatureTypes : unsigned {
  eNoSignatureType = 0,
  eSignatureInSignature = 1,
  eSignatureInRegLocator = 2,
  eSignatureInIniLocator = 4,
  eSignatureInDrLocator = 8,
  eSignatureInCompLocator = 16,
};

// A table that runs searches: each row names a search by its Signature_ column. The lookups
// follow that signature into the table named; when no live row there has it they throw
// ODLEXDatabaseErrorWithEntry (this table, the row, code 24). The Has... questions answer the
// same without throwing. GetSignatureTypes says, as ODLEXSignatureTypes bits, which of the five
// tables hold the signature (0 for none).
template <class Derived, ODLEXTObject::typeID type>
class ODLEXTSearchTable : public ODLEXTRowTable<Derived, type> {
  using Base = ODLEXTRowTable<Derived, type>;

 public:
  using typename Base::Entry;

  MSIESignature& GetSignature(const Entry& row);
  MSIERegLocator& GetRegLocator(const Entry& row);
  MSIEIniLocator& GetIniLocator(const Entry& row);
  // The first DrLocator row of the signature in key order.
  MSIEDrLocator& GetDrLocator(const Entry& row);
  MSIECompLocator& GetCompLocator(const Entry& row);

  bool HasSignature(const Entry& row);
  bool HasRegLocator(const Entry& row);
  bool HasIniLocator(const Entry& row);
  bool HasDrLocator(const Entry& row);
  bool HasCompLocator(const Entry& row);

  unsigned GetSignatureTypes(const Entry& row);

 private:
  // The live row of `row`'s signature in `table`, or null.
  template <class Table>
  static typename Table::Entry* lookup(Table& table, const Entry& row) {
    return table.LookupWithSignature(row.GetSignature());
  }
  // The same row, or the error with `row`.
  template <class Table>
  typename Table::Entry& follow(Table& table, const Entry& row);
};

class ODLEXTAppSearch : public ODLEXTSearchTable<ODLEXTAppSearch, ODLEXTObject::eAppSearch> {};
class ODLEXTCCPSearch : public ODLEXTSearchTable<ODLEXTCCPSearch, ODLEXTObject::eCCPSearch> {};

// The lookups are compiled once, for these two tables, with the database they go through.
extern template class ODLEXTSearchTable<ODLEXTAppSearch, ODLEXTObject::eAppSearch>;
extern template class ODLEXTSearchTable<ODLEXTCCPSearch, ODLEXTObject::eCCPSearch>;
