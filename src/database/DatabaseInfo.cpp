// The product information of a database: read from the summary information, the Property,
// ModuleSignature and ZrKeyword tables when the database is opened, and written back when the
// host changes it.

#include <cstdint>
#include <limits>
#include <optional>

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/msi/MSISystemTables.h"
#include "odlex/tables/ODLEXTables.h"

namespace {

struct TextProperty {
  TalString ODLEXDatabaseInfo::*field;
  const char16_t* name;
};

struct FlagProperty {
  bool ODLEXDatabaseInfo::*field;
  const char16_t* name;
};

const TextProperty kTextProperties[] = {
    {&ODLEXDatabaseInfo::productName, u"ProductName"},
    {&ODLEXDatabaseInfo::manufacturer, u"Manufacturer"},
    {&ODLEXDatabaseInfo::comments, u"ARPCOMMENTS"},
    {&ODLEXDatabaseInfo::helpLink, u"ARPHELPLINK"},
    {&ODLEXDatabaseInfo::contact, u"ARPCONTACT"},
    {&ODLEXDatabaseInfo::helpTelephone, u"ARPHELPTELEPHONE"},
    {&ODLEXDatabaseInfo::productVersion, u"PRODUCTVERSION"},
    {&ODLEXDatabaseInfo::aboutURL, u"ARPURLINFOABOUT"},
    {&ODLEXDatabaseInfo::readme, u"ARPREADME"},
    {&ODLEXDatabaseInfo::updateURL, u"ARPURLUPDATEINFO"},
    {&ODLEXDatabaseInfo::productID, u"ProductID"},
    {&ODLEXDatabaseInfo::userName, u"USERNAME"},
    {&ODLEXDatabaseInfo::companyName, u"COMPANYNAME"},
    {&ODLEXDatabaseInfo::productIcon, u"ARPPRODUCTICON"},
    {&ODLEXDatabaseInfo::upgradeCode, u"UpgradeCode"},
};

// Flags are set exactly when their property is "1".
const FlagProperty kFlagProperties[] = {
    {&ODLEXDatabaseInfo::noModify, u"ARPNOMODIFY"},
    {&ODLEXDatabaseInfo::noRemove, u"ARPNOREMOVE"},
    {&ODLEXDatabaseInfo::noRepair, u"ARPNOREPAIR"},
    {&ODLEXDatabaseInfo::systemComponent, u"ARPSYSTEMCOMPONENT"},
    {&ODLEXDatabaseInfo::noUserName, u"NOUSERNAME"},
    {&ODLEXDatabaseInfo::noCompanyName, u"NOCOMPANYNAME"},
};

constexpr const char16_t* kProductCode = u"ProductCode";
constexpr const char16_t* kAllUsers = u"ALLUSERS";
constexpr const char16_t* kEstimatedSize = u"ARPSIZE";
constexpr const char16_t* kAutoUpdateKeyword = u"AutoUpdateMsiPackageCode";

// The texts that must fit the database's code page for a record to be accepted, in the order of
// their bits in IsValid's mask (1, 2, 4, ...).
constexpr TalString ODLEXDatabaseInfo::*kCheckedTexts[] = {
    &ODLEXDatabaseInfo::comments,       &ODLEXDatabaseInfo::contact,
    &ODLEXDatabaseInfo::readme,         &ODLEXDatabaseInfo::manufacturer,
    &ODLEXDatabaseInfo::productName,    &ODLEXDatabaseInfo::helpLink,
    &ODLEXDatabaseInfo::helpTelephone,  &ODLEXDatabaseInfo::productCode,
    &ODLEXDatabaseInfo::productID,      &ODLEXDatabaseInfo::updateURL,
    &ODLEXDatabaseInfo::productVersion,
};

// The text of a number property: none for 0.
TalString numberText(int number) {
  return number == 0 ? TalString() : TalString::FromInt(number);
}

// The number in a property's text; 0 for none, a text that is not a number or one out of range.
int numberIn(const TalString& text) {
  const std::optional<std::int64_t> number = text.ToInt();
  return number && *number >= 0 && *number <= std::numeric_limits<int>::max()
             ? static_cast<int>(*number)
             : 0;
}

}  // namespace

void ODLEXDatabase::AcquireDatabaseInfo() {
  auto* summary = LowerTableOf<MSIT_SummaryInformation>(Get_SummaryInformation());
  const MSIE_SummaryInformation* summaryRow = summary ? summary->FindFirst() : nullptr;
  info_.packageCode = summaryRow ? summaryRow->GetRevNumber() : TalString();

  ODLEXTProperty& properties = GetProperty();
  if (IsMergeModule()) {
    TalString moduleID;
    if (auto* signatures = LowerTableOf<MSITModuleSignature>(GetModuleSignature())) {
      for (RWCollectable* item : signatures->GetTable()) {
        const auto* signature = static_cast<const MSIEModuleSignature*>(item);
        if (!signature->IsDeleted()) {
          moduleID = signature->GetModuleID();
          break;
        }
      }
    }
    info_.productCode = moduleID;
    database_.SetModuleID(moduleID);
  } else {
    info_.productCode = properties.GetValue(kProductCode);
  }
  if (info_.productCode.isNull())
    info_.productCode = info_.packageCode;

  for (const TextProperty& property : kTextProperties)
    info_.*property.field = properties.GetValue(property.name);
  info_.estimatedSize = numberIn(properties.GetValue(kEstimatedSize));
  for (const FlagProperty& property : kFlagProperties)
    info_.*property.field = properties.GetValue(property.name) == u"1";
  // Values of ALLUSERS other than none, 1 and 2 leave the setting as it was.
  const TalString allUsers = properties.GetValue(kAllUsers);
  if (allUsers.isNull())
    info_.allUsers = 0;
  else if (allUsers == u"1" || allUsers == u"2")
    info_.allUsers = allUsers.ToInt().value_or(0);

  const auto* keywords = LowerTableOf<MSITZrKeyword>(GetZrKeyword());
  const MSIEZrKeyword* autoUpdate =
      keywords ? keywords->FindByKeyword(kAutoUpdateKeyword) : nullptr;
  const bool always =
      autoUpdate && autoUpdate->GetValue().compareTo(u"TRUE", RWWString::ignoreCase) == 0;
  info_.packageCodePolicy =
      always ? ODLEXDatabaseInfo::ePackageCodeAlways : ODLEXDatabaseInfo::ePackageCodeNever;
}

bool ODLEXDatabase::IsValid(const ODLEXDatabaseInfo& info, unsigned& mask) const {
  mask = 0;
  for (std::size_t bit = 0; bit < std::size(kCheckedTexts); ++bit) {
    if (!IsStringOK(info.*kCheckedTexts[bit]))
      mask |= 1u << bit;
  }
  return mask == 0;
}

void ODLEXDatabase::SetDatabaseInfo(const ODLEXDatabaseInfo& info, TalString* reason) {
  unsigned mask = 0;
  const bool valid = IsValid(info, mask);
  if (reason)
    *reason = TalString::FromInt(mask);
  if (!valid || info == info_)
    return;
  Modify(true);
  ODLEXDatabaseInfo changed = info;
  changed.packageCodeChanged = info_.packageCodeChanged || info.packageCode != info_.packageCode;
  WriteChangedInfo(changed);
  info_ = changed;
}

void ODLEXDatabase::WriteChangedInfo(const ODLEXDatabaseInfo& info) {
  if (info.packageCode != info_.packageCode) {
    ODLEXT_SummaryInformation& summaryObject = Get_SummaryInformation();
    if (auto* summary = LowerTableOf<MSIT_SummaryInformation>(summaryObject)) {
      MSIE_SummaryInformation* row = summary->FindFirst();
      if (!row)
        row = summary->Add();
      if (row) {
        row->SetRevNumber(info.packageCode);
        summaryObject.Modify(true);
      }
    }
  }

  // SetValue removes a property whose value becomes empty, as the installer keeps no empty
  // property values, and marks the table modified.
  ODLEXTProperty& properties = GetProperty();
  auto write = [&](const char16_t* name, const TalString& before, const TalString& after) {
    if (before != after)
      properties.SetValue(name, after);
  };
  for (const TextProperty& property : kTextProperties)
    write(property.name, info_.*property.field, info.*property.field);
  for (const FlagProperty& property : kFlagProperties)
    write(property.name, info_.*property.field ? u"1" : u"", info.*property.field ? u"1" : u"");
  write(kAllUsers, numberText(info_.allUsers), numberText(info.allUsers));
  write(kEstimatedSize, numberText(info_.estimatedSize), numberText(info.estimatedSize));
  // A merge module's product code is its module identifier, not a property.
  if (!IsMergeModule())
    write(kProductCode, info_.productCode, info.productCode);
}
