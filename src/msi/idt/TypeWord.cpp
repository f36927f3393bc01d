#include "msi/idt/TypeWord.h"

#include <cctype>

#include "msi/engine/Column.h"

namespace odlex::idt {
namespace {

namespace ct = engine::column_type;

// A decimal number 0-255 without sign or leading zeros (other than "0" itself).
bool parseSize(std::string_view digits, unsigned& size) {
  if (digits.empty() || digits.size() > 3)
    return false;
  if (digits.size() > 1 && digits[0] == '0')
    return false;
  size = 0;
  for (char c : digits) {
    if (c < '0' || c > '9')
      return false;
    size = size * 10 + static_cast<unsigned>(c - '0');
  }
  return size <= 255;
}

}  // namespace

bool parseTypeWord(std::string_view word, std::uint16_t& type) {
  if (word.size() < 2)
    return false;
  const char letter = word[0];
  const bool nullable = std::isupper(static_cast<unsigned char>(letter)) != 0;
  unsigned size = 0;
  if (!parseSize(word.substr(1), size))
    return false;
  switch (std::tolower(static_cast<unsigned char>(letter))) {
    case 's':
      type = static_cast<std::uint16_t>(ct::kText | size);
      break;
    case 'l':
      type = static_cast<std::uint16_t>(ct::kText | ct::kLocalizable | size);
      break;
    case 'i':
      if (size != 2 && size != 4)
        return false;
      type = size == 2 ? ct::kInteger16 : ct::kInteger32;
      break;
    case 'v':
      if (size != 0)
        return false;
      type = ct::kBinary;
      break;
    default:
      return false;
  }
  if (nullable)
    type |= ct::kNullable;
  return true;
}

std::string typeWord(std::uint16_t type) {
  const engine::Column column{u"", type};
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
    letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
  return letter + std::to_string(size);
}

}  // namespace odlex::idt
