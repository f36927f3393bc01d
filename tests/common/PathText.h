#pragma once
// A file path as the library's string type, the way a host passes paths in.

#include <odlex/support/TalString.h>

#include <filesystem>

namespace odlex::test {

inline TalString text(const std::filesystem::path& path) {
  return TalString::FromUtf8(path.string());
}

}  // namespace odlex::test
