#pragma once
// File paths as the lower layer takes them (UTF-16 text) and as the file system takes them.

#include <filesystem>

#include <odlex/support/TalString.h>

namespace odlex::lower {

inline std::filesystem::path toPath(const TalString& text) {
  return std::filesystem::path(text.ToUtf8());
}

}  // namespace odlex::lower
