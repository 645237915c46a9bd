#include "settings/numbers.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "platform/text.h"

namespace quellix {

std::optional<double> ToNumber(std::string_view text) {
  text = TrimBlanks(text);
  if (text.starts_with('+')) text.remove_prefix(1);
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
    return std::nullopt;
  }
  return value;
}

std::optional<int16_t> ToInt16(std::string_view text) {
  const std::optional<double> number = ToNumber(text);
  if (!number) return std::nullopt;
  const double rounded = std::nearbyint(*number);
  using Limits = std::numeric_limits<int16_t>;
  if (rounded < Limits::min() || rounded > Limits::max()) return std::nullopt;
  return static_cast<int16_t>(rounded);
}

std::string CutToBuffer(std::string_view text, size_t characters) {
  return std::string(TrimNull(ToUtf8(ToUtf16(text).substr(0, characters - 1))));
}

}  // namespace quellix
