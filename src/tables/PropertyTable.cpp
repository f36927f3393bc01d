// Property values by name and "[Property]" translation.

#include <array>

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"

void ODLEXTProperty::Load(ODLEXDatabase& db) {
  const bool wasLoaded = IsLoaded();
  ODLEXTObject::Load(db);
  if (!wasLoaded && IsLoaded())
    init();
}

MSIEProperty* ODLEXTProperty::live(const TalString& name) {
  return GetTable().Find(name);
}

MSIEProperty& ODLEXTProperty::Find(const TalString& name) {
  return FindOrThrow(live(name), ODLEXDatabaseError::ePropertyNotFound);
}

TalString ODLEXTProperty::GetValue(const TalString& name) {
  const MSIEProperty* row = live(name);
  return row ? row->GetValue() : TalString();
}

void ODLEXTProperty::SetValue(const TalString& name, const TalString& value) {
  MSIEProperty* row = live(name);
  SetTempEntries(row);
  if (value.u16().empty()) {
    if (row) {
      row->Modify();
      row->Delete();
      Modify(true);
    }
    GetTranslator().RemoveVariable(name);
    return;
  }
  if (row && row->GetValue() == value)
    return;
  if (!row) {
    row = GetTable().Add(name);  // never refused: no live row has the name
    SetTempEntries(row);
  }
  row->SetValue(value);
  row->SetDeleted(false);
  row->Modify();
  Modify(true);
  GetTranslator().SetVariable(name, value);
}

void ODLEXTProperty::AddValue(const TalString& name, const TalString& value) {
  const std::u16string list = GetValue(name).u16();
  std::size_t at = 0;
  while (at <= list.size()) {
    const std::size_t end = std::min(list.find(u';', at), list.size());
    if (list.compare(at, end - at, value.u16()) == 0)
      return;
    at = end + 1;
  }
  SetValue(name, TalString(list.empty() ? value.u16() : list + u";" + value.u16()));
}

TalString ODLEXTProperty::Expand(const TalString& text) {
  return MSITranslate::Translate(text, [this](const std::u16string& name, std::u16string& value) {
    const MSIEProperty* row = live(TalString(name));
    if (!row)
      return false;
    value = row->GetValue().u16();
    return true;
  });
}

MSITranslate& ODLEXTProperty::GetTranslator() {
  return GetTable().GetTranslator();
}

void ODLEXTProperty::InitVars() {
  MSITranslate& translator = GetTranslator();
  translator.Clear();
  for (RWCollectable* item : GetEntries()) {
    const auto* row = static_cast<const MSIEProperty*>(item);
    if (!row->IsDeleted())
      translator.SetVariable(row->GetProperty(), row->GetValue());
  }
}

void ODLEXTProperty::init() {
  InitVars();
}

TalString ODLEXTProperty::TranslateVars(const TalString& text) {
  return GetTranslator().Translate(text);
}

TalString ODLEXTProperty::UnFormatVars(const TalString& text) {
  return GetTranslator().UnFormat(text);
}

bool ODLEXTProperty::SARExcludeEntry(const MSIEntry* entry) {
  static constexpr std::array<const char16_t*, 3> kIdentity = {u"ProductCode", u"UpgradeCode",
                                                               u"ProductLanguage"};
  const auto* row = dynamic_cast<const MSIEProperty*>(entry);
  if (!row)
    return false;
  const TalString name = row->GetProperty();
  for (const char16_t* identity : kIdentity) {
    if (name == identity)
      return true;
  }
  return false;
}
