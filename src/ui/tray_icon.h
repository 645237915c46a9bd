#pragma once

#include "ui/handles.h"
#include "ui/windows_api.h"

namespace quellix {

// The program's icon in the notification area. It goes with the object.
class TrayIcon {
 public:
  // The window gets this message from the icon: the event (NIN_SELECT, WM_CONTEXTMENU...) in the
  // low word of lparam, the place on the screen in wparam.
  static constexpr UINT kMessage = WM_APP + 1;

  TrayIcon() = default;
  TrayIcon(const TrayIcon&) = delete;
  TrayIcon& operator=(const TrayIcon&) = delete;
  ~TrayIcon() { Hide(); }

  // False when there is no notification area that takes it.
  bool Show(HWND window, const wchar_t* text);
  void Hide();
  // What its tip says from now on, until it is shown again.
  void SetText(const wchar_t* text);
  bool IsShown() const { return window_ != nullptr; }
  // Puts it back when `message` tells that the taskbar has been made anew.
  void Follow(UINT message) const;

 private:
  bool Tell(DWORD what) const;

  HWND window_ = nullptr;
  UniqueIcon icon_;
  wchar_t text_[128] = {};
};

}  // namespace quellix
