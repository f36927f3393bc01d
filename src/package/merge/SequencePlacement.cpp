// Placing merge-module actions by base action and free sequence numbers.

#include "package/merge/SequencePlacement.h"

#include <map>

namespace odlex::merge {

namespace {

constexpr int kLastNumber = 32767;
// Longest chain of base actions followed: each link is a nested call.
constexpr int kMaxChain = 1000;

class Placer {
 public:
  Placer(const TableRows& module, MergeLog& log) : module_(module), log_(log) {}

  // The package's actions and their numbers.
  void holdPackage(const TableRows* package) {
    if (!package)
      return;
    for (const Row& row : package->rows) {
      const std::int32_t number = package->integerOf(row, u"Sequence", INT32_MIN);
      numbers_[package->textOf(row, u"Action")] = number;
      if (number != INT32_MIN)
        taken_.insert(number);
    }
  }

  std::vector<PlacedAction> place() {
    for (const Row& row : module_.rows)
      rows_[module_.textOf(row, u"Action")] = &row;
    for (const Row& row : module_.rows)
      numberOf(module_.textOf(row, u"Action"), 0);
    return std::move(placed_);
  }

 private:
  // The number of `action`, placing it first when it is a module action not placed yet.
  // INT32_MIN for an action that is in the package without a number.
  // `depth` counts the base actions followed to get here.
  std::int32_t numberOf(const std::u16string& action, int depth) {
    if (const auto held = numbers_.find(action); held != numbers_.end())
      return held->second;
    const auto found = rows_.find(action);
    if (found == rows_.end())
      log_.stop(ODLEXDatabaseError::eMergeStep57, ODLEXMergeError::eResequenceMerge,
                u"the base action " + action + u" of " + module_.name +
                    u" is in neither the module nor the package");
    if (!placing_.insert(action).second)
      log_.stop(ODLEXDatabaseError::eMergeStep57, ODLEXMergeError::eResequenceMerge,
                u"the action " + action + u" of " + module_.name +
                    u" is placed relative to itself through its base actions");
    const Row& row = *found->second;
    if (depth > kMaxChain)
      log_.stop(ODLEXDatabaseError::eMergeStep57, ODLEXMergeError::eResequenceMerge,
                u"the chain of base actions of " + module_.name + u" is too long");
    std::int32_t number = module_.integerOf(row, u"Sequence", INT32_MIN);
    const std::u16string base = module_.textOf(row, u"BaseAction");
    if (!base.empty()) {
      const std::int32_t baseNumber = numberOf(base, depth + 1);
      const int step = module_.integerOf(row, u"After", 0) == 1 ? 1 : -1;
      number = baseNumber == INT32_MIN ? 0 : freeNumberNextTo(taken_, baseNumber, step);
      if (number == 0)
        log_.stop(ODLEXDatabaseError::eMergeStep57, ODLEXMergeError::eResequenceMerge,
                  u"no free sequence number " + std::u16string(step > 0 ? u"after " : u"before ") +
                      base + u" for the action " + action + u" of " + module_.name);
    } else if (number == INT32_MIN || number < 1 || number > kLastNumber) {
      log_.record(ODLEXMergeError::eResequenceMerge,
                  u"the action " + action + u" of " + module_.name +
                      u" has neither a usable sequence number nor a base action; it is left out");
      numbers_[action] = INT32_MIN;
      return INT32_MIN;
    }
    numbers_[action] = number;
    taken_.insert(number);
    const int condition = module_.columnIndex(u"Condition");
    placed_.push_back(
        {action, condition < 0 ? Value{} : row[static_cast<std::size_t>(condition)], number});
    return number;
  }

  const TableRows& module_;
  MergeLog& log_;
  std::map<std::u16string, const Row*> rows_;
  std::map<std::u16string, std::int32_t> numbers_;
  std::set<int> taken_;
  std::set<std::u16string> placing_;
  std::vector<PlacedAction> placed_;
};

}  // namespace

int freeNumberNextTo(const std::set<int>& taken, int number, int step) {
  int candidate = number + step;
  while (candidate >= 1 && candidate <= kLastNumber && taken.count(candidate))
    candidate += step;
  return candidate >= 1 && candidate <= kLastNumber ? candidate : 0;
}

std::vector<PlacedAction> placeActions(const TableRows& moduleTable, const TableRows* packageRows,
                                       MergeLog& log) {
  Placer placer(moduleTable, log);
  placer.holdPackage(packageRows);
  return placer.place();
}

}  // namespace odlex::merge
