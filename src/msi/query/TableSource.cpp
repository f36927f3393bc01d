#include "msi/query/TableSource.h"

namespace odlex::query {

std::optional<TableSource> TableSource::open(engine::Database& database, std::u16string_view name) {
  TableSource source;
  source.table_ = database.findTable(name);
  if (source.table_ == nullptr) {
    source.snapshot_ = database.catalogView(name);
    source.table_ = source.snapshot_.get();
  }
  if (source.table_ == nullptr)
    return std::nullopt;
  return source;
}

std::u16string TableSource::streamName(const engine::StringPool& strings, std::size_t row) const {
  if (snapshot_)
    return std::u16string(table_->text(strings, row, 0));
  return table_->streamName(strings, row);
}

}  // namespace odlex::query
