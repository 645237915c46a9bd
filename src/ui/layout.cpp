#include "ui/layout.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "ui/dpi.h"
#include "ui/text_room.h"

namespace quellix {
namespace {

int ToPixels(double units, int dpi) {
  return static_cast<int>(std::lround(units * dpi / kDesignDpi));
}

// Of a control that grows: a heading and some rows, a few words.
constexpr double kLeastWidth = 60, kLeastHeight = 54;
// Between two controls where there was more.
constexpr double kLeastGap = 3;

// One edge of something, and how it moves with the window.
struct Edge {
  double at, share;
};

// How far the window may shrink until two edges that come nearer then are `least` apart.
double ShrinkUntil(Edge first, Edge second, double least) {
  const double rate = second.share - first.share, room = second.at - first.at - least;
  constexpr double kForEver = 1e6;
  return rate <= 0 ? kForEver : std::max(0.0, room) / rate;
}

// The least part of its place that a control keeps for the texts of others.
struct Shares {
  double width = 1, height = 1;
};

Shares KeptBy(HWND control, double width) {
  wchar_t name[20] = {};
  GetClassNameW(control, name, static_cast<int>(std::size(name)));
  const auto style = static_cast<DWORD>(GetWindowLongW(control, GWL_STYLE));
  if (lstrcmpiW(name, WC_LISTVIEWW) == 0 || lstrcmpiW(name, WC_LISTBOXW) == 0) return {0.7, 0.7};
  if (lstrcmpiW(name, WC_EDITW) == 0) {
    constexpr double kNarrow = 100;  // for numbers
    return {width < kNarrow ? 1 : 0.6, (style & ES_MULTILINE) != 0 ? 0.8 : 1};
  }
  if (lstrcmpiW(name, WC_COMBOBOXW) == 0 || lstrcmpiW(name, L"SysLink") == 0) return {0.6, 1};
  const bool is_text = lstrcmpiW(name, WC_STATICW) == 0 && GetWindowTextLengthW(control) > 0;
  const bool is_cut = lstrcmpiW(name, WC_STATICW) == 0 && (style & SS_ELLIPSISMASK) != 0;
  const bool is_box = lstrcmpiW(name, WC_BUTTONW) == 0 && (style & BS_TYPEMASK) > BS_DEFPUSHBUTTON;
  if (is_text || is_cut || is_box) return {0.5, 1};
  return {};
}

// Up to where windows grow for their texts, in 96-DPI units: the smallest screens are 800 wide.
double WidestWindow(HWND window, double width) {
  constexpr double kWidest = 780, kWidestPage = 560;
  const bool is_page = (GetWindowLongW(window, GWL_STYLE) & WS_CHILD) != 0;
  return std::max(width, is_page ? kWidestPage : kWidest);
}

// Text that is not cut short needs the room that its template gives it.
bool MayShrink(HWND control) {
  wchar_t name[20] = {};
  GetClassNameW(control, name, static_cast<int>(std::size(name)));
  const DWORD cuts = SS_ELLIPSISMASK;
  const auto style = static_cast<DWORD>(GetWindowLongW(control, GWL_STYLE));
  return lstrcmpiW(name, L"Static") != 0 || (style & cuts) != 0 ||
         (style & SS_TYPEMASK) == SS_OWNERDRAW;
}

bool IsShown(HWND control) { return (GetWindowLongW(control, GWL_STYLE) & WS_VISIBLE) != 0; }

bool Overlap(double a_from, double a_to, double b_from, double b_to) {
  return a_from < b_to && b_from < a_to;
}

}  // namespace

RECT PlaceInParent(HWND control) {
  RECT place;
  GetWindowRect(control, &place);
  MapWindowPoints(nullptr, GetParent(control), reinterpret_cast<POINT*>(&place), 2);
  return place;
}

void Layout::Start(HWND dialog, int dpi, SIZE client) {
  dialog_ = dialog;
  const double to_units = double{kDesignDpi} / dpi;
  width_ = client.cx * to_units;
  height_ = client.cy * to_units;
  places_.clear();
  for (HWND child = GetWindow(dialog, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
    const RECT place = PlaceInParent(child);
    const double width = (place.right - place.left) * to_units,
                 height = (place.bottom - place.top) * to_units;
    const bool may_shrink = MayShrink(child);
    places_.push_back({child,
                       GetDlgCtrlID(child),
                       {},
                       place.left * to_units,
                       place.top * to_units,
                       place.right * to_units,
                       place.bottom * to_units,
                       may_shrink ? std::min(width, kLeastWidth) : width,
                       may_shrink ? std::min(height, kLeastHeight) : height});
  }
}

void Layout::Add(std::span<const Anchor> anchors) {
  for (const Anchor& anchor : anchors) {
    const auto place = std::ranges::find(places_, anchor.control, &Place::id);
    if (place != places_.end()) place->anchor = anchor;
  }
}

void Layout::Require(int id, double width, double height) {
  const auto place = std::ranges::find(places_, id, &Place::id);
  if (place == places_.end()) return;
  place->least_width = width;
  place->least_height = height;
}

void Layout::Need(int id, double width, double height) {
  const auto place = std::ranges::find(places_, id, &Place::id);
  if (place == places_.end()) return;
  place->needed_width = std::max(place->needed_width, width);
  place->needed_height = std::max(place->needed_height, height);
}

int Layout::PageOf(int id) const {
  if (pages_.empty() || id < pages_.front() || id >= pages_.back()) return 0;
  return static_cast<int>(std::ranges::upper_bound(pages_, id) - pages_.begin());
}

std::vector<RoomBox> Layout::Boxes(double to_units) const {
  std::vector<RoomBox> boxes;
  for (const Place& place : places_) {
    const TextRoom text = TextRoomOf(place.control);
    const double width = place.right - place.left, height = place.bottom - place.top;
    const Shares keeps = KeptBy(place.control, width);
    RoomBox box{place.left,        place.top,        place.right,        place.bottom,
                place.anchor.left, place.anchor.top, place.anchor.right, place.anchor.bottom};
    box.least_width = std::max({width * keeps.width, text.width * to_units, place.needed_width});
    box.least_height =
        std::max({height * keeps.height, text.height * to_units, place.needed_height});
    box.least_wrapped = text.wrapped * to_units;
    box.wraps = text.wraps;
    box.is_button = text.is_button;
    box.page = PageOf(place.id);
    boxes.push_back(box);
  }
  return boxes;
}

void Layout::TakeHeights(std::vector<RoomBox>& boxes, int dpi) const {
  for (size_t i = 0; i < boxes.size(); ++i) {
    if (!boxes[i].wraps) continue;
    const int width = ToPixels(boxes[i].right - boxes[i].left, dpi);
    const int height = WrappedHeight(places_[i].control, width);
    boxes[i].least_height = std::max(boxes[i].least_height, height * double{kDesignDpi} / dpi);
    Wrap(places_[i].control);
  }
}

std::optional<SIZE> Layout::MakeRoom(int dpi) {
  std::vector<RoomBox> boxes = Boxes(double{kDesignDpi} / dpi);
  const double width = MakeWidth(boxes, width_, WidestWindow(dialog_, width_));
  TakeHeights(boxes, dpi);
  const double height = MakeHeight(boxes, height_);
  bool moves = false;
  for (size_t i = 0; i < boxes.size(); ++i) moves |= places_[i].MoveTo(boxes[i]);
  const SIZE growth{ToPixels(width - width_, dpi), ToPixels(height - height_, dpi)};
  width_ = width;
  height_ = height;
  return moves ? std::optional(growth) : std::nullopt;
}

// What needed its whole place needs the new one.
bool Layout::Place::MoveTo(const RoomBox& box) {
  const double way = std::abs(box.left - left) + std::abs(box.top - top) +
                     std::abs(box.right - right) + std::abs(box.bottom - bottom);
  if (way < 0.1) return false;
  if (least_width > right - left - 1) least_width = box.right - box.left;
  if (least_height > bottom - top - 1) least_height = box.bottom - box.top;
  left = box.left;
  top = box.top;
  right = box.right;
  bottom = box.bottom;
  return true;
}

// Each control against the window's edges, and against those beside and below it. Where pages stand
// above one another only what is shown can be in the way.
Layout::Slack Layout::SlackOf() const {
  Slack slack{width_, height_};
  const auto narrow = [&slack](Edge first, Edge second, double least) {
    slack.width = std::min(slack.width, ShrinkUntil(first, second, least));
  };
  const auto flatten = [&slack](Edge first, Edge second, double least) {
    slack.height = std::min(slack.height, ShrinkUntil(first, second, least));
  };
  for (const Place& a : places_) {
    if (a.right - a.left < 1 || a.bottom - a.top < 1) continue;  // only heard
    const Edge right{a.right, a.anchor.right}, bottom{a.bottom, a.anchor.bottom};
    narrow({a.left, a.anchor.left}, right, a.least_width);
    flatten({a.top, a.anchor.top}, bottom, a.least_height);
    narrow(right, {width_, 1}, std::min(width_ - a.right, kLeastGap));
    flatten(bottom, {height_, 1}, std::min(height_ - a.bottom, kLeastGap));
    if (!IsShown(a.control)) continue;
    for (const Place& b : places_) {
      if (b.right - b.left < 1 || b.bottom - b.top < 1 || !IsShown(b.control)) continue;
      const bool is_beside = b.left >= a.right && Overlap(a.top, a.bottom, b.top, b.bottom);
      const bool is_below = b.top >= a.bottom && Overlap(a.left, a.right, b.left, b.right);
      if (is_beside) narrow(right, {b.left, b.anchor.left}, std::min(b.left - a.right, kLeastGap));
      if (is_below) flatten(bottom, {b.top, b.anchor.top}, std::min(b.top - a.bottom, kLeastGap));
    }
  }
  return slack;
}

HWND Layout::Control(int id) const {
  const auto place = std::ranges::find(places_, id, &Place::id);
  return place == places_.end() ? nullptr : place->control;
}

void Layout::Apply(int dpi) const {
  RECT client;
  GetClientRect(dialog_, &client);
  const Slack slack = SlackOf();
  const double wider = std::max(-slack.width, client.right * double{kDesignDpi} / dpi - width_);
  const double higher = std::max(-slack.height, client.bottom * double{kDesignDpi} / dpi - height_);
  HDWP moves = BeginDeferWindowPos(static_cast<int>(places_.size()));
  for (const Place& place : places_) {
    const int left = ToPixels(place.left + place.anchor.left * wider, dpi);
    const int top = ToPixels(place.top + place.anchor.top * higher, dpi);
    const int right = ToPixels(place.right + place.anchor.right * wider, dpi);
    const int bottom = ToPixels(place.bottom + place.anchor.bottom * higher, dpi);
    moves = DeferWindowPos(moves, place.control, nullptr, left, top, right - left, bottom - top,
                           SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS);
  }
  EndDeferWindowPos(moves);
}

SIZE Layout::MinimumSize(int dpi) const {
  RECT window, client;
  GetWindowRect(dialog_, &window);
  GetClientRect(dialog_, &client);
  const Slack slack = SlackOf();
  return {window.right - window.left - client.right + ToPixels(width_ - slack.width, dpi),
          window.bottom - window.top - client.bottom + ToPixels(height_ - slack.height, dpi)};
}

}  // namespace quellix
