#include "LibmsiPeer.h"

#include <libmsi.h>

#include <fcntl.h>
#include <unistd.h>
#include <cctype>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace odlex::bench::libmsi_peer {
namespace {

struct ObjectUnref {
  void operator()(void* object) const { g_object_unref(object); }
};
template <typename T>
using Owned = std::unique_ptr<T, ObjectUnref>;

// Throws with the message of `error` (freeing it) when the call that set it failed.
void check(bool ok, GError* error, const std::string& what) {
  if (ok) {
    return;
  }
  std::string message = what;
  if (error) {
    message += ": ";
    message += error->message;
    g_error_free(error);
  }
  throw std::runtime_error("libmsi: " + message);
}

Owned<LibmsiQuery> runQuery(LibmsiDatabase* database, const std::string& sql) {
  GError* error = nullptr;
  Owned<LibmsiQuery> query(libmsi_query_new(database, sql.c_str(), &error));
  check(query != nullptr, error, sql);
  check(libmsi_query_execute(query.get(), nullptr, &error), error, sql);
  return query;
}

enum class FieldKind { kText, kInteger, kBinary };

// The kind of each result column, from libmsi's type codes ("s72", "I2", "v0", ...).
std::vector<FieldKind> fieldKinds(LibmsiQuery* query) {
  GError* error = nullptr;
  Owned<LibmsiRecord> types(libmsi_query_get_column_info(query, LIBMSI_COL_INFO_TYPES, &error));
  check(types != nullptr, error, "column types");
  std::vector<FieldKind> kinds;
  const guint count = libmsi_record_get_field_count(types.get());
  for (guint field = 1; field <= count; ++field) {
    gchar* type = libmsi_record_get_string(types.get(), field);
    const char code = static_cast<char>(std::tolower(static_cast<unsigned char>(type[0])));
    kinds.push_back(code == 'i'   ? FieldKind::kInteger
                    : code == 'v' ? FieldKind::kBinary
                                  : FieldKind::kText);
    g_free(type);
  }
  return kinds;
}

void readTable(LibmsiDatabase* database, const std::string& table, ReadTotals& totals) {
  Owned<LibmsiQuery> query = runQuery(database, "SELECT * FROM `" + table + "`");
  const std::vector<FieldKind> kinds = fieldKinds(query.get());
  for (;;) {
    GError* error = nullptr;
    Owned<LibmsiRecord> record(libmsi_query_fetch(query.get(), &error));
    if (!record) {
      // The end of the rows is reported as a "no more items" error.
      if (error) {
        g_error_free(error);
      }
      break;
    }
    ++totals.rows;
    for (guint field = 1; field <= kinds.size(); ++field) {
      if (libmsi_record_is_null(record.get(), field)) {
        continue;
      }
      ++totals.nonNullCells;
      if (kinds[field - 1] == FieldKind::kInteger) {
        totals.checksum += static_cast<std::uint32_t>(libmsi_record_get_int(record.get(), field));
      } else if (kinds[field - 1] == FieldKind::kText) {
        gchar* text = libmsi_record_get_string(record.get(), field);
        totals.checksum += std::strlen(text);
        g_free(text);
      }
    }
  }
}

std::string fieldText(LibmsiRecord* record, guint field) {
  gchar* text = libmsi_record_get_string(record, field);
  std::string value = text ? text : "";
  g_free(text);
  return value;
}

// Every row of `query` (executed), as records.
std::vector<Owned<LibmsiRecord>> fetchAll(LibmsiQuery* query) {
  std::vector<Owned<LibmsiRecord>> records;
  GError* error = nullptr;
  while (Owned<LibmsiRecord> record{libmsi_query_fetch(query, &error)}) {
    records.push_back(std::move(record));
  }
  // The end of the rows is reported as a "no more items" error.
  if (error) {
    g_error_free(error);
  }
  return records;
}

std::vector<std::string> tableNames(LibmsiDatabase* database) {
  std::vector<std::string> tables;
  Owned<LibmsiQuery> query = runQuery(database, "SELECT `Name` FROM `_Tables`");
  for (const Owned<LibmsiRecord>& record : fetchAll(query.get())) {
    tables.push_back(fieldText(record.get(), 1));
  }
  return tables;
}

Owned<LibmsiDatabase> openDatabase(const std::filesystem::path& package, const char* output) {
  GError* error = nullptr;
  Owned<LibmsiDatabase> database(
      libmsi_database_new(package.c_str(), output ? 0 : LIBMSI_DB_FLAGS_READONLY, output, &error));
  check(database != nullptr, error, "open " + package.string());
  return database;
}

void commit(LibmsiDatabase* database, const std::filesystem::path& target) {
  GError* error = nullptr;
  check(libmsi_database_commit(database, &error), error, "commit " + target.string());
}

// A text as an SQL string literal (the generated packages hold no quotes).
std::string sqlString(const std::string& text) {
  if (text.find('\'') != std::string::npos) {
    throw std::runtime_error("libmsi: cannot quote " + text);
  }
  return "'" + text + "'";
}

}  // namespace

ReadTotals readAll(const std::filesystem::path& package) {
  Owned<LibmsiDatabase> database = openDatabase(package, nullptr);
  const std::vector<std::string> tables = tableNames(database.get());
  ReadTotals totals;
  totals.tables = tables.size();
  for (const std::string& table : tables) {
    readTable(database.get(), table, totals);
  }
  return totals;
}

void rewrite(const std::filesystem::path& source, const std::filesystem::path& target) {
  Owned<LibmsiDatabase> database = openDatabase(source, target.c_str());
  commit(database.get(), target);
}

void deleteComponents(const std::filesystem::path& source, const std::filesystem::path& target,
                      const std::vector<std::string>& components) {
  Owned<LibmsiDatabase> database = openDatabase(source, target.c_str());
  for (const std::string& component : components) {
    for (const char* table : {"File", "Registry", "Shortcut"}) {
      runQuery(database.get(), std::string("DELETE FROM `") + table +
                                   "` WHERE `Component_` = " + sqlString(component));
    }
    runQuery(database.get(), "DELETE FROM `Component` WHERE `Component` = " + sqlString(component));
  }
  commit(database.get(), target);
}

void addComponents(const std::filesystem::path& source, const std::filesystem::path& target,
                   const NewComponents& added) {
  Owned<LibmsiDatabase> database = openDatabase(source, target.c_str());
  for (const NewComponent& item : added.items) {
    runQuery(database.get(),
             "INSERT INTO `Component` (`Component`, `ComponentId`, `Directory_`, `Attributes`, "
             "`KeyPath`) VALUES (" +
                 sqlString(item.component) + ", " + sqlString(item.guid) + ", " +
                 sqlString(added.directory) + ", 0, " + sqlString(item.file) + ")");
    runQuery(database.get(),
             "INSERT INTO `File` (`File`, `Component_`, `FileName`, `FileSize`, `Sequence`) "
             "VALUES (" +
                 sqlString(item.file) + ", " + sqlString(item.component) + ", " +
                 sqlString(item.fileName) + ", " + std::to_string(item.fileSize) + ", " +
                 std::to_string(item.sequence) + ")");
    runQuery(database.get(), "INSERT INTO `FeatureComponents` (`Feature_`, `Component_`) VALUES (" +
                                 sqlString(added.feature) + ", " + sqlString(item.component) + ")");
  }
  commit(database.get(), target);
}

void exportAll(const std::filesystem::path& package, const std::filesystem::path& directory) {
  Owned<LibmsiDatabase> database = openDatabase(package, nullptr);
  std::vector<std::string> tables = tableNames(database.get());
  tables.push_back("_SummaryInformation");
  for (const std::string& table : tables) {
    const std::filesystem::path file = directory / (table + ".idt");
    const int fd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0) {
      throw std::runtime_error("libmsi: cannot create " + file.string());
    }
    GError* error = nullptr;
    const bool exported = libmsi_database_export(database.get(), table.c_str(), fd, &error);
    ::close(fd);
    check(exported, error, "export " + table);
  }
}

unsigned searchAndReplace(const std::filesystem::path& source, const std::filesystem::path& target,
                          const std::string& find, const std::string& replace) {
  Owned<LibmsiDatabase> database = openDatabase(source, target.c_str());
  std::vector<std::string> updates;
  unsigned changedRows = 0;
  for (const std::string& table : tableNames(database.get())) {
    GError* error = nullptr;
    Owned<LibmsiRecord> keys(
        libmsi_database_get_primary_keys(database.get(), table.c_str(), &error));
    check(keys != nullptr, error, "primary keys of " + table);
    const guint keyCount = libmsi_record_get_field_count(keys.get());
    Owned<LibmsiQuery> query = runQuery(database.get(), "SELECT * FROM `" + table + "`");
    const std::vector<FieldKind> kinds = fieldKinds(query.get());
    Owned<LibmsiRecord> names(
        libmsi_query_get_column_info(query.get(), LIBMSI_COL_INFO_NAMES, &error));
    check(names != nullptr, error, "column names of " + table);
    for (const Owned<LibmsiRecord>& row : fetchAll(query.get())) {
      // The key columns lead the row; their values name it in the UPDATE.
      std::string where;
      for (guint key = 1; key <= keyCount; ++key) {
        const std::string value = fieldText(row.get(), key);
        where += std::string(key > 1 ? " AND `" : " WHERE `") + fieldText(names.get(), key) +
                 "` = " + (kinds[key - 1] == FieldKind::kInteger ? value : sqlString(value));
      }
      bool changed = false;
      for (guint field = keyCount + 1; field <= kinds.size(); ++field) {
        if (kinds[field - 1] != FieldKind::kText || libmsi_record_is_null(row.get(), field)) {
          continue;
        }
        std::string value = fieldText(row.get(), field);
        bool found = false;
        for (std::size_t at = value.find(find); at != std::string::npos;
             at = value.find(find, at + replace.size())) {
          value.replace(at, find.size(), replace);
          found = true;
        }
        if (found) {
          updates.push_back("UPDATE `" + table + "` SET `" + fieldText(names.get(), field) +
                            "` = " + sqlString(value) + where);
          changed = true;
        }
      }
      changedRows += changed ? 1 : 0;
    }
  }
  for (const std::string& update : updates) {
    runQuery(database.get(), update);
  }
  commit(database.get(), target);
  return changedRows;
}

}  // namespace odlex::bench::libmsi_peer
