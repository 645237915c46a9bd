#include "ui/window_keeper.h"

#include <algorithm>

#include "platform/error.h"
#include "ui/dpi.h"

namespace quellix {
namespace {

constexpr std::string_view kSection = "Windows";
constexpr size_t kLongest = 1024;

// What Windows makes of a size, such as the least one, is looked at before the place is mended.
void Place(HWND window, int dpi, const WindowMemory::Place& place) {
  RECT there{place.left, place.top, place.left + Scale(place.width, dpi),
             place.top + Scale(place.height, dpi)};
  MONITORINFO screen{};
  screen.cbSize = sizeof(screen);
  GetMonitorInfoW(MonitorFromRect(&there, MONITOR_DEFAULTTONEAREST), &screen);
  const RECT& work = screen.rcWork;
  SetWindowPos(window, nullptr, there.left, there.top,
               std::min(there.right - there.left, work.right - work.left),
               std::min(there.bottom - there.top, work.bottom - work.top),
               SWP_NOZORDER | SWP_NOACTIVATE);
  GetWindowRect(window, &there);
  const ScreenPoint at =
      MendedPlace({place.left, place.top}, there.right - there.left, there.bottom - there.top,
                  {work.left, work.top, work.right, work.bottom});
  SetWindowPos(window, nullptr, at.left, at.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
  if (place.is_maximized) ShowWindow(window, SW_SHOWMAXIMIZED);
}

// Where the window stands when it is neither minimised nor maximised.
RECT NormalPlace(HWND window) {
  RECT place{};
  WINDOWPLACEMENT placement{};
  placement.length = sizeof(placement);
  const bool is_normal = !IsIconic(window) && !IsZoomed(window);
  if (is_normal || !GetWindowPlacement(window, &placement)) {
    GetWindowRect(window, &place);
    return place;
  }
  return placement.rcNormalPosition;
}

}  // namespace

bool WindowKeeper::Restore(HWND window, int dpi) {
  const WindowMemory memory =
      WindowMemory::Parse(settings_.ReadIniValue(kSection, window_, "", kLongest));
  for (size_t i = 0; i < std::min(lists_.size(), memory.lists.size()); ++i) {
    const WindowMemory::List& list = memory.lists[i];
    if (list.widths.size() == lists_[i]->Widths(dpi).size()) {
      lists_[i]->SetWidths(list.widths, dpi);
    }
    lists_[i]->SetColumnOrder(list.columns);
    if (list.order) lists_[i]->Order(list.order->column, list.order->descending);
  }
  if (memory.place) Place(window, dpi, *memory.place);
  return memory.place.has_value();
}

void WindowKeeper::CarryWidths(int from_dpi, int to_dpi, const std::function<void()>& remake) {
  std::vector<std::vector<int>> widths;
  for (const ListView* const list : lists_) widths.push_back(list->Widths(from_dpi));
  remake();
  for (size_t i = 0; i < lists_.size(); ++i) lists_[i]->SetWidths(widths[i], to_dpi);
}

WindowMemory WindowKeeper::Present(HWND window, int dpi) const {
  const RECT place = NormalPlace(window);
  WindowMemory memory;
  memory.place = {place.left, place.top, MulDiv(place.right - place.left, 96, dpi),
                  MulDiv(place.bottom - place.top, 96, dpi), IsZoomed(window) != FALSE};
  for (const ListView* const list : lists_) {
    WindowMemory::List looks{list->Widths(dpi), {}, list->ColumnOrder()};
    if (std::ranges::is_sorted(looks.columns)) looks.columns.clear();  // as at first
    if (const auto& order = list->chosen_order()) looks.order = {order->column, order->descending};
    memory.lists.push_back(looks);
  }
  return memory;
}

void WindowKeeper::Begin(HWND window, int dpi) { shown_ = Present(window, dpi); }

void WindowKeeper::Keep(HWND window, int dpi) {
  const WindowMemory present = Present(window, dpi);
  if (present == shown_) return;
  try {
    settings_.WriteIniValue(kSection, window_, present.Format());
  } catch (const Error&) {
    // Not worth a message.
  }
}

}  // namespace quellix
