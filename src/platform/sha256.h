#pragma once

#include <string>
#include <string_view>

namespace quellix {

// The SHA-256 of some bytes (FIPS 180-4), as 64 hexadecimal digits in lower case: nobody finds
// other bytes that have the same one. Computed by the system's own library or a common one; throws
// Error where that fails.
std::string Sha256(std::string_view bytes);

inline std::string HexDigits(std::string_view bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes) {
    text += kDigits[static_cast<unsigned char>(byte) >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

}  // namespace quellix
