#pragma once

#include <memory>

#include "registry_tools/registry_scan.h"

namespace quellix {

// The tools; scan_tools.h is for their users.
extern const ScanTraits kSharedDllTraits, kFileReferenceTraits, kAppPathTraits, kHelpFileTraits,
    kComponentTraits, kStartupTraits, kUninstallTraits, kAssociationTraits;
std::unique_ptr<RegistryScan> MakeSharedDlls(const Machine& machine, ScanView& view);
std::unique_ptr<RegistryScan> MakeFileReferences(const Machine& machine, ScanView& view);
std::unique_ptr<RegistryScan> MakeAppPaths(const Machine& machine, ScanView& view);
std::unique_ptr<RegistryScan> MakeHelpFiles(const Machine& machine, ScanView& view);
std::unique_ptr<RegistryScan> MakeComponents(const Machine& machine, ScanView& view);
std::unique_ptr<RegistryScan> MakeStartupPrograms(const Machine& machine, ScanView& view);
std::unique_ptr<RegistryScan> MakeUninstallEntries(const Machine& machine, ScanView& view);
std::unique_ptr<RegistryScan> MakeFileAssociations(const Machine& machine, ScanView& view);

}  // namespace quellix
