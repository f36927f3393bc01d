#include "msi/idt/TableImporter.h"

#include <algorithm>
#include <map>
#include <numeric>

#include "msi/idt/FieldText.h"
#include "msi/idt/IdtLines.h"
#include "msi/idt/SafeFileName.h"
#include "msi/idt/TextCodec.h"
#include "msi/idt/TextEscape.h"
#include "storage/CodePage.h"

namespace odlex::idt {
namespace {

constexpr std::uint32_t kUtf8 = 65001;

bool sameColumns(const std::vector<engine::Column>& a, const std::vector<engine::Column>& b) {
  if (a.size() != b.size())
    return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i].name != b[i].name || a[i].type != b[i].type)
      return false;
  }
  return true;
}

// A host path component for a name already checked with isPlainFileName.
bool hostName(std::u16string_view name, std::filesystem::path& out) {
  std::string utf8;
  std::string reason;
  if (!encodeText(kUtf8, name, utf8, reason))
    return false;
  out = std::filesystem::path(utf8);
  return true;
}

}  // namespace

std::uint32_t TableImporter::fail(std::uint32_t code, std::size_t line, std::size_t field,
                                  const std::string& reason) {
  std::string text = positionPrefix(file_, line);
  if (field > 0) {
    text += "field " + std::to_string(field);
    if (field <= header_.columns.size()) {
      text += " (" + forMessage(header_.columns[field - 1].name) + ")";
    }
    text += ": ";
  }
  error_ = {code, text + reason};
  return code;
}

bool TableImporter::readBinary(std::u16string_view fileName, std::size_t lineNumber,
                               std::size_t column, std::vector<std::uint8_t>& data) {
  std::filesystem::path folder;
  std::filesystem::path name;
  if (!isPlainFileName(header_.table) || !hostName(header_.table, folder)) {
    fail(engine::kBadPathname, lineNumber, column + 1,
         "table name " + forMessage(header_.table) + " cannot name a data folder");
    return false;
  }
  if (!isPlainFileName(fileName) || !hostName(fileName, name)) {
    fail(engine::kBadPathname, lineNumber, column + 1,
         "unsafe data file name '" + forMessage(fileName) + "'");
    return false;
  }
  const std::filesystem::path path = file_.parent_path() / folder / name;
  std::string bytes;
  engine::Error readError;
  if (readBoundedFile(fs_, path, kMaxInputFileSize, bytes, readError) != engine::kSuccess) {
    fail(readError.code, lineNumber, column + 1, readError.text);
    return false;
  }
  data.assign(bytes.begin(), bytes.end());
  return true;
}

bool TableImporter::stageCell(std::string_view field, std::size_t lineNumber, std::size_t row,
                              std::size_t column) {
  const engine::Column& info = header_.columns[column];
  if (field.empty()) {
    if (info.nullable())
      return true;
    fail(engine::kFunctionFailed, lineNumber, column + 1, "null in a column that requires a value");
    return false;
  }
  if (info.isInteger()) {
    std::int32_t value = 0;
    if (!parseInteger(field, info.integerSize(), value)) {
      fail(engine::kFunctionFailed, lineNumber, column + 1,
           "'" + std::string(field.substr(0, 32)) + "' is not an integer of " +
               std::to_string(info.integerSize()) + " bytes");
      return false;
    }
    staged_.setCell(row, column, static_cast<std::uint32_t>(value));
    return true;
  }
  std::u16string decoded;
  std::string reason;
  if (!storage::decodeCodePage(codePage_, field, decoded, reason)) {
    fail(engine::kFunctionFailed, lineNumber, column + 1, reason);
    return false;
  }
  const std::u16string text = unescapeValue(decoded);
  if (info.isBinary()) {
    std::vector<std::uint8_t> data;
    if (!readBinary(text, lineNumber, column, data))
      return false;
    staged_.setCell(row, column, 1);
    data_.emplace_back(row, std::move(data));
    return true;
  }
  if (options_.warnings && info.maxLength() != 0 && text.size() > info.maxLength()) {
    options_.warnings->push_back(
        positionPrefix(file_, lineNumber) + "field " + std::to_string(column + 1) + " (" +
        forMessage(info.name) + "): " + std::to_string(text.size()) +
        " characters, longer than the column's " + std::to_string(info.maxLength()));
  }
  staged_.setCell(row, column, stagedStrings_.intern(text));
  return true;
}

bool TableImporter::stageRow(std::string_view line, std::size_t lineNumber) {
  const std::vector<std::string_view> fields = splitFields(line, header_.columns.size());
  if (fields.size() != header_.columns.size()) {
    const std::string count = fields.size() > header_.columns.size()
                                  ? "more than " + std::to_string(header_.columns.size())
                                  : std::to_string(fields.size());
    fail(engine::kFunctionFailed, lineNumber, 0,
         count + " fields in a table of " + std::to_string(header_.columns.size()) + " columns");
    return false;
  }
  const std::size_t row = staged_.addRow();
  lineOfRow_.push_back(lineNumber);
  for (std::size_t c = 0; c < fields.size(); ++c) {
    if (!stageCell(fields[c], lineNumber, row, c))
      return false;
  }
  return true;
}

bool TableImporter::checkMergeTarget() {
  const engine::Table* existing = db_.findTable(header_.table);
  if (existing == nullptr || sameColumns(existing->columns(), header_.columns))
    return true;
  error_ = {engine::kDatatypeMismatch, positionPrefix(file_, 0) + "table " +
                                           forMessage(header_.table) +
                                           " exists with other columns; cannot merge rows"};
  return false;
}

bool TableImporter::checkUniqueKeys() {
  // Staged text is pooled, so equal keys have equal cells.
  const std::size_t keys = staged_.keyCount();
  const auto keyOf = [&](std::size_t row) { return staged_.row(row).first(keys); };
  std::vector<std::size_t> order(staged_.rowCount());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return std::ranges::lexicographical_compare(keyOf(a), keyOf(b));
  });
  for (std::size_t i = 1; i < order.size(); ++i) {
    if (std::ranges::equal(keyOf(order[i - 1]), keyOf(order[i]))) {
      fail(
          engine::kFunctionFailed, lineOfRow_[order[i]], 0,
          "duplicate primary key (first on line " + std::to_string(lineOfRow_[order[i - 1]]) + ")");
      return false;
    }
  }
  return true;
}

std::uint32_t TableImporter::run(LineCursor& lines) {
  if (options_.mode == ImportMode::kMergeRows && !checkMergeTarget())
    return error_.code;
  for (std::string_view line; lines.next(line);) {
    if (!line.empty() && !stageRow(line, lines.number()))
      return error_.code;
  }
  if (!checkUniqueKeys())
    return error_.code;
  return commit();
}

std::uint32_t TableImporter::commit() {
  if (options_.mode == ImportMode::kReplaceTable)
    db_.dropTable(header_.table);
  engine::Table* table = db_.findTable(header_.table);
  if (table == nullptr) {
    // Only a name the database cannot store fails here: the header was checked for everything
    // else a new table needs, and a replaced table had this name already.
    table = db_.createTable(header_.table, header_.columns, error_);
    if (table == nullptr)
      return fail(error_.code, 0, 0, error_.text);
  }
  // Rows already in the table by key, for merging.
  std::map<std::vector<std::uint32_t>, std::size_t> existing;
  for (std::size_t row = 0; row < table->rowCount(); ++row) {
    const auto key = table->row(row).first(table->keyCount());
    existing.emplace(std::vector<std::uint32_t>(key.begin(), key.end()), row);
  }
  engine::StringPool& pool = db_.strings();
  // Staged string id -> database string id, filled on first use.
  std::vector<std::uint32_t> stringIds(stagedStrings_.size(), 0);
  std::vector<std::uint32_t> cells(header_.columns.size());
  std::size_t nextData = 0;
  for (std::size_t row = 0; row < staged_.rowCount(); ++row) {
    for (std::size_t c = 0; c < cells.size(); ++c) {
      cells[c] = staged_.cell(row, c);
      if (header_.columns[c].isString() && cells[c] != 0) {
        std::uint32_t& id = stringIds[cells[c]];
        if (id == 0)
          id = pool.intern(stagedStrings_.get(cells[c]));
        cells[c] = id;
      }
    }
    std::size_t index = table->rowCount();
    const auto found =
        existing.find(std::vector<std::uint32_t>(cells.begin(), cells.begin() + table->keyCount()));
    if (found == existing.end()) {
      table->appendRow(cells);
    } else {
      // Merging over an existing row: its old binary data goes with it.
      index = found->second;
      db_.removeStream(table->streamName(pool, index));
      for (std::size_t c = 0; c < cells.size(); ++c)
        table->setCell(index, c, cells[c]);
    }
    for (; nextData < data_.size() && data_[nextData].first == row; ++nextData) {
      db_.setStream(table->streamName(pool, index), std::move(data_[nextData].second));
    }
  }
  return engine::kSuccess;
}

}  // namespace odlex::idt
