#include "app/random_source.h"

#include <cmath>
#include <cstring>

namespace quellix {

RandomSource::RandomSource() : engine_(std::random_device{}()) {
  for (size_t i = 0; i < percent_of_.size(); ++i) {
    const double r = static_cast<double>(i) / static_cast<double>(percent_of_.size());
    percent_of_[i] = static_cast<char>(std::lround(r * 100));
  }
}

double RandomSource::Next() { return static_cast<double>(engine_() >> 11) * 0x1p-53; }

void RandomSource::FillWithPercents(std::span<char> bytes) {
  for (size_t at = 0; at < bytes.size();) {
    uint64_t bits = engine_();
    for (int i = 0; i < 4 && at < bytes.size(); ++i, bits >>= 16) {
      bytes[at++] = percent_of_[bits & 0xFFFF];
    }
  }
}

}  // namespace quellix
