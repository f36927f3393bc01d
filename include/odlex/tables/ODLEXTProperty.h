#pragma once
// The Property table object: values by name, and the translation of "[Property]" references.
// The table has none of the common row edits: properties are set, added to and read by name.

#include "odlex/msi/MSITranslate.h"
#include "odlex/tables/ODLEXTRowTable.h"

class ODLEXTProperty : public ODLEXTRowTable<ODLEXTProperty, ODLEXTObject::eProperty> {
 public:
  // Loads the rows, then the translator (init).
  void Load(ODLEXDatabase& db) override;

  // The row of property `name`; code 5 when there is none.
  MSIEProperty& Find(const TalString& name);
  // The value of `name`; empty when the property is not set (as the installer reads an unset
  // property).
  TalString GetValue(const TalString& name);
  // Sets `name` to `value`, adding the row when missing. The Value column cannot be empty, so an
  // empty value removes the property (marks its row deleted). The row changed or added is the
  // temp entry; the table is marked modified only when something changed. The translator
  // follows.
  void SetValue(const TalString& name, const TalString& value);
  // Adds `value` to the ";"-separated list held by `name` (SecureCustomProperties, say), unless
  // the list holds it already (exact comparison); sets the property when it is not set.
  void AddValue(const TalString& name, const TalString& value);
  // `text` formatted as the installer formats it (MSITranslate::Translate), from the rows as
  // they are now. Of the installer's forms, those the package answers are replaced:
  //   [Name]        the value of a property set in the table (never formatted again);
  //   [#File] [!File]  the target path of the file: its component's folder as the Directory
  //                 table gives it ("[ProgramFilesFolder]Vendor\") and its long name;
  //   [$Component]  the component's folder, in the same form.
  // Those the installation answers stay as written: [%Name] (an environment variable of the
  // machine), [~] (a null character), properties not set, and files, components or folders
  // that the package does not hold.
  TalString Expand(const TalString& text);

  // The translator of the lower-layer table: the property values as loaded by InitVars.
  MSITranslate& GetTranslator();
  // Fills the translator afresh with the value of every live property.
  void InitVars();
  // Prepares the object after loading: fills the translator.
  void init();
  // `text` translated with the translator (fast for many texts; as current as the last
  // InitVars, SetValue or AddValue).
  TalString TranslateVars(const TalString& text);
  // `text` with the translator's values put back as "[Name]" references, longer values first.
  TalString UnFormatVars(const TalString& text);

  // Search and replace leaves out the package's identity (ProductCode, UpgradeCode,
  // ProductLanguage): a text replacement must never change which product a package is.
  bool SARExcludeEntry(const MSIEntry* entry) override;

 private:
  // The Directory table hands the lower-layer Property table to its own, which resolves folder
  // paths that start with a property.
  friend class ODLEXTDirectory;

  // The live row of `name`, or null.
  MSIEProperty* live(const TalString& name);
  // The value of one reference of Expand (what stands between its brackets); false when it
  // stays as written.
  bool ExpandReference(const std::u16string& reference, std::u16string& value);
};
