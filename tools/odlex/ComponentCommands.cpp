// Commands on components: component list (key, GUID, directory, key path, attributes),
// component show (one component's attributes, features and rows), component add (new components
// with fresh GUIDs in a folder) and component delete (each component with every row that belongs to
// it, listed per table).

#include <map>
#include <string>
#include <vector>

#include "Cli.h"
#include "EditCommand.h"
#include "LibraryDatabase.h"
#include "msi/engine/Text.h"
#include "msi/schema/Schema.h"
#include "odlex/database/ODLEXDatabase.h"
#include "odlex/tables/ODLEXTables.h"

namespace odlex::cli {

namespace {

using nlohmann::json;

void addList(Commands& commands) {
  struct Options {
    std::string package;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command =
      commands.add("component list", "the components: key, GUID, directory, key path, attributes",
                   "odlex component list product.msi", [options] {
                     LibrarySession session;
                     RWBTree rows;
                     session.openReadOnly(options->package).GetComponent().GetComponents(rows);
                     json list = json::array();
                     for (RWCollectable* item : rows) {
                       const auto& row = static_cast<const MSIEComponent&>(*item);
                       if (options->json) {
                         list.push_back({{"component", row.GetComponentID().ToUtf8()},
                                         {"guid", row.GetComponentGUID().ToUtf8()},
                                         {"directory", row.GetDirectoryID().ToUtf8()},
                                         {"keyPath", row.GetKeyPath().ToUtf8()},
                                         {"attributes", row.GetAttributes()}});
                         continue;
                       }
                       printFields({row.GetComponentID().u16(), row.GetComponentGUID().u16(),
                                    row.GetDirectoryID().u16(), row.GetKeyPath().u16(),
                                    engine::fromUtf8(std::to_string(row.GetAttributes()))});
                     }
                     if (options->json)
                       printJson({{"components", list}});
                     return 0;
                   });
  addPackageArgument(command, options->package);
  addJsonFlag(command, options->json,
              R"({"components": [{"component", "guid", "directory", "keyPath", "attributes"}]})");
}

void addAdd(Commands& commands) {
  struct Options : PackageEdit {
    std::string directory;
    unsigned count = 1;
  };
  auto options = std::make_shared<Options>();
  addEditCommand(
      commands,
      {"component add",
       "add components with new GUIDs installed into a folder (a Directory key); prints each "
       "new component's key and GUID",
       "odlex component add product.msi INSTALLDIR --count 3 -o out.msi"},
      options, R"({"components": [{"component", "guid"}]})",
      [options](CLI::App& command) {
        command.add_option("DIRECTORY", options->directory, "the folder's Directory key")
            ->required();
        command.add_option("--count", options->count, "how many components to add (default 1)")
            ->check(CLI::Range(1u, 10000u));
      },
      [options](LibrarySession& session, ODLEXDatabase& db) {
        MSIEDirectory* folder = db.GetDirectory().Lookup(TalString::FromUtf8(options->directory));
        if (!folder)
          throw Failure(ODLEXDatabaseError::eDirectoryNotFound,
                        "no directory " + options->directory);
        ODLEXTComponent& components = db.GetComponent();
        components.Add(options->count, *folder);
        json added = json::array();
        for (RWCollectable* item : components.GetTempEntries()) {
          const auto& row = static_cast<const MSIEComponent&>(*item);
          if (options->json)
            added.push_back({{"component", row.GetComponentID().ToUtf8()},
                             {"guid", row.GetComponentGUID().ToUtf8()}});
          else
            printFields({row.GetComponentID().u16(), row.GetComponentGUID().u16()});
        }
        if (options->json)
          printJson({{"components", added}});
        session.save(db);
      });
}

// The live rows of every table the database's schema can hold, to tell afterwards which of
// them an edit deleted.
std::vector<MSIEntry*> liveRows(ODLEXDatabase& db) {
  std::vector<MSIEntry*> rows;
  for (const auto type : {
#define ODLEX_TABLE_TYPE(Table, id, edits, attributes) ODLEXTObject::e##Table,
#include "odlex/tables/TableTypes.def"
#undef ODLEX_TABLE_TYPE
       }) {
    ODLEXTObject* table = nullptr;
    try {
      table = &db.GetTableObject(type);
    } catch (const ODLEXDatabaseError&) {
      continue;  // the schema cannot hold the table: it has no rows
    }
    for (RWCollectable* item : table->GetEntries()) {
      auto* row = static_cast<MSIEntry*>(item);
      if (!row->IsDeleted())
        rows.push_back(row);
    }
  }
  return rows;
}

void addShow(Commands& commands) {
  struct Options {
    std::string package;
    std::string key;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "component show",
      "one component: its attributes field by field, the features that install it (with their "
      "parents), and the rows of other tables that belong to it, per table",
      "odlex component show product.msi MainExecutable", [options] {
        LibrarySession session;
        ODLEXDatabase& db = session.openReadOnly(options->package);
        ODLEXTComponent& components = db.GetComponent();
        MSIEComponent* row = components.Lookup(TalString::FromUtf8(options->key));
        if (!row)
          throw Failure(ODLEXDatabaseError::eComponentNotFound, "no component " + options->key);
        const ODLEXComponentInfo info = components.GetComponentInfo(*row);
        const json fields = {{"directoryID", info.directoryID.ToUtf8()},
                             {"keyPath", info.keyPath.ToUtf8()},
                             {"componentGUID", info.componentGUID.ToUtf8()},
                             {"condition", info.condition.ToUtf8()},
                             {"runFrom", static_cast<int>(info.runFrom)},
                             {"sharedDllRefCount", info.sharedDllRefCount},
                             {"permanent", info.permanent},
                             {"neverOverwrite", info.neverOverwrite},
                             {"transitive", info.transitive},
                             {"odbcDataSource", info.odbcDataSource},
                             {"registryKeyPath", info.registryKeyPath}};
        RWBTree featureRows;
        components.GetFeatures(featureRows, *row);
        std::vector<std::string> features;
        for (RWCollectable* item : featureRows)
          features.push_back(static_cast<const MSIEFeature&>(*item).GetFeature().ToUtf8());
        std::map<std::string, std::vector<std::string>> rows;
        for (const MSIEntry* entry : liveRows(db)) {
          if (entry != row && entry->GetComponentKey() == row->GetComponentID())
            rows[entry->GetTableName().ToUtf8()].push_back(keyOf(*entry));
        }
        if (options->json) {
          printJson({{"component", options->key},
                     {"info", fields},
                     {"features", features},
                     {"rows", rows}});
          return 0;
        }
        for (const auto& [name, value] : fields.items())
          printFields(
              {engine::fromUtf8(name),
               engine::fromUtf8(value.is_string() ? value.get<std::string>() : value.dump())});
        for (const std::string& feature : features)
          printFields({u"feature", engine::fromUtf8(feature)});
        for (const auto& [table, keys] : rows)
          for (const std::string& key : keys)
            printFields({engine::fromUtf8(table), engine::fromUtf8(key)});
        return 0;
      });
  addPackageArgument(command, options->package);
  command.add_option("KEY", options->key, "the component")->required();
  addJsonFlag(command, options->json,
              R"({"component", "info": {the attribute record's fields}, "features": [KEY], )"
              R"("rows": {TABLE: [KEY, ...]}} (KEY: key columns joined by "/"))");
}

void addDelete(Commands& commands) {
  struct Options : PackageEdit {
    std::vector<std::string> keys;
  };
  auto options = std::make_shared<Options>();
  addEditCommand(
      commands,
      {"component delete",
       "delete components and every row that belongs to them or to their rows (files, their "
       "hashes, fonts and copies, registry values, shortcuts, services, classes, ...); the "
       "feature links stay. Prints the rows removed: table, key",
       "odlex component delete product.msi Docs Helpers -o smaller.msi"},
      options, R"({"removed": {TABLE: [KEY, ...]}, "written"} (KEY: key columns joined by "/"))",
      [options](CLI::App& command) {
        command.add_option("KEY", options->keys, "the components to delete")->required();
      },
      [options](LibrarySession& session, ODLEXDatabase& db) {
        ODLEXTComponent& components = db.GetComponent();
        std::vector<MSIEComponent*> doomed;
        for (const std::string& key : options->keys) {
          MSIEComponent* row = components.Lookup(TalString::FromUtf8(key));
          if (!row)
            throw Failure(ODLEXDatabaseError::eComponentNotFound, "no component " + key);
          doomed.push_back(row);
        }
        const std::vector<MSIEntry*> before = liveRows(db);
        for (MSIEComponent* row : doomed)
          components.Delete(*row);
        std::map<std::string, std::vector<std::string>> removed;
        for (const MSIEntry* row : before) {
          if (row->IsDeleted())
            removed[row->GetTableName().ToUtf8()].push_back(keyOf(*row));
        }
        if (options->json) {
          printJson({{"removed", removed}, {"written", !options->edit.dryRun}});
        } else {
          for (const auto& [table, keys] : removed)
            for (const std::string& key : keys)
              printFields({engine::fromUtf8(table), engine::fromUtf8(key)});
        }
        session.save(db);
      });
}

}  // namespace

void addComponentCommands(Commands& commands) {
  addList(commands);
  addShow(commands);
  addAdd(commands);
  addDelete(commands);
}

}  // namespace odlex::cli
