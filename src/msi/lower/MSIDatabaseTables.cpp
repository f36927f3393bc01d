// Table-level services of a database: table text files and standard tables.

#include <odlex/msi/MSIDatabase.h>

#include "msi/engine/Database.h"
#include "msi/idt/Idt.h"
#include "msi/lower/PathText.h"
#include "msi/schema/Schema.h"

namespace engine = odlex::engine;
using odlex::lower::toPath;

unsigned MSIDatabase::Export(const TalString& table, const TalString& file) {
  if (unsigned code = requireOpen(u"Export"))
    return code;
  engine::Error error;
  if (odlex::idt::exportTable(*engine_, table.u16(), odlex::storage::FileSystem::current(),
                              toPath(file), error) != engine::kSuccess)
    return fail(error.code, u"Export", error.text);
  return engine::kSuccess;
}

unsigned MSIDatabase::Import(const TalString& file) {
  if (unsigned code = requireWritable(u"Import"))
    return code;
  engine::Error error;
  if (odlex::idt::importTable(*engine_, odlex::storage::FileSystem::current(), toPath(file),
                              error) != engine::kSuccess)
    return fail(error.code, u"Import", error.text);
  return engine::kSuccess;
}

unsigned MSIDatabase::AddTable(const TalString& name) {
  if (unsigned code = requireWritable(u"AddTable"))
    return code;
  engine::Error error;
  if (odlex::schema::createTable(*engine_, name.u16(), error) != engine::kSuccess)
    return fail(error.code, u"AddTable", error.text);
  return engine::kSuccess;
}
