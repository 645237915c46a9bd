#include "ui/layout.h"

#include <algorithm>
#include <cmath>

#include "ui/dpi.h"

namespace quellix {
namespace {

int ToPixels(double units, int dpi) {
  return static_cast<int>(std::lround(units * dpi / kDesignDpi));
}

}  // namespace

RECT PlaceInParent(HWND control) {
  RECT place;
  GetWindowRect(control, &place);
  MapWindowPoints(nullptr, GetParent(control), reinterpret_cast<POINT*>(&place), 2);
  return place;
}

void Layout::Start(HWND dialog, int dpi) {
  dialog_ = dialog;
  const double to_units = double{kDesignDpi} / dpi;
  RECT client;
  GetClientRect(dialog, &client);
  width_ = client.right * to_units;
  height_ = client.bottom * to_units;
  places_.clear();
  for (HWND child = GetWindow(dialog, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
    const RECT place = PlaceInParent(child);
    places_.push_back({child,
                       GetDlgCtrlID(child),
                       {},
                       place.left * to_units,
                       place.top * to_units,
                       place.right * to_units,
                       place.bottom * to_units});
  }
}

void Layout::Add(std::span<const Anchor> anchors) {
  for (const Anchor& anchor : anchors) {
    const auto place = std::ranges::find(places_, anchor.control, &Place::id);
    if (place != places_.end()) place->anchor = anchor;
  }
}

HWND Layout::Control(int id) const {
  const auto place = std::ranges::find(places_, id, &Place::id);
  return place == places_.end() ? nullptr : place->control;
}

void Layout::Apply(int dpi) const {
  RECT client;
  GetClientRect(dialog_, &client);
  const double wider = std::max(0.0, client.right * double{kDesignDpi} / dpi - width_);
  const double higher = std::max(0.0, client.bottom * double{kDesignDpi} / dpi - height_);
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
  return {window.right - window.left - client.right + ToPixels(width_, dpi),
          window.bottom - window.top - client.bottom + ToPixels(height_, dpi)};
}

}  // namespace quellix
