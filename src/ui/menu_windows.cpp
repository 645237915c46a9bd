#include "ui/menu_windows.h"

#include "engine.h"
#include "ui/resource.h"

namespace quellix {

bool MenuWindows::Open(int entry, HWND owner) {
  switch (entry) {
    case mnuBackups:
      backups_.Show(owner);
      return true;
    case mnuManagePlugin:
      plugin_manager_.Show(owner);
      return true;
    default:
      return false;
  }
}

}  // namespace quellix
