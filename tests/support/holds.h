// What tests have in common, and the headers that nearly all of them need.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace quellix {

// What lists are compared with.
using Names = std::vector<std::string>;

// The parts of a text between blanks.
inline Names WordsOf(const std::string& text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), {}};
}

// Whether a text holds a part; a failure shows both.
inline testing::AssertionResult Holds(std::string_view text, std::string_view part) {
  const bool holds = text.find(part) != text.npos;
  return testing::AssertionResult(holds)
         << "\"" << part << "\" is " << (holds ? "" : "not ") << "in: " << text;
}

// A log without what drives tell of their free space: others write on them meanwhile.
inline std::string WithoutFreeSpace(const std::string& log) {
  return std::regex_replace(log, std::regex("\r?\nFree on .:[^\r\n]*"), "");
}

}  // namespace quellix
