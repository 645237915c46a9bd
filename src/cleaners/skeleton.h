#pragma once

#include <string>
#include <string_view>

#include "app/context.h"
#include "app/item.h"
#include "registry_tools/mod_registry.h"

namespace quellix {

// What all cleaners share.

inline modRegistry::Access RegistryOf(CleaningContext& context) {
  return {context.machine.registry, context.machine.system};
}

// `path` with every "%SYSTEMROOT%" replaced by the system folder, not the Windows folder: settings
// written for this program count on it.
std::string ExpandSystemRoot(CleaningContext& context, std::string_view path);

enum class FoldersPass { kNo, kYes };

// Collects the files below `folder` (ends in "\") that fit `mask` and removes them; with the
// folders pass also the sub-folders left empty. A missing folder is no error. A drive's root and a
// folder that holds Windows or the user's profile are refused with a line in RunLog.
void CleanFolder(CleaningContext& context, std::string_view folder, std::string_view mask,
                 FoldersPass folders_pass);

void ResetItemCounters(RunState& state);

// The item's line in RunLog: its files and their bytes, a count alone, or its caption alone.
void AppendFilesLine(CleaningContext& context, const Item& item);
void AppendCountLine(CleaningContext& context, const Item& item, size_t count);
void AppendCaptionLine(CleaningContext& context, const Item& item);

}  // namespace quellix
