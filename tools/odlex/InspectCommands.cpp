// Commands that read a package and never change it.

#include <cstdio>
#include <string>

#include "Cli.h"
#include "msi/engine/Text.h"
#include "msi/idt/Idt.h"
#include "msi/query/Query.h"
#include "storage/FileSystem.h"

namespace odlex::cli {

namespace {
using OpenMode = engine::Database::OpenMode;

void printLine(const std::string& line) {
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fputc('\n', stdout);
}

std::string fieldText(const query::Field& field) {
  switch (field.kind) {
    case query::Field::Kind::kNull:
      return {};
    case query::Field::Kind::kInteger:
      return std::to_string(field.integer);
    case query::Field::Kind::kString:
    case query::Field::Kind::kStream:
      return engine::toUtf8(field.text);
  }
  return {};
}
}  // namespace

int tablesCommand(const Arguments& args) {
  args.expectCount(1, "tables");
  auto db = openPackage(args.positional[0], OpenMode::kReadOnly);
  for (std::size_t i = 0; i < db->tableCount(); ++i)
    printLine(engine::toUtf8(db->table(i).name()));
  return 0;
}

int exportCommand(const Arguments& args) {
  args.expectCount(2, "export");
  auto db = openPackage(args.positional[0], OpenMode::kReadOnly);
  const std::u16string table = engine::fromUtf8(args.positional[1]);
  engine::Error error;
  if (args.output) {
    check(idt::exportTable(*db, table, storage::FileSystem::real(), *args.output, error), error);
    return 0;
  }
  idt::ExportedTable exported;
  check(idt::exportTableText(*db, table, exported, error), error);
  std::fwrite(exported.text.data(), 1, exported.text.size(), stdout);
  if (!exported.binaries.empty()) {
    std::fprintf(stderr, "odlex: %zu data files of %s not written; use -o FILE to write them\n",
                 exported.binaries.size(), args.positional[1].c_str());
  }
  return 0;
}

int exportAllCommand(const Arguments& args) {
  args.expectCount(2, "export-all");
  auto db = openPackage(args.positional[0], OpenMode::kReadOnly);
  engine::Error error;
  check(idt::exportAll(*db, storage::FileSystem::real(), args.positional[1], error), error);
  return 0;
}

int queryCommand(const Arguments& args) {
  args.expectCount(2, "query");
  auto db = openPackage(args.positional[0], OpenMode::kReadOnly);
  engine::Error error;
  auto view = query::Query::prepare(*db, engine::fromUtf8(args.positional[1]), error);
  if (!view)
    throw Failure(error);
  check(view->execute(error), error);
  query::Record record;
  while (view->fetch(record) == engine::kSuccess) {
    std::string line;
    for (std::size_t i = 0; i < record.size(); ++i) {
      if (i)
        line += '\t';
      line += fieldText(record[i]);
    }
    printLine(line);
  }
  return 0;
}

}  // namespace odlex::cli
