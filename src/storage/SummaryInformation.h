#pragma once
// The summary information stream ("\005SummaryInformation"): an OLE property set with
// the standard properties of an installer database.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace odlex::storage {

// Property identifiers of the summary information property set.
enum SummaryProperty : std::uint32_t {
  kPidCodePage = 1,
  kPidTitle = 2,
  kPidSubject = 3,
  kPidAuthor = 4,
  kPidKeywords = 5,
  kPidComments = 6,
  kPidTemplate = 7,
  kPidLastAuthor = 8,
  kPidRevisionNumber = 9,
  kPidLastPrinted = 11,
  kPidCreateTime = 12,
  kPidLastSaveTime = 13,
  kPidPageCount = 14,
  kPidWordCount = 15,
  kPidCharacterCount = 16,
  kPidCreatingApplication = 18,
  kPidSecurity = 19,
};

struct SummaryValue {
  enum Kind { kInteger, kString, kFileTime } kind = kInteger;
  std::int32_t integer = 0;    // VT_I2 (code page) and VT_I4 values
  std::u16string text;         // VT_LPSTR, converted from the set's code page
  std::uint64_t fileTime = 0;  // VT_FILETIME
};

struct SummaryInformation {
  std::map<std::uint32_t, SummaryValue> properties;  // by property id; absent means not set

  // The code page the strings are stored in (property 1), 0 when absent.
  std::uint32_t codePage() const;
};

// Decodes the stream. Unknown property types are an error; bounds are checked throughout.
// Strings are read in the set's code page (neutral when property 1 is absent), except that a
// string which is well-formed UTF-8 is read as UTF-8: msitools writes summary strings as UTF-8
// whatever property 1 says, and Windows-page text with non-ASCII is practically never valid
// UTF-8. The code page reads as its unsigned 16-bit value (65001, not -535).
bool readSummaryInformation(const std::vector<std::uint8_t>& bytes, SummaryInformation& out,
                            std::string& error);
// Encodes the property set, strings in the code page of property 1 (or 1252 when absent),
// properties in ascending id order; the code page as VT_I2, other integers as VT_I4.
bool writeSummaryInformation(const SummaryInformation& info, std::vector<std::uint8_t>& out,
                             std::string& error);

}  // namespace odlex::storage
