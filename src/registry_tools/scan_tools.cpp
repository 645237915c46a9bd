#include "registry_tools/scan_tools.h"

#include "registry_tools/tool_parts.h"

namespace quellix {

const ScanTraits& TraitsOf(ScanTool tool) {
  switch (tool) {
    case ScanTool::kSharedDlls:
      return kSharedDllTraits;
    case ScanTool::kFileReferences:
      return kFileReferenceTraits;
    case ScanTool::kAppPaths:
      return kAppPathTraits;
    case ScanTool::kHelpFiles:
      return kHelpFileTraits;
    case ScanTool::kComponents:
      return kComponentTraits;
    case ScanTool::kStartup:
      return kStartupTraits;
    case ScanTool::kUninstall:
      return kUninstallTraits;
    case ScanTool::kAssociations:
      break;
  }
  return kAssociationTraits;
}

std::unique_ptr<RegistryScan> MakeScan(ScanTool tool, const Machine& machine, ScanView& view) {
  switch (tool) {
    case ScanTool::kSharedDlls:
      return MakeSharedDlls(machine, view);
    case ScanTool::kFileReferences:
      return MakeFileReferences(machine, view);
    case ScanTool::kAppPaths:
      return MakeAppPaths(machine, view);
    case ScanTool::kHelpFiles:
      return MakeHelpFiles(machine, view);
    case ScanTool::kComponents:
      return MakeComponents(machine, view);
    case ScanTool::kStartup:
      return MakeStartupPrograms(machine, view);
    case ScanTool::kUninstall:
      return MakeUninstallEntries(machine, view);
    case ScanTool::kAssociations:
      break;
  }
  return MakeFileAssociations(machine, view);
}

}  // namespace quellix
