#include "msi/query/Query.h"

#include "msi/query/Binder.h"
#include "msi/query/Executor.h"
#include "msi/query/Parser.h"

namespace odlex::query {

std::unique_ptr<Query> Query::prepare(engine::Database& database, std::u16string_view text,
                                      engine::Error& error) {
  SelectStatement statement;
  Plan plan;
  if (!parseSelect(text, statement, error) || !bindStatement(database, statement, plan, error)) {
    return nullptr;
  }
  return std::unique_ptr<Query>(new Query(database, std::move(plan)));
}

std::uint32_t Query::execute(std::span<const Field> parameters, engine::Error& error) {
  executed_ = false;
  next_ = 0;
  result_ = ResultSet();
  if (parameters.size() < plan_.parameterCount) {
    error.code = engine::kInvalidField;
    error.text = "the query has " + std::to_string(plan_.parameterCount) + " parameters (?) but " +
                 std::to_string(parameters.size()) + " were given";
    return error.code;
  }
  if (!runPlan(database_, plan_, parameters, result_, error)) {
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
