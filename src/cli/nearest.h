#pragma once

#include <span>
#include <string>
#include <string_view>

namespace quellix {

// The one of the names that `word` was most likely meant to be, without regard to case; "" when
// none is near.
std::string Nearest(std::string_view word, std::span<const std::string> names);

}  // namespace quellix
