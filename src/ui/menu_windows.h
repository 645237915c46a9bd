#pragma once

#include "engine.h"
#include "platform/machine.h"
#include "ui/frm_about.h"
#include "ui/frm_backups.h"
#include "ui/frm_ie_cache.h"
#include "ui/frm_options.h"
#include "ui/frm_plugin_manager.h"
#include "ui/frm_registry_scan.h"

namespace quellix {

// The windows that the main window's menus open.
class MenuWindows {
 public:
  MenuWindows(Engine& engine, const Machine& machine);

  // Called when the user has accepted new options and the engine follows them.
  std::function<void()> on_options;

  // Opens the window of a menu entry before `owner`; false when the entry opens none.
  bool Open(int entry, HWND owner);
  // The options that tell how files go.
  void OpenRemovalOptions(HWND owner) { options_.Show(owner, OptionsPage::kDeletion); }

 private:
  Engine& engine_;
  FrmBackups backups_;
  FrmOptions options_;
  FrmPluginManager plugin_manager_;
  FrmIECache cache_;
  FrmRegistryScan registry_scan_;
  FrmAbout about_;
};

}  // namespace quellix
