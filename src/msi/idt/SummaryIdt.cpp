#include <algorithm>

#include "msi/idt/FieldText.h"
#include "msi/idt/IdtLines.h"
#include "msi/idt/IdtWriter.h"
#include "msi/idt/PseudoTables.h"
#include "msi/idt/TextCodec.h"
#include "msi/idt/TextEscape.h"
#include "storage/CodePage.h"

namespace odlex::idt {
namespace {

namespace ct = engine::column_type;

// Property 10 is the total editing time, kept as a FILETIME like the dates.
constexpr std::uint32_t kPidEditTime = 10;

std::vector<engine::Column> summaryColumns() {
  return {{u"PropertyId", static_cast<std::uint16_t>(ct::kInteger16 | ct::kKey)},
          {u"Value", static_cast<std::uint16_t>(ct::kText | ct::kLocalizable | 255)}};
}

// The kind of value each summary property holds; false for ids the stream does not define.
bool propertyKind(std::uint32_t id, storage::SummaryValue::Kind& kind) {
  switch (id) {
    case storage::kPidCodePage:
    case storage::kPidPageCount:
    case storage::kPidWordCount:
    case storage::kPidCharacterCount:
    case storage::kPidSecurity:
      kind = storage::SummaryValue::kInteger;
      return true;
    case kPidEditTime:
    case storage::kPidLastPrinted:
    case storage::kPidCreateTime:
    case storage::kPidLastSaveTime:
      kind = storage::SummaryValue::kFileTime;
      return true;
    case storage::kPidTitle:
    case storage::kPidSubject:
    case storage::kPidAuthor:
    case storage::kPidKeywords:
    case storage::kPidComments:
    case storage::kPidTemplate:
    case storage::kPidLastAuthor:
    case storage::kPidRevisionNumber:
    case storage::kPidCreatingApplication:
      kind = storage::SummaryValue::kString;
      return true;
    default:
      return false;
  }
}

std::u16string widen(const std::string& ascii) {
  return {ascii.begin(), ascii.end()};
}

std::u16string valueText(const storage::SummaryValue& value) {
  switch (value.kind) {
    case storage::SummaryValue::kInteger:
      return widen(std::to_string(value.integer));
    case storage::SummaryValue::kFileTime:
      return widen(formatFileTime(value.fileTime));
    case storage::SummaryValue::kString:
      break;
  }
  return value.text;
}

// Parses the Value field of one row into `value`; false with the reason.
bool parseValue(std::uint32_t codePage, std::string_view field, storage::SummaryValue& value,
                std::string& reason) {
  switch (value.kind) {
    case storage::SummaryValue::kInteger:
      if (parseInteger(field, 4, value.integer))
        return true;
      reason = "not an integer: '" + std::string(field.substr(0, 32)) + "'";
      return false;
    case storage::SummaryValue::kFileTime:
      if (parseFileTime(field, value.fileTime))
        return true;
      reason = "not a time (YYYY/MM/DD hh:mm:ss): '" + std::string(field.substr(0, 32)) + "'";
      return false;
    case storage::SummaryValue::kString:
      break;
  }
  if (!storage::decodeCodePage(codePage, field, value.text, reason))
    return false;
  value.text = unescapeValue(value.text);
  return true;
}

}  // namespace

std::uint32_t exportSummary(const engine::Database& db, ExportedTable& out, engine::Error& error) {
  IdtWriter writer(db.codePage());
  std::string reason;
  bool ok = writer.writeHeader(summaryColumns(), kSummaryInformationTable, reason);
  if (db.summary()) {
    for (const auto& [id, value] : db.summary()->properties) {
      if (!ok)
        break;
      ok = writer.writeRow({widen(std::to_string(id)), valueText(value)}, reason);
    }
  }
  if (!ok) {
    error = {engine::kFunctionFailed, "_SummaryInformation: " + reason};
    return error.code;
  }
  out = {writer.finish(), "_SummaryInformation", {}};
  return engine::kSuccess;
}

std::uint32_t importSummary(engine::Database& db, LineCursor& lines, std::uint32_t codePage,
                            const std::filesystem::path& file, engine::Error& error) {
  storage::SummaryInformation info;
  for (std::string_view line; lines.next(line);) {
    if (line.empty())
      continue;
    const std::size_t lineNumber = lines.number();
    const auto fail = [&](std::size_t field, const std::string& reason) {
      error = {engine::kFunctionFailed,
               positionPrefix(file, lineNumber) + "field " + std::to_string(field) + ": " + reason};
      return error.code;
    };
    const std::vector<std::string_view> fields = splitFields(line, 2);
    if (fields.size() != 2) {
      return fail(std::min<std::size_t>(fields.size(), 3),
                  fields.size() > 2 ? "unexpected field" : "missing Value field");
    }
    std::int32_t id = 0;
    storage::SummaryValue value;
    if (!parseInteger(fields[0], 2, id) || id < 0 ||
        !propertyKind(static_cast<std::uint32_t>(id), value.kind)) {
      return fail(1, "unknown summary property '" + std::string(fields[0].substr(0, 16)) + "'");
    }
    if (info.properties.contains(static_cast<std::uint32_t>(id))) {
      return fail(1, "summary property " + std::to_string(id) + " given twice");
    }
    if (fields[1].empty())
      continue;
    std::string reason;
    if (!parseValue(codePage, fields[1], value, reason))
      return fail(2, reason);
    info.properties.emplace(static_cast<std::uint32_t>(id), std::move(value));
  }
  db.setSummary(std::move(info));
  return engine::kSuccess;
}

}  // namespace odlex::idt
