// Components added with a key made by the table.

#include "msi/engine/Result.h"
#include "odlex/msi/MSIRows.h"

namespace {

// The component attribute that marks a 64-bit component.
constexpr short kAttribute64Bit = 256;

}  // namespace

MSIEComponent::MSIEComponent(const TalString& key, const TalString& guid,
                             const TalString& directoryID)
    : MSIEComponent(key) {
  SetComponentGUID(guid);
  SetDirectoryID(directoryID);
}

MSIEComponent* MSITComponent::Add(const TalString& guid, const TalString& directoryID, bool newGuid,
                                  bool win64) {
  if (directoryID.u16().empty()) {
    ReportError(odlex::engine::kInvalidParameter,
                TalString(u"Component: a new component needs a Directory key"));
    return nullptr;
  }
  MSIEComponent* row = Add(MakeUniqueKey(TalString(u"Component")));
  row->SetComponentGUID(newGuid ? GenerateGUID() : guid);
  row->SetDirectoryID(directoryID);
  row->SetAttributes(win64 ? kAttribute64Bit : 0);
  return row;
}
