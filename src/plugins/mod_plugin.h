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

// A folder that goes itself once it is empty.
struct EmptiedFolder {
  std::string path;
  FileId id;
};

struct Collected {
  bool is_found = true;         // whether the recipe has something to do here
  bool is_carried_out = false;  // and nothing kept it from that
  std::vector<FileList> lists;  // folder by folder
  std::vector<EmptiedFolder> emptied;
  std::vector<std::shared_ptr<void>> expected;  // in a preview: that the lists' files are looked at
};

// Carries out a recipe in three passes: erases the INI entries, collects the files and folders,
// deletes the registry entries. Nothing is done where the recipe finds nothing to do (IsFound),
// and, which is told, while one of its programs runs or an exclusion of it means nothing. What may
// not be cleaned, and what failed, gets a line in RunLog and keeps nothing else. Returns what was
// collected.
Collected ProcessRecords(CleaningContext& context, const Plugin& plugin);

// The same for a file; false when it is missing. Throws Error when it cannot be read.
bool ProcessPlugin(CleaningContext& context, std::string_view path, Collected& collected);

// Removes what was collected, a path listed twice once.
void RemoveCollected(CleaningContext& context, Collected collected);

// Tells in RunLog of a recipe that has nothing to do here.
void LogNotFound(CleaningContext& context);

// Processes a recipe that was asked for by itself and removes what it collected; that there is
// nothing to do here is told.
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
