#include "msi/engine/TypeWord.h"

namespace odlex::engine {

std::string typeWord(std::uint16_t type) {
  const Column column{u"", type};
  char letter = 's';
  unsigned size = column.maxLength();
  if (column.isBinary()) {
    letter = 'v';
    size = 0;
  } else if (column.isInteger()) {
    letter = 'i';
    size = column.integerSize();
  } else if (column.localizable()) {
    letter = 'l';
  }
  if (column.nullable())
    letter = static_cast<char>(letter - 'a' + 'A');
  return letter + std::to_string(size);
}

}  // namespace odlex::engine
