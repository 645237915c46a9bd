#include "plugins/key_generator.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "platform/text.h"
#include "platform/words.h"

namespace quellix::modPlugin {
namespace {

constexpr uint32_t kMostNames = 10000;

std::optional<uint32_t> WholeNumber(std::string_view text) {
  text = TrimBlanks(text);
  uint32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (text.empty() || error != std::errc() || stop != end) return std::nullopt;
  return number;
}

}  // namespace

Numbers GenerateNumbers(const NumberRange& range) {
  const std::optional<uint32_t> from = WholeNumber(range.from), to = WholeNumber(range.to);
  if (!from || !to) return {{}, Tr("Please enter whole numbers")};
  // A range of one number is one: only a To below From is refused.
  if (*to < *from) return {{}, Tr("The To value should be greater than from")};
  if (*to - *from >= kMostNames) {
    return {{}, Tr("At most %1 names are generated at a time", std::to_string(kMostNames))};
  }
  const size_t last = std::to_string(*to).size();
  const size_t width = range.pad ? std::max(last, range.padding.size() + 1) : 0;
  Numbers numbers;
  for (uint32_t i = 0; i <= *to - *from; ++i) {
    std::string text = std::to_string(*from + i);
    text.insert(0, width - std::min(width, text.size()), '0');
    numbers.texts.push_back(std::move(text));
  }
  return numbers;
}

}  // namespace quellix::modPlugin
