// Fuzz target: the input is a whole package file. It is read three ways, each of which must
// reject damage with an error and never crash, hang or over-allocate:
//   - as a compound file: every entry's name decoded, every stream read, every summary
//     information stream decoded;
//   - as a summary information stream on its own;
//   - as a database opened read-only from memory: every cell of every table and catalog
//     table, every stream and storage, the summary information. A database that opens is
//     then saved and must open again.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "msi/engine/Database.h"
#include "storage/CompoundFile.h"
#include "storage/MemoryFileSystem.h"
#include "storage/StreamName.h"
#include "storage/SummaryInformation.h"

namespace {

using odlex::engine::Database;
using odlex::engine::Table;

constexpr std::u16string_view kSummaryStreamName = u"\x05SummaryInformation";

// Keeps values the compiler would otherwise treat as unused.
volatile std::size_t sink;

void readContainer(const std::vector<std::uint8_t>& bytes) {
  std::string error;
  const std::unique_ptr<odlex::storage::CompoundFileReader> reader =
      odlex::storage::CompoundFileReader::openBytes(bytes, error);
  if (!reader) {
    return;
  }
  sink = reader->majorVersion();
  const std::vector<odlex::storage::CompoundEntry>& entries = reader->entries();
  for (std::uint32_t index = 0; index < entries.size(); ++index) {
    sink = odlex::storage::decodeStreamName(entries[index].name).name.size();
    std::vector<std::uint8_t> data;
    if (entries[index].isStorage || !reader->readStream(index, data, error)) {
      continue;
    }
    if (entries[index].name == kSummaryStreamName) {
      odlex::storage::SummaryInformation summary;
      odlex::storage::readSummaryInformation(data, summary, error);
    }
  }
}

void readSummaryBytes(const std::vector<std::uint8_t>& bytes) {
  odlex::storage::SummaryInformation summary;
  std::string error;
  if (odlex::storage::readSummaryInformation(bytes, summary, error)) {
    sink = summary.codePage();
  }
}

void readTable(const Table& table, const odlex::engine::StringPool& pool) {
  for (std::size_t row = 0; row < table.rowCount(); ++row) {
    for (std::size_t column = 0; column < table.columnCount(); ++column) {
      const odlex::engine::Column& type = table.columns()[column];
      if (table.isNull(row, column)) {
        continue;
      }
      if (type.isString()) {
        sink = table.text(pool, row, column).size();
      } else if (type.isBinary()) {
        sink = table.streamName(pool, row).size();
      } else {
        sink = static_cast<std::size_t>(table.integer(row, column));
      }
    }
  }
}

void readDatabase(Database& database) {
  for (std::size_t index = 0; index < database.tableCount(); ++index) {
    readTable(database.table(index), database.strings());
  }
  for (std::u16string_view catalog : {u"_Tables", u"_Columns", u"_Streams", u"_Storages"}) {
    if (const std::unique_ptr<Table> view = database.catalogView(catalog)) {
      readTable(*view, database.strings());
    }
  }
  odlex::engine::Error error;
  for (const std::u16string& name : database.streamNames()) {
    std::vector<std::uint8_t> data;
    database.readStream(name, data, error);
  }
  for (const std::u16string& name : database.storageNames()) {
    odlex::storage::CompoundNode storage;
    database.readStorage(name, storage, error);
  }
  if (database.summary()) {
    sink = database.summary()->properties.size();
  }
}

std::unique_ptr<Database> openReadOnly(odlex::storage::MemoryFileSystem& fs, const char* path) {
  odlex::engine::Error error;
  return Database::open(fs, path, Database::OpenMode::kReadOnly, error);
}

void openDatabase(const std::uint8_t* data, std::size_t size) {
  odlex::storage::MemoryFileSystem fs;
  std::string writeError;
  if (!fs.writeFile("input.msi", {data, size}, writeError)) {
    std::abort();
  }
  const std::unique_ptr<Database> database = openReadOnly(fs, "input.msi");
  if (!database) {
    return;
  }
  readDatabase(*database);

  // Whatever the engine accepted it must be able to write back in a form it accepts again.
  odlex::engine::Error error;
  if (database->saveAs("copy.msi", error) == odlex::engine::kSuccess) {
    const std::unique_ptr<Database> copy = openReadOnly(fs, "copy.msi");
    if (!copy) {
      std::abort();
    }
    readDatabase(*copy);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<std::uint8_t> bytes(data, data + size);
  readContainer(bytes);
  readSummaryBytes(bytes);
  openDatabase(data, size);
  return 0;
}
