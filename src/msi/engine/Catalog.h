#pragma once
// Column lists of the catalog tables the database keeps about itself.

#include <vector>

#include "msi/engine/Column.h"

namespace odlex::engine {

std::vector<Column> tablesCatalogColumns();   // _Tables: Name
std::vector<Column> columnsCatalogColumns();  // _Columns: Table, Number, Name, Type
std::vector<Column> streamsCatalogColumns();  // _Streams and _Storages: Name, Data

}  // namespace odlex::engine
