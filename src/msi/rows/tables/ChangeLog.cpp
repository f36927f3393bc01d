// Entries of the change log, stamped with the time and the user.

#include <chrono>
#include <cstdint>
#include <ctime>

#include "odlex/msi/MSIRows.h"
#include "odlex/support/UserName.h"

namespace {

// Digits of the entry number in the key: enough for any log a package holds, and fixed so that
// keys sort in the order the entries were made.
constexpr int kEntryDigits = 8;

TalString utcNow() {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm parts{};
  gmtime_r(&now, &parts);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
  return TalString::FromUtf8(text);
}

}  // namespace

MSIEZrChangeLog* MSITZrChangeLog::Add(unsigned short kind, unsigned long messageId,
                                      const TalString& message) {
  if (kind > INT16_MAX || messageId > static_cast<unsigned long>(INT32_MAX))
    return nullptr;
  MSIEZrChangeLog* row = Add(MakeUniqueKey(TalString(u"Entry"), kEntryDigits));
  row->SetKind(static_cast<short>(kind));
  row->SetMessageId(static_cast<long>(messageId));
  row->SetMessage(message);
  row->SetTime(utcNow());
  row->SetAuthor(odlex::CurrentUserName());
  return row;
}
