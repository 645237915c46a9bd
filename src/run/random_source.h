#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace quellix {

// Uniform numbers for wiping and renaming; not for secrets.
class RandomSource {
 public:
  RandomSource();

  double Next();  // in [0, 1)
  // Each byte is a number in [0, 1) times 100, rounded to nearest: 0 to 100.
  void FillWithPercents(std::span<char> bytes);

 private:
  static constexpr size_t kLanes = 16;

  void Step();

  // Independent xorshift generators side by side, so that a compiler can step them at once.
  std::array<uint32_t, kLanes> lanes_;
};

}  // namespace quellix
