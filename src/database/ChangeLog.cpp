// The change log: a row in the package's ZrChangeLog table for each edit recorded, formatted
// from the message catalog.

#include <optional>

#include "database/MessageCatalog.h"
#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"

namespace {

// The row's first value: the kind of entry, the same for every entry this library writes.
constexpr unsigned short kEditEntry = 13;

bool sameIgnoringCase(const TalString& value, const char16_t* word) {
  return value.compareTo(TalString(word), RWWString::ignoreCase) == 0;
}

}  // namespace

std::unique_ptr<odlex::database::MessageCatalog> ODLEXDatabase::messageCatalog;
bool ODLEXDatabase::changeLogging = false;

void ODLEXDatabase::SetChangeLogging(bool on) {
  changeLogging = on;
}

bool ODLEXDatabase::GetChangeLogging() {
  return changeLogging;
}

void ODLEXDatabase::UpdateChangeLog(unsigned long messageId,
                                    const std::vector<std::u16string>& inserts,
                                    const TalString& table) {
  if (!messageCatalog || readOnly_)
    return;
  auto keyword = [this]() -> std::optional<TalString> {
    try {
      return GetZrKeyword().GetEntry(u"ChangeLog", 0).GetValue();
    } catch (const ODLEXDatabaseError&) {
      return std::nullopt;
    }
  };
  const std::optional<TalString> setting = keyword();
  bool enabled = changeLogging || (setting && sameIgnoringCase(*setting, u"ENABLED"));
  if (enabled && setting && sameIgnoringCase(*setting, u"DISABLED"))
    enabled = false;
  if (!enabled)
    return;

  database_.AddTable(u"ZrChangeLog");
  const std::optional<std::u16string> text =
      messageCatalog->Format(static_cast<std::uint32_t>(messageId), inserts);
  auto* log = LowerTableOf<MSITZrChangeLog>(GetZrChangeLog());
  if (!log)
    return;
  MSIEZrChangeLog* row = log->Add(kEditEntry, messageId, TalString(text.value_or(u"")));
  if (row && !table.isNull())
    row->SetTable(table);
  log->MakeDirty(true);
  log->Persist();
}
