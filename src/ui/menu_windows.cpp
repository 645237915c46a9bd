#include "ui/menu_windows.h"

#include "ui/help.h"
#include "ui/resource.h"

namespace quellix {

bool MenuWindows::Open(int entry, HWND owner) {
  switch (entry) {
    case mnuBackups:
      backups_.Show(owner);
      return true;
    case mnuAbout:
      about_.Show(owner);
      return true;
    case mnuContents:
      ShowHelp(owner, "contents");
      return true;
    case mnuIECache:
      cache_.Show(owner);
      return true;
    default:
      return false;
  }
}

}  // namespace quellix
