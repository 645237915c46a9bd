#include "platform/signature.h"

#include <optional>

namespace quellix {
namespace {

std::optional<int> ValueOf(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return std::nullopt;
}

}  // namespace

std::string FromHexDigits(std::string_view digits) {
  std::string bytes;
  for (size_t i = 0; i + 1 < digits.size(); i += 2) {
    const auto high = ValueOf(digits[i]), low = ValueOf(digits[i + 1]);
    if (!high || !low) return {};
    bytes += static_cast<char>(*high * 16 + *low);
  }
  return digits.size() % 2 == 0 ? bytes : std::string();
}

}  // namespace quellix
