#pragma once
// A table a query reads: a persistent table of the database, used in place, or one of the
// catalog tables (_Tables, _Columns, _Streams, _Storages), read from a snapshot the database
// makes on request.

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "msi/engine/Database.h"

namespace odlex::query {

class TableSource {
 public:
  // Looks `name` up among the persistent tables, then the catalog tables; empty when
  // neither knows it.
  static std::optional<TableSource> open(engine::Database& database, std::u16string_view name);

  const engine::Table& table() const { return *table_; }

  // Name of the stream holding the binary cell of `row`. A catalog table names its streams
  // by the row's first column; a persistent table by its name and key values.
  std::u16string streamName(const engine::StringPool& strings, std::size_t row) const;

 private:
  const engine::Table* table_ = nullptr;
  std::unique_ptr<const engine::Table> snapshot_;
};

}  // namespace odlex::query
