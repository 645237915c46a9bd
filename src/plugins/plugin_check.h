#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"

namespace quellix::modPlugin {

// What one line of a recipe does, in words, or what is wrong with it.
struct Remark {
  size_t line = 0;  // from 1; 0 for the whole file
  bool is_fault = false;
  std::string text;  // a sentence
};

// A remark or more for each line of a recipe that is not empty, in order, some ten thousand at
// most. `bytes` are the file's.
std::vector<Remark> CheckPlugin(const Machine& machine, std::string_view bytes);

}  // namespace quellix::modPlugin
