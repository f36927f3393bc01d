// Opening a database: the container directory, the string pool, the catalog tables and
// every table. Anything inconsistent is refused with kInstallPackageInvalid and a reason.

#include <algorithm>
#include <map>
#include <set>

#include "msi/engine/Catalog.h"
#include "msi/engine/Database.h"
#include "msi/engine/StringPoolCodec.h"
#include "msi/engine/TableCodec.h"
#include "msi/engine/Text.h"
#include "storage/StreamName.h"

namespace odlex::engine {

namespace {
// The class id that marks a container as an installer package.
constexpr storage::Clsid kPackageClsid = {0x84, 0x10, 0x0C, 0x00, 0x00, 0x00, 0x00, 0x00,
                                          0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};
constexpr char16_t kSummaryStreamName[] = u"\u0005SummaryInformation";
}  // namespace

std::unique_ptr<Database> Database::open(storage::FileSystem& fs, const std::filesystem::path& path,
                                         OpenMode mode, Error& error) {
  std::unique_ptr<Database> db(new Database(fs, mode));
  db->sourcePath_ = db->outputPath_ = path;
  if (mode == OpenMode::kCreate) {
    db->rootClsid_ = kPackageClsid;
    db->outputStamp_ = fs.stampOf(path);
    return db;
  }
  std::string reason;
  auto file = fs.openRead(path, reason);
  if (!file) {
    error = Error{kOpenFailed, path.string() + ": " + reason};
    return nullptr;
  }
  db->sourceStamp_ = db->outputStamp_ = file->stamp();
  db->reader_ = storage::CompoundFileReader::open(std::move(file), reason);
  if (!db->reader_) {
    error = Error{kInstallPackageInvalid, path.string() + ": " + reason};
    return nullptr;
  }
  if (!db->load(error)) {
    error.text = path.string() + ": " + error.text;
    return nullptr;
  }
  return db;
}

std::unique_ptr<Database> Database::openInto(storage::FileSystem& fs,
                                             const std::filesystem::path& source,
                                             const std::filesystem::path& output, Error& error) {
  auto db = open(fs, source, OpenMode::kReadOnly, error);
  if (db) {
    db->mode_ = OpenMode::kUpdate;
    db->outputPath_ = output;
    db->outputStamp_ = fs.stampOf(output);
  }
  return db;
}

bool Database::load(Error& error) {
  auto fail = [&error](std::string text) {
    error = Error{kInstallPackageInvalid, std::move(text)};
    return false;
  };
  const auto& entries = reader_->entries();
  rootClsid_ = entries[0].clsid;

  std::map<std::u16string, std::uint32_t> tableStreams;
  std::uint32_t summaryEntry = kNoEntry;
  for (std::uint32_t child : entries[0].children) {
    const storage::CompoundEntry& entry = entries[child];
    storage::DecodedStreamName decoded = storage::decodeStreamName(entry.name);
    if (entry.isStorage) {
      storages_.push_back(StorageSlot{decoded.name, entry.name, child, std::nullopt});
    } else if (entry.name == kSummaryStreamName) {
      summaryEntry = child;
    } else if (decoded.isTable && !tableStreams.contains(decoded.name)) {
      tableStreams.emplace(decoded.name, child);
    } else {
      // A second stream under a name already taken (a table name twice, or one name packed
      // and unpacked) is kept as it is, unseen by the tables.
      StreamSlot slot{decoded.name, entry.name, child, std::nullopt, nullptr};
      if (decoded.isTable || !streams_.emplace(decoded.name, slot).second)
        preserved_.push_back(std::move(slot));
    }
  }

  std::string reason;
  auto readTableStream = [&](const char16_t* name, std::vector<std::uint8_t>& bytes) {
    bytes.clear();
    auto found = tableStreams.find(name);
    if (found == tableStreams.end())
      return true;
    bool ok = reader_->readStream(found->second, bytes, reason);
    tableStreams.erase(found);
    return ok;
  };

  std::vector<std::uint8_t> poolBytes, dataBytes;
  if (!tableStreams.contains(u"_StringPool") || !tableStreams.contains(u"_StringData")) {
    return fail("not an installer database: the string pool is missing");
  }
  if (!readTableStream(u"_StringPool", poolBytes) || !readTableStream(u"_StringData", dataBytes)) {
    return fail("string pool: " + reason);
  }
  LoadedPool loaded;
  if (!readStringPool(poolBytes, dataBytes, strings_, loaded, reason))
    return fail(reason);
  codePage_ = loaded.codePage;
  const unsigned referenceSize = loaded.referenceSize;
  poolBytes = {};
  dataBytes = {};

  std::vector<std::uint8_t> bytes;
  Table tablesCatalog(u"_Tables", tablesCatalogColumns());
  Table columnsCatalog(u"_Columns", columnsCatalogColumns());
  if (!readTableStream(u"_Tables", bytes) ||
      !decodeTable(bytes, tablesCatalog, referenceSize, strings_.size(), reason) ||
      !readTableStream(u"_Columns", bytes) ||
      !decodeTable(bytes, columnsCatalog, referenceSize, strings_.size(), reason)) {
    return fail(reason);
  }

  // Columns of each table, by table name id, checked to be numbered 1..n.
  std::map<std::uint32_t, std::vector<std::pair<std::int32_t, Column>>> columnsByTable;
  for (std::size_t r = 0; r < columnsCatalog.rowCount(); ++r) {
    std::uint32_t tableId = columnsCatalog.cell(r, 0);
    std::int32_t number = columnsCatalog.integer(r, 1);
    std::uint32_t nameId = columnsCatalog.cell(r, 2);
    std::int32_t type = columnsCatalog.integer(r, 3);
    if (tableId == 0 || nameId == 0 || number == kNullInteger || type == kNullInteger) {
      return fail("_Columns row " + std::to_string(r + 1) + " has a null field");
    }
    Column column{std::u16string(strings_.get(nameId)), static_cast<std::uint16_t>(type)};
    if (column.temporary() || (column.isInteger() && (column.type & column_type::kSizeMask) != 2 &&
                               (column.type & column_type::kSizeMask) != 4)) {
      return fail("_Columns row " + std::to_string(r + 1) + ": column " + toUtf8(column.name) +
                  " has an invalid type " + std::to_string(type));
    }
    columnsByTable[tableId].emplace_back(number, std::move(column));
  }

  std::set<std::uint32_t> seen;
  for (std::size_t r = 0; r < tablesCatalog.rowCount(); ++r) {
    std::uint32_t nameId = tablesCatalog.cell(r, 0);
    const std::string name = toUtf8(strings_.get(nameId));
    if (nameId == 0)
      return fail("_Tables row " + std::to_string(r + 1) + " has no name");
    if (!seen.insert(nameId).second)
      return fail("table " + name + " is listed twice in _Tables");
    auto found = columnsByTable.find(nameId);
    if (found == columnsByTable.end())
      return fail("table " + name + " has no columns");
    auto& numbered = found->second;
    std::sort(numbered.begin(), numbered.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<Column> columns;
    for (auto& [number, column] : numbered) {
      if (number != static_cast<std::int32_t>(columns.size()) + 1) {
        return fail("table " + name + ": column numbers are not 1 to " +
                    std::to_string(numbered.size()));
      }
      columns.push_back(std::move(column));
    }
    columnsByTable.erase(found);
    Error created;
    Table* table = createTable(std::u16string(strings_.get(nameId)), std::move(columns), created);
    if (!table)
      return fail(created.text);
    if (!readTableStream(table->name().c_str(), bytes))
      return fail("table " + name + ": " + reason);
    if (!decodeTable(bytes, *table, referenceSize, strings_.size(), reason))
      return fail(reason);
  }
  if (!columnsByTable.empty()) {
    return fail("_Columns describes table " + toUtf8(strings_.get(columnsByTable.begin()->first)) +
                ", which _Tables does not list");
  }

  // Table-marked streams that belong to no table are kept as they are.
  for (const auto& [name, entry] : tableStreams) {
    preserved_.push_back(StreamSlot{name, entries[entry].name, entry, std::nullopt, nullptr});
  }

  if (summaryEntry != kNoEntry) {
    storage::SummaryInformation info;
    if (!reader_->readStream(summaryEntry, bytes, reason) ||
        !storage::readSummaryInformation(bytes, info, reason)) {
      return fail("summary information: " + reason);
    }
    summary_ = std::move(info);
    summaryStream_ = std::move(bytes);
  }
  return true;
}

}  // namespace odlex::engine
