// Search and replace over every table of a package.

#include <algorithm>
#include <utility>

#include "msi/engine/Database.h"
#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXDatabaseError.h"

namespace {

struct NamedType {
  ODLEXTObject::typeID type;
  const char16_t* name;
};

constexpr NamedType kTableTypes[] = {
#define ODLEX_TABLE_TYPE(Table, id, edits, attributes) {ODLEXTObject::e##Table, u"" #Table},
#include "odlex/tables/TableTypes.def"
#undef ODLEX_TABLE_TYPE
};

bool searchable(const std::u16string_view name) {
  return !name.starts_with(u"_") && name != u"ZrChangeLog";
}

}  // namespace

// Calls `visit(table object, name)` for each table searched, in name order.
template <class Visit>
void ODLEXDatabase::ForEachSearchedTable(Visit visit) {
  std::vector<NamedType> types(std::begin(kTableTypes), std::end(kTableTypes));
  std::sort(types.begin(), types.end(), [](const NamedType& a, const NamedType& b) {
    return std::u16string_view(a.name) < std::u16string_view(b.name);
  });
  const odlex::engine::Database* engine = database_.engineDatabase();
  for (const NamedType& named : types) {
    if (!searchable(named.name))
      continue;
    const bool held = tableObjects_.at(SlotOf(named.type)) != nullptr;
    if (!held && !(engine && engine->findTable(named.name)))
      continue;
    try {
      visit(GetTableObject(named.type), TalString(named.name));
    } catch (const ODLEXDatabaseError&) {
      // A table the database's schema cannot hold has nothing to search.
    }
  }
}

std::vector<ODLEXDatabase::TableCount> ODLEXDatabase::Search(
    const ODLEXBaseChecker& checker, std::vector<ODLEXSearchMatch>* matches) {
  std::vector<TableCount> counts;
  ForEachSearchedTable([&](ODLEXTObject& table, const TalString& name) {
    if (const unsigned count = table.Search(checker, matches))
      counts.push_back({name, count});
  });
  return counts;
}

std::vector<ODLEXDatabase::TableCount> ODLEXDatabase::SearchAndReplace(const TalString& find,
                                                                       const TalString& replace,
                                                                       unsigned long flags) {
  std::vector<TableCount> counts;
  ForEachSearchedTable([&](ODLEXTObject& table, const TalString& name) {
    if (const unsigned count = table.SearchAndReplace(find, replace, flags))
      counts.push_back({name, count});
  });
  return counts;
}
