#include "OdlexSubject.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/tables/ODLEXDatabaseError.h>
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

namespace {

TalString text(const std::string& utf8) {
  return TalString::FromUtf8(utf8);
}

// Opens `source` through the class library to be saved as `target`, runs `edit` on it and
// saves. Closing with save writes the output file's streams and summary information last.
void editAndSave(const std::filesystem::path& source, const std::filesystem::path& target,
                 const std::function<void(ODLEXDatabase&)>& edit) {
  static const bool initialized = (ODLEXDatabase::INIT(), true);
  (void)initialized;
  const TalString output = text(target.string());
  ODLEXOpenType intoOutput(output.u16().c_str());
  ODLEXDatabase& database = ODLEXDatabase::AddDatabaseToList(text(source.string()), intoOutput);
  try {
    edit(database);
  } catch (const ODLEXDatabaseError& failure) {
    database.RemoveFromList(false);
    throw std::runtime_error(
        "odlex: error code " +
        std::to_string(static_cast<int>(failure.operator ODLEXDatabaseError::eCodeMeaning())));
  } catch (...) {
    database.RemoveFromList(false);
    throw;
  }
  const bool saved = database.SaveChanges();
  database.RemoveFromList(saved);
  if (!saved)
    throw std::runtime_error("odlex: save " + target.string());
}

void deleteWithCascade(ODLEXDatabase& database, const std::vector<std::string>& components) {
  ODLEXTComponent& table = database.GetComponent();
  for (const std::string& component : components)
    table.Delete(table.GetComponentWithID(text(component)));
}

}  // namespace

void deleteComponents(const std::filesystem::path& source, const std::filesystem::path& target,
                      const std::vector<std::string>& components) {
  editAndSave(source, target,
              [&](ODLEXDatabase& database) { deleteWithCascade(database, components); });
}

void addComponents(const std::filesystem::path& source, const std::filesystem::path& target,
                   NewComponents& added) {
  editAndSave(source, target, [&](ODLEXDatabase& database) {
    ODLEXTComponent& components = database.GetComponent();
    ODLEXTFile& files = database.GetFile();
    ODLEXTFeatureComponents& links = database.GetFeatureComponents();
    const TalString directory = text(added.directory);
    const TalString feature = text(added.feature);
    for (NewComponent& item : added.items) {
      MSIEComponent component(u"", text(item.guid), directory);
      component.SetKeyPath(text(item.file));
      components.Add(component);
      RWBTree& made = components.GetTempEntries();
      if (made.entries() != 1)
        throw std::runtime_error("odlex: no component was added");
      const TalString key = static_cast<MSIEComponent*>(*made.begin())->GetComponentID();
      item.component = key.ToUtf8();
      MSIEFile file(text(item.file));
      file.SetComponent(key);
      file.SetFileName(text(item.fileName));
      file.SetFileSize(item.fileSize);
      file.SetColumn(u"Sequence", MSIRecordColumn::Integer(item.sequence));
      files.Add(file);
      links.Add(MSIEFeatureComponents(feature, key));
    }
  });
}

void exportAll(const std::filesystem::path& package, const std::filesystem::path& directory) {
  static const bool initialized = (ODLEXDatabase::INIT(), true);
  (void)initialized;
  if (!ODLEXDatabase::ExportMSI(text(package.string()), text(directory.string() + "/")))
    throw std::runtime_error("odlex: export " + package.string());
}

unsigned searchAndReplace(const std::filesystem::path& source, const std::filesystem::path& target,
                          const std::string& find, const std::string& replace) {
  unsigned replaced = 0;
  editAndSave(source, target, [&](ODLEXDatabase& database) {
    for (const ODLEXDatabase::TableCount& count :
         database.SearchAndReplace(text(find), text(replace), 0))
      replaced += count.count;
  });
  return replaced;
}

void makeTransform(const std::filesystem::path& base, const std::filesystem::path& edited,
                   const std::vector<std::string>& components,
                   const std::filesystem::path& transform) {
  editAndSave(base, edited, [&](ODLEXDatabase& database) {
    deleteWithCascade(database, components);
    database.GetProperty().SetValue(u"ProductVersion", u"1.2.4.0");
    if (!database.GenerateTransform(text(base.string()), text(transform.string())))
      throw std::runtime_error("odlex: no transform from " + base.string());
  });
}

void applyTransform(const std::filesystem::path& source, const std::filesystem::path& target,
                    const std::filesystem::path& transform) {
  editAndSave(source, target,
              [&](ODLEXDatabase& database) { database.ApplyTransform(text(transform.string())); });
}

}  // namespace odlex::bench::odlex_subject
