// _SummaryInformation: the summary information stream as one row, a column per property.

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "msi/engine/Column.h"
#include "msi/rows/system/SystemTables.h"
#include "odlex/msi/MSISystemTables.h"
#include "odlex/support/UserName.h"
#include "storage/SummaryInformation.h"

namespace {

namespace type = odlex::engine::column_type;
using odlex::storage::SummaryValue;

constexpr std::uint16_t kNumber = type::kInteger32 | type::kNullable;
constexpr std::uint16_t kText = type::kText | type::kNullable;
constexpr std::uint16_t kTextLocalizable = kText | type::kLocalizable;

// The columns, in property order, and the property each holds with its kind.
struct PropertyColumn {
  odlex::schema::ColumnSchema column;
  std::uint32_t property;
  SummaryValue::Kind kind;
};

odlex::schema::ColumnSchema column(std::u16string_view name, std::uint16_t bits,
                                   std::u16string_view description) {
  odlex::schema::ColumnSchema column;
  column.name = name;
  column.accessor = name;
  column.type = bits;
  column.description = description;
  return column;
}

const std::array<PropertyColumn, 17> kProperties = {{
    {column(u"Codepage", kNumber, u"Code page of the texts."), 1, SummaryValue::kInteger},
    {column(u"Title", kTextLocalizable, u"Kind of package."), 2, SummaryValue::kString},
    {column(u"Subject", kTextLocalizable, u"Product name."), 3, SummaryValue::kString},
    {column(u"Author", kTextLocalizable, u"Manufacturer."), 4, SummaryValue::kString},
    {column(u"Keywords", kTextLocalizable, u"Search keywords."), 5, SummaryValue::kString},
    {column(u"Comments", kTextLocalizable, u"Description."), 6, SummaryValue::kString},
    {column(u"Template", kText, u"Platform;languages."), 7, SummaryValue::kString},
    {column(u"LastAuthor", kText, u"Who saved last."), 8, SummaryValue::kString},
    {column(u"RevNumber", kText, u"Package code."), 9, SummaryValue::kString},
    {column(u"LastPrinted", kText, u"Time of the administrative image."), 11,
     SummaryValue::kFileTime},
    {column(u"CreateDateTime", kText, u"Time of creation."), 12, SummaryValue::kFileTime},
    {column(u"LastSaveDateTime", kText, u"Time of the last save."), 13, SummaryValue::kFileTime},
    {column(u"PageCount", kNumber, u"Installer schema version."), 14, SummaryValue::kInteger},
    {column(u"WordCount", kNumber, u"Source type bits."), 15, SummaryValue::kInteger},
    {column(u"CharCount", kNumber, u"Transform validation bits."), 16, SummaryValue::kInteger},
    {column(u"AppName", kText, u"Application that made the package."), 18, SummaryValue::kString},
    {column(u"Security", kNumber, u"Read-only recommendation."), 19, SummaryValue::kInteger},
}};

const std::array<odlex::schema::ColumnSchema, kProperties.size()> kColumns = [] {
  std::array<odlex::schema::ColumnSchema, kProperties.size()> columns;
  for (std::size_t index = 0; index < columns.size(); ++index)
    columns[index] = kProperties[index].column;
  return columns;
}();

const odlex::schema::TableSchema kSummarySchema{u"_SummaryInformation", kColumns, 100,
                                                odlex::schema::kSystem};

constexpr std::uint64_t kTicksPerSecond = 10'000'000;

// "YYYY/MM/DD hh:mm:ss", with ".fffffff" when the time has a fraction of a second; empty for a
// count past the last valid time.
TalString formatTime(std::uint64_t fileTime) {
  SYSTEMTIME time{};
  if (!odlex::FileTimeToSystemTime(fileTime, time))
    return TalString();
  char text[40];
  int length = std::snprintf(text, sizeof text, "%04u/%02u/%02u %02u:%02u:%02u", time.wYear,
                             time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond);
  if (const std::uint64_t fraction = fileTime % kTicksPerSecond)
    std::snprintf(text + length, sizeof text - length, ".%07llu",
                  static_cast<unsigned long long>(fraction));
  return TalString::FromUtf8(text);
}

bool parseTime(const TalString& text, std::uint64_t& fileTime) {
  const std::string utf8 = text.ToUtf8();
  SYSTEMTIME time{};
  unsigned long long fraction = 0;
  int consumed = 0;
  int end = 0;
  if (std::sscanf(utf8.c_str(), "%4hu/%2hu/%2hu %2hu:%2hu:%2hu%n", &time.wYear, &time.wMonth,
                  &time.wDay, &time.wHour, &time.wMinute, &time.wSecond, &consumed) != 6 ||
      consumed != 19)
    return false;
  if (static_cast<std::size_t>(consumed) != utf8.size() &&
      (std::sscanf(utf8.c_str() + consumed, ".%7llu%n", &fraction, &end) != 1 || end != 8 ||
       static_cast<std::size_t>(consumed + end) != utf8.size()))
    return false;
  if (!odlex::SystemTimeToFileTime(time, fileTime))
    return false;
  fileTime += fraction;
  return true;
}

}  // namespace

struct MSIE_SummaryInformation::Properties {
  odlex::storage::SummaryInformation info;
};

MSIE_SummaryInformation::MSIE_SummaryInformation()
    : MSIEntry(kSummarySchema), read_(std::make_unique<Properties>()) {}

MSIE_SummaryInformation::MSIE_SummaryInformation(const MSIE_SummaryInformation& other)
    : MSIEntry(other), read_(std::make_unique<Properties>(*other.read_)) {}

MSIE_SummaryInformation::~MSIE_SummaryInformation() = default;

NullableQuad MSIE_SummaryInformation::TimeAt(std::size_t column) const {
  std::uint64_t fileTime = 0;
  return parseTime(TextAt(column), fileTime) ? NullableQuad(fileTime) : NullableQuad();
}

void MSIE_SummaryInformation::SetTimeAt(std::size_t column, const NullableQuad& value) {
  if (value.IsNull())
    SetNullAt(column);
  else
    SetTextAt(column, formatTime(value.Get()));
}

bool MSIE_SummaryInformation::SetLastSaveDateTime(const SYSTEMTIME* time) {
  std::uint64_t fileTime = 0;
  if (!time)
    fileTime = odlex::CurrentFileTime();
  else if (!odlex::SystemTimeToFileTime(*time, fileTime))
    return false;
  SetLastSaveDateTime(NullableQuad(fileTime));
  return true;
}

void MSIE_SummaryInformation::SetLastAuthor() {
  SetLastAuthor(odlex::CurrentUserName());
}

MSIT_SummaryInformation::MSIT_SummaryInformation() : MSITable(kSummarySchema) {}

std::unique_ptr<MSIEntry> MSIT_SummaryInformation::NewEntry() const {
  return std::make_unique<MSIE_SummaryInformation>();
}

MSIE_SummaryInformation* MSIT_SummaryInformation::FindFirst() const {
  for (RWCollectable* item : GetTable()) {
    auto* row = static_cast<MSIE_SummaryInformation*>(item);
    if (!row->IsDeleted())
      return row;
  }
  return nullptr;
}

MSIE_SummaryInformation* MSIT_SummaryInformation::Add() {
  return static_cast<MSIE_SummaryInformation*>(AddEntry(NewEntry()));
}

bool MSIT_SummaryInformation::Populate() {
  const odlex::engine::Database* db = odlex::rows::engineOf(*this);
  if (!db) {
    ReportError(odlex::engine::kInvalidHandle, odlex::rows::noDatabaseText(*this));
    return false;
  }
  std::vector<std::unique_ptr<MSIEntry>> rows;
  if (db->summary()) {
    auto row = std::make_unique<MSIE_SummaryInformation>();
    row->read_->info = *db->summary();
    for (std::size_t column = 0; column < kProperties.size(); ++column) {
      const auto found = row->read_->info.properties.find(kProperties[column].property);
      if (found == row->read_->info.properties.end() ||
          found->second.kind != kProperties[column].kind)
        continue;
      const SummaryValue& value = found->second;
      if (value.kind == SummaryValue::kInteger)
        row->SetIntegerAt(column, value.integer);
      else if (value.kind == SummaryValue::kString)
        row->SetTextAt(column, TalString(value.text));
      else
        row->SetTimeAt(column, NullableQuad(value.fileTime));
    }
    rows.push_back(std::move(row));
  }
  LoadRows(std::move(rows));
  return true;
}

bool MSIT_SummaryInformation::Persist() {
  odlex::engine::Database* db = odlex::rows::engineOf(*this);
  if (!db) {
    ReportError(odlex::engine::kInvalidHandle, odlex::rows::noDatabaseText(*this));
    return false;
  }
  // The table holds at most one row, live or deleted (rows without key columns compare equal).
  auto* row =
      GetTable().entries() ? static_cast<MSIE_SummaryInformation*>(*GetTable().begin()) : nullptr;
  if (row && row->IsDeleted()) {
    ReportError(odlex::engine::kAccessDenied,
                u"table _SummaryInformation: the summary information cannot be removed");
    return false;
  }
  if (!row || !row->IsModified()) {
    ClearChanges();
    return true;
  }
  odlex::storage::SummaryInformation info = row->read_->info;
  for (std::size_t column = 0; column < kProperties.size(); ++column) {
    const PropertyColumn& property = kProperties[column];
    info.properties.erase(property.property);
    SummaryValue value;
    value.kind = property.kind;
    if (property.kind == SummaryValue::kInteger) {
      const NullableLong number = row->NullableLongAt(column);
      if (number.IsNull())
        continue;
      value.integer = number.Get();
    } else if (row->TextAt(column).isNull()) {
      continue;
    } else if (property.kind == SummaryValue::kString) {
      value.text = row->TextAt(column).u16();
    } else if (!parseTime(row->TextAt(column), value.fileTime)) {
      ReportError(odlex::engine::kInvalidData,
                  TalString(u"table _SummaryInformation: " + std::u16string(property.column.name) +
                            u" is not a time (YYYY/MM/DD hh:mm:ss[.fffffff]): " +
                            row->TextAt(column).u16()));
      return false;
    }
    info.properties[property.property] = std::move(value);
  }
  // Encoding now reports a text the code page cannot hold here rather than at commit.
  std::vector<std::uint8_t> bytes;
  std::string error;
  if (!odlex::storage::writeSummaryInformation(info, bytes, error)) {
    ReportError(odlex::engine::kInvalidData,
                TalString::FromUtf8("table _SummaryInformation: " + error));
    return false;
  }
  row->read_->info = info;
  db->setSummary(std::move(info));
  ClearChanges();
  return true;
}
