#include "LibmsiPeer.h"

#include <libmsi.h>

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

}  // namespace

ReadTotals readAll(const std::filesystem::path& package) {
  GError* error = nullptr;
  Owned<LibmsiDatabase> database(
      libmsi_database_new(package.c_str(), LIBMSI_DB_FLAGS_READONLY, nullptr, &error));
  check(database != nullptr, error, "open " + package.string());

  std::vector<std::string> tables;
  Owned<LibmsiQuery> query = runQuery(database.get(), "SELECT `Name` FROM `_Tables`");
  while (Owned<LibmsiRecord> record{libmsi_query_fetch(query.get(), &error)}) {
    gchar* name = libmsi_record_get_string(record.get(), 1);
    tables.emplace_back(name);
    g_free(name);
  }
  if (error) {
    g_error_free(error);
  }

  ReadTotals totals;
  totals.tables = tables.size();
  for (const std::string& table : tables) {
    readTable(database.get(), table, totals);
  }
  return totals;
}

void rewrite(const std::filesystem::path& source, const std::filesystem::path& target) {
  GError* error = nullptr;
  Owned<LibmsiDatabase> database(libmsi_database_new(source.c_str(), 0, target.c_str(), &error));
  check(database != nullptr, error, "open " + source.string());
  check(libmsi_database_commit(database.get(), &error), error, "commit " + target.string());
}

void deleteComponents(const std::filesystem::path& source, const std::filesystem::path& target,
                      const std::vector<std::string>& components) {
  GError* error = nullptr;
  Owned<LibmsiDatabase> database(libmsi_database_new(source.c_str(), 0, target.c_str(), &error));
  check(database != nullptr, error, "open " + source.string());
  for (const std::string& component : components) {
    for (const char* table : {"File", "Registry", "Shortcut"}) {
      runQuery(database.get(),
               std::string("DELETE FROM `") + table + "` WHERE `Component_` = '" + component + "'");
    }
    runQuery(database.get(), "DELETE FROM `Component` WHERE `Component` = '" + component + "'");
  }
  check(libmsi_database_commit(database.get(), &error), error, "commit " + target.string());
}

}  // namespace odlex::bench::libmsi_peer
