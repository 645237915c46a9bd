#include "ui/layout.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "ui/dpi.h"

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
