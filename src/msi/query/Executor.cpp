#include "msi/query/Executor.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "msi/query/TableSource.h"

namespace odlex::query {
namespace {

bool sameColumns(const std::vector<engine::Column>& a, const std::vector<engine::Column>& b) {
  return std::ranges::equal(a, b, [](const engine::Column& x, const engine::Column& y) {
    return x.name == y.name && x.type == y.type;
  });
}

// The rows of a table by the value of one column, and the cell of an earlier table whose
// value picks them.
struct KeyLookup {
  CellRef probe;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> index;  // (cell, row), sorted
};

class Executor {
 public:
  Executor(engine::Database& database, Plan& plan, engine::Error& error)
      : database_(database), plan_(plan), error_(error) {}

  bool run(std::span<const Field> parameters, ResultSet& result) {
    if (!findMatches(parameters))
      return false;
    if (!plan_.orderBy.empty())
      sortMatches();
    copyOut(result);
    if (plan_.distinct)
      result.removeDuplicates();
    return true;
  }

  // The passing combinations, one row index per table each, in table order.
  bool findMatches(std::span<const Field> parameters) {
    if (!openSources() || !bindConjuncts(parameters))
      return false;
    currentRow_.assign(sources_.size(), 0);
    currentCells_.assign(sources_.size(), nullptr);
    buildLookups();
    return collect(0);
  }

  std::vector<std::uint32_t> takeMatches() { return std::move(matches_); }

 private:
  bool openSources() {
    for (const PlanSource& planned : plan_.sources) {
      std::optional<TableSource> source = TableSource::open(database_, planned.name);
      if (!source) {
        return failWith(engine::kInvalidTable,
                        "table " + quoteText(planned.name) + " no longer exists");
      }
      if (!sameColumns(source->table().columns(), planned.columns)) {
        return failWith(engine::kFunctionFailed, "the columns of table " + quoteText(planned.name) +
                                                     " changed since the query was prepared");
      }
      sources_.push_back(std::move(*source));
    }
    return true;
  }

  bool bindConjuncts(std::span<const Field> parameters) {
    checks_.assign(sources_.size(), {});
    for (Conjunct& conjunct : plan_.conjuncts) {
      if (!bindValues(conjunct.predicate, parameters, database_.strings(), error_))
        return false;
      checks_[conjunct.source].push_back(&conjunct.predicate);
    }
    return true;
  }

  bool failWith(std::uint32_t code, std::string text) {
    error_.code = code;
    error_.text = std::move(text);
    return false;
  }

  // For every joined table linked to an earlier one by `column = column`, an index of the
  // linking column, so that each row combination of the earlier tables meets only the rows
  // that can match instead of all of them.
  void buildLookups() {
    lookups_.assign(sources_.size(), std::nullopt);
    for (std::uint32_t depth = 1; depth < sources_.size(); ++depth) {
      for (const Predicate* check : checks_[depth]) {
        if (check->kind != Predicate::Kind::kCompare || check->comparison != Comparison::kEqual ||
            !check->rightColumn) {
          continue;
        }
        bool leftHere = check->left.source == depth;
        const CellRef& here = leftHere ? check->left : *check->rightColumn;
        const CellRef& earlier = leftHere ? *check->rightColumn : check->left;
        if (here.source != depth || earlier.source >= depth)
          continue;
        lookups_[depth] = makeLookup(sources_[depth].table(), here.column, earlier);
        break;
      }
    }
  }

  static KeyLookup makeLookup(const engine::Table& table, std::uint32_t column,
                              const CellRef& probe) {
    KeyLookup lookup{probe, {}};
    lookup.index.reserve(table.rowCount());
    for (std::size_t row = 0; row < table.rowCount(); ++row) {
      lookup.index.emplace_back(table.cell(row, column), static_cast<std::uint32_t>(row));
    }
    std::ranges::sort(lookup.index);
    return lookup;
  }

  // Gives the table at `depth` a current row in turn (only the rows its lookup offers, when
  // it has one), going on to the next table for each that passes the checks so far.
  bool collect(std::size_t depth) {
    if (const std::optional<KeyLookup>& lookup = lookups_[depth]) {
      std::uint32_t key = currentCells_[lookup->probe.source][lookup->probe.column];
      auto entry = std::ranges::lower_bound(lookup->index, std::pair{key, std::uint32_t{0}});
      for (; entry != lookup->index.end() && entry->first == key; ++entry) {
        if (!visit(depth, entry->second))
          return false;
      }
      return true;
    }
    for (std::size_t row = 0; row < sources_[depth].table().rowCount(); ++row) {
      if (!visit(depth, static_cast<std::uint32_t>(row)))
        return false;
    }
    return true;
  }

  bool visit(std::size_t depth, std::uint32_t row) {
    if (++visited_ > kMaxCombinations) {
      return failWith(engine::kFunctionFailed,
                      "the query would visit more than " + std::to_string(kMaxCombinations) +
                          " row combinations; link its tables with `column = column`");
    }
    currentRow_[depth] = row;
    currentCells_[depth] = sources_[depth].table().row(row).data();
    if (!passes(depth))
      return true;
    if (depth + 1 < sources_.size())
      return collect(depth + 1);
    matches_.insert(matches_.end(), currentRow_.begin(), currentRow_.end());
    return true;
  }

  bool passes(std::size_t depth) const {
    return std::ranges::all_of(checks_[depth], [&](const Predicate* check) {
      return matches(*check, currentCells_, database_.strings());
    });
  }

  std::uint32_t rowOf(std::size_t match, std::uint32_t source) const {
    return matches_[match * sources_.size() + source];
  }

  std::uint32_t cellOf(std::size_t match, const CellRef& ref) const {
    return sources_[ref.source].table().cell(rowOf(match, ref.source), ref.column);
  }

  // Negative, zero or positive as match `a` orders before, with or after match `b`.
  int compareMatches(std::size_t a, std::size_t b) const {
    const engine::StringPool& strings = database_.strings();
    for (const CellRef& ref : plan_.orderBy) {
      std::uint32_t x = cellOf(a, ref);
      std::uint32_t y = cellOf(b, ref);
      if (x == y)
        continue;
      switch (valueKindOf(plan_.sources[ref.source].columns[ref.column])) {
        case ValueKind::kInteger:
          return static_cast<std::int32_t>(x) < static_cast<std::int32_t>(y) ? -1 : 1;
        case ValueKind::kString: {
          int order = strings.get(x).compare(strings.get(y));
          if (order != 0)
            return order;
          break;
        }
        case ValueKind::kBinary:
          return x < y ? -1 : 1;
      }
    }
    return 0;
  }

  void sortMatches() {
    std::size_t width = sources_.size();
    std::vector<std::size_t> order(matches_.size() / width);
    for (std::size_t i = 0; i < order.size(); ++i)
      order[i] = i;
    std::ranges::stable_sort(
        order, [&](std::size_t a, std::size_t b) { return compareMatches(a, b) < 0; });
    std::vector<std::uint32_t> sorted;
    sorted.reserve(matches_.size());
    for (std::size_t index : order) {
      auto first = matches_.begin() + static_cast<std::ptrdiff_t>(index * width);
      sorted.insert(sorted.end(), first, first + static_cast<std::ptrdiff_t>(width));
    }
    matches_ = std::move(sorted);
  }

  void copyOut(ResultSet& result) const {
    std::vector<ValueKind> kinds;
    for (const engine::Column& column : plan_.outputColumns)
      kinds.push_back(valueKindOf(column));
    result = ResultSet(kinds);
    std::size_t count = matches_.size() / sources_.size();
    for (std::size_t match = 0; match < count; ++match) {
      for (std::size_t i = 0; i < plan_.output.size(); ++i) {
        const CellRef& ref = plan_.output[i];
        std::uint32_t cell = cellOf(match, ref);
        if (kinds[i] == ValueKind::kBinary && cell != 0) {
          cell = result.streamCell(
              sources_[ref.source].streamName(database_.strings(), rowOf(match, ref.source)));
        }
        result.appendCell(cell);
      }
    }
  }

  engine::Database& database_;
  Plan& plan_;
  engine::Error& error_;
  std::vector<TableSource> sources_;
  // Per table, the conditions that can be checked once it has a current row.
  std::vector<std::vector<const Predicate*>> checks_;
  std::vector<std::optional<KeyLookup>> lookups_;
  std::vector<std::uint32_t> currentRow_;
  std::vector<const std::uint32_t*> currentCells_;
  // The passing combinations, one row index per table each.
  std::vector<std::uint32_t> matches_;
  std::uint64_t visited_ = 0;
};

}  // namespace

bool runPlan(engine::Database& database, Plan& plan, std::span<const Field> parameters,
             ResultSet& result, engine::Error& error) {
  return Executor(database, plan, error).run(parameters, result);
}

bool findRows(engine::Database& database, Plan& plan, std::span<const Field> parameters,
              std::vector<std::uint32_t>& rows, engine::Error& error) {
  Executor executor(database, plan, error);
  if (!executor.findMatches(parameters))
    return false;
  rows = executor.takeMatches();
  return true;
}

}  // namespace odlex::query
