#pragma once

#include <array>
#include <cstdint>
#include <random>
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
  std::mt19937_64 engine_;
  std::array<char, 65536> percent_of_;
};

}  // namespace quellix
