#include "msi/query/Query.h"

#include "msi/query/Binder.h"
#include "msi/query/Executor.h"
#include "msi/query/Parser.h"

#include <type_traits>
#include <variant>

namespace odlex::query {

std::unique_ptr<Query> Query::prepare(engine::Database& database, std::u16string_view text,
                                      engine::Error& error) {
  Statement statement;
  if (!parseStatement(text, statement, error))
    return nullptr;
  Plan plan;
  std::unique_ptr<Change> change;
  const bool bound = std::visit(
      [&](const auto& parsed) {
        using Kind = std::decay_t<decltype(parsed)>;
        if constexpr (std::is_same_v<Kind, SelectStatement>)
          return bindStatement(database, parsed, plan, error);
        else if constexpr (std::is_same_v<Kind, InsertStatement>)
          change = bindInsert(database, parsed, error);
        else if constexpr (std::is_same_v<Kind, UpdateStatement>)
          change = bindUpdate(database, parsed, error);
        else if constexpr (std::is_same_v<Kind, DeleteStatement>)
          change = bindDelete(database, parsed, error);
        else if constexpr (std::is_same_v<Kind, CreateStatement>)
          change = bindCreate(database, parsed, error);
        else if constexpr (std::is_same_v<Kind, DropStatement>)
          change = bindDrop(database, parsed, error);
        else
          change = bindAlter(database, parsed, error);
        return change != nullptr;
      },
      statement);
  if (!bound)
    return nullptr;
  return std::unique_ptr<Query>(new Query(database, std::move(plan), std::move(change)));
}

std::uint32_t Query::execute(std::span<const Field> parameters, engine::Error& error) {
  executed_ = false;
  next_ = 0;
  result_ = ResultSet();
  if (parameters.size() < parameterCount()) {
    error.code = engine::kInvalidField;
    error.text = "the query has " + std::to_string(parameterCount()) + " parameters (?) but " +
                 std::to_string(parameters.size()) + " were given";
    return error.code;
  }
  const bool ran = change_ ? change_->run(database_, parameters, error)
                           : runPlan(database_, plan_, parameters, result_, error);
  if (!ran) {
    result_ = ResultSet();
    return error.code;
  }
  executed_ = true;
  return engine::kSuccess;
}

std::uint32_t Query::fetch(Record& record) {
  if (!executed_)
    return engine::kInvalidHandleState;
  if (next_ >= result_.rowCount())
    return engine::kNoMoreItems;
  result_.read(next_++, database_.strings(), record);
  return engine::kSuccess;
}

}  // namespace odlex::query
