#pragma once
// Installer stream names: table and stream names are packed two characters per UTF-16
// unit into the private range the installer uses, so that names of up to 62 characters
// fit the container's 31-unit limit. Table streams carry an extra leading mark.

#include <optional>
#include <string>
#include <string_view>

namespace odlex::storage {

// Encodes `name`; `isTable` adds the table mark. Empty when the result would not fit the
// container's name limit.
std::optional<std::u16string> encodeStreamName(std::u16string_view name, bool isTable);

struct DecodedStreamName {
  std::u16string name;
  bool isTable = false;
};
DecodedStreamName decodeStreamName(std::u16string_view encoded);

// A container entry name as a person reads it in a message, in double quotes: installer names
// decoded (a table stream shown as table "Property"), units outside printable ASCII as \uXXXX.
std::string describeEntryName(std::u16string_view stored);

}  // namespace odlex::storage
