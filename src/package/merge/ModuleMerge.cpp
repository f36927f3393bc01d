// The steps of a merge, in order: the module's signature, its exclusions and dependencies, its
// configuration, the feature and directory it goes to, its rows, its actions, its files.

#include "package/merge/ModuleMerge.h"

#include <algorithm>
#include <map>
#include <set>

#include "msi/engine/Text.h"
#include "msi/schema/Schema.h"
#include "package/cabinet/PackedCabinet.h"
#include "package/files/FileLayout.h"
#include "package/merge/MergeTarget.h"
#include "package/merge/ModuleCabinet.h"
#include "package/merge/ModuleRelations.h"
#include "package/merge/SequencePlacement.h"

namespace odlex::merge {

namespace {

using Tables = std::map<std::u16string, TableRows, std::less<>>;

// A feature column of a module holds this GUID where the feature its components join goes.
constexpr std::u16string_view kNullGuid = u"{00000000-0000-0000-0000-000000000000}";

// Each module sequence table and the package table its actions go to.
constexpr std::pair<std::u16string_view, std::u16string_view> kSequenceTables[] = {
    {u"ModuleInstallExecuteSequence", u"InstallExecuteSequence"},
    {u"ModuleInstallUISequence", u"InstallUISequence"},
    {u"ModuleAdminExecuteSequence", u"AdminExecuteSequence"},
    {u"ModuleAdminUISequence", u"AdminUISequence"},
    {u"ModuleAdvtExecuteSequence", u"AdvtExecuteSequence"},
    {u"ModuleAdvtUISequence", u"AdvtUISequence"},
};

// Tables that steer the merge and are not copied themselves.
constexpr std::u16string_view kSteeringTables[] = {u"ModuleIgnoreTable", u"ModuleConfiguration",
                                                   u"ModuleSubstitution"};

const TableRows* find(const Tables& tables, std::u16string_view name) {
  const auto found = tables.find(name);
  return found == tables.end() ? nullptr : &found->second;
}

Tables readTables(const engine::Database& module) {
  Tables tables;
  for (std::size_t i = 0; i < module.tableCount(); ++i)
    tables.emplace(module.table(i).name(), readTable(module, module.table(i)));
  return tables;
}

// The catalog's columns of `table`, and a row of them with the given values by name.
std::vector<engine::Column> catalogColumns(std::u16string_view table) {
  return schema::engineColumns(*schema::findTable(table));
}
Row rowOf(const std::vector<engine::Column>& columns,
          std::initializer_list<std::pair<std::u16string_view, Value>> values) {
  Row row(columns.size());
  for (const auto& [name, value] : values) {
    for (std::size_t c = 0; c < columns.size(); ++c) {
      if (columns[c].name == name)
        row[c] = value;
    }
  }
  return row;
}

bool hasKey(const TableRows* table, const std::u16string& key) {
  if (!table)
    return false;
  return std::any_of(table->rows.begin(), table->rows.end(),
                     [&](const Row& row) { return !row.empty() && row[0].text == key; });
}

// Whether the catalog says `column` of `table` refers to `referred`.
bool refersTo(std::u16string_view table, std::u16string_view column, std::u16string_view referred) {
  const schema::TableSchema* schema = schema::findTable(table);
  const schema::ColumnSchema* described = schema ? schema->findColumn(column) : nullptr;
  if (!described)
    return false;
  std::u16string_view list = described->keyTable;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(u';'), list.size());
    if (list.substr(0, end) == referred)
      return true;
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return false;
}

ModuleIdentity signature(const Tables& tables, MergeLog& log) {
  const TableRows* rows = find(tables, u"ModuleSignature");
  if (!rows || rows->rows.size() != 1)
    log.stop(ODLEXDatabaseError::eMergeStep49, ODLEXMergeError::eModuleUnreadable,
             rows ? u"the module has more than one ModuleSignature row"
                  : u"the module has no ModuleSignature table");
  const Row& row = rows->rows.front();
  ModuleIdentity identity{rows->textOf(row, u"ModuleID"), rows->integerOf(row, u"Language", 0),
                          rows->textOf(row, u"Version")};
  if (identity.id.empty())
    log.stop(ODLEXDatabaseError::eMergeStep49, ODLEXMergeError::eModuleUnreadable,
             u"the module's ModuleSignature row has no ModuleID");
  return identity;
}

class Merger {
 public:
  Merger(engine::Database& package, const engine::Database& module, const MergeRequest& request,
         MergeLog& log)
      : package_(package),
        module_(module),
        request_(request),
        log_(log),
        tables_(readTables(module)),
        target_(package, module, log) {}

  MergeResult run() {
    const ModuleIdentity identity = signature(tables_, log_);
    checkExclusions(identity, find(tables_, u"ModuleExclusion"),
                    target_.packageTable(u"ModuleSignature"),
                    target_.packageTable(u"ModuleExclusion"), log_);
    checkDependencies(find(tables_, u"ModuleDependency"), target_.packageTable(u"ModuleSignature"),
                      log_);
    applyConfiguration(tables_, request_.configuration, log_);
    checkPlace();
    numberFiles();
    copyRows();
    attachComponents();
    placeActions();
    addMedia();
    MergeResult result;
    result.rowsPerTable = target_.counts();
    result.files = newFiles_.size();
    result.mediaDiskId = newFiles_.empty() ? 0 : mediaDiskId_;
    target_.apply();
    return result;
  }

 private:
  void checkPlace() {
    if (!hasKey(target_.packageTable(u"Feature"), request_.feature))
      log_.stop(ODLEXDatabaseError::eMergeStep53, ODLEXMergeError::eFeatureRequired,
                u"the package has no feature " + request_.feature);
    if (!hasKey(target_.packageTable(u"Directory"), request_.directory))
      log_.stop(ODLEXDatabaseError::eMergeStep53, ODLEXMergeError::eDirCreate,
                u"the package has no directory " + request_.directory);
    if (request_.directoryConflicts) {
      const std::u16string conflicts = request_.directoryConflicts();
      if (!conflicts.empty())
        log_.stop(ODLEXDatabaseError::eMergeStep53, ODLEXMergeError::eDirCreate, conflicts);
    }
    if (const TableRows* directories = find(tables_, u"Directory")) {
      for (const Row& row : directories->rows) {
        const std::u16string parent = directories->textOf(row, u"Directory_Parent");
        if (parent.empty() || parent == row[0].text)
          roots_.insert(row[0].text);
      }
    }
  }

  // New numbers for the module's files: after the package's last file, in the module's order.
  void numberFiles() {
    const TableRows* files = find(tables_, u"File");
    if (!files || files->rows.empty())
      return;
    const package::MediaEnd end = package::mediaEndOf(package_);
    int last = end.lastSequence;
    mediaDiskId_ = end.lastDiskId;
    std::map<std::u16string, int> held;
    if (const TableRows* packageFiles = target_.packageTable(u"File")) {
      for (const Row& row : packageFiles->rows)
        held[row[0].text] = packageFiles->integerOf(row, u"Sequence", 0);
    }
    // A file the package holds already (the module merged before) keeps its number: only the
    // others are new and go onto the new disk.
    std::vector<const Row*> order;
    for (const Row& row : files->rows) {
      if (const auto found = held.find(row[0].text); found != held.end())
        fileNumbers_[row[0].text] = found->second;
      else
        order.push_back(&row);
    }
    if (order.empty())
      return;
    std::stable_sort(order.begin(), order.end(), [&](const Row* a, const Row* b) {
      return files->integerOf(*a, u"Sequence", INT32_MAX) <
             files->integerOf(*b, u"Sequence", INT32_MAX);
    });
    ++mediaDiskId_;
    if (last + static_cast<std::int64_t>(order.size()) > 32767 || mediaDiskId_ > 32767)
      log_.stop(ODLEXDatabaseError::eMergeStep58, ODLEXMergeError::eFileCreate,
                u"the package has no sequence numbers left for the module's files");
    for (const Row* row : order) {
      fileNumbers_[row->front().text] = ++last;
      newFiles_.push_back(row->front().text);
      newFileKeys_.insert(row->front().text);
    }
    lastFileNumber_ = last;
  }

  bool copied(const std::u16string& table) const {
    if (std::find(std::begin(kSteeringTables), std::end(kSteeringTables), table) !=
        std::end(kSteeringTables))
      return false;
    for (const auto& [moduleTable, packageTable] : kSequenceTables) {
      if (table == moduleTable)
        return false;
    }
    if (const TableRows* ignored = find(tables_, u"ModuleIgnoreTable")) {
      for (const Row& row : ignored->rows) {
        if (ignored->textOf(row, u"Table") == table)
          return false;
      }
    }
    return true;
  }

  // `row` of `table` pointed at the package: the module's root directory replaced by the
  // chosen one, the placeholder feature by the chosen feature, files renumbered.
  void redirect(const TableRows& table, Row& row) const {
    for (std::size_t c = 0; c < table.columns.size(); ++c) {
      Value& value = row[c];
      if (value.kind != Value::Kind::kText)
        continue;
      const std::u16string& column = table.columns[c].name;
      if (roots_.count(value.text) && refersTo(table.name, column, u"Directory"))
        value.text = request_.directory;
      else if (value.text == kNullGuid && refersTo(table.name, column, u"Feature"))
        value.text = request_.feature;
    }
    if (table.name == u"File") {
      const int sequence = table.columnIndex(u"Sequence");
      if (sequence >= 0)
        row[static_cast<std::size_t>(sequence)] = Value::ofInteger(fileNumbers_.at(row[0].text));
      const int attributes = table.columnIndex(u"Attributes");
      if (attributes >= 0 && newFileKeys_.count(row[0].text))
        row[static_cast<std::size_t>(attributes)] = Value::ofInteger(
            package::attributesInCabinet(package_, table.integerOf(row, u"Attributes", 0)));
    }
  }

  void copyRows() {
    for (const auto& [name, table] : tables_) {
      if (!copied(name))
        continue;
      for (Row row : table.rows) {
        if (name == u"Directory" && roots_.count(row[0].text))
          continue;
        redirect(table, row);
        // The package's descriptions of its columns stay, whatever the module says.
        target_.add(name, table.columns, std::move(row),
                    name == u"_Validation" ? MergeTarget::Conflicts::kKeepQuietly
                                           : MergeTarget::Conflicts::kReport);
      }
    }
  }

  void attachComponents() {
    std::vector<std::u16string> components;
    if (const TableRows* listed = find(tables_, u"ModuleComponents")) {
      for (const Row& row : listed->rows)
        components.push_back(listed->textOf(row, u"Component"));
    } else if (const TableRows* all = find(tables_, u"Component")) {
      for (const Row& row : all->rows)
        components.push_back(row[0].text);
    }
    const std::vector<engine::Column> columns = catalogColumns(u"FeatureComponents");
    for (const std::u16string& component : components)
      target_.add(u"FeatureComponents", columns,
                  rowOf(columns, {{u"Feature_", Value::ofText(request_.feature)},
                                  {u"Component_", Value::ofText(component)}}));
  }

  void placeActions() {
    for (const auto& [moduleTable, packageTable] : kSequenceTables) {
      const TableRows* actions = find(tables_, moduleTable);
      if (!actions || actions->rows.empty())
        continue;
      const std::u16string target(packageTable);
      const std::vector<engine::Column> columns = catalogColumns(target);
      for (const PlacedAction& placed :
           merge::placeActions(*actions, target_.packageTable(target), log_))
        target_.add(target, columns,
                    rowOf(columns, {{u"Action", Value::ofText(placed.action)},
                                    {u"Condition", placed.condition},
                                    {u"Sequence", Value::ofInteger(placed.number)}}));
    }
  }

  // The new files on a disk of their own: a Media row and the embedded cabinet it names.
  void addMedia() {
    if (newFiles_.empty())
      return;
    const std::u16string stream = package::freeCabinetName(
        u"merged", mediaDiskId_,
        [&](const std::u16string& name) { return target_.hasStream(name); });
    target_.addStream(stream, repackFiles(module_, newFiles_, log_));
    const std::vector<engine::Column> columns = catalogColumns(u"Media");
    target_.add(u"Media", columns,
                rowOf(columns, {{u"DiskId", Value::ofInteger(mediaDiskId_)},
                                {u"LastSequence", Value::ofInteger(lastFileNumber_)},
                                {u"Cabinet", Value::ofText(u"#" + stream)}}));
  }

  const engine::Database& package_;
  const engine::Database& module_;
  const MergeRequest& request_;
  MergeLog& log_;
  Tables tables_;
  MergeTarget target_;
  std::set<std::u16string> roots_;
  std::map<std::u16string, int> fileNumbers_;
  std::vector<std::u16string> newFiles_;  // File keys in the order of their new numbers
  std::set<std::u16string> newFileKeys_;
  int lastFileNumber_ = 0;
  int mediaDiskId_ = 0;
};

}  // namespace

MergeResult mergeModule(engine::Database& package, const engine::Database& module,
                        const MergeRequest& request, MergeLog& log) {
  return Merger(package, module, request, log).run();
}

}  // namespace odlex::merge
