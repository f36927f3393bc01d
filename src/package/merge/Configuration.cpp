// Substituting configured values into a module's rows.

#include "package/merge/Configuration.h"

#include <charconv>
#include <optional>

#include "msi/engine/Text.h"

namespace odlex::merge {

namespace {

// The item formats of ModuleConfiguration.Format.
enum Format { kText = 0, kKey = 1, kInteger = 2, kBitfield = 3 };
// ModuleConfiguration.Attributes: the item may not be left empty.
constexpr int kNonNullable = 2;

struct Item {
  int format = kText;
  std::optional<std::u16string> value;  // the caller's or the default; none when null
  bool nonNullable = false;
  std::int32_t mask = 0;  // for bit fields: the bits the item sets (its Type column)
};

std::optional<std::int32_t> parseInteger(std::u16string_view text) {
  const std::string ascii = engine::toUtf8(text);
  std::int32_t value = 0;
  const char* end = ascii.data() + ascii.size();
  const auto [stop, error] = std::from_chars(ascii.data(), end, value);
  if (ascii.empty() || error != std::errc() || stop != end)
    return std::nullopt;
  return value;
}

std::map<std::u16string, Item> readItems(const TableRows* items, const ConfigurationValues& values,
                                         MergeLog& log) {
  std::map<std::u16string, Item> result;
  if (items) {
    for (const Row& row : items->rows) {
      Item item;
      item.format = items->integerOf(row, u"Format", kText);
      item.nonNullable = (items->integerOf(row, u"Attributes", 0) & kNonNullable) != 0;
      item.mask = parseInteger(items->textOf(row, u"Type")).value_or(0);
      const int index = items->columnIndex(u"DefaultValue");
      if (index >= 0 && !row[static_cast<std::size_t>(index)].isNull())
        item.value = row[static_cast<std::size_t>(index)].display();
      result[items->textOf(row, u"Name")] = item;
    }
  }
  for (const auto& [name, value] : values) {
    auto found = result.find(name);
    if (found == result.end())
      log.stop(ODLEXDatabaseError::eMergeStep51, ODLEXMergeError::eMissingConfigItem,
               u"the module has no configurable item " + name);
    if ((found->second.format == kInteger || found->second.format == kBitfield) &&
        !parseInteger(value))
      log.stop(ODLEXDatabaseError::eMergeStep51, ODLEXMergeError::eBadSubstitutionType,
               u"the configurable item " + name + u" takes an integer, not " + value);
    found->second.value = value;
  }
  return result;
}

// `text` with every "[=Item]" replaced by the item's value. `bitfield` receives the item
// when the text is one bit-field reference.
std::u16string substitute(const std::u16string& text, const std::map<std::u16string, Item>& items,
                          const Item** bitfield, MergeLog& log) {
  std::u16string result;
  std::size_t pos = 0;
  while (pos < text.size()) {
    const std::size_t open = text.find(u"[=", pos);
    const std::size_t close = open == std::u16string::npos ? open : text.find(u']', open);
    if (close == std::u16string::npos) {
      result += text.substr(pos);
      break;
    }
    result += text.substr(pos, open - pos);
    const std::u16string name = text.substr(open + 2, close - open - 2);
    const auto found = items.find(name);
    if (found == items.end())
      log.stop(ODLEXDatabaseError::eMergeStep51, ODLEXMergeError::eMissingConfigItem,
               u"a substitution names the configurable item " + name +
                   u", which the module does not have");
    const Item& item = found->second;
    if (!item.value && item.nonNullable)
      log.stop(ODLEXDatabaseError::eMergeStep51, ODLEXMergeError::eBadNullSubstitution,
               u"the configurable item " + name + u" has no value and no default");
    if (item.format == kBitfield && open == 0 && close + 1 == text.size())
      *bitfield = &item;
    result += item.value.value_or(u"");
    pos = close + 1;
  }
  return result;
}

// The rows of the module's tables by their keys as ModuleSubstitution.Row writes them
// ("a;b"), as the module has them before any substitution; each table indexed on first use.
class RowIndex {
 public:
  Row* find(TableRows& table, const std::u16string& key) {
    auto [indexed, made] = rows_.try_emplace(table.name);
    if (made) {
      for (Row& row : table.rows)
        indexed->second.emplace(table.keyText(row), &row);
    }
    const auto found = indexed->second.find(key);
    return found == indexed->second.end() ? nullptr : found->second;
  }

 private:
  std::map<std::u16string, std::map<std::u16string, Row*>> rows_;
};

}  // namespace

void applyConfiguration(std::map<std::u16string, TableRows, std::less<>>& tables,
                        const ConfigurationValues& values, MergeLog& log) {
  const auto itemTable = tables.find(u"ModuleConfiguration");
  const std::map<std::u16string, Item> items =
      readItems(itemTable == tables.end() ? nullptr : &itemTable->second, values, log);
  const auto substitutions = tables.find(u"ModuleSubstitution");
  if (substitutions == tables.end())
    return;
  const TableRows& rules = substitutions->second;
  RowIndex index;
  for (const Row& rule : rules.rows) {
    const std::u16string tableName = rules.textOf(rule, u"Table");
    const std::u16string where = tableName + u" row " + rules.textOf(rule, u"Row") + u" column " +
                                 rules.textOf(rule, u"Column");
    const auto target = tables.find(tableName);
    Row* row =
        target == tables.end() ? nullptr : index.find(target->second, rules.textOf(rule, u"Row"));
    const int column = row ? target->second.columnIndex(rules.textOf(rule, u"Column")) : -1;
    if (column < 0)
      log.stop(ODLEXDatabaseError::eMergeStep51, ODLEXMergeError::eBadSubstitutionType,
               u"a substitution names " + where + u", which the module does not have");
    const Item* bitfield = nullptr;
    const std::u16string text = substitute(rules.textOf(rule, u"Value"), items, &bitfield, log);
    Value& cell = (*row)[static_cast<std::size_t>(column)];
    const engine::Column& type = target->second.columns[static_cast<std::size_t>(column)];
    if (!type.isInteger()) {
      cell = Value::ofText(text);
      continue;
    }
    const std::optional<std::int32_t> number = parseInteger(text);
    if (!text.empty() && (!number || !type.holdsInteger(*number)))
      log.stop(ODLEXDatabaseError::eMergeStep51, ODLEXMergeError::eBadSubstitutionType,
               where + u" is an integer column; " + text + u" is not a value it holds");
    if (text.empty())
      cell = Value{};
    else if (bitfield)
      cell = Value::ofInteger((cell.isNull() ? 0 : cell.integer & ~bitfield->mask) |
                              (*number & bitfield->mask));
    else
      cell = Value::ofInteger(*number);
  }
}

}  // namespace odlex::merge
