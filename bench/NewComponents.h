#pragma once
// The components the add operation puts into a package: each with one file, installed into one
// folder and linked to one feature. odlex's component table makes the component keys, which
// the libmsi side then inserts as they are, so both packages end up holding the same rows.

#include <cstdint>
#include <string>
#include <vector>

namespace odlex::bench {

struct NewComponent {
  std::string guid;
  std::string file;
  std::string fileName;  // "short|long"
  std::int32_t fileSize = 0;
  std::int32_t sequence = 0;
  std::string component;  // filled in by the odlex side
};

struct NewComponents {
  std::string directory;
  std::string feature;
  std::vector<NewComponent> items;
};

}  // namespace odlex::bench
