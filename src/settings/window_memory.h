#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quellix {

// How a window was left: a key of the section "Windows" of Settings.ini, named after it, as
// "left,top,width,height,maximized|widths of the columns;sorted by,descending;columns from left to
// right|...", with a part for each of its lists; what its user left as it was is left out. Sizes
// and widths are in 96-DPI units, places in pixels.
struct WindowMemory {
  struct Place {
    int left = 0, top = 0, width = 0, height = 0;
    bool is_maximized = false;
    bool operator==(const Place&) const = default;
  };
  struct Order {
    int column = 0;
    bool descending = false;
    bool operator==(const Order&) const = default;
  };
  struct List {
    std::vector<int> widths;
    std::optional<Order> order;  // none where the user chose none
    std::vector<int> columns;    // their order, likewise
    bool operator==(const List&) const = default;
  };
  std::optional<Place> place;  // none where the text tells none
  std::vector<List> lists;

  // A part that makes no sense is left out: no place, a list without widths and order.
  static WindowMemory Parse(std::string_view text);
  std::string Format() const;
  bool operator==(const WindowMemory&) const = default;
};

// An area of a screen, in pixels; right and bottom are outside.
struct ScreenArea {
  int left, top, right, bottom;
};

// Where a window of that size, in pixels, stands wholly on the screen, as near to its place as can
// be; larger than the screen, at its left and its top.
struct ScreenPoint {
  int left, top;
};
ScreenPoint MendedPlace(ScreenPoint place, int width, int height, const ScreenArea& screen);

}  // namespace quellix
