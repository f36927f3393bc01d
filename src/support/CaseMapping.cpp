#include "odlex/support/CaseMapping.h"

#include <array>

namespace odlex {
namespace {

// A block where upper and lower case letters sit a fixed distance apart, or alternate
// (upper on one parity, lower on the next code unit).
struct Range {
  char16_t first;  // the first upper-case letter
  char16_t last;   // the last upper-case letter; for alternating blocks the last code unit
  int delta;       // lower = upper + delta; 1 for alternating pairs
  bool alternating;
};

constexpr std::array<Range, 26> kRanges = {{
    {0x00C0, 0x00D6, 32, false},  // Latin-1 letters before the multiplication sign
    {0x00D8, 0x00DE, 32, false},  // and after it
    {0x0100, 0x012F, 1, true},    // Latin Extended-A, even upper / odd lower ...
    {0x0132, 0x0137, 1, true},
    {0x0139, 0x0148, 1, true},  // ... odd upper / even lower ...
    {0x014A, 0x0177, 1, true},  // ... and even / odd again
    {0x0179, 0x017E, 1, true},
    {0x0386, 0x0386, 38, false},  // Greek with tonos
    {0x0388, 0x038A, 37, false},
    {0x038C, 0x038C, 64, false},
    {0x038E, 0x038F, 63, false},
    {0x0391, 0x03A1, 32, false},  // Greek capitals (0x03A2 is unassigned)
    {0x03A3, 0x03AB, 32, false},
    {0x03D8, 0x03EF, 1, true},    // archaic and Coptic letters in the Greek block
    {0x0400, 0x040F, 80, false},  // Cyrillic with diacritics
    {0x0410, 0x042F, 32, false},  // basic Cyrillic
    {0x0460, 0x0481, 1, true},
    {0x048A, 0x04BF, 1, true},
    {0x04C0, 0x04C0, 15, false},
    {0x04C1, 0x04CE, 1, true},
    {0x04D0, 0x052F, 1, true},
    {0x0531, 0x0556, 48, false},  // Armenian
    {0x1E00, 0x1E95, 1, true},    // Latin Extended Additional
    {0x1EA0, 0x1EFF, 1, true},
    {0x2160, 0x216F, 16, false},  // Roman numerals
    {0xFF21, 0xFF3A, 32, false},  // full-width Latin
}};

// Upper-case letters whose lower case is outside their block.
// {upper, lower}
struct Pair {
  char16_t upper;
  char16_t lower;
};
constexpr std::array<Pair, 2> kLowerOnly = {{
    {0x0178, 0x00FF},  // Y with diaeresis
    {0x0130, 0x0069},  // capital I with dot above lower-cases to plain i
}};

// Lower-case letters whose upper case is outside their block or shared with another.
constexpr std::array<Pair, 6> kUpperOnly = {{
    {0x0178, 0x00FF},
    {0x039C, 0x00B5},  // micro sign -> capital mu
    {0x0049, 0x0131},  // dotless i -> I
    {0x0053, 0x017F},  // long s -> S
    {0x03A3, 0x03C2},  // final sigma -> capital sigma
    {0x1E60, 0x1E9B},  // long s with dot above
}};

bool InRange(const Range& r, char16_t c) {
  return c >= r.first && c <= r.last;
}

bool IsUpperInRange(const Range& r, char16_t c) {
  return InRange(r, c) && (!r.alternating || (c - r.first) % 2 == 0);
}

bool IsLowerInRange(const Range& r, char16_t c) {
  const int upper = c - r.delta;
  if (upper < r.first || upper > r.last) {
    return false;
  }
  return !r.alternating || (upper - r.first) % 2 == 0;
}

}  // namespace

char16_t ToUpperChar(char16_t c) {
  if (c < 0x80) {
    return (c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - 32) : c;
  }
  for (const Pair& p : kUpperOnly) {
    if (p.lower == c) {
      return p.upper;
    }
  }
  for (const Range& r : kRanges) {
    if (IsLowerInRange(r, c)) {
      return static_cast<char16_t>(c - r.delta);
    }
  }
  return c;
}

char16_t ToLowerChar(char16_t c) {
  if (c < 0x80) {
    return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
  }
  for (const Pair& p : kLowerOnly) {
    if (p.upper == c) {
      return p.lower;
    }
  }
  for (const Range& r : kRanges) {
    if (IsUpperInRange(r, c)) {
      return static_cast<char16_t>(c + r.delta);
    }
  }
  return c;
}

char16_t FoldCaseChar(char16_t c) {
  if (c < 0x80) {
    return ToLowerChar(c);
  }
  if (c == 0x0130 || c == 0x0131) {
    return c;  // the dotted and dotless i have no simple folding
  }
  return ToLowerChar(ToUpperChar(c));
}

}  // namespace odlex
