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
      break;
  }
  return kComponentTraits;
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
      break;
  }
  return MakeComponents(machine, view);
}

}  // namespace quellix
