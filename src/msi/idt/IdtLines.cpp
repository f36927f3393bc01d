#include "msi/idt/IdtLines.h"

#include <memory>

namespace odlex::idt {

bool LineCursor::next(std::string_view& line) {
  if (rest_.empty())
    return false;
  const std::size_t end = rest_.find('\n');
  line = rest_.substr(0, end);
  rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
  if (!line.empty() && line.back() == '\r')
    line.remove_suffix(1);
  ++number_;
  return true;
}

std::vector<std::string_view> splitFields(std::string_view line, std::size_t limit) {
  std::vector<std::string_view> fields;
  for (;;) {
    const std::size_t tab = line.find('\t');
    fields.push_back(line.substr(0, tab));
    if (tab == std::string_view::npos || fields.size() > limit)
      return fields;
    line.remove_prefix(tab + 1);
  }
}

std::uint32_t readBoundedFile(storage::FileSystem& fs, const std::filesystem::path& path,
                              std::uint64_t limit, std::string& out, engine::Error& error) {
  if (!fs.exists(path)) {
    error = {engine::kFileNotFound, path.string() + ": file not found"};
    return error.code;
  }
  std::string reason;
  std::unique_ptr<storage::ReadableFile> file = fs.openRead(path, reason);
  if (!file) {
    error = {engine::kReadFault, path.string() + ": " + reason};
    return error.code;
  }
  const std::uint64_t size = file->size();
  if (size > limit) {
    error = {engine::kFunctionFailed, path.string() + ": file of " + std::to_string(size) +
                                          " bytes exceeds the limit of " + std::to_string(limit) +
                                          " bytes"};
    return error.code;
  }
  out.resize(static_cast<std::size_t>(size));
  if (size > 0 && !file->readAt(0, out.data(), out.size(), reason)) {
    out.clear();
    error = {engine::kReadFault, path.string() + ": " + reason};
    return error.code;
  }
  return engine::kSuccess;
}

std::string positionPrefix(const std::filesystem::path& file, std::size_t line) {
  std::string prefix = file.string();
  if (line > 0)
    prefix += ":" + std::to_string(line);
  return prefix + ": ";
}

}  // namespace odlex::idt
