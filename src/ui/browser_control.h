#pragma once

#include <memory>
#include <string>

#include "ui/windows_api.h"
// After windows.h, whose types it uses.
#include <exdisp.h>

#include "platform/win32/unique.h"

namespace quellix {

class BrowserSite;

// The browser control of Windows inside a window of ours. It shows what is in the cache and asks
// nothing of the network, runs no scripts and loads no controls: what is looked at here is what
// some page left behind.
class BrowserControl {
 public:
  BrowserControl();
  ~BrowserControl();
  BrowserControl(const BrowserControl&) = delete;
  BrowserControl& operator=(const BrowserControl&) = delete;

  // Makes the control fill `frame`. False where this Windows has none.
  bool Create(HWND frame);
  // Releases it; must happen while `frame` exists.
  void Close();
  explicit operator bool() const { return static_cast<bool>(browser_); }

  void Navigate(const std::wstring& address);
  // Fills the frame again after that has changed.
  void Resize();
  // Gives the page the keyboard.
  void TakeFocus();
  // True when the page took the key, as pages do before any dialog.
  bool TakeKey(MSG& message);

 private:
  Unique<ComTraits<IWebBrowser2>> browser_;
  std::unique_ptr<BrowserSite> site_;
  HWND frame_ = nullptr;
};

}  // namespace quellix
