#include "msi/engine/Catalog.h"

namespace odlex::engine {

using namespace column_type;

std::vector<Column> tablesCatalogColumns() {
  return {Column{u"Name", kText | kKey | 64}};
}

std::vector<Column> columnsCatalogColumns() {
  return {Column{u"Table", kText | kKey | 64}, Column{u"Number", kInteger16 | kKey},
          Column{u"Name", kText | 64}, Column{u"Type", kInteger16}};
}

std::vector<Column> streamsCatalogColumns() {
  return {Column{u"Name", kText | kKey | 62}, Column{u"Data", kBinary}};
}

}  // namespace odlex::engine
