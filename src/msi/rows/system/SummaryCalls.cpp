// MSIDatabase's summary information calls. They work on the table class of the summary
// information, which is built on this layer, so they are defined here with it.

#include <array>
#include <string_view>

#include "odlex/msi/MSIDatabase.h"
#include "odlex/msi/MSISystemTables.h"

namespace {

// Template platform texts, by ePlatform.
constexpr std::array<std::u16string_view, 5> kPlatformNames = {u"", u"Intel", u"x64", u"Arm64",
                                                               u"Intel64"};

std::u16string_view platformPart(std::u16string_view text) {
  return text.substr(0, text.find(u';'));
}

std::u16string_view languagePart(std::u16string_view text) {
  const std::size_t separator = text.find(u';');
  return separator == std::u16string_view::npos ? std::u16string_view()
                                                : text.substr(separator + 1);
}

MSIDatabase::ePlatform platformOf(std::u16string_view name) {
  for (std::size_t index = 1; index < kPlatformNames.size(); ++index) {
    if (name == kPlatformNames[index])
      return static_cast<MSIDatabase::ePlatform>(index);
  }
  return name == u"AMD64" ? MSIDatabase::ePlatformX64 : MSIDatabase::ePlatformNone;
}

// Loads `table` from `database` unless it already holds that database's row or changes of
// its own.
bool ensurePopulated(MSIDatabase& database, MSIT_SummaryInformation& table) {
  if (table.GetDatabase() == &database && (table.FindFirst() || table.IsDirty()))
    return true;
  table.SetDatabase(database);
  return table.Populate();
}

}  // namespace

bool MSIDatabase::GetSummaryInformation(MSIT_SummaryInformation& table,
                                        msidbSumInfoSourceType& sourceType, ePlatform& platform,
                                        TalString& title, TalString& subject, TalString& author,
                                        TalString& comments, NullableQuad& created,
                                        NullableQuad& lastSaved) {
  if (!ensurePopulated(*this, table))
    return false;
  const MSIE_SummaryInformation* row = table.FindFirst();
  if (!row)
    return false;
  sourceType = static_cast<msidbSumInfoSourceType>(
      row->GetWordCount().IsNull() ? 0 : row->GetWordCount().Get());
  platform = platformOf(platformPart(row->GetTemplate().u16()));
  title = row->GetTitle();
  subject = row->GetSubject();
  author = row->GetAuthor();
  comments = row->GetComments();
  created = row->GetCreateDateTime();
  lastSaved = row->GetLastSaveDateTime();
  return true;
}

bool MSIDatabase::UpdateSummaryInformation(MSIT_SummaryInformation& table, bool newPackageCode,
                                           msidbSumInfoSourceType sourceType, ePlatform platform,
                                           const TalString& title, const TalString& subject,
                                           const TalString& author, const TalString& comments) {
  if (!ensurePopulated(*this, table))
    return false;
  MSIE_SummaryInformation* row = table.FindFirst();
  if (!row)
    row = table.Add();
  if (!row)
    return false;
  const std::u16string_view name = static_cast<std::size_t>(platform) < kPlatformNames.size()
                                       ? kPlatformNames[platform]
                                       : std::u16string_view();
  const std::u16string oldTemplate = row->GetTemplate().u16();
  const std::u16string_view languages = languagePart(oldTemplate);
  row->SetTemplate(name.empty() && languages.empty()
                       ? TalString()
                       : TalString(std::u16string(name) + u";" + std::u16string(languages)));
  row->SetWordCount(NullableLong(sourceType));
  row->SetTitle(title);
  row->SetSubject(subject);
  row->SetAuthor(author);
  row->SetComments(comments);
  if (newPackageCode)
    row->SetRevNumber(MSITable::GenerateGUID());
  row->Modify();
  return true;
}
