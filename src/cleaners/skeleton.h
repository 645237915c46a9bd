#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "registry_tools/mod_registry.h"
#include "run/context.h"
#include "run/file_list.h"
#include "run/item.h"
#include "run/protected_places.h"
#include "search/drive_scan.h"

namespace quellix {

// What all cleaners share.

inline modRegistry::Access RegistryOf(CleaningContext& context) {
  return {context.machine.registry, context.machine.system};
}

// `path` with every "%SYSTEMROOT%" replaced by the system folder, not the Windows folder: settings
// written for this program count on it.
std::string ExpandSystemRoot(System& system, std::string_view path);

// The same and, where "%SYSTEMROOT%" is in it, the path as Windows itself takes it: in the Windows
// folder.
std::vector<std::string> ExpandSystemRootBothWays(System& system, std::string_view path);

inline constexpr const char* kShellFolders =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders\\";

// The folder that a registry value names, ending in one "\", "%SYSTEMROOT%" expanded. A value of
// one character is given as it stands; "" when there is none.
std::string FolderFromRegistry(const Machine& machine, RegistryRoot root, std::string_view key,
                               std::string_view name);
inline std::string FolderFromRegistry(CleaningContext& context, RegistryRoot root,
                                      std::string_view key, std::string_view name) {
  return FolderFromRegistry(context.machine, root, key, name);
}

// The same for a folder of Windows' own settings, expanded both ways.
std::vector<std::string> FoldersFromRegistry(CleaningContext& context, RegistryRoot root,
                                             std::string_view key, std::string_view name);

// The value names of a key of the user, as ListRegValues gives them: as far as the settings say.
std::string ListUserValues(CleaningContext& context, std::string_view key);
// Deletes them and returns how many went. Throws Error when some stayed.
size_t ClearUserKey(CleaningContext& context, std::string_view key);

// Collects the files below `path` (ends in "\\") that fit `mask`, or one of several with ";"
// between. Nothing, with an empty list, when the folder is missing, which is no error, or when it
// is refused or cannot be opened, with a line in RunLog. `first`: see ScanFolder.
FileList CollectAllowed(CleaningContext& context, std::string_view path, std::string_view mask,
                        Claim claim = Claim::kItem, const FirstFound& first = nullptr);

// Takes out of a list the files that stay.
using Stays = std::function<bool(std::string_view path)>;
void DropFiles(PathList& files, const Stays& stays);

enum class FoldersPass { kNo, kYes };

// Collects so and removes what was collected, but for what `stays`; with the folders pass also the
// sub-folders left empty.
void CleanFolder(CleaningContext& context, std::string_view path, std::string_view mask,
                 FoldersPass folders_pass, Claim claim = Claim::kItem, const Stays& stays = {});

// Removes the folder itself when nothing is left in it; a failure is no error.
void RemoveEmptyFolder(CleaningContext& context, std::string_view folder);

void ResetItemCounters(RunState& state);

// Around an item that removes files: shown as in work, counted from nothing, told by its line.
void BeginFiles(CleaningContext& context, const Item& item);
void EndFiles(CleaningContext& context, const Item& item);

// An item that is one action: shown as in work, done, and told by its caption.
void CleanByAction(CleaningContext& context, const Item& item, const std::function<void()>& action);

// The item's line in RunLog: its files and their bytes, a count alone, or its caption alone.
void AppendFilesLine(CleaningContext& context, std::string_view caption);
void AppendCountLine(CleaningContext& context, const Item& item, size_t count);
void AppendCaptionLine(CleaningContext& context, const Item& item);

}  // namespace quellix
