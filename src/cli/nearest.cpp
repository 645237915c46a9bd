#include "cli/nearest.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include "platform/text.h"

namespace quellix {
namespace {

// Letters to be put in, taken out, changed or swapped with the next one.
size_t Distance(std::string_view a, std::string_view b) {
  std::vector<size_t> before, last(b.size() + 1), now(b.size() + 1);
  std::iota(last.begin(), last.end(), size_t{0});
  for (size_t i = 1; i <= a.size(); ++i) {
    now[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      now[j] = std::min({last[j] + 1, now[j - 1] + 1, last[j - 1] + (a[i - 1] != b[j - 1])});
      const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (swapped) now[j] = std::min(now[j], before[j - 2] + 1);
    }
    before = last;
    last = now;
  }
  return last[b.size()];
}

}  // namespace

std::string Nearest(std::string_view word, std::span<const std::string> names) {
  const std::string upper = UpCase(word);
  size_t least = 1 + word.size() / 3;  // a third of its letters may be wrong
  std::string nearest;
  for (const std::string& name : names) {
    const std::string upper_name = UpCase(name);
    // Who knows the beginning has not mistyped it.
    const bool begins = word.size() > 2 && upper_name.starts_with(upper);
    const size_t distance = begins ? 0 : Distance(upper, upper_name);
    if (distance > least || (distance == least && !nearest.empty())) continue;
    least = distance;
    nearest = name;
  }
  return nearest;
}

}  // namespace quellix
