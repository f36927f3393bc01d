// The table object for a table name: a generated class, or one of the hand-written classes of
// the tables the database keeps about itself.

#include <string_view>
#include <utility>

#include "msi/rows/GeneratedTables.h"
#include "odlex/msi/MSIRows.h"
#include "odlex/msi/MSISystemTables.h"

namespace {

template <typename Table>
std::unique_ptr<MSITable> make() {
  return std::make_unique<Table>();
}

// The hand-written classes, by table name.
constexpr std::pair<std::u16string_view, std::unique_ptr<MSITable> (*)()> kSystemTables[] = {
    {u"_Tables", make<MSIT_Tables>},
    {u"_Columns", make<MSIT_Columns>},
    {u"_Streams", make<MSIT_Streams>},
    {u"_Storages", make<MSIT_Storages>},
    {u"_SummaryInformation", make<MSIT_SummaryInformation>},
    {u"_TransformView", make<MSIT_TransformView>},
};

}  // namespace

std::unique_ptr<MSITable> createTableObject(const TalString& name) {
  for (const auto& [tableName, create] : kSystemTables) {
    if (name.u16() == tableName)
      return create();
  }
  return odlex::rows::createGeneratedTable(name);
}
