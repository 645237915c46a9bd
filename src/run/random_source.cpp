#include "run/random_source.h"

#include <algorithm>
#include <random>

namespace quellix {
namespace {

// A 16-bit fraction times 100, rounded to nearest.
char ToPercent(uint32_t fraction) { return static_cast<char>((fraction * 100 + 0x8000) >> 16); }

}  // namespace

RandomSource::RandomSource() {
  std::random_device device;
  for (uint32_t& lane : lanes_) lane = device() | 1;  // zero would stay zero
}

void RandomSource::Step() {
  for (uint32_t& lane : lanes_) {
    lane ^= lane << 13;
    lane ^= lane >> 17;
    lane ^= lane << 5;
  }
}

double RandomSource::Next() {
  Step();
  return lanes_[0] * 0x1p-32;
}

void RandomSource::FillWithPercents(std::span<char> bytes) {
  std::array<char, 2 * kLanes> block;
  while (!bytes.empty()) {
    Step();
    for (size_t i = 0; i < kLanes; ++i) {
      block[i] = ToPercent(lanes_[i] & 0xFFFF);
      block[kLanes + i] = ToPercent(lanes_[i] >> 16);
    }
    const size_t count = std::min(bytes.size(), block.size());
    std::copy_n(block.begin(), count, bytes.begin());
    bytes = bytes.subspan(count);
  }
}

}  // namespace quellix
