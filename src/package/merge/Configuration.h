#pragma once
// Configurable merge modules: the module names its items (ModuleConfiguration) and the cells
// they fill in (ModuleSubstitution, whose Value holds "[=Item]" references); before the rows
// are copied, every reference is replaced by the value the caller gave for the item, or the
// item's DefaultValue.

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "package/merge/MergeLog.h"
#include "package/merge/TableRows.h"

namespace odlex::merge {

using ConfigurationValues = std::vector<std::pair<std::u16string, std::u16string>>;

// Substitutes into `tables` (the module's tables by name). Stops the merge (code 51) when a
// value is given for an item the module does not have, when an item that may not be empty
// has no value, or when a value does not fit the item's format or the cell's column.
void applyConfiguration(std::map<std::u16string, TableRows, std::less<>>& tables,
                        const ConfigurationValues& values, MergeLog& log);

}  // namespace odlex::merge
