#pragma once

#include <string_view>

namespace quellix {

// What a jump list (*.automaticDestinations-ms, *.customDestinations-ms) tells of the entries that
// its user has pinned.
enum class Pins {
  kNone,
  kSome,
  kUnknown  // it does not tell, or cannot be read
};

// By the name of the file.
bool IsJumpList(std::string_view name);

// `file` is all of the file; whatever is in it, nothing is thrown. A list of custom destinations
// does not tell pinned entries from others: only one without entries has none.
Pins PinsOf(std::string_view name, std::string_view file);

}  // namespace quellix
