#pragma once

#include <cstdint>
#include <string_view>

namespace quellix {

// The published hash Marvin32 of some bytes.
uint64_t Marvin32(std::string_view bytes, uint64_t seed);

}  // namespace quellix
