#include "ui/menu_windows.h"

#include "engine.h"
#include "ui/resource.h"

namespace quellix {

MenuWindows::MenuWindows(Engine& engine, const Machine& machine)
    : engine_(engine), backups_(machine), options_(machine) {
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
    default:
      return false;
  }
}

}  // namespace quellix
