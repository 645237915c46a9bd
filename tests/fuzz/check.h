#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace quellix {

// What is found when it is not so.
inline void Check(bool is_so) {
  if (!is_so) std::abort();
}
// An input.
inline std::string_view BytesOf(const uint8_t* data, size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

}  // namespace quellix
