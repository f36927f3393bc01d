#include <algorithm>
#include <memory>
#include <numeric>

#include "msi/idt/Idt.h"
#include "msi/idt/IdtWriter.h"
#include "msi/idt/PseudoTables.h"
#include "msi/idt/SafeFileName.h"
#include "msi/idt/TextCodec.h"

namespace odlex::idt {
namespace {

// Orders row indexes by key: text by character code, integers by value, null first.
std::vector<std::size_t> rowsByKey(const engine::Table& table, const engine::StringPool& pool) {
  std::vector<std::size_t> order(table.rowCount());
  std::iota(order.begin(), order.end(), std::size_t{0});
  const auto less = [&](std::size_t a, std::size_t b) {
    for (std::size_t c = 0; c < table.keyCount(); ++c) {
      const bool nullA = table.isNull(a, c);
      const bool nullB = table.isNull(b, c);
      if (nullA || nullB) {
        if (nullA != nullB)
          return nullA;
        continue;
      }
      if (table.columns()[c].isInteger()) {
        if (table.integer(a, c) != table.integer(b, c)) {
          return table.integer(a, c) < table.integer(b, c);
        }
        continue;
      }
      const int order = table.text(pool, a, c).compare(table.text(pool, b, c));
      if (order != 0)
        return order < 0;
    }
    return false;
  };
  std::stable_sort(order.begin(), order.end(), less);
  return order;
}

class TableExporter {
 public:
  TableExporter(engine::Database& db, const engine::Table& table, bool catalog, ExportedTable& out,
                engine::Error& error)
      : db_(db), table_(table), catalog_(catalog), out_(out), error_(error) {}

  std::uint32_t run() {
    IdtWriter writer(db_.codePage());
    std::string reason;
    if (!writer.writeHeader(table_.columns(), table_.name(), reason))
      return fail(reason);
    out_.folderName = safeFileName(table_.name());
    out_.binaries.clear();
    for (std::size_t row : rowsByKey(table_, db_.strings())) {
      std::vector<std::u16string> values;
      for (std::size_t c = 0; c < table_.columnCount(); ++c) {
        values.emplace_back();
        if (!cellText(row, c, values.back()))
          return error_.code;
      }
      if (!writer.writeRow(values, reason)) {
        return fail("row " + forMessage(table_.streamName(db_.strings(), row)) + ": " + reason);
      }
    }
    out_.text = writer.finish();
    return engine::kSuccess;
  }

 private:
  std::uint32_t fail(const std::string& reason) {
    error_ = {engine::kFunctionFailed, forMessage(table_.name()) + ": " + reason};
    return error_.code;
  }

  // The name of the stream holding a binary cell. Catalog views name it by the row's Name.
  std::u16string streamOf(std::size_t row) const {
    if (catalog_)
      return std::u16string(table_.text(db_.strings(), row, 0));
    return table_.streamName(db_.strings(), row);
  }

  // The field text of one cell; for a binary cell, reads the data and returns its file name.
  bool cellText(std::size_t row, std::size_t column, std::u16string& text) {
    if (table_.isNull(row, column))
      return true;
    const engine::Column& info = table_.columns()[column];
    if (info.isInteger()) {
      const std::string number = std::to_string(table_.integer(row, column));
      text.assign(number.begin(), number.end());
      return true;
    }
    if (!info.isBinary()) {
      text = table_.text(db_.strings(), row, column);
      return true;
    }
    const std::u16string stream = streamOf(row);
    std::u16string_view key = stream;
    if (!catalog_)
      key.remove_prefix(std::min(key.size(), table_.name().size() + 1));
    BinaryFile file{fileNames_.claim(safeFileName(key) + ".ibd"), {}};
    engine::Error readError;
    if (!(file.data = db_.streamSource(stream, readError))) {
      fail("stream " + forMessage(stream) + ": " + readError.text);
      return false;
    }
    text.assign(file.fileName.begin(), file.fileName.end());
    out_.binaries.push_back(std::move(file));
    return true;
  }

  engine::Database& db_;
  const engine::Table& table_;
  bool catalog_;
  ExportedTable& out_;
  engine::Error& error_;
  UniqueNames fileNames_;
};

}  // namespace

std::uint32_t exportTableText(engine::Database& db, std::u16string_view table, ExportedTable& out,
                              engine::Error& error) {
  if (table == kForceCodepageTable) {
    out = {forceCodepageText(db.codePage()), "_ForceCodepage", {}};
    return engine::kSuccess;
  }
  if (table == kSummaryInformationTable)
    return exportSummary(db, out, error);
  if (const engine::Table* found = db.findTable(table)) {
    return TableExporter(db, *found, false, out, error).run();
  }
  if (std::unique_ptr<engine::Table> view = db.catalogView(table)) {
    return TableExporter(db, *view, true, out, error).run();
  }
  error = {engine::kInvalidTable, "no table " + forMessage(table) + " in the database"};
  return error.code;
}

namespace {

// A table's file, and a cell's, can be exported again from the package, so they are not flushed
// to the disk one by one: a package of many small tables or cells would spend its time waiting
// for each.
storage::NewFileOptions notFlushed() {
  storage::NewFileOptions options;
  options.flush = false;
  return options;
}

}  // namespace

std::uint32_t writeBinaryFiles(storage::FileSystem& fs, const ExportedTable& exported,
                               const std::filesystem::path& folder, engine::Error& error) {
  if (exported.binaries.empty())
    return engine::kSuccess;
  std::string reason;
  if (!fs.createDirectories(folder, reason)) {
    error = {engine::kWriteFault, folder.string() + ": " + reason};
    return error.code;
  }
  for (const BinaryFile& file : exported.binaries) {
    const std::u16string name(file.fileName.begin(), file.fileName.end());
    if (!isPlainFileName(name)) {
      error = {engine::kBadPathname, "unsafe data file name '" + forMessage(name) + "'"};
      return error.code;
    }
    const std::filesystem::path path = folder / file.fileName;
    if (!storage::writeStreamToFile(fs, path, *file.data, notFlushed(), reason)) {
      error = {engine::kWriteFault, path.string() + ": " + reason};
      return error.code;
    }
  }
  return engine::kSuccess;
}

std::uint32_t exportTable(engine::Database& db, std::u16string_view table, storage::FileSystem& fs,
                          const std::filesystem::path& idtFile, engine::Error& error) {
  ExportedTable exported;
  if (exportTableText(db, table, exported, error) != engine::kSuccess)
    return error.code;
  std::string reason;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(exported.text.data());
  const std::unique_ptr<storage::WritableFile> file = fs.createFile(idtFile, notFlushed(), reason);
  if (!file || !file->append({bytes, exported.text.size()}, reason) || !file->finish(reason)) {
    error = {engine::kWriteFault, idtFile.string() + ": " + reason};
    return error.code;
  }
  return writeBinaryFiles(fs, exported, idtFile.parent_path() / exported.folderName, error);
}

}  // namespace odlex::idt
