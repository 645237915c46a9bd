#include "ui/menu_windows.h"

#include "engine.h"
#include "ui/resource.h"

namespace quellix {

bool MenuWindows::Open(int entry, HWND owner) {
  switch (entry) {
    case mnuBackups:
      backups_.Show(owner);
      return true;
    case mnuOrphanedDLL:
      registry_scan_.Show(ScanTool::kSharedDlls, owner);
      return true;
    case mnuOrphanedFilePath:
      registry_scan_.Show(ScanTool::kFileReferences, owner);
      return true;
    case mnuOrphanedApplicationPath:
      registry_scan_.Show(ScanTool::kAppPaths, owner);
      return true;
    case mnuOrphanedHelpFile:
      registry_scan_.Show(ScanTool::kHelpFiles, owner);
      return true;
    case mnuOrphanedActivex:
      registry_scan_.Show(ScanTool::kComponents, owner);
      return true;
    default:
      return false;
  }
}

}  // namespace quellix
