#include "msi/query/Binder.h"

#include <string>
#include <utility>

#include "msi/query/TableSource.h"

namespace odlex::query {
namespace {

Comparison mirrored(Comparison comparison) {
  switch (comparison) {
    case Comparison::kLess:
      return Comparison::kGreater;
    case Comparison::kGreater:
      return Comparison::kLess;
    case Comparison::kLessEqual:
      return Comparison::kGreaterEqual;
    case Comparison::kGreaterEqual:
      return Comparison::kLessEqual;
    case Comparison::kEqual:
    case Comparison::kNotEqual:
      return comparison;
  }
  return comparison;
}

const char* kindName(ValueKind kind) {
  switch (kind) {
    case ValueKind::kInteger:
      return "integer";
    case ValueKind::kString:
      return "text";
    case ValueKind::kBinary:
      return "binary";
  }
  return "?";
}

class Binder {
 public:
  Binder(engine::Database& database, Plan& plan, engine::Error& error)
      : database_(database), plan_(plan), error_(error) {}

  bool bind(const SelectStatement& statement) {
    plan_ = Plan{};
    plan_.distinct = statement.distinct;
    plan_.parameterCount = statement.parameterCount;
    if (!bindTables(statement.tables) || !bindOutput(statement) ||
        !bindColumns(statement.orderBy, plan_.orderBy)) {
      return false;
    }
    return !statement.where || bindWhere(*statement.where);
  }

 private:
  bool bindTables(const std::vector<TableName>& tables) {
    if (tables.size() > kMaxTables) {
      return fail(error_, engine::kBadQuerySyntax, tables[kMaxTables].position,
                  "more than " + std::to_string(kMaxTables) + " tables in FROM");
    }
    for (const TableName& table : tables) {
      if (findSource(table.name) >= 0) {
        return fail(error_, engine::kBadQuerySyntax, table.position,
                    "table " + quoteText(table.name) + " is listed twice");
      }
      std::optional<TableSource> source = TableSource::open(database_, table.name);
      if (!source) {
        return fail(error_, engine::kInvalidTable, table.position,
                    "unknown table " + quoteText(table.name));
      }
      plan_.sources.push_back({table.name, source->table().columns()});
    }
    return true;
  }

  int findSource(std::u16string_view name) const {
    for (std::size_t i = 0; i < plan_.sources.size(); ++i) {
      if (plan_.sources[i].name == name)
        return static_cast<int>(i);
    }
    return -1;
  }

  bool bindOutput(const SelectStatement& statement) {
    if (statement.allColumns) {
      for (std::uint32_t source = 0; source < plan_.sources.size(); ++source) {
        for (std::uint32_t column = 0; column < plan_.sources[source].columns.size(); ++column) {
          plan_.output.push_back({source, column});
        }
      }
    } else if (!bindColumns(statement.columns, plan_.output)) {
      return false;
    }
    for (const CellRef& ref : plan_.output)
      plan_.outputColumns.push_back(columnOf(ref));
    return true;
  }

  bool bindColumns(const std::vector<ColumnName>& names, std::vector<CellRef>& refs) {
    for (const ColumnName& name : names) {
      if (!resolve(name, refs.emplace_back()))
        return false;
    }
    return true;
  }

  const engine::Column& columnOf(const CellRef& ref) const {
    return plan_.sources[ref.source].columns[ref.column];
  }

  static int columnIndex(const PlanSource& source, std::u16string_view name) {
    for (std::size_t i = 0; i < source.columns.size(); ++i) {
      if (source.columns[i].name == name)
        return static_cast<int>(i);
    }
    return -1;
  }

  bool resolve(const ColumnName& name, CellRef& ref) {
    bool found = false;
    for (std::uint32_t source = 0; source < plan_.sources.size(); ++source) {
      if (!name.table.empty() && plan_.sources[source].name != name.table)
        continue;
      int column = columnIndex(plan_.sources[source], name.column);
      if (column < 0)
        continue;
      if (found) {
        return fail(
            error_, engine::kBadQuerySyntax, name.position,
            "column " + quoteText(name.column) + " is ambiguous: qualify it with its table");
      }
      found = true;
      ref = {source, static_cast<std::uint32_t>(column)};
    }
    if (found)
      return true;
    if (!name.table.empty() && findSource(name.table) < 0) {
      return fail(error_, engine::kBadQuerySyntax, name.position,
                  "table " + quoteText(name.table) + " is not in the FROM list");
    }
    return fail(error_, engine::kBadQuerySyntax, name.position,
                "unknown column " + quoteText(name.column));
  }

  bool bindWhere(const Condition& where) {
    if (where.kind != Condition::Kind::kAnd)
      return bindConjunct(where);
    for (const Condition& part : where.children) {
      if (!bindConjunct(part))
        return false;
    }
    return true;
  }

  bool bindConjunct(const Condition& condition) {
    Conjunct& conjunct = plan_.conjuncts.emplace_back();
    if (!bindCondition(condition, conjunct.predicate))
      return false;
    conjunct.source = highestSource(conjunct.predicate);
    return true;
  }

  bool bindCondition(const Condition& condition, Predicate& predicate) {
    predicate.kind = condition.kind;
    predicate.position = condition.position;
    switch (condition.kind) {
      case Condition::Kind::kAnd:
      case Condition::Kind::kOr:
        for (const Condition& child : condition.children) {
          if (!bindCondition(child, predicate.children.emplace_back()))
            return false;
        }
        return true;
      case Condition::Kind::kIsNull:
      case Condition::Kind::kIsNotNull:
        if (!resolve(condition.left.column, predicate.left))
          return false;
        predicate.valueKind = valueKindOf(columnOf(predicate.left));
        return true;
      case Condition::Kind::kCompare:
        return bindComparison(condition, predicate);
    }
    return false;
  }

  bool bindComparison(const Condition& condition, Predicate& predicate) {
    const Operand* left = &condition.left;
    const Operand* right = &condition.right;
    predicate.comparison = condition.comparison;
    if (left->kind != Operand::Kind::kColumn) {
      if (right->kind != Operand::Kind::kColumn) {
        return fail(error_, engine::kBadQuerySyntax, condition.position,
                    "a comparison needs a column on one side");
      }
      std::swap(left, right);
      predicate.comparison = mirrored(predicate.comparison);
    }
    if (!resolve(left->column, predicate.left))
      return false;
    predicate.valueKind = valueKindOf(columnOf(predicate.left));
    predicate.position = right->position;
    if (predicate.valueKind == ValueKind::kBinary)
      return binaryCompared(*left);
    switch (right->kind) {
      case Operand::Kind::kColumn: {
        if (!resolve(right->column, predicate.rightColumn.emplace()))
          return false;
        ValueKind rightKind = valueKindOf(columnOf(*predicate.rightColumn));
        if (rightKind == ValueKind::kBinary)
          return binaryCompared(*right);
        return rightKind == predicate.valueKind ||
               mismatch(*left, predicate.valueKind, *right, rightKind);
      }
      case Operand::Kind::kString:
        predicate.text = right->text;
        return predicate.valueKind == ValueKind::kString ||
               mismatch(*left, predicate.valueKind, *right, ValueKind::kString);
      case Operand::Kind::kInteger:
        predicate.integer = right->integer;
        return predicate.valueKind == ValueKind::kInteger ||
               mismatch(*left, predicate.valueKind, *right, ValueKind::kInteger);
      case Operand::Kind::kParameter:
        predicate.parameter = right->parameter;
        return true;
    }
    return false;
  }

  bool binaryCompared(const Operand& column) {
    return fail(error_, engine::kBadQuerySyntax, column.position,
                "binary column " + quoteText(column.column.column) +
                    " can only be tested with IS NULL or IS NOT NULL");
  }

  bool mismatch(const Operand& column, ValueKind kind, const Operand& other, ValueKind otherKind) {
    return fail(
        error_, engine::kBadQuerySyntax, other.position,
        "cannot compare " + std::string(kindName(kind)) + " column " +
            quoteText(column.column.column) + " with " + kindName(otherKind) + " " +
            (other.kind == Operand::Kind::kColumn ? "column " + quoteText(other.column.column)
                                                  : "value"));
  }

  engine::Database& database_;
  Plan& plan_;
  engine::Error& error_;
};

}  // namespace

bool bindStatement(engine::Database& database, const SelectStatement& statement, Plan& plan,
                   engine::Error& error) {
  return Binder(database, plan, error).bind(statement);
}

}  // namespace odlex::query
