#include <array>

#include "msi/idt/Idt.h"
#include "msi/idt/IdtHeader.h"
#include "msi/idt/IdtLines.h"
#include "msi/idt/PseudoTables.h"
#include "msi/idt/TableImporter.h"
#include "msi/idt/TextCodec.h"

namespace odlex::idt {
namespace {

// Tables the database keeps itself; their rows follow from the other tables and streams.
constexpr std::array<std::u16string_view, 4> kCatalogTables{u"_Tables", u"_Columns", u"_Streams",
                                                            u"_Storages"};

// The code page the rows of the file are written in: the one line 3 names, which must match the
// database's unless the database is neutral (0), or else the database's own.
bool fileCodePage(const engine::Database& db, const IdtHeader& header,
                  const std::filesystem::path& file, std::uint32_t& codePage,
                  engine::Error& error) {
  codePage = db.codePage();
  if (header.taggedCodePage == 0)
    return true;
  if (codePage != 0 && codePage != header.taggedCodePage) {
    error = {engine::kFunctionFailed,
             positionPrefix(file, 3) + "the file is written in code page " +
                 std::to_string(header.taggedCodePage) + ", the database uses code page " +
                 std::to_string(codePage)};
    return false;
  }
  codePage = header.taggedCodePage;
  return true;
}

}  // namespace

std::uint32_t importTable(engine::Database& db, storage::FileSystem& fs,
                          const std::filesystem::path& idtFile, engine::Error& error,
                          const ImportOptions& options) {
  std::string bytes;
  if (readBoundedFile(fs, idtFile, kMaxInputFileSize, bytes, error) != engine::kSuccess) {
    return error.code;
  }
  LineCursor lines(bytes);
  std::vector<std::string_view> head;
  for (std::string_view line; head.size() < 3 && lines.next(line);)
    head.push_back(line);
  if (std::string_view number; isForceCodepageFile(head, number)) {
    return importForceCodepage(db, number, idtFile, error);
  }
  IdtHeader header;
  if (parseHeader(head, idtFile, db.codePage(), header, error) != engine::kSuccess) {
    return error.code;
  }
  std::uint32_t codePage = 0;
  if (!fileCodePage(db, header, idtFile, codePage, error))
    return error.code;
  for (std::u16string_view catalog : kCatalogTables) {
    if (header.table == catalog) {
      error = {engine::kInvalidTable,
               positionPrefix(idtFile, 3) + "table " + forMessage(catalog) + " cannot be imported"};
      return error.code;
    }
  }
  const std::uint32_t result =
      header.table == kSummaryInformationTable
          ? importSummary(db, lines, codePage, idtFile, error)
          : TableImporter(db, fs, idtFile, header, codePage, options, error).run(lines);
  // A neutral database takes the code page of a file written in one.
  if (result == engine::kSuccess)
    db.setCodePage(codePage);
  return result;
}

}  // namespace odlex::idt
