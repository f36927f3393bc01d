// Commands on the folder tree: directory list (key, long target path, long source path) and
// directory add (the folders of a target path, made as needed).

#include <string>

#include "Cli.h"
#include "EditCommand.h"
#include "LibraryDatabase.h"
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
  CLI::App& command = commands.add(
      "directory list", "the folders: key, long target path, long source path",
      "odlex directory list product.msi", [options] {
        LibrarySession session;
        ODLEXTDirectory& folders = session.openReadOnly(options->package).GetDirectory();
        RWBTree rows;
        folders.GetDirectoriesDeep(rows);
        json list = json::array();
        for (RWCollectable* item : rows) {
          const auto& row = static_cast<const MSIEDirectory&>(*item);
          if (row.IsDeleted())
            continue;
          const TalString target = folders.GetLongTarget(row);
          const TalString source = folders.GetLongSource(row);
          if (options->json)
            list.push_back({{"directory", row.GetDirectory().ToUtf8()},
                            {"target", target.ToUtf8()},
                            {"source", source.ToUtf8()}});
          else
            printFields({row.GetDirectory().u16(), target.u16(), source.u16()});
        }
        if (options->json)
          printJson({{"directories", list}});
        return 0;
      });
  addPackageArgument(command, options->package);
  addJsonFlag(command, options->json, R"({"directories": [{"directory", "target", "source"}]})");
}

void addAdd(Commands& commands) {
  struct Options : PackageEdit {
    std::string path;
  };
  auto options = std::make_shared<Options>();
  addEditCommand(
      commands,
      {"directory add",
       "add the folders of a target path (\"[ProgramFilesFolder]Vendor\\App\\\", or starting "
       "at a folder's key), reusing those that exist; prints the key and long target path of the "
       "last",
       R"(odlex directory add product.msi "[INSTALLDIR]Plug-ins\" -o out.msi)"},
      options, R"({"directory", "target"})",
      [options](CLI::App& command) {
        command.add_option("PATH", options->path, "the target path")->required();
      },
      [options](LibrarySession& session, ODLEXDatabase& db) {
        ODLEXTDirectory& folders = db.GetDirectory();
        folders.Add(TalString::FromUtf8(options->path));
        if (folders.GetTempEntries().entries() == 0)
          throw Failure(ODLEXDatabaseError::eDirectoryNotFound,
                        "cannot add the folders of " + options->path);
        const auto& leaf = static_cast<const MSIEDirectory&>(**folders.GetTempEntries().begin());
        const TalString target = folders.GetLongTarget(leaf);
        if (options->json)
          printJson({{"directory", leaf.GetDirectory().ToUtf8()}, {"target", target.ToUtf8()}});
        else
          printFields({leaf.GetDirectory().u16(), target.u16()});
        session.save(db);
      });
}

}  // namespace

void addDirectoryCommands(Commands& commands) {
  addList(commands);
  addAdd(commands);
}

}  // namespace odlex::cli
