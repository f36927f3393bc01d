// odlex diff A B: what changed from package A to package B.
//
// Text output, one change a line, fields separated by tabs and escaped as in table text files:
//   codepage  OLD NEW
//   summary   PROPERTY OLD NEW
//   table     TABLE added|dropped
//   column    TABLE COLUMN added
//   row       TABLE KEY added|deleted        (KEY: the key values, joined by tabs)
//   cell      TABLE KEY COLUMN OLD NEW
//   stream    NAME added|changed|deleted     (streams outside the tables: cabinets, ...)
// A table whose columns changed other than by new columns at its end shows as dropped and added.
// Rows of an added table show as added rows with their cells.

#include "Cli.h"
#include "msi/engine/Text.h"
#include "package/diff/PackageDiff.h"

namespace odlex::cli {

namespace {

using transform::RowEdit;
using transform::TableEdit;
using transform::Value;

nlohmann::json jsonValue(const std::optional<Value>& value) {
  if (!value || value->kind == Value::kNull)
    return nullptr;
  return engine::toUtf8(value->display());
}

const char* rowChange(RowEdit::Kind kind) {
  return kind == RowEdit::kInsert ? "added" : kind == RowEdit::kDelete ? "deleted" : "changed";
}

// The cells a row edit shows: every non-null cell of an added row, the changed ones of an
// updated row, none of a deleted row.
template <typename Visit>
void forEachCell(const TableEdit& table, const RowEdit& row, Visit visit) {
  if (row.kind == RowEdit::kDelete)
    return;
  for (std::size_t c = table.keyCount; c < row.cells.size(); ++c) {
    if (!row.cells[c] || (row.kind == RowEdit::kInsert && row.cells[c]->kind == Value::kNull))
      continue;
    const std::optional<Value> before =
        c < row.before.size() ? std::optional<Value>(row.before[c]) : std::nullopt;
    visit(table.columns[c].name, before, *row.cells[c]);
  }
}

std::size_t firstAddedColumn(const TableEdit& table) {
  return table.columns.size() - table.addedColumns;
}

void printText(const package::PackageDifference& difference) {
  auto text = [](const std::string& utf8) { return engine::fromUtf8(utf8); };
  if (difference.codePageBefore != difference.codePageAfter)
    printFields({u"codepage", text(std::to_string(difference.codePageBefore)),
                 text(std::to_string(difference.codePageAfter))});
  for (const package::SummaryChange& change : difference.summary)
    printFields({u"summary", text(package::summaryPropertyName(change.property)), change.before,
                 change.after});
  for (const TableEdit& table : difference.tables.tables) {
    if (table.state != TableEdit::kChanged)
      printFields({u"table", table.name, table.state == TableEdit::kAdded ? u"added" : u"dropped"});
    for (std::size_t c = firstAddedColumn(table); c < table.columns.size(); ++c)
      printFields({u"column", table.name, table.columns[c].name, u"added"});
    for (const RowEdit& row : table.rows) {
      const std::u16string key = transform::keyText(row.cells, table.keyCount);
      if (row.kind != RowEdit::kUpdate)
        printFields({u"row", table.name, key, text(rowChange(row.kind))});
      forEachCell(table, row,
                  [&](const std::u16string& column, const std::optional<Value>& before,
                      const Value& after) {
                    printFields({u"cell", table.name, key, column,
                                 before ? before->display() : std::u16string(), after.display()});
                  });
    }
  }
  for (const transform::StreamEdit& stream : difference.tables.streams) {
    const char16_t* change = stream.kind == transform::StreamEdit::kInsert   ? u"added"
                             : stream.kind == transform::StreamEdit::kDelete ? u"deleted"
                                                                             : u"changed";
    printFields({u"stream", stream.name, change});
  }
}

nlohmann::json jsonDocument(const package::PackageDifference& difference) {
  nlohmann::json summary = nlohmann::json::array();
  for (const package::SummaryChange& change : difference.summary)
    summary.push_back({{"property", package::summaryPropertyName(change.property)},
                       {"before", engine::toUtf8(change.before)},
                       {"after", engine::toUtf8(change.after)}});
  nlohmann::json tables = nlohmann::json::array();
  for (const TableEdit& table : difference.tables.tables) {
    nlohmann::json columns = nlohmann::json::array();
    for (std::size_t c = firstAddedColumn(table); c < table.columns.size(); ++c)
      columns.push_back(engine::toUtf8(table.columns[c].name));
    nlohmann::json rows = nlohmann::json::array();
    for (const RowEdit& row : table.rows) {
      nlohmann::json key = nlohmann::json::array();
      for (std::size_t c = 0; c < table.keyCount; ++c)
        key.push_back(jsonValue(row.cells[c]));
      nlohmann::json cells = nlohmann::json::array();
      forEachCell(table, row,
                  [&](const std::u16string& column, const std::optional<Value>& before,
                      const Value& after) {
                    cells.push_back({{"column", engine::toUtf8(column)},
                                     {"before", jsonValue(before)},
                                     {"after", jsonValue(after)}});
                  });
      rows.push_back({{"key", key}, {"change", rowChange(row.kind)}, {"cells", cells}});
    }
    const char* state = table.state == TableEdit::kAdded     ? "added"
                        : table.state == TableEdit::kDropped ? "dropped"
                                                             : "changed";
    tables.push_back({{"name", engine::toUtf8(table.name)},
                      {"change", state},
                      {"addedColumns", columns},
                      {"rows", rows}});
  }
  nlohmann::json streams = nlohmann::json::array();
  for (const transform::StreamEdit& stream : difference.tables.streams) {
    const char* change = stream.kind == transform::StreamEdit::kInsert   ? "added"
                         : stream.kind == transform::StreamEdit::kDelete ? "deleted"
                                                                         : "changed";
    streams.push_back({{"name", engine::toUtf8(stream.name)}, {"change", change}});
  }
  return {
      {"codePage", {{"before", difference.codePageBefore}, {"after", difference.codePageAfter}}},
      {"summary", summary},
      {"tables", tables},
      {"streams", streams}};
}

}  // namespace

void addDiffCommand(Commands& commands) {
  struct Options {
    std::string a, b;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "diff",
      "what changed from package A to package B: tables, rows by key, cells, streams by "
      "content, code page and summary information",
      "odlex diff v1.msi v2.msi --json", [options] {
        auto a = openPackage(options->a, engine::Database::OpenMode::kReadOnly);
        auto b = openPackage(options->b, engine::Database::OpenMode::kReadOnly);
        package::PackageDifference difference;
        engine::Error error;
        if (!package::diffPackages(*a, *b, difference, error))
          throw Failure(error);
        if (options->json)
          printJson(jsonDocument(difference));
        else
          printText(difference);
        return 0;
      });
  command.add_option("A", options->a, "the package before")->required();
  command.add_option("B", options->b, "the package after")->required();
  addJsonFlag(command, options->json,
              R"({"codePage": {"before", "after"}, "summary": [{"property", "before", "after"}], )"
              R"("tables": [{"name", "change", "addedColumns", "rows": [{"key", "change", )"
              R"("cells": [{"column", "before", "after"}]}]}], "streams": [{"name", "change"}]})");
}

}  // namespace odlex::cli
