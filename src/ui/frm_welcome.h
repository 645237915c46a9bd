#pragma once

#include <functional>

#include "platform/machine.h"
#include "settings/settings.h"
#include "ui/owned_window.h"

namespace quellix {

// Greets who has never started the program, and lets him choose how files go. Shown once, where
// the settings that ship ask for it.
class FrmWelcome : public OwnedWindow {
 public:
  explicit FrmWelcome(const Machine& machine) : settings_(machine) {}

  // `on_chosen` is called when another way was chosen, and is stored.
  void ShowOnce(HWND owner, std::function<void()> on_chosen);

 protected:
  void OnInit() override;
  HWND FirstFocus() override { return Control(IDOK); }
  void OnCommand(int id, int code) override;
  const char* HelpTopic() const override { return "start"; }

 private:
  void Choose();

  Settings settings_;
  std::function<void()> on_chosen_;
};

}  // namespace quellix
