#pragma once
// The file system the tool works through: the real one, counting the bytes every command
// writes so that long work draws a progress bar (ProgressBar.h) on stderr. The bar shows the
// bytes written against the size of the largest file the command read: its package, as a
// rewrite, an export of every table or an edit writes about as much as the package holds.

#include <cstdint>
#include <string>

#include "ProgressBar.h"
#include "storage/ForwardingFileSystem.h"

namespace odlex::cli {

class ProgressFileSystem : public storage::ForwardingFileSystem {
 public:
  // Counts and draws for the work named `label` ("rewrite"), writing through `inner`.
  ProgressFileSystem(storage::FileSystem& inner, std::string label);

  // Counts `bytes` more written, and shows them on the bar.
  void written(std::uint64_t bytes);

  std::unique_ptr<storage::ReadableFile> openRead(const std::filesystem::path& path,
                                                  std::string& error) override;
  std::unique_ptr<storage::WritableFile> createFile(const std::filesystem::path& path,
                                                    const storage::NewFileOptions& options,
                                                    std::string& error) override;

 private:
  ProgressBar bar_;
  std::uint64_t expected_ = 0;
  std::uint64_t written_ = 0;
};

}  // namespace odlex::cli
