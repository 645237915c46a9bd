#pragma once

#include <memory>
#include <string_view>

#include "registry_tools/registry_scan.h"

namespace quellix {

// The tools that share the shape of RegistryScan.
enum class ScanTool {
  kSharedDlls,
  kFileReferences,
  kAppPaths,
  kHelpFiles,
  kComponents,
  kStartup,
  kUninstall,
  kAssociations
};
inline constexpr ScanTool kScanTools[] = {ScanTool::kSharedDlls, ScanTool::kFileReferences,
                                          ScanTool::kAppPaths,   ScanTool::kHelpFiles,
                                          ScanTool::kComponents, ScanTool::kStartup,
                                          ScanTool::kUninstall,  ScanTool::kAssociations};

const ScanTraits& TraitsOf(ScanTool tool);
// `view` and the ports must outlive it.
std::unique_ptr<RegistryScan> MakeScan(ScanTool tool, const Machine& machine, ScanView& view);

}  // namespace quellix
