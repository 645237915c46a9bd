#include "ui/menu_windows.h"

#include "ui/frm_about.h"
#include "ui/frm_backups.h"
#include "ui/frm_favorites.h"
#include "ui/frm_ie_cache.h"
#include "ui/frm_plugin_manager.h"
#include "ui/frm_registry_scan.h"
#include "ui/frm_users.h"
#include "ui/frm_wipe_free.h"
#include "ui/help.h"
#include "ui/resource.h"

namespace quellix {
namespace {

constexpr std::pair<int, ScanTool> kScanEntries[] = {
    {mnuOrphanedDLL, ScanTool::kSharedDlls},
    {mnuOrphanedFilePath, ScanTool::kFileReferences},
    {mnuOrphanedApplicationPath, ScanTool::kAppPaths},
    {mnuOrphanedHelpFile, ScanTool::kHelpFiles},
    {mnuOrphanedActivex, ScanTool::kComponents},
    {mnuStartupPrograms, ScanTool::kStartup},
    {mnuInstalledPrograms, ScanTool::kUninstall},
    {mnuAssociationTool, ScanTool::kAssociations}};

// Shows a window that is made of `parts`, the same each time.
template <typename Window, typename... Parts>
std::function<void(HWND)> Opens(Parts&... parts) {
  return [window = std::make_shared<Window>(parts...)](HWND owner) { window->Show(owner); };
}

}  // namespace

MenuWindows::MenuWindows(Engine& engine, const Machine& machine, const OtherUsers& users,
                         Scheduler& scheduler)
    : options_(machine, scheduler),
      update_(std::make_shared<FrmUpdate>(machine)),
      entries_{{mnuAbout, Opens<FrmAbout>(machine)},
               {mnuBackups, Opens<FrmBackups>(machine)},
               {mnuContents, [](HWND owner) { ShowHelp(owner, "contents"); }},
               {mnuFavorites, Opens<FrmFavorites>(machine)},
               {mnuUpdates, [this](HWND owner) { update_->Show(owner); }},
               {mnuIECache, Opens<FrmIECache>(machine)},
               {mnuManagePlugin, Opens<FrmPluginManager>(engine, machine)},
               {mnuOptions, [this](HWND owner) { options_.Show(owner); }},
               {mnuUsers, Opens<FrmUsers>(engine, machine, users)},
               {mnuWipeFree, Opens<FrmWipeFree>(machine)}} {
  const auto scan = std::make_shared<FrmRegistryScan>(machine);
  for (const auto& row : kScanEntries) {
    entries_[row.first] = [scan, tool = row.second](HWND owner) { scan->Show(tool, owner); };
  }
  options_.show_backups = entries_.at(mnuBackups);
  options_.on_accepted = [this, &engine] {
    engine.ApplyGeneralSettings();
    if (on_options) on_options();
  };
}

bool MenuWindows::Open(int entry, HWND owner) {
  const auto found = entries_.find(entry);
  if (found == entries_.end()) return false;
  found->second(owner);
  return true;
}

}  // namespace quellix
