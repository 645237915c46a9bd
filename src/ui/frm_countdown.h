#pragma once

#include <functional>
#include <string>

#include "ui/owned_window.h"

namespace quellix {

// Counts the seconds down before the session ends, so that it can be kept.
class FrmCountdown : public OwnedWindow {
 public:
  // `what` happens at the end: "The computer is turned off". Closing the window, or its owner,
  // cancels it.
  void Show(HWND owner, std::string_view what, std::function<void()> end);

 protected:
  void OnInit() override;
  HWND FirstFocus() override { return Control(IDCANCEL); }
  void OnCommand(int id, int code) override;
  void OnTimer(UINT_PTR id) override;
  const char* HelpTopic() const override { return "turn-off"; }

 private:
  void ShowSeconds() const;
  void End();

  std::string what_;
  std::function<void()> end_;
  int seconds_ = 0;  // left
};

}  // namespace quellix
