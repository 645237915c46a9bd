#include "ui/menu_windows.h"

#include "ui/help.h"
#include "ui/resource.h"

namespace quellix {

MenuWindows::MenuWindows(Engine& engine, const Machine& machine)
    : engine_(engine),
      backups_(machine),
      options_(machine),
      cache_(machine, engine.context().view) {
  options_.show_backups = [this](HWND owner) { backups_.Show(owner); };
  options_.on_accepted = [this] {
    engine_.ApplyGeneralSettings();
    if (on_options) on_options();
  };
}

bool MenuWindows::Open(int entry, HWND owner) {
  switch (entry) {
    case mnuBackups:
      backups_.Show(owner);
      return true;
    case mnuOptions:
      options_.Show(owner);
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
