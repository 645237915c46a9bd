#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quellix {

// A decimal number with optional blanks around it, sign, fraction and exponent; nothing for any
// other text.
std::optional<double> ToNumber(std::string_view text);

// The number rounded half to even; nothing when it is none or lies outside 16 bits.
std::optional<int16_t> ToInt16(std::string_view text);

// The text as a buffer of so many characters and a final NUL takes it: cut there, and at its first
// NUL.
std::string CutToBuffer(std::string_view text, size_t characters);

}  // namespace quellix
