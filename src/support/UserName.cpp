// The process's user name from the password database, falling back to the environment.

#include "odlex/support/UserName.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace odlex {

TalString CurrentUserName() {
  long size = sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buffer(size > 0 ? static_cast<std::size_t>(size) : 16384);
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found &&
      found->pw_name && *found->pw_name)
    return TalString::FromUtf8(found->pw_name);
  for (const char* variable : {"USER", "LOGNAME"}) {
    const char* value = std::getenv(variable);
    if (value && *value)
      return TalString::FromUtf8(value);
  }
  return TalString(u"odlex");
}

}  // namespace odlex
