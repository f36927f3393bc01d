#include "package/files/ExtractRoot.h"

#include <fcntl.h>
#include <stdio.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <vector>

#include "msi/engine/Result.h"
#include "odlex/support/CaseMapping.h"
#include "odlex/support/TalString.h"
#include "package/files/SafeName.h"

namespace odlex::package {

namespace {

std::string utf8(std::u16string_view text) {
  return TalString(std::u16string(text)).ToUtf8();
}

}  // namespace

bool ExtractRoot::create(std::string& error) {
  std::error_code failed;
  std::filesystem::create_directories(root_, failed);
  if (failed || !std::filesystem::is_directory(root_)) {
    error = "cannot make the folder " + root_.string() +
            (failed ? ": " + failed.message() : std::string());
    return false;
  }
  return true;
}

std::uint32_t ExtractRoot::claim(std::u16string_view relative, std::filesystem::path& file,
                                 std::string& error) {
  std::vector<std::u16string_view> names;
  for (std::size_t start = 0;;) {
    const std::size_t slash = relative.find(u'/', start);
    names.push_back(relative.substr(start, slash - start));
    if (slash == std::u16string_view::npos)
      break;
    start = slash + 1;
  }
  for (std::u16string_view name : names) {
    if (!isSafeName(name)) {
      error = "the name \"" + utf8(name) + "\" in \"" + utf8(relative) +
              "\" could lead outside the folder";
      return engine::kBadPathname;
    }
  }
  std::u16string folded;
  for (char16_t c : relative)
    folded.push_back(FoldCaseChar(c));
  if (taken_.contains(folded)) {
    error = "\"" + utf8(relative) + "\" is already taken by another file";
    return engine::kAlreadyExists;
  }
  std::filesystem::path at = root_;
  for (std::size_t i = 0; i + 1 < names.size(); ++i) {
    at /= utf8(names[i]);
    std::error_code failed;
    const std::filesystem::file_status status = std::filesystem::symlink_status(at, failed);
    if (status.type() == std::filesystem::file_type::not_found) {
      if (!std::filesystem::create_directory(at, failed) && failed) {
        error = "cannot make the folder " + at.string() + ": " + failed.message();
        return engine::kCreateFailed;
      }
    } else if (status.type() != std::filesystem::file_type::directory) {
      error = at.string() + " is a link or a file, not a folder";
      return engine::kAlreadyExists;
    }
  }
  at /= utf8(names.back());
  std::error_code failed;
  if (std::filesystem::symlink_status(at, failed).type() != std::filesystem::file_type::not_found) {
    error = at.string() + " already exists";
    return engine::kAlreadyExists;
  }
  taken_.insert(std::move(folded));
  file = at;
  return engine::kSuccess;
}

bool ExtractRoot::place(const std::filesystem::path& from, const std::filesystem::path& to,
                        std::string& error) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) != 0) {
    error = "cannot move a file to " + to.string() + ": " + std::strerror(errno);
    return false;
  }
  return true;
}

}  // namespace odlex::package
