#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quellix::modPlugin {

// What the name generator is asked for, as it was typed.
struct NumberRange {
  std::string from, to;  // whole numbers from 0 on, both among the names
  bool pad = false;
  std::string padding = "0";  // "0" or "00": zeros that stand before a number of one digit
};

struct Numbers {
  std::vector<std::string> texts;
  std::string refusal;  // a sentence; then there are no texts
};

// The numbers of a range. Padded ones all have the width of the last number, and at least one digit
// more than the padding.
Numbers GenerateNumbers(const NumberRange& range);

}  // namespace quellix::modPlugin
