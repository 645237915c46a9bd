#pragma once

#include <functional>
#include <string>

#include "platform/shell.h"
#include "ui/list_view.h"

namespace quellix {

// What a row stands for: a file or folder, or a registry key as "HKEY_CURRENT_USER\\Software"; ""
// for what it does not.
struct RowPlace {
  std::string path = {}, key = {};
};

// The place that a text names.
RowPlace PlaceNamedBy(std::string_view text);

// The context menu of every list: where the focused row lies, its path, ticks and deletion of the
// selected rows, the order. What makes no sense for them is disabled.
struct RowMenu {
  ListView& list;
  Shell& shell;
  std::function<RowPlace(size_t row)> place_of;
  // A menu of the program whose entries stand below, 0 for none; which of them can be used.
  int own = 0;
  std::function<bool(int id)> is_enabled = [](int) { return true; };

  // Opens it at `screen`, for the keyboard (there -1, -1) at the focused row, and does what is
  // chosen; what is chosen of its own entries is returned, else 0.
  int Show(HWND window, POINT screen) const;

 private:
  RowPlace Focused() const;
  void Fill(HMENU menu) const;
  void AddOwn(HMENU menu) const;
  void Do(HWND window, int chosen) const;
  void CopyPaths(HWND window) const;
};

}  // namespace quellix
