#include "settings/window_memory.h"

#include <algorithm>

#include "platform/text.h"
#include "settings/numbers.h"

namespace quellix {
namespace {

constexpr int kWidest = 4000, kSmallest = 50;

// Nothing unless each is a number.
std::optional<std::vector<int>> Numbers(std::string_view text) {
  std::vector<int> numbers;
  for (const std::string& part : Split(text, ',')) {
    const auto number = ToInt16(part);
    if (!number) return std::nullopt;
    numbers.push_back(*number);
  }
  return numbers;
}

std::string Join(const std::vector<int>& numbers) {
  std::string text;
  for (const int number : numbers) text += (text.empty() ? "" : ",") + std::to_string(number);
  return text;
}

std::optional<WindowMemory::Place> ParsePlace(std::string_view text) {
  const auto numbers = Numbers(text);
  if (!numbers || numbers->size() != 5) return std::nullopt;
  const auto& n = *numbers;
  if (n[2] < kSmallest || n[3] < kSmallest) return std::nullopt;
  return WindowMemory::Place{n[0], n[1], n[2], n[3], n[4] == 1};
}

WindowMemory::List ParseList(std::string_view text) {
  WindowMemory::List list;
  std::vector<std::string> parts = Split(text, ';');
  parts.resize(3);
  const auto widths = Numbers(parts[0]), order = Numbers(parts[1]), columns = Numbers(parts[2]);
  const auto makes_sense = [](int width) { return width >= 0 && width <= kWidest; };
  if (widths && std::ranges::all_of(*widths, makes_sense)) list.widths = *widths;
  if (order && order->size() == 2 && (*order)[0] >= 0)
    list.order = WindowMemory::Order{(*order)[0], (*order)[1] == 1};
  if (columns) list.columns = *columns;
  return list;
}

}  // namespace

WindowMemory WindowMemory::Parse(std::string_view text) {
  WindowMemory memory;
  const std::vector<std::string> parts = Split(text, '|');
  for (size_t i = 1; i < parts.size(); ++i) memory.lists.push_back(ParseList(parts[i]));
  if (!parts.empty()) memory.place = ParsePlace(parts[0]);
  return memory;
}

std::string WindowMemory::Format() const {
  std::string text;
  if (place) {
    text =
        Join({place->left, place->top, place->width, place->height, place->is_maximized ? 1 : 0});
  }
  for (const List& list : lists) {
    text += "|" + Join(list.widths);
    if (list.order) text += ";" + Join({list.order->column, list.order->descending ? 1 : 0});
    if (!list.columns.empty()) text += (list.order ? ";" : ";;") + Join(list.columns);
  }
  return text;
}

ScreenPoint MendedPlace(ScreenPoint place, int width, int height, const ScreenArea& screen) {
  return {std::max(screen.left, std::min(place.left, screen.right - width)),
          std::max(screen.top, std::min(place.top, screen.bottom - height))};
}

}  // namespace quellix
