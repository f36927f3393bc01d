// Column access shared by the rows of the sequence tables, by column name since the two
// families place Sequence differently.

#include "odlex/msi/MSISequenceEntry.h"

#include "msi/schema/Schema.h"

MSISequenceEntry::MSISequenceEntry(const odlex::schema::TableSchema& schema) : MSIEntry(schema) {}

MSISequenceEntry::MSISequenceEntry(const TalString& action)
    : MSISequenceEntry(*odlex::schema::findTable(u"InstallExecuteSequence")) {
  SetAction(action);
}

std::size_t MSISequenceEntry::ColumnAt(const char16_t* name) const {
  return static_cast<std::size_t>(GetColumnIndex(TalString(name)));
}

TalString MSISequenceEntry::GetAction() const {
  return TextAt(ColumnAt(u"Action"));
}

void MSISequenceEntry::SetAction(const TalString& action) {
  SetTextAt(ColumnAt(u"Action"), action);
}

TalString MSISequenceEntry::GetCondition() const {
  return TextAt(ColumnAt(u"Condition"));
}

void MSISequenceEntry::SetCondition(const TalString& condition) {
  SetTextAt(ColumnAt(u"Condition"), condition);
}

NullableSignedShort MSISequenceEntry::GetSequence() const {
  return NullableShortAt(ColumnAt(u"Sequence"));
}

void MSISequenceEntry::SetSequence(const NullableSignedShort& sequence) {
  SetNullableAt(ColumnAt(u"Sequence"), sequence);
}

MSIModuleSequenceEntry::MSIModuleSequenceEntry(const odlex::schema::TableSchema& schema)
    : MSISequenceEntry(schema) {}

MSIModuleSequenceEntry::MSIModuleSequenceEntry(const TalString& action)
    : MSIModuleSequenceEntry(*odlex::schema::findTable(u"ModuleInstallExecuteSequence")) {
  SetAction(action);
}

TalString MSIModuleSequenceEntry::GetBaseAction() const {
  return TextAt(ColumnAt(u"BaseAction"));
}

void MSIModuleSequenceEntry::SetBaseAction(const TalString& action) {
  SetTextAt(ColumnAt(u"BaseAction"), action);
}

NullableSignedShort MSIModuleSequenceEntry::GetAfter() const {
  return NullableShortAt(ColumnAt(u"After"));
}

void MSIModuleSequenceEntry::SetAfter(const NullableSignedShort& after) {
  SetNullableAt(ColumnAt(u"After"), after);
}
