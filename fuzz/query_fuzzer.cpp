// Fuzz target: the input is the text of a statement, one byte a character. It is prepared
// against a small database of two tables, held in memory and made afresh for every input, then
// executed with a string, an integer and a null parameter, and its rows fetched. Statements
// that change the database run twice, the second time on what the first left, and the result
// is committed to the in-memory file system. A malformed statement must be refused with an
// error, never crash, hang or cost more than a small multiple of the input, however deeply it
// nests or however many tables it joins.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "msi/engine/Database.h"
#include "msi/idt/Idt.h"
#include "msi/query/Query.h"
#include "storage/MemoryFileSystem.h"

namespace {

using odlex::engine::Database;

constexpr std::string_view kTables[][2] = {
    {"Property.idt",
     "Property\tValue\r\ns72\tL0\r\nProperty\tProperty\r\nA\t1\r\nB\t[A]\r\nEmpty\t\r\n"},
    {"File.idt",
     "File\tComponent_\tFileSize\tVersion\tAttributes\tSequence\r\n"
     "s72\ts72\ti4\tS72\tI2\ti2\r\nFile\tFile\r\n"
     "f1\tc1\t100\t1.0\t\t1\r\nf2\tc1\t-5\t\t512\t2\r\nf3\tc2\t0\t2.0\t-32767\t3\r\n"},
};

std::unique_ptr<Database> sampleDatabase(odlex::storage::MemoryFileSystem& fs) {
  odlex::engine::Error error;
  auto created = Database::open(fs, "sample.msi", Database::OpenMode::kCreate, error);
  std::string reason;
  for (const auto& [name, text] : kTables)
    if (!created ||
        !fs.writeFile(std::string(name),
                      {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, reason) ||
        odlex::idt::importTable(*created, fs, std::string(name), error) != odlex::engine::kSuccess)
      std::abort();
  return created;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::u16string text(data, data + size);
  odlex::storage::MemoryFileSystem fs;
  const std::unique_ptr<Database> database = sampleDatabase(fs);
  odlex::engine::Error error;
  const std::unique_ptr<odlex::query::Query> query =
      odlex::query::Query::prepare(*database, text, error);
  if (!query)
    return 0;
  const odlex::query::Field parameters[] = {odlex::query::Field::ofString(u"f1"),
                                            odlex::query::Field::ofInteger(1),
                                            odlex::query::Field::null()};
  const int runs = query->changes() ? 2 : 1;
  for (int run = 0; run < runs; ++run) {
    if (query->execute(parameters, error) != odlex::engine::kSuccess)
      continue;
    odlex::query::Record record;
    while (query->fetch(record) == odlex::engine::kSuccess) {
    }
  }
  if (query->changes())
    database->commit(error);
  return 0;
}
