// What kind of file a database is (merge module, patch-creation file, compressed package) and
// which text its code page can hold; file-name extension helpers.

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/msi/MSISystemTables.h"
#include "odlex/msi/MSIView.h"
#include "odlex/support/Path.h"
#include "odlex/tables/ODLEXTables.h"

namespace {

// Whether `query` runs and yields at least one row; a failing query counts as no row.
bool yieldsRow(MSIDatabase& database, const char16_t* query) {
  MSIView view(database);
  MSIRecord row;
  return view.Open(query, false) == 0 && view.Execute(nullptr, false) == 0 && view.Fetch(row) == 0;
}

}  // namespace

bool ODLEXDatabase::IsMergeModule() {
  if (mergeModuleState_ == 0)
    SetMergeModule(MatchesExtension(GetFilePath(), u"MSM"));
  return mergeModuleState_ == 1;
}

void ODLEXDatabase::SetMergeModule(bool mergeModule) {
  mergeModuleState_ = mergeModule ? 1 : 2;
}

bool ODLEXDatabase::IsPCP() const {
  return MatchesExtension(GetFilePath(), u"PCP");
}

// Compressed when the summary information says so, or when the package has both cabinets and
// files.
bool ODLEXDatabase::CheckForCompression() {
  auto* summary = LowerTableOf<MSIT_SummaryInformation>(Get_SummaryInformation());
  if (const MSIE_SummaryInformation* row = summary ? summary->FindFirst() : nullptr) {
    const NullableLong source = row->GetMSISource();
    if (!source.IsNull() && (source.Get() & msidbSumInfoSourceTypeCompressed) != 0)
      return true;
  }
  return yieldsRow(database_, u"SELECT `Cabinet` FROM `Media` WHERE `Cabinet` IS NOT NULL") &&
         yieldsRow(database_, u"SELECT `File` FROM `File`");
}

bool ODLEXDatabase::IsCharOK(char16_t c) const {
  return stringChecker_ && stringChecker_->IsCharOK(c);
}

bool ODLEXDatabase::IsStringOK(const TalString& text) const {
  return stringChecker_ && stringChecker_->IsStringOK(text);
}

bool ODLEXDatabase::MatchesExtension(const TalString& path, const TalString& extension) {
  return odlex::path::Extension(path).compareTo(extension, RWWString::ignoreCase) == 0;
}

// `extension` includes its dot. A path already ending with it is kept; otherwise the file
// name's extension is replaced, or the extension appended when the name has none.
TalString ODLEXDatabase::ChangeFilePathToExt(const TalString& path, const TalString& extension) {
  const std::size_t length = path.length();
  if (length >= extension.length() && path.subString(length - extension.length()) == extension)
    return path;
  TalString changed = path;
  const std::size_t dot = path.last(u'.');
  const std::size_t separator = odlex::path::LastSeparator(path);
  if (dot != RW_NPOS && (separator == RW_NPOS || dot > separator))
    changed.remove(dot);
  changed += extension;
  return changed;
}

bool ODLEXDatabase::IsMSIFileNameOK(const TalString&) {
  return false;
}

// After an output-file open the lower layer works on the output; the source is its input.
TalString ODLEXDatabase::GetSourcePath() const {
  const TalString& input = database_.getInPath();
  return input.isNull() ? database_.getPath() : input;
}

TalString ODLEXDatabase::GetSourceDirectory() const {
  const TalString source = GetSourcePath();
  const std::size_t separator = odlex::path::LastSeparator(source);
  return separator == RW_NPOS ? TalString() : TalString(source.subString(0, separator + 1));
}
