#include "ui/menu_windows.h"

#include "ui/help.h"
#include "ui/resource.h"

namespace quellix {
namespace {

constexpr std::pair<int, ScanTool> kScanEntries[] = {
    {mnuOrphanedDLL, ScanTool::kSharedDlls},
    {mnuOrphanedFilePath, ScanTool::kFileReferences},
    {mnuOrphanedApplicationPath, ScanTool::kAppPaths},
    {mnuOrphanedHelpFile, ScanTool::kHelpFiles},
    {mnuOrphanedActivex, ScanTool::kComponents}};

}  // namespace

MenuWindows::MenuWindows(Engine& engine, const Machine& machine)
    : engine_(engine),
      backups_(machine),
      options_(machine),
      plugin_manager_(engine, machine),
      cache_(machine),
      registry_scan_(machine) {
  options_.show_backups = [this](HWND owner) { backups_.Show(owner); };
  options_.on_accepted = [this] {
    engine_.ApplyGeneralSettings();
    if (on_options) on_options();
  };
}

bool MenuWindows::Open(int entry, HWND owner) {
  for (const auto& [scan_entry, tool] : kScanEntries) {
    if (scan_entry != entry) continue;
    registry_scan_.Show(tool, owner);
    return true;
  }
  switch (entry) {
    case mnuBackups:
      backups_.Show(owner);
      return true;
    case mnuOptions:
      options_.Show(owner);
      return true;
    case mnuManagePlugin:
      plugin_manager_.Show(owner);
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
