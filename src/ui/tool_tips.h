#pragma once

#include <vector>

#include "ui/windows_api.h"

namespace quellix {

// Tips that appear over controls. They work over disabled controls too: those let the mouse through
// to their window, so the tips belong to places in the window.
class ToolTips {
 public:
  void Attach(HWND window);
  // `text` lives as long as the program.
  void Add(HWND control, const wchar_t* text);
  // Follows the controls to where they stand now.
  void Move() const;

 private:
  HWND window_ = nullptr;
  HWND tips_ = nullptr;  // goes with its owner, the window
  std::vector<HWND> controls_;
};

}  // namespace quellix
