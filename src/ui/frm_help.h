#pragma once

#include <string>

#include "ui/browser_control.h"
#include "ui/dialog.h"

namespace quellix {

// The manual in a window of its own, which stays beside those that it tells of.
class FrmHelp : public Dialog {
 public:
  // False where Windows has no browser control; then nothing is shown.
  bool Show(const std::wstring& address);

 protected:
  void OnInit() override;
  void OnSized() override { browser_.Resize(); }
  void OnCommand(int id, int code) override;
  bool OnKey(MSG& message) override { return browser_.TakeKey(message); }
  void OnClose() override;

 private:
  BrowserControl browser_;
};

}  // namespace quellix
