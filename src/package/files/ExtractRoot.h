#pragma once
// The folder files are extracted into, and the paths handed out in it so far. Every path it gives
// is inside the folder: each name on the way is checked (isSafeName), folders are made one at a
// time and never entered through a symbolic link, and a path is given once only, compared without
// regard to case as Windows compares names, and never when something is already there.

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>

namespace odlex::package {

class ExtractRoot {
 public:
  // `root` is made (with its parents) when missing; it may itself be a link the caller chose.
  explicit ExtractRoot(std::filesystem::path root) : root_(std::move(root)) {}

  // Makes the root folder; false with the reason.
  bool create(std::string& error);
  const std::filesystem::path& path() const { return root_; }

  // The file for `relative` ('/'-separated names below the root), with the folders above it
  // made. 0, or with the reason: kBadPathname (161) when a name is unsafe, kAlreadyExists (183)
  // when the path is taken or a folder on the way is a link or a file, kCreateFailed (1631) when
  // a folder cannot be made.
  std::uint32_t claim(std::u16string_view relative, std::filesystem::path& file,
                      std::string& error);

  // Moves `from` (a file in the root's file system) to `to`, a path claimed here, without ever
  // replacing what might have appeared there meanwhile. False with the reason.
  static bool place(const std::filesystem::path& from, const std::filesystem::path& to,
                    std::string& error);

 private:
  std::filesystem::path root_;
  std::set<std::u16string> taken_;  // claimed paths, case-folded
};

}  // namespace odlex::package
