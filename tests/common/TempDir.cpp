#include "common/TempDir.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace odlex::test {

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "odlex-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr)
    throw std::runtime_error("cannot create " + pattern);
  path_ = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace odlex::test
