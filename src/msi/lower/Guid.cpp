// Random GUIDs.

#include <odlex/msi/Guid.h>

#include <cstdint>
#include <random>

namespace odlex {

namespace {

std::uint64_t nextRandom() {
  static std::mt19937_64 engine = [] {
    std::random_device device;
    std::seed_seq seed{device(), device(), device(), device(),
                       device(), device(), device(), device()};
    return std::mt19937_64(seed);
  }();
  return engine();
}

}  // namespace

TalString GenerateGuid() {
  std::uint8_t bytes[16];
  for (int half = 0; half < 2; ++half) {
    const std::uint64_t value = nextRandom();
    for (int i = 0; i < 8; ++i)
      bytes[half * 8 + i] = static_cast<std::uint8_t>(value >> (8 * i));
  }
  bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);  // version 4: random
  bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);  // the RFC 4122 variant

  static constexpr char16_t kHex[] = u"0123456789ABCDEF";
  std::u16string text = u"{";
  for (int i = 0; i < 16; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10)
      text += u'-';
    text += kHex[bytes[i] >> 4];
    text += kHex[bytes[i] & 0x0F];
  }
  text += u'}';
  return TalString(std::move(text));
}

}  // namespace odlex
