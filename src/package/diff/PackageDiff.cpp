#include "package/diff/PackageDiff.h"

#include <map>
#include <set>

#include "msi/engine/Database.h"
#include "msi/engine/Text.h"

namespace odlex::package {

namespace {

std::u16string summaryText(const storage::SummaryValue& value) {
  switch (value.kind) {
    case storage::SummaryValue::kString:
      return value.text;
    case storage::SummaryValue::kFileTime:
      return engine::fromUtf8("filetime " + std::to_string(value.fileTime));
    case storage::SummaryValue::kInteger:
      break;
  }
  return engine::fromUtf8(std::to_string(value.integer));
}

std::map<std::uint32_t, std::u16string> summaryTexts(const engine::Database& db) {
  std::map<std::uint32_t, std::u16string> texts;
  if (db.summary()) {
    for (const auto& [id, value] : db.summary()->properties)
      texts[id] = summaryText(value);
  }
  return texts;
}

}  // namespace

std::string summaryPropertyName(std::uint32_t property) {
  static const std::map<std::uint32_t, std::string> names = {
      {storage::kPidCodePage, "CodePage"},
      {storage::kPidTitle, "Title"},
      {storage::kPidSubject, "Subject"},
      {storage::kPidAuthor, "Author"},
      {storage::kPidKeywords, "Keywords"},
      {storage::kPidComments, "Comments"},
      {storage::kPidTemplate, "Template"},
      {storage::kPidLastAuthor, "LastAuthor"},
      {storage::kPidRevisionNumber, "RevisionNumber"},
      {storage::kPidLastPrinted, "LastPrinted"},
      {storage::kPidCreateTime, "CreateTime"},
      {storage::kPidLastSaveTime, "LastSaveTime"},
      {storage::kPidPageCount, "PageCount"},
      {storage::kPidWordCount, "WordCount"},
      {storage::kPidCharacterCount, "CharacterCount"},
      {storage::kPidCreatingApplication, "CreatingApplication"},
      {storage::kPidSecurity, "Security"},
  };
  const auto found = names.find(property);
  return found != names.end() ? found->second : "Property" + std::to_string(property);
}

bool diffPackages(const engine::Database& a, const engine::Database& b, PackageDifference& out,
                  engine::Error& error) {
  out = {};
  if (!transform::diffDatabases(a, b, transform::SchemaChanges::kReplaceTable, out.tables, error))
    return false;
  out.codePageBefore = a.codePage();
  out.codePageAfter = b.codePage();
  const auto before = summaryTexts(a);
  const auto after = summaryTexts(b);
  std::set<std::uint32_t> ids;
  for (const auto& [id, text] : before)
    ids.insert(id);
  for (const auto& [id, text] : after)
    ids.insert(id);
  for (std::uint32_t id : ids) {
    const auto old = before.find(id);
    const auto now = after.find(id);
    std::u16string oldText = old != before.end() ? old->second : std::u16string();
    std::u16string newText = now != after.end() ? now->second : std::u16string();
    if (old == before.end() || now == after.end() || oldText != newText)
      out.summary.push_back(SummaryChange{id, std::move(oldText), std::move(newText)});
  }
  return true;
}

}  // namespace odlex::package
