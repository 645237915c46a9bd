#pragma once

#include <functional>
#include <map>
#include <memory>

#include "engine.h"
#include "platform/machine.h"
#include "ui/frm_options.h"
#include "ui/frm_update.h"
#include "ui/user_runs.h"

namespace quellix {

// The windows that the main window's menus open. A new one is a row in menu_windows.cpp.
class MenuWindows {
 public:
  MenuWindows(Engine& engine, const Machine& machine, const OtherUsers& users,
              Scheduler& scheduler);

  // Called when the user has accepted new options and the engine follows them.
  std::function<void()> on_options;

  // Opens the window of a menu entry before `owner`; false when the entry opens none.
  bool Open(int entry, HWND owner);
  // A new version that was found by itself.
  void ShowUpdate(HWND owner, const UpdateCheck& check) { update_->Show(owner, check); }
  // The options that tell how files go.
  void OpenRemovalOptions(HWND owner) { options_.Show(owner, OptionsPage::kDeletion); }

 private:
  FrmOptions options_;
  std::shared_ptr<FrmUpdate> update_;
  // What entries of the menus do; the windows live in these.
  std::map<int, std::function<void(HWND owner)>> entries_;
};

}  // namespace quellix
