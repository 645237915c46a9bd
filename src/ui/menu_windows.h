#pragma once

#include "platform/machine.h"
#include "ui/frm_backups.h"
#include "ui/frm_registry_scan.h"

namespace quellix {

class Engine;

// The windows that the main window's menus open.
class MenuWindows {
 public:
  MenuWindows(Engine& engine, const Machine& machine)
      : engine_(engine), backups_(machine), registry_scan_(machine) {}

  // Opens the window of a menu entry before `owner`; false when the entry opens none.
  bool Open(int entry, HWND owner);

 private:
  [[maybe_unused]] Engine& engine_;
  FrmBackups backups_;
  FrmRegistryScan registry_scan_;
};

}  // namespace quellix
