// The part of _Streams and _Storages they share: rows named after container entries, data
// read on first access, and writing back only what changed.

#include <algorithm>
#include <filesystem>
#include <utility>

#include "msi/rows/system/SystemTables.h"
#include "odlex/msi/MSISystemTables.h"

namespace {

// The longest name the installer gives a stream or storage (it is encoded into at most 31
// compound-file name units).
constexpr std::size_t kMaxEntryName = 62;

constexpr std::size_t kDataColumn = 1;

}  // namespace

bool MSIContainerTable::Populate() {
  const odlex::engine::Database* db = odlex::rows::engineOf(*this);
  if (!db) {
    ReportError(odlex::engine::kInvalidHandle, odlex::rows::noDatabaseText(*this));
    return false;
  }
  listed_ = EntryNames(*db);
  std::vector<std::unique_ptr<MSIEntry>> rows;
  for (const std::u16string& name : listed_) {
    std::unique_ptr<MSIEntry> entry = NewEntry();
    auto& row = static_cast<MSIContainerEntry&>(*entry);
    row.SetName(TalString(name));
    row.SetStreamAt(kDataColumn, TalString(name));
    rows.push_back(std::move(entry));
  }
  LoadRows(std::move(rows));
  return true;
}

bool MSIContainerTable::Persist() {
  odlex::engine::Database* db = odlex::rows::engineOf(*this);
  if (!db) {
    ReportError(odlex::engine::kInvalidHandle, odlex::rows::noDatabaseText(*this));
    return false;
  }
  std::vector<std::u16string> live;
  std::vector<std::pair<MSIContainerEntry*, MSIBinary>> writes;
  // The data of changed rows is read (from the entries they were loaded from) and checked
  // before any entry is removed or written.
  for (RWCollectable* item : GetTable()) {
    auto* row = static_cast<MSIContainerEntry*>(item);
    if (row->IsDeleted())
      continue;
    const std::u16string name = row->GetName().u16();
    if (name.empty() || name.size() > kMaxEntryName) {
      ReportError(odlex::engine::kInvalidParameter,
                  TalString(u"table " + GetName().u16() + u": invalid name \"" + name +
                            u"\" (1 to 62 characters)"));
      return false;
    }
    live.push_back(name);
    if (!row->IsModified())
      continue;
    MSIBinary data = row->GetData();
    unsigned code = 0;
    TalString why;
    if (!Accepts(data, code, why)) {
      ReportError(code,
                  TalString(u"table " + GetName().u16() + u", row " + name + u": " + why.u16()));
      return false;
    }
    writes.emplace_back(row, std::move(data));
  }
  for (const std::u16string& name : listed_) {
    if (std::find(live.begin(), live.end(), name) == live.end())
      RemoveEntry(*db, name);
  }
  for (auto& [row, data] : writes) {
    const TalString name = row->GetName();
    WriteEntry(*db, name.u16(), data);
    // From now on the data is read back from the entry just written.
    row->SetStreamAt(kDataColumn, name);
  }
  listed_ = std::move(live);
  ClearChanges();
  return true;
}

MSIContainerEntry* MSIContainerTable::AddFromFile(const TalString& name,
                                                  const TalString& sourceFile, bool replace) {
  const MSIBinary data(sourceFile);
  if (!data.GetReadError().isNull()) {
    const bool missing = !std::filesystem::exists(std::filesystem::path(sourceFile.ToUtf8()));
    ReportError(missing ? odlex::engine::kFileNotFound : odlex::engine::kOpenFailed,
                data.GetReadError());
    return nullptr;
  }
  unsigned code = 0;
  TalString why;
  if (!Accepts(data, code, why)) {
    ReportError(code, TalString(sourceFile.u16() + u": " + why.u16()));
    return nullptr;
  }
  std::unique_ptr<MSIEntry> entry = NewEntry();
  auto* row = static_cast<MSIContainerEntry*>(entry.get());
  row->SetName(name);
  if (auto* held = static_cast<MSIContainerEntry*>(FindEntry(*row))) {
    if (!replace) {
      ReportError(
          odlex::engine::kAlreadyExists,
          TalString(u"table " + GetName().u16() + u": a row named " + name.u16() + u" exists"));
      return nullptr;
    }
    held->SetData(data);
    return held;
  }
  row->SetData(data);
  return static_cast<MSIContainerEntry*>(AddEntry(std::move(entry)));
}
