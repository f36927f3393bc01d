// Ordering of sibling names inside a compound file directory.

#include "storage/CompoundFileNames.h"

namespace odlex::storage::cfb {
namespace {

// A block where lower-case letters follow their capitals in alternating pairs (upper even,
// lower odd, or the reverse when `lowerIsEven`).
struct PairedBlock {
  char16_t first;
  char16_t last;
  bool lowerIsEven;
};

// A block of lower-case letters at a fixed distance above their capitals.
struct ShiftedBlock {
  char16_t first;
  char16_t last;
  char16_t distance;
};

constexpr PairedBlock kPairedBlocks[] = {
    {0x0100, 0x012F, false}, {0x0132, 0x0137, false}, {0x0139, 0x0148, true},
    {0x014A, 0x0177, false}, {0x0179, 0x017E, true},  {0x01DE, 0x01EF, false},
    {0x01F8, 0x021F, false}, {0x0222, 0x0233, false}, {0x0460, 0x0481, false},
    {0x048A, 0x04BF, false}, {0x04C1, 0x04CE, true},  {0x04D0, 0x052F, false},
    {0x1E00, 0x1E95, false}, {0x1EA0, 0x1EFF, false}, {0x2C80, 0x2CE3, false},
};

constexpr ShiftedBlock kShiftedBlocks[] = {
    {u'a', u'z', 0x20},     {0x00E0, 0x00F6, 0x20}, {0x00F8, 0x00FE, 0x20}, {0x03B1, 0x03C1, 0x20},
    {0x03C3, 0x03CB, 0x20}, {0x03AD, 0x03AF, 0x25}, {0x03CD, 0x03CE, 0x3F}, {0x0430, 0x044F, 0x20},
    {0x0450, 0x045F, 0x50}, {0x0561, 0x0586, 0x30}, {0x2170, 0x217F, 0x10}, {0x24D0, 0x24E9, 0x1A},
    {0x2C30, 0x2C5F, 0x30}, {0xFF41, 0xFF5A, 0x20},
};

struct SingleMapping {
  char16_t lower;
  char16_t upper;
};

constexpr SingleMapping kSingleMappings[] = {
    {0x00B5, 0x039C}, {0x00FF, 0x0178}, {0x0131, 0x0049}, {0x017F, 0x0053},
    {0x03AC, 0x0386}, {0x03C2, 0x03A3}, {0x03CC, 0x038C},
};

char16_t upcaseByRules(char16_t unit) {
  for (const ShiftedBlock& block : kShiftedBlocks) {
    if (unit >= block.first && unit <= block.last)
      return static_cast<char16_t>(unit - block.distance);
  }
  for (const PairedBlock& block : kPairedBlocks) {
    if (unit >= block.first && unit <= block.last) {
      const bool isLower = ((unit & 1) == 0) == block.lowerIsEven;
      return isLower ? static_cast<char16_t>(unit - 1) : unit;
    }
  }
  for (const SingleMapping& mapping : kSingleMappings) {
    if (unit == mapping.lower)
      return mapping.upper;
  }
  return unit;
}

// The first of the full-width letters, the highest units the rules change.
constexpr char16_t kFullWidthFirst = 0xFF41;

// The highest unit below the full-width letters that the rules change: the units between it and
// them have no case.
constexpr char16_t kLastCasedBelowFullWidth = [] {
  char16_t last = 0;
  for (const ShiftedBlock& block : kShiftedBlocks) {
    if (block.first < kFullWidthFirst && block.last > last)
      last = block.last;
  }
  for (const PairedBlock& block : kPairedBlocks) {
    if (block.last > last)
      last = block.last;
  }
  for (const SingleMapping& mapping : kSingleMappings) {
    if (mapping.lower > last)
      last = mapping.lower;
  }
  return last;
}();

}  // namespace

char16_t upcaseUnit(char16_t unit) {
  if (unit < 0x80)
    return (unit >= u'a' && unit <= u'z') ? static_cast<char16_t>(unit - 0x20) : unit;
  // Installer names are packed into U+3800..U+4840, where no unit has a case, so sorting the
  // names of a package rarely reaches the rules.
  if (unit > kLastCasedBelowFullWidth && unit < kFullWidthFirst)
    return unit;
  return upcaseByRules(unit);
}

int compareEntryNames(std::u16string_view a, std::u16string_view b) {
  if (a.size() != b.size())
    return a.size() < b.size() ? -1 : 1;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const char16_t left = upcaseUnit(a[i]);
    const char16_t right = upcaseUnit(b[i]);
    if (left != right)
      return left < right ? -1 : 1;
  }
  return 0;
}

}  // namespace odlex::storage::cfb
