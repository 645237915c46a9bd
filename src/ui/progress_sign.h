#pragma once

#include <string>

#include "platform/pause.h"
#include "ui/windows_api.h"

namespace quellix {

// How far a window's work is, for who looks elsewhere: before its title, and on the button that its
// program has in the taskbar, where the taskbar shows such things. Gone with the object.
class ProgressSign {
 public:
  ProgressSign() = default;
  ProgressSign(const ProgressSign&) = delete;
  ProgressSign& operator=(const ProgressSign&) = delete;
  ~ProgressSign() { Clear(); }

  // Without a total nothing is shown.
  void Show(HWND window, const Progress& progress);
  void Clear();

 private:
  HWND window_ = nullptr;  // that shows it
  std::wstring title_;     // without it
  int percent_ = -1;       // as shown
};

}  // namespace quellix
