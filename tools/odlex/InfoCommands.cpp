// Commands on a package's product information: info (show) and info set (edit).
//
// Every field of the product information has a fixed name: the property it is read from
// (ProductName, PRODUCTVERSION, ARPCONTACT, ALLUSERS, ...), or, for the fields that are no
// property, PackageCode (the summary information's revision number), PackageCodePolicy (0 never,
// 1 always, 2 ask: whether a save gives a new package code) and PackageCodeChanged. Text output
// is one "NAME<TAB>VALUE" line per field, values written as the properties hold them (flags
// "1" or empty, numbers empty for 0); --json gives texts as strings, flags as booleans and
// numbers as numbers. info also shows the package's Kind ("package", "merge module",
// "patch-creation file"), SchemaVersion and Compressed.

#include <odlex/database/ODLEXDatabase.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <variant>

#include "EditCommand.h"
#include "LibraryDatabase.h"

namespace odlex::cli {

namespace {

using TextField = TalString ODLEXDatabaseInfo::*;
using FlagField = bool ODLEXDatabaseInfo::*;
using NumberField = int ODLEXDatabaseInfo::*;

struct Field {
  const char* name;
  std::variant<TextField, FlagField, NumberField> member;
  bool editable;
  int largest = std::numeric_limits<int>::max();  // of a number field
};

// In the record's order.
const Field kFields[] = {
    {"PackageCodePolicy", &ODLEXDatabaseInfo::packageCodePolicy, true, 2},
    {"ProductName", &ODLEXDatabaseInfo::productName, true},
    {"ARPCONTACT", &ODLEXDatabaseInfo::contact, true},
    {"PRODUCTVERSION", &ODLEXDatabaseInfo::productVersion, true},
    {"ProductCode", &ODLEXDatabaseInfo::productCode, true},
    {"PackageCode", &ODLEXDatabaseInfo::packageCode, true},
    {"ProductID", &ODLEXDatabaseInfo::productID, true},
    {"ARPSIZE", &ODLEXDatabaseInfo::estimatedSize, true},
    {"ARPPRODUCTICON", &ODLEXDatabaseInfo::productIcon, true},
    {"Manufacturer", &ODLEXDatabaseInfo::manufacturer, true},
    {"ARPURLINFOABOUT", &ODLEXDatabaseInfo::aboutURL, true},
    {"ARPHELPLINK", &ODLEXDatabaseInfo::helpLink, true},
    {"ARPHELPTELEPHONE", &ODLEXDatabaseInfo::helpTelephone, true},
    {"ARPREADME", &ODLEXDatabaseInfo::readme, true},
    {"ARPURLUPDATEINFO", &ODLEXDatabaseInfo::updateURL, true},
    {"ARPCOMMENTS", &ODLEXDatabaseInfo::comments, true},
    {"ALLUSERS", &ODLEXDatabaseInfo::allUsers, true, 2},
    {"ARPSYSTEMCOMPONENT", &ODLEXDatabaseInfo::systemComponent, true},
    {"ARPNOREMOVE", &ODLEXDatabaseInfo::noRemove, true},
    {"ARPNOMODIFY", &ODLEXDatabaseInfo::noModify, true},
    {"ARPNOREPAIR", &ODLEXDatabaseInfo::noRepair, true},
    {"NOUSERNAME", &ODLEXDatabaseInfo::noUserName, true},
    {"NOCOMPANYNAME", &ODLEXDatabaseInfo::noCompanyName, true},
    {"USERNAME", &ODLEXDatabaseInfo::userName, true},
    {"COMPANYNAME", &ODLEXDatabaseInfo::companyName, true},
    {"UpgradeCode", &ODLEXDatabaseInfo::upgradeCode, true},
    {"PackageCodeChanged", &ODLEXDatabaseInfo::packageCodeChanged, false},
};

// The names of IsValid's mask bits, lowest first.
const char* const kCheckedFields[] = {"ARPCOMMENTS",      "ARPCONTACT",    "ARPREADME",
                                      "Manufacturer",     "ProductName",   "ARPHELPLINK",
                                      "ARPHELPTELEPHONE", "ProductCode",   "ProductID",
                                      "ARPURLUPDATEINFO", "PRODUCTVERSION"};

// The field's value as its property holds it.
std::string textOf(const ODLEXDatabaseInfo& info, const Field& field) {
  struct Visitor {
    const ODLEXDatabaseInfo& info;
    std::string operator()(TextField member) const { return (info.*member).ToUtf8(); }
    std::string operator()(FlagField member) const { return info.*member ? "1" : ""; }
    std::string operator()(NumberField member) const {
      return info.*member == 0 ? "" : std::to_string(info.*member);
    }
  };
  return std::visit(Visitor{info}, field.member);
}

nlohmann::json jsonOf(const ODLEXDatabaseInfo& info, const Field& field) {
  struct Visitor {
    const ODLEXDatabaseInfo& info;
    nlohmann::json operator()(TextField member) const { return (info.*member).ToUtf8(); }
    nlohmann::json operator()(FlagField member) const { return info.*member; }
    nlohmann::json operator()(NumberField member) const { return info.*member; }
  };
  return std::visit(Visitor{info}, field.member);
}

// Sets the field from `value`; false when the value is not one the field takes.
bool assign(ODLEXDatabaseInfo& info, const Field& field, const std::string& value) {
  struct Visitor {
    ODLEXDatabaseInfo& info;
    const std::string& value;
    int largest;
    bool operator()(TextField member) const {
      info.*member = TalString::FromUtf8(value);
      return true;
    }
    bool operator()(FlagField member) const {
      if (value != "1" && value != "0" && !value.empty())
        return false;
      info.*member = value == "1";
      return true;
    }
    bool operator()(NumberField member) const {
      if (value.empty()) {
        info.*member = 0;
        return true;
      }
      const std::optional<std::int64_t> number = TalString::FromUtf8(value).ToInt();
      if (!number || *number < 0 || *number > largest)
        return false;
      info.*member = static_cast<int>(*number);
      return true;
    }
  };
  return std::visit(Visitor{info, value, field.largest}, field.member);
}

const Field* fieldNamed(const std::string& name) {
  for (const Field& field : kFields) {
    if (name == field.name)
      return &field;
  }
  return nullptr;
}

std::string kindOf(ODLEXDatabase& db) {
  if (db.IsMergeModule())
    return "merge module";
  return db.IsPCP() ? "patch-creation file" : "package";
}

void addShow(Commands& commands) {
  struct Options {
    std::string package;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "info",
      "show the product information: one NAME<TAB>VALUE line per field, named after the "
      "property it comes from; then Kind, SchemaVersion and Compressed",
      "odlex info product.msi --json", [options] {
        LibrarySession session;
        ODLEXDatabase& db = session.openReadOnly(options->package);
        const ODLEXDatabaseInfo info = db.GetDatabaseInfo();
        // Empty (null in JSON) when the package declares no schema version.
        const std::string schema = MSIDatabase::MapVersion(db.GetVersion()).ToUtf8();
        if (options->json) {
          nlohmann::json fields = nlohmann::json::object();
          for (const Field& field : kFields)
            fields[field.name] = jsonOf(info, field);
          printJson({{"fields", fields},
                     {"Kind", kindOf(db)},
                     {"SchemaVersion", schema.empty()
                                           ? nlohmann::json()
                                           : nlohmann::json(static_cast<int>(db.GetVersion()))},
                     {"Compressed", db.IsCompressed()}});
          return 0;
        }
        for (const Field& field : kFields)
          printFields({TalString::FromUtf8(field.name).u16(),
                       TalString::FromUtf8(textOf(info, field)).u16()});
        printLine("Kind\t" + kindOf(db));
        printLine("SchemaVersion\t" + schema);
        printLine(std::string("Compressed\t") + (db.IsCompressed() ? "1" : ""));
        return 0;
      });
  command.add_option("PACKAGE", options->package, "the installer database (.msi, .msm, .pcp)");
  addJsonFlag(command, options->json,
              R"({"fields": {NAME: value, ...}, "Kind", "SchemaVersion", "Compressed"})");
  // PACKAGE is needed unless a verb of info (set) is given.
  command.callback([&command, options] {
    if (options->package.empty() && command.get_subcommands().empty())
      throw CLI::RequiredError("PACKAGE");
  });
}

void addSet(Commands& commands) {
  struct Options : PackageEdit {
    std::vector<std::string> assignments;
  };
  auto options = std::make_shared<Options>();
  addEditCommand(
      commands,
      {"info set",
       "change fields of the product information (names as info shows them; an empty value "
       "removes the property); values the package's code page cannot hold are refused, naming "
       "each field, and nothing is written",
       "odlex info set product.msi ProductName=\"My Product\" ARPNOREMOVE=1 -o edited.msi"},
      options, R"({"changed": [{"field", "before", "after"}], "written"})",
      [options](CLI::App& command) {
        command.add_option("FIELD=VALUE", options->assignments, "the fields to change")->required();
      },
      [options](LibrarySession& session, ODLEXDatabase& db) {
        const ODLEXDatabaseInfo before = db.GetDatabaseInfo();
        ODLEXDatabaseInfo info = before;
        for (const std::string& assignment : options->assignments) {
          const std::size_t equals = assignment.find('=');
          const Field* field =
              equals == std::string::npos ? nullptr : fieldNamed(assignment.substr(0, equals));
          if (!field || !field->editable)
            throw Failure(87, "no editable field in " + assignment);
          if (!assign(info, *field, assignment.substr(equals + 1)))
            throw Failure(87, "not a value of " + std::string(field->name) + ": " +
                                  assignment.substr(equals + 1));
        }
        unsigned mask = 0;
        if (!db.IsValid(info, mask)) {
          std::string names;
          for (std::size_t bit = 0; bit < std::size(kCheckedFields); ++bit) {
            if (mask & (1u << bit))
              names += (names.empty() ? "" : ", ") + std::string(kCheckedFields[bit]);
          }
          throw Failure(mask, "the package's code page cannot hold the value of " + names);
        }
        // Each changed field: name, value before, value after.
        nlohmann::json changed = nlohmann::json::array();
        for (const Field& field : kFields) {
          if (textOf(before, field) == textOf(info, field))
            continue;
          if (options->json)
            changed.push_back({{"field", field.name},
                               {"before", jsonOf(before, field)},
                               {"after", jsonOf(info, field)}});
          else
            printFields({TalString::FromUtf8(field.name).u16(),
                         TalString::FromUtf8(textOf(before, field)).u16(),
                         TalString::FromUtf8(textOf(info, field)).u16()});
        }
        if (options->json)
          printJson({{"changed", changed}, {"written", !options->edit.dryRun}});
        if (options->edit.dryRun)
          return;
        db.SetDatabaseInfo(info, nullptr);
        session.save(db);
      });
}

}  // namespace

void addInfoCommands(Commands& commands) {
  addShow(commands);
  addSet(commands);
}

}  // namespace odlex::cli
