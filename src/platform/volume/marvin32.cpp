#include "platform/volume/marvin32.h"

#include <bit>

namespace quellix {
namespace {

struct State {
  uint32_t low, high;

  void Add(uint32_t number) {
    low += number;
    high ^= low;
    low = std::rotl(low, 20) + high;
    high = std::rotl(high, 9) ^ low;
    low = std::rotl(low, 27) + high;
    high = std::rotl(high, 19);
  }
};

}  // namespace

uint64_t Marvin32(std::string_view bytes, uint64_t seed) {
  State state{static_cast<uint32_t>(seed), static_cast<uint32_t>(seed >> 32)};
  uint32_t number = 0, shift = 0;
  for (const char byte : bytes) {
    number |= uint32_t{static_cast<uint8_t>(byte)} << shift;
    shift = (shift + 8) % 32;
    if (shift != 0) continue;
    state.Add(number);
    number = 0;
  }
  state.Add(number | 0x80u << shift);  // the end is marked
  state.Add(0);
  return uint64_t{state.high} << 32 | state.low;
}

}  // namespace quellix
