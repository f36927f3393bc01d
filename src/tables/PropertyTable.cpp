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

namespace {

// The long name of a "short|long" file name.
std::u16string longName(const TalString& fileName) {
  const std::u16string& name = fileName.u16();
  const std::size_t bar = name.find(u'|');
  return bar == std::u16string::npos ? name : name.substr(bar + 1);
}

// The target folder of the component `key` as the Directory table gives it
// ("[ProgramFilesFolder]Vendor\"); empty when the component or its folder cannot be found.
std::u16string componentFolder(ODLEXDatabase& db, const TalString& key) {
  const MSIEComponent* component = db.GetComponent().Lookup(key);
  const MSIEDirectory* folder =
      component ? db.GetDirectory().Lookup(component->GetDirectoryID()) : nullptr;
  return folder ? folder->GetTargetPath(true, false, false).u16() : std::u16string();
}

}  // namespace

bool ODLEXTProperty::ExpandReference(const std::u16string& reference, std::u16string& value) {
  if (reference.empty())
    return false;
  // Files and components are looked up through the database the table was loaded for.
  if (!IsLoaded() &&
      (reference.front() == u'#' || reference.front() == u'!' || reference.front() == u'$'))
    return false;
  const TalString key(reference.substr(1));
  switch (reference.front()) {
    case u'#':
    case u'!': {
      const MSIEFile* file = GetDatabase().GetFile().Lookup(key);
      const std::u16string folder =
          file ? componentFolder(GetDatabase(), file->GetComponent()) : std::u16string();
      if (folder.empty())
        return false;
      value = folder + longName(file->GetFileName());
      return true;
    }
    case u'$':
      value = componentFolder(GetDatabase(), key);
      return !value.empty();
    case u'%':
    case u'~':
      return false;
    default: {
      const MSIEProperty* row = live(TalString(reference));
      if (!row)
        return false;
      value = row->GetValue().u16();
      return true;
    }
  }
}

TalString ODLEXTProperty::Expand(const TalString& text) {
  return MSITranslate::Translate(text,
                                 [this](const std::u16string& reference, std::u16string& value) {
                                   return ExpandReference(reference, value);
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
