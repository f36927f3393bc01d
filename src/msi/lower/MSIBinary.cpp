// Binary cell data from memory or from a file.

#include <odlex/msi/MSIBinary.h>

#include <string>

#include "msi/lower/PathText.h"
#include "storage/FileSystem.h"

MSIBinary::MSIBinary(const unsigned char* data, unsigned long size) {
  if (data)
    data_.assign(data, data + size);
}

MSIBinary::MSIBinary(const TalString& path) : file_(path) {
  const std::filesystem::path filePath = odlex::lower::toPath(path);
  std::string error;
  auto file = odlex::storage::FileSystem::current().openRead(filePath, error);
  if (file && file->size() > MaxFileSize) {
    error = "cannot read " + filePath.string() + ": larger than " + std::to_string(MaxFileSize) +
            " bytes";
  } else if (file) {
    data_.resize(static_cast<std::size_t>(file->size()));
    if (data_.empty() || file->readAt(0, data_.data(), data_.size(), error))
      return;
    data_.clear();
  }
  readError_ = TalString::FromUtf8(error);
}
