// The schema version of a database and its text form.

#include <odlex/msi/MSIDatabase.h>

#include <algorithm>
#include <array>

#include "msi/engine/Database.h"

namespace {

constexpr std::array kListedVersions = {eSchema30,  eSchema100, eSchema110, eSchema120,
                                        eSchema150, eSchema200, eSchema300, eSchema301,
                                        eSchema400, eSchema405, eSchema450, eSchema500};

bool isListed(std::int64_t number) {
  return std::find(kListedVersions.begin(), kListedVersions.end(), number) != kListedVersions.end();
}

}  // namespace

eSchemaVersion MSIDatabase::GetVersion() const {
  if (!engine_ || !engine_->summary())
    return eSchemaNone;
  const auto& properties = engine_->summary()->properties;
  const auto pageCount = properties.find(odlex::storage::kPidPageCount);
  // A number that is not a listed version is kept as it is: version gates compare numbers.
  if (pageCount == properties.end() ||
      pageCount->second.kind != odlex::storage::SummaryValue::kInteger ||
      pageCount->second.integer <= 0)
    return eSchemaNone;
  return static_cast<eSchemaVersion>(pageCount->second.integer);
}

eSchemaVersion MSIDatabase::MapVersion(const TalString& text) {
  const std::optional<std::int64_t> number = text.ToInt();
  return number && isListed(*number) ? static_cast<eSchemaVersion>(*number) : eSchemaNone;
}

TalString MSIDatabase::MapVersion(eSchemaVersion version) {
  return version == eSchemaNone ? TalString() : TalString::FromInt(version);
}
