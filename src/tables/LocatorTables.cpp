// The lookups of the AppSearch and CCPSearch table objects, which follow a search's signature
// into the Signature and locator tables.

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"
#include "tables/RowQueries.h"

using odlex::tables::followReference;

template <class Derived, ODLEXTObject::typeID type>
template <class Table>
typename Table::Entry& ODLEXTSearchTable<Derived, type>::follow(Table& table, const Entry& row) {
  return followReference(lookup(table, row), type, row, ODLEXDatabaseError::eSignatureNotFound);
}

template <class Derived, ODLEXTObject::typeID type>
MSIESignature& ODLEXTSearchTable<Derived, type>::GetSignature(const Entry& row) {
  return follow(this->GetDatabase().GetSignature(), row);
}

template <class Derived, ODLEXTObject::typeID type>
MSIERegLocator& ODLEXTSearchTable<Derived, type>::GetRegLocator(const Entry& row) {
  return follow(this->GetDatabase().GetRegLocator(), row);
}

template <class Derived, ODLEXTObject::typeID type>
MSIEIniLocator& ODLEXTSearchTable<Derived, type>::GetIniLocator(const Entry& row) {
  return follow(this->GetDatabase().GetIniLocator(), row);
}

template <class Derived, ODLEXTObject::typeID type>
MSIEDrLocator& ODLEXTSearchTable<Derived, type>::GetDrLocator(const Entry& row) {
  return follow(this->GetDatabase().GetDrLocator(), row);
}

template <class Derived, ODLEXTObject::typeID type>
MSIECompLocator& ODLEXTSearchTable<Derived, type>::GetCompLocator(const Entry& row) {
  return follow(this->GetDatabase().GetCompLocator(), row);
}

template <class Derived, ODLEXTObject::typeID type>
bool ODLEXTSearchTable<Derived, type>::HasSignature(const Entry& row) {
  return lookup(this->GetDatabase().GetSignature(), row) != nullptr;
}

template <class Derived, ODLEXTObject::typeID type>
bool ODLEXTSearchTable<Derived, type>::HasRegLocator(const Entry& row) {
  return lookup(this->GetDatabase().GetRegLocator(), row) != nullptr;
}

template <class Derived, ODLEXTObject::typeID type>
bool ODLEXTSearchTable<Derived, type>::HasIniLocator(const Entry& row) {
  return lookup(this->GetDatabase().GetIniLocator(), row) != nullptr;
}

template <class Derived, ODLEXTObject::typeID type>
bool ODLEXTSearchTable<Derived, type>::HasDrLocator(const Entry& row) {
  return lookup(this->GetDatabase().GetDrLocator(), row) != nullptr;
}

template <class Derived, ODLEXTObject::typeID type>
bool ODLEXTSearchTable<Derived, type>::HasCompLocator(const Entry& row) {
  return lookup(this->GetDatabase().GetCompLocator(), row) != nullptr;
}

template <class Derived, ODLEXTObject::typeID type>
unsigned ODLEXTSearchTable<Derived, type>::GetSignatureTypes(const Entry& row) {
  unsigned types = eNoSignatureType;
  if (HasSignature(row))
    types |= eSignatureInSignature;
  if (HasRegLocator(row))
    types |= eSignatureInRegLocator;
  if (HasIniLocator(row))
    types |= eSignatureInIniLocator;
  if (HasDrLocator(row))
    types |= eSignatureInDrLocator;
  if (HasCompLocator(row))
    types |= eSignatureInCompLocator;
  return types;
}

template class ODLEXTSearchTable<ODLEXTAppSearch, ODLEXTObject::eAppSearch>;
template class ODLEXTSearchTable<ODLEXTCCPSearch, ODLEXTObject::eCCPSearch>;
