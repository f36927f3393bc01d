// The user interface of a package: removing it, importing dialogs from another package, and the
// list of the product's query-dialog properties.

#include <memory>

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"

namespace {

constexpr ODLEXTObject::typeID kUserInterfaceTables[] = {
    ODLEXTObject::eAdminUISequence,
    ODLEXTObject::eAdvtUISequence,
    ODLEXTObject::eBBControl,
    ODLEXTObject::eBillboard,
    ODLEXTObject::eCheckBox,
    ODLEXTObject::eComboBox,
    ODLEXTObject::eControl,
    ODLEXTObject::eControlCondition,
    ODLEXTObject::eControlEvent,
    ODLEXTObject::eDialog,
    ODLEXTObject::eEventMapping,
    ODLEXTObject::eInstallUISequence,
    ODLEXTObject::eListBox,
    ODLEXTObject::eListView,
    ODLEXTObject::eModuleAdminUISequence,
    ODLEXTObject::eModuleAdvtUISequence,
    ODLEXTObject::eModuleInstallUISequence,
    ODLEXTObject::eRadioButton,
    ODLEXTObject::eTextStyle,
    ODLEXTObject::eUIText,
};

// The product's query dialog, which an import never takes from another package.
constexpr const char16_t* kQueryDialog = u"ZrQueryX";
constexpr const char16_t* kQueryMarker = u"ZrQuery";

template <class Row>
bool isQueryDialog(const Row& row) {
  return row.GetDialog().compareTo(TalString(kQueryDialog), RWWString::ignoreCase) == 0;
}

// Empties `target` (keeping its query-dialog rows) and copies into it the rows of `source` that
// do not belong to the query dialog.
template <class Table>
void replaceRows(Table& target, Table& source) {
  using Row = typename Table::Entry;
  for (RWCollectable* item :
       std::vector<RWCollectable*>(target.GetEntries().begin(), target.GetEntries().end())) {
    auto& row = static_cast<Row&>(*item);
    if (row.IsDeleted() || isQueryDialog(row))
      continue;
    row.Delete();
    row.Modify();
    target.Modify(true);
  }
  for (RWCollectable* item : source.GetEntries()) {
    const auto& row = static_cast<const Row&>(*item);
    if (!row.IsDeleted() && !isQueryDialog(row))
      target.Add(row);
  }
}

// The walk of a GUI property list.
struct GUIPropertyWalk {
  std::size_t next = 0;
};

}  // namespace

void ODLEXDatabase::RemoveGUI() {
  for (const ODLEXTObject::typeID type : kUserInterfaceTables) {
    ODLEXTObject* table = &GetTableObject(type, false);
    if (table->IsLoaded()) {
      // Rows held by the loaded object go with it; a fresh, unloaded object takes its place.
      tableObjects_.at(SlotOf(type)).reset();
      table = &GetTableObject(type, false);
    }
    if (MSITable* lower = table->GetLowerTable())
      lower->Drop();
    table->Unload();
    SetModified(true);
  }
}

void ODLEXDatabase::ImportGUI(const TalString& path) {
  const bool listedBefore = IsDatabaseFilePathLoaded(path);
  ODLEXOpenType readOnly(MSIDatabase::ePersistReadOnly);
  ODLEXDatabase& source = GetDatabaseWithFilePath(path, readOnly);
  if (&source == this)
    return;
  auto removeSource = [&source, listedBefore](ODLEXDatabase*) {
    if (!listedBefore)
      source.RemoveFromList(false);
  };
  const std::unique_ptr<ODLEXDatabase, decltype(removeSource)> guard(this, removeSource);
  replaceRows(GetDialog(), source.GetDialog());
  replaceRows(GetControl(), source.GetControl());
  replaceRows(GetControlEvent(), source.GetControlEvent());
}

void* ODLEXDatabase::OpenGUIProperties() {
  ODLEXTProperty& properties = GetProperty();
  for (RWCollectable* item : std::vector<RWCollectable*>(GetDialog().GetEntries().begin(),
                                                         GetDialog().GetEntries().end())) {
    const auto& row = static_cast<const MSIEDialog&>(*item);
    const TalString dialog = row.GetDialog();
    const std::size_t marker = dialog.index(TalString(kQueryMarker));
    if (row.IsDeleted() || marker == RW_NPOS)
      continue;
    TalString key = dialog;
    key.replace(marker, TalString(kQueryMarker).length(), TalString());
    guiProperties_.push_back(
        {key, properties.GetValue(dialog + u"Prompt"), properties.GetValue(dialog + u"Title")});
  }
  return new GUIPropertyWalk();
}

bool ODLEXDatabase::GetNextGUIProperty(TalString& key, TalString& prompt, TalString& title,
                                       void* handle) {
  key = prompt = title = TalString();
  auto* walk = static_cast<GUIPropertyWalk*>(handle);
  if (!walk || walk->next >= guiProperties_.size())
    return false;
  const GUIProperty& property = guiProperties_[walk->next++];
  key = property.key;
  prompt = property.prompt;
  title = property.title;
  return true;
}

void ODLEXDatabase::CloseGUIProperties(void* handle) {
  delete static_cast<GUIPropertyWalk*>(handle);
}

void ODLEXDatabase::AddGUIProperty(const char16_t* key, const char16_t* prompt,
                                   const char16_t* title) {
  auto text = [](const char16_t* value) { return value ? TalString(value) : TalString(); };
  guiProperties_.push_back({text(key), text(prompt), text(title)});
}
