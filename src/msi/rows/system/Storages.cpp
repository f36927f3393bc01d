// _Storages: the database's sub-storages (embedded transforms and packages), their data
// exchanged as complete compound files.

#include <string>

#include "msi/rows/system/SystemTables.h"
#include "odlex/msi/MSISystemTables.h"
#include "storage/CompoundFile.h"

using odlex::rows::catalogSchema;

namespace {

// The storage a compound file image holds; false with the reason when it is not one.
bool parseStorage(const MSIBinary& data, odlex::storage::CompoundNode& root, std::string& error) {
  auto reader = odlex::storage::CompoundFileReader::openBytes(
      std::vector<std::uint8_t>(data.GetData(), data.GetData() + data.GetSize()), error);
  return reader && odlex::storage::readCompoundTree(*reader, 0, root, error);
}

}  // namespace

MSIE_Storages::MSIE_Storages() : MSIContainerEntry(catalogSchema(u"_Storages")) {}

MSIE_Storages::MSIE_Storages(const TalString& name) : MSIE_Storages() {
  SetName(name);
}

MSIT_Storages::MSIT_Storages() : MSIContainerTable(catalogSchema(u"_Storages")) {}

std::unique_ptr<MSIEntry> MSIT_Storages::NewEntry() const {
  return std::make_unique<MSIE_Storages>();
}

MSIE_Storages* MSIT_Storages::Add(const TalString& name, const TalString& sourceFile,
                                  bool replace) {
  return static_cast<MSIE_Storages*>(AddFromFile(name, sourceFile, replace));
}

MSIE_Storages* MSIT_Storages::Find(const TalString& name) const {
  return static_cast<MSIE_Storages*>(FindEntry(MSIE_Storages(name)));
}

MSIBinary MSIT_Storages::ReadStream(const TalString& name) const {
  const odlex::engine::Database* db = odlex::rows::engineOf(*this);
  odlex::storage::CompoundNode storage;
  odlex::engine::Error error;
  std::vector<std::uint8_t> image;
  std::string reason;
  if (!db || !db->readStorage(name.u16(), storage, error) ||
      !odlex::storage::writeCompoundFile(storage, image, reason))
    return MSIBinary();
  return MSIBinary(std::move(image));
}

std::vector<std::u16string> MSIT_Storages::EntryNames(const odlex::engine::Database& db) const {
  return db.storageNames();
}

bool MSIT_Storages::Accepts(const MSIBinary& data, unsigned& code, TalString& why) const {
  odlex::storage::CompoundNode root;
  std::string error;
  if (parseStorage(data, root, error))
    return true;
  code = odlex::engine::kInstallPackageInvalid;
  why = TalString::FromUtf8("not a compound file: " + error);
  return false;
}

void MSIT_Storages::WriteEntry(odlex::engine::Database& db, const std::u16string& name,
                               const MSIBinary& data) const {
  odlex::storage::CompoundNode root;
  std::string error;
  parseStorage(data, root, error);
  root.name = name;
  root.isStorage = true;
  db.setStorage(name, std::move(root));
}

void MSIT_Storages::RemoveEntry(odlex::engine::Database& db, const std::u16string& name) const {
  db.removeStorage(name);
}
