#pragma once
// The data of a binary cell: bytes held in memory, either given by the caller or read from a
// file. A value read from a file remembers the file's path (GetBinaryFile), so that a row can
// say where its data came from; a value made from memory has an empty path.
//
// The file is read completely when the value is constructed. A file that cannot be read, or
// is larger than MaxFileSize, gives an empty value whose GetReadError() says why; the error is
// empty for every value that holds what was asked for.

#include <cstdint>
#include <vector>

#include "odlex/support/TalString.h"

class MSIBinary {
 public:
  // Largest file read into a value (1 GiB).
  static constexpr std::uint64_t MaxFileSize = std::uint64_t{1} << 30;

  MSIBinary() = default;
  // A copy of `size` bytes at `data` (null data counts as no bytes).
  MSIBinary(const unsigned char* data, unsigned long size);
  // The contents of the file at `path` (UTF-16 text, the host's path syntax).
  explicit MSIBinary(const TalString& path);
  // Takes the bytes of a stream read from a database.
  explicit MSIBinary(std::vector<unsigned char> data) : data_(std::move(data)) {}

  const unsigned char* GetData() const { return data_.data(); }
  unsigned long GetSize() const { return static_cast<unsigned long>(data_.size()); }
  const TalString& GetBinaryFile() const { return file_; }
  const TalString& GetReadError() const { return readError_; }

  // Values are equal when they hold the same bytes, wherever they came from.
  friend bool operator==(const MSIBinary& a, const MSIBinary& b) { return a.data_ == b.data_; }

 private:
  std::vector<unsigned char> data_;
  TalString file_;
  TalString readError_;
};
