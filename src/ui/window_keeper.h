#pragma once

#include <functional>
#include <string>
#include <vector>

#include "settings/settings.h"
#include "settings/window_memory.h"
#include "ui/list_view.h"

namespace quellix {

// Gives a window the place, the size and the looks of its lists that its user left it with, and
// keeps those: see WindowMemory. What is not changed is not written.
class WindowKeeper {
 public:
  // The lists must outlive it.
  WindowKeeper(const Machine& machine, std::string window, std::vector<ListView*> lists)
      : settings_(machine), window_(std::move(window)), lists_(std::move(lists)) {}

  // True when the window had a place. One that does not lie on a screen is brought onto the
  // nearest.
  bool Restore(HWND window, int dpi);
  // From now on what differs is the user's doing.
  void Begin(HWND window, int dpi);
  // The widths alone, after all columns were made anew for another resolution.
  void CarryWidths(int from_dpi, int to_dpi, const std::function<void()>& remake);
  // A failure is no error: the window is then forgotten.
  void Keep(HWND window, int dpi);

 private:
  WindowMemory Present(HWND window, int dpi) const;

  Settings settings_;
  std::string window_;
  std::vector<ListView*> lists_;
  WindowMemory shown_;  // at first
};

}  // namespace quellix
