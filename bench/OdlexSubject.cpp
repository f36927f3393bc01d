#include "OdlexSubject.h"

#include <memory>
#include <stdexcept>

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/tables/ODLEXTables.h>

#include "msi/engine/Database.h"

namespace odlex::bench::odlex_subject {
namespace {

std::unique_ptr<engine::Database> openReadOnly(const std::filesystem::path& package) {
  engine::Error error;
  std::unique_ptr<engine::Database> database = engine::Database::open(
      storage::FileSystem::real(), package, engine::Database::OpenMode::kReadOnly, error);
  if (!database) {
    throw std::runtime_error("odlex: " + error.text);
  }
  return database;
}

void readTable(const engine::Table& table, const engine::StringPool& pool, ReadTotals& totals) {
  const std::vector<engine::Column>& columns = table.columns();
  for (std::size_t row = 0; row < table.rowCount(); ++row) {
    ++totals.rows;
    for (std::size_t column = 0; column < columns.size(); ++column) {
      if (table.isNull(row, column)) {
        continue;
      }
      ++totals.nonNullCells;
      if (columns[column].isInteger()) {
        totals.checksum += static_cast<std::uint32_t>(table.integer(row, column));
      } else if (columns[column].isString()) {
        totals.checksum += table.text(pool, row, column).size();
      }
    }
  }
}

}  // namespace

ReadTotals readAll(const std::filesystem::path& package) {
  const std::unique_ptr<engine::Database> database = openReadOnly(package);
  ReadTotals totals;
  totals.tables = database->tableCount();
  for (std::size_t index = 0; index < database->tableCount(); ++index) {
    readTable(database->table(index), database->strings(), totals);
  }
  return totals;
}

void rewrite(const std::filesystem::path& source, const std::filesystem::path& target) {
  const std::unique_ptr<engine::Database> database = openReadOnly(source);
  engine::Error error;
  if (database->saveAs(target, error) != engine::kSuccess) {
    throw std::runtime_error("odlex: save " + target.string() + ": " + error.text);
  }
}

void deleteComponents(const std::filesystem::path& source, const std::filesystem::path& target,
                      const std::vector<std::string>& components) {
  static const bool initialized = (ODLEXDatabase::INIT(), true);
  (void)initialized;
  const TalString output = TalString::FromUtf8(target.string());
  ODLEXOpenType intoOutput(output.u16().c_str());
  ODLEXDatabase& database =
      ODLEXDatabase::AddDatabaseToList(TalString::FromUtf8(source.string()), intoOutput);
  ODLEXTComponent& table = database.GetComponent();
  for (const std::string& component : components)
    table.Delete(table.GetComponentWithID(TalString::FromUtf8(component)));
  const bool saved = database.SaveChanges();
  // Closing with save writes the output file's streams and summary information last.
  database.RemoveFromList(saved);
  if (!saved)
    throw std::runtime_error("odlex: save " + target.string());
}

}  // namespace odlex::bench::odlex_subject
