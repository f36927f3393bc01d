#include "msi/idt/IdtHeader.h"

#include "msi/engine/TypeWord.h"
#include "msi/idt/FieldText.h"
#include "msi/idt/IdtLines.h"
#include "msi/idt/TextCodec.h"
#include "storage/CodePage.h"

namespace odlex::idt {
namespace {

class HeaderParser {
 public:
  HeaderParser(const std::filesystem::path& file, engine::Error& error)
      : file_(file), error_(error) {}

  std::uint32_t fail(std::size_t line, const std::string& reason) {
    error_ = {engine::kFunctionFailed, positionPrefix(file_, line) + reason};
    return error_.code;
  }

  bool decodeName(std::uint32_t codePage, std::string_view bytes, std::size_t line,
                  std::size_t field, std::u16string& name) {
    std::string reason;
    if (!storage::decodeCodePage(codePage, bytes, name, reason)) {
      fail(line, "field " + std::to_string(field) + ": " + reason);
      return false;
    }
    if (name.empty()) {
      fail(line, "field " + std::to_string(field) + ": empty name");
      return false;
    }
    return true;
  }

 private:
  const std::filesystem::path& file_;
  engine::Error& error_;
};

}  // namespace

bool isForceCodepageFile(const std::vector<std::string_view>& lines, std::string_view& codePage) {
  if (lines.size() < 3 || !lines[0].empty() || !lines[1].empty())
    return false;
  const std::vector<std::string_view> fields = splitFields(lines[2], 2);
  if (fields.size() != 2 || fields[1] != "_ForceCodepage")
    return false;
  codePage = fields[0];
  return true;
}

std::uint32_t parseHeader(const std::vector<std::string_view>& lines,
                          const std::filesystem::path& file, std::uint32_t defaultCodePage,
                          IdtHeader& header, engine::Error& error) {
  HeaderParser parser(file, error);
  if (lines.size() < 3) {
    return parser.fail(lines.size() + 1, "missing header line (names, types, table and keys)");
  }
  std::vector<std::string_view> tableLine = splitFields(lines[2], kMaxColumns + 2);
  header.taggedCodePage = 0;
  if (std::uint32_t codePage = 0; parseSmallDecimal(tableLine[0], codePage)) {
    if (!storage::isSupportedCodePage(codePage)) {
      return parser.fail(3, "unsupported code page " + std::string(tableLine[0]));
    }
    header.taggedCodePage = codePage;
    tableLine.erase(tableLine.begin());
  }
  const std::uint32_t codePage = header.taggedCodePage ? header.taggedCodePage : defaultCodePage;
  if (tableLine.size() < 2)
    return parser.fail(3, "expected the table name and its key columns");

  const std::vector<std::string_view> names = splitFields(lines[0], kMaxColumns);
  const std::vector<std::string_view> types = splitFields(lines[1], kMaxColumns);
  if (names.size() > kMaxColumns) {
    return parser.fail(
        1, "more than the " + std::to_string(kMaxColumns) + " columns a table may have");
  }
  if (types.size() != names.size()) {
    return parser.fail(2, std::to_string(types.size()) + " type words for " +
                              std::to_string(names.size()) + " columns");
  }
  header.columns.clear();
  for (std::size_t i = 0; i < names.size(); ++i) {
    engine::Column column;
    if (!parser.decodeName(codePage, names[i], 1, i + 1, column.name))
      return error.code;
    for (const engine::Column& earlier : header.columns) {
      if (earlier.name == column.name) {
        return parser.fail(1, "field " + std::to_string(i + 1) + ": duplicate column name " +
                                  forMessage(column.name));
      }
    }
    const auto type = engine::parseTypeWord(types[i]);
    if (!type) {
      return parser.fail(2, "field " + std::to_string(i + 1) + ": bad column type '" +
                                std::string(types[i].substr(0, 16)) + "'");
    }
    column.type = *type;
    header.columns.push_back(std::move(column));
  }

  if (!parser.decodeName(codePage, tableLine[0], 3, 1, header.table))
    return error.code;
  const std::size_t keyCount = tableLine.size() - 1;
  if (keyCount > header.columns.size()) {
    return parser.fail(3, std::to_string(keyCount) + " key columns for " +
                              std::to_string(header.columns.size()) + " columns");
  }
  for (std::size_t k = 0; k < keyCount; ++k) {
    std::u16string key;
    if (!parser.decodeName(codePage, tableLine[k + 1], 3, k + 2, key))
      return error.code;
    if (key != header.columns[k].name) {
      return parser.fail(3, "field " + std::to_string(k + 2) + ": key column " + forMessage(key) +
                                " is not column " + std::to_string(k + 1) +
                                "; key columns must be the leading columns, in order");
    }
    header.columns[k].type |= engine::column_type::kKey;
  }
  return engine::kSuccess;
}

}  // namespace odlex::idt
