#pragma once
// The raw structure of an .idt file: lines of tab-separated fields, as bytes in the file's
// code page. Tabs, CRs and LFs never occur inside a multi-byte character of the code pages
// the database supports, so splitting the bytes is safe before decoding.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "msi/engine/Result.h"
#include "storage/FileSystem.h"

namespace odlex::idt {

// Walks the lines of a text one at a time (a hostile file may hold a billion of them). Lines
// end at LF, one CR before it is dropped; a final line without LF counts, the empty remainder
// after a final LF does not.
class LineCursor {
 public:
  explicit LineCursor(std::string_view bytes) : rest_(bytes) {}

  // The next line, without its line end; false at the end of the text.
  bool next(std::string_view& line);
  // 1-based number of the line last returned.
  std::size_t number() const { return number_; }

 private:
  std::string_view rest_;
  std::size_t number_ = 0;
};

// Splits a line into its tab-separated fields (an empty line is one empty field), stopping
// after `limit` + 1 fields so that a caller expecting `limit` can tell there are too many.
std::vector<std::string_view> splitFields(std::string_view line, std::size_t limit);

// Reads a whole file of at most `limit` bytes. kFileNotFound when it does not exist,
// kFunctionFailed when it is larger, kReadFault on an I/O error.
std::uint32_t readBoundedFile(storage::FileSystem& fs, const std::filesystem::path& path,
                              std::uint64_t limit, std::string& out, engine::Error& error);

// "file:line: " (or "file: " for line 0), the start of every error about a file's content.
std::string positionPrefix(const std::filesystem::path& file, std::size_t line);

}  // namespace odlex::idt
