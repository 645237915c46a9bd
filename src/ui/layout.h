#pragma once

#include <optional>
#include <span>
#include <vector>

#include "ui/room.h"
#include "ui/windows_api.h"

namespace quellix {

// The share (0 to 1) of its window's growth that each edge of a control takes: {0, 0, 1, 0} widens
// with the window, {1, 1, 1, 1} stays in the lower right corner. Controls without an anchor stay.
struct Anchor {
  int control;
  double left, top, right, bottom;
};

// Keeps the controls of one dialog in place. Places are kept in 96-DPI units, so that they survive
// every change of size and resolution without drifting.
class Layout {
 public:
  // Takes the dialog as it is laid out now. Smaller it becomes as far as what grows with it keeps
  // some room, and nothing comes to lie upon another.
  // `client`: of its template, in pixels, which the screen need not have room for.
  void Start(HWND dialog, int dpi, SIZE client);
  void Add(std::span<const Anchor> anchors);
  // A control that grows needs at least that size, in 96-DPI units.
  void Require(int id, double width, double height);
  // A control whose content is as large as that, in 96-DPI units.
  void Need(int id, double width, double height = 0);
  // The controls of pages that take turns, each from a number on up to the next page's, or the end.
  void SetPages(std::span<const int> firsts) { pages_ = firsts; }
  // Moves the controls apart as far as their texts need, see MakeWidth; once, when all texts are
  // there. Returns how much larger the client area has to become for that, in pixels; nothing where
  // all stay as they are.
  std::optional<SIZE> MakeRoom(int dpi);
  // Of the client area as the controls were laid out in it, 96-DPI units.
  double width() const { return width_; }
  double height() const { return height_; }
  // Moves every control to its place in the present window, all in one go.
  void Apply(int dpi) const;
  // A control of the dialog, found without asking Windows; null for one that was made later.
  HWND Control(int id) const;
  // The smallest size of the whole window, in pixels.
  SIZE MinimumSize(int dpi) const;

 private:
  struct Place {
    HWND control;
    int id;
    Anchor anchor;
    double left, top, right, bottom;             // 96-DPI units in the window of the template
    double least_width, least_height;            // where it grows
    double needed_width = 0, needed_height = 0;  // for what is in it

    // False where it is there already.
    bool MoveTo(const RoomBox& box);
  };
  // How much smaller than its template the window may be, 96-DPI units.
  struct Slack {
    double width, height;
  };
  Slack SlackOf() const;
  std::vector<RoomBox> Boxes(double to_units) const;
  void TakeHeights(std::vector<RoomBox>& boxes, int dpi) const;
  int PageOf(int id) const;

  HWND dialog_ = nullptr;
  double width_ = 0, height_ = 0;  // of the template's client area, 96-DPI units
  std::vector<Place> places_;
  std::span<const int> pages_;
};

// Where a control stands in its parent, in pixels.
RECT PlaceInParent(HWND control);

}  // namespace quellix
