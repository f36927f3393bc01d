// _Streams: the database's root streams that belong to no table's structure.

#include "msi/rows/system/SystemTables.h"
#include "odlex/msi/MSISystemTables.h"

using odlex::rows::catalogSchema;

MSIE_Streams::MSIE_Streams() : MSIContainerEntry(catalogSchema(u"_Streams")) {}

MSIE_Streams::MSIE_Streams(const TalString& name) : MSIE_Streams() {
  SetName(name);
}

MSIT_Streams::MSIT_Streams() : MSIContainerTable(catalogSchema(u"_Streams")) {}

std::unique_ptr<MSIEntry> MSIT_Streams::NewEntry() const {
  return std::make_unique<MSIE_Streams>();
}

MSIE_Streams* MSIT_Streams::Add(const TalString& name, const TalString& sourceFile, bool replace) {
  return static_cast<MSIE_Streams*>(AddFromFile(name, sourceFile, replace));
}

MSIE_Streams* MSIT_Streams::Find(const TalString& name) const {
  return static_cast<MSIE_Streams*>(FindEntry(MSIE_Streams(name)));
}

std::vector<std::u16string> MSIT_Streams::EntryNames(const odlex::engine::Database& db) const {
  return db.streamNames();
}

bool MSIT_Streams::Accepts(const MSIBinary&, unsigned&, TalString&) const {
  return true;
}

void MSIT_Streams::WriteEntry(odlex::engine::Database& db, const std::u16string& name,
                              const MSIBinary& data) const {
  db.setStream(name, std::vector<std::uint8_t>(data.GetData(), data.GetData() + data.GetSize()));
}

void MSIT_Streams::RemoveEntry(odlex::engine::Database& db, const std::u16string& name) const {
  db.removeStream(name);
}
