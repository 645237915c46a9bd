#pragma once

#include <string>
#include <vector>

#include "ui/windows_api.h"

namespace quellix {

// Tips that appear over controls. They work over disabled controls too: those let the mouse through
// to their window, so the tips belong to places in the window.
class ToolTips {
 public:
  void Attach(HWND window);
  // Nothing happens before Attach. The tip of a control, in place of the one it may have; "" for
  // none.
  void Set(HWND control, std::wstring text);
  // Follows the controls to where they stand now.
  void Move() const;

 private:
  HWND window_ = nullptr;
  HWND tips_ = nullptr;  // goes with its owner, the window
  std::vector<HWND> controls_;
};

}  // namespace quellix
