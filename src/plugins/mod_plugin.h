#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "plugins/plugin_file.h"
#include "run/context.h"
#include "run/file_list.h"
#include "run/item.h"

namespace quellix {

// The item: carries out the plug-ins ticked in plg.txt. See Cleaner for its contract.
void CleanPlugins(CleaningContext& context, const Item& item);

namespace modPlugin {

// Carries out a recipe in three passes: erases the INI entries, collects the files and folders,
// deletes the registry entries. What may not be cleaned, and what failed, gets a line in RunLog and
// keeps nothing else. Returns what was collected, folder by folder.
std::vector<FileList> ProcessRecords(CleaningContext& context, const Plugin& plugin);

// The same for a file; false when it is missing. Throws Error when it cannot be read.
bool ProcessPlugin(CleaningContext& context, std::string_view path,
                   std::vector<FileList>& collected);

// Removes what was collected, a path listed twice once.
void RemoveCollected(CleaningContext& context, std::vector<FileList> collected);

// Processes a recipe and removes what it collected.
void RunRecords(CleaningContext& context, const Plugin& plugin);

// Processes one plug-in's file and removes what it collected; one that cannot be read gets a line
// in RunLog. False when it is missing.
bool RunPlugin(CleaningContext& context, std::string_view path);

// Removes one value, or a key with all below it; what is missing is no error. Throw Error.
void DeleteRegistryValue(Registry& registry, RegistryRoot root, std::string_view subkey,
                         std::string_view value_name);
void DeleteRegistryKeyTree(Registry& registry, RegistryRoot root, std::string_view subkey);

}  // namespace modPlugin
}  // namespace quellix
