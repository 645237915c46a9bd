#pragma once

#include "engine.h"
#include "platform/machine.h"
#include "ui/frm_about.h"
#include "ui/frm_backups.h"
#include "ui/frm_ie_cache.h"

namespace quellix {

// The windows that the main window's menus open.
class MenuWindows {
 public:
  MenuWindows(Engine& engine, const Machine& machine)
      : engine_(engine), backups_(machine), cache_(machine, engine.context().view) {}

  // Opens the window of a menu entry before `owner`; false when the entry opens none.
  bool Open(int entry, HWND owner);

 private:
  [[maybe_unused]] Engine& engine_;
  FrmBackups backups_;
  FrmIECache cache_;
  FrmAbout about_;
};

}  // namespace quellix
